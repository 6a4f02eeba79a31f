#include "sim/services/SimPlugWindow.h"

#include "kelmar/view/ICloseWindowNotification.h"

namespace montala::sim {

using namespace Kelmar;

SimPlugWindow::SimPlugWindow(std::string name, IPtr<IPlugView> view)
    : windowName(std::move(name)), plugView(std::move(view))
{
}

tresult SimPlugWindow::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IPlugWindow>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimPlugWindow::show()
{
    if (!open)
        return kResultFalse;
    visible = true;
    return kResultOk;
}

tresult SimPlugWindow::close(int32)
{
    if (!open)
        return kResultFalse;
    // Held: the notification may release the caller's reference.
    IPtr<SimPlugWindow> keep = shared(this);
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

} // namespace montala::sim
