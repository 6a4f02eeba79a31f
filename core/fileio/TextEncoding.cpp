#include "core/fileio/TextEncoding.h"

#include "util/Utf8.h"

#include <cstdint>

namespace montala::core::fileio {

namespace {

bool isContinuation(unsigned char byte)
{
    return (byte & 0xC0) == 0x80;
}

// Bytes 80..9F of Windows-1252; the rest of the upper half is Latin-1.
constexpr char16_t upperControls[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

} // namespace

bool isValidUtf8(std::string_view text)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const size_t size = text.size();
    size_t i = 0;
    while (i < size) {
        const unsigned char lead = bytes[i];
        if (lead < 0x80) {
            ++i;
            continue;
        }
        size_t length = 0;
        // The second byte's range is narrower after some lead bytes: that is
        // what rules out overlongs (E0, F0), surrogates (ED) and code points
        // above U+10FFFF (F4).
        unsigned char low = 0x80, high = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            if (lead == 0xE0)
                low = 0xA0;
            else if (lead == 0xED)
                high = 0x9F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            if (lead == 0xF0)
                low = 0x90;
            else if (lead == 0xF4)
                high = 0x8F;
        } else {
            return false; // 80..C1 and F5..FF never lead
        }
        if (size - i < length)
            return false;
        if (bytes[i + 1] < low || bytes[i + 1] > high)
            return false;
        for (size_t k = 2; k < length; ++k) {
            if (!isContinuation(bytes[i + k]))
                return false;
        }
        i += length;
    }
    return true;
}

std::string windows1252ToUtf8(std::string_view text)
{
    std::string out;
    out.reserve(text.size() + text.size() / 2);
    for (char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 && byte < 0xA0)
            util::appendUtf8(out, upperControls[byte - 0x80]);
        else
            util::appendUtf8(out, byte);
    }
    return out;
}

} // namespace montala::core::fileio
