// The apply run from the request to the changed project, against the
// simulated host: what is heard where, undo and redo of the whole run, a
// cancel at several points, and a host that fails part way. The small
// session runs at 25 fps from 01:00:00:00; its first 20 seconds are re-cut
// with the halves swapped.

#include "HostRunFixture.h"

#include "sim/services/SimApplicationState.h"
#include "sim/services/SimUser.h"

#include <gtest/gtest.h>

#include <cmath>

namespace montala::host::test {
namespace {

using util::Result;

class ApplyRunTest : public HostRunFixture {
protected:
    // What DX and FX play at a few places of a stretch of the timeline.
    std::vector<std::string> heardFrom(double absoluteStart)
    {
        std::vector<std::string> sounds;
        for (double t : {0.0, 1.5, 4.0, 9.9})
            for (const char* track : {"DX", "FX"})
                sounds.push_back(heard(track, absoluteStart + t));
        return sounds;
    }
};

TEST_F(ApplyRunTest, EachPlaceOfTheNewCutPlaysWhatTheOldCutHadThere)
{
    startOn(smallSession());
    swapHalves();
    const std::vector<std::string> oldFirstHalf = heardFrom(3600.0);
    const std::vector<std::string> oldSecondHalf = heardFrom(3610.0);
    ASSERT_NE(oldFirstHalf, oldSecondHalf);

    EXPECT_EQ(conform(), Result::Ok);
    EXPECT_EQ(heardFrom(3600.0), oldSecondHalf);
    EXPECT_EQ(heardFrom(3610.0), oldFirstHalf);
    // Nothing was left in the work area, one day past the material.
    for (Track& track : active().getTracks())
        for (const TrackEvent& event : track.getEvents())
            EXPECT_LT(event.getEnd(), active().workArea().getConformOffset() - active().getProjectStart()) << track.getName();
    EXPECT_EQ(pointsFrom(60.0), 0u);
    EXPECT_EQ(hostProject->get().end, 60.0);

    EXPECT_EQ(undoTitle(), "Apply Montala");
    const RunSummary& run = montala->lastRun();
    EXPECT_EQ(run.kind, RunSummary::Kind::Apply);
    EXPECT_FALSE(run.incomplete);
    EXPECT_EQ(run.eventsApplied, 2u);
    EXPECT_EQ(run.tracksTakingPart, (std::vector<std::string>{"DX", "FX", "Notes", "Picture"}));
    EXPECT_TRUE(run.tracksLeftOut.empty());
    EXPECT_EQ(run.markersWritten.at(TrackType::Destination), 2u);

    // The host was told of the long run, and the progress bar did not run
    // past its end.
    EXPECT_EQ(host->applicationState().busyChanges(), (std::vector<bool>{true, false}));
    EXPECT_FALSE(host->progress().isVisible());
    EXPECT_LE(host->progress().position(), host->progress().total());
    EXPECT_GT(host->progress().position(), 0);
    EXPECT_FALSE(montala->isBusy());
}

TEST_F(ApplyRunTest, TheNewCutsVideosLieOnTheNewVideoTrackAtTheirPlaces)
{
    // The new cut's picture already on its track, from the start.
    std::string session = smallSession();
    const std::string picture = R"({"kind": "video", "name": "Picture")";
    session.replace(session.find(picture), 0, R"({"kind": "video", "name": "New Video", "attributes": {"Montala:VideoType": 8},
      "events": [{"kind": "video", "start": "01:00:00:00", "end": "01:00:30:00", "clip": 1, "offset": 0}]},
    )");
    startOn(session);
    swapHalves();
    const auto placed = [&] {
        std::vector<std::pair<double, double>> spans;
        for (const TrackEvent& event : track("New Video").getEvents())
            spans.emplace_back(event.getStart(), event.getEnd());
        return spans;
    };
    using Spans = std::vector<std::pair<double, double>>;

    // Without new videos the track keeps what it holds.
    ASSERT_EQ(conform(), Result::Ok);
    EXPECT_EQ(placed(), (Spans{{0.0, 30.0}}));

