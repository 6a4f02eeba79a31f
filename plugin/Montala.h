#pragma once

#include "kelmar/base/FObject.h"
#include "kelmar/base/IPluginBase.h"
#include "kelmar/base/IPtr.h"
#include "kelmar/services/IActionHandler.h"
#include "kelmar/view/ICloseWindowNotification.h"
#include "kelmar/view/IPlugController.h"
#include "kelmar/view/IPlugWindowFactory.h"
#include "kelmar/view/ISkinService.h"
#include "kelmar/view/IViewBuilder.h"

namespace montala::host {

class Host;
class HostStatus;

// The module's one service: what the host creates from the factory and
// initializes. It builds the Host over the host's services, puts "Montala"
// into the host's "Project" menu and opens the window when that entry is
// clicked:
//
//   menu click -> onAction("Montala", "ShowDialog") -> skin service opens
//   "MontalaWindow" -> createView -> JuceGuiAdapter around MainGui
//
// A second click closes the window. The window stays the host's; this
// object only remembers it until the host says it closed (onClose).
//
// Besides the host's interfaces it answers HostStatusInterface, for a
// program that loads the module as its host and reports Montala's runs.
class Montala : public Kelmar::FObject,
                public Kelmar::IPluginBase,
                public Kelmar::IActionHandler,
                public Kelmar::IViewBuilder,
                public Kelmar::IPlugController,
                public Kelmar::ICloseWindowNotification,
                public Kelmar::IPlugWindowFactory {
public:
    Montala();
    ~Montala() override;

    // The factory's create function: a new service, as IPluginBase.
    static Kelmar::FUnknown* create(void* context);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT
    const char* isA() const override { return "Montala"; }

    // kResultFalse when the Host cannot be built over `context` or the host
    // has no window registry; then nothing stays registered.
    Kelmar::tresult initialize(Kelmar::FUnknown* context) override;
    Kelmar::tresult terminate() override;

    // Only "Montala" "ShowDialog" is Montala's; anything else answers
    // kResultFalse.
    Kelmar::tresult onAction(const Kelmar::char8* category, const Kelmar::char8* name, bool queryOnly) override;
    // Only for "MontalaWindow"; any other name leaves `view` as it is.
    Kelmar::tresult createView(const Kelmar::char8* viewName, Kelmar::FUnknown* hostWindowInfo,
                               Kelmar::IPlugView** view) override;
    Kelmar::tresult getState(Kelmar::FUnknown*) override { return Kelmar::kNotImplemented; }
    Kelmar::tresult setState(Kelmar::FUnknown*) override { return Kelmar::kNotImplemented; }
    void onClose(Kelmar::IPlugWindow* window) override;
    const Kelmar::char8* getWindowName() override;
    Kelmar::tresult isWindowOpen(Kelmar::IPlugWindow* window) override;
    Kelmar::IPlugWindow* getWindow() override;

private:
    class MessagePump;

    // Opens the window, or closes it when it is open.
    Kelmar::tresult toggleWindow();
    // Takes back every registration; the Host stays until the destructor.
    void unregister();

    Kelmar::IPtr<Host> host;
    // Handed to the program that loaded the module, for what it tells its user.
    Kelmar::IPtr<HostStatus> status;
    Kelmar::IPlugWindow* window = nullptr; // borrowed from the host until onClose
    Kelmar::IPtr<Kelmar::ISkinService> skins;
    Kelmar::IPtr<MessagePump> pump;
    bool juceStarted = false;
    bool registered = false; // menu entry, handlers and window factory are in
};

} // namespace montala::host
