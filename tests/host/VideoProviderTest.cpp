#include "VideoPreviewFixture.h"

#include "core/events/VideoList.h"
#include "sim/project/SimBase.h"

namespace montala::host::test {
namespace {

class VideoProviderTest : public VideoPreviewFixture {
protected:
    void SetUp() override
    {
        VideoPreviewFixture::SetUp();
        provider = std::make_unique<VideoProvider>(host.get());
        provider->setProject(project.get());
        provider->setSize(64, 36);
    }

    void TearDown() override
    {
        videos().release();
        provider.reset();
        VideoPreviewFixture::TearDown();
    }

    void waitForService(int requests = 1)
    {
        while (videos().waiting() < requests)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    std::unique_ptr<VideoProvider> provider;
};

TEST_F(VideoProviderTest, ShowsLoadingThenTheFrameAndSaysSoWhereThereIsNoVideo)
{
    provider->requestFrame(0, tc("01:00:00:07"));
    provider->requestFrame(1, tc("01:00:00:07"));
    provider->poll();
    EXPECT_EQ(provider->getImage(0).message, "Loading");
    EXPECT_EQ(provider->getImage(1).message, "No video available.") << "the new cut has no videos yet";
    ASSERT_TRUE(pollUntil(*provider, [&] { return red(provider->getImage(0)) >= 0; }));
    EXPECT_EQ(red(provider->getImage(0)), 70);
    EXPECT_EQ(provider->getImage(0).width, 64);
}

TEST_F(VideoProviderTest, ARequestWhileTheServiceBlocksWaitsAndTheNewestOfThoseWins)
{
    videos().hold();
    provider->requestFrame(0, tc("01:00:00:03"));
    provider->poll();
    waitForService();
    provider->requestFrame(0, tc("01:00:00:05"));
    provider->requestFrame(0, tc("01:00:00:08"));
    for (int turn = 0; turn < 5; ++turn)
        provider->poll();
    EXPECT_EQ(provider->getImage(0).message, "Loading");
    EXPECT_EQ(videos().framesServed(), 1) << "the worker is still on the first request";

    videos().release();
    ASSERT_TRUE(pollUntil(*provider, [&] { return red(provider->getImage(0)) == 80; }));
    EXPECT_EQ(videos().framesServed(), 2) << "frame 5 was never asked for";
}

TEST_F(VideoProviderTest, GoesWithinTwoSecondsWhileTheServiceBlocksBothPictures)
{
    project->getDataModel().getVideoList().addEntry(
        core::VideoList::Entry("new.mkv", tc("01:00:00:00"), tc("00:00:01:00")));
    const long objectsBefore = sim::SimBase::liveObjects();
    videos().hold();
    provider->requestFrame(0, tc("01:00:00:03"));
    provider->requestFrame(1, tc("01:00:00:03"));
    provider->poll();
    waitForService(2);

    const auto start = std::chrono::steady_clock::now();
    provider.reset();
    const auto took = std::chrono::steady_clock::now() - start;
    // The limit is 2,000 ms for both threads together; the rest allows for
    // a loaded machine.
    EXPECT_LT(took, std::chrono::milliseconds(2500));

    // The workers left inside the service end once it lets go, and let go
    // of the service themselves.
    videos().release();
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (sim::SimBase::liveObjects() > objectsBefore - 2 && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(sim::SimBase::liveObjects(), objectsBefore - 2) << "both thumbnail services are released";
}

} // namespace
} // namespace montala::host::test
