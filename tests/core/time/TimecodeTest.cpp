#include "support/ModelFixture.h"

#include "core/time/Timecode.h"
#include "core/serialize/SerializationTree.h"
#include "util/Result.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

using montala::core::FixedFramerateProvider;
using montala::core::Framerate;
using montala::core::ScopedFramerateProvider;
using montala::core::Timecode;
using montala::test::ModelFixture;
using montala::test::tc;
using montala::util::Result;

namespace {

using montala::test::thrownCode;

const Framerate df30(30, 1);
const Framerate ndf25(25, 0);

} // namespace

TEST(Framerate, LastFrameOfTheDayAtEachRate)
{
    EXPECT_EQ(Framerate(24, 0).getMaxFrames(), 2073599);
    EXPECT_EQ(Framerate(25, 0).getMaxFrames(), 2159999);
    EXPECT_EQ(Framerate(30, 0).getMaxFrames(), 2591999);
    EXPECT_EQ(Framerate(30, 1).getMaxFrames(), 2589407);
    EXPECT_EQ(Framerate(60, 0).getMaxFrames(), 5183999);
    EXPECT_EQ(Framerate(30, -1).getMaxFrames(), 0);
    EXPECT_TRUE(Framerate().isUndefined());
    EXPECT_TRUE(Framerate(25, -1).isUndefined());
}

TEST(Framerate, PulledRateIsExactlyThousandOverThousandAndOne)
{
    const Framerate ntsc(30, true, 1);
    const unsigned char expected[8] = {0x09, 0x2E, 0x6C, 0xF1, 0xD0, 0xF7, 0xEF, 0x3F};
    double factor = Framerate::pullFactor;
    EXPECT_EQ(std::memcmp(&factor, expected, 8), 0);
    EXPECT_DOUBLE_EQ(ntsc.getExactRate(), 30 * Framerate::pullFactor);
    EXPECT_EQ(ntsc.getMaxFrames(), 2589407);
}

TEST(Framerate, DropFrameExistsOnlyAtNominalThirty)
{
    EXPECT_EQ(thrownCode([] { Framerate(25, 1); }), Result::NotSupported);
    EXPECT_EQ(thrownCode([] { Framerate(60, true, 1); }), Result::NotSupported);
}

TEST(Timecode, TextParsesTheWholeTextOnly)
{
    const Timecode short_("1:2:3:4");
    EXPECT_EQ(short_, Timecode(1, 2, 3, 4));
    EXPECT_EQ(short_.toString(), "01:02:03:04");
    EXPECT_TRUE(short_.isInitialized());
    // ';' is only a separator here and prints as ':'.
    EXPECT_EQ(Timecode("01:02:03;04").toString(), "01:02:03:04");
    for (const char* bad : {"01:02:03.04", "001:02:03:04", "", "01:02:03:04 ", "01;02:03:04", "1:2:3", "a1:02:03:04"})
        EXPECT_EQ(thrownCode([&] { Timecode{std::string(bad)}; }), Result::InvalidArgument) << bad;
}

TEST(Timecode, PrintFormIsNeverCut)
{
    EXPECT_EQ(Timecode(1, 0, 0, 0).toString(), "01:00:00:00");
    EXPECT_EQ(Timecode(100, 0, 0, 7).toString(), "100:00:00:07");
    EXPECT_EQ(Timecode(0, 0, 0, -1).toString(), "00:00:00:-1");
}

TEST(Timecode, ValidityAtNonDrop)
{
    EXPECT_TRUE(Timecode(0, 0, 0, 24).isValid(ndf25));
    EXPECT_FALSE(Timecode(0, 0, 0, 25).isValid(ndf25));
    EXPECT_FALSE(Timecode(24, 0, 0, 0).isValid(ndf25));
    EXPECT_FALSE(Timecode(0, 60, 0, 0).isValid(ndf25));
    EXPECT_FALSE(Timecode(-1, 0, 0, 0).isValid(ndf25));
    EXPECT_FALSE(Timecode(0, 0, 0, -1).isValid(ndf25));
    EXPECT_EQ(thrownCode([] { Timecode(0, 0, 0, 25).toFrames(ndf25); }), Result::OutOfRange);
    EXPECT_EQ(thrownCode([] { Timecode(0, 0, 0, 26).toFrames(ndf25); }), Result::FramesAboveRate);
    EXPECT_EQ(thrownCode([] { Timecode(0, 0, 0, 26).toSeconds(ndf25); }), Result::FramesAboveRate);
    EXPECT_EQ(thrownCode([] { Timecode(24, 0, 0, 0).toFrames(ndf25); }), Result::OutOfRange);
}

