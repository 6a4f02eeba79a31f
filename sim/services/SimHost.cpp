#include "sim/services/SimHost.h"

#include "kelmar/base/IPluginBase.h"
#include "kelmar/base/IPluginFactory.h"
#include "kelmar/edit/IProjectEditHook.h"
#include "kelmar/project/IProjectNotification.h"
#include "sim/services/SimActionManager.h"
#include "sim/services/SimAlertService.h"
#include "sim/services/SimApplicationState.h"
#include "sim/services/SimClassFactory.h"
#include "sim/services/SimDependencyRegistry.h"
#include "sim/services/SimDisplay.h"
#include "sim/services/SimModule.h"
#include "sim/session/XmlElement.h"
#include "sim/edit/SimEdit.h"
#include "sim/edit/SimEditGroup.h"
#include "sim/services/SimFailures.h"
#include "sim/services/SimFileDialogService.h"
#include "sim/services/SimMenuRegistry.h"
#include "sim/project/SimObjectList.h"
#include "sim/project/SimPath.h"
#include "sim/services/SimProgressService.h"
#include "sim/project/SimProject.h"
#include "sim/project/SimProjectManager.h"
#include "sim/services/SimSkinService.h"
#include "sim/project/SimStorage.h"
#include "sim/project/SimTransport.h"
#include "sim/services/SimTranslationService.h"
#include "sim/services/SimWindowRegistry.h"

#include <cstring>

