#include "host/Host.h"

#include "host/AlertWindow.h"
#include "host/DataModelChangeCommand.h"
#include "host/FileBrowserDialog.h"
#include "host/HostCalls.h"
#include "host/InputChecks.h"
#include "host/MediaPool.h"
#include "host/Project.h"
#include "host/StringTranslator.h"
#include "host/TakingPart.h"
#include "host/video/VideoProvider.h"

#include "core/services/AlertWindowBase.h"
#include "core/model/PropertyKeys.h"
#include "core/model/Settings.h"
#include "core/time/Timecode.h"
#include "core/model/Variant.h"

#include "kelmar/services/IApplicationState.h"
#include "kelmar/base/IDependencyRegistry.h"
#include "kelmar/project/IProject.h"
#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/project/IProjectSettingsChange.h"
#include "kelmar/project/ITimeParameter.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace montala::host {

using core::PropertyKey;
using util::Result;
using util::StringUtil;

namespace {

void throwIfFailed(Result::Type code)
{
    if (code != Result::Ok)
        throw code;
}

double storedDouble(const core::DataModel& model, int32_t key)
{
    core::Variant value;
    throwIfFailed(model.getProperty(key, value));
    return value.asDouble();
}

Kelmar::IPtr<Kelmar::ITimeParameter> cycleEdge(Kelmar::ITransport* transport, const char* name)
{
    Kelmar::IPtr<Kelmar::FUnknown> parameter = Kelmar::owned(require(transport).getParameter(name));
    return queryRequired<Kelmar::ITimeParameter>(parameter.get());
}

} // namespace

// ---- Coming and going

Host::Host(Kelmar::IHostServices* hostContext)
{
    try {
        services = queryRequired<Kelmar::IHostServices>(hostContext);
        context = services;
        // Without a transport the project's work goes on; only the slots of
        // the cycle and the cursor need it.
        try {
            transport = getService<Kelmar::ITransport>(context.get());
        } catch (Result::Type) {
        }
        translator = std::make_shared<StringTranslator>(context.get());
        videoProvider = std::make_shared<VideoProvider>(context.get());
        projectManager = getService<Kelmar::IProjectManager>(context.get());
        check(projectManager->addNotification(this));
        notificationAdded = true;
        AlertWindow::install(context.get());
        try {
            FileBrowserDialog::install(context.get());
        } catch (Result::Type) {
            AlertWindow::remove();
            throw;
        }
        dialogsInstalled = true;
        check(getService<Kelmar::IApplicationState>(context.get())->addIdleHandler(this));
        idleHandlerAdded = true;
        previousConverter = StringUtil::getStringConverter();
        StringUtil::setStringConverter(translator.get());
        core::DataModelCommandCreator::setCommandCreator(this);

        // Projects the host opened before Montala came up.
        for (Kelmar::int32 index = 0; index < projectManager->getProjectCount(); ++index) {
            Kelmar::IPtr<Kelmar::IProject> project = Kelmar::owned(projectManager->getProject(index));
            projectOpened(project.get());
        }
        Kelmar::IPtr<Kelmar::IProject> active = Kelmar::owned(projectManager->getActiveProject());
        if (active)
            projectActivated(active.get());
    } catch (Result::Type) {
        shutdown();
        throw;
    }
}

Host::~Host()
{
    shutdown();
}

void Host::shutdown()
{
    if (idleHandlerAdded) {
        try {
            getService<Kelmar::IApplicationState>(context.get())->removeIdleHandler(this);
        } catch (Result::Type) {
        }
        idleHandlerAdded = false;
    }
    if (activeProject)
        projectDeactivated(activeProject->getHostProject());
    while (!projects.empty())
        forget(projects.begin()->first);
    if (notificationAdded && projectManager)
        projectManager->removeNotification(this);
    notificationAdded = false;

    if (core::DataModelCommandCreator::getCommandCreator() == this)
        core::DataModelCommandCreator::setCommandCreator(nullptr);
    if (translator && StringUtil::getStringConverter() == translator.get())
        StringUtil::setStringConverter(previousConverter);
    if (dialogsInstalled) {
        FileBrowserDialog::remove();
        AlertWindow::remove();
        dialogsInstalled = false;
    }
    videoProvider.reset();
    translator.reset();
    transport.reset();
    projectManager.reset();
    context.reset();
    services.reset();
}

