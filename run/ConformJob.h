#pragma once

#include "core/DataModel.h"
#include "core/EdlLoader.h"
#include "core/Framerate.h"
#include "core/Settings.h"
#include "host/RunSummary.h"
#include "run/ProgressRelay.h"
#include "sim/SimProject.h"
#include "util/Result.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace montala::run {

// The marker tracks a run can write, as the command line names them.
enum class MarkerKind { Destination, Transition, Insert, Snippet, Automation, Overlap };

// The names of the marker kinds ("destination", "transition", ...), in order.
const std::vector<std::string>& markerKindNames();
std::optional<MarkerKind> parseMarkerKind(const std::string& name);

// One conform of a session, as a user asks for it.
struct ConformRequest {
    std::string sessionPath;
    // Either both cuts, from which the Change EDL is generated, or a ready
    // Change EDL.
    std::vector<std::string> oldFiles;
    std::vector<std::string> newFiles;
    std::string changeFile;
    std::string outputPath;

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
    std::set<MarkerKind> noMarkers;
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
    host::RunSummary summary;
    double seconds = 0.0; // of the run alone, from startConform to its end
    bool written = false;
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

// The window's alert text for a code of checkTracks.
std::string checkTracksAlert(util::Result::Type code);

} // namespace montala::run
