#include "kelmar/base/FObject.h"

#include <cstring>

namespace Kelmar {

tresult FObject::queryInterface(const FUID& iid, void** obj)
{
    if (!obj)
        return kInvalidArgument;
    if (iid == FUnknown::iid || iid == IDependent::iid || iid == FObject::iid) {
        addRef();
        *obj = static_cast<IDependent*>(this);
        return kResultOk;
    }
    *obj = nullptr;
    return kNoInterface;
}

uint32 FObject::addRef()
{
    return ++refCount;
}

uint32 FObject::release()
{
    const uint32 left = --refCount;
    if (left == 0)
        delete this;
    return left;
}

void FObject::update(FUnknown*, int32) {}

const char* FObject::isA() const
{
    return "FObject";
}

bool FObject::isTypeOf(const char* name, bool askBaseClass) const
{
    if (!name)
        return false;
    if (std::strcmp(name, isA()) == 0)
        return true;
    return askBaseClass && std::strcmp(name, "FObject") == 0;
}

} // namespace Kelmar