Kelmar::tresult Host::queryInterface(const Kelmar::FUID& iid, void** obj)
{
    if (Kelmar::answerInterface<Kelmar::IProjectNotification>(this, iid, obj)
        || Kelmar::answerInterface<Kelmar::IProjectStorageNotification>(this, iid, obj)
        || Kelmar::answerInterface<Kelmar::IProjectEditHook>(this, iid, obj)
        || Kelmar::answerInterface<Kelmar::IIdleHandler>(this, iid, obj))
        return Kelmar::kResultOk;
    return FObject::queryInterface(iid, obj);
}

bool Host::isTypeOf(const char* name, bool askBaseClass) const
{
    if (name && std::strcmp(name, isA()) == 0)
        return true;
    return askBaseClass && FObject::isTypeOf(name, true);
}

// ---- The host's projects

Project* Host::findProject(Kelmar::IProject* project) const
{
    auto found = projects.find(project);
    return found == projects.end() ? nullptr : found->second.get();
}

Kelmar::tresult Host::projectOpened(Kelmar::IProject* project)
{
    if (!project)
        return Kelmar::kInvalidArgument;
    if (findProject(project))
        return Kelmar::kResultOk;
    try {
        check(project->addStorageNotification(this));
        // Without a registry the project's rate is read once and not
        // followed; everything else works.
        try {
            getService<Kelmar::IDependencyRegistry>(context.get())->addDependent(project, this);
        } catch (Result::Type) {
        }
        auto made = std::make_unique<Project>(project, context.get());
        Project& added = *made;
        projects.emplace(project, std::move(made));
        try {
            added.load();
        } catch (Result::Type code) {
            // The project stays open with an empty model.
            showMessage(Project::loadFailureMessage(code));
        }
    } catch (Result::Type) {
        return Kelmar::kResultFalse;
    }
    return Kelmar::kResultOk;
}

void Host::forget(Kelmar::IProject* hostProject)
{
    auto found = projects.find(hostProject);
    if (found == projects.end())
        return;
    if (activeProject == found->second.get())
        projectDeactivated(hostProject);
    hostProject->removeStorageNotification(this);
    try {
        getService<Kelmar::IDependencyRegistry>(context.get())->removeDependent(hostProject, this);
    } catch (Result::Type) {
    }
    // The project's own tracks may be the provider's answer while it goes.
    if (core::Timecode::getFramerateProvider() == found->second.get())
        core::Timecode::setFramerateProvider(nullptr);
    projects.erase(found);
}

Kelmar::tresult Host::projectClosed(Kelmar::IProject* project)
{
    if (!project || !findProject(project))
        return Kelmar::kInvalidArgument;
    forget(project);
    if (projects.empty())
        activeProject = nullptr;
    return Kelmar::kResultOk;
}

Kelmar::tresult Host::projectActivated(Kelmar::IProject* project)
{
    Project* known = findProject(project);
    if (!known) {
        activeProject = nullptr;
        core::Timecode::setFramerateProvider(nullptr);
        videoProvider->setProject(nullptr);
        return project ? Kelmar::kInvalidArgument : Kelmar::kResultOk;
    }
    activeProject = known;
    core::DataModel& model = known->getDataModel();
    model.setNotifier(this);
    core::Timecode::setFramerateProvider(known);
    videoProvider->setProject(known);
    try {
        // The rate may have changed while another project was active.
        model.revalidateAll();
    } catch (Result::Type) {
    }
    notify(core::DataModelChangeContext(&model));
    return Kelmar::kResultOk;
}

void Host::addListener(core::ChangeContextListenerInterface* listener)
{
    core::ChangeContextNotificationBase::addListener(listener);
    if (listener)
        listener->changed(core::DataModelChangeContext(activeProject ? &activeProject->getDataModel() : nullptr));
}

Kelmar::tresult Host::projectDeactivated(Kelmar::IProject* project)
{
    if (!activeProject || activeProject->getHostProject() != project)
        return Kelmar::kResultOk;
    activeProject->getDataModel().setNotifier(nullptr);
    activeProject = nullptr;
    core::Timecode::setFramerateProvider(nullptr);
    videoProvider->setProject(nullptr);
    notify(core::DataModelChangeContext(nullptr));
    return Kelmar::kResultOk;
}

