#include "../ChangeEdlFixture.h"

#include "core/generation/HealProcessing.h"
#include "core/events/HealedEvent.h"
#include "core/model/Settings.h"

#include <gtest/gtest.h>

namespace montala::core {
namespace {

using Lines = std::vector<std::string>;

// The four events of a typical generated list, SRC then DST:
//   1  10:00:00:00-10:00:05:00  20:00:00:00-20:00:05:00
//   2  10:00:05:00-10:00:08:00  20:00:05:00-20:00:08:00   strict neighbour of 1
//   3  10:00:10:00-10:00:12:00  20:00:10:00-20:00:12:00   2 s gap on both sides
//   4  10:00:12:00-10:00:14:00  20:00:20:00-20:00:22:00   moved on, not in SRC
class HealProcessingTest : public test::ChangeEdlFixture {
protected:
    EventList healed(EventList events, HealProcessingMode mode, MatchName name = MatchName::RollName)
    {
        Settings settings;
        settings.setHealProcessing(mode);
        settings.setMatchName(name);
        EventListAlgorithm::Context context;
        context.newList = &newList;
        context.settings = &settings;
        context.framerate = provider.getFramerate();
        HealProcessing().process(events, context);
        return events;
    }

    EventList fourEvents()
    {
        return list(EventList::ChangeKind, {e1, e2, e3, e4});
    }

    static const HealedEvent& asHealed(const EventPtr& event)
    {
        const auto* result = dynamic_cast<const HealedEvent*>(event.get());
        if (!result)
            throw std::runtime_error("not a healed event: " + describe(*event));
        return *result;
    }

