#pragma once

#include "core/conform/HeardStretches.h"
#include "core/events/EventList.h"
#include "core/time/Framerate.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace montala::core {

// What a session shows of the cut it follows. A conform is only right when
// the session follows the Old cut; these checks find the commonest slips
// before anything changes (cuts swapped, a session conformed twice, a Change
// EDL of another film or a plain picture EDL given as one). They read plain
// values: whoever knows the host gathers them.

// [start, end) in absolute seconds.
using Interval = std::pair<double, double>;

// What the checks read of a session, absolute seconds.
struct SessionEvidence {
    double start = 0.0;
    double end = 0.0;
    // Where the first picture track that is not Montala's starts, jumps and
    // ends (pictureEdges below).
    std::vector<double> pictureEdges;
    // Montala's destination markers of an earlier run.
    std::vector<double> destinationMarkers;
    // The sound on each track that takes part, as it is heard there.
    std::vector<std::vector<Interval>> soundByTrack;
};

// Where the picture starts, jumps and ends: the stretches a picture track
// shows, joined where the picture runs on in the same clip.
std::vector<double> pictureEdges(const std::vector<MediaStretch>& shown, double frame);

// Which cut the session's own evidence fits: its picture, or else Montala's
// destination markers of an earlier run.
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
SessionFit sessionFit(const SessionEvidence& session, const Framerate& rate, const EventList& oldCut,
                      const EventList& newCut);

// The share (0 to 1) of the sound on the tracks that take part that no SRC
// range of the Change EDL holds, so that the run would drop it; empty when
// those tracks hold no sound.
std::optional<double> droppedSoundShare(const SessionEvidence& session, const Framerate& rate,
                                        const EventList& change);

// What the checks before a run found: which check, and the sentence the user
// is shown (the command line prints it, the window shows it in its alert).
struct InputRefusal {
    std::string check; // "picture", "dropped-sound"
    std::string message;
};

struct InputCheckOptions {
    // An earlier run conformed the session: a picture that follows the New
    // cut is then a second conform, not swapped cuts.
    bool conformedBefore = false;
    // The run takes the whole Change EDL; a range or a preview of some
    // events drops most of the sound by design.
    bool wholeChange = true;
    // More of the session's sound than this share dropped is refused.
    double maxDroppedShare = 0.8;
    // How the question after swapped cuts names them: the command line by
    // its options, the window by its lists.
    std::string swappedCutsQuestion = "did you swap --old and --new?";
};

// The picture is compared with the cuts when both are there (not for a
// ready Change EDL); the dropped sound when the run takes the whole Change
// EDL.
std::vector<InputRefusal> checkInputs(const SessionEvidence& session, const Framerate& rate, const EventList& oldCut,
                                      const EventList& newCut, const EventList& change,
                                      const InputCheckOptions& options);

// A stretch of the record timeline, as two timecodes at the project's rate.
struct TimecodeSpan {
    std::string in;
    std::string out;
};

// The stretches of the New cut (from its first record frame to its last) that
// no DST range of the Change EDL covers: they get no sound.
std::vector<TimecodeSpan> uncoveredSpans(const EventList& newCut, const EventList& change, const Framerate& rate);

// Indexes of the events of newCut that no DST range of the Change EDL
// reaches at all; events that cannot be used are left to the load report.
std::vector<size_t> unmatchedEvents(const EventList& newCut, const EventList& change, const Framerate& rate);

// Indexes of the Change events whose SRC range lies wholly outside the
// session (its start to its end).
std::vector<size_t> eventsOutsideSession(const SessionEvidence& session, const Framerate& rate,
                                         const EventList& change);

} // namespace montala::core
