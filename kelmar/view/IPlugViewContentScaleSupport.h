#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// A view that can follow the display's content scale.
class IPlugViewContentScaleSupport : public FUnknown {
public:
    virtual tresult setContentScaleFactor(float factor) = 0;

    static constexpr FUID iid{"{65ED9690-8AC4-4525-8AAD-EF7A72EA703F}"};
};

} // namespace Kelmar
