#pragma once

#include "kelmar/base/FUID.h"
#include "kelmar/base/Types.h"

namespace Kelmar {

// The root of every interface. An object is asked for an interface by id and
// hands out an owned reference to it; the holder gives it back with
// release(). A new object starts with a count of one, owned by its maker.
//
// Ownership rule of all interfaces here: an operation that returns an
// interface pointer returns an owned reference (or null), which the caller
// releases. Pointers passed in are borrowed for the call.
class FUnknown {
public:
    virtual tresult queryInterface(const FUID& iid, void** obj) = 0;
    virtual uint32 addRef() = 0;
    virtual uint32 release() = 0;

    static constexpr FUID iid{"{00000000-0000-0000-C000-000000000046}"};
};

// For the queryInterface of a class with several interfaces: answers the
// interface `I` of `self` when `iid` names it.
template <class I, class Self>
bool answerInterface(Self* self, const FUID& iid, void** obj)
{
    if (!(iid == I::iid))
        return false;
    I* asInterface = static_cast<I*>(self);
    asInterface->addRef();
    *obj = asInterface;
    return true;
}

} // namespace Kelmar
