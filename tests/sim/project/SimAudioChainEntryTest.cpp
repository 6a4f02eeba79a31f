// What the simulator keeps of a track between changes: its audio chain
// (every change below the track, a move, a part moved, an event taken out,
// an undo, gives the next chain asked for the new order, while entries
// handed out before go on with the order they came from), its children in
// order of start, and children taken out one by one. Times are
// host-relative seconds.

#include "../SimFixture.h"

#include "kelmar/project/IAudioChainEntry.h"
#include "kelmar/project/IAudioChainEvent.h"
#include "kelmar/base/IObjectIterator.h"
#include "sim/project/SimObject.h"
#include "sim/services/SimUser.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace montala::sim::test {
namespace {

using Kelmar::owned;

class SimAudioChainEntryTest : public SimFixture {
protected:
    using Spans = std::vector<std::pair<double, double>>;

    static Spans spansFrom(Kelmar::IPtr<Kelmar::IAudioChainEntry> entry)
    {
        Spans spans;
        for (; entry; entry = owned(entry->next(0)))
            spans.emplace_back(entry->getStart(), entry->getEnd());
        return spans;
    }

    static Spans chain(SimObject& track) { return spansFrom(owned(track.getAudioChain())); }

    // A session from 00:00:00:00 whose one audio track "DX" holds `events`.
    Kelmar::IPtr<SimProject> openDx(const std::string& events, const char* end = "00:01:00:00")
    {
        return open(R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25},
          "start": "00:00:00:00", "end": ")" + std::string(end) + R"(",
          "tracks": [{"kind": "audio", "name": "DX", "events": [)" + events + "]}]}");
    }
};

TEST_F(SimAudioChainEntryTest, TheChainFollowsEveryChangeBelowTheTrack)
{
    auto project = openDx(R"(
        {"kind": "audio", "start": "00:00:02:00", "end": "00:00:04:00", "file": "a.wav", "offset": 0},
        {"kind": "part", "name": "scene", "start": "00:00:10:00", "end": "00:00:20:00", "events": [
          {"kind": "audio", "start": "00:00:01:00", "end": "00:00:03:00", "file": "b.wav", "offset": 0}]},
        {"kind": "audio", "start": "00:00:06:00", "end": "00:00:08:00", "file": "c.wav", "offset": 0})");
    SimObject& dx = *project->findTrack(u"DX");
    SimUser user(*host);
    EXPECT_EQ(chain(dx), (Spans{{2, 4}, {6, 8}, {11, 13}}));
    auto handedOut = owned(dx.getAudioChain());

    // a moved past c.
    ASSERT_TRUE(user.moveEvent(*dx.children()[0], 7.0));
    EXPECT_EQ(chain(dx), (Spans{{6, 8}, {7, 9}, {11, 13}}));
    // The part moved: the event inside it moves on the timeline.
    ASSERT_TRUE(user.moveEvent(*dx.children()[1], 0.0));
    EXPECT_EQ(chain(dx), (Spans{{1, 3}, {6, 8}, {7, 9}}));
    // The event inside the part moved.
    ASSERT_TRUE(user.moveEvent(*dx.children()[1]->children()[0], 8.0));
    EXPECT_EQ(chain(dx), (Spans{{6, 8}, {7, 9}, {8, 10}}));
    // c taken out, then put back by undo.
    ASSERT_TRUE(user.deleteEvent(*dx.children()[2]));
    EXPECT_EQ(chain(dx), (Spans{{7, 9}, {8, 10}}));
    ASSERT_TRUE(user.undo());
    EXPECT_EQ(chain(dx), (Spans{{6, 8}, {7, 9}, {8, 10}}));
    // Undone back to the start.
    ASSERT_TRUE(user.undo());
    ASSERT_TRUE(user.undo());
    ASSERT_TRUE(user.undo());
    EXPECT_EQ(chain(dx), (Spans{{2, 4}, {6, 8}, {11, 13}}));

    // The entry asked for first still walks the order it came from, though
    // its events have moved since (and back).
    EXPECT_EQ(spansFrom(handedOut).size(), 3u);
}

TEST_F(SimAudioChainEntryTest, AJoinedEventFindsItsOwnNextAmongLayersThatStartTogether)
{
    // a and b start together (a first); b is joined to c, a to nothing that
    // begins at its end.
    auto project = openDx(R"(
        {"kind": "audio", "name": "a", "start": "00:00:00:00", "end": "00:00:05:00", "file": "a.wav", "offset": 0, "joinedToNext": true},
        {"kind": "audio", "name": "b", "start": "00:00:00:00", "end": "00:00:03:00", "file": "b.wav", "offset": 0, "joinedToNext": true},
        {"kind": "audio", "name": "c", "start": "00:00:03:00", "end": "00:00:06:00", "file": "c.wav", "offset": 0})");
    SimObject& dx = *project->findTrack(u"DX");
    SimObject& a = *dx.children()[0];
    SimObject& b = *dx.children()[1];
    EXPECT_EQ(owned(a.getNextInChain()), nullptr) << "b follows a in the chain but does not begin at its end";
    auto next = owned(b.getNextInChain());
    EXPECT_EQ(next.get(), static_cast<Kelmar::IProjectObject*>(dx.children()[2].get()));

    // b moved to start at 2: c no longer begins at its end.
    SimUser user(*host);
    ASSERT_TRUE(user.moveEvent(b, 2.0));
    EXPECT_EQ(owned(b.getNextInChain()), nullptr);
}

