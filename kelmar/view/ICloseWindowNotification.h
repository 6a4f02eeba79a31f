#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IPlugWindow;

// Told when a window closes. It has no id of its own: it is handed over directly
// (IPlugWindow::setCloseNotification) and never asked for.
class ICloseWindowNotification : public FUnknown {
public:
    virtual void onClose(IPlugWindow* window) = 0;

    // Hides FUnknown::iid: an all-zero id that no object answers.
    static constexpr FUID iid{};
};

} // namespace Kelmar
