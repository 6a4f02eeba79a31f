#include "run/ConformJob.h"

#include "core/model/DataModel.h"
#include "core/time/FramerateNames.h"
#include "core/time/Timecode.h"
#include "core/time/Tolerances.h"
#include "host/Host.h"
#include "host/InputChecks.h"
#include "host/Project.h"
#include "platform/FileIdentity.h"
#include "platform/SafeFileWriter.h"
#include "sim/session/SessionFile.h"
#include "sim/services/SimAlertService.h"
#include "sim/services/SimHost.h"
#include "util/StringConverter.h"
#include "util/StringUtil.h"
#include "sim/project/SimProjectManager.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <map>

namespace montala::run {

using util::Result;

namespace {

void applySettings(const ConformRequest& request, core::Settings& settings)
{
    settings.setMatchName(request.match);
    if (request.heal)
        settings.setHealProcessing(*request.heal);
    settings.setBRollRenaming(request.load.renameBRolls);
    for (size_t index = 0; index < request.vfx.size() && index < core::Settings::vfxPatternCount; ++index)
        settings.setVfxPattern(request.vfx[index], index);
    settings.setApplyTo(request.selectedTracksOnly ? core::ApplyTo::SelectedTracks : core::ApplyTo::AllTracks);
    settings.setIncludeOverhanging(request.overhangFrames.has_value());
    if (request.overhangFrames)
        settings.setOverhangFrames(*request.overhangFrames);
    settings.setCreateVirginTerritories(request.virginTerritories);
    for (const core::MarkerKindRow& row : core::markerKinds())
        settings.setCreateMarkers(row.kind, !request.noMarkers.count(row.kind));
}

// The rate a file suggests is only a lower bound (a 25 fps file that never
// shows frame 24 suggests 24, a 50 fps file suggests 60), so only what the
// project's rate cannot hold refuses a run: frame numbers it does not have,
// or the other drop mode.
bool rateContradicts(const core::EdlFileReport& report, const core::Framerate& project)
{
    const int drop = report.suggestedRate.dropMode;
    return report.timecodesOffRate || (drop != -1 && (drop == 1) != (project.dropMode == 1));
}

// A timecode of the range, checked at the project's rate.
std::optional<double> rangeSeconds(const std::string& text, const core::Framerate& rate)
{
    int fields[4];
    if (!core::Timecode::parseText(text, fields))
        return std::nullopt;
    const core::Timecode timecode(fields[0], fields[1], fields[2], fields[3]);
    if (!timecode.isValid(rate))
        return std::nullopt;
    return timecode.toSeconds(rate);
}

// Everything that lives for one job, torn down in the order the host needs:
// Montala first, then the relay's hold on the services, then the host.
class Job {
public:
    Job(const ConformRequest& request, const ConformWatcher& watcher) : request(request), watcher(watcher) {}

    ~Job()
    {
        montala.reset();
        if (relay)
            relay->releaseServices();
        relay.reset();
        project.reset();
        if (simHost)
            simHost->shutdown();
    }

    ConformOutcome run()
    {
        try {
            return work();
        } catch (Result::Type code) {
            outcome.status = ConformOutcome::Status::Failed;
            outcome.result = code;
            outcome.message = std::string("the run failed: ") + Result::name(code);
            return outcome;
        }
    }

private:
    bool stage(ConformStage reached)
    {
        if (watcher.stage)
            watcher.stage(reached);
        if (watcher.cancelRequested && watcher.cancelRequested()) {
            outcome.status = ConformOutcome::Status::Cancelled;
            outcome.result = Result::Cancelled;
            outcome.message = reached == ConformStage::Saving ? "cancelled while saving; nothing was written"
                                                              : "cancelled before the run began; nothing was written";
            return false;
        }
        return true;
    }

    ConformOutcome badInput(std::string message)
    {
        outcome.status = ConformOutcome::Status::BadInput;
        outcome.message = std::move(message);
        return outcome;
    }

