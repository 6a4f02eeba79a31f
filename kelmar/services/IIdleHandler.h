#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// Called often on the host's main thread when nothing else is to be done.
class IIdleHandler : public FUnknown {
public:
    virtual tresult onIdle() = 0;

    static constexpr FUID iid{"{D70BBB58-C805-45B8-AB82-64180B673A84}"};
};

} // namespace Kelmar
