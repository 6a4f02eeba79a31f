#include "sim/project/SimFrameRate.h"

#include <gtest/gtest.h>

namespace montala::sim {
namespace {

TEST(SimFrameRate, CountsDropFrameLabelsAsTheyAreShown)
{
    const SimFrameRate dropFrame{30, true, true};
    std::int64_t frames = 0;
    ASSERT_TRUE(dropFrame.parseLabel("01:00:00;00", frames));
    EXPECT_EQ(frames, 107892);
    EXPECT_EQ(dropFrame.label(107892), "01:00:00;00");
    // Minute 1 starts at ;02; minute 10 keeps ;00.
    EXPECT_EQ(dropFrame.label(1799), "00:00:59;29");
    EXPECT_EQ(dropFrame.label(1800), "00:01:00;02");
    EXPECT_EQ(dropFrame.label(17982), "00:10:00;00");
    EXPECT_FALSE(dropFrame.parseLabel("00:01:00;01", frames));
    EXPECT_TRUE(dropFrame.parseLabel("00:10:00;00", frames));
    for (std::int64_t n : {0, 1, 1799, 1800, 17981, 17982, 107891, 123456})
        ASSERT_TRUE(dropFrame.parseLabel(dropFrame.label(n), frames) && frames == n) << n;

    const SimFrameRate sixty{60, true, true};
    EXPECT_EQ(sixty.label(3600), "00:01:00;04");
}

TEST(SimFrameRate, FindsExactFramesOnlyWhereTheyAre)
{
    const SimFrameRate film{25, false, false};
    EXPECT_EQ(film.exactFrame(0.04), 1);
    EXPECT_EQ(film.exactFrame(0.05), std::nullopt);
    const SimFrameRate ntsc{30, true, false};
    EXPECT_EQ(ntsc.exactFrame(ntsc.frameToSeconds(1234567)), 1234567);
    EXPECT_EQ(ntsc.describe(), "29.97 fps");
    EXPECT_EQ((SimFrameRate{24, true, false}).describe(), "23.976 fps");

    std::int64_t frames = 0;
    EXPECT_FALSE(film.parseLabel("01:00:00:25", frames)) << "frames past the rate";
    EXPECT_FALSE(film.parseLabel("01:60:00:00", frames));
    EXPECT_FALSE(film.parseLabel("01:00:00", frames));
    EXPECT_FALSE((SimFrameRate{25, false, true}).isValid()) << "drop frame needs a multiple of 30";
}

} // namespace
} // namespace montala::sim
