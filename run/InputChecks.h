#pragma once

#include "core/events/EventList.h"
#include "core/time/Framerate.h"
#include "sim/project/SimProject.h"

#include <optional>
#include <string>
#include <vector>

namespace montala::run {

// What a session shows of the cut it follows. A conform is only right when
// the session follows the Old cut; these checks find the commonest slips
// before anything changes (cuts swapped, a session conformed twice, a Change
// EDL of another film or a plain picture EDL given as one).

// Which cut the session's own evidence fits: the first picture track that is
// not Montala's (where its picture starts, jumps and ends), or else
// Montala's destination markers of an earlier run (where they stand).
enum class SessionFit {
    Unknown, // no picture and no markers: nothing to compare
    Old,
    New,     // not the Old cut, but the New one
    Neither,
};

// A cut fits when most jumps of the picture (or most destination markers)
// lie within a frame of its event edges and the picture starts and ends with
// it; failing that, when the picture runs past both its ends. The Old cut is
// asked first.
SessionFit sessionFit(sim::SimProject& project, const core::Framerate& rate, const core::EventList& oldCut,
                      const core::EventList& newCut);

// The share (0 to 1) of the sound on the tracks that take part that no SRC
// range of the Change EDL holds, so that the run would drop it; empty when
// those tracks hold no sound.
std::optional<double> droppedSoundShare(sim::SimProject& project, const core::Framerate& rate,
                                        const core::EventList& change, bool selectedTracksOnly);

// A stretch of the record timeline, as two timecodes at the project's rate.
struct TimecodeSpan {
    std::string in;
    std::string out;
};

// The stretches of the New cut (from its first record frame to its last) that
// no DST range of the Change EDL covers: they get no sound.
std::vector<TimecodeSpan> uncoveredSpans(const core::EventList& newCut, const core::EventList& change,
                                         const core::Framerate& rate);

// Indexes of the events of newCut that no DST range of the Change EDL
// reaches at all; events that cannot be used are left to the load report.
std::vector<size_t> unmatchedEvents(const core::EventList& newCut, const core::EventList& change,
                                    const core::Framerate& rate);

// Indexes of the Change events whose SRC range lies wholly outside the
// session (its start to its end).
std::vector<size_t> eventsOutsideSession(sim::SimProject& project, const core::Framerate& rate,
                                         const core::EventList& change);

} // namespace montala::run
