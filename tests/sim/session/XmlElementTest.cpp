#include "sim/session/Base64.h"
#include "sim/session/XmlElement.h"

#include <gtest/gtest.h>

namespace montala::sim {
namespace {

TEST(XmlElement, ReadsElementsAttributesAndTextExactly)
{
    std::string error;
    const auto root = XmlElement::parse("\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                        "<!-- table -->\n"
                                        "<Translation><StringTable>\n"
                                        "  <String Key=\"Start &quot;Montala&quot;\nnow\"><de>Los &amp; weiter &#x263A;</de></String>\n"
                                        "  <String Key='x'><![CDATA[<raw>]]></String>\n"
                                        "</StringTable></Translation>",
                                        error);
    ASSERT_TRUE(root) << error;
    EXPECT_EQ(root->name(), "Translation");
    const XmlElement* table = root->child("StringTable");
    ASSERT_TRUE(table);
    ASSERT_EQ(table->children().size(), 2u);
    EXPECT_EQ(*table->children()[0]->attribute("Key"), "Start \"Montala\"\nnow") << "the line break is kept";
    EXPECT_EQ(table->children()[0]->child("de")->text(), "Los & weiter \xE2\x98\xBA");
    EXPECT_EQ(table->children()[1]->text(), "<raw>");
    EXPECT_EQ(table->children()[1]->attribute("Missing"), nullptr);
}

TEST(XmlElement, SaysWhereTheTextIsBroken)
{
    std::string error;
    EXPECT_FALSE(XmlElement::parse("<skin>\n  <template name=\"a\">\n</skin>", error));
    EXPECT_EQ(error, "line 3, column 7: </skin> closes <template>");
    EXPECT_FALSE(XmlElement::parse("<a>&nbsp;</a>", error));
    EXPECT_EQ(error, "line 1, column 4: the unknown entity &nbsp;");
    EXPECT_FALSE(XmlElement::parse("<a></a><b/>", error));
}

TEST(Base64, EncodesAndDecodesWithPadding)
{
    const std::vector<unsigned char> bytes{'M', 'o', 'n', 't', 0, 255};
    EXPECT_EQ(Base64::encode(bytes), "TW9udAD/");
    EXPECT_EQ(Base64::encode({'a'}), "YQ==");
    std::vector<unsigned char> decoded;
    ASSERT_TRUE(Base64::decode("TW9udAD/", decoded));
    EXPECT_EQ(decoded, bytes);
    ASSERT_TRUE(Base64::decode("YWI=", decoded));
    EXPECT_EQ(decoded, (std::vector<unsigned char>{'a', 'b'}));
    EXPECT_FALSE(Base64::decode("YW=I", decoded));
    EXPECT_FALSE(Base64::decode("YWJ", decoded));
    EXPECT_FALSE(Base64::decode("Y*Jj", decoded));
}

} // namespace
} // namespace montala::sim
