#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// What IVideoEvent::setClip takes; pool clips answer it.
class IClipSource : public FUnknown {
public:
    static constexpr FUID iid{"{E34A31B4-ADCB-40BC-BCE6-4393CFBF48BF}"};
};

} // namespace Kelmar
