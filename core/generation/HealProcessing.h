#pragma once

#include "core/events/EventListAlgorithm.h"
#include "core/model/Settings.h"

namespace montala::core {

class EventListIndex;

// Joins neighbouring Change events into one HealedEvent, so that a take the
// re-cut did not touch is cut once and not at every seam of the matching.
// The list comes out in DST IN order, numbered 1, 2, 3 without gaps; every
// event is either there or inside exactly one healed event.
//
// Normal: strict neighbours on both timelines.
//
//   SRC  |--1--|--2--|          |--3--|
//   DST  |--1--|--2--|     |--3--|
//        [ Healed Event 001 ]  3 alone (DST moved, SRC did not)
//
// Gaps with inserts: the gaps before and after are equal, so the audio in
// the gap moves along with both sides, whatever the New EDL put there.
//
//   SRC  |--1--|  gap 2s  |--2--|
//   DST  |--1--|  gap 2s  |--2--|       -> one healed event
//
// Gaps without inserts: as above, but a New event lying wholly inside the
// DST gap (an inserted shot) stops the healing. A New event that only ends
// at the left edge or only starts at the right edge does not.
//
//   DST  |--1--|  [ins]  |--2--|        -> 1 and 2 stay apart
//
// Events that overlap on either timeline never heal.
class HealProcessing : public EventListAlgorithm {
public:
    HealProcessing() = default;

    // Replaces the list by the healed list. Throws what timecode arithmetic
    // throws; the list is only replaced once everything has been worked out.
    void process(EventList& list, const Context& context) override;

private:
    bool canHeal(const EventBase& current, const EventBase& previous, HealProcessingMode mode,
                 const EventListIndex* newIndex, const Framerate& rate) const;
};

} // namespace montala::core
