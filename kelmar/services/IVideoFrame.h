#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// One picture from the thumbnail service.
class IVideoFrame : public FUnknown {
public:
    virtual tresult getSize(int32& width, int32& height) = 0;
    // 32-bit pixels, bytes blue, green, red, alpha; `rowPitch` bytes per row.
    virtual tresult copyPixels(uint8* buffer, int32 rowPitch) = 0;

    static constexpr FUID iid{"{338C02A0-4F8C-4810-96BE-417E283FAB79}"};
};

} // namespace Kelmar
