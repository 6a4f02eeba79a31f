#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// The project's time settings, asked of the project object.
class IProjectSettings : public FUnknown {
public:
    struct FrameRate {
        enum Flags : int32 {
            kPullDown = 1 << 0, // the real rate is nominal x 1000/1001
            kDropFrame = 1 << 1,
        };
        int32 framesPerSecond = 0;
        int32 flags = 0;
    };

    virtual tresult getFrameRate(FrameRate& rate) = 0;
    // Absolute seconds of the project's start; host times are relative to it.
    virtual double getProjectStart() = 0;

    static constexpr FUID iid{"{E797277C-0260-4ADE-B8CB-AC383346B5CD}"};
};

} // namespace Kelmar
