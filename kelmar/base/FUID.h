#pragma once

#include "kelmar/base/Types.h"

#include <string>
#include <string_view>

namespace Kelmar {

// The 16-byte id of an interface or a class. In memory the bytes lie as in a
// Windows GUID: the first three groups of the text little-endian, the last
// eight bytes in text order. Interfaces declare their id from the GUID text at
// compile time, so a mistyped id does not build.
class FUID {
public:
    constexpr FUID() = default;

    // "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}"; anything else is a compile
    // error in a constant expression.
    consteval explicit FUID(const char (&text)[39])
    {
        if (!parse(std::string_view(text, 38), bytes))
            throw "malformed GUID text";
    }

    // Runtime form of the above; false leaves `out` unchanged.
    static bool fromText(std::string_view text, FUID& out);
    // From 16 bytes in memory order, e.g. a class record's id.
    static FUID fromBytes(const uint8* bytes);

    // The GUID text, upper case, with braces.
    std::string toText() const;

    bool isValid() const;
    const uint8* data() const { return bytes; }

    constexpr bool operator==(const FUID& other) const
    {
        for (int i = 0; i < 16; ++i)
            if (bytes[i] != other.bytes[i])
                return false;
        return true;
    }

private:
    static constexpr int hexValue(char c)
    {
        if (c >= '0' && c <= '9')
            return c - '0';
        if (c >= 'a' && c <= 'f')
            return c - 'a' + 10;
        if (c >= 'A' && c <= 'F')
            return c - 'A' + 10;
        return -1;
    }

    static constexpr bool parse(std::string_view text, uint8 (&out)[16])
    {
        if (text.size() != 38 || text[0] != '{' || text[37] != '}')
            return false;
        // Position of each byte's two hex digits in the text, in GUID order.
        constexpr int digitAt[16] = {1, 3, 5, 7, 10, 12, 15, 17, 20, 22, 25, 27, 29, 31, 33, 35};
        // Memory position of each of those bytes: the first three groups swapped.
        constexpr int memoryAt[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
        if (text[9] != '-' || text[14] != '-' || text[19] != '-' || text[24] != '-')
            return false;
        uint8 parsed[16] = {};
        for (int i = 0; i < 16; ++i) {
            const int high = hexValue(text[digitAt[i]]);
            const int low = hexValue(text[digitAt[i] + 1]);
            if (high < 0 || low < 0)
                return false;
            parsed[memoryAt[i]] = static_cast<uint8>(high * 16 + low);
        }
        for (int i = 0; i < 16; ++i)
            out[i] = parsed[i];
        return true;
    }

    uint8 bytes[16] = {};
};

} // namespace Kelmar
