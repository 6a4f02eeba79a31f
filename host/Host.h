#pragma once

#include "core/model/ChangeContext.h"
#include "core/model/DataModelCommandCreator.h"
#include "core/events/EventList.h"
#include "core/conform/MontalerBase.h"
#include "core/serialize/SerializationTree.h"
#include "host/ConformRun.h"
#include "host/RunSummary.h"
#include "util/Result.h"
#include "util/StringUtil.h"

#include "kelmar/base/FObject.h"
#include "kelmar/services/IHostServices.h"
#include "kelmar/services/IIdleHandler.h"
#include "kelmar/edit/IProjectEditHook.h"
#include "kelmar/project/IProjectManager.h"
#include "kelmar/project/IProjectNotification.h"
#include "kelmar/project/IProjectStorageNotification.h"
#include "kelmar/base/IPtr.h"
#include "kelmar/project/ITransport.h"

#include <map>
#include <memory>
#include <string>

namespace montala::host {

class MediaPool;
class Project;
class StringTranslator;
class VideoProvider;

// The one object between the logic and the host. It follows the host's
// projects and keeps a Project for each, passes the model's change notices on
// to the window, makes the data model's undo steps, and carries out the
// conform driver's slots: those of a run on the ConformRun under way, the others on
// the active project.
//
// A run is split from the request on purpose: startConform and preview only
// set a flag, and the next onIdle does the work, on a clean call stack of the
// host's main thread:
//
//   startConform ---> applyRequested ---> onIdle: ConformRun::apply ---> lastRun()
//   preview      ---> previewRequested -> onIdle: ConformRun::preview -> lastRun()
//
// A program drives it as the host would: construct it over the host's
// services (projects already open are adopted), call startConform, call
// onIdle until isRunPending() is false, and read lastRun().
//
// Reference counted as every object the host knows: made with a count of
// one, deleted when the last reference goes.
class Host : public Kelmar::FObject,
             public Kelmar::IProjectNotification,
             public Kelmar::IProjectStorageNotification,
             public Kelmar::IProjectEditHook,
             public Kelmar::IIdleHandler,
             public core::ChangeContextNotificationBase,
             public core::MontalerBase,
             public core::DataModelCommandCreator {
public:
    // NoInterface when the host offers no project manager. The services are
    // held for the lifetime of the object.
    explicit Host(Kelmar::IHostServices* context);
    ~Host() override;

    // A listener that joins learns at once which model it is to show (none
    // while no project is active), as it would have when the project became
    // active: a window opened on a project that is open already is not left
    // empty.
    void addListener(core::ChangeContextListenerInterface* listener) override;

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT
    const char* isA() const override { return "Host"; }
    bool isTypeOf(const char* name, bool askBaseClass = true) const override;

    // ---- The host's notices. Each answers kInvalidArgument for a project
    // it does not know (or none), kResultFalse when its work failed.
    Kelmar::tresult projectActivated(Kelmar::IProject* project) override;
    Kelmar::tresult projectDeactivated(Kelmar::IProject* project) override;
    Kelmar::tresult projectOpened(Kelmar::IProject* project) override;
    Kelmar::tresult projectClosed(Kelmar::IProject* project) override;
    Kelmar::tresult projectRenamed(Kelmar::IProject*) override { return Kelmar::kResultOk; }
    // Stores the model in the project; a failure is shown to the user and
    // does not stop the host's save.
    Kelmar::tresult projectSaving(Kelmar::IProject* project) override;
    // An undo group of the user's closed: memos of a preview are mirrored,
    // and the project's listeners hear of it. Not followed during a run.
    Kelmar::tresult projectEdited(Kelmar::IProject* project, Kelmar::IProjectEdit* edit) override;
    // A changed frame rate or start of one of the projects.
    void update(Kelmar::FUnknown* changed, Kelmar::int32 message) override;
    // Carries out the run asked for since the last call.
    Kelmar::tresult onIdle() override;

    // ---- The conform driver's slots
    util::Result::Type startConform() override;
    // The window's "preview": stores what to preview, for the next onIdle.
    util::Result::Type preview(const core::EventList& events, size_t first, size_t last,
                               bool showDestination) override;
    util::Result::Type startPreview(const core::EventList& events, size_t first, size_t last, bool showDestination);
    util::Result::Type showPreview(const core::EventList& events, size_t first, size_t last,
                                   bool showDestination) override;
    void getLocators(double& left, double& right) override;
    void setLocators(double left, double right, bool absolute) override;
    void getCycle(double& start, double& end) override;
    // InvalidArgument when the end lies before the start.
    void setCycle(double start, double end) override;
    double getCursor() override;
    void setCursor(double position) override;
    // Deletes the preview's range: the work area and the conform offset.
    util::Result::Type deletePreview() override;
    std::string getProjectName() override;
    core::MediaPoolInterface* getMediaPool() override;
    double getProjectStart() override;
    void setPreviewActive(bool on) override;
    bool isPreviewActive() override;
    util::Result::Type checkTracks() override;
    util::Result::Type clearWorkArea() override;
    util::Result::Type applyCut(core::Cut& cut) override;
    core::CutPtr createCut(const core::EventPtr& event) override;
    util::Result::Type complete() override;
    util::Result::Type generateMarkers(const std::vector<core::InformationEntry>& entries) override;
    core::InformationContext getInformationContext() override;
    core::SnippetContext getSnippetContext() override;
    util::Result::Type applyCuts(core::CutList& cuts) override;
    void setPreviewEvents(const core::EventList& events) override;
    int64_t countSteps(int64_t eventCount, const core::Settings& settings, int64_t trackCount) override;
    MediaPool* getMediaPoolObject();

    // Takes the preview's work area away in one undo group: "End Preview"
    // with `keepName`, else "Delete Preview Range".
    util::Result::Type endPreview(bool keepName);

    // ---- The model's undo steps
    std::unique_ptr<core::DataModelChangeCommand> createCommand(const std::string& title) override;
    std::unique_ptr<core::DataModelChangeCommand> createCommand(Kelmar::IProjectEdit* edit) override;
    std::unique_ptr<core::DataModelChangeCommand> createCommand(
        Kelmar::IProjectEdit* edit, const core::serialize::SerializationTree& snapshot) override;

    // ---- For the programs that drive it
    // The pictures of the active project, for the window's video display.
    std::shared_ptr<VideoProvider> getVideoProvider() const { return videoProvider; }
    // The host's services this object was built over; null once it is shut down.
    Kelmar::IHostServices* getHostServices() const { return services.get(); }
    Project* getActiveProject() const { return activeProject; }
    // The Project of a host project; null for one not known.
    Project* findProject(Kelmar::IProject* project) const;
    size_t getProjectCount() const { return projects.size(); }
    // A run's or an ended preview's own edits are under way.
    bool isBusy() const { return endingPreview || (run && run->isEditing()); }
    // A run was asked for and the next onIdle carries it out.
    bool isRunPending() const { return applyRequested || previewRequested; }
    // The last apply or preview carried out by onIdle.
    const RunSummary& lastRun() const { return lastRunSummary; }
    // A run first asks the checks of its inputs and, when they find that the
    // cuts and the session do not belong together, asks the user whether to
    // go on ("Abort" is a cancelled run that changed nothing). A program
    // that has asked them itself turns this off.
    void setInputChecksAsked(bool on) { inputChecksAsked = on; }

private:
    // Carries out the run asked for on the active project; lastRun() holds
    // its summary afterwards.
    void carryOut(RunSummary::Kind kind);
    // The checks of the run's inputs, put to the user; false when they
    // answered "Abort".
    bool inputsConfirmed(RunSummary::Kind kind);
    // The run under way; NoProject without a project, NotInitialized
    // between runs.
    ConformRun& currentRun();
    Project& requireProject();
    void showMessage(const std::u16string& message);
    void forget(Kelmar::IProject* hostProject);
    void shutdown();

    // Whether the preview slot of the data model is set; the model of the
    // active project is told, the window hears of it.
    void writePreviewActive(Project& project, bool on, bool notify);

    Kelmar::IPtr<Kelmar::IHostServices> services;
    Kelmar::IPtr<Kelmar::IProjectManager> projectManager;
    std::map<Kelmar::IProject*, std::unique_ptr<Project>> projects;
    Project* activeProject = nullptr;
    // The same service object as `services`: the one every part reaches the
    // host through.
    Kelmar::IPtr<Kelmar::IHostServices> context;
    Kelmar::IPtr<Kelmar::ITransport> transport;
    std::shared_ptr<StringTranslator> translator;
    std::shared_ptr<VideoProvider> videoProvider;
    // The preview's work area is being taken away.
    bool endingPreview = false;
    bool applyRequested = false;
    bool previewRequested = false;
    ConformRun::PreviewRequest previewRequest;
    bool inputChecksAsked = true;
    bool previewJustStarted = false;

    // What was installed before this object, put back when it goes.
    util::StringUtil::StringConverterInterface* previousConverter = nullptr;
    bool idleHandlerAdded = false;
    bool notificationAdded = false;
    bool dialogsInstalled = false;
    RunSummary lastRunSummary;
    // The run under way; null between runs.
    ConformRun* run = nullptr;
};

} // namespace montala::host