namespace montala::sim {

using namespace Kelmar;

namespace {

IPtr<FUnknown> newNode(ObjectKind kind)
{
    return owned<FUnknown>(static_cast<IProjectObject*>(SimObject::create(kind).take()));
}

} // namespace

IPtr<SimHost> SimHost::create()
{
    return owned(new SimHost);
}

SimHost::SimHost()
    : manager(owned(new SimProjectManager(*this))),
      appState(owned(new SimApplicationState)),
      dependencyRegistry(owned(new SimDependencyRegistry)),
      transportService(owned(new SimTransport(*this))),
      progressService(owned(new SimProgressService)),
      alertService(owned(new SimAlertService)),
      fileDialogService(owned(new SimFileDialogService)),
      translationService(owned(new SimTranslationService(*this))),
      skinService(owned(new SimSkinService(*this))),
      menuRegistry(owned(new SimMenuRegistry(*this))),
      actions(owned(new SimActionManager(*this))),
      windowRegistry(owned(new SimWindowRegistry(*this))),
      factory(owned(new SimClassFactory)),
      failurePlan(std::make_shared<SimFailures>())
{
}

SimHost::~SimHost()
{
    // Quietly: whoever registered notifications may be gone by now. Projects
    // still held elsewhere stop recording into a host that is going.
    plugins.clear();
    while (!modules.empty())
        modules.pop_back();
    openGroup.reset();
    for (const auto& project : manager->openProjects())
        project->setRecording(false);
}

tresult SimHost::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IHostServices>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimHost::getService(const FUID& iid, void** service)
{
    if (!service)
        return kInvalidArgument;
    *service = nullptr;
    if (iid == FUnknown::iid || iid == IDependent::iid || iid == FObject::iid || failurePlan->isWithheld(iid))
        return kNoInterface;

    FUnknown* const shared[] = {
        static_cast<IProjectManager*>(manager.get()),
        static_cast<IApplicationState*>(appState.get()),
        static_cast<IDependencyRegistry*>(dependencyRegistry.get()),
        static_cast<ITransport*>(transportService.get()),
        static_cast<IProgressService*>(progressService.get()),
        static_cast<IAlertService*>(alertService.get()),
        static_cast<IFileDialogService*>(fileDialogService.get()),
        static_cast<ITranslationService*>(translationService.get()),
        static_cast<ISkinService*>(skinService.get()),
        static_cast<IMenuRegistry*>(menuRegistry.get()),
        static_cast<IActionManager*>(actions.get()),
        static_cast<IWindowRegistry*>(windowRegistry.get()),
        static_cast<IClassFactory*>(factory.get()),
    };
    for (FUnknown* candidate : shared)
        if (candidate->queryInterface(iid, service) == kResultOk)
            return kResultOk;

    IPtr<FUnknown> made;
    if (iid == IProjectEdit::iid || iid == IRangeEdit::iid)
        made = owned<FUnknown>(static_cast<IProjectEdit*>(new SimEdit(*this)));
    else if (iid == IObjectList::iid)
        made = owned<FUnknown>(static_cast<IObjectList*>(new SimObjectList));
    else if (iid == IStorage::iid)
        made = owned<FUnknown>(static_cast<IStorage*>(new SimStorage(failurePlan)));
    else if (iid == IPath::iid)
        made = owned<FUnknown>(static_cast<IPath*>(new SimPath));
    else if (iid == IPointMarker::iid)
        made = newNode(ObjectKind::PointMarker);
    else if (iid == IRangeMarker::iid)
        made = newNode(ObjectKind::RangeMarker);
    else if (iid == IAutomationPoint::iid || iid == IAutomationCurvePoint::iid)
        made = newNode(ObjectKind::AutomationPoint);
    else if (iid == IVideoEvent::iid)
        made = newNode(ObjectKind::VideoEvent);
    if (!made)
        return kNoInterface;
    return made->queryInterface(iid, service);
}

// ---- Undo groups

SimEditGroup* SimHost::openGroupFor(SimProject& project)
{
    if (!openGroup)
        return nullptr;
    if (!openGroup->project)
        openGroup->project = &project;
    return openGroup->project == &project ? openGroup.get() : nullptr;
}

void SimHost::beginGroup()
{
    if (!openGroup) {
        openGroup = std::make_unique<SimEditGroup>();
        depth = 0;
    }
    ++depth;
}

tresult SimHost::endGroup(SimProject* project, std::u16string title)
{
    if (!openGroup)
        return kResultFalse;
    if (closing || depth > 1) {
        // Nested: only the outermost end closes.
        if (depth > 1)
            --depth;
        return kResultOk;
    }
    SimProject* target = openGroup->project ? openGroup->project : project;
    openGroup->title = std::move(title);
    if (target && (!openGroup->isEmpty() || openGroup->notifyAlways)) {
        IPtr<SimProject> keep = Kelmar::shared(target);
        closing = true;
        depth = 1;
        callEditHooks(*target);
        closing = false;
    }
    std::unique_ptr<SimEditGroup> closed = std::move(openGroup);
    depth = 0;
    closed->clearChangeMarks();
    if (target && !closed->isEmpty())
        target->commitGroup(std::move(closed));
    return kResultOk;
}

void SimHost::callEditHooks(SimProject& project)
{
    auto edit = owned(new SimEdit(*this));
    const auto handlers = manager->notifications();
    for (IProjectNotification* handler : handlers)
        if (auto hook = Kelmar::queryInterface<IProjectEditHook>(handler))
            hook->projectEdited(&project, edit.get());
}

void SimHost::notifyEdited(SimProject& project)
{
    beginGroup();
    openGroup->notifyAlways = true;
    if (!openGroup->project)
        openGroup->project = &project;
    endGroup(&project, u"");
}

bool SimHost::undo(SimProject& project)
{
    return stepHistory(project, true);
}

bool SimHost::redo(SimProject& project)
{
    return stepHistory(project, false);
}

bool SimHost::stepHistory(SimProject& project, bool backwards)
{
    if (openGroup)
        return false; // a group is still open
    // The hooks hear of it in a group of their own, which also carries the
    // marks of what changed.
    beginGroup();
    openGroup->notifyAlways = true;
    openGroup->project = &project;
    const bool done = backwards ? project.undo(*openGroup) : project.redo(*openGroup);
    if (!done) {
        openGroup.reset();
        depth = 0;
        return false;
    }
    endGroup(&project, u"");
    return true;
}

SimHost::OwnStep::OwnStep(SimProject* changed, std::u16string stepTitle)
{
    if (!changed || !changed->isRecording() || changed->host().isGroupOpen())
        return;
    project = Kelmar::shared(changed);
    title = std::move(stepTitle);
    project->host().beginGroup();
}

SimHost::OwnStep::~OwnStep()
{
    if (project)
        project->host().endGroup(project.get(), std::move(title));
}

// ---- Resources, run loop, plug-in

std::string SimHost::resourcePath(const std::string& resource) const
{
    if (resources.empty())
        return resource;
    return resources + (resources.back() == '/' ? "" : "/") + resource;
}

void SimHost::runIdle(int turns)
{
    for (int i = 0; i < turns; ++i)
        appState->runIdle();
}

bool SimHost::loadModule(const std::string& path, std::string& moduleError)
{
    std::unique_ptr<SimModule> module = SimModule::open(
        path, [this](std::string step) { record(std::move(step)); }, moduleError);
    if (!module)
        return false;
    const std::size_t before = plugins.size();
    if (!loadPlugin(module->factory())) {
        moduleError = path + ": no service of the module came up";
        while (plugins.size() > before) {
            Plugin plugin = std::move(plugins.back());
            plugins.pop_back();
            plugin.object->terminate();
            record("release " + plugin.name + ": " + std::to_string(plugin.object.take()->release()));
        }
        return false;
    }
    modules.push_back(std::move(module));
    return true;
}

bool SimHost::loadPlugin(IPluginFactory* pluginFactory)
{
    if (!pluginFactory)
        return false;
    bool any = false;
    const int32 count = pluginFactory->countClasses();
    for (int32 i = 0; i < count; ++i) {
        PClassInfo info;
        if (pluginFactory->getClassInfo(i, &info) != kResultOk || std::strncmp(info.category, "Service", 32) != 0)
            continue;
        const std::string name(info.name, strnlen(info.name, sizeof info.name));
        IPtr<IPluginBase> base;
        if (pluginFactory->createInstance(FUID::fromBytes(info.cid), IPluginBase::iid, base.putVoid()) != kResultOk
            || !base)
            return false;
        record("create " + name);
        const tresult answer = base->initialize(static_cast<IHostServices*>(this));
        record("initialize " + name + ": " + std::to_string(answer));
        if (answer != kResultOk) {
            record("release " + name + ": " + std::to_string(base.take()->release()));
            return false;
        }
        plugins.push_back(Plugin{std::move(base), name});
        any = true;
    }
    return any;
}

void SimHost::unloadPlugin()
{
    while (!plugins.empty()) {
        Plugin plugin = std::move(plugins.back());
        plugins.pop_back();
        record("terminate " + plugin.name);
        plugin.object->terminate();
        record("release " + plugin.name + ": " + std::to_string(plugin.object.take()->release()));
    }
}

IPluginBase* SimHost::plugin() const
{
    return plugins.empty() ? nullptr : plugins.front().object.get();
}

std::unique_ptr<XmlElement> SimHost::readResource(ModuleHandle module, const std::string& resource,
                                                  std::string& resourceError) const
{
    if (!module)
        return XmlElement::parseFile(resourcePath(resource), resourceError);
    const std::string path = SimModule::pathOf(module);
    if (path.empty()) {
        resourceError = resource + ": the module handle names no loaded module";
        return nullptr;
    }
    const std::optional<std::string> text = SimModule::resource(path, resource, resourceError);
    if (!text)
        return nullptr;
    auto root = XmlElement::parse(*text, resourceError);
    if (!root)
        resourceError = path + " (" + resource + "): " + resourceError;
    return root;
}

bool SimHost::openDisplay()
{
    if (!x11)
        x11 = SimDisplay::open();
    return x11 != nullptr;
}

void SimHost::shutdown()
{
    unloadPlugin();
    skinService->closeAll();
    manager->closeAll();
    openGroup.reset();
    depth = 0;
    // The modules' code goes last: nothing of theirs may be left to call.
    while (!modules.empty())
        modules.pop_back();
}

} // namespace montala::sim
