#include "sim/project/SimAudioChainEntry.h"

#include <algorithm>

namespace montala::sim {

SimAudioChainEntry::SimAudioChainEntry(Chain chain, std::size_t index) : chain(std::move(chain)), index(index) {}

SimAudioChainEntry::Chain SimAudioChainEntry::chainOf(SimObject& track)
{
    if (Chain kept = track.sortedChain())
        return kept;
    // No room to grow for a long track (a part's events may still make it
    // grow).
    SimObject::List events;
    events.reserve(track.children().size());
    for (const auto& child : track.children()) {
        if (child->kind() == ObjectKind::AudioEvent)
            events.push_back(child);
        else if (child->kind() == ObjectKind::Part)
            for (const auto& inner : child->children())
                if (inner->kind() == ObjectKind::AudioEvent)
                    events.push_back(inner);
    }
    // Sorted by starts read once each, and only when they are out of order
    // (a track's events mostly lie in time order): a feature's track holds
    // thousands of events all over the heap, and a comparison that read two
    // of them would fetch each some twenty times.
    std::vector<std::pair<double, std::size_t>> starts(events.size());
    for (std::size_t index = 0; index < events.size(); ++index)
        starts[index] = {events[index]->timelineStart(), index};
    if (!std::is_sorted(starts.begin(), starts.end())) {
        std::sort(starts.begin(), starts.end());
        SimObject::List sorted;
        sorted.reserve(events.size());
        for (const auto& [start, index] : starts)
            sorted.push_back(std::move(events[index]));
        events = std::move(sorted);
    }
    // Entries handed out hold the list they came from: a change drops the
    // track's reference, not theirs, so they go on as they were.
    Chain chain = std::make_shared<const SimObject::List>(std::move(events));
    track.keepSortedChain(chain);
    return chain;
}

std::size_t SimAudioChainEntry::indexOf(const SimObject::List& chain, const SimObject& event)
{
    const double start = event.timelineStart();
    auto it = std::lower_bound(chain.begin(), chain.end(), start,
                               [](const auto& entry, double time) { return entry->timelineStart() < time; });
    for (; it != chain.end() && it->get() != &event && (*it)->timelineStart() == start; ++it) {
    }
    if (it == chain.end() || it->get() != &event)
        return chain.size();
    return static_cast<std::size_t>(it - chain.begin());
}

Kelmar::tresult SimAudioChainEntry::queryInterface(const Kelmar::FUID& iid, void** obj)
{
    if (Kelmar::answerInterface<Kelmar::IAudioChainEntry>(this, iid, obj))
        return Kelmar::kResultOk;
    return FObject::queryInterface(iid, obj);
}

Kelmar::IProjectObject* SimAudioChainEntry::getObject()
{
    Kelmar::IProjectObject* object = (*chain)[index].get();
    object->addRef();
    return object;
}

Kelmar::IAudioChainEntry* SimAudioChainEntry::next(Kelmar::int32)
{
    if (index + 1 >= chain->size())
        return nullptr;
    return new SimAudioChainEntry(chain, index + 1);
}

double SimAudioChainEntry::getStart()
{
    return (*chain)[index]->timelineStart();
}

double SimAudioChainEntry::getEnd()
{
    return (*chain)[index]->timelineEnd();
}

} // namespace montala::sim
