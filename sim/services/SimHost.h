#pragma once

#include "kelmar/services/IHostServices.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimBase.h"
#include "sim/services/SimDisplay.h"

#include <memory>
#include <string>
#include <vector>

namespace Kelmar {
class IPluginBase;
class IPluginFactory;
} // namespace Kelmar

namespace montala::sim {

class SimActionManager;
class SimAlertService;
class SimApplicationState;
class SimClassFactory;
class SimDependencyRegistry;
class SimDisplay;
class SimEditGroup;
class SimFailures;
class SimFileDialogService;
class SimMenuRegistry;
class SimModule;
class SimProgressService;
class SimProject;
class SimProjectManager;
class SimSkinService;
class SimTransport;
class SimTranslationService;
class SimWindowRegistry;
class XmlElement;

// The simulated host: the context a plug-in is initialized with. It owns the
// project manager and every service, and the one undo group that is open at
// a time.
//
// getService hands out the shared services, and for IProjectEdit and
// IRangeEdit (one object answering both), IObjectList, IStorage, IPath,
// IPointMarker, IRangeMarker, IAutomationPoint, IAutomationCurvePoint and
// IVideoEvent (a video event for a picture track) a new object for each call.
class SimHost : public SimBase, public Kelmar::IHostServices {
public:
    static Kelmar::IPtr<SimHost> create();
    ~SimHost() override;

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT
    const char* isA() const override { return "SimHost"; }

    Kelmar::tresult getService(const Kelmar::FUID& iid, void** service) override;

    SimProjectManager& projectManager() const { return *manager; }
    SimApplicationState& applicationState() const { return *appState; }
    SimDependencyRegistry& dependencies() const { return *dependencyRegistry; }
    SimTransport& transport() const { return *transportService; }
    SimProgressService& progress() const { return *progressService; }
    SimAlertService& alerts() const { return *alertService; }
    SimFileDialogService& fileDialogs() const { return *fileDialogService; }
    SimTranslationService& translation() const { return *translationService; }
    SimSkinService& skins() const { return *skinService; }
    SimMenuRegistry& menus() const { return *menuRegistry; }
    SimActionManager& actionManager() const { return *actions; }
    SimWindowRegistry& windows() const { return *windowRegistry; }
    SimClassFactory& classFactory() const { return *factory; }

    // ---- Failure injection for tests: withheld interfaces, failing calls
    SimFailures& failures() const { return *failurePlan; }
    // Shared with the projects and stores, which may outlive the host.
    const std::shared_ptr<SimFailures>& failurePlanShared() const { return failurePlan; }

    // ---- Undo groups
    //
    // Changes are recorded only in a group opened by beginGroup (or
    // IProjectEdit::beginEdit). With none open, a structural change (add,
    // remove, move, range work, a rename or trim) is an undo step of its own
    // at once, and a toggle, an attribute or the project length is not
    // recorded at all: nothing waits for a later group to take it in.
    bool isGroupOpen() const { return openGroup != nullptr; }
    // The open group, or null.
    SimEditGroup* currentGroup() const { return openGroup.get(); }
    // The open group if the changes of `project` may go into it: it belongs
    // to that project, or has no project yet and now takes this one. A group
    // of another project is no group for this one.
    SimEditGroup* openGroupFor(SimProject& project);
    void beginGroup();
    // Closes the group at the outermost level: the edit hooks of the
    // project's notifications are called while it is still open (their
    // changes join it), then it goes on the undo list of the project whose
    // changes it holds (`project` only when it holds none).
    Kelmar::tresult endGroup(SimProject* project, std::u16string title);

    // Makes a change that comes through the host's interfaces one undo step
    // of its own, under `title`, when no group is open; inside a group it
    // does nothing. The edit hooks hear of the step as of any closed group.
    class OwnStep {
    public:
        OwnStep(SimProject* project, std::u16string title);
        OwnStep(const OwnStep&) = delete;
        OwnStep& operator=(const OwnStep&) = delete;
        ~OwnStep();

    private:
        Kelmar::IPtr<SimProject> project; // set while the step is open
        std::u16string title;
    };

