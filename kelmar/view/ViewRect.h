#pragma once

#include "kelmar/base/Types.h"

namespace Kelmar {

// A view's rectangle in pixels.
struct ViewRect {
    int32 left = 0;
    int32 top = 0;
    int32 right = 0;
    int32 bottom = 0;

    int32 getWidth() const { return right - left; }
    int32 getHeight() const { return bottom - top; }
};

} // namespace Kelmar
