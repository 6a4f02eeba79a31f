#include "kelmar/base/FUID.h"

namespace Kelmar {

bool FUID::fromText(std::string_view text, FUID& out)
{
    return parse(text, out.bytes);
}

FUID FUID::fromBytes(const uint8* source)
{
    FUID id;
    for (int i = 0; i < 16; ++i)
        id.bytes[i] = source[i];
    return id;
}

std::string FUID::toText() const
{
    static const char digits[] = "0123456789ABCDEF";
    constexpr int memoryOrder[16] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    std::string text = "{";
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        const uint8 byte = bytes[memoryOrder[i]];
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    text += '}';
    return text;
}

bool FUID::isValid() const
{
    for (uint8 byte : bytes)
        if (byte != 0)
            return true;
    return false;
}

} // namespace Kelmar