Kelmar::tresult Host::projectSaving(Kelmar::IProject* project)
{
    auto found = projects.find(project);
    if (found == projects.end())
        return Kelmar::kInvalidArgument;
    try {
        if (!found->second)
            throw Result::NotInitialized;
        found->second->save();
    } catch (Result::Type) {
        showMessage(Project::saveFailureMessage());
        return Kelmar::kResultFalse;
    }
    return Kelmar::kResultOk;
}

Kelmar::tresult Host::projectEdited(Kelmar::IProject* project, Kelmar::IProjectEdit* edit)
{
    // A run's own edits are no user's; a project in the background is not
    // followed until it is active again.
    if (isBusy() || !activeProject || !project || activeProject->getHostProject() != project)
        return Kelmar::kResultOk;
    try {
        core::ScopedFramerateProvider provider(activeProject);
        activeProject->edited(edit);
    } catch (Result::Type) {
        return Kelmar::kResultFalse;
    }
    return Kelmar::kResultOk;
}

void Host::update(Kelmar::FUnknown* changed, Kelmar::int32)
{
    if (isBusy())
        return;
    auto settingsChange = Kelmar::queryInterface<Kelmar::IProjectSettingsChange>(changed);
    if (!settingsChange)
        return;
    Kelmar::IPtr<Kelmar::IProject> project = Kelmar::owned(settingsChange->getProject());
    Project* known = findProject(project.get());
    if (!known)
        return;
    try {
        core::ScopedFramerateProvider provider(known);
        known->updateFramerate();
    } catch (Result::Type) {
    }
}

void Host::showMessage(const std::u16string& message)
{
    if (core::AlertWindowBase* alert = core::AlertWindowBase::getInstance()) {
        try {
            alert->show(StringUtil::toUtf8(message));
        } catch (Result::Type) {
            // No message box: there is nobody to tell.
        }
    }
}

Project& Host::requireProject()
{
    if (!activeProject)
        throw Result::NoProject;
    return *activeProject;
}

// ---- The idle call and the runs

Kelmar::tresult Host::onIdle()
{
    // Finished thumbnails are shown and waiting requests handed on, also
    // while a run goes.
    videoProvider->poll();
    if (isBusy())
        return Kelmar::kResultOk;
    if (applyRequested) {
        carryOut(RunSummary::Kind::Apply);
        applyRequested = false;
        notify(core::ActionChangeContext(1));
    }
    if (previewRequested) {
        carryOut(RunSummary::Kind::Preview);
        previewRequested = false;
        notify(core::ActionChangeContext(0));
    }
    return Kelmar::kResultOk;
}

bool Host::inputsConfirmed(RunSummary::Kind kind)
{
    if (!inputChecksAsked || !activeProject)
        return true;
    try {
        if (confirmInputs(*activeProject, kind == RunSummary::Kind::Preview))
            return true;
    } catch (Result::Type) {
        // What could not be read for the checks, the run meets and reports.
        return true;
    }
    lastRunSummary = RunSummary{};
    lastRunSummary.kind = kind;
    lastRunSummary.result = Result::Cancelled;
    return false;
}

void Host::carryOut(RunSummary::Kind kind)
{
    if (!activeProject) {
        // The project was closed while the request waited for this call.
        lastRunSummary = RunSummary();
        lastRunSummary.kind = kind;
        lastRunSummary.result = Result::NoProject;
        return;
    }
    if (!inputsConfirmed(kind))
        return;
    ConformRun made(*activeProject, context.get(), kind);
    made.setVideoProvider(videoProvider.get());
    run = &made;
    lastRunSummary = kind == RunSummary::Kind::Apply ? made.apply(*this, transport.get())
                                                    : made.preview(*this, previewRequest);
    run = nullptr;
}

ConformRun& Host::currentRun()
{
    if (!activeProject)
        throw Result::NoProject;
    if (!run)
        throw Result::NotInitialized;
    return *run;
}

// ---- Requests from the window

