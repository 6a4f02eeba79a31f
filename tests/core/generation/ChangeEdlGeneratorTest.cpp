#include "../ChangeEdlFixture.h"

#include "core/generation/ChangeEdlGenerator.h"
#include "core/model/DataModel.h"
#include "core/events/EventList.h"
#include "util/Result.h"

#include <gtest/gtest.h>

namespace montala::core {
namespace {

using util::Result;
using Lines = std::vector<std::string>;

class ChangeEdlGeneratorTest : public test::ChangeEdlFixture {
protected:
    EventList generate(const std::vector<EventPtr>& oldEvents, const std::vector<EventPtr>& newEvents)
    {
        const EventList oldList = list(EventList::OldKind, oldEvents);
        const EventList newList = list(EventList::NewKind, newEvents);
        EventList changes(EventList::ChangeKind);
        EXPECT_EQ(generator.generate(oldList, newList, changes), 0);
        return changes;
    }

    // Lines 2 and 3 of an EDL: A cut to B with a 25 frame dissolve.
    static std::vector<EventPtr> dissolve(int frames = 25, int type = EventBase::Dissolve)
    {
        return {event("A", "01:00:10:00", "01:00:10:00", "10:00:10:00", "10:00:10:00", 2),
                transition("B", 2, type, frames, "02:00:00:00", "02:00:05:00", "10:00:10:00", "10:00:15:00")};
    }

