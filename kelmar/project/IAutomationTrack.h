#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// One automated parameter of a track. Its children are its points in time order.
class IAutomationTrack : public FUnknown {
public:
    // 0 and 3 are stepped curves; the others are continuous.
    virtual int32 getCurveType() = 0;

    static constexpr FUID iid{"{3C4D78BE-B7F1-425F-B0ED-E9977B5E43FD}"};
};

} // namespace Kelmar
