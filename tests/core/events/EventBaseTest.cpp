#include "../ChangeRecorder.h"
#include "support/ModelFixture.h"

#include "core/events/EventBase.h"
#include "core/events/HealedEvent.h"

#include <gtest/gtest.h>

using namespace montala::core;
using montala::test::ModelFixture;
using montala::test::tc;

namespace {

EventPtr makeEvent(const char* srcIn, const char* srcOut, const char* dstIn, const char* dstOut)
{
    auto event = std::make_shared<EventBase>();
    event->setTimecodes(tc(srcIn), tc(srcOut), tc(dstIn), tc(dstOut));
    return event;
}

} // namespace

using EventBaseTest = ModelFixture;

TEST_F(EventBaseTest, NewEventIsUninitializedAndSaysSoWithABlankLine)
{
    EventBase event;
    EXPECT_EQ(event.getStates(), std::set<EventState>{EventState::UninitializedTimecode});
    EXPECT_FALSE(event.isFlawless());
    EXPECT_FALSE(event.hasFormatError());
    // The legacy slot comes after "uninitialized" and adds a newline of its
    // own once any text stands before it: the tooltip has always shown this.
    EXPECT_EQ(event.getStateText(), "Detected uninitialized timecode.\n\n");
}

TEST_F(EventBaseTest, StatesFollowTheTimecodesAsTheyChange)
{
    auto event = makeEvent("01:00:00:00", "01:00:02:00", "10:00:00:00", "10:00:02:00");
    EXPECT_TRUE(event->isFlawless());
    EXPECT_EQ(event->getStateText(), "");

    event->setSrcOut(tc("00:59:59:00"));
    EXPECT_EQ(event->getStates(), std::set<EventState>{EventState::InvalidTimecodeRange});
    // A timecode that the rate does not allow keeps the range fault in place.
    event->setSrcOut(tc("00:59:59:27"));
    EXPECT_EQ(event->getStates(),
              (std::set<EventState>{EventState::InvalidTimecode, EventState::InvalidTimecodeRange}));
    event->setSrcOut(tc("01:00:03:00"));
    EXPECT_TRUE(event->isFlawless());
    // SRC IN equal to SRC OUT is in order.
    event->setSrcOut(tc("01:00:00:00"));
    EXPECT_TRUE(event->isFlawless());
}

TEST_F(EventBaseTest, RateChangeRevalidatesWithoutTouchingTheTimecode)
{
    setRate(30, 0);
    auto event = makeEvent("01:00:00:27", "01:00:01:00", "10:00:00:00", "10:00:00:03");
    EXPECT_TRUE(event->isFlawless());
    setRate(25, 0);
    event->revalidate();
    EXPECT_TRUE(event->hasState(EventState::InvalidTimecode));
    EXPECT_EQ(event->getSrcIn(), tc("01:00:00:27"));
    setRate(30, 0);
    event->revalidate();
    EXPECT_TRUE(event->isFlawless());
}

TEST_F(EventBaseTest, MotionSpeedIsSourceOverRecord)
{
    EXPECT_DOUBLE_EQ(makeEvent("01:00:00:00", "01:00:02:00", "10:00:00:00", "10:00:01:00")->getMotionSpeed(), 2.0);
    EXPECT_TRUE(makeEvent("01:00:00:00", "01:00:02:00", "10:00:00:00", "10:00:01:00")->hasMotionSpeed(2.005));
    EXPECT_DOUBLE_EQ(makeEvent("01:00:00:00", "01:00:00:00", "10:00:00:00", "10:00:00:00")->getMotionSpeed(), 1.0);
    EXPECT_DOUBLE_EQ(makeEvent("01:00:00:00", "01:00:00:00", "10:00:00:00", "10:00:01:00")->getMotionSpeed(), 0.0);
    // A zero-length record counts as one frame.
    EXPECT_DOUBLE_EQ(makeEvent("01:00:00:00", "01:00:01:00", "10:00:00:00", "10:00:00:00")->getMotionSpeed(), 25.0);
    EXPECT_TRUE(makeEvent("01:00:00:00", "01:00:01:00", "10:00:00:00", "10:00:01:00")->isNormalSpeed());
    // Equal lengths far apart on the clock are exactly 1, as `inspect --json` prints it.
    setRate(30, 1);
    EXPECT_EQ(makeEvent("00:59:59;29", "01:00:05;02", "23:10:00;02", "23:10:05;05")->getMotionSpeed(), 1.0);
    setRate(25, 0);
    EXPECT_EQ(makeEvent("00:00:07:03", "00:00:09:04", "23:59:51:13", "23:59:53:14")->getMotionSpeed(), 1.0);
    // An invalid timecode leaves the speed as it was.
    auto event = makeEvent("01:00:00:00", "01:00:02:00", "10:00:00:00", "10:00:01:00");
    event->setDstOut(tc("10:00:01:26"));
    EXPECT_DOUBLE_EQ(event->getMotionSpeed(), 2.0);
}

