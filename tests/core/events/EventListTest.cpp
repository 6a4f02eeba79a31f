#include "../ChangeRecorder.h"
#include "support/ModelFixture.h"

#include "core/events/EventList.h"
#include "core/events/EventListIndex.h"
#include "core/events/HealedEvent.h"
#include "util/Result.h"

#include <gtest/gtest.h>

using namespace montala::core;
using montala::test::ModelFixture;
using montala::test::tc;
using montala::util::Result;

namespace {

using montala::test::thrownCode;

EventPtr makeEvent(const char* srcIn, const char* srcOut, const char* dstIn, const char* dstOut,
                   const std::string& roll = "A001")
{
    auto event = std::make_shared<EventBase>();
    event->setTimecodes(tc(srcIn), tc(srcOut), tc(dstIn), tc(dstOut));
    event->setRollName(roll);
    return event;
}

// Two cuts with a two-second hole between them on the record side.
//   A: 01:00:00:00-01:00:10:00    B: 01:00:12:00-01:00:20:00
class EventListTest : public ModelFixture {
protected:
    EventPtr a = makeEvent("10:00:00:00", "10:00:10:00", "01:00:00:00", "01:00:10:00", "A001");
    EventPtr b = makeEvent("20:00:02:00", "20:00:10:00", "01:00:12:00", "01:00:20:00", "B001");
};

} // namespace

TEST_F(EventListTest, SharedEventReportsToEveryListHoldingIt)
{
    EventList first(EventList::OldKind);
    EventList second(EventList::NewKind);
    first.addEvent(a);
    second.addEvent(a);
    montala::test::ChangeRecorder one, two;
    first.addListener(&one);
    second.addListener(&two);
    a->setClipName("x");
    EXPECT_EQ(one.listKinds, std::vector<int>{0});
    EXPECT_EQ(two.listKinds, std::vector<int>{1});
    first.removeListener(&one);
    second.removeListener(&two);
}

TEST_F(EventListTest, DestroyedListLeavesNoListenerBehind)
{
    {
        EventList list(EventList::OldKind);
        list.addEvent(a);
        list.addEvent(b);
        EventList copy(list);
        copy.clear();
        EXPECT_EQ(a->getListenerCount(), 1u);
    }
    EXPECT_EQ(a->getListenerCount(), 0u);
    EXPECT_EQ(b->getListenerCount(), 0u);
}

TEST_F(EventListTest, BulkChangesSendOneNotification)
{
    EventList list(EventList::ChangeKind);
    list.addEvent(a);
    list.addEvent(b);
    montala::test::ChangeRecorder recorder;
    list.addListener(&recorder);
    list.offsetDst(tc("00:00:01:00"), true);
    EXPECT_EQ(recorder.kinds.size(), 1u);
    EXPECT_EQ(a->getListenerCount(), 1u) << "subscribed again after the change";
    list.removeListener(&recorder);
}

TEST_F(EventListTest, RangesRemoveAndAppend)
{
    EventList list(EventList::ChangeKind);
    list.addEvent(a);
    list.addEvent(b);
    list.addEvent(a);
    EventList target(EventList::ChangeKind);
    target.appendRange(list, 1, 2);
    EXPECT_EQ(target.getEvents(), (std::vector<EventPtr>{b, a}));
    EXPECT_EQ(thrownCode([&] { target.appendRange(list, 2, 2); }), Result::OutOfRange);
    target.appendRange(list, 5, 0); // nothing to do, whatever the start

    EventList selection(EventList::ChangeKind);
    selection.addEvent(a);
    list.removeEvents(selection);
    EXPECT_EQ(list.getEvents(), std::vector<EventPtr>{b});
    EXPECT_EQ(thrownCode([&] { list.removeRange(0, 2); }), Result::OutOfRange);
    list.removeRange(0, 1);
    EXPECT_EQ(list.getSize(), 0u);
    EXPECT_EQ(b->getListenerCount(), 1u) << "only the target list still holds b";
    list.append(list);
}

TEST_F(EventListTest, CopiedEventsAreIndependentAndHealedOnesBecomePlain)
{
    auto healed = std::make_shared<HealedEvent>();
    healed->addHealedEvent(a);
    healed->addHealedEvent(b);
    EventList source(EventList::ChangeKind);
    source.addEvent(a);
    source.addEvent(healed);
    EventList copy(EventList::ChangeKind);
    copy.copyEventsFrom(source);
    ASSERT_EQ(copy.getSize(), 2u);
    EXPECT_NE(copy.getEvent(0), a);
    copy.getEvent(0)->setRollName("changed");
    EXPECT_EQ(a->getRollName(), "A001");
    // Still says type 1 though it is a plain object now: kept as it always was.
    EXPECT_EQ(copy.getEvent(1)->getEventType(), 1);
    EXPECT_EQ(std::dynamic_pointer_cast<HealedEvent>(copy.getEvent(1)), nullptr);
}

