#include "../ChangeRecorder.h"
#include "support/ModelFixture.h"
#include "core/events/VideoList.h"
#include "core/serialize/SerializationTree.h"
#include "util/Result.h"

#include <gtest/gtest.h>

#include <vector>

namespace montala::core {
namespace {

using montala::test::tc;

using util::Result;

class VideoListTest : public ::testing::Test {
protected:
    VideoListTest() : providerScope(&provider) { videos.addListener(&listener); }
    ~VideoListTest() override { videos.removeListener(&listener); }

    std::vector<std::string> paths() const
    {
        std::vector<std::string> all;
        for (size_t i = 0; i < videos.getSize(); ++i)
            all.push_back(videos.getEntry(i).getPath());
        return all;
    }

    FixedFramerateProvider provider{Framerate(25, 0)};
    ScopedFramerateProvider providerScope;
    VideoList videos;
    test::ChangeRecorder listener;
};

TEST_F(VideoListTest, OrdersByStartThenLongerFirstThenFileName)
{
    EXPECT_EQ(0, videos.addEntry({"/v/reel2.mov", tc("10:10:00:00"), tc("00:10:00:00")}));
    EXPECT_EQ(0, videos.addEntry({"/v/b.mov", tc("10:00:00:00"), tc("00:05:00:00")}));
    EXPECT_EQ(0, videos.addEntry({"/w/a.mov", tc("10:00:00:00"), tc("00:05:00:00")}));
    EXPECT_EQ(0, videos.addEntry({"/v/long.mov", tc("10:00:00:00"), tc("00:20:00:00")}));
    EXPECT_EQ((std::vector<std::string>{"/v/long.mov", "/w/a.mov", "/v/b.mov", "/v/reel2.mov"}), paths());
    EXPECT_EQ(4u, listener.kinds.size());
    EXPECT_EQ(ChangeContext::VideoListKind, listener.kinds.back());
    EXPECT_EQ(Result::InvalidArgument, test::thrownCode([&] { videos.getEntry(4); }));
}

TEST_F(VideoListTest, KnowsAVideoByItsFileNameWhateverTheFolder)
{
    ASSERT_EQ(0, videos.addEntry({"/media/cut/reel1.mov", tc("10:00:00:00"), tc("00:10:00:00")}));
    listener.kinds.clear();
    // The same file name on another drive is the same video.
    EXPECT_EQ(1, videos.addEntry({"D:\\backup\\reel1.mov", tc("11:00:00:00"), tc("00:01:00:00")}));
    EXPECT_EQ(1u, videos.getSize());
    EXPECT_TRUE(listener.kinds.empty());
    EXPECT_TRUE(videos.containsPath("/elsewhere/reel1.mov"));
    EXPECT_EQ("/media/cut/reel1.mov", videos.getEntryForPath("reel1.mov").getPath());
    EXPECT_THROW(videos.getEntryForPath("reel2.mov"), Result::Type);

    EXPECT_EQ(1, videos.removeEntry("/media/cut/reel2.mov"));
    EXPECT_TRUE(listener.kinds.empty());
    EXPECT_EQ(0, videos.removeEntry("/other/reel1.mov"));
    EXPECT_EQ(0u, videos.getSize());
    EXPECT_EQ(1u, listener.kinds.size());
}

TEST_F(VideoListTest, FindsTheVideoShowingATimecodeUpToItsEnd)
{
    videos.addEntry({"a.mov", tc("10:00:00:00"), tc("00:01:00:00")});
    videos.addEntry({"b.mov", tc("10:00:30:00"), tc("00:01:00:00")});
    videos.addEntry({"c.mov", tc("10:05:00:00"), tc("00:01:00:00")});
    EXPECT_TRUE(videos.findEntryAt(tc("09:59:59:24")).isEmpty());
    EXPECT_EQ("a.mov", videos.findEntryAt(tc("10:00:00:00")).getPath());
    // Where two overlap the later start wins.
    EXPECT_EQ("b.mov", videos.findEntryAt(tc("10:00:45:00")).getPath());
    EXPECT_EQ("b.mov", videos.findEntryAt(tc("10:01:29:24")).getPath());
    // start + length belongs to the next picture, not to this one.
    EXPECT_TRUE(videos.findEntryAt(tc("10:01:30:00")).isEmpty());
    EXPECT_EQ("c.mov", videos.findEntryAt(tc("10:05:59:24")).getPath());
    EXPECT_TRUE(VideoList().findEntryAt(tc("10:00:00:00")).isEmpty());
}

TEST_F(VideoListTest, MovingAnEntryReordersItAndAssignmentOnlyNotifiesOnChange)
{
    videos.addEntry({"a.mov", tc("10:00:00:00"), tc("00:01:00:00")});
    videos.addEntry({"b.mov", tc("10:01:00:00"), tc("00:01:00:00")});
    listener.kinds.clear();
    videos.setEntryStart("/x/a.mov", tc("10:02:00:00"));
    EXPECT_EQ((std::vector<std::string>{"b.mov", "a.mov"}), paths());
    EXPECT_EQ(tc("10:02:00:00"), videos.getEntry(1).getStart());
    videos.setEntryStart("none.mov", tc("00:00:00:00"));
    EXPECT_EQ(1u, listener.kinds.size());

    VideoList same;
    same.addEntry({"/elsewhere/b.mov", tc("10:01:00:00"), tc("00:01:00:00")});
    same.addEntry({"a.mov", tc("10:02:00:00"), tc("00:01:00:00")});
    listener.kinds.clear();
    videos = same;
    // Equal entries in the same order: the folder does not count.
    EXPECT_TRUE(listener.kinds.empty());
    EXPECT_EQ("b.mov", videos.getEntry(0).getPath());
    same.clear();
    videos = same;
    EXPECT_EQ(0u, videos.getSize());
    EXPECT_EQ(1u, listener.kinds.size());
}

TEST_F(VideoListTest, StoredFormIsCountThenEntriesInOrder)
{
    videos.addEntry({"b", tc("10:00:00:01"), tc("00:00:01:00")});
    videos.addEntry({"a", tc("10:00:00:00"), tc("00:00:01:00")});
    serialize::SerializationTree tree;
    tree.writeObject(videos);
    const std::vector<uint8_t> golden = {
        0, 0, 0, 0, 2, 0, 0, 0,                                        // version, count
        0, 0, 0, 0, 1, 0, 0, 0, 'a',                                   // entry version, path
        2, 0, 0, 0, 10, 0, 0, 0, 1, 2, 0, 0, 0, 0, 0, 1, 0, 1,         // start, length
        0, 0, 0, 0, 1, 0, 0, 0, 'b',
        2, 0, 0, 0, 10, 0, 0, 1, 1, 2, 0, 0, 0, 0, 0, 1, 0, 1,
    };
    EXPECT_EQ(golden, tree.getBytes());

    VideoList read;
    read.addEntry({"old.mov", tc("01:00:00:00"), tc("00:00:01:00")});
    test::ChangeRecorder readListener;
    read.addListener(&readListener);
    tree.rewind();
    tree.readObject(read);
    read.removeListener(&readListener);
    EXPECT_EQ(2u, read.getSize());
    EXPECT_FALSE(read.containsPath("old.mov"));
    EXPECT_EQ(std::vector<int>{ChangeContext::VideoListKind}, readListener.kinds);
}

} // namespace
} // namespace montala::core