    ConformOutcome failed(Result::Type code, std::string message)
    {
        outcome.status = ConformOutcome::Status::Failed;
        outcome.result = code;
        outcome.message = std::move(message);
        return outcome;
    }

    // The output is checked before the run, so that an hour's run does not
    // end in a file that cannot be written, or in one written over an input.
    bool checkOutput()
    {
        const std::string& output = request.outputPath;
        const auto refuse = [&](const std::string& why) {
            badInput("-o " + output + ": " + why + "; nothing was conformed");
            return false;
        };
        const bool overSession = platform::isSameFile(output, request.sessionPath);
        if (overSession && !request.inPlace)
            return refuse("is the session that is read; --in-place conforms it in place and keeps the old file "
                          "beside it as " + backupPathOf(request.sessionPath));
        for (const std::vector<std::string>* files : {&request.oldFiles, &request.newFiles, &request.changeFiles})
            for (const std::string& file : *files)
                if (platform::isSameFile(output, file))
                    return refuse("is the EDL " + file + ", an input of the run");
        const platform::SafeFileWriter::Outcome checked = platform::SafeFileWriter::check(output);
        if (!checked.ok()) {
            badInput("cannot write " + checked.message() + "; nothing was conformed");
            return false;
        }
        if (overSession) {
            const platform::SafeFileWriter::Outcome backup =
                platform::SafeFileWriter::check(backupPathOf(request.sessionPath));
            if (!backup.ok()) {
                badInput("cannot keep the session as it was: " + backup.message() + "; nothing was conformed");
                return false;
            }
        }
        return true;
    }

    // The session as it was, copied beside it before it is replaced.
    bool keepBackup(std::string& error)
    {
        std::ifstream file(request.sessionPath, std::ios::binary);
        std::ostringstream text;
        text << file.rdbuf();
        if (!file) {
            error = request.sessionPath + ": cannot be read again to keep it";
            return false;
        }
        const std::string backup = backupPathOf(request.sessionPath);
        const platform::SafeFileWriter::Outcome written = platform::SafeFileWriter::write(backup, text.str());
        if (!written.ok()) {
            error = written.message();
            return false;
        }
        outcome.backupPath = backup;
        return true;
    }