TEST(Timecode, DropFrameSkipsTwoNumbersAtEveryMinuteButTheTenth)
{
    EXPECT_FALSE(Timecode(0, 1, 0, 0).isValid(df30));
    EXPECT_FALSE(Timecode(0, 1, 0, 1).isValid(df30));
    EXPECT_TRUE(Timecode(0, 1, 0, 2).isValid(df30));
    EXPECT_TRUE(Timecode(0, 10, 0, 0).isValid(df30));
    EXPECT_TRUE(Timecode(1, 0, 0, 0).isValid(df30));
    EXPECT_EQ(Timecode(0, 0, 59, 29).toFrames(df30), 1799);
    EXPECT_EQ(Timecode(0, 1, 0, 2).toFrames(df30), 1800);
    EXPECT_EQ(Timecode(0, 9, 59, 29).toFrames(df30), 17981);
    EXPECT_EQ(Timecode(0, 10, 0, 0).toFrames(df30), 17982);
    EXPECT_EQ(Timecode(0, 11, 0, 2).toFrames(df30), 17982 + 1800);
    EXPECT_EQ(Timecode(1, 0, 0, 0).toFrames(df30), 107892);

    Timecode fromCount;
    fromCount.fromFrames(1800, df30);
    EXPECT_EQ(fromCount, Timecode(0, 1, 0, 2));
    fromCount.fromFrames(1799, df30);
    EXPECT_EQ(fromCount, Timecode(0, 0, 59, 29));
    fromCount.fromFrames(17982, df30);
    EXPECT_EQ(fromCount, Timecode(0, 10, 0, 0));
    fromCount.fromFrames(17981, df30);
    EXPECT_EQ(fromCount, Timecode(0, 9, 59, 29));
    fromCount.fromFrames(2589407, df30);
    EXPECT_EQ(fromCount, Timecode(23, 59, 59, 29));
}

TEST(Timecode, DropFrameRoundTripsEveryFrameOfTheDay)
{
    Timecode value;
    Timecode previous(0, 0, 0, 0);
    for (int n = 0; n <= df30.getMaxFrames(); ++n) {
        value.fromFrames(n, df30);
        ASSERT_TRUE(value.isValid(df30)) << n;
        ASSERT_EQ(value.toFrames(df30), n) << value.toString();
        if (n > 0) {
            ASSERT_LT(previous, value) << n;
        }
        previous = value;
    }
}

TEST(Timecode, FrameCountOutsideTheDayOrAtAnOpenDropModeIsRefused)
{
    Timecode value;
    EXPECT_EQ(thrownCode([&] { value.fromFrames(-1, ndf25); }), Result::OutOfRange);
    EXPECT_EQ(thrownCode([&] { value.fromFrames(2160000, ndf25); }), Result::OutOfRange);
    EXPECT_EQ(thrownCode([&] { value.fromFrames(0, Framerate(25, -1)); }), Result::InvalidArgument);
    EXPECT_EQ(thrownCode([&] { value.fromFrames(0, Framerate()); }), Result::InvalidArgument);
}

TEST(Timecode, OpenDropModeAtThirtyCountsAsDropFrame)
{
    EXPECT_EQ(Timecode(0, 10, 0, 0).toFrames(Framerate(30, -1)), 17982);
}

TEST_F(ModelFixture, SecondsAreRealTimeAtThePulledRate)
{
    setRate(30, 0, true);
    EXPECT_NEAR(Timecode(1, 0, 0, 0).toSeconds(), 3603.6, 1e-9);
    setRate(30, 1, true);
    EXPECT_NEAR(Timecode(1, 0, 0, 0).toSeconds(), 107892 / (30 * Framerate::pullFactor), 1e-9);
    Timecode back;
    back.fromSeconds(Timecode(1, 0, 0, 0).toSeconds());
    EXPECT_EQ(back, Timecode(1, 0, 0, 0));
}

TEST_F(ModelFixture, SecondsRoundToTheNearestFrame)
{
    Timecode value;
    value.fromSeconds(1.0 + 0.5 / 25 - 1e-9);
    EXPECT_EQ(value, Timecode(0, 0, 1, 0));
    value.fromSeconds(1.0 + 0.5 / 25);
    EXPECT_EQ(value, Timecode(0, 0, 1, 1));
    EXPECT_EQ(Timecode(10.0), Timecode(0, 0, 10, 0));
    EXPECT_EQ(Timecode(250), Timecode(0, 0, 10, 0));
}

TEST_F(ModelFixture, SecondsOutsideTheDayAreRefusedAgainstTheProjectRate)
{
    Timecode value;
    EXPECT_EQ(thrownCode([&] { value.fromSeconds(-0.1); }), Result::OutOfRange);
    EXPECT_EQ(thrownCode([&] { value.fromSeconds(86400.0); }), Result::OutOfRange);
    EXPECT_EQ(thrownCode([&] { value.fromSeconds(std::nan("")); }), Result::OutOfRange);
    EXPECT_EQ(thrownCode([&] { value.fromSeconds(1e300); }), Result::OutOfRange);
    EXPECT_TRUE(Timecode::isValidSeconds(86399.9));
    EXPECT_FALSE(Timecode::isValidSeconds(86400.0));
    // The range check uses the project's rate even when another is asked for.
    EXPECT_EQ(thrownCode([&] { value.fromSeconds(86400.0 - 0.02, Framerate(60, 0)); }), Result::OutOfRange);
}

