#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IPlugWindow;

// Lets the host reopen a plug-in window by name, e.g. when it restores its workspace.
class IPlugWindowFactory : public FUnknown {
public:
    virtual const char8* getWindowName() = 0;
    // 1 when `window` is not the open window of this factory.
    virtual tresult isWindowOpen(IPlugWindow* window) = 0;
    // The open window, opened first if there is none; borrowed, as the skin
    // service hands it out.
    virtual IPlugWindow* getWindow() = 0;

    static constexpr FUID iid{"{89E3FCD3-31A0-4BC2-918E-8982B9EF41E4}"};
};

} // namespace Kelmar
