// What a track answers before anything was read into it, against the
// simulated host. The small session runs at 25 fps from 01:00:00:00 (3600 s
// absolute); FX carries a volume ramp from 0 to 1 over its first 20 s, DX no
// automation at all.

#include "HostFixture.h"

#include <gtest/gtest.h>

namespace montala::host::test {
namespace {

class TrackReadingTest : public HostFixture {};

TEST_F(TrackReadingTest, AutomationNotYetReadHasTheTracksShapeButNoValues)
{
    openProject(smallSession());
    Track fx = track("FX");

    // One entry per automation track, with nothing in it: no span is made up
    // from points nobody read.
    EXPECT_TRUE(fx.getAutomationAround(3610.0).empty());
    ASSERT_EQ(fx.getAutomation().size(), 1u);
    EXPECT_NE(fx.getAutomation()[0].track.get(), nullptr);
    EXPECT_TRUE(fx.getAutomation()[0].points.empty());
    EXPECT_TRUE(fx.getAutomation()[0].curve.empty());

    // Asking again does not add a second set of entries.
    fx.getAutomationAround(3615.0);
    EXPECT_EQ(fx.getAutomation().size(), 1u);

    // Once read, the same question has an answer.
    fx.readAutomation();
    auto around = fx.getAutomationAround(3610.0);
    ASSERT_EQ(around.count(0), 1u);
    EXPECT_EQ(around[0].t1, 3600.0);
    EXPECT_EQ(around[0].y1, 0.0);
    EXPECT_EQ(around[0].t2, 3620.0);
    EXPECT_EQ(around[0].y2, 1.0);

    // A track without automation has no entries, read or not.
    Track dx = track("DX");
    EXPECT_TRUE(dx.getAutomationAround(3610.0).empty());
    EXPECT_TRUE(dx.getAutomation().empty());
}

} // namespace
} // namespace montala::host::test
