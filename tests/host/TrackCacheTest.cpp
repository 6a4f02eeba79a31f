// The audio chains a Track keeps while its project caches its tracks, as a
// run does: one image per track, shared by every wrapper of it, never older
// than the last edit the project made or heard of, and not kept at all
// outside a run. In the small session (3600 s absolute) FX's door lies at
// [3604, 3616].

#include "HostRunFixture.h"

#include "kelmar/base/IObjectList.h"
#include "sim/services/SimUser.h"

#include <gtest/gtest.h>

namespace montala::host::test {
namespace {

using Range = core::AudioInfo::Range;

struct Around {
    Range before, at, after;
};

Around around(const Track& track, double position)
{
    Around found;
    track.getSurroundings(position, found.before, found.at, found.after);
    return found;
}

// Whole seconds at 25 fps: the times are exact.
std::pair<double, double> span(const Range& range) { return {range.start, range.end}; }

using Span = std::pair<double, double>;

class TrackCacheTest : public HostRunFixture {
protected:
    Kelmar::IPtr<Kelmar::IObjectList> listOf(const char* name)
    {
        void* made = nullptr;
        host->getService(Kelmar::IObjectList::iid, &made);
        auto list = Kelmar::IPtr<Kelmar::IObjectList>::adopt(static_cast<Kelmar::IObjectList*>(made));
        list->add(dynamic_cast<Kelmar::ITrack*>(&simTrack(name)));
        return list;
    }
};

TEST_F(TrackCacheTest, EditsThroughTheProjectReachEveryWrapperOfTheTrack)
{
    openProject(smallSession());
    project->setCaching(true);
    Track first = track("FX");
    EXPECT_TRUE(around(first, 3602.0).at.isEmpty());
    EXPECT_EQ(span(around(first, 3602.0).after), Span(3604.0, 3616.0));

    // The door's first two seconds copied to 3601: a wrapper made before the
    // copy and one made after it both find them under 3602.
    Kelmar::IProjectEdit& edit = beginEdit();
    project->workArea().copyRange(edit, {3604.0}, {3606.0}, {3601.0}, listOf("FX").get());
    Track second = track("FX");
    EXPECT_EQ(span(around(second, 3602.0).at), Span(3601.0, 3603.0));
    EXPECT_EQ(span(around(first, 3602.0).at), Span(3601.0, 3603.0));
    EXPECT_EQ(span(around(first, 3602.0).after), Span(3604.0, 3616.0));

    // Moving the door to 3620 the way a run moves home: copied there, and
    // its old place deleted.
    std::vector<Track> tracks{first};
    project->workArea().moveBack(edit, {3604.0}, {3620.0}, 12.0, tracks);
    const Around moved = around(second, 3605.0);
    EXPECT_EQ(span(moved.before), Span(3601.0, 3603.0));
    EXPECT_TRUE(moved.at.isEmpty());
    EXPECT_EQ(span(moved.after), Span(3620.0, 3632.0));

    // A piece in the work area, then the work area cleared.
    project->workArea().computeConformOffset();
    const double offset = project->workArea().getConformOffset();
    project->workArea().copyRange(edit, {3620.0}, {3632.0}, {offset + 3604.0}, listOf("FX").get());
    EXPECT_EQ(span(around(first, offset + 3605.0).at), Span(offset + 3604.0, offset + 3616.0));
    project->clearWorkArea(edit);
    EXPECT_TRUE(around(first, offset + 3605.0).at.isEmpty());
    endEdit();
}

TEST_F(TrackCacheTest, AnEditOutsideMontalaIsSeenByTheNextRead)
{
    // With the Host up, the simulated user's edit reaches the project as the
    // host's report; the chains read before it are forgotten.
    startOn(smallSession());
    active().setCaching(true);
    Track fx(&active().tracks(), dynamic_cast<Kelmar::ITrack*>(&simTrack("FX")));
    EXPECT_TRUE(around(fx, 3602.0).at.isEmpty());
    sim::SimUser user(*host);
    ASSERT_TRUE(user.moveEvent(*simTrack("FX").children()[0], 0.0));
    EXPECT_EQ(span(around(fx, 3602.0).at), Span(3600.0, 3612.0));
    active().setCaching(false);
}

TEST_F(TrackCacheTest, OutsideARunEveryReadAsksTheHost)
{
    // No Host listens here, so no report of the edit reaches the project:
    // only a read that asks the host anew sees the moved door.
    openProject(smallSession());
    Track fx = track("FX");
    EXPECT_TRUE(around(fx, 3602.0).at.isEmpty());
    sim::SimUser user(*host);
    ASSERT_TRUE(user.moveEvent(*simTrack("FX").children()[0], 0.0));
    EXPECT_EQ(span(around(fx, 3602.0).at), Span(3600.0, 3612.0));

    // A run that ends forgets what it kept: the next one starts afresh.
    project->setCaching(true);
    EXPECT_EQ(span(around(fx, 3602.0).at), Span(3600.0, 3612.0));
    project->setCaching(false);
    ASSERT_TRUE(user.moveEvent(*simTrack("FX").children()[0], 4.0));
    project->setCaching(true);
    EXPECT_TRUE(around(fx, 3602.0).at.isEmpty());
    project->setCaching(false);
}

TEST_F(TrackCacheTest, KeptChainsAnswerAsAWalkOfTheChainDoes)
{
    // x lies inside a and does not count; d starts inside c and reaches past
    // it, so it counts and holds what lies in both.
    //
    //   3600      3610  3612 3614    3620  3624 3626  3630
    //   [====a=====]    [=b=]        [====c====]
    //     [=x=]                            [=====d=====]
    openProject(R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25},
      "start": "01:00:00:00", "end": "01:01:00:00",
      "tracks": [{"kind": "audio", "name": "L", "events": [
        {"kind": "audio", "name": "a", "start": "01:00:00:00", "end": "01:00:10:00", "file": "a.wav", "offset": 0},
        {"kind": "audio", "name": "x", "start": "01:00:02:00", "end": "01:00:05:00", "file": "x.wav", "offset": 0},
        {"kind": "audio", "name": "b", "start": "01:00:12:00", "end": "01:00:14:00", "file": "b.wav", "offset": 0},
        {"kind": "audio", "name": "c", "start": "01:00:20:00", "end": "01:00:26:00", "file": "c.wav", "offset": 0},
        {"kind": "audio", "name": "d", "start": "01:00:24:00", "end": "01:00:30:00", "file": "d.wav", "offset": 0}]}]})");
    for (const bool caching : {false, true}) {
        SCOPED_TRACE(caching ? "kept" : "read anew");
        project->setCaching(caching);
        const Track l = track("L");

        Around in = around(l, 3603.0);
        EXPECT_TRUE(in.before.isEmpty());
        EXPECT_EQ(span(in.at), Span(3600.0, 3610.0));
        EXPECT_EQ(span(in.after), Span(3612.0, 3614.0));
        // An end and a start belong to their range.
        EXPECT_EQ(span(around(l, 3610.0).at), Span(3600.0, 3610.0));
        in = around(l, 3612.0);
        EXPECT_EQ(span(in.before), Span(3600.0, 3610.0));
        EXPECT_EQ(span(in.at), Span(3612.0, 3614.0));
        EXPECT_EQ(span(in.after), Span(3620.0, 3626.0));
        // In a gap: the range before and the one after.
        in = around(l, 3611.0);
        EXPECT_EQ(span(in.before), Span(3600.0, 3610.0));
        EXPECT_TRUE(in.at.isEmpty());
        EXPECT_EQ(span(in.after), Span(3612.0, 3614.0));
        // Under c and d the later layer holds the position; past c's end, c
        // is the range before.
        in = around(l, 3625.0);
        EXPECT_EQ(span(in.before), Span(3612.0, 3614.0));
        EXPECT_EQ(span(in.at), Span(3624.0, 3630.0));
        EXPECT_TRUE(in.after.isEmpty());
        in = around(l, 3627.0);
        EXPECT_EQ(span(in.before), Span(3620.0, 3626.0));
        EXPECT_EQ(span(in.at), Span(3624.0, 3630.0));
        // Before all and after all.
        in = around(l, 3599.0);
        EXPECT_TRUE(in.before.isEmpty() && in.at.isEmpty());
        EXPECT_EQ(span(in.after), Span(3600.0, 3610.0));
        in = around(l, 3631.0);
        EXPECT_EQ(span(in.before), Span(3624.0, 3630.0));
        EXPECT_TRUE(in.at.isEmpty() && in.after.isEmpty());
    }
    project->setCaching(false);
}

} // namespace
} // namespace montala::host::test
