#include "kelmar/base/String.h"

#include <gtest/gtest.h>

namespace Kelmar {
namespace {

TEST(String, ConvertsBetweenWidthsOnDemand)
{
    const String narrow("Café – 台词");
    EXPECT_FALSE(narrow.isWide());
    EXPECT_EQ(std::u16string(narrow.text16()), u"Café – 台词");

    const String wide(u"Überblendung 𝄞");
    EXPECT_TRUE(wide.isWide());
    EXPECT_STREQ(wide.text8(), "Überblendung 𝄞");
    EXPECT_EQ(narrow, String(u"Café – 台词")) << "equal text of either width is equal";
}

TEST(String, TurnsInvalidInputIntoReplacementCharacters)
{
    EXPECT_EQ(String::utf8ToUtf16("a\xFF" "b"), u"a\uFFFDb");
    EXPECT_EQ(String::utf8ToUtf16("\xC0\xAF"), u"\uFFFD\uFFFD") << "an overlong form is no text";
    EXPECT_EQ(String::utf8ToUtf16("x\xE2\x82"), u"x\uFFFD\uFFFD") << "a cut sequence";
    const char16_t loneSurrogate[] = {u'a', 0xD800, u'b', 0};
    EXPECT_EQ(String::utf16ToUtf8(loneSurrogate), "a\xEF\xBF\xBD" "b");
    EXPECT_EQ(String::length16(u"four"), 4u);
    EXPECT_EQ(String::length16(nullptr), 0u);
}

} // namespace
} // namespace Kelmar
