#include "kelmar/base/FUID.h"

#include <gtest/gtest.h>

namespace Kelmar {
namespace {

TEST(FUID, LaysOutTheFirstThreeGroupsLittleEndianAndTheRestInTextOrder)
{
    constexpr FUID id{"{22888DDB-156E-45AE-8358-B34808190625}"};
    const uint8 expected[16] = {0xDB, 0x8D, 0x88, 0x22, 0x6E, 0x15, 0xAE, 0x45,
                                0x83, 0x58, 0xB3, 0x48, 0x08, 0x19, 0x06, 0x25};
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(id.data()[i], expected[i]) << "byte " << i;
    EXPECT_EQ(FUID::fromBytes(expected), id);
}

TEST(FUID, RefusesMalformedText)
{
    FUID untouched;
    EXPECT_FALSE(FUID::fromText("5354D6AC-C0D4-4532-B1BD-A33E229B9F3D", untouched));   // no braces
    EXPECT_FALSE(FUID::fromText("{5354D6AC-C0D4-4532-B1BD-A33E229B9F3}", untouched));  // short
    EXPECT_FALSE(FUID::fromText("{5354D6AC-C0D4-4532-B1BDxA33E229B9F3D}", untouched)); // separator
    EXPECT_FALSE(FUID::fromText("{5354D6AC-C0D4-4532-B1BD-A33E229B9F3G}", untouched)); // not hex
    EXPECT_FALSE(untouched.isValid());
}

} // namespace
} // namespace Kelmar
