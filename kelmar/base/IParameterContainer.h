#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// An object whose values are reached as named parameters.
class IParameterContainer : public FUnknown {
public:
    // An object answering the parameter's interface (e.g. ITimeParameter), or null.
    virtual FUnknown* getParameter(const char8* name) = 0;

    static constexpr FUID iid{"{5852B3B9-B6C0-44D0-B364-BDA88A73E6FE}"};
};

} // namespace Kelmar
