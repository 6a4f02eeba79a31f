#include "VideoPreviewFixture.h"

#include "core/events/VideoList.h"
#include "host/MediaPool.h"

namespace montala::host::test {
namespace {

class VideoSourcesTest : public VideoPreviewFixture {};

TEST_F(VideoSourcesTest, TheOldCutTrackShowsTheFrameOfItsClipAndNothingBeyondIt)
{
    VideoTrackHandler handler;
    handler.setProject(project.get());
    TrackVideoSource old(handler, core::VideoTrackHandlerBase::OldPicture);
    int64_t stream = -1, position = -1;
    old.findFrame(seconds("01:00:00:07"), stream, position, 0);
    EXPECT_EQ(stream, 1);
    EXPECT_EQ(position, 7);
    old.findFrame(seconds("01:00:01:00"), stream, position, 0);
    EXPECT_EQ(stream, 0) << "past the track's event";
    handler.setProject(nullptr);
}

TEST_F(VideoSourcesTest, TheNewCutIsFoundInTheVideoListFromTheEntrysStartAndNotPastItOrItsClip)
{
    core::VideoList& list = project->getDataModel().getVideoList();
    list.addEntry(core::VideoList::Entry("/elsewhere/new.mkv", tc("01:00:10:00"), tc("00:00:02:00")));
    PoolVideoSource pool;
    pool.setSources(project->getMediaPool(), &list);
    int64_t stream = -1, position = -1;
    pool.findFrame(seconds("01:00:10:05"), stream, position, 1);
    EXPECT_EQ(stream, 2);
    EXPECT_EQ(position, 5);
    pool.findFrame(seconds("01:00:11:05"), stream, position, 1);
    EXPECT_EQ(stream, 0) << "the entry runs on, but its clip has only 25 frames";
    pool.findFrame(seconds("01:00:12:00"), stream, position, 1);
    EXPECT_EQ(stream, 0) << "beyond the last entry";
    pool.findFrame(seconds("01:00:09:24"), stream, position, 1);
    EXPECT_EQ(stream, 0) << "before the first entry";
}

TEST_F(VideoSourcesTest, ARunWritesTheVideoListOntoTheNewPictureTrackAtTheOffset)
{
    core::VideoList& list = project->getDataModel().getVideoList();
    list.addEntry(core::VideoList::Entry("new.mkv", tc("01:00:10:00"), tc("00:00:01:00")));
    VideoProvider provider(host.get());
    provider.setProject(project.get());
    VideoTrackHandler& handler = static_cast<VideoTrackHandler&>(*provider.getTrackHandler());
    ASSERT_EQ(handler.getTrackCount(), 2);
    handler.setTrackRole(1, core::VideoTrackHandlerBase::NewPicture);

    ASSERT_EQ(provider.applyVideo(true, 100.0, beginEdit()), util::Result::Ok);
    endEdit();
    const std::vector<TrackEvent> events = track("NEW PICTURE").getEvents();
    ASSERT_EQ(events.size(), 1u);
    // Host-relative: ten seconds in, plus the offset.
    EXPECT_DOUBLE_EQ(events[0].getStart(), 110.0);
    EXPECT_DOUBLE_EQ(events[0].getEnd(), 111.0);
    // The new picture comes from the track where it has a clip, else from
    // the video list, which has moved on since.
    PoolVideoSource pool;
    pool.setSources(project->getMediaPool(), &list);
    VideoSourceTrack newCut(pool, handler);
    list.setEntryStart("new.mkv", tc("01:00:20:00"));
    const auto frameAt = [&](double time) {
        int64_t stream = 0, position = 0;
        newCut.findFrame(time, stream, position, 1);
        return std::make_pair(stream, position);
    };
    EXPECT_EQ(frameAt(seconds("01:00:10:04") + 100.0), std::make_pair(int64_t{2}, int64_t{4}));
    EXPECT_EQ(frameAt(seconds("01:00:20:02")), std::make_pair(int64_t{2}, int64_t{2}));
    EXPECT_EQ(frameAt(seconds("01:00:10:04")), std::make_pair(int64_t{0}, int64_t{0}));

    ASSERT_EQ(provider.applyVideo(true, 0.0, beginEdit()), util::Result::Ok);
    endEdit();
    EXPECT_EQ(track("NEW PICTURE").getEvents().size(), 1u) << "the track is written anew, not added to";
    EXPECT_DOUBLE_EQ(track("NEW PICTURE").getEvents()[0].getStart(), 20.0);

    // A new picture track marked to stay empty is emptied.
    track("NEW PICTURE").setType(0x108);
    ASSERT_EQ(provider.applyVideo(true, 0.0, beginEdit()), util::Result::Ok);
    endEdit();
    EXPECT_TRUE(track("NEW PICTURE").getEvents().empty());
    provider.setProject(nullptr);
}

} // namespace
} // namespace montala::host::test
