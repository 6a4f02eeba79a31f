#include "run/ConformJob.h"

#include "core/DataModel.h"
#include "core/FramerateNames.h"
#include "core/Timecode.h"
#include "host/Host.h"
#include "host/Project.h"
#include "sim/SessionFile.h"
#include "sim/SimHost.h"
#include "sim/SimProjectManager.h"

#include <chrono>
#include <map>

namespace montala::run {

using util::Result;

namespace {

const std::map<std::string, MarkerKind> markerKinds = {
    {"destination", MarkerKind::Destination}, {"transition", MarkerKind::Transition},
    {"insert", MarkerKind::Insert},           {"snippet", MarkerKind::Snippet},
    {"automation", MarkerKind::Automation},   {"overlap", MarkerKind::Overlap},
};

void applySettings(const ConformRequest& request, const core::Framerate& rate, core::Settings& settings)
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
    const auto& off = request.noMarkers;
    settings.setCreateDestinationMarkers(!off.count(MarkerKind::Destination));
    settings.setCreateTransitionMarkers(!off.count(MarkerKind::Transition));
    settings.setCreateInsertMarkers(!off.count(MarkerKind::Insert));
    settings.setCreateSnippetMarkers(!off.count(MarkerKind::Snippet));
    settings.setCreateAutomationWarningMarkers(!off.count(MarkerKind::Automation));
    settings.setCreateOverlapMarkers(!off.count(MarkerKind::Overlap));
    (void)rate;
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
            outcome.message = "cancelled before the run began; nothing was written";
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

    ConformOutcome work()
    {
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
        host::Project* active = montala->getActiveProject();
        if (!active)
            return failed(Result::NoProject, "the session's project did not come up in the host");
        core::ScopedFramerateProvider provider(active);
        core::DataModel& model = active->getDataModel();
        outcome.rate = active->getFramerate();
        outcome.rateName = core::rateName(outcome.rate);

        if (!stage(ConformStage::LoadingEdls))
            return outcome;
        applySettings(request, outcome.rate, model.getSettings());
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
        }
        if (!loadEdls(model))
            return outcome;

        if (request.changeFile.empty()) {
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

        if (!stage(ConformStage::Conforming))
            return outcome;
        const auto began = std::chrono::steady_clock::now();
        const Result::Type asked = montala->startConform();
        if (asked != Result::Ok) {
            outcome.refusedByCheck = true;
            return failed(asked, checkTracksAlert(asked));
        }
        // The host's idle calls; one carries out the whole run.
        for (int turn = 0; turn < 100 && montala->isRunPending(); ++turn)
            simHost->runIdle();
        outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
        outcome.summary = montala->lastRun();
        outcome.result = outcome.summary.result;
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
        if (!stage(ConformStage::Saving))
            return outcome;
        if (!sim::SessionFile::save(*project, request.outputPath, error))
            return failed(Result::FileNotOpened, "could not write " + request.outputPath + ": " + error);
        outcome.written = true;
        outcome.status = ConformOutcome::Status::Done;
        return outcome;
    }

    // Every file must be read: a Change EDL from part of a cut would move
    // sound to wrong places.
    bool loadEdls(core::DataModel& model)
    {
        std::vector<std::string> all;
        size_t oldCount = 0;
        if (request.changeFile.empty()) {
            all = request.oldFiles;
            oldCount = all.size();
            all.insert(all.end(), request.newFiles.begin(), request.newFiles.end());
        } else {
            all.push_back(request.changeFile);
        }
        core::EdlLoader loader(all, request.load);
        std::string unread;
        for (size_t index = 0; index < all.size(); ++index) {
            core::EventList& list = !request.changeFile.empty() ? model.getChangeList()
                                    : index < oldCount        ? model.getOldList()
                                                              : model.getNewList();
            const core::EdlFileReport report = loader.load(index, list);
            if (watcher.loaded)
                watcher.loaded(report);
            if (!report.opened)
                unread += (unread.empty() ? "" : ", ") + all[index];
        }
        if (!unread.empty()) {
            badInput("not every EDL could be read (" + unread + "); nothing was conformed");
            return false;
        }
        return true;
    }

    const ConformRequest& request;
    const ConformWatcher& watcher;
    ConformOutcome outcome;
    Kelmar::IPtr<sim::SimHost> simHost;
    Kelmar::IPtr<sim::SimProject> project;
    Kelmar::IPtr<ServicesRelay> relay;
    Kelmar::IPtr<host::Host> montala;
};

} // namespace

const std::vector<std::string>& markerKindNames()
{
    static const std::vector<std::string> names = {"destination", "transition", "insert",
                                                   "snippet",     "automation", "overlap"};
    return names;
}

std::optional<MarkerKind> parseMarkerKind(const std::string& name)
{
    const auto found = markerKinds.find(name);
    if (found == markerKinds.end())
        return std::nullopt;
    return found->second;
}

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

std::string checkTracksAlert(Result::Type code)
{
    if (code == Result::NoSelectedTracks)
        return "No tracks selected for Montala process.\nPlease select the tracks that you want to use.";
    if (code == Result::EmptyChangeList)
        return "No events in Change EDL.";
    return "No tracks available for Montala process.";
}

ConformOutcome runConform(const ConformRequest& request, const ConformWatcher& watcher)
{
    Job job(request, watcher);
    return job.run();
}

} // namespace montala::run
