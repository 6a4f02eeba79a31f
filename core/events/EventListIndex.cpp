#include "core/events/EventListIndex.h"

#include "util/Result.h"

#include <iterator>

namespace montala::core {

using util::Result;

EventListIndex::EventListIndex(const EventList& list, const Framerate& rate) : list(list), rate(rate)
{
    for (const EventPtr& event : list.getEvents()) {
        if (event->hasState(EventState::InvalidTimecode))
            continue;
        double srcIn = 0, srcOut = 0, dstIn = 0, dstOut = 0;
        try {
            srcIn = event->getSrcIn().toSeconds(rate);
            srcOut = event->getSrcOut().toSeconds(rate);
            dstIn = event->getDstIn().toSeconds(rate);
            dstOut = event->getDstOut().toSeconds(rate);
        } catch (Result::Type) {
            // Valid at the project's rate but not at the one asked for.
            continue;
        }
        srcEdges.emplace(srcIn, event);
        srcEdges.emplace(srcOut, event);
        dstEdges.emplace(dstIn, event);
        dstEdges.emplace(dstOut, event);
        byDstIn.emplace(event->getDstIn(), event);
        bySrcIn.emplace(event->getSrcIn(), event);
        eventSet.insert(event.get());
    }
}

SecondsRange EventListIndex::spanOf(const EdgeMap& edges)
{
    if (edges.empty())
        return SecondsRange(0.0, 0.0);
    return SecondsRange(edges.begin()->first, std::prev(edges.end())->first);
}

std::vector<EventPtr> EventListIndex::findDstEvents(const SecondsRange& range) const
{
    std::vector<EventPtr> found;
    if (!(range.start < range.end))
        return found;
    std::set<const EventBase*> seen;
    const auto first = dstEdges.lower_bound(range.start);
    const auto last = dstEdges.upper_bound(range.end);
    for (auto it = first; it != last; ++it) {
        EventPtr event = it->second.lock();
        if (event && seen.insert(event.get()).second)
            found.push_back(std::move(event));
    }
    if (first != last)
        return found;
    // No edge inside: the range lies between two edges, and inside one event
    // if both edges belong to it.
    //
    //   edges:   |A..................A|
    //   range:        [s      e]
    if (first == dstEdges.begin() || last == dstEdges.end())
        return found;
    EventPtr before = std::prev(first)->second.lock();
    EventPtr after = last->second.lock();
    if (before && before == after)
        found.push_back(std::move(before));
    return found;
}

bool EventListIndex::isInsideOneEvent(const SecondsRange& range) const
{
    for (const EventPtr& event : findDstEvents(range)) {
        if (event->getDstIn().toSeconds(rate) <= range.start && event->getDstOut().toSeconds(rate) >= range.end)
            return true;
    }
    return false;
}

std::vector<SecondsRange> EventListIndex::findDstGaps(const SecondsRange& range) const
{
    std::vector<SecondsRange> covered;
    for (const EventPtr& event : findDstEvents(range))
        covered.emplace_back(event->getDstIn().toSeconds(rate), event->getDstOut().toSeconds(rate));

    std::vector<SecondsRange> rest{range};
    for (const SecondsRange& cover : covered) {
        std::vector<SecondsRange> next;
        for (const SecondsRange& piece : rest) {
            // A shared edge takes nothing out.
            if (cover.end <= piece.start || cover.start >= piece.end) {
                next.push_back(piece);
                continue;
            }
            if (cover.start > piece.start)
                next.emplace_back(piece.start, cover.start);
            if (cover.end < piece.end)
                next.emplace_back(cover.end, piece.end);
        }
        rest = std::move(next);
    }
    return rest;
}

} // namespace montala::core
