#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// The controller handed to the skin service when a window opens. The host asks it
// for IViewBuilder; both operations here may answer kNotImplemented.
class IPlugController : public FUnknown {
public:
    virtual tresult getState(FUnknown* state) = 0;
    virtual tresult setState(FUnknown* state) = 0;

    static constexpr FUID iid{"{0466B781-A086-11D5-BECC-00A0C9A636BC}"};
};

} // namespace Kelmar
