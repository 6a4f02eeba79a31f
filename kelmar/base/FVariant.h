#pragma once

#include "kelmar/base/FUnknown.h"
#include "kelmar/base/Types.h"

namespace Kelmar {

// A small tagged value for attributes: a 16-bit type word and a 64-bit
// payload. With kOwner set the value owns its payload (a copied string or a
// reference to an object) and frees it when it is emptied or destroyed; that
// is how a reader of an attribute frees what the host handed out.
class FVariant {
public:
    enum Type : uint16 {
        kEmpty = 0,
        kInteger = 1,
        kFloat = 2,
        kString8 = 4,
        kObject = 8,
        kOwner = 16,
        kString16 = 32,
    };

    FVariant() = default;
    FVariant(int64 value) { setInt(value); }
    FVariant(int32 value) { setInt(value); }
    FVariant(double value) { setFloat(value); }
    // Strings and objects: borrowed unless `owner`, in which case the string
    // is copied and the object gets a reference of its own.
    FVariant(const char8* text, bool owner = false) { setString8(text, owner); }
    FVariant(const char16* text, bool owner = false) { setString16(text, owner); }
    FVariant(FUnknown* object, bool owner = false) { setObject(object, owner); }

    // A copy owns its own copy of an owned payload.
    FVariant(const FVariant& other);
    FVariant& operator=(const FVariant& other);
    FVariant(FVariant&& other) noexcept;
    FVariant& operator=(FVariant&& other) noexcept;
    ~FVariant() { empty(); }

    void setInt(int64 value);
    void setFloat(double value);
    void setString8(const char8* text, bool owner = false);
    void setString16(const char16* text, bool owner = false);
    void setObject(FUnknown* object, bool owner = false);

    // Frees an owned payload and leaves the value empty.
    void empty();

    uint16 getType() const { return type; }
    bool isEmpty() const { return (type & ~kOwner) == kEmpty; }
    bool isOwner() const { return (type & kOwner) != 0; }
    bool isInt() const { return (type & kInteger) != 0; }
    bool isFloat() const { return (type & kFloat) != 0; }
    bool isString8() const { return (type & kString8) != 0; }
    bool isString16() const { return (type & kString16) != 0; }
    bool isObject() const { return (type & kObject) != 0; }

    // Each answers 0 or null when the value is of another type.
    int64 getInt() const { return isInt() ? payload.intValue : 0; }
    double getFloat() const { return isFloat() ? payload.floatValue : 0.0; }
    const char8* getString8() const { return isString8() ? payload.string8 : nullptr; }
    const char16* getString16() const { return isString16() ? payload.string16 : nullptr; }
    FUnknown* getObject() const { return isObject() ? payload.object : nullptr; }

private:
    void copyFrom(const FVariant& other);

    uint16 type = kEmpty;
    union Payload {
        int64 intValue;
        double floatValue;
        const char8* string8;
        const char16* string16;
        FUnknown* object;
    } payload{0};
};

} // namespace Kelmar
