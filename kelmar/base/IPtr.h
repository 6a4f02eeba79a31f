#pragma once

#include "kelmar/base/FUnknown.h"

#include <utility>

namespace Kelmar {

// Holds one reference to an interface and releases it when it goes.
// owned() adopts a reference that the caller already owns (what an operation
// returning an object hands out); shared() adds a reference of its own.
template <class T>
class IPtr {
public:
    IPtr() = default;
    IPtr(std::nullptr_t) {}
    IPtr(const IPtr& other) : ptr(other.ptr)
    {
        if (ptr)
            ptr->addRef();
    }
    IPtr(IPtr&& other) noexcept : ptr(std::exchange(other.ptr, nullptr)) {}
    template <class U>
    IPtr(const IPtr<U>& other) : ptr(other.get())
    {
        if (ptr)
            ptr->addRef();
    }
    ~IPtr() { reset(); }

    IPtr& operator=(IPtr other) noexcept
    {
        std::swap(ptr, other.ptr);
        return *this;
    }

    static IPtr adopt(T* owned)
    {
        IPtr result;
        result.ptr = owned;
        return result;
    }
    static IPtr share(T* shared)
    {
        IPtr result;
        result.ptr = shared;
        if (shared)
            shared->addRef();
        return result;
    }

    void reset()
    {
        if (ptr)
            std::exchange(ptr, nullptr)->release();
    }
    // Gives up the reference without releasing it.
    T* take() { return std::exchange(ptr, nullptr); }

    // For an out parameter: drops what is held and lets the callee fill in an
    // owned reference.
    T** put()
    {
        reset();
        return &ptr;
    }
    void** putVoid() { return reinterpret_cast<void**>(put()); }

    T* get() const { return ptr; }
    T* operator->() const { return ptr; }
    T& operator*() const { return *ptr; }
    explicit operator bool() const { return ptr != nullptr; }

    friend bool operator==(const IPtr& a, const IPtr& b) { return a.ptr == b.ptr; }
    friend bool operator==(const IPtr& a, const T* b) { return a.ptr == b; }

private:
    T* ptr = nullptr;
};

template <class T>
IPtr<T> owned(T* object)
{
    return IPtr<T>::adopt(object);
}

template <class T>
IPtr<T> shared(T* object)
{
    return IPtr<T>::share(object);
}

// Asks `object` for interface I; null when it has none.
template <class I>
IPtr<I> queryInterface(FUnknown* object)
{
    void* answer = nullptr;
    if (object && object->queryInterface(I::iid, &answer) == kResultOk && answer)
        return IPtr<I>::adopt(static_cast<I*>(answer));
    return {};
}

} // namespace Kelmar
