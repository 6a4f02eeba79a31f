#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// The host's message box.
class IAlertService : public FUnknown {
public:
    enum Button : int32 {
        kFirstButton = 1,
        kSecondButton = 2,
    };

    // Null title or buttons take the host's defaults. Answers the button chosen.
    virtual int32 show(const char16* message, const char16* title, const char16* firstButton,
                       const char16* secondButton) = 0;

    static constexpr FUID iid{"{37BDB6A1-65FB-4994-9886-04549461A2BB}"};
};

} // namespace Kelmar
