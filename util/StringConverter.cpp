#include "util/StringConverter.h"

#include "util/Utf8.h"

#include <stdexcept>

namespace montala::util {

namespace {

[[noreturn]] void badConversion()
{
    throw std::range_error("bad conversion");
}

} // namespace

std::string StringConverter::toUtf8(const std::u16string& wide)
{
    std::string out;
    out.reserve(wide.size());
    for (size_t i = 0; i < wide.size(); ++i) {
        char32_t unit = wide[i];
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            if (i + 1 >= wide.size())
                badConversion();
            char32_t low = wide[i + 1];
            if (low < 0xDC00 || low > 0xDFFF)
                badConversion();
            appendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00));
            ++i;
        } else if (unit >= 0xDC00 && unit <= 0xDFFF) {
            badConversion();
        } else {
            appendUtf8(out, unit);
        }
    }
    return out;
}

std::u16string StringConverter::fromUtf8(const std::string& text)
{
    std::u16string out;
    out.reserve(text.size());
    size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        char32_t cp = 0;
        size_t extra = 0;
        char32_t minimum = 0;
        if (lead < 0x80) {
            cp = lead;
        } else if ((lead & 0xE0) == 0xC0) {
            cp = lead & 0x1F;
            extra = 1;
            minimum = 0x80;
        } else if ((lead & 0xF0) == 0xE0) {
            cp = lead & 0x0F;
            extra = 2;
            minimum = 0x800;
        } else if ((lead & 0xF8) == 0xF0) {
            cp = lead & 0x07;
            extra = 3;
            minimum = 0x10000;
        } else {
            badConversion();
        }
        if (i + extra >= text.size() && extra > 0)
            badConversion();
        for (size_t k = 1; k <= extra; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80)
                badConversion();
            cp = (cp << 6) | (next & 0x3F);
        }
        if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
            badConversion();
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (cp >> 10));
            out += static_cast<char16_t>(0xDC00 + (cp & 0x3FF));
        } else {
            out += static_cast<char16_t>(cp);
        }
        i += extra + 1;
    }
    return out;
}

std::u16string StringConverter::translate(const std::u16string& wide)
{
    return wide;
}

ScopedStringConverter::ScopedStringConverter(StringUtil::StringConverterInterface& converter)
    : previous(StringUtil::getStringConverter())
{
    StringUtil::setStringConverter(&converter);
}

ScopedStringConverter::~ScopedStringConverter()
{
    StringUtil::setStringConverter(previous);
}

} // namespace montala::util
