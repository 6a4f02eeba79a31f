#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

// Told when an object it depends on has changed (see IDependencyRegistry).
class IDependent : public FUnknown {
public:
    enum Message : int32 {
        kChanged = 101,
    };

    virtual void update(FUnknown* changedUnknown, int32 message) = 0;

    static constexpr FUID iid{"{A14978E7-1DD4-409D-A983-286A02E76B02}"};
};

} // namespace Kelmar