    // Undo and redo of the project's last group; the edit hooks hear of it.
    bool undo(SimProject& project);
    bool redo(SimProject& project);
    // A user's change that is no edit, such as a selection: only the hooks
    // hear of it.
    void notifyEdited(SimProject& project);

    // ---- Resources of modules (translation tables, skins)
    void setResourceFolder(std::string folder) { resources = std::move(folder); }
    std::string resourcePath(const std::string& resource) const;
    // The XML resource `resource` of a module: the one embedded in the
    // module's file, or for no module (null) the file of that name in the
    // resource folder. Null with `error` when it is missing or no XML.
    std::unique_ptr<XmlElement> readResource(Kelmar::ModuleHandle module, const std::string& resource,
                                             std::string& error) const;

    // ---- The display
    // Connects to the X server of $DISPLAY, so that plug windows opened from
    // now on are real top-level windows with the plug-in's view attached.
    // False when none answers; windows then stay headless.
    bool openDisplay();
    SimDisplay* display() const { return x11.get(); }
    // The host's main window, where plug windows opened from now on are
    // placed, at (x, y) inside it; without one they are top-level windows.
    void setWorkspace(unsigned long window, int x, int y) { mainWindow = {window, x, y}; }
    WindowPlacement workspace() const { return mainWindow; }

    // ---- The run loop
    void runIdle(int turns = 1);

    // ---- Plug-in modules
    // Opens a module file as a host does: InitDll, GetPluginFactory, then
    // every class of category "Service" created and initialized with this
    // host. False with `error` naming the file when it does not load or a
    // service refuses; what was made of it is taken down again.
    bool loadModule(const std::string& path, std::string& error);
    // Creates every class of category "Service" of the factory and
    // initializes it with this host. False when there is none or one refuses.
    bool loadPlugin(Kelmar::IPluginFactory* factory);
    // Terminates and releases the plug-ins, the last loaded first.
    void unloadPlugin();
    // The first plug-in loaded, or null.
    Kelmar::IPluginBase* plugin() const;

    // What happened to plug-ins in this host, in order, e.g. "load
    // Montala.so", "InitDll", "GetPluginFactory", "create Montala",
    // "initialize Montala: 0", "menu entry Project/Montala", "action handler
    // added", "translation table Montala", "window factory added", and on
    // the way down "terminate Montala", ..., "release Montala: 0", "release
    // factory: 0", "ExitDll: true", "unload". A reference count after a
    // release follows the colon.
    const std::vector<std::string>& lifecycle() const { return steps; }
    void record(std::string step) { steps.push_back(std::move(step)); }

    // Terminates and releases the plug-ins, closes every project and window
    // and releases all the services hold, then unloads the modules, so that
    // nothing is left when the last reference goes.
    void shutdown();

private:
    SimHost();
    void callEditHooks(SimProject& project);
    bool stepHistory(SimProject& project, bool backwards);

    Kelmar::IPtr<SimProjectManager> manager;
    Kelmar::IPtr<SimApplicationState> appState;
    Kelmar::IPtr<SimDependencyRegistry> dependencyRegistry;
    Kelmar::IPtr<SimTransport> transportService;
    Kelmar::IPtr<SimProgressService> progressService;
    Kelmar::IPtr<SimAlertService> alertService;
    Kelmar::IPtr<SimFileDialogService> fileDialogService;
    Kelmar::IPtr<SimTranslationService> translationService;
    Kelmar::IPtr<SimSkinService> skinService;
    Kelmar::IPtr<SimMenuRegistry> menuRegistry;
    Kelmar::IPtr<SimActionManager> actions;
    Kelmar::IPtr<SimWindowRegistry> windowRegistry;
    Kelmar::IPtr<SimClassFactory> factory;
    std::shared_ptr<SimFailures> failurePlan;

    std::unique_ptr<SimEditGroup> openGroup;
    int depth = 0;
    bool closing = false;

    std::string resources = ".";
    struct Plugin {
        Kelmar::IPtr<Kelmar::IPluginBase> object;
        std::string name;
    };
    std::vector<Plugin> plugins;
    std::vector<std::unique_ptr<SimModule>> modules;
    std::unique_ptr<SimDisplay> x11;
    WindowPlacement mainWindow;
    std::vector<std::string> steps;
};

} // namespace montala::sim
