#include "app/Commands.h"
#include "app/ConformFindings.h"
#include "app/EdlOptions.h"
#include "app/EventPrinting.h"
#include "app/LoadReporting.h"
#include "app/ReportPrinting.h"
#include "core/time/FramerateNames.h"
#include "run/ConformJob.h"
#include "util/Result.h"
#include "util/StringConverter.h"
#include "util/StringUtil.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <ostream>
#include <unistd.h>

namespace montala::app {

using run::ConformOutcome;
using util::Result;

namespace {

const char* const commandName = "montala: conform: ";

struct ConformOptions {
    std::string session;
    std::vector<std::string> oldFiles;
    std::vector<std::string> newFiles;
    std::vector<std::string> change;
    std::string output;
    std::string match = "roll";
    std::string heal;
    std::vector<std::string> vfx;
    core::EdlLoadOptions load;
    std::string tracks = "all";
    std::optional<unsigned> overhang;
    bool virginTerritories = false;
    std::vector<std::string> range;
    std::vector<std::string> noMarkers;
    bool json = false;
    bool force = false;
    unsigned maxDropPercent = 80;
    bool inPlace = false;
};

// Ctrl-C during a run: the handler only notes it, and the progress window's
// next call turns it into a cancel through the window's flag.
volatile std::sig_atomic_t interrupted = 0;

extern "C" void noteInterrupt(int)
{
    interrupted = 1;
}

// Installs the handler for the time of one run and puts the old one back.
class InterruptScope {
public:
    InterruptScope()
    {
        interrupted = 0;
        previous = std::signal(SIGINT, noteInterrupt);
    }
    ~InterruptScope() { std::signal(SIGINT, previous == SIG_ERR ? SIG_DFL : previous); }

private:
    void (*previous)(int) = SIG_DFL;
};

const char* markerName(host::TrackType type)
{
    for (const core::MarkerKindRow& row : core::markerKinds())
        if (host::trackTypeOf(row.kind) == type)
            return row.commandLineName;
    return "other";
}

const char* leftOutReason(host::RunSummary::LeftOut reason)
{
    return reason == host::RunSummary::LeftOut::Locked ? "locked" : "not selected";
}

const char* statusName(ConformOutcome::Status status)
{
    switch (status) {
    case ConformOutcome::Status::Done:
        return "done";
    case ConformOutcome::Status::BadInput:
        return "bad input";
    case ConformOutcome::Status::Failed:
        return "failed";
    case ConformOutcome::Status::Cancelled:
        return "cancelled";
    case ConformOutcome::Status::Refused:
        return "refused";
    }
    return "";
}

// The progress window on a terminal: one line redrawn in place, only when
// what it shows has changed.
class TerminalProgress {
public:
    explicit TerminalProgress(std::ostream& out) : out(out) {}
    ~TerminalProgress() { end(); }

    void show(const run::ProgressState& state)
    {
        const int width = 30;
        const std::int64_t total = state.total > 0 ? state.total : 1;
        const int filled = static_cast<int>(std::min<std::int64_t>(width, state.position * width / total));
        const int percent = static_cast<int>(std::min<std::int64_t>(100, state.position * 100 / total));
        std::string line = util::StringUtil::toUtf8(state.title);
        if (!state.detail.empty())
            line += " - " + util::StringUtil::toUtf8(state.detail);
        line += " [" + std::string(filled, '#') + std::string(width - filled, '-') + "] " + std::to_string(percent) + "%";
        if (line == shown)
            return;
        out << "\r" << line;
        if (line.size() < shown.size())
            out << std::string(shown.size() - line.size(), ' ');
        out.flush();
        shown = line;
    }

    void end()
    {
        if (!shown.empty())
            out << "\n";
        shown.clear();
    }

private:
    std::ostream& out;
    std::string shown;
};

class ConformRun {
public:
    ConformRun(const ConformOptions& options, CommandIo& io)
        : options(options), io(io), notes(options.json ? io.err : io.out)
    {
    }

