#pragma once

#include "core/events/EdlLoader.h"
#include "core/time/Framerate.h"
#include "core/events/EventList.h"
#include "core/model/Settings.h"
#include "sim/project/SimProject.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace montala::run {

// The audit of a conform: the old session, the conformed one, and the two
// cuts.
struct AuditRequest {
    std::string oldSession;
    std::string newSession;
    std::vector<std::string> oldFiles;
    std::vector<std::string> newFiles;
    core::EdlLoadOptions load;
    core::MatchName match = core::MatchName::RollName;
    // The run was limited to the selected tracks: the others must be as
    // they were.
    bool selectedTracksOnly = false;
    // The run dealt with audio overhanging the cuts by up to this many
    // frames: short bits of sound may have moved there (see auditProjects).
    std::optional<std::uint32_t> overhangFrames;
};

// A stretch of the New cut, first to last frame, that a track does not play
// as it should (or that the Old cut never showed).
struct SyncSpan {
    // "sound" (or "picture" on a video track), an automation parameter's
    // name such as "Volume", or "markers".
    std::string what;
    std::string first; // timecodes of the New cut
    std::string last;
    size_t frames = 0;
    std::string source;   // the shot at the first frame: "A001 10:00:03:04"
    std::string expected; // at the first frame: "file.wav @ 12.340 s", "silence", "0.50"
    std::string found;
};

struct TrackAudit {
    std::string name; // folders first: "DIALOGUE/DX"
    std::string kind; // "audio", "video" or "marker"
    // Left out of the run (locked, or not selected): must be untouched.
    bool leftOut = false;
    std::string leftOutReason;
    bool untouched = true;
    // The track is not in the conformed session.
    bool missing = false;

    // Frames of the New cut, over the tracks that took part.
    size_t inSync = 0;
    size_t outOfSync = 0;
    // New picture that the Old cut never showed, and that is silent as it
    // must be (not silent is counted out of sync).
    size_t newPicture = 0;
    // Picture the Old cut showed at another speed, through another
    // transition, or past the end of a shorter freeze: no sound follows it
    // frame by frame, so it is not judged.
    size_t notJudged = 0;
    // Frames next to a cut that an overhang run changed on purpose: a short
    // bit of sound left out, or sound carried across the cut with its event.
    size_t changedAtCuts = 0;
    // Judged frames where an automation curve is off by more than 0.01, or
    // where the track's markers do not lie as they lay (counted once a frame
    // however many curves or markers are off).
    size_t automationOff = 0;
    size_t markersOff = 0;
    // Every stretch out of sync, in time order; sound, automation and
    // markers each in stretches of their own.
    std::vector<SyncSpan> spans;

    bool ok() const
    {
        return !missing && untouched && outOfSync == 0 && automationOff == 0 && markersOff == 0;
    }
};

struct AuditReport {
    // The inputs could not be read; `message` says which and why.
    bool readable = false;
    std::string message;
    core::Framerate rate;
    std::string rateName;
    // Frames that a New shot covers; a stretch between two reels that none
    // covers is no picture, and nothing is judged there.
    size_t newCutFrames = 0;
    // The New cut's picture that the Old cut never showed, where every track
    // must be silent; out of sync where one is not.
    std::vector<SyncSpan> newPicture;
    std::vector<core::EdlFileReport> loads;
    std::vector<TrackAudit> tracks;

    bool inSync() const;
};

// Checks, for every frame of the New cut and every audio, video and user's
// marker track that took part, that the conformed session plays there what
// the old session played where the Old cut showed the same source frame,
// with the same automation (within 0.01) and the same markers:
//
//   New cut:   ...[ A001 10:00:05:00-10:00:09:00 ]...   at new frame f
//   Old cut:   [ A001 10:00:03:00-10:00:10:00 ]......   source frame s at old frame g
//   expected:  new session at f  ==  old session at g   (same file and position)
//
// The cuts are matched as the conform matches them: a freeze frame by frame
// from its first frame (the rest of a longer one is not judged), the frames
// under a dissolve or wipe only against the same transition from the same
// outgoing shot, the clean rest of such a shot like any other picture.
// Picture the Old cut never showed must be silent. It reads the cuts by
// source timecode on its own and shares nothing with the Change EDL's
// generation, so that it checks generation and conform together. Tracks
// left out of the run must be untouched.
//
// With overhangFrames, frames that lie that close to a cut (where the New
// cut stops following the Old one frame by frame) may also differ in the two
// ways an overhang run changes them, and are counted as changedAtCuts:
//
//   Old cut:       [ shot P ............|shot Q ............ ]
//   old session:    aaaaaaaaaa      bbbb|bbbbbbbbbbbbbbbbbb      b begins 4 frames early
//   New cut:       [ shot P ............][ Q, 8 frames later ]
//   strict:         aaaaaaaaaa      bbbb  bbbbbbbbbbbbbb         4 frames of b, a jump, b
//   overhang run:   aaaaaaaaaa            bbbbbbbbbbbbbb         the short bit of b left out
//
// Silence is allowed only where a sound of the old track, of any layer, lies
// across the cut's place on the old timeline and ends (or begins) within the
// window on that side of it, with the frame inside that short bit. The other
// change is sound carried across a cut with the rest of its event (a short
// head drawn in before it, a short tail after it): allowed only where it is
// exactly what the old session played next to the shot across the cut.
AuditReport auditSync(const AuditRequest& request,
                      const std::function<void(const core::EdlFileReport&)>& loaded = nullptr);

// The same on two projects and two cuts already in memory; the cuts' events
// are judged at the old project's rate.
void auditProjects(sim::SimProject& before, sim::SimProject& after, const core::EventList& oldCut,
                   const core::EventList& newCut, core::MatchName match, bool selectedTracksOnly,
                   AuditReport& report, std::optional<std::uint32_t> overhangFrames = std::nullopt);

} // namespace montala::run
