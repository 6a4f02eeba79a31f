#include "support/ModelFixture.h"

#include "core/events/EventList.h"
#include "core/events/EventListIndex.h"

#include <gtest/gtest.h>

using namespace montala::core;
using montala::test::ModelFixture;
using montala::test::tc;

namespace {

EventPtr makeEvent(const char* dstIn, const char* dstOut)
{
    auto event = std::make_shared<EventBase>();
    event->setTimecodes(tc("10:00:00:00"), tc("10:00:01:00"), tc(dstIn), tc(dstOut));
    return event;
}

// Record side at 25 fps, in seconds from midnight:
//   A 00:00:10-00:00:20   B 00:00:20-00:00:30   (hole)   C 00:00:40-00:00:50
class EventListIndexTest : public ModelFixture {
protected:
    EventListIndexTest()
    {
        list.addEvent(a);
        list.addEvent(b);
        list.addEvent(c);
    }

    EventPtr a = makeEvent("00:00:10:00", "00:00:20:00");
    EventPtr b = makeEvent("00:00:20:00", "00:00:30:00");
    EventPtr c = makeEvent("00:00:40:00", "00:00:50:00");
    EventList list{EventList::NewKind};
};

} // namespace

TEST_F(EventListIndexTest, FindsTouchedEventsInEdgeOrder)
{
    const EventListIndex index(list, Framerate(25, 0));
    EXPECT_EQ(index.findDstEvents(SecondsRange(15, 25)), (std::vector<EventPtr>{a, b}));
    EXPECT_EQ(index.findDstEvents(SecondsRange(20, 20)), std::vector<EventPtr>{}) << "empty range";
    EXPECT_EQ(index.findDstEvents(SecondsRange(12, 18)), std::vector<EventPtr>{a}) << "inside one event";
    EXPECT_EQ(index.findDstEvents(SecondsRange(32, 38)), std::vector<EventPtr>{}) << "inside the hole";
    // An edge counts as touching: a range ending where B starts finds B too.
    EXPECT_EQ(index.findDstEvents(SecondsRange(12, 20)), (std::vector<EventPtr>{a, b}));
    EXPECT_EQ(index.getDstSpan(), SecondsRange(10, 50));
}

TEST_F(EventListIndexTest, OneEventMustCoverTheWholeRange)
{
    const EventListIndex index(list, Framerate(25, 0));
    EXPECT_TRUE(index.isInsideOneEvent(SecondsRange(10, 20)));
    EXPECT_TRUE(index.isInsideOneEvent(SecondsRange(12, 18)));
    EXPECT_FALSE(index.isInsideOneEvent(SecondsRange(15, 25)));
    EXPECT_FALSE(index.isInsideOneEvent(SecondsRange(32, 38)));
}

TEST_F(EventListIndexTest, GapsAreWhatNoEventCovers)
{
    const EventListIndex index(list, Framerate(25, 0));
    EXPECT_EQ(index.findDstGaps(SecondsRange(5, 55)),
              (std::vector<SecondsRange>{{5, 10}, {30, 40}, {50, 55}}));
    EXPECT_EQ(index.findDstGaps(SecondsRange(12, 28)), std::vector<SecondsRange>{});
    EXPECT_EQ(index.findDstGaps(SecondsRange(32, 38)), (std::vector<SecondsRange>{{32, 38}}));
}

TEST_F(EventListIndexTest, EqualEventsAreTwoEventsWithFourEdgesEach)
{
    EventList twins(EventList::NewKind);
    auto first = makeEvent("00:00:10:00", "00:00:20:00");
    auto second = makeEvent("00:00:10:00", "00:00:20:00");
    twins.addEvent(first);
    twins.addEvent(second);
    const EventListIndex index(twins, Framerate(25, 0));
    EXPECT_TRUE(index.containsEvent(first));
    EXPECT_TRUE(index.containsEvent(second));
    EXPECT_EQ(index.getDstEdges().size(), 4u);
    EXPECT_EQ(index.getSrcEdges().size(), 4u);
    EXPECT_EQ(index.getByDstIn().size(), 2u) << "a shared DST IN keeps both events";
}

TEST_F(EventListIndexTest, EventsThatDoNotFitTheRateAreLeftOut)
{
    c->setDstOut(tc("00:00:50:27"));
    const EventListIndex index(list, Framerate(25, 0));
    EXPECT_FALSE(index.containsEvent(c));
    EXPECT_EQ(index.getDstSpan(), SecondsRange(10, 30));
    const EventList empty(EventList::NewKind);
    EXPECT_EQ(EventListIndex(empty, Framerate(25, 0)).getSrcSpan(), SecondsRange(0, 0));
}
