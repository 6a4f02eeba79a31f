#include "ChangeRecorder.h"
#include "ChangeEdlFixture.h"

#include "core/events/EventList.h"
#include "core/model/Settings.h"
#include "core/events/HealedEvent.h"

#include <gtest/gtest.h>

namespace montala::core {
namespace {

using Lines = std::vector<std::string>;

// A Change EDL as the table shows it, sorted by DST:
//   a  SRC 10:00:00:00-10:00:05:00  DST 20:00:00:00-20:00:05:00
//   b  SRC 10:00:05:00-10:00:08:00  DST 20:00:05:00-20:00:08:00   neighbour of a
//   c  SRC 10:00:10:00-10:00:12:00  DST 20:00:10:00-20:00:12:00   2 s gap
//   d  SRC 10:00:30:00-10:00:32:00  DST 20:00:12:00-20:00:14:00   neighbour in DST only
class EventListHealingTest : public test::ChangeEdlFixture {
protected:
    EventListHealingTest() : changes(list(EventList::ChangeKind, {a, b, c, d}))
    {
        changes.addListener(&listener);
    }
    ~EventListHealingTest() override { changes.removeListener(&listener); }

    EventList selection(const std::vector<EventPtr>& events) { return list(EventList::ChangeKind, events); }

    EventPtr a = event("A", "10:00:00:00", "10:00:05:00", "20:00:00:00", "20:00:05:00", 1);
    EventPtr b = event("B", "10:00:05:00", "10:00:08:00", "20:00:05:00", "20:00:08:00", 2);
    EventPtr c = event("C", "10:00:10:00", "10:00:12:00", "20:00:10:00", "20:00:12:00", 3);
    EventPtr d = event("D", "10:00:30:00", "10:00:32:00", "20:00:12:00", "20:00:14:00", 4);
    EventList newList{EventList::NewKind};
    EventList changes;
    test::ChangeRecorder listener;
};

TEST_F(EventListHealingTest, HealsTheSelectionInPlaceSortedNumberedAndNamed)
{
    listener.kinds.clear();
    changes.healEvents(selection({a, b}), newList, HealProcessingMode::Normal);
    EXPECT_EQ(describe(changes), (Lines{
        "Healed Event 001 SRC 10:00:00:00-10:00:08:00 DST 20:00:00:00-20:00:08:00",
        "C SRC 10:00:10:00-10:00:12:00 DST 20:00:10:00-20:00:12:00",
        "D SRC 10:00:30:00-10:00:32:00 DST 20:00:12:00-20:00:14:00",
    }));
    EXPECT_EQ(numbers(changes), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(listener.count(), 1);

    // The list hears its new healed event and no longer the parts it took out.
    listener.kinds.clear();
    changes.getEvent(0)->setClipName("x");
    EXPECT_EQ(listener.count(), 1);
    a->setClipName("y");
    EXPECT_EQ(listener.count(), 1);
}

TEST_F(EventListHealingTest, HealingAHealedEventAloneBreaksItUpFirst)
{
    changes.healEvents(selection({a, b, c}), newList, HealProcessingMode::GapsWithInserts);
    ASSERT_EQ(changes.getSize(), 2u);
    const EventPtr healed = changes.getEvent(0);
    EXPECT_EQ(healed->getEventType(), EventBase::Healed);

    // Healed anew in Normal mode: the 2 s gap no longer joins c.
    changes.healEvents(selection({healed}), newList, HealProcessingMode::Normal);
    EXPECT_EQ(describe(changes), (Lines{
        "Healed Event 001 SRC 10:00:00:00-10:00:08:00 DST 20:00:00:00-20:00:08:00",
        "C SRC 10:00:10:00-10:00:12:00 DST 20:00:10:00-20:00:12:00",
        "D SRC 10:00:30:00-10:00:32:00 DST 20:00:12:00-20:00:14:00",
    }));

    // With mode None the parts simply come back as they were.
    changes.healEvents(selection({changes.getEvent(0)}), newList, HealProcessingMode::None);
    EXPECT_EQ(changes.getEvents(), (std::vector<EventPtr>{a, b, c, d}));
    EXPECT_EQ(numbers(changes), (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(EventListHealingTest, AllHealedEventsOfTheListAreRenamedInDstOrder)
{
    EventPtr e = event("E", "10:00:32:00", "10:00:33:00", "20:00:14:00", "20:00:15:00", 5);
    changes.addEvent(e);
    changes.healEvents(selection({d, e}), newList, HealProcessingMode::Normal);
    changes.healEvents(selection({a, b}), newList, HealProcessingMode::Normal);
    EXPECT_EQ(describe(changes), (Lines{
        "Healed Event 001 SRC 10:00:00:00-10:00:08:00 DST 20:00:00:00-20:00:08:00",
        "C SRC 10:00:10:00-10:00:12:00 DST 20:00:10:00-20:00:12:00",
        "Healed Event 002 SRC 10:00:30:00-10:00:33:00 DST 20:00:12:00-20:00:15:00",
    }));
}

TEST_F(EventListHealingTest, CanHealAsksForAContiguousSelectionThatWouldShrink)
{
    EXPECT_TRUE(changes.canHealEvents(selection({a, b}), newList, HealProcessingMode::Normal));
    EXPECT_TRUE(changes.canHealEvents(selection({b, a}), newList, HealProcessingMode::Normal)) << "selection order does not matter";
    // b and c are neighbours in the list but 2 s apart: Normal cannot join them.
    EXPECT_FALSE(changes.canHealEvents(selection({b, c}), newList, HealProcessingMode::Normal));
    EXPECT_TRUE(changes.canHealEvents(selection({b, c}), newList, HealProcessingMode::GapsWithInserts));
    // a and c skip b.
    EXPECT_FALSE(changes.canHealEvents(selection({a, c}), newList, HealProcessingMode::GapsWithInserts));
    // An event that is not in the list.
    EXPECT_FALSE(changes.canHealEvents(
        selection({a, event("Z", "10:00:05:00", "10:00:06:00", "20:00:05:00", "20:00:06:00")}), newList, HealProcessingMode::Normal));
    EXPECT_FALSE(changes.canHealEvents(selection({a}), newList, HealProcessingMode::Normal));
    EXPECT_FALSE(changes.canHealEvents(selection({a, b}), newList, HealProcessingMode::None));
}

TEST_F(EventListHealingTest, CanHealTouchesNothing)
{
    changes.healEvents(selection({a, b}), newList, HealProcessingMode::Normal);
    const EventPtr healed = changes.getEvent(0);
    listener.kinds.clear();

    EXPECT_TRUE(changes.canHealEvents(selection({healed, c}), newList, HealProcessingMode::GapsWithInserts));

    EXPECT_EQ(listener.count(), 0);
    EXPECT_EQ(numbers(changes), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(changes.getEvent(0), healed);
    EXPECT_EQ(healed->getRollName(), "Healed Event 001");
    const auto& parts = dynamic_cast<const HealedEvent&>(*healed).getHealedEvents();
    EXPECT_EQ(parts.getEvents(), (std::vector<EventPtr>{a, b}));
    EXPECT_EQ(a->getEventNumber(), 1);
    EXPECT_EQ(c->getEventNumber(), 2);
}

} // namespace
} // namespace montala::core
