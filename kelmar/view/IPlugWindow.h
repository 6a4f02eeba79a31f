#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class ICloseWindowNotification;

// A window that the skin service opened for a plug-in.
class IPlugWindow : public FUnknown {
public:
    virtual tresult show() = 0;
    virtual tresult close(int32 flags) = 0;
    // Borrowed: the notification must outlive the window or be replaced by null.
    virtual tresult setCloseNotification(ICloseWindowNotification* notification) = 0;

    static constexpr FUID iid{"{6E8A1E97-D811-4679-8E77-5F19EA8F6581}"};
};

} // namespace Kelmar
