#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// A file path. From IHostServices::getService: a new, empty path.
class IPath : public FUnknown {
public:
    // Zero-terminated; kResultFalse when it does not fit.
    virtual tresult getText(char16* buffer, int32 bufferBytes) = 0;
    virtual tresult setText(const char16* text, int32 flags) = 0;

    static constexpr FUID iid{"{0AF38EA1-40F2-4B14-965B-F97CA4FF94D1}"};
};

} // namespace Kelmar
