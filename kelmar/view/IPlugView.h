#pragma once

#include "kelmar/base/FUnknown.h"
#include "kelmar/view/ViewRect.h"

namespace Kelmar {

class IPlugFrame;

// The kinds of native parent window a host hands to IPlugView::attached: a
// window handle on Windows, an X11 window id (cast to a pointer) on Linux.
inline constexpr const char8* kPlatformTypeHWND = "HWND";
inline constexpr const char8* kPlatformTypeX11EmbedWindowID = "X11EmbedWindowID";

// A plug-in's view inside a host window.
class IPlugView : public FUnknown {
public:
    virtual tresult isPlatformTypeSupported(const char8* type) = 0;
    virtual tresult attached(void* parent, const char8* type) = 0;
    virtual tresult removed() = 0;
    virtual tresult onWheel(float distance) = 0;
    virtual tresult onKeyDown(char16 key, int16 keyCode, int16 modifiers) = 0;
    virtual tresult onKeyUp(char16 key, int16 keyCode, int16 modifiers) = 0;
    virtual tresult getSize(ViewRect* size) = 0;
    virtual tresult onSize(ViewRect* newSize) = 0;
    virtual tresult onFocus(bool state) = 0;
    virtual tresult setFrame(IPlugFrame* frame) = 0;
    virtual tresult canResize() = 0;
    virtual tresult checkSizeConstraint(ViewRect* rect) = 0;

    static constexpr FUID iid{"{5BC32507-D060-49EA-A615-1B522B755B29}"};
};

} // namespace Kelmar
