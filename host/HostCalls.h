#pragma once

#include "kelmar/base/IPtr.h"
#include "kelmar/base/Types.h"
#include "util/Result.h"

namespace montala::host {

// The small guards every host call goes through. The host reports only a
// tresult; Montala's own code throws a Result::Type by value, so that the
// border of a run turns any failure into one code.

// A host operation that must succeed: anything but kResultOk is a failed call.
inline void check(Kelmar::tresult result)
{
    if (result != Kelmar::kResultOk)
        throw util::Result::HostCallFailed;
}

// An object the code cannot go on without.
template <class T>
T& require(T* object)
{
    if (!object)
        throw util::Result::NoInterface;
    return *object;
}

// Asks `object` for interface I; a missing one is NoInterface.
template <class I>
Kelmar::IPtr<I> queryRequired(Kelmar::FUnknown* object)
{
    Kelmar::IPtr<I> answer = Kelmar::queryInterface<I>(object);
    if (!answer)
        throw util::Result::NoInterface;
    return answer;
}

// A service of the host; a new object for the services that hand out one
// per call (an object list, a store, a marker, a point).
template <class I, class Services>
Kelmar::IPtr<I> getService(Services* services)
{
    if (!services)
        throw util::Result::NotInitialized;
    void* answer = nullptr;
    if (services->getService(I::iid, &answer) != Kelmar::kResultOk || !answer)
        throw util::Result::NoInterface;
    return Kelmar::IPtr<I>::adopt(static_cast<I*>(answer));
}

} // namespace montala::host
