#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// Entries of the host's menus. A click on an entry invokes its action through
// the action manager.
class IMenuRegistry : public FUnknown {
public:
    virtual tresult addEntry(ModuleHandle module, const char8* menu, const char16* title, int32 flags,
                             const char8* category, const char8* action) = 0;
    virtual tresult removeEntries(ModuleHandle module) = 0;

    static constexpr FUID iid{"{A42A9119-161E-4547-98A2-6FB769140E24}"};
};

} // namespace Kelmar
