// The preview against the simulated host: the new arrangement built in the
// work area one day past the material, the tracks locked while it is shown,
// memos mirrored back to the old timeline, and the transport put back when
// it ends. The small session runs at 25 fps from 01:00:00:00 (3600 s); its
// material ends well inside the first day, so the work area starts at host
// time 86400 - 3600.

#include "HostRunFixture.h"

#include "sim/services/SimUser.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace montala::host::test {
namespace {

using util::Result;

class PreviewTest : public HostRunFixture {
protected:
    // The user's transport before the preview, host times.
    void setTransport()
    {
        hostProject->leftLocator = 2.0;
        hostProject->rightLocator = 8.0;
        hostProject->cycleLeft = 12.0;
        hostProject->cycleRight = 4.0;
        hostProject->cursor = 15.0;
    }

    Result::Type previewAll(bool showDestination)
    {
        const Result::Type asked = montala->preview(model().getChangeList(), 0, 0, showDestination);
        runIdle();
        return asked == Result::Ok ? montala->lastRun().result : asked;
    }

    bool locked(const std::string& name) { return track(name).isLocked(); }

    size_t eventsInWorkArea()
    {
        size_t count = 0;
        for (Track& each : active().getTracks())
            for (const TrackEvent& event : each.getEvents())
                count += event.getEnd() > 86400.0 - 3600.0 - 1.0 ? 1 : 0;
        return count;
    }
};

TEST_F(PreviewTest, TheNewArrangementIsShownWithTheTracksLockedButMemosOpen)
{
    startOn(smallSession());
    swapHalves();
    setTransport();
    montala->setPreviewActive(true);
    ASSERT_TRUE(montala->isPreviewActive());
    EXPECT_EQ(previewAll(true), Result::Ok);
    EXPECT_EQ(montala->lastRun().kind, RunSummary::Kind::Preview);
    EXPECT_EQ(undoTitle(), "Preview");

    // The work area plays the new cut: its first ten seconds are the old
    // second half.
    const double area = 86400.0;
    EXPECT_EQ(heard("DX", area + 3600.0 + 2.0), "t2.wav@7.00");
    EXPECT_EQ(heard("DX", area + 3610.0 + 2.0), "t1.wav@2.00");

    for (const char* name : {"DX", "FX", "Notes", "Picture", "Destination", "Insert"}) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(locked(name));
    }
    EXPECT_FALSE(locked("Memos"));

    // The cycle and cursor show the previewed stretch of the work area; the
    // locators keep their length and start a tenth of it early.
    EXPECT_DOUBLE_EQ(hostProject->cycleLeft, area);
    EXPECT_DOUBLE_EQ(hostProject->cycleRight, area + 20.0);
    EXPECT_DOUBLE_EQ(hostProject->cursor, area);
    EXPECT_NEAR(hostProject->leftLocator, area - 0.6, 1e-9);
    EXPECT_NEAR(hostProject->rightLocator, area + 5.4, 1e-9);

    // Showing the source instead leaves the tracks open for work. The locks
    // of the first preview were its own, not the user's: the second one
    // carries every track again, and its summary says so.
    EXPECT_EQ(previewAll(false), Result::Ok);
    EXPECT_FALSE(locked("DX"));
    EXPECT_EQ(heard("DX", area + 3600.0 + 2.0), "t2.wav@7.00");
    EXPECT_EQ(montala->lastRun().tracksTakingPart, (std::vector<std::string>{"DX", "FX", "Notes", "Picture"}));
    EXPECT_TRUE(montala->lastRun().tracksLeftOut.empty());
    EXPECT_DOUBLE_EQ(hostProject->cycleLeft, 0.0);
    EXPECT_DOUBLE_EQ(hostProject->cycleRight, 20.0);
}

TEST_F(PreviewTest, MemosAreShownInThePreviewMirroredToTheOldTimelineAndKeptByTheRun)
{
    startOn(sessionWithMemo());
    swapHalves();
    montala->setPreviewActive(true);
    ASSERT_EQ(previewAll(true), Result::Ok);
    // The memo at old 01:00:13:00 shows three seconds into the new cut.
    EXPECT_EQ(markerStarts("Memos", "louder"), (std::vector<double>{13.0, 86403.0}));

    // Five seconds into the new cut's second half lies 01:00:05:00 of the
    // old one. Writing there leaves the memo the user had alone.
    sim::SimUser user(*host);
    ASSERT_TRUE(user.addMarker(simTrack("Memos"), u"cut here", 86415.0, 86415.0));
    EXPECT_EQ(markerStarts("Memos", "cut here"), (std::vector<double>{5.0, 86415.0}));
    EXPECT_EQ(markerStarts("Memos", "louder"), (std::vector<double>{13.0, 86403.0}));
    // The memo shown in the preview is the old one's twin: moving it moves both.
    for (const auto& marker : simTrack("Memos").children())
        if (marker->get().start > 86400.0 && marker->get().name == u"louder") {
            ASSERT_TRUE(user.moveEvent(*marker, 86404.0));
        }
    EXPECT_EQ(markerStarts("Memos", "louder"), (std::vector<double>{14.0, 86404.0}));

    // Both stay when the preview ends and its work area goes, and the run
    // carries both to the new cut.
    montala->setPreviewActive(false);
    EXPECT_EQ(markerStarts("Memos", "cut here"), (std::vector<double>{5.0}));
    EXPECT_EQ(markerStarts("Memos", "louder"), (std::vector<double>{14.0}));
    EXPECT_EQ(conform(), Result::Ok);
    EXPECT_EQ(markerStarts("Memos", "cut here"), (std::vector<double>{15.0}));
    EXPECT_EQ(markerStarts("Memos", "louder"), (std::vector<double>{4.0}));
}

