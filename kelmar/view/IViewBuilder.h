#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IPlugView;

// Builds the view of a window template by name while the host opens the window.
class IViewBuilder : public FUnknown {
public:
    virtual tresult createView(const char8* viewName, FUnknown* hostWindowInfo, IPlugView** view) = 0;

    static constexpr FUID iid{"{53D29FE8-ED00-400B-9E6D-4DD80444B116}"};
};

} // namespace Kelmar
