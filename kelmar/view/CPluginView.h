#pragma once

#include "kelmar/base/FObject.h"
#include "kelmar/view/IPlugView.h"
#include "kelmar/view/ViewRect.h"

namespace Kelmar {

class IPlugFrame;

// Base of a plug-in's views: keeps the view's rectangle, the host's frame and
// the parent window, and answers what a view that does nothing more answers.
// A derived view overrides what it does itself.
class CPluginView : public FObject, public IPlugView {
public:
    explicit CPluginView(const ViewRect* rect = nullptr);

    tresult queryInterface(const FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT
    const char* isA() const override { return "CPluginView"; }
    bool isTypeOf(const char* name, bool askBaseClass = true) const override;

    tresult isPlatformTypeSupported(const char8* type) override;
    // Remembers the parent, then calls attachedToParent.
    tresult attached(void* parent, const char8* type) override;
    // Calls removedFromParent, then forgets the parent.
    tresult removed() override;
    tresult onWheel(float distance) override;
    tresult onKeyDown(char16 key, int16 keyCode, int16 modifiers) override;
    tresult onKeyUp(char16 key, int16 keyCode, int16 modifiers) override;
    tresult getSize(ViewRect* size) override;
    tresult onSize(ViewRect* newSize) override;
    tresult onFocus(bool state) override;
    tresult setFrame(IPlugFrame* frame) override;
    tresult canResize() override;
    tresult checkSizeConstraint(ViewRect* rect) override;

    const ViewRect& getRect() const { return rect; }
    void setRect(const ViewRect& newRect) { rect = newRect; }
    void* getParent() const { return parentWindow; }
    IPlugFrame* getFrame() const { return frame; }

protected:
    // Hooks for a derived view.
    virtual void attachedToParent(void* parent, const char8* type) {}
    virtual void removedFromParent() {}

    ViewRect rect;
    void* parentWindow = nullptr;
    IPlugFrame* frame = nullptr; // borrowed: the host's frame outlives the view's use of it
};

} // namespace Kelmar