    ConformOutcome work()
    {
        if (!checkOutput())
            return outcome;
        if (!stage(ConformStage::LoadingSession))
            return outcome;
        simHost = sim::SimHost::create();
        std::string error;
        project = sim::SessionFile::load(*simHost, request.sessionPath, error);
        if (!project)
            return badInput(error);
        simHost->projectManager().openProject(project);

        relay = ServicesRelay::create(simHost.get(), [this](const ProgressState& state) {
            const bool wanted = watcher.progress && watcher.progress(state);
            return wanted || (watcher.cancelRequested && watcher.cancelRequested());
        });
        montala = Kelmar::owned(new host::Host(relay.get()));
        // What the host showed while it adopted the project: a stored block
        // that could not be read, say.
        for (const sim::SimAlertService::Alert& alert : simHost->alerts().shown())
            outcome.sessionMessages.push_back(util::StringUtil::toUtf8(alert.message));
        simHost->alerts().clear();
        host::Project* active = montala->getActiveProject();
        if (!active)
            return failed(Result::NoProject, "the session's project did not come up in the host");
        core::ScopedFramerateProvider provider(active);
        core::DataModel& model = active->getDataModel();
        outcome.rate = active->getFramerate();
        outcome.rateName = core::rateName(outcome.rate);

        if (!stage(ConformStage::LoadingEdls))
            return outcome;
        applySettings(request, model.getSettings());
        if (request.range) {
            const std::optional<double> in = rangeSeconds(request.range->first, outcome.rate);
            const std::optional<double> out = rangeSeconds(request.range->second, outcome.rate);
            if (!in || !out)
                return badInput("--range " + request.range->first + " " + request.range->second +
                                ": not two timecodes at the project's rate (" + outcome.rateName + ")");
            if (*out < *in)
                return badInput("--range " + request.range->first + " " + request.range->second +
                                ": the end lies before the start");
            model.getSettings().setRestrictRange(true);
            model.getSettings().setRestrictedRange(*in, *out);
        } else {
            model.getSettings().setRestrictRange(false);
        }
        if (!loadEdls(model))
            return outcome;

        if (request.changeFiles.empty()) {
            if (!stage(ConformStage::Generating))
                return outcome;
            Result::Type generated = Result::Ok;
            try {
                model.applyVfxPatterns();
                generated = model.generateChangeEdl();
            } catch (Result::Type code) {
                generated = code;
            } catch (const std::exception& e) {
                return failed(Result::InvalidArgument, std::string("the Change EDL could not be generated: ") +
                                                           e.what());
            }
            if (generated != Result::Ok)
                return failed(generated, std::string("the Change EDL could not be generated (") +
                                             Result::name(generated) + ")");
            if (watcher.generated)
                watcher.generated(model, outcome.rate);
        }
        outcome.changeEvents = model.getChangeList().getSize();
        if (request.range && !rangeHoldsEvents(model)) {
            return badInput("--range " + request.range->first + " " + request.range->second +
                            ": no event of the Change EDL lies in it; nothing was conformed");
        }
        if (!checkInputs(model))
            return outcome;

        if (!stage(ConformStage::Conforming))
            return outcome;
        const auto began = std::chrono::steady_clock::now();
        const Result::Type asked = montala->startConform();
        if (asked != Result::Ok) {
            outcome.refusedByCheck = true;
            return failed(asked, util::StringConverter().toUtf8(core::cannotStartText(asked, false)));
        }
        // The host's idle calls; one carries out the whole run.
        for (int turn = 0; turn < 100 && montala->isRunPending(); ++turn)
            simHost->runIdle();
        outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
        outcome.summary = montala->lastRun();
        outcome.result = outcome.summary.result;
        // What the tracks hold now, not what the run meant to write: a marker
        // outside the range, say, is not there. The run rewrites Montala's
        // tracks over the stretch it brings home, so what lies there is its own.
        outcome.summary.markersWritten = markersInProject(model.getSettings());
        if (montala->isRunPending())
            return failed(Result::HostCallFailed, "the host never gave the run its idle call");
        if (outcome.result == Result::Cancelled) {
            outcome.status = ConformOutcome::Status::Cancelled;
            outcome.message = outcome.summary.undone
                                  ? "cancelled; the host's undo took the project back, nothing was written"
                                  : "cancelled, and the host's undo failed; nothing was written";
            return outcome;
        }
        if (outcome.result != Result::Ok)
            return failed(outcome.result, std::string("the run did not complete (") + Result::name(outcome.result) +
                                              "); nothing was written");

        if (watcher.conformed)
            watcher.conformed(*project);
        // Nothing here undoes a finished run: what the run replaced goes
        // before the save, which needs room of its own for a feature.
        project->clearHistory();
        if (!stage(ConformStage::Saving))
            return outcome;
        if (request.inPlace && platform::isSameFile(request.outputPath, request.sessionPath) && !keepBackup(error))
            return failed(Result::FileNotOpened, "could not keep the session as it was: " + error +
                                                     "; nothing was written");
        if (!sim::SessionFile::save(*project, request.outputPath, error, watcher.cancelRequested)) {
            if (error.empty()) {
                outcome.status = ConformOutcome::Status::Cancelled;
                outcome.result = Result::Cancelled;
                outcome.message = "cancelled while saving; nothing was written";
                return outcome;
            }
            return failed(Result::FileNotOpened, "could not write " + error);
        }
        outcome.written = true;
        outcome.status = ConformOutcome::Status::Done;
        return outcome;
    }

