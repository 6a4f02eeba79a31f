#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IPlugController;
class IPlugWindow;

// Opens windows from a module's skin description.
class ISkinService : public FUnknown {
public:
    // Non-zero when the resource cannot be loaded.
    virtual tresult loadSkin(ModuleHandle module, const char8* resource) = 0;
    // Opens the template `name`; the host builds its view through the controller's
    // IViewBuilder. The window stays the host's: `window` is borrowed, valid
    // until the window's close notification says it is gone.
    virtual tresult openWindow(const char8* name, IPlugController* controller, IPlugWindow** window) = 0;

    static constexpr FUID iid{"{83424C65-EFD3-4800-BD10-8C370499F9D4}"};
};

} // namespace Kelmar
