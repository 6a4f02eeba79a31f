#pragma once

#include "core/conform/InputChecks.h"
#include "core/conform/MarkerKinds.h"
#include "core/model/DataModel.h"
#include "core/events/EdlLoader.h"
#include "core/time/Framerate.h"
#include "core/model/Settings.h"
#include "host/RunSummary.h"
#include "run/ProgressRelay.h"
#include "sim/project/SimProject.h"
#include "util/Result.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace montala::run {

// One conform of a session, as a user asks for it.
struct ConformRequest {
    std::string sessionPath;
    // Either both cuts, from which the Change EDL is generated, or a ready
    // Change EDL (the numbered parts of a long one, in order).
    std::vector<std::string> oldFiles;
    std::vector<std::string> newFiles;
    std::vector<std::string> changeFiles;
    // Never one of the inputs; the session itself only with inPlace, and
    // then the session as it was is kept beside it (backupPathOf).
    std::string outputPath;
    bool inPlace = false;

    // How the EDLs are read and the Change EDL generated.
    core::EdlLoadOptions load;
    core::MatchName match = core::MatchName::RollName;
    std::optional<core::HealProcessingMode> heal;
    std::vector<core::VfxPatternEntry> vfx;

    // The run's settings.
    bool selectedTracksOnly = false;
    // Set: the snippet algorithm runs with this longest overhang.
    std::optional<std::uint32_t> overhangFrames;
    bool virginTerritories = false;
    // Timecodes at the project's rate: the run is kept inside them.
    std::optional<std::pair<std::string, std::string>> range;
    std::set<core::MarkerKind> noMarkers;

    // The checks before the run refuse inputs that do not belong together;
    // set, the run goes on past what they found.
    bool goOnAnyway = false;
    // More of the session's sound than this share dropped is refused.
    double maxDroppedShare = core::InputCheckOptions{}.maxDroppedShare;
};

// A check before the run that found the inputs do not belong together:
// those of the window ("picture", "dropped-sound") and the EDLs' "rate".
using Refusal = core::InputRefusal;
using core::TimecodeSpan;

// An event the run could not use, with where it came from and why.
struct UnusedEvent {
    std::string file; // empty for an event of a generated Change EDL
    size_t line = 0;
    int eventNumber = 0;
    std::string reason;
};

// Where the run is; the watcher hears each stage once, in this order.
enum class ConformStage { LoadingSession, LoadingEdls, Generating, Conforming, Saving };
const char* stageName(ConformStage stage);

// What a program is told while the job goes on. The progress answers whether
// to cancel (polled at every call of the progress window, and before each
// stage).
struct ConformWatcher {
    std::function<void(ConformStage)> stage;
    std::function<void(const core::EdlFileReport&)> loaded;
    std::function<bool(const ProgressState&)> progress;
    std::function<bool()> cancelRequested;
    // The conformed project, before it is saved (an audit in memory).
    std::function<void(sim::SimProject&)> conformed;
    // The model right after a Change EDL was generated from the cuts, at the
    // project's rate (for a report of what changed).
    std::function<void(const core::DataModel&, const core::Framerate&)> generated;
};

struct ConformOutcome {
    enum class Status {
        Done,
        // The input could not be used: an unreadable session or EDL, a bad
        // range. `message` says what and where.
        BadInput,
        // The run could not start (checkTracks), did not complete, or the
        // result could not be written.
        Failed,
        // Stopped by the user; the host's undo took the project back.
        Cancelled,
        // The checks before the run found that the inputs do not belong
        // together; nothing changed.
        Refused,
    };

    Status status = Status::Failed;
    std::string message;
    // The numeric result: the run's, or the code that kept it from starting.
    util::Result::Type result = util::Result::Ok;
    // checkTracks refused the run; `message` holds the window's alert text.
    bool refusedByCheck = false;
    core::Framerate rate;
    std::string rateName;
    size_t changeEvents = 0;
    // The messages the host showed on opening the session (a stored block
    // that could not be read).
    std::vector<std::string> sessionMessages;
    // What the checks before the run found; with goOnAnyway the run went on
    // all the same.
    std::vector<Refusal> refusals;
    // What the run could not use, in file order, and the stretches of the New
    // cut that no Change event fills.
    std::vector<UnusedEvent> unused;
    std::vector<TimecodeSpan> silentSpans;
    // Audio-only events that were left out because --accept-audio was not
    // given.
    size_t audioEventsLeftOut = 0;
    host::RunSummary summary;
    double seconds = 0.0; // of the run alone, from startConform to its end
    bool written = false;
    // The session as it was, when it was conformed in place.
    std::string backupPath;
};

// Brings Montala up on the simulated host exactly as the plug-in runs in
// it, conforms the session and saves it to request.outputPath:
//
//   session file -> SimHost project -> Host (adopts it) -> Change EDL in the
//   project's model (loaded, or generated from the cuts at the project's
//   rate) -> startConform -> idle calls until the run ends -> save through
//   the host (the model's block goes into the file) -> output, atomically
//
// Nothing is written unless the run succeeded; the session file is read
// only, so it changes only when the output names it.
ConformOutcome runConform(const ConformRequest& request, const ConformWatcher& watcher);

// Where a conform in place keeps the session as it was: "film.json.bak".
std::string backupPathOf(const std::string& sessionPath);

} // namespace montala::run