    int run()
    {
        util::StringConverter converter;
        util::ScopedStringConverter converterScope(converter);

        run::ConformRequest request;
        if (const std::optional<int> refused = buildRequest(request))
            return *refused;

        // A progress bar only where a person watches; a log gets one line
        // per stage.
        const bool terminal = &io.err == &std::cerr && isatty(STDERR_FILENO) == 1;
        TerminalProgress bar(io.err);
        InterruptScope interruptScope;
        run::ConformWatcher watcher;
        watcher.stage = [&](run::ConformStage stage) {
            bar.end();
            notes << "== " << run::stageName(stage) << "\n";
        };
        watcher.loaded = [&](const core::EdlFileReport& report) { printLoadReport(report, notes, io.err); };
        watcher.progress = [&](const run::ProgressState& state) {
            if (terminal)
                bar.show(state);
            return interrupted != 0;
        };
        watcher.cancelRequested = [] { return interrupted != 0; };
        watcher.generated = [this](const core::DataModel& model, const core::Framerate& rate) {
            changeReport = core::report::ChangeReportBuilder().build(model, rate);
        };

        const ConformOutcome outcome = run::runConform(request, watcher);
        bar.end();
        report(outcome);
        switch (outcome.status) {
        case ConformOutcome::Status::Done:
            return 0;
        case ConformOutcome::Status::BadInput:
            return 2;
        default:
            return 1;
        }
    }

private:
    // Empty when the options make a request; else the exit status.
    std::optional<int> buildRequest(run::ConformRequest& request)
    {
        const bool cuts = !options.oldFiles.empty() || !options.newFiles.empty();
        if (cuts == !options.change.empty()) {
            io.err << commandName << "give either --old and --new, or --change\n";
            return 2;
        }
        if (cuts && (options.oldFiles.empty() || options.newFiles.empty())) {
            io.err << commandName << "--old and --new go together\n";
            return 2;
        }
        if (options.output.empty() && !options.inPlace) {
            io.err << commandName << "name the output with -o, or conform the session itself with --in-place\n";
            return 2;
        }
        std::optional<std::vector<core::VfxPatternEntry>> patterns =
            parseVfxPatterns(options.vfx, commandName, io.err);
        if (!patterns)
            return 2;
        request.vfx = std::move(*patterns);
        request.sessionPath = options.session;
        request.oldFiles = options.oldFiles;
        request.newFiles = options.newFiles;
        request.changeFiles = options.change;
        request.goOnAnyway = options.force;
        request.maxDroppedShare = options.maxDropPercent / 100.0;
        request.outputPath = options.output.empty() ? options.session : options.output;
        request.inPlace = options.inPlace;
        request.load = options.load;
        request.match = matchNameOf(options.match);
        if (!options.heal.empty())
            request.heal = healModeOf(options.heal);
        request.selectedTracksOnly = options.tracks == "selected";
        if (options.overhang)
            request.overhangFrames = *options.overhang;
        request.virginTerritories = options.virginTerritories;
        if (!options.range.empty())
            request.range = std::make_pair(options.range[0], options.range[1]);
        for (const std::string& name : options.noMarkers)
            request.noMarkers.insert(*core::markerKindNamed(name));
        return std::nullopt;
    }

    void report(const ConformOutcome& outcome)
    {
        if (options.json) {
            printJson(outcome);
        } else {
            printFindings(outcome, options.session, io.err);
            if (outcome.status == ConformOutcome::Status::Done)
                printSummary(outcome);
            else if (outcome.status == ConformOutcome::Status::Failed &&
                     outcome.summary.kind != host::RunSummary::Kind::None)
                printSummary(outcome); // how far a run came before it stopped
        }
        if (outcome.status != ConformOutcome::Status::Done) {
            if (outcome.refusedByCheck)
                io.err << commandName << "the run cannot start (" << Result::name(outcome.result) << "): "
                       << outcome.message << "\n";
            else
                io.err << commandName << outcome.message << "\n";
        }
    }

    void printSummary(const ConformOutcome& outcome)
    {
        const host::RunSummary& summary = outcome.summary;
        io.out << "Project rate: " << outcome.rateName << "\n";
        io.out << "Change EDL: " << outcome.changeEvents << " events\n";
        io.out << "Events applied: " << summary.eventsApplied << "\n";
        io.out << "Tracks taking part (" << summary.tracksTakingPart.size() << "):";
        for (const std::string& name : summary.tracksTakingPart)
            io.out << " " << name << ";";
        io.out << "\n";
        io.out << "Tracks left out (" << summary.tracksLeftOut.size() << "):";
        for (const auto& track : summary.tracksLeftOut)
            io.out << " " << track.name << " (" << leftOutReason(track.reason) << ");";
        io.out << "\n";
        io.out << "Markers written: " << summary.markerCount();
        for (const auto& [type, count] : summary.markersWritten)
            io.out << ", " << markerName(type) << " " << count;
        io.out << "\n";
        char seconds[32];
        std::snprintf(seconds, sizeof seconds, "%.3f", outcome.seconds);
        io.out << "Time taken: " << seconds << " s\n";
        if (!outcome.backupPath.empty())
            io.out << "Kept the session as it was in " << outcome.backupPath << "\n";
        if (outcome.written)
            io.out << "Wrote " << (options.output.empty() ? options.session : options.output) << "\n";
        if (changeReport)
            printReportDigest(io.out, *changeReport);
    }

