#include "sim/SimAudioChainEntry.h"

#include <algorithm>

namespace montala::sim {

SimAudioChainEntry::SimAudioChainEntry(Chain chain, std::size_t index) : chain(std::move(chain)), index(index) {}

SimObject::List SimAudioChainEntry::chainOf(SimObject& track)
{
    SimObject::List events;
    for (const auto& child : track.children()) {
        if (child->kind() == ObjectKind::AudioEvent)
            events.push_back(child);
        else if (child->kind() == ObjectKind::Part)
            for (const auto& inner : child->children())
                if (inner->kind() == ObjectKind::AudioEvent)
                    events.push_back(inner);
    }
    std::stable_sort(events.begin(), events.end(), [](const auto& a, const auto& b) {
        return a->timelineStart() < b->timelineStart();
    });
    return events;
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
