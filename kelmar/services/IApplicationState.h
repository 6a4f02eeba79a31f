#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IIdleHandler;

// The host application's run state.
class IApplicationState : public FUnknown {
public:
    // Borrowed, as with notifications.
    virtual tresult addIdleHandler(IIdleHandler* handler) = 0;
    virtual tresult removeIdleHandler(IIdleHandler* handler) = 0;
    // Tells the host that a long run starts (true) or ends (false).
    virtual tresult setBusy(bool busy) = 0;

    static constexpr FUID iid{"{9E871847-F1AB-4776-A06C-6F945D7FDD4D}"};
};

} // namespace Kelmar