TEST_F(PreviewTest, EndingThePreviewPutsTheTransportBackAndClearsTheWorkArea)
{
    startOn(smallSession());
    swapHalves();
    setTransport();

    // With no preview running, turning it off touches nothing.
    montala->setPreviewActive(false);
    EXPECT_EQ(hostProject->cursor, 15.0);
    EXPECT_EQ(hostProject->cycleLeft, 12.0);

    montala->setPreviewActive(true);
    ASSERT_EQ(previewAll(true), Result::Ok);
    montala->setPreviewActive(false);

    EXPECT_FALSE(montala->isPreviewActive());
    EXPECT_EQ(undoTitle(), "End Preview");
    EXPECT_EQ(hostProject->leftLocator, 2.0);
    EXPECT_EQ(hostProject->rightLocator, 8.0);
    // The cycle comes back with its smaller edge first, and the cursor to
    // the old left locator, not to where it stood.
    EXPECT_EQ(hostProject->cycleLeft, 4.0);
    EXPECT_EQ(hostProject->cycleRight, 12.0);
    EXPECT_EQ(hostProject->cursor, 2.0);
    EXPECT_FALSE(locked("DX"));
    EXPECT_FALSE(locked("Destination"));
    EXPECT_FALSE(active().workArea().hasConformOffset());
    EXPECT_EQ(eventsInWorkArea(), 0u);
    EXPECT_EQ(pointsFrom(60.0), 0u);
    EXPECT_EQ(hostProject->get().end, 60.0) << "the project ends where it did";
    EXPECT_EQ(heard("DX", 3602.0), "t1.wav@2.00");

    // Deleting the range of a preview under way names its step so.
    montala->setPreviewActive(true);
    ASSERT_EQ(previewAll(true), Result::Ok);
    EXPECT_EQ(montala->deletePreview(), Result::Ok);
    EXPECT_EQ(undoTitle(), "Delete Preview Range");
    EXPECT_EQ(eventsInWorkArea(), 0u);
}

TEST_F(PreviewTest, TheNewCutsVideoIsShownInTheWorkAreaAndLeavesWithIt)
{
    startOn(smallSession());
    swapHalves();
    {
        core::ScopedFramerateProvider rate(&active());
        model().getVideoList().addEntry(
            core::VideoList::Entry("/media/old.mov", montala::test::tc("01:00:05:00"), montala::test::tc("00:00:10:00")));
    }
    montala->setPreviewActive(true);
    ASSERT_EQ(previewAll(true), Result::Ok);
    // Five seconds into the new cut, shifted into the work area.
    const double shift = active().workArea().getConformOffset();
    const std::vector<TrackEvent> shown = track("New Video").getEvents();
    ASSERT_EQ(shown.size(), 1u);
    EXPECT_DOUBLE_EQ(shown[0].getStart(), shift + 5.0);
    EXPECT_DOUBLE_EQ(shown[0].getEnd(), shift + 15.0);

    montala->setPreviewActive(false);
    EXPECT_TRUE(track("New Video").getEvents().empty());
}

TEST_F(PreviewTest, AProjectSavedDuringAPreviewReopensWithIt)
{
    startOn(smallSession());
    swapHalves();
    setTransport();
    montala->setPreviewActive(true);
    ASSERT_EQ(previewAll(true), Result::Ok);
    sim::SimUser(*host).save(*hostProject);
    const std::string during = saved(*hostProject);

    host->projectManager().closeAll();
    hostProject = open(during);
    ASSERT_NE(montala->getActiveProject(), nullptr);
    EXPECT_TRUE(montala->isPreviewActive());
    // The project knows again which tracks the preview locked.
    EXPECT_FALSE(active().getLockedTracks().empty());
    EXPECT_TRUE(locked("DX"));
    EXPECT_FALSE(locked("Memos"));

    // And it ends there as it would have before.
    montala->setPreviewActive(false);
    EXPECT_FALSE(locked("DX"));
    EXPECT_EQ(hostProject->cursor, 2.0);
    EXPECT_EQ(hostProject->cycleLeft, 4.0);
    EXPECT_EQ(eventsInWorkArea(), 0u);
}

} // namespace
} // namespace montala::host::test
