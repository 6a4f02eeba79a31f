#include "ConformFixture.h"
#include "ConformScene.h"

#include "util/Result.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

using namespace montala::core;
using montala::util::Result;

namespace montala::test {
namespace {

using Calls = std::vector<std::string>;

// Two tracks. Two Change events put 36000-36004 at 36010 and 36020-36024
// right behind it at 36014. Dia 1 holds "A" (35998-36003) and "B"
// (36021-36030). The New EDL asks for picture up to 36020, so 36018-36020
// is an insert.
class MontalerBaseTest : public ConformFixture {
protected:
    MontalerBaseTest() { setUpScene(host); }

    void setUpScene(FakeMontaler& scene)
    {
        scene.addTrack("Dia 1").clip("A", 35998.0, 36003.0).clip("B", 36021.0, 36030.0);
        scene.addTrack("FX 1");
        scene.newList.addEvent(event("01:00:00:00", "01:00:10:00", "10:00:10:00", "10:00:20:00", "N001"));
        scene.setProgress(&progress);
    }

    MontalerBaseTest& withScene()
    {
        changes.addEvent(move("10:00:00:00", "10:00:04:00", "10:00:10:00"));
        changes.addEvent(move("10:00:20:00", "10:00:24:00", "10:00:14:00"));
        return *this;
    }

    static void offExceptInsertsAndTransitions(Settings& settings)
    {
        settings.setCreateSnippetMarkers(false);
        settings.setCreateAutomationWarningMarkers(false);
        settings.setCreateOverlapMarkers(false);
    }

