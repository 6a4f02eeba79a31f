#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IActionHandler;

// Dispatches actions by category and name. The host's own actions, such as
// "Edit" "Undo", come first.
class IActionManager : public FUnknown {
public:
    // Borrowed: a handler removes itself before it is destroyed.
    virtual tresult addHandler(IActionHandler* handler) = 0;
    virtual tresult removeHandler(IActionHandler* handler) = 0;
    // kResultOk when some handler carried it out.
    virtual tresult invoke(const char8* category, const char8* name) = 0;

    static constexpr FUID iid{"{762F3F61-11D1-4115-92F9-7AC6F239460F}"};
};

} // namespace Kelmar
