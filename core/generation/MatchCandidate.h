#pragma once

#include "core/events/EventBase.h"
#include "core/time/Timecode.h"

namespace montala::core {

// One proposed Change event: a stretch of a New event's source found in an
// Old event. Lives only while one New event is matched.
struct MatchCandidate {
    EventPtr event;
    // New position minus old position of the matched picture, in seconds.
    // Only the choice between rivals reads it.
    double timeShift = 0.0;
    // The stretch of the New event's source that the candidate covers.
    Timecode newSrcStart;
    Timecode newSrcEnd;
};

} // namespace montala::core
