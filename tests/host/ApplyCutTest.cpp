// A run's work on the tracks, against the simulated host: one cut applied
// and moved home, the markers it leaves, and automation held through the
// gaps between cuts. The small session runs at 25 fps from 01:00:00:00.

#include "HostFixture.h"
#include "support/ModelFixture.h"

#include "core/conform/CutList.h"
#include "host/CutEvent.h"
#include "sim/edit/SimRangeEditor.h"

#include "kelmar/base/IObjectIterator.h"

#include <gtest/gtest.h>

namespace montala::host::test {
namespace {

using util::Result;

class ApplyCutTest : public HostFixture {
protected:
    core::EventPtr event(int number, const char* srcIn, const char* srcOut, const char* dstIn, const char* dstOut)
    {
        core::ScopedFramerateProvider provider(project.get());
        core::EventPtr made = montala::test::makeEvent("REEL" + std::to_string(number), srcIn, srcOut, dstIn, dstOut);
        made->setEventNumber(number);
        return made;
    }

    // Every event of every track that lies in the work area.
    size_t eventsInWorkArea()
    {
        const double workArea = project->workArea().getConformOffset() - project->getProjectStart();
        size_t count = 0;
        for (Track& each : project->getTracks())
            for (const TrackEvent& e : each.getEvents())
                count += e.getEnd() > workArea - 1.0 ? 1 : 0;
        return count;
    }

    sim::SimObject& volumeOf(const std::string& trackName)
    {
        Kelmar::IPtr<Kelmar::IObjectIterator> tracks = Kelmar::owned(simTrack(trackName).getAutomationTracks());
        Kelmar::IPtr<Kelmar::IProjectObject> first = Kelmar::owned(tracks->next());
        return *dynamic_cast<sim::SimObject*>(first.get());
    }
};

TEST_F(ApplyCutTest, OneCutCarriesTheOldSoundToItsNewPlaceAndMarksIt)
{
    openProject(smallSession());
    // The second half of the old cut now opens the film. FX is locked and
    // takes no part.
    track("FX").setLocked(true);
    const double times[] = {0.0, 1.5, 4.0, 9.9};
    std::vector<std::string> oldDx, oldFx;
    for (double t : times) {
        oldDx.push_back(heard("DX", 3610.0 + t));
        oldFx.push_back(heard("FX", 3600.0 + t));
    }

    project->workArea().computeConformOffset();
    project->setCaching(true);
    Kelmar::IProjectEdit& run = beginEdit();
    project->ownTracks().createFolderAndMarkers(run, project->getDataModel().getSettings());
    ConformRun steps(*project, run);
    core::CutPtr cut = steps.createCut(event(1, "01:00:10:00", "01:00:20:00", "01:00:00:00", "01:00:10:00"));
    // DX, Notes, Picture and the user's Memos; not FX, nor the tracks the
    // run writes.
    EXPECT_EQ(cut->getPieces().size(), 4u);
    steps.applyCut(*cut);
    steps.complete();
    endEdit();
    project->setCaching(false);

    for (size_t i = 0; i < std::size(times); ++i) {
        SCOPED_TRACE(times[i]);
        EXPECT_EQ(heard("DX", 3600.0 + times[i]), oldDx[i]);
        EXPECT_EQ(heard("FX", 3600.0 + times[i]), oldFx[i]);
    }
    EXPECT_EQ(heard("DX", 3612.0), "-");
    EXPECT_EQ(eventsInWorkArea(), 0u);

    // The user's marker moved with its stretch: "hit" at 12 s is now at 2 s.
    bool hitMoved = false;
    for (const TrackEvent& marker : track("Notes").getEvents())
        hitMoved |= marker.getName() == "hit" && marker.getStart() == 2.0;
    EXPECT_TRUE(hitMoved);

    // The destination marker names the event and carries its reel.
    Track destination = project->getTracks("marker").back();
    std::vector<TrackEvent> written;
    for (Track& candidate : project->getTracks("marker"))
        if (candidate.getName() == "Destination")
            written = candidate.getEvents();
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0].getName(), "Event: 1 - REEL1 ");
    EXPECT_TRUE(written[0].isRange());
    EXPECT_EQ(written[0].getStart(), 0.0);
    EXPECT_EQ(written[0].getEnd(), 10.0);
    Kelmar::FVariant reel;
    written[0].getObject()->getAttribute("User:STR_MAReel", reel);
    ASSERT_NE(reel.getString8(), nullptr);
    EXPECT_STREQ(reel.getString8(), "REEL1");
}

