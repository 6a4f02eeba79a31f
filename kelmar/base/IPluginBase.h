#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// The plug-in's main service object: set up with the host's context, taken down before it is released.
class IPluginBase : public FUnknown {
public:
    virtual tresult initialize(FUnknown* context) = 0;
    virtual tresult terminate() = 0;

    static constexpr FUID iid{"{22888DDB-156E-45AE-8358-B34808190625}"};
};

} // namespace Kelmar
