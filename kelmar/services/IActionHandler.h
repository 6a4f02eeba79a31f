#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// Receives the actions that the action manager invokes, e.g. a click on a menu entry.
// Answers 0 for an action it carries out (with queryOnly: that it would), 1 for one that is not its own.
class IActionHandler : public FUnknown {
public:
    virtual tresult onAction(const char8* category, const char8* name, bool queryOnly) = 0;

    static constexpr FUID iid{"{9FC17BEB-3A51-4077-A25A-7726D3D3D711}"};
};

} // namespace Kelmar