    FakeTrack& dia1() { return host.tracks[0]; }
};

TEST_F(MontalerBaseTest, ConformBuildsTheNewCutInTheWorkAreaMarksItAndMovesItHome)
{
    withScene();
    ASSERT_EQ(host.conform(changes), Result::Ok);

    EXPECT_EQ(host.calls, (Calls{"clearWorkArea", "createCut", "createCut", "getSnippetContext", "applyCuts",
                                 "applyCut", "applyCut", "getInformationContext", "generateMarkers", "complete"}));
    // The part of A after the edit, then the head of B.
    EXPECT_EQ(dia1().clips(), (std::vector<Clip>{{"A", 36010.0, 36013.0, 2.0}, {"B", 36015.0, 36018.0, 0.0}}));
    EXPECT_TRUE(host.tracks[1].clips().empty());
    ASSERT_EQ(host.markers.size(), 1u);
    EXPECT_EQ(host.markers[0].text, "Insert: N001");
    EXPECT_DOUBLE_EQ(host.markers[0].start, 36018.0);
    EXPECT_DOUBLE_EQ(host.markers[0].end, 36020.0);
}

TEST_F(MontalerBaseTest, PreviewBuildsAndMarksButLeavesTheWorkAreaOpen)
{
    withScene();
    ASSERT_EQ(host.preview(changes, 0, 0, true), Result::Ok);
    EXPECT_EQ(host.calls, (Calls{"clearWorkArea", "createCut", "createCut", "getSnippetContext", "applyCuts",
                                 "applyCut", "applyCut", "getInformationContext", "generateMarkers"}));
    EXPECT_EQ(dia1().clips().size(), 2u) << "the old arrangement is still at home";
    EXPECT_EQ(dia1().work, (std::vector<Clip>{{"A", 36010.0, 36013.0, 2.0}, {"B", 36015.0, 36018.0, 0.0}}));
    EXPECT_EQ(std::count(host.calls.begin(), host.calls.end(), "generateMarkers"), 1);
    EXPECT_TRUE(host.markers.empty()) << "the insert begins where the previewed stretch ends";

    FakeMontaler empty;
    setUpScene(empty);
    ASSERT_EQ(empty.preview(EventList(EventList::ChangeKind), 0, 0, false), Result::Ok);
    EXPECT_EQ(empty.calls, (Calls{"clearWorkArea", "getSnippetContext", "applyCuts"}))
        << "an empty preview collects nothing and writes no markers";
}

TEST_F(MontalerBaseTest, AFailingSlotStopsTheRunWithItsCode)
{
    struct Row {
        const char* slot;
        int from;
        Result::Type code;
    };
    const Row rows[] = {
        {"clearWorkArea", 1, Result::NoProject},       {"createCut", 2, Result::HostCallFailed},
        {"getSnippetContext", 1, Result::NoProject},   {"applyCuts", 1, Result::HostCallFailed},
        {"applyCut", 2, Result::HostCallFailed},       {"getInformationContext", 1, Result::HostCallFailed},
        {"generateMarkers", 1, Result::InvalidArgument}, {"complete", 1, Result::HostCallFailed},
    };
    withScene();
    for (const Row& row : rows) {
        for (const bool isPreview : {false, true}) {
            if (isPreview && std::string(row.slot) == "complete")
                continue;
            SCOPED_TRACE(std::string(row.slot) + (isPreview ? " in a preview" : " in a run"));
            FakeMontaler scene;
            setUpScene(scene);
            scene.fail(row.slot, row.code, row.from);
            const Result::Type result = isPreview ? scene.preview(changes, 0, 0, false) : scene.conform(changes);
            EXPECT_EQ(result, row.code);
            ASSERT_FALSE(scene.calls.empty());
            EXPECT_EQ(scene.calls.back(), row.slot) << "nothing runs after the failure";
        }
    }
    // Cuts before the failing one stay applied: the host's undo takes them back.
    FakeMontaler scene;
    setUpScene(scene);
    scene.fail("applyCut", Result::HostCallFailed, 2);
    scene.conform(changes);
    EXPECT_EQ(scene.tracks[0].work.size(), 1u);
}

TEST_F(MontalerBaseTest, ACancelSeenInsideApplyCutEndsTheRunCancelled)
{
    withScene();
    progress.cancelAfter = 2; // after the two pieces of the first cut
    EXPECT_EQ(host.conform(changes), Result::Cancelled);
    EXPECT_EQ(host.calls.back(), "applyCut");
    EXPECT_EQ(std::count(host.calls.begin(), host.calls.end(), "applyCut"), 2);
    EXPECT_TRUE(host.markers.empty());
}

TEST_F(MontalerBaseTest, ACancelBetweenDetectorStepsEndsTheRunBeforeAnyMarker)
{
    withScene();
    // 4 steps of cutting (the host's), 3 for inserts, 3 for transitions, then
    // the first step of the snippet detector sees the cancel.
    progress.cancelAfter = 11;
    EXPECT_EQ(host.conform(changes), Result::Cancelled);
    EXPECT_EQ(progress.details, (std::vector<std::u16string>{u"Insert Markers", u"Dissolve/Wipe Markers",
                                                             u"Audio Snippet Markers"}));
    EXPECT_EQ(host.calls.back(), "getInformationContext");
    EXPECT_TRUE(host.markers.empty());
}

TEST_F(MontalerBaseTest, EventsWithoutAPlaceAndEmptyListsAreCutByNoOne)
{
    ASSERT_EQ(host.conform(changes), Result::Ok);
    EXPECT_EQ(host.calls, (Calls{"clearWorkArea", "getSnippetContext", "applyCuts", "getInformationContext",
                                 "generateMarkers", "complete"}))
        << "an empty list still completes";
    EXPECT_TRUE(dia1().clips().empty()) << "and leaves an empty arrangement";

    FakeMontaler scene;
    setUpScene(scene);
    scene.newList.clear();
    changes.addEvent(event("10:00:00:30", "10:00:04:00", "10:00:10:00", "10:00:14:00"));
    auto flawed = move("10:00:20:00", "10:00:24:00", "10:00:14:00");
    flawed->addState(EventState::BadRollName);
    changes.addEvent(flawed);
    ASSERT_EQ(scene.conform(changes), Result::Ok);
    EXPECT_EQ(std::count(scene.calls.begin(), scene.calls.end(), "createCut"), 1)
        << "the invalid timecode is skipped; a bad roll name is the user's word";
    EXPECT_EQ(scene.tracks[0].clips(), (std::vector<Clip>{{"B", 36015.0, 36018.0, 0.0}}));
    EXPECT_TRUE(scene.markers.empty());
}

TEST_F(MontalerBaseTest, WithEveryTrackLockedTheCutsAreEmptyAndTheRunStillCompletes)
{
    withScene();
    for (FakeTrack& track : host.tracks)
        track.locked = true;
    ASSERT_EQ(host.conform(changes), Result::Ok);
    EXPECT_EQ(host.calls.back(), "complete");
    EXPECT_EQ(progress.details.size(), 5u) << "every detector ran";
    EXPECT_TRUE(dia1().clips().empty()) << "nothing was cut";
    ASSERT_EQ(host.markers.size(), 1u) << "the insert comes from the lists alone";
    EXPECT_EQ(host.markers[0].text, "Insert: N001");

    FakeMontaler scene;
    setUpScene(scene);
    scene.tracks[0].locked = true;
    scene.tracks[1].locked = true;
    EXPECT_EQ(scene.preview(changes, 0, 1, false), Result::Ok);
}

TEST_F(MontalerBaseTest, WithEveryMarkerSettingOffTheMarkersAreWrittenFromAnEmptyList)
{
    withScene();
    offExceptInsertsAndTransitions(host.settings);
    host.settings.setCreateInsertMarkers(false);
    host.settings.setCreateTransitionMarkers(false);
    ASSERT_EQ(host.conform(changes), Result::Ok);
    EXPECT_TRUE(host.markers.empty());
    EXPECT_EQ(std::count(host.calls.begin(), host.calls.end(), "generateMarkers"), 1);
    EXPECT_TRUE(progress.details.empty());
}

TEST_F(MontalerBaseTest, PreviewKeepsOnlyEntriesThatReachIntoItsRange)
{
    // The previewed stretch runs from S = 36002.0 to E = 36004.0 with a hole
    // at 36003.0-36003.4.
    offExceptInsertsAndTransitions(host.settings);
    host.newList.clear();
    changes.addEvent(move("09:00:00:00", "09:00:01:00", "10:00:02:00"));
    changes.addEvent(move("09:00:01:10", "09:00:02:00", "10:00:03:10"));
    host.newList.addEvent(event("01:00:00:00", "01:00:01:00", "10:00:00:00", "10:00:01:00", "BEFORE"));
    host.newList.addEvent(event("01:00:00:00", "01:00:02:00", "10:00:00:00", "10:00:02:00", "ENDS_AT_S"));
    host.newList.addEvent(event("01:00:00:00", "01:00:02:00", "10:00:02:00", "10:00:04:00", "INSIDE"));
    host.newList.addEvent(event("01:00:00:00", "01:00:02:00", "10:00:04:00", "10:00:06:00", "STARTS_AT_E"));
    auto dissolve = event("01:00:00:00", "01:00:00:15", "10:00:01:20", "10:00:02:10", "OVER_S");
    dissolve->setEventNumber(5);
    dissolve->setTransitionType(EventBase::Dissolve);
    dissolve->setTransitionDuration(25);
    host.newList.addEvent(dissolve);

    ASSERT_EQ(host.preview(changes, 0, 0, false), Result::Ok);
    ASSERT_EQ(host.markers.size(), 2u);
    EXPECT_EQ(host.markers[0].text, "Insert: INSIDE");
    EXPECT_NEAR(host.markers[0].start, 36003.0, 1e-6);
    EXPECT_NEAR(host.markers[0].end, 36003.4, 1e-6);
    EXPECT_EQ(host.markers[1].text, "D 5 OVER_S") << "reaches over S";
    EXPECT_NEAR(host.markers[1].start, 36001.8, 1e-6);
    EXPECT_NEAR(host.markers[1].end, 36002.8, 1e-6);
}

TEST_F(MontalerBaseTest, CountStepsCoversWhatTheDetectorsAdvance)
{
    withScene();
    EXPECT_EQ(host.countSteps(2, host.settings, 2), 3 + 3 + 2 * 2 + 2 * 2 + 2);
    ASSERT_EQ(host.conform(changes), Result::Ok);
    EXPECT_EQ(progress.advancedUnder[u"Insert Markers"], 3);
    EXPECT_EQ(progress.advancedUnder[u"Dissolve/Wipe Markers"], 3);
    EXPECT_EQ(progress.advancedUnder[u"Audio Snippet Markers"], 4) << "each piece";
    EXPECT_EQ(progress.advancedUnder[u"Automation Warning Markers"], 4) << "each cut, the last one too";
    EXPECT_EQ(progress.advancedUnder[u"Overlap Markers"], 2) << "each cut, the last one too";
    EXPECT_EQ(progress.advanced - 4, 16) << "the detectors' share is what was counted";

    Settings some;
    some.setCreateInsertMarkers(false);
    some.setCreateTransitionMarkers(false);
    some.setCreateAutomationWarningMarkers(false);
    EXPECT_EQ(host.countSteps(1000, some, 32), 1000 * 32 + 1000);
}

TEST_F(MontalerBaseTest, AShuffledReelConformsToItsKnownMarkersAndCountsEveryStep)
{
    // 200 stretches of 4 s in shuffled order on 24 tracks. Slot s of the new
    // timeline begins at 36000 + 4 s + s / 10: every tenth slot is followed
    // by the second of picture that no Change event fills. On tracks 21 to
    // 24 some edits fall just behind the start of a clip, whose head the
    // snippet rule then draws in over the piece before.
    ShuffledReel reel(200, 24);
    reel.host.settings.setSnippetMarkerFrames(5);
    reel.host.setProgress(&progress);
    ASSERT_EQ(reel.host.conform(reel.changes), Result::Ok);

    std::map<InformationKind, int> kinds;
    std::set<double> insertStarts;
    for (const InformationEntry& marker : reel.host.markers) {
        ++kinds[marker.kind];
        if (marker.kind != InformationKind::Insert)
            continue;
        EXPECT_NEAR(marker.end - marker.start, 1.0, 1e-6) << marker.text;
        insertStarts.insert(marker.start);
    }
    std::set<double> expectedInserts;
    for (int slot = 9; slot < 200; slot += 10)
        expectedInserts.insert(ShuffledReel::firstSecond + 4.0 * slot + slot / 10 + 4.0);
    EXPECT_EQ(insertStarts, expectedInserts);
    // The snippet rule has drawn every short bit in, and every dissolve lies
    // inside the stretch that carries it, so neither leaves a marker.
    EXPECT_EQ(kinds, (std::map<InformationKind, int>{{InformationKind::Insert, 20},
                                                     {InformationKind::AutomationWarning, 179},
                                                     {InformationKind::Overlap, 49}}));
    EXPECT_EQ(progress.advanced, 200 * 24 + reel.host.countSteps(200, reel.host.settings, 24))
        << "the pieces applied and what the detectors were counted for";
}

} // namespace
} // namespace montala::test