TEST_F(EventBaseTest, AssignmentCopiesContentButNotListeners)
{
    auto source = makeEvent("01:00:00:00", "01:00:02:00", "10:00:00:00", "10:00:01:00");
    source->setRollName("A001");
    source->setClipName("clip.mov");
    source->setVfx(true);
    source->addState(EventState::BadEventNumber);
    montala::test::ChangeRecorder listener;
    source->addListener(&listener);

    EventBase copy;
    copy = *source;
    EXPECT_EQ(copy.getRollName(), "A001");
    EXPECT_EQ(copy.getClipName(), "clip.mov");
    EXPECT_TRUE(copy.isVfx());
    EXPECT_DOUBLE_EQ(copy.getMotionSpeed(), 2.0);
    EXPECT_TRUE(copy.hasState(EventState::BadEventNumber));
    EXPECT_EQ(copy.getListenerCount(), 0u);
    EXPECT_TRUE(listener.kinds.empty()) << "assignment does not notify";
    source->removeListener(&listener);

    // The copy's timecodes all count as set, though the state is copied as it was.
    EventBase blank;
    EventBase fromBlank;
    fromBlank = blank;
    EXPECT_TRUE(fromBlank.getSrcIn().isInitialized());
    EXPECT_TRUE(fromBlank.hasState(EventState::UninitializedTimecode));
}

TEST_F(EventBaseTest, HealedEventSpansItsPartsAndCarriesVfx)
{
    HealedEvent healed;
    auto first = makeEvent("00:00:10:00", "00:00:20:00", "01:00:10:00", "01:00:20:00");
    auto second = makeEvent("00:00:05:00", "00:00:15:00", "01:00:20:00", "01:00:30:00");
    second->setVfx(true);
    healed.addHealedEvent(first);
    EXPECT_EQ(healed.getSrcIn(), tc("00:00:10:00"));
    EXPECT_FALSE(healed.isVfx());
    healed.addHealedEvent(second);
    EXPECT_EQ(healed.getSrcIn(), tc("00:00:05:00"));
    EXPECT_EQ(healed.getSrcOut(), tc("00:00:20:00"));
    EXPECT_EQ(healed.getDstIn(), tc("01:00:10:00"));
    EXPECT_EQ(healed.getDstOut(), tc("01:00:30:00"));
    EXPECT_TRUE(healed.isVfx());
    EXPECT_TRUE(healed.isFlawless());
    EXPECT_EQ(healed.getHealedEvents().getSize(), 2u);
}

TEST_F(EventBaseTest, StateTextListsEachStateOnItsOwnLine)
{
    EventBase event;
    event.setTimecodes(tc("01:00:00:00"), tc("01:00:01:00"), tc("01:00:00:00"), tc("01:00:01:00"));
    event.addState(EventState::NotVideoEvent);
    event.addState(EventState::BadDstOut);
    EXPECT_EQ(event.getStateText(), "Not a video event.\nDST OUT format cannot be read.\n");
}
