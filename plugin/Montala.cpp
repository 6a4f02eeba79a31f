#include "plugin/Montala.h"

#include "plugin/JuceGuiAdapter.h"
#include "plugin/Module.h"

#include "gui/MainGui.h"
#include "host/Host.h"
#include "host/HostStatus.h"
#include "host/video/VideoProvider.h"

#include "kelmar/services/IActionManager.h"
#include "kelmar/services/IApplicationState.h"
#include "kelmar/services/IHostServices.h"
#include "kelmar/services/IIdleHandler.h"
#include "kelmar/services/IMenuRegistry.h"
#include "kelmar/services/ITranslationService.h"
#include "kelmar/view/IPlugWindow.h"
#include "kelmar/view/IWindowRegistry.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <cstring>
#include <memory>

namespace montala::host {

using namespace Kelmar;

namespace {

constexpr const char8* windowName = "MontalaWindow";

// A service of the host, or null when it has none: a missing service skips
// the step that needs it.
template <class I>
IPtr<I> findService(IHostServices* services)
{
    void* answer = nullptr;
    if (!services || services->getService(I::iid, &answer) != kResultOk || !answer)
        return {};
    return IPtr<I>::adopt(static_cast<I*>(answer));
}

} // namespace

// On Windows the host's own message loop hands the window's messages to
// JUCE. On Linux this module's JUCE has its own X11 connection and message
// queue that no loop of the host's reads, so the host's idle call drains
// them: repaints, mouse and keys of the window arrive through here.
class Montala::MessagePump : public FObject, public IIdleHandler {
public:
    tresult queryInterface(const FUID& iid, void** obj) override
    {
        if (answerInterface<IIdleHandler>(this, iid, obj))
            return kResultOk;
        return FObject::queryInterface(iid, obj);
    }
    KELMAR_FOBJECT_REFCOUNT

    tresult onIdle() override
    {
        // One pass over what is waiting; it never blocks the host.
        juce::MessageManager::getInstance()->runDispatchLoopUntil(0);
        return kResultOk;
    }
};

Montala::Montala() = default;

Montala::~Montala()
{
    // The window and the registrations went with terminate; a host that
    // never called it still finds nothing of this object left behind.
    unregister();
    status.reset();
    host.reset();
    if (juceStarted)
        juce::shutdownJuce_GUI();
}

FUnknown* Montala::create(void*)
{
    return static_cast<IPluginBase*>(new Montala);
}

tresult Montala::queryInterface(const FUID& iid, void** obj)
{
    if (!obj)
        return kInvalidArgument;
    if (answerInterface<IPluginBase>(this, iid, obj) || answerInterface<IActionHandler>(this, iid, obj)
        || answerInterface<IViewBuilder>(this, iid, obj) || answerInterface<IPlugController>(this, iid, obj)
        || answerInterface<IPlugWindowFactory>(this, iid, obj))
        return kResultOk;
    if (status && iid == HostStatusInterface::iid)
        return status->queryInterface(iid, obj);
    return FObject::queryInterface(iid, obj);
}

tresult Montala::initialize(FUnknown* context)
{
    if (!juceStarted) {
        juce::initialiseJuce_GUI();
        juceStarted = true;
    }
    if (!host) {
        IPtr<IHostServices> services = Kelmar::queryInterface<IHostServices>(context);
        if (!services)
            return kResultFalse;
        try {
            host = owned(new Host(services.get()));
        } catch (...) {
            return kResultFalse;
        }
        status = owned(new HostStatus(*host));
        if (IPtr<IMenuRegistry> menus = findService<IMenuRegistry>(services.get()))
            menus->addEntry(module::handle(), "Project", u"Montala", 1, "Montala", "ShowDialog");
        if (IPtr<IActionManager> actions = findService<IActionManager>(services.get()))
            actions->addHandler(this);
#if !defined(_WIN32)
        if (IPtr<IApplicationState> state = findService<IApplicationState>(services.get())) {
            pump = owned(new MessagePump);
            state->addIdleHandler(pump.get());
        }
#endif
    }
    registered = true;
    IHostServices* services = host->getHostServices();
    if (IPtr<ITranslationService> translation = findService<ITranslationService>(services))
        translation->loadTable(module::handle(), "translation.xml", "Montala");
    IPtr<IWindowRegistry> windows = findService<IWindowRegistry>(services);
    if (!windows) {
        // Without it the host could not give the window back: an error of
        // the host, not a step to skip.
        unregister();
        return kResultFalse;
    }
    windows->addWindowFactory(this);
    return kResultOk;
}

tresult Montala::terminate()
{
    if (window)
        window->close(0);
    if (juceStarted) {
        juce::shutdownJuce_GUI();
        juceStarted = false;
    }
    if (!host)
        return kResultOk;
    unregister();
    return kResultOk;
}

void Montala::unregister()
{
    IHostServices* services = host ? host->getHostServices() : nullptr;
    if (!services || !registered)
        return;
    registered = false;
    if (IPtr<IActionManager> actions = findService<IActionManager>(services))
        actions->removeHandler(this);
    if (IPtr<IMenuRegistry> menus = findService<IMenuRegistry>(services))
        menus->removeEntries(module::handle());
    if (IPtr<IWindowRegistry> windows = findService<IWindowRegistry>(services))
        windows->removeWindowFactory(this);
    if (pump) {
        if (IPtr<IApplicationState> state = findService<IApplicationState>(services))
            state->removeIdleHandler(pump.get());
        pump.reset();
    }
}

tresult Montala::onAction(const char8* category, const char8* name, bool queryOnly)
{
    if (!category || !name || std::strcmp(category, "Montala") != 0 || std::strcmp(name, "ShowDialog") != 0)
        return kResultFalse;
    if (queryOnly)
        return kResultOk;
    return toggleWindow();
}

tresult Montala::toggleWindow()
{
    if (window) {
        window->close(0);
        return kResultOk;
    }
    skins = findService<ISkinService>(host ? host->getHostServices() : nullptr);
    if (!skins || skins->loadSkin(module::handle(), "skin.xml") != kResultOk)
        return kResultFalse;
    IPlugWindow* opened = nullptr;
    skins->openWindow(windowName, static_cast<IPlugController*>(this), &opened);
    if (!opened)
        return kResultFailed;
    window = opened;
    window->show();
    window->setCloseNotification(static_cast<ICloseWindowNotification*>(this));
    return kResultOk;
}

tresult Montala::createView(const char8* viewName, FUnknown*, IPlugView** view)
{
    if (!viewName || std::strcmp(viewName, windowName) != 0 || !host)
        return kResultFailed;
    if (!view)
        return kInvalidArgument;
    auto main = std::make_unique<gui::MainGui>();
    main->setMontaler(host.get());
    // Joining the Host's listeners hands the window the active project's model.
    main->setProject(host.get());
    main->setVideoProvider(host->getVideoProvider());
    *view = new JuceGuiAdapter(std::move(main));
    return kResultOk;
}

void Montala::onClose(IPlugWindow* closed)
{
    if (closed == window)
        window = nullptr;
}

const char8* Montala::getWindowName()
{
    return windowName;
}

tresult Montala::isWindowOpen(IPlugWindow* asked)
{
    return asked != window ? kResultFalse : kResultOk;
}

IPlugWindow* Montala::getWindow()
{
    if (!window)
        toggleWindow();
    return window;
}

} // namespace montala::host
