// The work of a run and a preview on the tracks, against the simulated host:
// moving the new arrangement home, closing the work area, locking, growing
// the project, markers of the detectors, the memo markers of a preview and
// the new video track. The small session runs at 25 fps from 01:00:00:00
// (3600 s absolute); DX has take 1 on [0, 10] s and take 2 on [10, 20] s.

#include "HostFixture.h"
#include "support/ModelFixture.h"

#include "host/video/VideoTrackHandler.h"
#include "core/conform/InformationEntry.h"

#include "sim/services/SimUser.h"

#include "kelmar/edit/IEditContext.h"
#include "kelmar/base/IObjectList.h"

#include <gtest/gtest.h>

#include <map>

namespace montala::host::test {
namespace {

using util::Result;

class ProjectOperationsTest : public HostFixture {
protected:
    // The small session with its work area one day on.
    void openWithOffset()
    {
        openProject(smallSession());
        project->workArea().computeConformOffset();
        ASSERT_DOUBLE_EQ(project->workArea().getConformOffset(), 86400.0);
    }

    // What a preview run locks when it ends: the user's tracks it took.
    void lockWhatAPreviewShows()
    {
        project->setPreviewLocks(TakingPart(*project, project->getDataModel().getSettings()).usersTracks());
    }

    Kelmar::IPtr<Kelmar::IObjectList> listOf(std::initializer_list<const char*> names)
    {
        void* made = nullptr;
        host->getService(Kelmar::IObjectList::iid, &made);
        auto list = Kelmar::IPtr<Kelmar::IObjectList>::adopt(static_cast<Kelmar::IObjectList*>(made));
        for (const char* name : names)
            list->add(dynamic_cast<Kelmar::ITrack*>(&simTrack(name)));
        return list;
    }

    // Events of any track that reach into the work area.
    size_t eventsInWorkArea()
    {
        const double workArea = project->workArea().getConformOffset() - project->getProjectStart();
        size_t count = 0;
        for (Track& each : project->getTracks())
            for (const TrackEvent& e : each.getEvents())
                count += e.getEnd() > workArea ? 1 : 0;
        return count;
    }

    Track* byName(std::vector<Track>& tracks, const std::string& name)
    {
        for (Track& each : tracks)
            if (each.getName() == name)
                return &each;
        return nullptr;
    }