TEST_F(ModelFixture, DifferenceAndSumStayInsideTheDay)
{
    EXPECT_EQ(Timecode::difference(tc("01:00:10:00"), tc("01:00:08:00")), tc("00:00:02:00"));
    EXPECT_EQ(Timecode::sum(tc("01:00:10:00"), tc("00:00:00:20")), tc("01:00:10:20"));
    EXPECT_EQ(thrownCode([] { Timecode::difference(tc("01:00:00:00"), tc("01:00:00:01")); }), Result::OutOfRange);
    EXPECT_EQ(thrownCode([] { Timecode::sum(tc("23:59:59:24"), tc("00:00:00:01")); }), Result::OutOfRange);
    EXPECT_EQ(Timecode::maximum(), tc("23:59:59:24"));

    Timecode moved = tc("00:00:00:00");
    moved.addSeconds(2.0);
    EXPECT_EQ(moved, tc("00:00:02:00"));
}

TEST(Timecode, DifferenceAndSumSkipDroppedNumbersAndKeepPulledFrames)
{
    FixedFramerateProvider provider(Framerate(30, true, 1));
    ScopedFramerateProvider scope(&provider);
    // 29.97 drop frame: the minute starts at frame 02.
    EXPECT_EQ(Timecode::sum(Timecode(0, 0, 59, 29), Timecode(0, 0, 0, 1)), Timecode(0, 1, 0, 2));
    EXPECT_EQ(Timecode::difference(Timecode(0, 1, 0, 2), Timecode(0, 0, 59, 29)), Timecode(0, 0, 0, 1));
    EXPECT_EQ(Timecode::sum(Timecode(9, 59, 59, 29), Timecode(0, 0, 0, 1)), Timecode(10, 0, 0, 0));

    provider.setFramerate(Framerate(24, true, 0));
    EXPECT_EQ(Timecode::sum(Timecode(0, 59, 59, 23), Timecode(0, 0, 0, 1)), Timecode(1, 0, 0, 0));
    EXPECT_EQ(Timecode::difference(Timecode(23, 59, 59, 23), Timecode(23, 59, 59, 23)), Timecode(0, 0, 0, 0));
    EXPECT_EQ(thrownCode([] { Timecode::sum(Timecode(23, 59, 59, 23), Timecode(0, 0, 0, 1)); }), Result::OutOfRange);
}

TEST(Timecode, ConversionsWithoutProviderFailButZeroStillConverts)
{
    ASSERT_EQ(Timecode::getFramerateProvider(), nullptr);
    EXPECT_EQ(Timecode::zero().toSeconds(), 0.0);
    EXPECT_EQ(thrownCode([] { Timecode(0, 0, 0, 1).toSeconds(); }), Result::NotInitialized);
    EXPECT_EQ(thrownCode([] { Timecode::maximum(); }), Result::NotInitialized);
    EXPECT_EQ(thrownCode([] { Timecode(0, 0, 0, 1).isValid(); }), Result::NotInitialized);
}

TEST(Timecode, StoredFormsOfEveryVersion)
{
    using montala::core::serialize::SerializationTree;
    SerializationTree tree;
    tree.writeObject(Timecode(1, 2, 3, 4));
    tree.writeObject(Timecode());
    EXPECT_EQ(tree.getBytes(), (std::vector<uint8_t>{2, 0, 0, 0, 1, 2, 3, 4, 1, 2, 0, 0, 0, 0, 0, 0, 0, 0}));
    tree.rewind();
    Timecode first(9, 9, 9, 9);
    Timecode second(9, 9, 9, 9);
    tree.readObject(first);
    tree.readObject(second);
    EXPECT_EQ(first, Timecode(1, 2, 3, 4));
    EXPECT_TRUE(first.isInitialized());
    EXPECT_EQ(second, Timecode::zero());
    EXPECT_FALSE(second.isInitialized());

    const std::vector<uint8_t> version1 = {1, 0, 0, 0, 10, 0, 0, 0, 20, 0, 0, 0, 30, 0, 0, 0, 7, 0, 0, 0, 0};
    const std::vector<uint8_t> version0 = {0, 0, 0, 0, 10, 0, 0, 0, 20, 0, 0, 0, 30, 0, 0, 0, 7, 0, 0, 0};
    SerializationTree old;
    old.assign(version1.data(), version1.size());
    Timecode fromOne(0, 0, 0, 0);
    old.readObject(fromOne);
    EXPECT_EQ(fromOne, Timecode(10, 20, 30, 7));
    EXPECT_FALSE(fromOne.isInitialized());
    old.assign(version0.data(), version0.size());
    Timecode fromZero;
    old.readObject(fromZero);
    EXPECT_EQ(fromZero, Timecode(10, 20, 30, 7));
    EXPECT_TRUE(fromZero.isInitialized()) << "version 0 had no flag: everything stored was set";

    const std::vector<uint8_t> newer = {3, 0, 0, 0, 1, 2, 3, 4, 1};
    old.assign(newer.data(), newer.size());
    EXPECT_EQ(thrownCode([&] { old.readObject(fromZero); }), Result::NewerVersion);
}