TEST_F(EventListTest, CountsAndRangeLookOnlyAtFlawlessEvents)
{
    EventList list(EventList::ChangeKind);
    EXPECT_EQ(thrownCode([&] { list.getDstRange(); }), Result::NotInitialized);
    EXPECT_FALSE(list.hasGoodEvent());
    auto broken = makeEvent("10:00:00:00", "10:00:01:00", "00:30:00:00", "02:00:00:00");
    broken->addState(EventState::BadRollName);
    list.addEvent(broken);
    EXPECT_EQ(list.getRange(EventList::Dst).start, Timecode::zero());
    EXPECT_EQ(list.getRange(EventList::Dst).end, Timecode::zero());
    EXPECT_FALSE(list.hasGoodEvent());
    list.addEvent(b);
    list.addEvent(a);
    EXPECT_EQ(list.getDstRange().start, tc("01:00:00:00"));
    EXPECT_EQ(list.getDstRange().end, tc("01:00:20:00"));
    EXPECT_EQ(list.getRange(EventList::Src).start, tc("10:00:00:00"));
    EXPECT_EQ(list.countFlawedEvents(), 1);
    EXPECT_TRUE(list.hasGoodEvent());
    a->setDstOut(tc("01:00:10:30"));
    EXPECT_EQ(list.countInvalidTimecodes(), 1);
    EXPECT_EQ(thrownCode([&] { EventList::getEventRange(a, static_cast<EventList::RangeKind>(2)); }), Result::InvalidArgument);
}

TEST_F(EventListTest, OffsetMovesTheWholeListOrNothing)
{
    EventList list(EventList::ChangeKind);
    list.addEvent(a);
    list.addEvent(b);
    auto flawed = makeEvent("10:00:00:00", "10:00:01:00", "00:30:00:00", "00:30:01:00");
    flawed->addState(EventState::NotVideoEvent);
    list.addEvent(flawed);

    list.offsetDst(tc("00:00:02:00"), true);
    EXPECT_EQ(a->getDstIn(), tc("01:00:02:00"));
    EXPECT_EQ(b->getDstOut(), tc("01:00:22:00"));
    EXPECT_EQ(a->getSrcIn(), tc("10:00:00:00")) << "the other side stays";
    EXPECT_EQ(flawed->getDstIn(), tc("00:30:00:00")) << "flawed events stay where they were";

    EXPECT_EQ(thrownCode([&] { list.offsetDst(tc("01:00:02:01"), false); }), Result::OutOfRange);
    EXPECT_EQ(a->getDstIn(), tc("01:00:02:00"));
    EXPECT_EQ(thrownCode([&] { list.offsetDst(tc("23:00:00:00"), true); }), Result::OutOfRange);
    EXPECT_EQ(b->getDstOut(), tc("01:00:22:00"));

    list.offsetSrc(tc("09:00:00:00"), false);
    EXPECT_EQ(a->getSrcIn(), tc("01:00:00:00"));
    EXPECT_EQ(b->getSrcOut(), tc("11:00:10:00"));
    EXPECT_EQ(a->getListenerCount(), 1u);
}

TEST_F(EventListTest, OffsetBelowZeroIsRefusedBeforeAnyChange)
{
    EventList list(EventList::ChangeKind);
    list.addEvent(makeEvent("10:00:00:00", "10:00:01:00", "00:30:00:00", "00:30:01:00"));
    EXPECT_EQ(thrownCode([&] { list.offsetDst(tc("01:00:00:00"), false); }), Result::OutOfRange);
    EXPECT_EQ(list.getEvent(0)->getDstIn(), tc("00:30:00:00"));
}

TEST_F(EventListTest, ExtendingClosesTheGapAndMovesTheSourceAlong)
{
    EventList list(EventList::ChangeKind);
    list.addEvent(a);
    list.addEvent(b);
    EXPECT_FALSE(list.canExtendToNeighbour(a, true));
    list.extendToNeighbour(a, true);
    EXPECT_EQ(a->getDstIn(), tc("01:00:00:00"));
    EXPECT_TRUE(list.canExtendToNeighbour(b, true));
    EXPECT_TRUE(list.canExtendToNeighbour(a, false));
    EXPECT_FALSE(list.canExtendToNeighbour(b, false));

    list.extendToNeighbour(b, true);
    EXPECT_EQ(b->getDstIn(), tc("01:00:10:00"));
    EXPECT_EQ(b->getSrcIn(), tc("20:00:00:00"));
    EXPECT_TRUE(b->isNormalSpeed());
    EXPECT_FALSE(list.canExtendToNeighbour(b, true));
}

TEST_F(EventListTest, ExtendingForwardMovesTheSourceOut)
{
    EventList list(EventList::ChangeKind);
    list.addEvent(a);
    list.addEvent(b);
    list.extendToNeighbour(a, false);
    EXPECT_EQ(a->getDstOut(), tc("01:00:12:00"));
    EXPECT_EQ(a->getSrcOut(), tc("10:00:12:00"));
}

TEST_F(EventListTest, BRollRenamingNeedsTheShorterNameInTheList)
{
    EventList onlyB(EventList::ChangeKind);
    onlyB.addEvent(makeEvent("10:00:00:00", "10:00:01:00", "01:00:00:00", "01:00:01:00", "A001B"));
    onlyB.renameBRolls();
    EXPECT_EQ(onlyB.getEvent(0)->getRollName(), "A001B");

    EventList both(EventList::ChangeKind);
    both.addEvent(makeEvent("10:00:00:00", "10:00:01:00", "01:00:00:00", "01:00:01:00", "A001"));
    both.addEvent(makeEvent("10:00:00:00", "10:00:01:00", "01:00:01:00", "01:00:02:00", "A001B"));
    both.addEvent(makeEvent("10:00:00:00", "10:00:01:00", "01:00:02:00", "01:00:03:00", "A001BB"));
    both.addEvent(makeEvent("10:00:00:00", "10:00:01:00", "01:00:03:00", "01:00:04:00", "B"));
    both.renameBRolls();
    EXPECT_EQ(both.getEvent(1)->getRollName(), "A001");
    // The set of names is taken before the pass: A001BB looks for A001B, which stood there.
    EXPECT_EQ(both.getEvent(2)->getRollName(), "A001B");
    EXPECT_EQ(both.getEvent(3)->getRollName(), "B");
}