TEST_F(SimAudioChainEntryTest, ChildrenNearARangeAreThoseThatMayReachIntoIt)
{
    // Each answer is checked against a look at every child, as the order by
    // start is kept through appends in order, an append out of order (the
    // list is no longer in time order) and a move.
    auto project = openDx(R"(
        {"kind": "audio", "start": "00:00:00:00", "end": "00:00:30:00", "file": "long.wav", "offset": 0},
        {"kind": "audio", "start": "00:00:04:00", "end": "00:00:06:00", "file": "b.wav", "offset": 0},
        {"kind": "audio", "start": "00:00:10:00", "end": "00:00:12:00", "file": "a.wav", "offset": 0})", "00:10:00:00");
    SimObject& dx = *project->findTrack(u"DX");
    const auto bruteForce = [&](double start, double end) {
        std::vector<std::size_t> near;
        for (std::size_t i = 0; i < dx.children().size(); ++i) {
            const SimObject::Fields& f = dx.children()[i]->get();
            if (f.start < end && f.end > start)
                near.push_back(i);
        }
        return near;
    };
    const auto check = [&](const char* when) {
        SCOPED_TRACE(when);
        for (double start = 0.0; start < 170.0; start += 1.5)
            for (const double length : {0.0, 0.5, 2.0, 9.0})
                EXPECT_EQ(dx.childrenNear(start, start + length), bruteForce(start, start + length))
                    << start << " + " << length;
    };
    check("as read");
    EXPECT_EQ(dx.childrenNear(12.0, 13.0), (std::vector<std::size_t>{0})) << "an end on the range's start";

    host->beginGroup();
    // Enough pieces that the order's search crosses stretches of starts.
    for (int i = 0; i < 40; ++i)
        dx.appendChild(SimObject::makeAudioEvent(u"piece", 40.0 + 3 * i, 42.0 + 3 * i, "p.wav", 0.0));
    check("appended in order");
    dx.appendChild(SimObject::makeAudioEvent(u"early", 1.0, 2.0, "e.wav", 0.0));
    check("appended out of order");
    dx.children()[3]->setStart(nullptr, 20.0, 0);
    check("moved");
    host->endGroup(project.get(), u"Pieces");
}

TEST_F(SimAudioChainEntryTest, ChildrenTakenOutOneByOneLeaveEveryViewButAWalkAlreadyOutAndUndoBringsThemBack)
{
    // Removals let go of their parent at once; the list, the chain and the
    // order by start drop them before they are next read. A walk handed out
    // before them goes on over the list as it was.
    auto project = open(smallSession());
    SimObject& dx = *project->findTrack(u"DX");
    SimObject& fx = *project->findTrack(u"FX");
    host->beginGroup();
    for (int i = 0; i < 4; ++i)
        dx.appendChild(SimObject::makeAudioEvent(u"piece", 30.0 + i, 30.5 + i, "p.wav", 0.0));
    host->endGroup(project.get(), u"Pieces");
    ASSERT_EQ(dx.children().size(), 6u);
    EXPECT_EQ(chain(dx).size(), 6u);

    host->beginGroup();
    const SimObject::List before = dx.children();
    Kelmar::IPtr<Kelmar::IObjectIterator> walk = owned(dx.getChildren());
    ASSERT_NE(owned(walk->next()), nullptr);
    // Last first: they leave out of the list's order.
    for (const std::size_t i : {5u, 3u, 1u})
        EXPECT_TRUE(dx.removeChild(before[i].get()));
    for (std::size_t i = 1; i < before.size(); ++i)
        EXPECT_EQ(owned(walk->next()).get(), static_cast<Kelmar::IProjectObject*>(before[i].get())) << i;
    EXPECT_TRUE(walk->atEnd());
    EXPECT_EQ(owned(dx.getChildren())->getCount(), 3);
    EXPECT_FALSE(dx.removeChild(before[1].get())) << "taken out already";
    EXPECT_FALSE(fx.removeChild(before[0].get())) << "another track's child";
    EXPECT_FALSE(fx.removeChild(fx.automation()[0].get())) << "an automation track is not a child";
    EXPECT_EQ(before[1]->parent(), nullptr);
    EXPECT_EQ(chain(dx), (Spans{{0, 10}, {30, 30.5}, {32, 32.5}}));
    EXPECT_EQ(dx.childrenNear(0.0, 40.0), (std::vector<std::size_t>{0, 1, 2}));
    ASSERT_EQ(dx.children().size(), 3u);
    EXPECT_EQ(dx.children()[1], before[2]);
    host->endGroup(project.get(), u"Remove");

    SimUser user(*host);
    ASSERT_TRUE(user.undo());
    EXPECT_EQ(dx.children(), before);
    EXPECT_EQ(before[1]->parent(), &dx);
    ASSERT_TRUE(user.redo());
    EXPECT_EQ(dx.children().size(), 3u);
    EXPECT_EQ(fx.automation().size(), 1u);
}

} // namespace
} // namespace montala::sim::test
