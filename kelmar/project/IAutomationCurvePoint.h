#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IEditContext;

// The curve side of an automation point: a segment end closes the curve there
// until the next point.
class IAutomationCurvePoint : public FUnknown {
public:
    virtual tresult setValue(IEditContext* context, float value, int32 flags) = 0;
    virtual bool isSegmentEnd() = 0;
    virtual tresult setSegmentEnd(IEditContext* context, bool segmentEnd, int32 flags) = 0;

    static constexpr FUID iid{"{A17080F9-9F90-4198-A6ED-641A168E119E}"};
};

} // namespace Kelmar
