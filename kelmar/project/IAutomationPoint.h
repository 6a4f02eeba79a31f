#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IEditContext;

// A point of an automation track. From IHostServices::getService: a new point,
// not yet in a track.
class IAutomationPoint : public FUnknown {
public:
    virtual float getValue() = 0;
    virtual tresult setValue(IEditContext* context, float value, int32 flags) = 0;

    static constexpr FUID iid{"{501B33DD-B717-4533-B793-E1408425375F}"};
};

} // namespace Kelmar
