#pragma once

#include "core/events/EventList.h"
#include "core/time/Framerate.h"
#include "core/time/SecondsRange.h"

#include <map>
#include <memory>
#include <set>
#include <vector>

namespace montala::core {

// A snapshot search structure over a list, for lookups by time. Built once;
// it must not outlive a change of the list. Events whose timecodes do not fit
// the rate are left out, since they have no position in seconds.
class EventListIndex {
public:
    using EdgeMap = std::multimap<double, std::weak_ptr<EventBase>>;
    // Events may share a timecode (the two lines of a dissolve share their
    // DST IN): they all stay, in list order.
    using TimecodeMap = std::multimap<Timecode, std::weak_ptr<EventBase>>;

    EventListIndex(const EventList& list, const Framerate& rate);

    bool containsEvent(const EventPtr& event) const { return eventSet.count(event.get()) != 0; }
    const TimecodeMap& getByDstIn() const { return byDstIn; }
    const TimecodeMap& getBySrcIn() const { return bySrcIn; }
    const EdgeMap& getDstEdges() const { return dstEdges; }
    const EdgeMap& getSrcEdges() const { return srcEdges; }
    const Framerate& getFramerate() const { return rate; }
    SecondsRange getDstSpan() const { return spanOf(dstEdges); }
    SecondsRange getSrcSpan() const { return spanOf(srcEdges); }

    // The events that the record range touches, each once, in order of
    // their edges; a range strictly inside one event gives that event.
    std::vector<EventPtr> findDstEvents(const SecondsRange& range) const;
    // True if one event alone covers the whole range.
    bool isInsideOneEvent(const SecondsRange& range) const;
    // The stretches of the range that no event covers.
    std::vector<SecondsRange> findDstGaps(const SecondsRange& range) const;

private:
    static SecondsRange spanOf(const EdgeMap& edges);

    const EventList& list;
    Framerate rate;
    EdgeMap srcEdges;
    EdgeMap dstEdges;
    TimecodeMap byDstIn;
    TimecodeMap bySrcIn;
    std::set<const EventBase*> eventSet;
};

} // namespace montala::core
