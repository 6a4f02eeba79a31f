#include "kelmar/base/String.h"

namespace Kelmar {

namespace {

constexpr char32_t replacement = 0xFFFD;

void appendUtf16(std::u16string& out, char32_t c)
{
    if (c < 0x10000) {
        out += static_cast<char16_t>(c);
    } else {
        c -= 0x10000;
        out += static_cast<char16_t>(0xD800 + (c >> 10));
        out += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
    }
}

} // namespace

void String::appendUtf8(std::string& out, char32_t c)
{
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
}

String::String(const char8* utf8) : String(std::string_view(utf8 ? utf8 : "")) {}

String::String(const char16* utf16) : String(std::u16string_view(utf16 ? utf16 : u"")) {}

String::String(std::string_view utf8)
{
    assign(utf8);
}

String::String(std::u16string_view utf16)
{
    assign(utf16);
}

void String::assign(std::string_view utf8)
{
    wide = false;
    narrow.assign(utf8);
    hasNarrow = true;
    hasWide = false;
    wideText.clear();
}

void String::assign(std::u16string_view utf16)
{
    wide = true;
    wideText.assign(utf16);
    hasWide = true;
    hasNarrow = false;
    narrow.clear();
}

bool String::isEmpty() const
{
    return wide ? wideText.empty() : narrow.empty();
}

const char8* String::text8() const
{
    if (!hasNarrow) {
        narrow = utf16ToUtf8(wideText);
        hasNarrow = true;
    }
    return narrow.c_str();
}

const char16* String::text16() const
{
    if (!hasWide) {
        wideText = utf8ToUtf16(narrow);
        hasWide = true;
    }
    return wideText.c_str();
}

bool String::operator==(const String& other) const
{
    return std::u16string_view(text16()) == std::u16string_view(other.text16());
}

std::u16string String::utf8ToUtf16(std::string_view utf8)
{
    std::u16string out;
    out.reserve(utf8.size());
    std::size_t i = 0;
    while (i < utf8.size()) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        int extra = 0;
        char32_t c = 0;
        if (lead < 0x80) {
            c = lead;
        } else if ((lead & 0xE0) == 0xC0) {
            extra = 1;
            c = lead & 0x1F;
        } else if ((lead & 0xF0) == 0xE0) {
            extra = 2;
            c = lead & 0x0F;
        } else if ((lead & 0xF8) == 0xF0) {
            extra = 3;
            c = lead & 0x07;
        } else {
            appendUtf16(out, replacement);
            ++i;
            continue;
        }
        bool valid = i + static_cast<std::size_t>(extra) < utf8.size();
        for (int k = 1; valid && k <= extra; ++k) {
            const auto next = static_cast<unsigned char>(utf8[i + k]);
            if ((next & 0xC0) != 0x80)
                valid = false;
            else
                c = (c << 6) | (next & 0x3F);
        }
        // Overlong forms, surrogates and values past the last code point are
        // not text.
        static constexpr char32_t smallest[] = {0, 0x80, 0x800, 0x10000};
        if (valid && (c < smallest[extra] || (c >= 0xD800 && c <= 0xDFFF) || c > 0x10FFFF))
            valid = false;
        if (!valid) {
            appendUtf16(out, replacement);
            ++i;
            continue;
        }
        appendUtf16(out, c);
        i += 1 + extra;
    }
    return out;
}

std::string String::utf16ToUtf8(std::u16string_view utf16)
{
    std::string out;
    out.reserve(utf16.size());
    for (std::size_t i = 0; i < utf16.size(); ++i) {
        char32_t c = utf16[i];
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 && utf16[i + 1] <= 0xDFFF) {
            c = 0x10000 + ((c - 0xD800) << 10) + (utf16[i + 1] - 0xDC00);
            ++i;
        } else if (c >= 0xD800 && c <= 0xDFFF) {
            c = replacement; // a lone surrogate
        }
        appendUtf8(out, c);
    }
    return out;
}

std::size_t String::length16(const char16* text)
{
    std::size_t n = 0;
    if (text)
        while (text[n])
            ++n;
    return n;
}

} // namespace Kelmar
