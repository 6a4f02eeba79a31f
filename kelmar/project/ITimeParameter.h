#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// A time value of the project (a locator, a cycle edge), in host time.
class ITimeParameter : public FUnknown {
public:
    virtual tresult setTime(double time, int32 notify) = 0;
    virtual double getTime() = 0;

    static constexpr FUID iid{"{938CFD58-0866-4BEB-AA58-09F39B4D4596}"};
};

} // namespace Kelmar
