#pragma once

#include "kelmar/base/IDependent.h"

#include <atomic>

namespace Kelmar {

// Common base of reference-counted objects: counts references (one at
// creation), deletes itself at zero, answers FUnknown, IDependent and its own
// id, and names its class. A class that adds interfaces overrides
// queryInterface, answers its own and falls back to this one, and puts
// KELMAR_FOBJECT_REFCOUNT in its body so that every interface shares this
// count.
class FObject : public IDependent {
public:
    FObject() = default;
    FObject(const FObject&) = delete;
    FObject& operator=(const FObject&) = delete;
    virtual ~FObject() = default;

    tresult queryInterface(const FUID& iid, void** obj) override;
    uint32 addRef() override;
    uint32 release() override;

    // Does nothing; dependents override it.
    void update(FUnknown* changedUnknown, int32 message) override;

    // The class name, e.g. "Host". Derived classes answer their own name;
    // asked with askBaseClass, they also accept the names of their bases,
    // ending with "FObject".
    virtual const char* isA() const;
    virtual bool isTypeOf(const char* name, bool askBaseClass = true) const;

    uint32 getRefCount() const { return refCount.load(); }

    static constexpr FUID iid{"{E52D64F2-120C-4BD8-93BF-5C4110E52055}"};

private:
    std::atomic<uint32> refCount{1};
};

} // namespace Kelmar

// Routes the reference counting of every further interface of a class to its
// FObject base.
#define KELMAR_FOBJECT_REFCOUNT                                                                    \
    Kelmar::uint32 addRef() override { return Kelmar::FObject::addRef(); }                        \
    Kelmar::uint32 release() override { return Kelmar::FObject::release(); }