Result::Type Host::startConform()
{
    try {
        Project& project = requireProject();
        if (!project.workArea().hasConformOffset())
            project.workArea().computeConformOffset();
        const Result::Type code = checkTracks();
        if (code == Result::Ok)
            applyRequested = true;
        return code;
    } catch (Result::Type code) {
        return code;
    }
}

Result::Type Host::preview(const core::EventList& events, size_t first, size_t last, bool showDestination)
{
    return startPreview(events, first, last, showDestination);
}

Result::Type Host::startPreview(const core::EventList& events, size_t first, size_t last, bool showDestination)
{
    try {
        Project& project = requireProject();
        if (!project.workArea().hasConformOffset())
            project.workArea().computeConformOffset();
        const Result::Type code = checkTracks();
        if (code != Result::Ok)
            return code;
        core::DataModel& model = project.getDataModel();
        previewRequest.events = events;
        previewRequest.first = first;
        previewRequest.last = last;
        previewRequest.showDestination = showDestination;
        core::serialize::SerializationTree& previewSnapshot = previewRequest.snapshot;
        previewSnapshot.clear();
        // The state an undo of the preview goes back to is the one before
        // the user turned the preview on: a preview just started is stored
        // as not yet active.
        const bool justStarted = previewJustStarted;
        if (justStarted)
            model.setPreviewActive(false);
        previewSnapshot.writeObject(model);
        if (justStarted)
            model.setPreviewActive(true);
        previewJustStarted = false;
        previewRequested = true;
        return Result::Ok;
    } catch (Result::Type code) {
        return code;
    }
}

Result::Type Host::showPreview(const core::EventList& events, size_t first, size_t last, bool showDestination)
{
    try {
        if (!activeProject || events.getSize() == 0 || events.getSize() < first + last)
            return Result::Ok;
        Project& project = *activeProject;
        const core::Framerate rate = project.getFramerate();
        double oldLeft = 0.0;
        double oldRight = 0.0;
        getLocators(oldLeft, oldRight);

        // The previewed stretch, on the old timeline when the source is
        // shown, in the work area when the new arrangement is.
        const double offset = showDestination ? project.workArea().getConformOffset() : 0.0;
        double start = std::numeric_limits<double>::max();
        double end = std::numeric_limits<double>::lowest();
        for (size_t index = first; index + last < events.getSize(); ++index) {
            const core::EventPtr& event = events.getEvent(index);
            // Events without a place on the timelines were not cut.
            if (!event || event->hasState(core::EventState::InvalidTimecode))
                continue;
            const core::Timecode& in = showDestination ? event->getDstIn() : event->getSrcIn();
            const core::Timecode& out = showDestination ? event->getDstOut() : event->getSrcOut();
            start = std::min(start, in.toSeconds(rate) + offset);
            end = std::max(end, out.toSeconds(rate) + offset);
        }
        if (start > end)
            return Result::Ok;
        const HostClock host = project.tracks().clock();
        setCycle(host.toHost({start}).seconds, host.toHost({end}).seconds);
        setCursor(host.toHost({start}).seconds);
        setLocators(start, start + (oldRight - oldLeft), true);
        project.setTracksLocked(showDestination);
        project.getDataModel().setProperty(PropertyKey::PreviewShowsDestination, core::Variant(showDestination));
        return Result::Ok;
    } catch (Result::Type code) {
        return code;
    }
}

void Host::writePreviewActive(Project& project, bool on, bool tell)
{
    core::DataModel& model = project.getDataModel();
    model.setPreviewActive(on);
    if (tell && model.getNotifier())
        model.notifyPreviewChanged();
}

