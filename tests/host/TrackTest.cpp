// Track against the simulated host: which events belong to a range, what
// lies around a position, automation, lock and type. The small session runs
// at 25 fps from 01:00:00:00 (3600 s absolute): DX has two takes joined at
// 10 s, FX a door from 4 s to 16 s under a volume ramp from 0 to 1 over 20 s.

#include "HostFixture.h"
#include "support/ModelFixture.h"

#include "host/AutomationCurve.h"

#include <gtest/gtest.h>

#include <array>

namespace montala::host::test {
namespace {

using util::Result;

class TrackTest : public HostFixture {};

std::vector<std::string> names(const std::vector<TrackEvent>& events)
{
    std::vector<std::string> result;
    for (const TrackEvent& event : events)
        result.push_back(event.getName());
    return result;
}

TEST_F(TrackTest, AnEventBelongsToTheRangeItLiesMoreThanHalfIn)
{
    openProject(smallSession());
    Track dx = track("DX");
    Track fx = track("FX");
    using Names = std::vector<std::string>;

    // take 1 is [0, 10]: from 5 exactly half of it is in, which is not enough.
    EXPECT_EQ(names(dx.getEventsInRange(5.0, 20.0)), (Names{"take 2"}));
    EXPECT_EQ(names(dx.getEventsInRange(4.96, 20.0)), (Names{"take 1", "take 2"}));
    // The same from the other side: take 2 is [10, 20].
    EXPECT_EQ(names(dx.getEventsInRange(0.0, 15.0)), (Names{"take 1"}));
    EXPECT_EQ(names(dx.getEventsInRange(0.0, 15.04)), (Names{"take 1", "take 2"}));
    // An event that reaches past both ends belongs to no part of itself.
    EXPECT_TRUE(fx.getEventsInRange(6.0, 14.0).empty());
    // A point lies wholly inside.
    EXPECT_EQ(names(track("Notes").getEventsInRange(12.0, 12.0)), (Names{"hit"}));
    EXPECT_EQ(montala::test::thrownCode([&] { dx.getEventsInRange(2.0, 1.0); }), Result::InvalidArgument);
}

TEST_F(TrackTest, SurroundingsFollowChainsAndNeighbours)
{
    openProject(smallSession());
    core::AudioInfo::Range before, at, after;

    // The two takes are joined: they sound as one range.
    track("DX").getSurroundings(3605.0, before, at, after);
    EXPECT_EQ(at.start, 3600.0);
    EXPECT_EQ(at.end, 3620.0);
    EXPECT_TRUE(before.isEmpty());
    EXPECT_TRUE(after.isEmpty());

    Track fx = track("FX");
    fx.getSurroundings(3602.0, before, at, after);
    EXPECT_TRUE(at.isEmpty());
    EXPECT_EQ(after.start, 3604.0);
    EXPECT_EQ(after.end, 3616.0);
    fx.getSurroundings(3618.0, before, at, after);
    EXPECT_TRUE(at.isEmpty());
    EXPECT_EQ(before.start, 3604.0);
    EXPECT_EQ(before.end, 3616.0);
}

TEST_F(TrackTest, SurroundingsOnALongTrackFindEveryTakeAndGap)
{
    // After the door (4 to 16 s), forty takes of a second each, every two
    // seconds from 20 s: enough ranges that a search crosses stretches.
    openProject(smallSession());
    constexpr int takes = 40;
    for (int k = 0; k < takes; ++k)
        simTrack("FX").appendChild(sim::SimObject::makeAudioEvent(u"take", 20.0 + 2 * k, 21.0 + 2 * k, "t.wav", 0.0));
    Track fx = track("FX");
    core::AudioInfo::Range before, at, after;
    for (int k = 0; k < takes; ++k) {
        const double take = 3620.0 + 2 * k;
        const double previousEnd = k == 0 ? 3616.0 : take - 1.0;
        fx.getSurroundings(take + 0.5, before, at, after);
        EXPECT_EQ(at.start, take) << "in take " << k;
        EXPECT_EQ(before.end, previousEnd) << "in take " << k;
        EXPECT_EQ(after.start, k + 1 < takes ? take + 2.0 : 0.0) << "in take " << k;
        // On the take's start it is the one under the position.
        fx.getSurroundings(take, before, at, after);
        EXPECT_EQ(at.start, take) << "on take " << k;
        fx.getSurroundings(take + 1.5, before, at, after);
        EXPECT_TRUE(at.isEmpty()) << "after take " << k;
        EXPECT_EQ(before.start, take) << "after take " << k;
        EXPECT_EQ(after.start, k + 1 < takes ? take + 2.0 : 0.0) << "after take " << k;
    }
}

TEST_F(TrackTest, AutomationIsReadAsAbsoluteCurves)
{
    openProject(smallSession());
    Track fx = track("FX");
    fx.readAutomation();
    ASSERT_EQ(fx.getAutomation().size(), 1u);
    const AutomationCurve& curve = fx.getAutomation()[0].curve;
    EXPECT_EQ(curve.mode, AutomationCurve::Linear);
    double value = -1.0;
    EXPECT_TRUE(curve.valueAt(3610.0, value));
    EXPECT_DOUBLE_EQ(value, 0.5);
    EXPECT_TRUE(curve.valueAt(3630.0, value));
    EXPECT_DOUBLE_EQ(value, 1.0);
    EXPECT_TRUE(curve.valueAt(3599.0, value)) << "before the first point, its value";
    EXPECT_DOUBLE_EQ(value, 0.0);
}

TEST_F(TrackTest, AutomationAroundAPositionIsThePointsBesideItOnceRead)
{
    openProject(smallSession());
    Track fx = track("FX");
    // Nothing is made up from points nobody read.
    EXPECT_TRUE(fx.getAutomationAround(3610.0).empty());

    using Span = std::array<double, 4>;
    auto spanAt = [&fx](double position) {
        const auto around = fx.getAutomationAround(position);
        if (around.count(0) == 0)
            return Span{};
        const auto& span = around.at(0);
        return Span{span.t1, span.y1, span.t2, span.y2};
    };
    // On a point it is the one before; before the first point, the first
    // one's value from the position on; past the last, the last one's value
    // up to the position.
    const struct {
        double until, position;
        Span span;
    } cases[] = {
        {4000.0, 3610.0, {3600.0, 0.0, 3620.0, 1.0}},
        {4000.0, 3620.0, {3620.0, 1.0, 3620.0, 1.0}},
        {4000.0, 3590.0, {3590.0, 0.0, 3600.0, 0.0}},
        {4000.0, 3630.0, {3620.0, 1.0, 3630.0, 1.0}},
        // Points from `until` on are not read: the ramp's end is not there.
        {3620.0, 3610.0, {3600.0, 0.0, 3610.0, 0.0}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << "until " << each.until << ", at " << each.position);
        fx.readAutomationValues(each.until);
        EXPECT_EQ(spanAt(each.position), each.span);
    }

    fx.forgetAutomationValues();
    EXPECT_TRUE(fx.getAutomationAround(3610.0).empty());
    // A track without automation has none, read or not.
    Track dx = track("DX");
    dx.readAutomationValues(4000.0);
    EXPECT_TRUE(dx.getAutomationAround(3610.0).empty());
}

TEST(AutomationCurve, ValuesAreTheHostsWithStepsKept)
{
    AutomationCurve curve;
    double value = -1.0;
    EXPECT_FALSE(curve.valueAt(1.0, value));

    // A ramp 0.2 -> 0.6 over 10-20 s, a step to 0.8 on 20 s (two points at
    // one time) held to 30 s by a segment end, then 0.4.
    curve.add(10.0, 0.2, false);
    curve.add(20.0, 0.6, false);
    curve.add(20.0, 0.8, true);
    curve.add(30.0, 0.4, false);
    const struct {
        double time;
        double leaving;
        double arriving;
    } cases[] = {
        {5.0, 0.2, 0.2}, // before the first point, its value
        {15.0, 0.4, 0.4},
        {20.0, 0.8, 0.6}, // the step
        {20.000001, 0.8, 0.6}, // within a sample of it
        {25.0, 0.8, 0.8}, // held by the segment end
        {30.0, 0.4, 0.8},
        {35.0, 0.4, 0.4}, // after the last point, its value
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.time);
        ASSERT_TRUE(curve.valueAt(c.time, value));
        EXPECT_DOUBLE_EQ(value, c.leaving);
        ASSERT_TRUE(curve.valueArriving(c.time, value));
        EXPECT_DOUBLE_EQ(value, c.arriving);
    }
    EXPECT_TRUE(curve.holdsAt(25.0));
    EXPECT_FALSE(curve.holdsAt(30.0));
    curve.mode = 7;
    EXPECT_FALSE(curve.valueAt(15.0, value));
}

TEST_F(TrackTest, LockTypeAndIdentity)
{
    openProject(smallSession());
    Track notes = track("Notes");
    EXPECT_TRUE(notes.isValid());
    EXPECT_TRUE(notes.isMarkerTrack());
    EXPECT_FALSE(notes.isAudioTrack());
    EXPECT_EQ(notes.getType(), -1);
    EXPECT_FALSE(notes.hasLockState());

    notes.setType(0x13);
    EXPECT_TRUE(notes.hasType(0x13, -1));
    EXPECT_FALSE(notes.hasType(0x03, -1));
    EXPECT_TRUE(notes.hasType(0x03, 0x0F));
    EXPECT_EQ(montala::test::thrownCode([&] { track("DX").typeAttribute(); }), Result::NotSupported);

    notes.setLocked(true);
    EXPECT_TRUE(notes.isLocked());
    EXPECT_TRUE(notes.hasLockState());
    notes.setLocked(false);
    EXPECT_FALSE(notes.hasLockState());

    EXPECT_TRUE(notes.sameTrack(track("Notes")));
    EXPECT_FALSE(Track().isValid());
    EXPECT_EQ(notes.nextEventId(), 1);
    notes.assignEventIds(0.0, 20.0);
    EXPECT_EQ(notes.nextEventId(), 3);
}

} // namespace
} // namespace montala::host::test