    // Every file must be read: a Change EDL from part of a cut would move
    // sound to wrong places. The lists are the request's alone: what an
    // earlier run left stored in the session is replaced, never added to.
    bool loadEdls(core::DataModel& model)
    {
        conformedBefore = !model.getNewList().getEvents().empty() || !model.getChangeList().getEvents().empty();
        model.getOldList().clear();
        model.getNewList().clear();
        model.getChangeList().clear();

        const bool fromChange = !request.changeFiles.empty();
        std::vector<std::string> all = fromChange ? request.changeFiles : request.oldFiles;
        const size_t oldCount = fromChange ? 0 : all.size();
        if (!fromChange)
            all.insert(all.end(), request.newFiles.begin(), request.newFiles.end());
        core::EdlLoader loader(all, request.load);
        std::string unread;
        for (size_t index = 0; index < all.size(); ++index) {
            core::EventList& list = fromChange            ? model.getChangeList()
                                    : index < oldCount ? model.getOldList()
                                                       : model.getNewList();
            std::vector<Origin>& origin = &list == &model.getNewList() ? newOrigins : changeOrigins;
            const core::EdlFileReport report = loader.load(index, list);
            if (watcher.loaded)
                watcher.loaded(report);
            if (!report.opened) {
                unread += (unread.empty() ? "" : ", ") + all[index];
                continue;
            }
            for (const core::UnusableEvent& event : report.unusable)
                outcome.unused.push_back({report.fileName, event.line, event.eventNumber, event.reason});
            if (!request.load.acceptAudio)
                outcome.audioEventsLeftOut += report.audioEvents;
            if (rateContradicts(report, outcome.rate))
                outcome.refusals.push_back(
                    {"rate", report.fileName + " suggests " + core::describeSuggestedRate(report.suggestedRate) +
                                 ", but the session runs at " + outcome.rateName});
            if (&list != &model.getOldList())
                for (size_t line = 0; line < report.events; ++line)
                    origin.push_back({report.fileName, line < report.parse.eventLines.size()
                                                           ? report.parse.eventLines[line]
                                                           : 0});
        }
        if (!unread.empty()) {
            badInput("not every EDL could be read (" + unread + "); nothing was conformed");
            return false;
        }
        return true;
    }

    // What the Change EDL leaves out, and whether the inputs belong
    // together; true when the run may go on.
    bool checkInputs(core::DataModel& model)
    {
        const core::EventList& change = model.getChangeList();
        const core::Framerate& rate = outcome.rate;
        // The same evidence and checks as the window's, read through the
        // host adapter; the host's own asking is off, as they are answered here.
        core::SessionEvidence evidence;
        try {
            evidence = host::sessionEvidence(*montala->getActiveProject(), request.selectedTracksOnly);
        } catch (Result::Type code) {
            failed(code, std::string("the session's tracks could not be read (") + Result::name(code) +
                             "); nothing was changed");
            return false;
        }
        montala->setInputChecksAsked(false);
        const auto originOf = [](const std::vector<Origin>& origins, size_t index) {
            return index < origins.size() ? origins[index] : Origin{};
        };
        if (request.changeFiles.empty()) {
            for (const size_t index : core::unmatchedEvents(model.getNewList(), change, rate)) {
                const Origin origin = originOf(newOrigins, index);
                outcome.unused.push_back({origin.file, origin.line, model.getNewList().getEvent(index)->getEventNumber(),
                                          "no event of the Old cut shows this picture"});
            }
            outcome.silentSpans = core::uncoveredSpans(model.getNewList(), change, rate);
        }
        for (const size_t index : core::eventsOutsideSession(evidence, rate, change)) {
            const core::EventBase& event = *change.getEvent(index);
            const Origin origin =
                request.changeFiles.empty() ? Origin{} : originOf(changeOrigins, index);
            outcome.unused.push_back({origin.file, origin.line, event.getEventNumber(),
                                      "SRC " + event.getSrcIn().toString() + "-" + event.getSrcOut().toString() +
                                          " lies outside the session"});
        }

        core::InputCheckOptions options;
        options.conformedBefore = conformedBefore;
        options.wholeChange = !request.range;
        options.maxDroppedShare = request.maxDroppedShare;
        for (core::InputRefusal& refusal :
             core::checkInputs(evidence, rate, model.getOldList(), model.getNewList(), change, options))
            outcome.refusals.push_back(std::move(refusal));
        if (outcome.refusals.empty() || request.goOnAnyway)
            return true;
        outcome.status = ConformOutcome::Status::Refused;
        outcome.result = Result::InvalidArgument;
        outcome.message = "the inputs do not belong together; nothing was changed";
        return false;
    }