void Host::setPreviewActive(bool on)
{
    try {
        Project& project = requireProject();
        core::DataModel& model = project.getDataModel();
        const bool active = model.isPreviewActive();
        if (!on && active) {
            setCycle(storedDouble(model, PropertyKey::CycleStartBeforePreview),
                     storedDouble(model, PropertyKey::CycleEndBeforePreview));
            const double left = storedDouble(model, PropertyKey::LeftLocatorBeforePreview);
            setLocators(left, storedDouble(model, PropertyKey::RightLocatorBeforePreview), false);
            // The cursor goes back to the left locator the user had, not to
            // where it stood: the stretch the user was working on starts
            // there.
            setCursor(left);
            endPreview(true);
        }
        if (on && !active)
            previewJustStarted = true;
        writePreviewActive(project, on, true);
        if (!on) {
            project.setTracksLocked(false);
            project.clearLockedTracks();
            return;
        }
        double left = 0.0;
        double right = 0.0;
        getLocators(left, right);
        model.setProperty(PropertyKey::LeftLocatorBeforePreview, core::Variant(left));
        model.setProperty(PropertyKey::RightLocatorBeforePreview, core::Variant(right));
        double cycleStart = 0.0;
        double cycleEnd = 0.0;
        getCycle(cycleStart, cycleEnd);
        model.setProperty(PropertyKey::CycleStartBeforePreview, core::Variant(std::min(cycleStart, cycleEnd)));
        model.setProperty(PropertyKey::CycleEndBeforePreview, core::Variant(std::max(cycleStart, cycleEnd)));
        model.setProperty(PropertyKey::CursorBeforePreview, core::Variant(getCursor()));
        if (!project.workArea().hasConformOffset())
            project.workArea().computeConformOffset();
        project.workArea().extendProjectEnd(false);
    } catch (Result::Type) {
        // The window has nothing to show for it; what was done stays.
    }
}

bool Host::isPreviewActive()
{
    return activeProject && activeProject->getDataModel().isPreviewActive();
}

Result::Type Host::deletePreview()
{
    try {
        Project& project = requireProject();
        core::DataModel& model = project.getDataModel();
        const bool justStarted = previewJustStarted;
        if (justStarted)
            model.setPreviewActive(false);
        const Result::Type code = endPreview(false);
        if (justStarted) {
            model.setPreviewActive(true);
            previewJustStarted = false;
        }
        return code;
    } catch (Result::Type code) {
        return code;
    }
}

Result::Type Host::endPreview(bool keepName)
{
    if (!activeProject)
        return Result::NoProject;
    Project& project = *activeProject;
    if (!project.workArea().hasConformOffset())
        return Result::Ok;
    // Taking the work area away is Montala's own edit: the memo mirroring
    // must not read it as the user's.
    const bool wasEnding = endingPreview;
    endingPreview = true;
    bool incomplete = false;
    const Result::Type code = ConformRun::inEditGroup(
        context.get(), project.getHostProject(), keepName ? u"End Preview" : u"Delete Preview Range",
        keepName ? u"End Preview (incomplete)" : u"Delete Preview Range (incomplete)",
        [&](Kelmar::IProjectEdit& edit) {
            std::unique_ptr<core::DataModelChangeCommand> command = createCommand(&edit);
            // The preview's picture goes with the work area; nothing is
            // written for it.
            videoProvider->applyVideo(false, project.workArea().getConformOffset(), edit);
            project.clearWorkArea(edit);
            project.workArea().restoreProjectEnd();
            project.workArea().clearConformOffset();
            return Result::Ok;
        },
        incomplete);
    endingPreview = wasEnding;
    return code;
}

// ---- The transport

void Host::getLocators(double& left, double& right)
{
    requireProject().getLocators(left, right);
}

void Host::setLocators(double left, double right, bool absolute)
{
    requireProject().setLocators(left, right, absolute);
}

void Host::getCycle(double& start, double& end)
{
    start = cycleEdge(transport.get(), "cycleLeftTime")->getTime();
    end = cycleEdge(transport.get(), "cycleRightTime")->getTime();
}

void Host::setCycle(double start, double end)
{
    if (end < start)
        throw Result::InvalidArgument;
    check(cycleEdge(transport.get(), "cycleLeftTime")->setTime(start, 1));
    check(cycleEdge(transport.get(), "cycleRightTime")->setTime(end, 1));
}

double Host::getCursor()
{
    return require(transport.get()).getCursor();
}

void Host::setCursor(double position)
{
    check(require(transport.get()).setCursor(position));
}

// ---- The project

std::string Host::getProjectName()
{
    if (!activeProject)
        return {};
    try {
        return activeProject->getProjectName();
    } catch (Result::Type) {
        return {};
    }
}

core::MediaPoolInterface* Host::getMediaPool()
{
    return activeProject ? activeProject->getMediaPool() : nullptr;
}

