#pragma once

#include "kelmar/base/FObject.h"
#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// Lets an object hear of changes of another through IDependent::update with
// IDependent::kChanged.
class IDependencyRegistry : public FUnknown {
public:
    // Borrowed: a dependent removes itself before it is destroyed.
    virtual tresult addDependent(FUnknown* subject, FObject* dependent) = 0;
    virtual tresult removeDependent(FUnknown* subject, FObject* dependent) = 0;

    static constexpr FUID iid{"{F5246D56-8654-4D60-B026-AFB57B697B37}"};
};

} // namespace Kelmar
