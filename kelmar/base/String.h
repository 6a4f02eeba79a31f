#pragma once

#include "kelmar/base/Types.h"

#include <string>
#include <string_view>

namespace Kelmar {

// Text as it crosses the host's interfaces: holds either 8-bit (UTF-8) or
// 16-bit (UTF-16) text and gives the other width on demand. Invalid input
// becomes U+FFFD rather than failing, as a name must always be shown.
class String {
public:
    String() = default;
    String(const char8* utf8);
    String(const char16* utf16);
    String(std::string_view utf8);
    String(std::u16string_view utf16);

    bool isWide() const { return wide; }
    bool isEmpty() const;

    // Pointers stay valid until the string is next changed.
    const char8* text8() const;
    const char16* text16() const;

    std::string toUtf8() const { return text8(); }
    std::u16string toUtf16() const { return text16(); }

    void assign(std::string_view utf8);
    void assign(std::u16string_view utf16);

    bool operator==(const String& other) const;

    static std::u16string utf8ToUtf16(std::string_view utf8);
    static std::string utf16ToUtf8(std::u16string_view utf16);
    // Appends one code point as UTF-8.
    static void appendUtf8(std::string& out, char32_t codePoint);
    // Length of a zero-terminated 16-bit text; 0 for null.
    static std::size_t length16(const char16* text);

private:
    bool wide = false;
    mutable bool hasNarrow = true;
    mutable bool hasWide = false;
    mutable std::string narrow;
    mutable std::u16string wideText;
};

} // namespace Kelmar
