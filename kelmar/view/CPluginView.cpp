#include "kelmar/view/CPluginView.h"

#include <cstring>

namespace Kelmar {

CPluginView::CPluginView(const ViewRect* initial)
{
    if (initial)
        rect = *initial;
}

tresult CPluginView::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IPlugView>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

bool CPluginView::isTypeOf(const char* name, bool askBaseClass) const
{
    if (name && std::strcmp(name, "CPluginView") == 0)
        return true;
    return FObject::isTypeOf(name, askBaseClass);
}

tresult CPluginView::isPlatformTypeSupported(const char8*)
{
    return kNotImplemented;
}

tresult CPluginView::attached(void* parent, const char8* type)
{
    parentWindow = parent;
    attachedToParent(parent, type);
    return kResultOk;
}

tresult CPluginView::removed()
{
    removedFromParent();
    parentWindow = nullptr;
    return kResultOk;
}

tresult CPluginView::onWheel(float)
{
    return kResultFalse;
}

tresult CPluginView::onKeyDown(char16, int16, int16)
{
    return kResultFalse;
}

tresult CPluginView::onKeyUp(char16, int16, int16)
{
    return kResultFalse;
}

tresult CPluginView::getSize(ViewRect* size)
{
    if (!size)
        return kInvalidArgument;
    *size = rect;
    return kResultOk;
}

tresult CPluginView::onSize(ViewRect* newSize)
{
    if (!newSize)
        return kInvalidArgument;
    rect = *newSize;
    return kResultOk;
}

tresult CPluginView::onFocus(bool)
{
    return kResultFalse;
}

tresult CPluginView::setFrame(IPlugFrame* newFrame)
{
    frame = newFrame;
    return kResultOk;
}

tresult CPluginView::canResize()
{
    return kResultFalse;
}

tresult CPluginView::checkSizeConstraint(ViewRect*)
{
    return kResultFalse;
}

} // namespace Kelmar
