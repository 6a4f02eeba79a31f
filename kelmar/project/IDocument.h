#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// The file behind a project.
class IDocument : public FUnknown {
public:
    // The document's path, zero-terminated; kResultFalse when it does not fit.
    virtual tresult getName(char16* buffer, int32 bufferBytes) = 0;

    static constexpr FUID iid{"{3312679D-78B5-4EFC-8E51-4251DD9DD244}"};
};

} // namespace Kelmar
