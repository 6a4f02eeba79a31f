#pragma once

#include "core/events/EventBase.h"
#include "core/time/Framerate.h"

#include <vector>

namespace montala::core {

class EventList;
class Settings;

// An operation over a whole event list, created on the stack for one run.
// It holds no data; what a run needs comes in the context.
class EventListAlgorithm {
public:
    struct Context {
        // The New EDL; only the heal mode that looks for inserts needs it.
        const EventList* newList = nullptr;
        const Settings* settings = nullptr;
        // The rate for timecode to seconds.
        Framerate framerate;
    };

    virtual void process(EventList& list, const Context& context) = 0;

    // The events in ascending DST IN with equal DST INs in list order, the
    // ones whose timecodes are not valid left out. Unlike a map keyed by DST
    // IN, no event that shares its DST IN with another is lost.
    static std::vector<EventPtr> orderByDstIn(const EventList& list);

protected:
    // Never deleted through this base; it only names the operation.
    ~EventListAlgorithm() = default;
};

} // namespace montala::core
