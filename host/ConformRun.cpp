#include "host/ConformRun.h"

#include "host/CutEvent.h"
#include "host/DataModelChangeCommand.h"
#include "host/HostCalls.h"
#include "host/ProgressHandler.h"
#include "host/Project.h"
#include "host/video/VideoProvider.h"

#include "core/model/Settings.h"
#include "core/time/Tolerances.h"
#include "util/StringUtil.h"

#include "kelmar/services/IActionManager.h"
#include "kelmar/services/IApplicationState.h"

#include <algorithm>

namespace montala::host {

using util::Result;
using util::StringUtil;

ConformRun::ConformRun(Project& runProject, Kelmar::IHostServices* hostContext, RunSummary::Kind kind)
    : project(runProject), context(hostContext), tracks(runProject, runProject.getDataModel().getSettings())
{
    summary.kind = kind;
}

ConformRun::ConformRun(Project& runProject, Kelmar::IProjectEdit& edit)
    : project(runProject), tracks(runProject, runProject.getDataModel().getSettings()), openEdit(&edit)
{
}

ConformRun::~ConformRun() = default;

// ---- The frame and the group

RunSummary ConformRun::framed(core::MontalerBase& driver, const core::EventList& events, Kelmar::ITransport* stopping,
                       const std::function<Result::Type()>& work)
{
    const bool applying = summary.kind == RunSummary::Kind::Apply;
    progress = std::make_unique<ProgressHandler>(context);
    Kelmar::IPtr<Kelmar::IApplicationState> application;
    Result::Type result = Result::Ok;
    try {
        project.setCaching(true);
        if (!project.workArea().hasConformOffset())
            project.workArea().computeConformOffset();
        if (stopping && stopping->isPlaying())
            stopping->stop();
        driver.setProgress(progress.get());
        application = getService<Kelmar::IApplicationState>(context);
        application->setBusy(true);
        // Only an apply can be cancelled: the host's undo takes it back.
        progress->start(StringUtil::translate(applying ? u"Processing Project" : u"Project Preview"),
                        driver.countSteps(static_cast<int64_t>(events.getSize()),
                                          project.getDataModel().getSettings(), 1),
                        applying);
        tracks.describe(summary);
        editing = true;
        result = work();
    } catch (Result::Type code) {
        result = code;
    }
    editing = false;
    try {
        progress->finish();
    } catch (Result::Type) {
        // Never opened.
    }
    if (application)
        application->setBusy(false);
    driver.setProgress(nullptr);
    project.setCaching(false);
    progress.reset();
    summary.result = result;
    return summary;
}

Result::Type ConformRun::inEditGroup(Kelmar::IHostServices* context, Kelmar::IProject* hostProject, const char16_t* title,
                              const char16_t* incompleteTitle, const EditWork& work, bool& incomplete)
{
    Kelmar::IPtr<Kelmar::IProjectEdit> group;
    try {
        Kelmar::IPtr<Kelmar::IRangeEdit> rangeEdit = getService<Kelmar::IRangeEdit>(context);
        group = queryRequired<Kelmar::IProjectEdit>(rangeEdit.get());
        check(group->beginEdit(1));
        // What the work gives back is its answer, not a failure of the
        // group: the group closes under its normal title either way.
        const Result::Type answer = work(*group);
        const std::u16string closing = StringUtil::translate(title);
        check(group->endEdit(hostProject, closing.c_str()));
        return answer;
    } catch (Result::Type code) {
        // One way out for every failure: the group closes under a name that
        // says it is partial, and the host's undo can take it back.
        if (group) {
            std::u16string closing = incompleteTitle;
            try {
                closing = StringUtil::translate(incompleteTitle);
            } catch (Result::Type) {
            }
            group->endEdit(hostProject, closing.c_str());
            incomplete = true;
        }
        return code;
    }
}

Result::Type ConformRun::inGroup(const char16_t* title, const char16_t* incompleteTitle,
                          const std::function<Result::Type()>& work)
{
    const Result::Type result = inEditGroup(
        context, project.getHostProject(), title, incompleteTitle,
        [&](Kelmar::IProjectEdit& group) {
            openEdit = &group;
            return work();
        },
        summary.incomplete);
    openEdit = nullptr;
    return result;
}

Kelmar::IProjectEdit& ConformRun::edit()
{
    if (!openEdit)
        throw Result::NotInitialized;
    return *openEdit;
}

void ConformRun::prepareTracks()
{
    project.ownTracks().createFolderAndMarkers(edit(), project.getDataModel().getSettings());
    tracks.addMemos(project.ownTracks().markerTrack(TrackType::Memos));
}

// ---- The runs

void ConformRun::writePicture(double offset)
{
    if (!video)
        return;
    const Result::Type pictured = video->applyVideo(true, offset, edit());
    if (pictured != Result::Ok)
        throw pictured;
}

RunSummary ConformRun::apply(core::MontalerBase& driver, Kelmar::ITransport* transport)
{
    core::DataModel& model = project.getDataModel();
    return framed(driver, model.getChangeList(), transport, [&] {
        const Result::Type result = inGroup(u"Apply Montala", u"Apply Montala (incomplete)", [&] {
            // The model's step joins the group when the command goes, at the
            // end of this scope, before the group closes.
            DataModelChangeCommand command(Kelmar::shared(&edit()), model, project.getHostProject());
            prepareTracks();
            // The conform catches its own failures: what it did stays, and
            // its code is the run's answer.
            const Result::Type conformed = driver.conform(model.getChangeList());
            project.createVideoTrack(edit());
            writePicture(0.0);
            double start = 0.0;
            double end = 0.0;
            project.workArea().getEditRange(start, end);
            project.workArea().finishRange(edit(), start, end, tracks.closing(project));
            return conformed;
        });
        // The host's undo is no edit of the run's own.
        editing = false;
        if (result == Result::Cancelled) {
            // The host takes the whole group back at once, the model's step
            // with it.
            auto actions = getService<Kelmar::IActionManager>(context);
            summary.undone = actions->invoke("Edit", "Undo") == Kelmar::kResultOk;
        }
        return result;
    });
}

RunSummary ConformRun::preview(core::MontalerBase& driver, const PreviewRequest& request)
{
    // A preview leaves the transport alone: the user may be listening.
    return framed(driver, request.events, nullptr, [&] {
        Result::Type result = inGroup(u"Preview", u"Preview (incomplete)", [&] {
            // Undo goes back to the model as it was before the preview was
            // asked for, not to the model of this moment.
            DataModelChangeCommand command(std::string(), Kelmar::shared(&edit()), project.getDataModel(),
                                           project.getHostProject(), false, request.snapshot);
            project.createVideoTrack(edit());
            prepareTracks();
            project.ownTracks().numberMemos(project.workArea());
            const Result::Type previewed = driver.core::MontalerBase::preview(
                request.events, request.first, request.last, request.showDestination);
            writePicture(project.workArea().getConformOffset());
            project.workArea().finishRange(edit(), project.workArea().getConformOffset(), project.getProjectEnd(),
                                           tracks.closing(project));
            return previewed;
        });
        if (!summary.incomplete) {
            project.setPreviewLocks(tracks.usersTracks());
            const Result::Type shown =
                driver.showPreview(request.events, request.first, request.last, request.showDestination);
            if (result == Result::Ok)
                result = shown;
            project.setPreviewEvents(request.events);
        }
        return result;
    });
}

// ---- The driver's slots

void ConformRun::clearWorkArea()
{
    project.clearWorkArea(edit());
}

core::CutPtr ConformRun::createCut(const core::EventPtr& event)
{
    if (!event)
        throw Result::InvalidArgument;
    const core::Framerate rate = project.getFramerate();
    const double srcStart = event->getSrcIn().toSeconds(rate);
    const double srcEnd = event->getSrcOut().toSeconds(rate);
    const double dstStart = event->getDstIn().toSeconds(rate);
    const double dstEnd = event->getDstOut().toSeconds(rate);
    const std::vector<Track>& carried = tracks.carried();
    if (!pieceTracks || !std::equal(carried.begin(), carried.end(), pieceTracks->begin(), pieceTracks->end(),
                                    [](const Track& a, const Track& b) { return a.sameTrack(b); }))
        pieceTracks = std::make_shared<std::vector<Track>>(carried);
    // The pieces of a cut side by side in one block of their exact size,
    // which keeps the tracks' wrappers they refer to: a feature holds
    // hundreds of thousands of pieces through the run.
    struct Block {
        std::shared_ptr<std::vector<Track>> tracks;
        std::vector<CutEvent> pieces;
    };
    auto block = std::make_shared<Block>();
    block->tracks = pieceTracks;
    block->pieces.reserve(pieceTracks->size());
    for (Track& track : *pieceTracks)
        block->pieces.emplace_back(track, srcStart, srcEnd, dstStart, dstEnd);
    std::vector<core::CutEventPtr> pieces;
    pieces.reserve(block->pieces.size());
    for (CutEvent& piece : block->pieces)
        pieces.push_back(core::CutEventPtr(block, &piece));
    return std::make_shared<core::Cut>(event, std::move(pieces));
}

void ConformRun::applyCut(core::Cut& cut)
{
    if (progress && progress->isCancelled())
        throw Result::Cancelled;
    const core::EventPtr& event = cut.getEvent();
    if (progress && event)
        progress->setText(StringUtil::fromUtf8(event->getRollName()));
    project.workArea().paste(edit(), cut);
    if (progress)
        progress->advance(static_cast<int64_t>(cut.getPieces().size()));
    if (!event)
        return;
    ++summary.eventsApplied;
    const core::Settings& settings = project.getDataModel().getSettings();
    if (settings.getCreateDestinationMarkers()) {
        project.ownTracks().writeDestination(edit(), *event, settings, project.workArea(), summary.markersWritten);
    }
}

void ConformRun::fillVirginTerritories(core::CutList& cuts)
{
    if (!project.getDataModel().getSettings().getCreateVirginTerritories())
        return;
    if (progress)
        progress->setText(StringUtil::translate(u"Virgin Territories"));
    project.workArea().fillVirginTerritories(edit(), cuts, progress.get());
}

void ConformRun::readAutomationForDetectors()
{
    if (!pieceTracks || !project.getDataModel().getSettings().getCreateAutomationWarningMarkers())
        return;
    // The detectors ask at places of the old timeline, which the cuts and
    // the virgin territories leave as they were: both work past the conform
    // offset only, and the bridges only where the new cut has a gap, never
    // on a seam the warnings look at. So the points behind the offset, the
    // new arrangement's, are not read.
    const double workArea = project.workArea().getConformOffset() - core::positionTolerance;
    for (Track& track : *pieceTracks)
        track.readAutomationValues(workArea);
}

void ConformRun::generateMarkers(const std::vector<core::InformationEntry>& entries)
{
    // The detectors are done: what they read of the automation goes.
    if (pieceTracks)
        for (Track& track : *pieceTracks)
            track.forgetAutomationValues();
    if (progress) {
        // Left untranslated, as it has always been.
        progress->setText(u"Generate Markers");
        progress->addSteps(static_cast<int64_t>(entries.size()));
    }
    project.ownTracks().generateMarkers(edit(), entries, project.workArea(), progress.get(), summary.markersWritten);
}

void ConformRun::complete()
{
    if (progress)
        progress->setText(StringUtil::translate(u"Completing"));
    if (project.workArea().moveHome(edit(), tracks.movingHome(project)))
        project.clearWorkArea(edit());
}

} // namespace montala::host
