#pragma once

#include "kelmar/base/FUnknown.h"

namespace Kelmar {

class IProjectObject;

// One entry of a track's audio chain: one audio event. getStart and getEnd give
// the event's range on the timeline (a part's start already added); further
// members joined to it are reached through IAudioChainEvent::getNextInChain.
class IAudioChainEntry : public FUnknown {
public:
    virtual IProjectObject* getObject() = 0;
    // The next entry in time order, or null; flags are 0.
    virtual IAudioChainEntry* next(int32 flags) = 0;
    virtual double getStart() = 0;
    virtual double getEnd() = 0;

    static constexpr FUID iid{"{60632732-1EEC-42A4-A435-9FEB1B264CF3}"};
};

} // namespace Kelmar