    bool rangeHoldsEvents(core::DataModel& model)
    {
        const auto [in, out] = model.getSettings().getRestrictedRange();
        for (const core::EventPtr& event : model.getChangeList().getEvents()) {
            const core::Timecode& dstIn = event->getDstIn();
            const core::Timecode& dstOut = event->getDstOut();
            if (dstIn.isValid(outcome.rate) && dstOut.isValid(outcome.rate) &&
                dstIn.toSeconds(outcome.rate) < out && dstOut.toSeconds(outcome.rate) > in)
                return true;
        }
        return false;
    }

    // Markers on Montala's marker tracks, by the track's type, that lie in
    // the stretch a run brings home: the whole timeline, or the range.
    std::map<host::TrackType, size_t> markersInProject(const core::Settings& settings)
    {
        const double start = project->getProjectStart();
        const bool ranged = settings.getRestrictRange();
        const double from = settings.getPreserveBefore() - start - core::positionTolerance;
        const double to = settings.getPreserveAfter() - start + core::positionTolerance;
        std::map<host::TrackType, size_t> counts;
        const auto walk = [&](const auto& self, const sim::SimObject& node) -> void {
            for (const auto& child : node.children()) {
                if (!child->isTrack())
                    continue;
                // Memos are the user's, not the run's.
                const auto type = child->attributes().find("Montala:MarkerType");
                if (child->kind() == sim::ObjectKind::MarkerTrack && type != child->attributes().end() &&
                    type->second.getInt() != static_cast<int>(host::TrackType::Memos))
                    for (const auto& marker : child->children())
                        if (!ranged || (marker->timelineStart() >= from && marker->timelineEnd() <= to))
                            ++counts[static_cast<host::TrackType>(type->second.getInt())];
                self(self, *child);
            }
        };
        walk(walk, *project);
        return counts;
    }

    // Where an event of a list came from.
    struct Origin {
        std::string file;
        size_t line = 0;
    };

    const ConformRequest& request;
    const ConformWatcher& watcher;
    ConformOutcome outcome;
    Kelmar::IPtr<sim::SimHost> simHost;
    Kelmar::IPtr<sim::SimProject> project;
    Kelmar::IPtr<ServicesRelay> relay;
    Kelmar::IPtr<host::Host> montala;
    bool conformedBefore = false;
    std::vector<Origin> newOrigins;
    std::vector<Origin> changeOrigins;
};

} // namespace

const char* stageName(ConformStage stage)
{
    switch (stage) {
    case ConformStage::LoadingSession:
        return "Loading the session";
    case ConformStage::LoadingEdls:
        return "Reading the EDLs";
    case ConformStage::Generating:
        return "Generating the Change EDL";
    case ConformStage::Conforming:
        return "Conforming";
    case ConformStage::Saving:
        return "Saving";
    }
    return "";
}

std::string backupPathOf(const std::string& sessionPath)
{
    return sessionPath + ".bak";
}

ConformOutcome runConform(const ConformRequest& request, const ConformWatcher& watcher)
{
    Job job(request, watcher);
    return job.run();
}

} // namespace montala::run