    {
        core::ScopedFramerateProvider rate(&active());
        model().getVideoList().addEntry(
            core::VideoList::Entry("/media/old.mov", montala::test::tc("01:00:05:00"), montala::test::tc("00:00:10:00")));
    }
    ASSERT_EQ(conform(), Result::Ok);
    EXPECT_EQ(placed(), (Spans{{5.0, 15.0}}));
}

TEST_F(ApplyRunTest, LockedAndUnselectedTracksKeepTheirOldArrangementAndAreReported)
{
    startOn(smallSession());
    swapHalves();
    sim::SimUser user(*host);
    ASSERT_TRUE(user.setLocked(simTrack("FX"), true));
    const std::vector<std::string> fxBefore = {heard("FX", 3605.0), heard("FX", 3612.0)};

    EXPECT_EQ(conform(), Result::Ok);
    EXPECT_EQ((std::vector<std::string>{heard("FX", 3605.0), heard("FX", 3612.0)}), fxBefore);
    const RunSummary& run = montala->lastRun();
    ASSERT_EQ(run.tracksLeftOut.size(), 1u);
    EXPECT_EQ(run.tracksLeftOut[0].name, "FX");
    EXPECT_EQ(run.tracksLeftOut[0].reason, RunSummary::LeftOut::Locked);

    // On selected tracks only, with none selected, no run starts.
    ASSERT_TRUE(undo());
    model().getSettings().setApplyTo(core::ApplyTo::SelectedTracks);
    EXPECT_EQ(montala->startConform(), Result::NoSelectedTracks);
    EXPECT_FALSE(montala->isRunPending());
    user.setSelected(simTrack("DX"), true);
    EXPECT_EQ(conform(), Result::Ok);
    EXPECT_EQ(montala->lastRun().tracksTakingPart, (std::vector<std::string>{"DX"}));
    EXPECT_EQ(montala->lastRun().tracksLeftOut.size(), 3u);

    // An empty Change EDL asks for nothing.
    ASSERT_TRUE(undo());
    model().getChangeList().clear();
    EXPECT_EQ(montala->startConform(), Result::EmptyChangeList);
    EXPECT_FALSE(montala->isRunPending());
}

TEST_F(ApplyRunTest, TheUsersMemosMoveWithThePictureAndComeBackWithUndo)
{
    startOn(sessionWithMemo());
    swapHalves();
    EXPECT_EQ(conform(), Result::Ok);
    // Old 01:00:13:00 lies at new 01:00:03:00.
    EXPECT_EQ(markerStarts("Memos", "louder"), (std::vector<double>{3.0}));
    ASSERT_TRUE(undo());
    EXPECT_EQ(markerStarts("Memos", "louder"), (std::vector<double>{13.0}));

    // A run on other tracks leaves an unselected Memos track as it is.
    model().getSettings().setApplyTo(core::ApplyTo::SelectedTracks);
    sim::SimUser(*host).setSelected(simTrack("DX"), true);
    EXPECT_EQ(conform(), Result::Ok);
    EXPECT_EQ(markerStarts("Memos", "louder"), (std::vector<double>{13.0}));
}

TEST_F(ApplyRunTest, AtAnOverhangAShotKeepsTheHeadOfItsOwnLine)
{
    // 23.976 fps. Line b starts on the second shot's first frame, and line a
    // of the first shot runs 8 frames over that cut. With an overhang of 12
    // frames, the second shot, now first, opens with line b.
    startOn(R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 24, "pullDown": true},
      "start": "01:00:00:00", "end": "01:00:10:00", "tracks": [{"kind": "audio", "name": "DX", "events": [
        {"kind": "audio", "name": "a", "start": "01:00:00:00", "end": "01:00:01:08", "file": "a.wav"},
        {"kind": "audio", "name": "b", "start": "01:00:01:00", "end": "01:00:03:00", "file": "b.wav"}]}]})");
    addChange(1, "01:00:01:00", "01:00:03:00", "01:00:00:00", "01:00:02:00");
    addChange(2, "01:00:00:00", "01:00:01:00", "01:00:02:00", "01:00:03:00");
    model().getSettings().setIncludeOverhanging(true);
    model().getSettings().setOverhangFrames(12);
    ASSERT_EQ(conform(), Result::Ok);
    const double newStart = hostProject->getProjectStart();
    EXPECT_EQ(heard("DX", newStart + 0.02), "b.wav@0.02");
    EXPECT_EQ(heard("DX", newStart + 0.3), "b.wav@0.30");
    EXPECT_EQ(heard("DX", newStart + 1.9), "b.wav@1.90");
}

