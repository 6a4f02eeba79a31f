#include "core/fileio/TextEncoding.h"

#include <gtest/gtest.h>

#include <string>

using montala::core::fileio::isValidUtf8;
using montala::core::fileio::windows1252ToUtf8;

namespace {

struct Case {
    const char* what;
    std::string bytes;
};

} // namespace

TEST(TextEncoding, StrictUtf8RefusesEveryKindOfBadSequence)
{
    const Case valid[] = {
        {"ASCII with a NUL", std::string("a\0b", 3)},
        {"two bytes at both ends", "\xC2\x80\xDF\xBF"},
        {"three bytes, lowest and highest", "\xE0\xA0\x80\xEF\xBF\xBF"},
        {"just below the surrogates", "\xED\x9F\xBF"},
        {"just above the surrogates", "\xEE\x80\x80"},
        {"four bytes, lowest", "\xF0\x90\x80\x80"},
        {"U+10FFFF", "\xF4\x8F\xBF\xBF"},
    };
    for (const Case& c : valid)
        EXPECT_TRUE(isValidUtf8(c.bytes)) << c.what;

    const Case invalid[] = {
        {"lone continuation byte", "a\x80" "b"},
        {"continuation byte at the end", "\xBF"},
        {"two-byte lead without its continuation", "\xC3"},
        {"two-byte lead followed by ASCII", "\xC3(" },
        {"truncated three-byte sequence", "\xE2\x82"},
        {"truncated four-byte sequence", "\xF0\x9F\x98"},
        {"overlong slash in two bytes", "\xC0\xAF"},
        {"overlong in two bytes from C1", "\xC1\xBF"},
        {"overlong in three bytes", "\xE0\x80\xAF"},
        {"overlong in four bytes", "\xF0\x80\x80\xAF"},
        {"surrogate U+D800", "\xED\xA0\x80"},
        {"surrogate U+DFFF", "\xED\xBF\xBF"},
        {"above U+10FFFF", "\xF4\x90\x80\x80"},
        {"lead F5", "\xF5\x80\x80\x80"},
        {"lead FF", "\xFF"},
        {"lead FE", "\xFE"},
        {"Windows-1252 e acute", "caf\xE9"},
    };
    for (const Case& c : invalid) {
        EXPECT_FALSE(isValidUtf8(c.bytes)) << c.what;
        // Whatever the bytes, the conversion gives valid UTF-8 with one
        // character per byte.
        const std::string converted = windows1252ToUtf8(c.bytes);
        EXPECT_TRUE(isValidUtf8(converted)) << c.what;
    }
}

TEST(TextEncoding, Windows1252ConvertsEveryByte)
{
    EXPECT_EQ(windows1252ToUtf8("caf\xE9"), "caf\xC3\xA9");
    EXPECT_EQ(windows1252ToUtf8("\x80\x8A\x99\x9F"), "\xE2\x82\xAC\xC5\xA0\xE2\x84\xA2\xC5\xB8");
    // The five bytes the code page leaves open keep their number.
    EXPECT_EQ(windows1252ToUtf8("\x81\x8D\x8F\x90\x9D"), "\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D");
    std::string all;
    for (int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    const std::string converted = windows1252ToUtf8(all);
    EXPECT_TRUE(isValidUtf8(converted));
    // ASCII stays as it is; the last byte is y with diaeresis.
    EXPECT_EQ(converted.substr(0, 127), all.substr(0, 127));
    EXPECT_EQ(converted.substr(converted.size() - 2), "\xC3\xBF");
}
