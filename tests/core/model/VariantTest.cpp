#include "support/ModelFixture.h"
#include "support/StoredBytes.h"
#include "core/model/Variant.h"
#include "core/serialize/SerializationTree.h"
#include "util/Result.h"

#include <gtest/gtest.h>

#include <vector>

namespace montala::core {
namespace {

using montala::test::storedBytes;

using montala::test::thrownCode;

using serialize::SerializationTree;
using util::Result;

Variant readBack(const std::vector<uint8_t>& bytes)
{
    SerializationTree tree;
    tree.assign(bytes.data(), bytes.size());
    Variant value;
    tree.readObject(value);
    EXPECT_EQ(bytes.size(), tree.getPosition());
    return value;
}

TEST(VariantStoredForm, MatchesGoldenBytesForEveryType)
{
    using Bytes = std::vector<uint8_t>;
    // Version 1, type, value. Bool and int travel as a 32-bit float.
    EXPECT_EQ((Bytes{1, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}), storedBytes(Variant()));
    EXPECT_EQ((Bytes{1, 0, 0, 0, 0, 0, 0, 0, 0x00, 0x00, 0x80, 0x3F}), storedBytes(Variant(true)));
    EXPECT_EQ((Bytes{1, 0, 0, 0, 1, 0, 0, 0, 0x00, 0x00, 0x28, 0xC2}), storedBytes(Variant(-42)));
    EXPECT_EQ((Bytes{1, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 'a', 'b'}), storedBytes(Variant("ab")));
    EXPECT_EQ((Bytes{1, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xE0, 0x3F}), storedBytes(Variant(0.5)));
}

TEST(VariantStoredForm, IntsPassThroughFloatPrecisionWhileDoublesKeepTheirValue)
{
    // 2^24 + 1 has no float of its own.
    const Variant asInt = readBack(storedBytes(Variant(16777217)));
    EXPECT_EQ(Variant::Int, asInt.getType());
    EXPECT_EQ(16777216, asInt.asInt());
    const Variant asDouble = readBack(storedBytes(Variant(16777217.0)));
    EXPECT_EQ(Variant::Double, asDouble.getType());
    EXPECT_EQ(16777217.0, asDouble.asDouble());
    // A position in seconds keeps all its digits as a double.
    EXPECT_EQ(3600.123456789, readBack(storedBytes(Variant(3600.123456789))).asDouble());
    EXPECT_TRUE(readBack(storedBytes(Variant(true))).asBool());
    EXPECT_EQ("selected rows", readBack(storedBytes(Variant("selected rows"))).asText());
    EXPECT_TRUE(readBack(storedBytes(Variant())).isEmpty());
}

TEST(VariantStoredForm, ReadsFloatsUnknownTypesAndVersionZero)
{
    // Type 2 exists only in storage.
    const Variant floatValue = readBack({1, 0, 0, 0, 2, 0, 0, 0, 0x00, 0x00, 0xC0, 0x3F});
    EXPECT_EQ(Variant::Float, floatValue.getType());
    EXPECT_EQ(1.5, floatValue.asDouble());
    EXPECT_EQ(1, floatValue.asInt());
    // Any unknown type is read as text.
    const Variant unknown = readBack({1, 0, 0, 0, 9, 0, 0, 0, 1, 0, 0, 0, 'z'});
    EXPECT_EQ(Variant::Text, unknown.getType());
    EXPECT_EQ("z", unknown.asText());
    // Version 0 has the same form.
    EXPECT_EQ(7, readBack({0, 0, 0, 0, 1, 0, 0, 0, 0x00, 0x00, 0xE0, 0x40}).asInt());

    Variant value;
    SerializationTree newer;
    newer.assign("\x02\x00\x00\x00\x01\x00\x00\x00\x00\x00\x00\x00", 12);
    EXPECT_EQ(Result::NewerVersion, thrownCode([&] { newer.readObject(value); }));
    SerializationTree cut;
    cut.assign("\x01\x00\x00\x00\x04\x00\x00\x00\x00\x00", 10);
    EXPECT_EQ(Result::StreamExhausted, thrownCode([&] { cut.readObject(value); }));
    cut.rewind();
    EXPECT_EQ(Result::UnknownVersion, thrownCode([&] { value.readOld(cut, 5); }));
}

} // namespace
} // namespace montala::core
