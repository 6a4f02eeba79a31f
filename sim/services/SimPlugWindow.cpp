#include "sim/services/SimPlugWindow.h"

#include "kelmar/view/ICloseWindowNotification.h"
#include "sim/services/SimDisplay.h"
#include "sim/services/SimHost.h"

namespace montala::sim {

using namespace Kelmar;

SimPlugWindow::SimPlugWindow(std::string name, std::string windowTitle, IPtr<IPlugView> view, SimHost& host)
    : windowName(std::move(name)), title(std::move(windowTitle)), plugView(std::move(view)), host(&host),
      display(host.display()), placement(host.workspace())
{
}

SimPlugWindow::~SimPlugWindow()
{
    detach();
}

tresult SimPlugWindow::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IPlugWindow>(this, iid, obj) || answerInterface<IPlugFrame>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimPlugWindow::show()
{
    if (!open)
        return kResultFalse;
    visible = true;
    if (!display || !plugView || native)
        return kResultOk;
    if (plugView->isPlatformTypeSupported(kPlatformTypeX11EmbedWindowID) != kResultOk)
        return kResultFalse;
    ViewRect size;
    plugView->getSize(&size);
    native = display->createWindow(title, size.getWidth(), size.getHeight(), placement.parent, placement.x,
                                   placement.y);
    plugView->setFrame(this);
    if (plugView->attached(reinterpret_cast<void*>(native), kPlatformTypeX11EmbedWindowID) != kResultOk) {
        detach();
        return kResultFalse;
    }
    plugView->onSize(&size);
    return kResultOk;
}

void SimPlugWindow::detach()
{
    if (!native)
        return;
    if (plugView) {
        plugView->removed();
        plugView->setFrame(nullptr);
    }
    display->destroyWindow(native);
    native = 0;
}

tresult SimPlugWindow::close(int32)
{
    if (!open)
        return kResultFalse;
    // Held: the notification may release the caller's reference.
    IPtr<SimPlugWindow> keep = shared(this);
    host->record("close window " + windowName);
    detach();
    open = false;
    visible = false;
    if (closeNotification)
        closeNotification->onClose(this);
    plugView.reset();
    return kResultOk;
}

tresult SimPlugWindow::setCloseNotification(ICloseWindowNotification* notification)
{
    closeNotification = notification;
    return kResultOk;
}

tresult SimPlugWindow::resizeView(IPlugView* view, ViewRect* newSize)
{
    if (!view || view != plugView.get() || !newSize)
        return kInvalidArgument;
    if (native)
        display->resizeWindow(native, newSize->getWidth(), newSize->getHeight());
    return plugView->onSize(newSize);
}

void SimPlugWindow::resize(int width, int height)
{
    ViewRect size{0, 0, width, height};
    if (plugView)
        resizeView(plugView.get(), &size);
}

} // namespace montala::sim
