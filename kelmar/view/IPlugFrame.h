#pragma once

#include "kelmar/base/FUnknown.h"
#include "kelmar/view/ViewRect.h"

namespace Kelmar {

class IPlugView;

// The host's frame around a plug-in view.
class IPlugFrame : public FUnknown {
public:
    virtual tresult resizeView(IPlugView* view, ViewRect* newSize) = 0;

    static constexpr FUID iid{"{BC94D0CB-372C-426F-8022-62B56331C187}"};
};

} // namespace Kelmar
