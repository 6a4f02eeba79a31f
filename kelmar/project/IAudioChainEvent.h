#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IProjectObject;

// An audio event of a chain.
class IAudioChainEvent : public FUnknown {
public:
    // The event this one is joined to (the next in time order), or null.
    virtual IProjectObject* getNextInChain() = 0;

    static constexpr FUID iid{"{21FFE452-D832-40D6-AE8B-6DB6AE400165}"};
};

} // namespace Kelmar