MediaPool* Host::getMediaPoolObject()
{
    return activeProject ? activeProject->getMediaPool() : nullptr;
}

double Host::getProjectStart()
{
    return requireProject().getProjectStart();
}

Result::Type Host::checkTracks()
{
    try {
        if (!activeProject)
            return Result::NoProject;
        core::DataModel& model = activeProject->getDataModel();
        if (model.getChangeList().getSize() == 0)
            return Result::EmptyChangeList;
        return TakingPart::refusal(*activeProject, model.getSettings());
    } catch (Result::Type code) {
        return code;
    }
}

// ---- The conform driver's work on the project

Result::Type Host::clearWorkArea()
{
    try {
        currentRun().clearWorkArea();
    } catch (Result::Type code) {
        return code;
    }
    return Result::Ok;
}

Result::Type Host::applyCut(core::Cut& cut)
{
    currentRun().applyCut(cut);
    return Result::Ok;
}

core::CutPtr Host::createCut(const core::EventPtr& event)
{
    return currentRun().createCut(event);
}

Result::Type Host::complete()
{
    currentRun().complete();
    return Result::Ok;
}

Result::Type Host::generateMarkers(const std::vector<core::InformationEntry>& entries)
{
    currentRun().generateMarkers(entries);
    return Result::Ok;
}

core::InformationContext Host::getInformationContext()
{
    if (!activeProject)
        throw Result::HostCallFailed;
    return activeProject->getInformationContext();
}

core::SnippetContext Host::getSnippetContext()
{
    if (!activeProject)
        throw Result::HostCallFailed;
    return activeProject->getSnippetContext();
}

Result::Type Host::applyCuts(core::CutList& cuts)
{
    ConformRun& current = currentRun();
    const Result::Type code = core::MontalerBase::applyCuts(cuts);
    if (code != Result::Ok)
        return code;
    current.fillVirginTerritories(cuts);
    current.readAutomationForDetectors();
    return Result::Ok;
}

void Host::setPreviewEvents(const core::EventList& events)
{
    if (!activeProject || &events == &activeProject->getPreviewList())
        return;
    activeProject->setPreviewEvents(events);
    notify(core::EventListChangeContext(core::EventList::ChangeKind));
}

int64_t Host::countSteps(int64_t eventCount, const core::Settings& settings, int64_t)
{
    if (!activeProject)
        return 0;
    // As many tracks as each cut has pieces on: the run's own choice while
    // one goes.
    const int64_t tracks =
        run ? run->takingPart().piecesPerCut() : TakingPart(*activeProject, settings).piecesPerCut();
    const int64_t detectors = core::MontalerBase::countSteps(eventCount, settings, tracks);
    // An apply advances once more per track than it has events: the cut
    // pieces, then the moving home.
    const int64_t cuts = applyRequested ? eventCount + 1 : eventCount;
    int64_t steps = detectors + cuts * tracks;
    if (settings.getCreateVirginTerritories())
        steps += cuts * tracks;
    return steps;
}

// ---- The model's undo steps

std::unique_ptr<core::DataModelChangeCommand> Host::createCommand(const std::string& title)
{
    if (!activeProject)
        return nullptr;
    auto edit = getService<Kelmar::IProjectEdit>(context.get());
    return std::make_unique<DataModelChangeCommand>(title, edit, activeProject->getDataModel(),
                                                    activeProject->getHostProject(), true);
}

std::unique_ptr<core::DataModelChangeCommand> Host::createCommand(Kelmar::IProjectEdit* edit)
{
    if (!activeProject)
        return nullptr;
    return std::make_unique<DataModelChangeCommand>(Kelmar::shared(edit), activeProject->getDataModel(),
                                                    activeProject->getHostProject());
}

std::unique_ptr<core::DataModelChangeCommand> Host::createCommand(Kelmar::IProjectEdit* edit,
                                                                  const core::serialize::SerializationTree& snapshot)
{
    if (!activeProject)
        return nullptr;
    return std::make_unique<DataModelChangeCommand>(std::string(), Kelmar::shared(edit),
                                                    activeProject->getDataModel(), activeProject->getHostProject(),
                                                    false, snapshot);
}

} // namespace montala::host