TEST_F(ApplyRunTest, WhatLayOnAFrameLiesExactlyOnItsNewFrame)
{
    // The new arrangement is built a day away and moved home; nothing of
    // that trip may show in the positions. The cut lies on 01:00:07:17.
    startOn(sessionWithMemo());
    addChange(1, "01:00:07:17", "01:00:20:00", "01:00:00:00", "01:00:12:08");
    addChange(2, "01:00:00:00", "01:00:07:17", "01:00:12:08", "01:00:20:00");
    ASSERT_EQ(conform(), Result::Ok);
    for (sim::SimObject* each : hostProject->allTracks()) {
        std::vector<double> times;
        for (const auto& event : each->children())
            times.insert(times.end(), {event->get().start, event->get().end});
        for (const auto& curve : each->automation())
            for (const auto& point : curve->children())
                times.push_back(point->get().start);
        for (double time : times)
            EXPECT_EQ(time, std::round(time * 25.0) / 25.0) << Kelmar::String::utf16ToUtf8(each->get().name);
    }
}

TEST_F(ApplyRunTest, UndoGivesBackTheSessionByteForByteAndRedoTheAppliedOne)
{
    startOn(smallSession());
    swapHalves();
    model().getSettings().setCreateVirginTerritories(true);
    ASSERT_EQ(montala->startConform(), Result::Ok);
    const std::string before = saved(*hostProject);
    const std::vector<uint8_t> modelBefore = storedModel();
    runIdle();
    ASSERT_EQ(montala->lastRun().result, Result::Ok);
    const std::string after = saved(*hostProject);
    ASSERT_NE(after, before);

    ASSERT_TRUE(undo());
    EXPECT_EQ(saved(*hostProject), before);
    EXPECT_EQ(storedModel(), modelBefore);
    ASSERT_TRUE(redo());
    EXPECT_EQ(saved(*hostProject), after);
    ASSERT_TRUE(undo());
    EXPECT_EQ(saved(*hostProject), before);
}

TEST_F(ApplyRunTest, ACancelAtAnyPointEndsWithTheProjectAsBefore)
{
    startOn(smallSession());
    swapHalves();
    // Virgin territories and the detectors give the cancel more places to
    // be seen than between two cuts.
    model().getSettings().setCreateVirginTerritories(true);
    ASSERT_EQ(montala->startConform(), Result::Ok);
    const std::string before = saved(*hostProject);
    const size_t undoSteps = hostProject->undoCount();
    runIdle();
    ASSERT_TRUE(undo());
    const int64_t steps = host->progress().position();
    ASSERT_GT(steps, 4);

    for (int64_t cancelAt : {int64_t{0}, int64_t{2}, steps / 2, steps - 1}) {
        SCOPED_TRACE(cancelAt);
        host->progress().cancelAfter(cancelAt);
        EXPECT_EQ(conform(), Result::Cancelled);
        EXPECT_TRUE(montala->lastRun().undone);
        EXPECT_EQ(saved(*hostProject), before);
        EXPECT_EQ(hostProject->undoCount(), undoSteps);
        EXPECT_FALSE(host->progress().isVisible());
        EXPECT_FALSE(montala->isBusy());
    }
}

TEST_F(ApplyRunTest, AHostFailureOutsideTheConformClosesTheGroupAsIncomplete)
{
    startOn(smallSession());
    swapHalves();
    const std::vector<std::string> oldSecondHalf = heardFrom(3610.0);
    ASSERT_EQ(montala->startConform(), Result::Ok);
    const std::string before = saved(*hostProject);
    const std::vector<uint8_t> modelBefore = storedModel();

    host->failures().failCall("finishRange");
    runIdle();
    EXPECT_EQ(montala->lastRun().result, Result::HostCallFailed);
    EXPECT_TRUE(montala->lastRun().incomplete);
    EXPECT_EQ(undoTitle(), "Apply Montala (incomplete)");
    EXPECT_FALSE(host->isGroupOpen());
    EXPECT_FALSE(montala->isBusy());
    EXPECT_EQ(host->applicationState().busyChanges(), (std::vector<bool>{true, false}));
    // What was done stands, whole, and one undo takes all of it back, the
    // model with it.
    EXPECT_EQ(heardFrom(3600.0), oldSecondHalf);
    ASSERT_TRUE(undo());
    EXPECT_EQ(saved(*hostProject), before);
    EXPECT_EQ(storedModel(), modelBefore);

    // A failure inside the conform is its answer; the group keeps its name.
    host->failures().failCall("copyRangeOnTracks", 2);
    EXPECT_EQ(conform(), Result::HostCallFailed);
    EXPECT_FALSE(montala->lastRun().incomplete);
    EXPECT_EQ(undoTitle(), "Apply Montala");
    ASSERT_TRUE(undo());
    EXPECT_EQ(saved(*hostProject), before);
}

} // namespace
} // namespace montala::host::test