    ChangeEdlGenerator generator;
};

TEST_F(ChangeEdlGeneratorTest, PartialOverlapMapsTheSharedSourceOntoBothRecordTimelines)
{
    EventPtr oldA = event("A", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00");
    EventPtr newA = event("A", "01:00:02:00", "01:00:08:00", "10:00:20:00", "10:00:26:00");
    const EventList changes = generate({oldA}, {newA});
    EXPECT_EQ(describe(changes), (Lines{"A SRC 10:00:02:00-10:00:08:00 DST 10:00:20:00-10:00:26:00"}));
    EXPECT_EQ(numbers(changes), (std::vector<int>{1}));

    MatchCandidate candidate;
    ASSERT_TRUE(generator.tryMatch(*oldA, *newA, candidate));
    EXPECT_DOUBLE_EQ(candidate.timeShift, 18.0);
    EXPECT_EQ(candidate.newSrcStart, test::tc("01:00:02:00"));
    EXPECT_EQ(candidate.newSrcEnd, test::tc("01:00:08:00"));
}

TEST_F(ChangeEdlGeneratorTest, OneNewEventOverTwoOldEventsGivesTwoTouchingEvents)
{
    const EventList changes = generate(
        {event("A", "01:00:00:00", "01:00:05:00", "10:00:00:00", "10:00:05:00"),
         event("A", "01:00:05:00", "01:00:10:00", "10:01:00:00", "10:01:05:00")},
        {event("A", "01:00:00:00", "01:00:10:00", "20:00:00:00", "20:00:10:00")});
    EXPECT_EQ(describe(changes), (Lines{
        "A SRC 10:00:00:00-10:00:05:00 DST 20:00:00:00-20:00:05:00",
        "A SRC 10:01:00:00-10:01:05:00 DST 20:00:05:00-20:00:10:00",
    }));
}

TEST_F(ChangeEdlGeneratorTest, OfEquallyLongRivalsTheOneNearerTheLastShiftStays)
{
    // The source was used twice in the Old EDL. Shifts 630 s and 30 s
    // against lastShift 0: Old 2 wins; New 2 then has 1230 s and 630 s
    // against lastShift 30: Old 2 again.
    const EventList changes = generate(
        {event("A", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00"),
         event("A", "01:00:00:00", "01:00:10:00", "10:10:00:00", "10:10:10:00")},
        {event("A", "01:00:00:00", "01:00:10:00", "10:10:30:00", "10:10:40:00"),
         event("A", "01:00:00:00", "01:00:10:00", "10:20:30:00", "10:20:40:00")});
    EXPECT_EQ(describe(changes), (Lines{
        "A SRC 10:10:00:00-10:10:10:00 DST 10:10:30:00-10:10:40:00",
        "A SRC 10:10:00:00-10:10:10:00 DST 10:20:30:00-10:20:40:00",
    }));
    EXPECT_EQ(numbers(changes), (std::vector<int>{1, 2}));
}

TEST_F(ChangeEdlGeneratorTest, ExactTieBetweenRivalsKeepsTheLaterCandidate)
{
    // Shifts +10 s and -10 s against lastShift 0 are equally near. The
    // rule deletes the outer cursor's candidate on a tie, so the Old event
    // met later under the key stays. Required as it stands: it decides
    // which of two identical takes a re-conform uses.
    const EventList changes = generate(
        {event("A", "01:00:00:00", "01:00:10:00", "10:00:20:00", "10:00:30:00"),
         event("A", "01:00:00:00", "01:00:10:00", "10:00:40:00", "10:00:50:00")},
        {event("A", "01:00:00:00", "01:00:10:00", "10:00:30:00", "10:00:40:00")});
    EXPECT_EQ(describe(changes), (Lines{"A SRC 10:00:40:00-10:00:50:00 DST 10:00:30:00-10:00:40:00"}));
}

TEST_F(ChangeEdlGeneratorTest, ShorterRivalIsDeletedWholeLeavingAHole)
{
    // Old 1 has source 01:00:00:00-01:00:04:00, Old 2 01:00:02:00-01:00:10:00.
    // Old 1 loses whole: the New event's first two seconds get no Change
    // event although the Old EDL had them.
    const EventList changes = generate(
        {event("A", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00"),
         event("A", "01:00:02:00", "01:00:10:00", "10:01:00:00", "10:01:08:00")},
        {event("A", "01:00:00:00", "01:00:10:00", "20:00:00:00", "20:00:10:00")});
    EXPECT_EQ(describe(changes), (Lines{"A SRC 10:01:00:00-10:01:08:00 DST 20:00:02:00-20:00:10:00"}));
}

TEST_F(ChangeEdlGeneratorTest, SourceUsedTwiceInTheNewEdlIsConformedTwice)
{
    const EventList changes = generate(
        {event("A", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00")},
        {event("A", "01:00:00:00", "01:00:10:00", "20:00:00:00", "20:00:10:00"),
         event("A", "01:00:00:00", "01:00:10:00", "20:01:00:00", "20:01:10:00")});
    EXPECT_EQ(describe(changes), (Lines{
        "A SRC 10:00:00:00-10:00:10:00 DST 20:00:00:00-20:00:10:00",
        "A SRC 10:00:00:00-10:00:10:00 DST 20:01:00:00-20:01:10:00",
    }));
}

TEST_F(ChangeEdlGeneratorTest, VarispeedTurnsSourceTimeIntoRecordTime)
{
    EventPtr oldA = event("A", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:05:00");
    EXPECT_EQ(describe(generate({oldA}, {event("A", "01:00:02:00", "01:00:06:00", "20:00:00:00", "20:00:02:00")})),
              (Lines{"A SRC 10:00:01:00-10:00:03:00 DST 20:00:00:00-20:00:02:00"}));

    // Speeds within 0.01 of each other match: 2.005 does, 2.02 does not.
    EventPtr slow = event("A", "01:00:00:00", "01:02:00:00", "10:00:00:00", "10:01:00:00");
    EventPtr near = event("A", "01:00:00:00", "01:01:20:05", "20:00:00:00", "20:00:40:00");
    EventPtr far = event("A", "01:00:00:00", "01:01:20:20", "20:00:00:00", "20:00:40:00");
    ASSERT_NEAR(near->getMotionSpeed(), 2.005, 1e-9);
    ASSERT_NEAR(far->getMotionSpeed(), 2.02, 1e-9);
    EXPECT_EQ(generate({slow}, {near}).getSize(), 1u);
    EXPECT_EQ(generate({slow}, {far}).getSize(), 0u);
}

TEST_F(ChangeEdlGeneratorTest, NearlyNormalSpeedIsConformedAtTheSourceLength)
{
    // 250 source frames over 248 record frames is speed 1.008: within 0.01
    // of 1 it counts as normal, and the Change event takes the length of
    // the source, two frames past the New event's out. Required as it
    // stands: the Old event's speed alone chooses how lengths are taken.
    EXPECT_EQ(describe(generate({event("A", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00")},
                                {event("A", "01:00:00:00", "01:00:10:00", "20:00:00:00", "20:00:09:23")})),
              (Lines{"A SRC 10:00:00:00-10:00:10:00 DST 20:00:00:00-20:00:10:00"}));
}

TEST_F(ChangeEdlGeneratorTest, FreezeTakesTheShorterRecordLengthFromBothStarts)
{
    EventPtr oldFreeze = event("A", "01:00:00:00", "01:00:00:01", "10:00:00:00", "10:00:05:00");
    ASSERT_NEAR(oldFreeze->getMotionSpeed(), 0.008, 1e-9);
    EXPECT_EQ(describe(generate({oldFreeze}, {event("A", "01:00:00:00", "01:00:00:01", "20:00:00:00", "20:00:03:00")})),
              (Lines{"A SRC 10:00:00:00-10:00:03:00 DST 20:00:00:00-20:00:03:00"}));

    // A source of no length overlaps nothing and never matches.
    EXPECT_EQ(generate({event("A", "01:00:00:00", "01:00:00:00", "10:00:00:00", "10:00:05:00")},
                       {event("A", "01:00:00:00", "01:00:00:00", "20:00:00:00", "20:00:05:00")})
                  .getSize(),
              0u);
}

using DissolveTest = ChangeEdlGeneratorTest;

TEST_F(DissolveTest, SplitsTheIncomingClipAndNamesTheMixWithTheCutPointTwice)
{
    EventList lines = list(EventList::ChangeKind, dissolve());
    generator.splitTransitions(lines);
    // The outgoing clip's SRC OUT stands twice in the name. Required as it
    // stands: stored Change EDLs carry names of this form.
    EXPECT_EQ(describe(lines), (Lines{
        "A SRC 01:00:10:00-01:00:10:00 DST 10:00:10:00-10:00:10:00",
        "B SRC 02:00:01:00-02:00:05:00 DST 10:00:11:00-10:00:15:00",
        "TRANS_B--A_01:00:10:00_01:00:10:00 SRC 02:00:00:00-02:00:01:00 DST 10:00:10:00-10:00:11:00",
    }));
    EXPECT_EQ(lines.getEvent(1)->getTransitionType(), EventBase::Cut);
    EXPECT_EQ(lines.getEvent(1)->getTransitionDuration(), 0);
    EXPECT_EQ(lines.getEvent(2)->getTransitionType(), EventBase::Dissolve);
    EXPECT_EQ(lines.getEvent(2)->getTransitionDuration(), 25);
}

TEST_F(DissolveTest, MixedPartOfAVarispeedIsDividedByTheSpeed)
{
    // 50 frames at speed 2: the source part is 1 s long, not 4 s. Division
    // is the rule; both cuts are split the same way, so matches agree.
    EventList lines = list(EventList::ChangeKind,
                           {transition("B", 3, EventBase::Wipe, 50, "02:00:00:00", "02:00:20:00", "10:00:00:00", "10:00:10:00")});
    generator.splitTransitions(lines);
    EXPECT_EQ(describe(*lines.getEvent(1)), "B SRC 02:00:00:00-02:00:01:00 DST 10:00:00:00-10:00:02:00");
    EXPECT_EQ(describe(*lines.getEvent(0)), "B SRC 02:00:01:00-02:00:20:00 DST 10:00:02:00-10:00:10:00");
}

TEST_F(DissolveTest, UnchangedDissolveComesOutAsOneCutEvent)
{
    const EventList changes = generate(dissolve(), dissolve());
    EXPECT_EQ(describe(changes), (Lines{"B SRC 10:00:10:00-10:00:15:00 DST 10:00:10:00-10:00:15:00"}));
    EXPECT_EQ(changes.getEvent(0)->getTransitionType(), EventBase::Cut);
}

TEST_F(DissolveTest, ChangedTransitionLeavesItsStretchAsAHole)
{
    // Only the clean rest that both cuts share is conformed.
    EXPECT_EQ(describe(generate(dissolve(), dissolve(50))),
              (Lines{"B SRC 10:00:12:00-10:00:15:00 DST 10:00:12:00-10:00:15:00"}));
    EXPECT_EQ(describe(generate(dissolve(), dissolve(25, EventBase::Wipe))),
              (Lines{"B SRC 10:00:11:00-10:00:15:00 DST 10:00:11:00-10:00:15:00"}));
    std::vector<EventPtr> cut = dissolve();
    cut[1]->setTransitionType(EventBase::Cut);
    cut[1]->setTransitionDuration(0);
    EXPECT_EQ(describe(generate(dissolve(), cut)),
              (Lines{"B SRC 10:00:11:00-10:00:15:00 DST 10:00:11:00-10:00:15:00"}));
}

TEST_F(DissolveTest, TransitionWithoutItsOutgoingLineKeepsItsOwnName)
{
    auto lone = [] {
        return std::vector<EventPtr>{transition("B", 5, EventBase::Dissolve, 25, "02:00:00:00", "02:00:05:00",
                                                "10:00:10:00", "10:00:15:00")};
    };
    EventList lines = list(EventList::ChangeKind, lone());
    generator.splitTransitions(lines);
    EXPECT_EQ(lines.getEvent(1)->getRollName(), "B");

    // The two halves then share the key but not the transition type, so
    // each matches only its own kind; the merge does not join them, since
    // the name of the mixed part does not begin with TRANS_B.
    const EventList changes = generate(lone(), lone());
    EXPECT_EQ(describe(changes), (Lines{
        "B SRC 10:00:10:00-10:00:11:00 DST 10:00:10:00-10:00:11:00",
        "B SRC 10:00:11:00-10:00:15:00 DST 10:00:11:00-10:00:15:00",
    }));
    for (const EventPtr& e : changes.getEvents())
        EXPECT_EQ(e->getTransitionType(), EventBase::Cut);
}

TEST_F(DissolveTest, TransitionThatCannotBeSplitFailsAndIsNamedWithItsFileAndLine)
{
    // A wipe whose source runs backwards, in the New EDL: its stretch may
    // not silently drop out of the Change EDL.
    std::vector<EventPtr> reversed = dissolve();
    reversed[1]->setTimecodes(test::tc("02:00:05:00"), test::tc("02:00:00:00"), test::tc("10:00:10:00"),
                              test::tc("10:00:15:00"));
    reversed[1]->setEdlFile("new.edl");
    reversed[1]->setEdlText("002  B  V  D 025 02:00:05:00 02:00:00:00 10:00:10:00 10:00:15:00\n* FROM CLIP NAME: b");
    ASSERT_FALSE(reversed[1]->isFlawless());
    const EventList oldList = list(EventList::OldKind, dissolve());
    EventList changes(EventList::ChangeKind);
    EXPECT_EQ(test::thrownCode([&] { generator.generate(oldList, list(EventList::NewKind, reversed), changes); }),
              Result::OutOfRange);
    const GenerationFailure& failure = generator.lastFailure();
    EXPECT_EQ(failure.code, Result::OutOfRange);
    EXPECT_EQ(failure.stage, GenerationFailure::Stage::SplitNewTransition);
    EXPECT_EQ(failure.event.eventNumber, 2);
    EXPECT_EQ(failure.describe(),
              "the transition of New EDL event 2 (roll \"B\", file \"new.edl\", line \"002  B  V  D 025 02:00:05:00 "
              "02:00:00:00 10:00:10:00 10:00:15:00\") cannot be split: SRC OUT 02:00:00:00 lies before SRC IN "
              "02:00:05:00");
    EXPECT_EQ(changes.getSize(), 0u);

    // A record timecode that does not exist at the rate, in the Old EDL.
    std::vector<EventPtr> badFrame = dissolve();
    badFrame[1]->setTimecodes(test::tc("02:00:00:00"), test::tc("02:00:05:00"), test::tc("10:00:10:30"),
                              test::tc("10:00:15:00"));
    EXPECT_EQ(test::thrownCode([&] { generator.generate(list(EventList::OldKind, badFrame), oldList, changes); }),
              Result::FramesAboveRate);
    EXPECT_EQ(generator.lastFailure().stage, GenerationFailure::Stage::SplitOldTransition);
    EXPECT_EQ(generator.lastFailure().reason, "DST IN 10:00:10:30 is not a valid timecode at the project's frame rate");

    // The next run that succeeds leaves no report behind.
    generator.generate(oldList, oldList, changes);
    EXPECT_FALSE(generator.lastFailure().isSet());
    EXPECT_EQ(generator.lastFailure().describe(), "");
}

TEST_F(DissolveTest, DataModelReturnsTheCodeAndKeepsTheReportOfTheFailedRun)
{
    DataModel model;
    std::vector<EventPtr> reversed = dissolve();
    reversed[1]->setTimecodes(test::tc("02:00:05:00"), test::tc("02:00:00:00"), test::tc("10:00:10:00"),
                              test::tc("10:00:15:00"));
    reversed[1]->setEdlFile("old.edl");
    for (const EventPtr& e : reversed)
        model.getOldList().addEvent(e);
    for (const EventPtr& e : dissolve())
        model.getNewList().addEvent(e);
    model.getChangeList().addEvent(event("EARLIER", "01:00:00:00", "01:00:01:00", "01:00:00:00", "01:00:01:00"));

    EXPECT_EQ(model.generateChangeEdl(), Result::OutOfRange);
    EXPECT_EQ(model.getChangeList().getSize(), 0u);
    EXPECT_EQ(model.lastGenerationFailure().stage, GenerationFailure::Stage::SplitOldTransition);
    EXPECT_EQ(model.lastGenerationFailure().event.edlFile, "old.edl");
}

TEST_F(ChangeEdlGeneratorTest, PlacementPastTheDayIsThrownNamingTheNewAndTheOldEvent)
{
    // Old speed 0.495, New 0.5: close enough to match. The shared 495
    // source frames take 1000 record frames, placed 10 frames into a New
    // event that ends on the last frame of the day.
    EventPtr oldSlow = event("A", "01:00:00:05", "01:00:20:00", "10:00:00:00", "10:00:40:00", 7);
    EventPtr newSlow = event("A", "01:00:00:00", "01:00:20:00", "23:59:19:24", "23:59:59:24", 9);
    EventList changes(EventList::ChangeKind);
    EXPECT_EQ(test::thrownCode([&] {
                  generator.generate(list(EventList::OldKind, {oldSlow}), list(EventList::NewKind, {newSlow}), changes);
              }),
              Result::OutOfRange);
    EXPECT_EQ(generator.lastFailure().stage, GenerationFailure::Stage::Match);
    EXPECT_EQ(generator.lastFailure().event.eventNumber, 9);
    EXPECT_EQ(generator.lastFailure().oldEvent.eventNumber, 7);
}

TEST_F(ChangeEdlGeneratorTest, NothingMatchesWithoutAKeyInTheOldEdl)
{
    EXPECT_EQ(generate({event("A", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00")},
                       {event("B", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00")})
                  .getSize(),
              0u);
    EXPECT_EQ(generate({}, {event("B", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00")}).getSize(),
              0u);
}

TEST_F(ChangeEdlGeneratorTest, ClipNameRuleMatchesUnnamedEventsBySourceAlone)
{
    generator.configure(MatchName::ClipName, {});
    EventPtr oldA = event("A", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00");
    EventPtr newB = event("B", "01:00:00:00", "01:00:10:00", "20:00:00:00", "20:00:10:00");
    EXPECT_EQ(describe(generate({oldA}, {newB})),
              (Lines{"B SRC 10:00:00:00-10:00:10:00 DST 20:00:00:00-20:00:10:00"}));
    newB->setClipName("shot 1");
    EXPECT_EQ(generate({oldA}, {newB}).getSize(), 0u);
}

TEST_F(ChangeEdlGeneratorTest, FlawedEventsTakeNoPartOnEitherSide)
{
    EventPtr flawedOld = event("A", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00");
    flawedOld->addState(EventState::BadRollName);
    EventPtr goodNew = event("A", "01:00:00:00", "01:00:10:00", "20:00:00:00", "20:00:10:00");
    EXPECT_EQ(generate({flawedOld}, {goodNew}).getSize(), 0u);

    EventPtr goodOld = event("A", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00");
    EventPtr flawedNew = event("A", "01:00:00:00", "01:00:10:00", "20:00:00:00", "20:00:10:00");
    flawedNew->addState(EventState::NotVideoEvent);
    EXPECT_EQ(generate({goodOld}, {flawedNew}).getSize(), 0u);
}

TEST_F(ChangeEdlGeneratorTest, InputsStayUntouchedAndEveryChangeEventIsNew)
{
    generator.configure(MatchName::RollName, {VfxPatternEntry("SH_", "", true)});
    EventPtr oldA = event("SH_001", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00", 1);
    const auto oldDissolve = dissolve();
    EventPtr newA = event("SH_002", "01:00:00:00", "01:00:10:00", "20:00:00:00", "20:00:10:00", 1);
    std::vector<EventPtr> oldEvents = {oldA, oldDissolve[0], oldDissolve[1]};
    std::vector<EventPtr> newEvents = {newA, oldDissolve[0], oldDissolve[1]};

    // A previous result is replaced whole.
    EventList changes(EventList::ChangeKind);
    changes.addEvent(event("OLD RESULT", "01:00:00:00", "01:00:01:00", "01:00:00:00", "01:00:01:00"));
    const EventList oldList = list(EventList::OldKind, oldEvents);
    const EventList newList = list(EventList::NewKind, newEvents);
    generator.generate(oldList, newList, changes);

    EXPECT_EQ(describe(changes), (Lines{
        "B SRC 10:00:10:00-10:00:15:00 DST 10:00:10:00-10:00:15:00",
        "SH_002 SRC 10:00:00:00-10:00:10:00 DST 20:00:00:00-20:00:10:00",
    }));
    EXPECT_TRUE(changes.getEvent(1)->isVfx()) << "the VFX rule made the key";
    EXPECT_FALSE(changes.getEvent(0)->isVfx());
    for (const EventPtr& e : changes.getEvents()) {
        EXPECT_FALSE(oldList.contains(e));
        EXPECT_FALSE(newList.contains(e));
    }
    EXPECT_EQ(oldList.getEvents(), oldEvents);
    EXPECT_EQ(newList.getEvents(), newEvents);
    EXPECT_FALSE(newA->isVfx());
    EXPECT_EQ(oldDissolve[1]->getTransitionType(), EventBase::Dissolve);
    EXPECT_EQ(describe(*oldDissolve[1]), "B SRC 02:00:00:00-02:00:05:00 DST 10:00:10:00-10:00:15:00");
}

TEST_F(ChangeEdlGeneratorTest, ConfigureTakesOnlyActiveFilledRowsAndRefusesBadCharacters)
{
    generator.configure(MatchName::RollName, {VfxPatternEntry("SH_", "", false), VfxPatternEntry("", "", true),
                                              VfxPatternEntry("VX_", "", true)});
    EXPECT_EQ(generator.getVfxFilter().normalize("SH_12"), "SH_12");
    EXPECT_EQ(generator.getVfxFilter().normalize("VX_12"), "VX_");

    EXPECT_EQ(test::thrownCode([&] { generator.configure(MatchName::ClipName, {VfxPatternEntry("SH/", "", true)}); }),
              Result::InvalidArgument)
        << "a slash accepted";
    // An inactive row is not checked at all.
    EXPECT_NO_THROW(generator.configure(MatchName::ClipName, {VfxPatternEntry("SH/", "", false)}));
}

} // namespace
} // namespace montala::core
