#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// The host's progress window. When the user cancels, the host writes 1 through
// the cancel flag given to setup.
class IProgressService : public FUnknown {
public:
    virtual tresult setup(int32 mode, const char16* title, uint8* cancelFlag) = 0;
    virtual tresult setPosition(int64 position) = 0;
    virtual tresult setTotal(int64 total) = 0;
    virtual tresult setValue(int64 value) = 0;
    virtual tresult setText(const char16* text) = 0;
    virtual tresult advance(int64 count) = 0;
    virtual tresult show() = 0;
    virtual tresult hide() = 0;

    static constexpr FUID iid{"{197F1B0A-1444-477F-9365-D3C6F0B5ACA2}"};
};

} // namespace Kelmar