TEST_F(ApplyCutTest, MarkerLengthDecidesPointOrRange)
{
    openProject(smallSession());
    Kelmar::IProjectEdit& run = beginEdit();
    Track notes = track("Notes");
    project->ownTracks().writeMarker(run, &notes, "short", "", {3630.0}, {3630.01}, 7);
    project->ownTracks().writeMarker(run, &notes, "long", "", {3640.0}, {3640.02}, 0);
    EXPECT_EQ(montala::test::thrownCode([&] { project->ownTracks().writeMarker(run, nullptr, "x", "", {0.0}, {1.0}, 0); }),
              Result::NotInitialized);
    endEdit();

    int found = 0;
    for (const TrackEvent& marker : notes.getEvents()) {
        int64_t id = 0;
        if (marker.getName() == "short") {
            ++found;
            EXPECT_FALSE(marker.isRange());
            EXPECT_EQ(marker.getStart(), 30.0);
            EXPECT_TRUE(marker.getUserId(id));
            EXPECT_EQ(id, 7);
        } else if (marker.getName() == "long") {
            ++found;
            EXPECT_TRUE(marker.isRange());
            EXPECT_FALSE(marker.getUserId(id));
        }
    }
    EXPECT_EQ(found, 2);
}

TEST_F(ApplyCutTest, AutomationHoldsThroughAGapButNotThroughOneOfExactlyOneHundredth)
{
    openProject(smallSession());
    project->workArea().computeConformOffset();
    project->getDataModel().getSettings().setCreateDestinationMarkers(false);
    // Host time of the new timeline's 01:00:00:00 in the work area.
    const double workArea = project->workArea().getConformOffset();

    // Two stretches of the ramp, with a second of nothing between them on
    // the new timeline: 01:00:05:00 to 01:00:06:00.
    Kelmar::IProjectEdit& run = beginEdit();
    ConformRun steps(*project, run);
    core::CutList cuts;
    cuts.append(steps.createCut(event(1, "01:00:02:00", "01:00:07:00", "01:00:00:00", "01:00:05:00")));
    cuts.append(steps.createCut(event(2, "01:00:12:00", "01:00:16:00", "01:00:06:00", "01:00:10:00")));
    for (size_t i = 0; i < cuts.size(); ++i)
        steps.applyCut(*cuts.getCut(i));
    project->workArea().fillVirginTerritories(run, cuts, nullptr);
    endEdit();

    // At the gap's start the ramp stood at 7/20; it holds there until the
    // second stretch begins with 12/20.
    sim::SimObject& volume = volumeOf("FX");
    EXPECT_NEAR(*sim::SimRangeEditor::valueAt(volume, workArea + 5.0), 0.35, 1e-6);
    EXPECT_NEAR(*sim::SimRangeEditor::valueAt(volume, workArea + 5.5), 0.35, 1e-6);
    EXPECT_NEAR(*sim::SimRangeEditor::valueAt(volume, workArea + 6.0), 0.6, 1e-6);

    // The same pair of cuts with the pieces only 0.01 s apart: no bridge.
    const size_t pointsBefore = volume.children().size();
    for (const core::CutEventPtr& piece : cuts.getCut(1)->getPieces())
        piece->setDstStart(cuts.getCut(0)->getPieces()[0]->getDstEnd() + 0.01);
    Kelmar::IProjectEdit& again = beginEdit();
    project->workArea().fillVirginTerritories(again, cuts, nullptr);
    endEdit();
    EXPECT_EQ(volume.children().size(), pointsBefore);
}

} // namespace
} // namespace montala::host::test