    std::vector<std::string> markerNames(Track& markerTrack)
    {
        std::vector<std::string> names;
        for (const TrackEvent& marker : markerTrack.getEvents())
            names.push_back(marker.getName());
        return names;
    }
};

TEST_F(ProjectOperationsTest, MovingHomeLeavesNothingInTheWorkAreaNorOfTheOldArrangement)
{
    openWithOffset();
    const double offset = project->workArea().getConformOffset();
    std::vector<std::string> firstHalf, secondHalf, oldFx;
    for (double t : {0.5, 4.0, 9.5}) {
        firstHalf.push_back(heard("DX", 3600.0 + t));
        secondHalf.push_back(heard("DX", 3610.0 + t));
        oldFx.push_back(heard("FX", 3600.0 + t));
    }

    // The new cut swaps the two takes of DX; built in the work area.
    Kelmar::IProjectEdit& run = beginEdit();
    project->workArea().copyRange(run, {3610.0}, {3620.0}, {offset + 3600.0}, listOf({"DX"}).get());
    project->workArea().copyRange(run, {3600.0}, {3610.0}, {offset + 3610.0}, listOf({"DX"}).get());
    ASSERT_EQ(eventsInWorkArea(), 2u);
    std::vector<Track> dxOnly{track("DX")};
    project->workArea().moveBack(run, {offset}, {0.0}, offset, dxOnly);
    endEdit();

    EXPECT_EQ(eventsInWorkArea(), 0u);
    const double times[] = {0.5, 4.0, 9.5};
    for (size_t i = 0; i < std::size(times); ++i) {
        SCOPED_TRACE(times[i]);
        EXPECT_EQ(heard("DX", 3600.0 + times[i]), secondHalf[i]);
        EXPECT_EQ(heard("DX", 3610.0 + times[i]), firstHalf[i]);
        // FX took no part: its old arrangement stays.
        EXPECT_EQ(heard("FX", 3600.0 + times[i]), oldFx[i]);
    }
    // Only the two moved pieces are left on DX: nothing of the old takes lies
    // beneath them.
    EXPECT_EQ(track("DX").getEvents().size(), 2u);
}

TEST_F(ProjectOperationsTest, ClearingTheWorkAreaUnlocksAndKeepsHome)
{
    openWithOffset();
    const double offset = project->workArea().getConformOffset();
    const std::string doorBefore = heard("FX", 3606.0);

    // A preview's state: its pieces in the work area, the tracks it took
    // locked.
    Kelmar::IProjectEdit& preview = beginEdit();
    project->workArea().copyRange(preview, {3600.0}, {3620.0}, {offset + 3600.0}, listOf({"DX", "FX", "Notes"}).get());
    endEdit();
    lockWhatAPreviewShows();
    project->setTracksLocked(true);
    ASSERT_TRUE(track("DX").isLocked());
    ASSERT_GT(eventsInWorkArea(), 0u);

    Kelmar::IProjectEdit& close = beginEdit();
    project->clearWorkArea(close);
    endEdit();

    EXPECT_EQ(eventsInWorkArea(), 0u);
    for (const char* name : {"DX", "FX", "Notes", "Picture"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(track(name).isLocked());
        EXPECT_FALSE(track(name).hasLockState());
    }
    EXPECT_EQ(heard("FX", 3606.0), doorBefore);
    EXPECT_EQ(track("DX").getEvents().size(), 2u);
    EXPECT_EQ(track("Notes").getEvents().size(), 2u);
}

TEST_F(ProjectOperationsTest, PreviewLocksWhatTookPartAndMontalasTracksButNeverMemos)
{
    openWithOffset();
    project->getDataModel().getVideoList().addEntry(
        core::VideoList::Entry("/media/new.mov", core::Timecode(1, 0, 0, 0), core::Timecode(0, 0, 10, 0)));
    Kelmar::IProjectEdit& run = beginEdit();
    project->ownTracks().createFolderAndMarkers(run, project->getDataModel().getSettings());
    project->createVideoTrack(run);
    endEdit();
    // The user locked FX himself: it takes no part, and the preview leaves
    // it to him.
    sim::SimUser(*host).setLocked(simTrack("FX"), true);

    lockWhatAPreviewShows();
    std::vector<std::string> collected;
    for (const Track& each : project->getLockedTracks())
        collected.push_back(const_cast<Track&>(each).getName());
    EXPECT_EQ(collected, (std::vector<std::string>{"DX", "Notes", "Picture"}));

    project->setTracksLocked(true);
    std::vector<Track> markers = project->getTracks("marker");
    for (const char* name : {"Destination", "Insert", "Dissolve/Wipe", "Automation Warning", "Audio Snippet",
                             "Overlap"}) {
        SCOPED_TRACE(name);
        Track* found = byName(markers, name);
        ASSERT_NE(found, nullptr);
        EXPECT_TRUE(found->isLocked());
    }
    ASSERT_NE(byName(markers, "Memos"), nullptr);
    EXPECT_FALSE(byName(markers, "Memos")->isLocked());
    std::vector<Track> videos = project->getTracks("video");
    ASSERT_NE(byName(videos, "New Video"), nullptr);
    EXPECT_TRUE(byName(videos, "New Video")->isLocked());
    EXPECT_TRUE(track("DX").isLocked());
    EXPECT_TRUE(track("DX").hasLockState());

    // Unlocking gives back every one the preview locked, and only those.
    project->setTracksLocked(false);
    for (const char* name : {"DX", "Notes", "Picture"})
        EXPECT_FALSE(track(name).isLocked()) << name;
    EXPECT_TRUE(track("FX").isLocked());
    markers = project->getTracks("marker");
    EXPECT_FALSE(byName(markers, "Destination")->isLocked());

    // With a run on selected tracks only the selected one is collected.
    project->getDataModel().getSettings().setApplyTo(core::ApplyTo::SelectedTracks);
    sim::SimUser(*host).setSelected(simTrack("DX"), true);
    lockWhatAPreviewShows();
    ASSERT_EQ(project->getLockedTracks().size(), 1u);
    EXPECT_TRUE(project->getLockedTracks()[0].sameTrack(track("DX")));
}

TEST_F(ProjectOperationsTest, PreviewGrowsTheProjectOneDayPastTheWorkArea)
{
    openWithOffset();
    const double start = project->getProjectStart();
    EXPECT_DOUBLE_EQ(project->getProjectEnd(), start + 60.0);

    // Without a preview the project stays as it is.
    project->workArea().extendProjectEnd(false);
    EXPECT_DOUBLE_EQ(project->getProjectEnd(), start + 60.0);

    // Material ends within the first day: the project reaches a whole day
    // past the work area's start.
    project->getDataModel().setPreviewActive(true);
    project->workArea().extendProjectEnd(false);
    EXPECT_DOUBLE_EQ(project->getProjectEnd(), 2 * 86400.0);
    // Long enough already: nothing changes, not even to shrink it.
    project->workArea().extendProjectEnd(true);
    EXPECT_DOUBLE_EQ(project->getProjectEnd(), 2 * 86400.0);
}

TEST_F(ProjectOperationsTest, DetectorMarkersLandOnTheirTracksInTheWorkArea)
{
    openWithOffset();
    const double offset = project->workArea().getConformOffset();
    project->getDataModel().getSettings().setCreateSnippetMarkers(false);
    Kelmar::IProjectEdit& run = beginEdit();
    project->ownTracks().createFolderAndMarkers(run, project->getDataModel().getSettings());
    const std::vector<core::InformationEntry> entries = {
        {3602.0, 3604.0, "Insert REEL7", core::InformationKind::Insert},
        {3605.0, 3605.0, "Overlap on DX", core::InformationKind::Overlap},
        {3606.0, 3607.0, "Dissolve", core::InformationKind::Transition},
    };
    MontalaTracks& own = project->ownTracks();
    MontalaTracks::MarkerCount written;
    own.generateMarkers(run, entries, project->workArea(), nullptr, written);

    // No track for snippets: the marker has nowhere to go, and is not
    // counted. A kind without a track of its own is refused.
    const std::vector<core::InformationEntry> snippet = {{3608.0, 3609.0, "Snippet", core::InformationKind::Snippet}};
    EXPECT_EQ(montala::test::thrownCode([&] { own.generateMarkers(run, snippet, project->workArea(), nullptr, written); }),
              Result::NotInitialized);
    const std::vector<core::InformationEntry> strange = {
        {3608.0, 3609.0, "?", static_cast<core::InformationKind>(42)}};
    EXPECT_EQ(montala::test::thrownCode([&] { own.generateMarkers(run, strange, project->workArea(), nullptr, written); }),
              Result::InvalidArgument);
    endEdit();
    EXPECT_EQ(written, (MontalaTracks::MarkerCount{
                           {TrackType::Transition, 1}, {TrackType::Insert, 1}, {TrackType::Overlap, 1}}));

    std::vector<Track> markers = project->getTracks("marker");
    Track* insert = byName(markers, "Insert");
    Track* overlap = byName(markers, "Overlap");
    Track* transition = byName(markers, "Dissolve/Wipe");
    ASSERT_TRUE(insert && overlap && transition);
    EXPECT_EQ(markerNames(*insert), (std::vector<std::string>{"Insert REEL7"}));
    EXPECT_EQ(markerNames(*overlap), (std::vector<std::string>{"Overlap on DX"}));
    EXPECT_EQ(markerNames(*transition), (std::vector<std::string>{"Dissolve"}));
    const double workArea = offset - project->getProjectStart();
    EXPECT_DOUBLE_EQ(insert->getEvents()[0].getStart(), workArea + 3602.0);
    EXPECT_DOUBLE_EQ(insert->getEvents()[0].getEnd(), workArea + 3604.0);
    EXPECT_FALSE(overlap->getEvents()[0].isRange());
    EXPECT_TRUE(markerNames(*byName(markers, "Destination")).empty());
}

// A preview of one event: the old timeline's [10, 20] s is shown at the new
// [0, 10] s in the work area, where the user writes memos.
class MemoTest : public ProjectOperationsTest {
protected:
    void SetUp() override
    {
        ProjectOperationsTest::SetUp();
        openWithOffset();
        // The new 01:00:00:00 lies one offset past the project start.
        workArea = project->workArea().getConformOffset();
        project->getDataModel().setPreviewActive(true);
        core::EventList events(core::EventList::ChangeKind);
        {
            core::ScopedFramerateProvider provider(project.get());
            events.addEvent(montala::test::makeEvent("REEL1", "01:00:10:00", "01:00:20:00", "01:00:00:00", "01:00:10:00"));
        }
        project->setPreviewEvents(events);
        Kelmar::IProjectEdit& run = beginEdit();
        project->ownTracks().createFolderAndMarkers(run, project->getDataModel().getSettings());
        endEdit();
        memos = project->ownTracks().markerTrack(TrackType::Memos);
    }

    // The track listens to its project: it lets go before the project goes.
    void TearDown() override
    {
        memos = Track();
        ProjectOperationsTest::TearDown();
    }

    struct Memo {
        std::string name;
        double start;
        double end;
        int64_t id;
        bool operator==(const Memo&) const = default;
    };

    // The memos of a host-relative stretch, by start.
    std::vector<Memo> memosIn(double start, double end)
    {
        std::multimap<double, Memo> sorted;
        for (const TrackEvent& marker : memos.getEventsInRange(start, end)) {
            int64_t id = 0;
            marker.getUserId(id);
            sorted.emplace(marker.getStart(), Memo{marker.getName(), marker.getStart(), marker.getEnd(), id});
        }
        std::vector<Memo> result;
        for (auto& [time, memo] : sorted)
            result.push_back(memo);
        return result;
    }

    // The user's own edit, as the host reports it to Montala while its group
    // is still open.
    template <class Change>
    void userEdit(Change change)
    {
        Kelmar::IProjectEdit& group = beginEdit();
        change(group);
        project->edited(&group);
        endEdit();
    }

    double workArea = 0.0;
    Track memos;
};

TEST_F(MemoTest, MemosWrittenInTheWorkAreaReachTheOldTimelineWithTheirIds)
{
    // The user notes something at the new 2 s to 3 s: on the old timeline
    // that is 12 s to 13 s. A second memo starts before the event's place in
    // the work area and is held to the event's start.
    userEdit([&](Kelmar::IProjectEdit& group) {
        project->ownTracks().writeMarker(group, &memos, "breath", "", project->workArea().behindEnd({3602.0}),
                                         project->workArea().behindEnd({3603.0}), 0);
    });
    const std::vector<Memo> source = memosIn(10.0, 20.0);
    ASSERT_EQ(source.size(), 1u);
    EXPECT_EQ(source[0].name, "breath");
    EXPECT_DOUBLE_EQ(source[0].start, 12.0);
    EXPECT_DOUBLE_EQ(source[0].end, 13.0);
    const std::vector<Memo> destination = memosIn(workArea, workArea + 10.0);
    ASSERT_EQ(destination.size(), 1u);
    EXPECT_NE(destination[0].id, 0);
    EXPECT_EQ(destination[0].id, source[0].id);

    // A rename and a move in the work area follow to the old timeline.
    userEdit([&](Kelmar::IProjectEdit&) {
        Kelmar::IPtr<Kelmar::IEditContext> context =
            Kelmar::owned(hostProject->getEditContext(memos.object().get()));
        Kelmar::IProjectObject* marker = memos.getEventsInRange(workArea, workArea + 10.0)[0].getObject();
        marker->setName(context.get(), u"breath, cut it", 0);
        marker->setStart(context.get(), workArea + 4.0, 0);
    });
    ASSERT_EQ(memosIn(10.0, 20.0).size(), 1u);
    EXPECT_EQ(memosIn(10.0, 20.0)[0].name, "breath, cut it");
    EXPECT_DOUBLE_EQ(memosIn(10.0, 20.0)[0].start, 14.0);
    EXPECT_DOUBLE_EQ(memosIn(10.0, 20.0)[0].end, 15.0);

    // Deleted in the work area, it goes from the old timeline too.
    userEdit([&](Kelmar::IProjectEdit& group) {
        Kelmar::IPtr<Kelmar::IEditContext> context =
            Kelmar::owned(hostProject->getEditContext(memos.object().get()));
        group.removeObject(context.get(), memos.getEventsInRange(workArea, workArea + 10.0)[0].getObject());
    });
    EXPECT_TRUE(memosIn(10.0, 20.0).empty());
    EXPECT_TRUE(memosIn(workArea, workArea + 10.0).empty());
}

TEST_F(MemoTest, AMemoWithAnIdFromElsewhereGetsAFreshOne)
{
    // A memo the user copied from another stretch carries that one's id; on
    // the old timeline it is a new memo and must not share an id with the
    // one it came from.
    userEdit([&](Kelmar::IProjectEdit& group) {
        project->ownTracks().writeMarker(group, &memos, "elsewhere", "", {3630.0}, {3631.0}, 1);
        project->ownTracks().writeMarker(group, &memos, "copied", "", project->workArea().behindEnd({3605.0}),
                                         project->workArea().behindEnd({3606.0}), 1);
    });
    const std::vector<Memo> source = memosIn(10.0, 20.0);
    ASSERT_EQ(source.size(), 1u);
    EXPECT_EQ(source[0].name, "copied");
    EXPECT_GT(source[0].id, 1);
    EXPECT_EQ(memosIn(workArea, workArea + 10.0)[0].id, source[0].id);
    EXPECT_EQ(memosIn(30.0, 31.0)[0].id, 1);
}

TEST_F(MemoTest, EditsTellTheListenersAndLeaveMemosAloneWithoutAPreview)
{
    struct Counter : ProjectListener {
        int edited = 0;
        void projectChanged(Project&) override {}
        void projectEdited(Project&) override { ++edited; }
    } counter;
    project->addListener(&counter);
    project->getDataModel().setPreviewActive(false);
    userEdit([&](Kelmar::IProjectEdit& group) {
        project->ownTracks().writeMarker(group, &memos, "later", "", project->workArea().behindEnd({3602.0}),
                                         project->workArea().behindEnd({3603.0}), 0);
    });
    project->removeListener(&counter);
    EXPECT_EQ(counter.edited, 1);
    EXPECT_TRUE(memosIn(10.0, 20.0).empty());
    ASSERT_EQ(memosIn(workArea, workArea + 10.0).size(), 1u);
    EXPECT_EQ(memosIn(workArea, workArea + 10.0)[0].id, 0);
}

// The preview's side of the video tracks: every video track of the project
// by position, the new cut's marked as such.
TEST_F(ProjectOperationsTest, TheNewVideoTrackIsHandedToThePreviewAsTheNewPicture)
{
    openWithOffset();
    VideoTrackHandler handler;
    handler.setProject(project.get());

    // No video of the new cut: no track.
    Kelmar::IProjectEdit& run = beginEdit();
    project->createVideoTrack(run);
    EXPECT_EQ(handler.getTrackCount(), 1);

    project->getDataModel().getVideoList().addEntry(
        core::VideoList::Entry("/media/new.mov", core::Timecode(1, 0, 0, 0), core::Timecode(0, 0, 10, 0)));
    project->createVideoTrack(run);
    // Made once, found again the next time.
    project->createVideoTrack(run);
    endEdit();

    ASSERT_EQ(handler.getTrackCount(), 2);
    EXPECT_EQ(handler.getTrackName(1), "New Video");
    EXPECT_TRUE(handler.hasTrackRole(1, core::VideoTrackHandlerBase::NewPicture));
    EXPECT_EQ(handler.findTrack(core::VideoTrackHandlerBase::NewPicture).getName(), "New Video");
}

} // namespace
} // namespace montala::host::test
