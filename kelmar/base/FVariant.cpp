#include "kelmar/base/FVariant.h"

#include <cstring>
#include <utility>

namespace Kelmar {

namespace {

template <class Char>
Char* copyText(const Char* text)
{
    std::size_t n = 0;
    while (text[n])
        ++n;
    Char* copy = new Char[n + 1];
    std::memcpy(copy, text, (n + 1) * sizeof(Char));
    return copy;
}

} // namespace

FVariant::FVariant(const FVariant& other)
{
    copyFrom(other);
}

FVariant& FVariant::operator=(const FVariant& other)
{
    if (this != &other) {
        empty();
        copyFrom(other);
    }
    return *this;
}

FVariant::FVariant(FVariant&& other) noexcept
    : type(std::exchange(other.type, kEmpty)), payload(std::exchange(other.payload, Payload{0}))
{
}

FVariant& FVariant::operator=(FVariant&& other) noexcept
{
    if (this != &other) {
        empty();
        type = std::exchange(other.type, kEmpty);
        payload = std::exchange(other.payload, Payload{0});
    }
    return *this;
}

void FVariant::copyFrom(const FVariant& other)
{
    const bool owner = other.isOwner();
    if (other.isString8())
        setString8(other.payload.string8, owner);
    else if (other.isString16())
        setString16(other.payload.string16, owner);
    else if (other.isObject())
        setObject(other.payload.object, owner);
    else {
        type = other.type;
        payload = other.payload;
    }
}

void FVariant::setInt(int64 value)
{
    empty();
    type = kInteger;
    payload.intValue = value;
}

void FVariant::setFloat(double value)
{
    empty();
    type = kFloat;
    payload.floatValue = value;
}

void FVariant::setString8(const char8* text, bool owner)
{
    empty();
    type = kString8;
    if (owner && text) {
        payload.string8 = copyText(text);
        type |= kOwner;
    } else {
        payload.string8 = text;
    }
}

void FVariant::setString16(const char16* text, bool owner)
{
    empty();
    type = kString16;
    if (owner && text) {
        payload.string16 = copyText(text);
        type |= kOwner;
    } else {
        payload.string16 = text;
    }
}

void FVariant::setObject(FUnknown* object, bool owner)
{
    empty();
    type = kObject;
    payload.object = object;
    if (owner && object) {
        object->addRef();
        type |= kOwner;
    }
}

void FVariant::empty()
{
    if (isOwner()) {
        if (isString8())
            delete[] payload.string8;
        else if (isString16())
            delete[] payload.string16;
        else if (isObject() && payload.object)
            payload.object->release();
    }
    type = kEmpty;
    payload.intValue = 0;
}

} // namespace Kelmar