    EventPtr e1 = event("A", "10:00:00:00", "10:00:05:00", "20:00:00:00", "20:00:05:00", 7);
    EventPtr e2 = event("B", "10:00:05:00", "10:00:08:00", "20:00:05:00", "20:00:08:00", 8);
    EventPtr e3 = event("C", "10:00:10:00", "10:00:12:00", "20:00:10:00", "20:00:12:00", 9);
    EventPtr e4 = event("D", "10:00:12:00", "10:00:14:00", "20:00:20:00", "20:00:22:00", 10);
    EventList newList{EventList::NewKind};
};

TEST_F(HealProcessingTest, NormalJoinsOnlyStrictNeighboursOnBothTimelines)
{
    const EventList result = healed(fourEvents(), HealProcessingMode::Normal);
    EXPECT_EQ(describe(result), (Lines{
        "Healed Event 001 SRC 10:00:00:00-10:00:08:00 DST 20:00:00:00-20:00:08:00",
        "C SRC 10:00:10:00-10:00:12:00 DST 20:00:10:00-20:00:12:00",
        "D SRC 10:00:12:00-10:00:14:00 DST 20:00:20:00-20:00:22:00",
    }));
    EXPECT_EQ(numbers(result), (std::vector<int>{1, 2, 3}));
    const HealedEvent& joined = asHealed(result.getEvent(0));
    EXPECT_EQ(joined.getClipName(), "");
    ASSERT_EQ(joined.getHealedEvents().getSize(), 2u);
    EXPECT_EQ(joined.getHealedEvents().getEvent(0), e1);
    EXPECT_EQ(joined.getHealedEvents().getEvent(1), e2);
}

TEST_F(HealProcessingTest, GapsWithInsertsJoinsOverEqualGapsWhateverStandsInThem)
{
    // A shot inserted in the gap does not stop this mode.
    newList.addEvent(event("X", "05:00:00:00", "05:00:01:00", "20:00:08:10", "20:00:09:10"));
    const EventList result = healed(fourEvents(), HealProcessingMode::GapsWithInserts);
    EXPECT_EQ(describe(result), (Lines{
        "Healed Event 001 SRC 10:00:00:00-10:00:12:00 DST 20:00:00:00-20:00:12:00",
        "D SRC 10:00:12:00-10:00:14:00 DST 20:00:20:00-20:00:22:00",
    }));
    EXPECT_EQ(asHealed(result.getEvent(0)).getHealedEvents().getSize(), 3u);
}

TEST_F(HealProcessingTest, GapsWithoutInsertsStopsOnlyAtANewEventInsideTheGap)
{
    EventList result = healed(fourEvents(), HealProcessingMode::GapsWithoutInserts);
    EXPECT_EQ(describe(*result.getEvent(0)),
              "Healed Event 001 SRC 10:00:00:00-10:00:12:00 DST 20:00:00:00-20:00:12:00");

    // New neighbours that merely end at the gap's start or begin at its end.
    newList.addEvent(event("N1", "05:00:00:00", "05:00:08:00", "20:00:00:00", "20:00:08:00"));
    newList.addEvent(event("N2", "06:00:00:00", "06:00:02:00", "20:00:10:00", "20:00:12:00"));
    result = healed(fourEvents(), HealProcessingMode::GapsWithoutInserts);
    EXPECT_EQ(result.getSize(), 2u);

    // An insert that begins and ends inside 20:00:08:00-20:00:10:00.
    newList.addEvent(event("INS", "07:00:00:00", "07:00:01:00", "20:00:08:12", "20:00:09:12"));
    result = healed(fourEvents(), HealProcessingMode::GapsWithoutInserts);
    EXPECT_EQ(describe(result), (Lines{
        "Healed Event 001 SRC 10:00:00:00-10:00:08:00 DST 20:00:00:00-20:00:08:00",
        "C SRC 10:00:10:00-10:00:12:00 DST 20:00:10:00-20:00:12:00",
        "D SRC 10:00:12:00-10:00:14:00 DST 20:00:20:00-20:00:22:00",
    }));

    // An insert filling the whole gap exactly stops it as well: it ends
    // where the later neighbour begins, not where the earlier one ends.
    newList.clear();
    newList.addEvent(event("INS", "07:00:00:00", "07:00:02:00", "20:00:08:00", "20:00:10:00"));
    result = healed(fourEvents(), HealProcessingMode::GapsWithoutInserts);
    EXPECT_EQ(result.getSize(), 3u);
}

TEST_F(HealProcessingTest, SeparateRunsGetRunningNamesInTheChosenNameField)
{
    EventPtr e5 = event("E", "10:00:14:00", "10:00:15:00", "20:00:22:00", "20:00:23:00");
    EventList result = healed(list(EventList::ChangeKind, {e1, e2, e3, e4, e5}), HealProcessingMode::Normal);
    ASSERT_EQ(result.getSize(), 3u);
    EXPECT_EQ(result.getEvent(0)->getRollName(), "Healed Event 001");
    EXPECT_EQ(result.getEvent(2)->getRollName(), "Healed Event 002");

    result = healed(fourEvents(), HealProcessingMode::Normal, MatchName::ClipName);
    EXPECT_EQ(result.getEvent(0)->getClipName(), "Healed Event 001");
    EXPECT_EQ(result.getEvent(0)->getRollName(), "");
}

TEST_F(HealProcessingTest, ModesThatDoNotHealLeaveOrderAndNumbersAlone)
{
    const EventList shuffled = list(EventList::ChangeKind, {e3, e1, e2});
    EventList result = healed(shuffled, HealProcessingMode::None);
    EXPECT_EQ(result.getEvents(), shuffled.getEvents());
    EXPECT_EQ(numbers(result), (std::vector<int>{9, 7, 8}));

    for (int mode = 0; mode <= 4; ++mode) {
        result = healed(list(EventList::ChangeKind, {e4}), static_cast<HealProcessingMode>(mode));
        ASSERT_EQ(result.getSize(), 1u);
        EXPECT_EQ(result.getEvent(0), e4);
        EXPECT_EQ(e4->getEventNumber(), 10) << "mode " << mode;
    }

    // A stored mode 4 heals nothing but still sorts and numbers.
    result = healed(shuffled, static_cast<HealProcessingMode>(4));
    EXPECT_EQ(result.getEvents(), (std::vector<EventPtr>{e1, e2, e3}));
    EXPECT_EQ(numbers(result), (std::vector<int>{1, 2, 3}));
}

TEST_F(HealProcessingTest, OverlappingEventsNeverHealEvenWithEqualOffsets)
{
    EventPtr overlapping = event("B", "10:00:04:00", "10:00:06:00", "20:00:04:00", "20:00:06:00");
    for (HealProcessingMode mode : {HealProcessingMode::Normal, HealProcessingMode::GapsWithInserts,
                                    HealProcessingMode::GapsWithoutInserts}) {
        const EventList result = healed(list(EventList::ChangeKind, {e1, overlapping}), mode);
        EXPECT_EQ(result.getEvents(), (std::vector<EventPtr>{e1, overlapping}));
    }
}

TEST_F(HealProcessingTest, EveryEventSurvivesIncludingThoseSharingADstIn)
{
    // Two Change events at the same DST IN (the New EDL used two layers)
    // must both come through, in list order, and none may be lost.
    EventPtr twin = event("T", "11:00:00:00", "11:00:01:00", "20:00:10:00", "20:00:11:00");
    const EventList result =
        healed(list(EventList::ChangeKind, {e4, twin, e3, e2, e1}), HealProcessingMode::Normal);
    EXPECT_EQ(describe(result), (Lines{
        "Healed Event 001 SRC 10:00:00:00-10:00:08:00 DST 20:00:00:00-20:00:08:00",
        "T SRC 11:00:00:00-11:00:01:00 DST 20:00:10:00-20:00:11:00",
        "C SRC 10:00:10:00-10:00:12:00 DST 20:00:10:00-20:00:12:00",
        "D SRC 10:00:12:00-10:00:14:00 DST 20:00:20:00-20:00:22:00",
    }));
    EXPECT_EQ(numbers(result), (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(HealProcessingTest, HealedEventIsVfxWhenAnyPartIs)
{
    e2->setVfx(true);
    const EventList result = healed(fourEvents(), HealProcessingMode::Normal);
    EXPECT_TRUE(result.getEvent(0)->isVfx());
    EXPECT_FALSE(result.getEvent(1)->isVfx());
}

} // namespace
} // namespace montala::core