    void printJson(const ConformOutcome& outcome)
    {
        const host::RunSummary& summary = outcome.summary;
        nlohmann::json leftOut = nlohmann::json::array();
        for (const auto& track : summary.tracksLeftOut)
            leftOut.push_back({{"name", track.name}, {"reason", leftOutReason(track.reason)}});
        nlohmann::json markers = nlohmann::json::object();
        for (const auto& [type, count] : summary.markersWritten)
            markers[markerName(type)] = count;
        nlohmann::json document = {
            {"status", statusName(outcome.status)},
            {"result", static_cast<int>(outcome.result)},
            {"resultName", Result::name(outcome.result)},
            {"message", outcome.message},
            {"rate", framerateToJson(outcome.rate)},
            {"changeEvents", outcome.changeEvents},
            {"eventsApplied", summary.eventsApplied},
            {"tracksTakingPart", summary.tracksTakingPart},
            {"tracksLeftOut", leftOut},
            {"markersWritten", markers},
            {"incomplete", summary.incomplete},
            {"undone", summary.undone},
            {"seconds", outcome.seconds},
            {"written", outcome.written ? nlohmann::json(options.output.empty() ? options.session : options.output)
                                        : nlohmann::json(nullptr)},
            {"backup", outcome.backupPath.empty() ? nlohmann::json(nullptr) : nlohmann::json(outcome.backupPath)},
        };
        addFindingsToJson(outcome, document);
        if (changeReport)
            document["report"] = reportDigestJson(*changeReport);
        io.out << document.dump(2) << "\n";
    }

    const ConformOptions& options;
    CommandIo& io;
    std::ostream& notes;
    std::optional<core::report::ChangeReport> changeReport; // when the Change EDL came from the cuts
};

} // namespace

void registerConformCommand(CLI::App& program, CommandIo& io)
{
    auto options = std::make_shared<ConformOptions>();
    auto* command = program.add_subcommand(
        "conform", "Re-conform a session of the simulated host to the new cut, and save it under a new name.");
    command->add_option("session", options->session, "The session file (read only)")->required();
    command->add_option("--old", options->oldFiles, "Old EDL file; repeatable");
    command->add_option("--new", options->newFiles, "New EDL file; repeatable");
    command->add_option("--change", options->change,
                        "A ready Change EDL, in place of --old and --new; its numbered parts in order");
    command->add_option("-o,--output", options->output, "Where the conformed session goes (never one of the inputs)");
    command->add_flag("--in-place", options->inPlace,
                      "Write the conformed session over the one read, keeping the old one beside it as SESSION.bak");
    addMatchOption(*command, options->match, "Match events by roll name or clip name");
    addHealOption(*command, options->heal);
    addVfxOption(*command, options->vfx);
    addLoadFlags(*command, options->load);
    command->add_option("--tracks", options->tracks, "Conform all tracks or the selected ones")
        ->check(CLI::IsMember({"all", "selected"}));
    command->add_option("--overhang", options->overhang, "Deal with audio overhanging a cut by up to FRAMES")
        ->check(CLI::Range(0u, 100000u));
    command->add_flag("--virgin-territories", options->virginTerritories,
                      "Fill the stretches of the new timeline that no cut reaches");
    command->add_option("--range", options->range, "Keep the run inside IN OUT (timecodes)")->expected(2);
    command->add_option("--no-markers", options->noMarkers, "Marker kinds not to write")
        ->expected(1, -1)
        ->check(CLI::IsMember(core::markerKindNames()));
    command->add_flag("--json", options->json, "Print one JSON document for scripts");
    command->add_flag("--force", options->force,
                      "Go on although the checks find that the session and the EDLs do not belong together");
    command->add_option("--max-drop", options->maxDropPercent,
                        "Refuse a Change EDL that drops more than PERCENT of the session's sound (default 80)")
        ->check(CLI::Range(0u, 100u));
    command->callback(
        [options, &io] { runCommand(io, commandName, 1, [&] { return ConformRun(*options, io).run(); }); });
}

} // namespace montala::app
