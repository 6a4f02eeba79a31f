#include "../SimFixture.h"

#include "kelmar/base/IClassFactory.h"
#include "kelmar/services/IVideoFrame.h"
#include "kelmar/services/IVideoThumbnailFactory.h"
#include "sim/services/SimClassFactory.h"
#include "sim/services/SimVideoService.h"

#include <chrono>
#include <fstream>
#include <thread>

namespace montala::sim::test {
namespace {

using namespace Kelmar;

// 25 frames of 64 x 36, stored without loss; frame n is red 10 n, green
// 250 - 10 n, blue 128.
const std::string numberedClip = MONTALA_SOURCE_DIR "/tests/sim/fixtures/numbered-frames.mkv";

class SimThumbnailFactoryTest : public SimFixture {
protected:
    IPtr<IVideoThumbnailFactory> makeService()
    {
        IPtr<IVideoThumbnailFactory> thumbnails;
        EXPECT_EQ(service<IClassFactory>()->createInstance("Video", "VideoThumbnailFactory",
                                                           IVideoThumbnailFactory::iid, thumbnails.putVoid()),
                  kResultOk);
        return thumbnails;
    }

    // Blue, green, red, alpha of the frame's first pixel; empty without a frame.
    static std::vector<int> firstPixel(IVideoThumbnailFactory& thumbnails, int64 stream, int64 position,
                                       int32* width = nullptr)
    {
        auto frame = owned(thumbnails.getFrame(stream, position));
        if (!frame)
            return {};
        int32 w = 0, h = 0;
        frame->getSize(w, h);
        if (width)
            *width = w;
        std::vector<uint8> pixels(static_cast<size_t>(w) * h * 4);
        frame->copyPixels(pixels.data(), w * 4);
        return {pixels[0], pixels[1], pixels[2], pixels[3]};
    }

    SimVideoService& videos() { return host->classFactory().videos(); }
};

TEST_F(SimThumbnailFactoryTest, GivesTheFileFrameAskedForInEitherDirectionAtTheRequestedSize)
{
    videos().setFile(3, numberedClip);
    auto thumbnails = makeService();
    ASSERT_EQ(thumbnails->openStream(3, 0, 32, 18), kResultOk);

    int32 width = 0;
    EXPECT_EQ(firstPixel(*thumbnails, 3, 7, &width), (std::vector<int>{128, 180, 70, 255}));
    EXPECT_EQ(width, 32);
    EXPECT_EQ(firstPixel(*thumbnails, 3, 8), (std::vector<int>{128, 170, 80, 255})) << "the next frame";
    EXPECT_EQ(firstPixel(*thumbnails, 3, 2), (std::vector<int>{128, 230, 20, 255})) << "back to an earlier one";
    EXPECT_EQ(firstPixel(*thumbnails, 3, 24), (std::vector<int>{128, 10, 240, 255})) << "the last frame";
    EXPECT_TRUE(firstPixel(*thumbnails, 3, 25).empty()) << "past the end of the file there is no frame";
    thumbnails->unregisterClient();
}

TEST_F(SimThumbnailFactoryTest, AMissingOrUnreadableFileKeepsTheMadeUpFrame)
{
    const std::string notVideo = ::testing::TempDir() + "not-a-video.mov";
    std::ofstream(notVideo) << "no pictures here";
    videos().setFile(4, "/no/such/file.mov");
    videos().setFile(5, notVideo);
    auto thumbnails = makeService();
    for (int64 stream : {4, 5}) {
        ASSERT_EQ(thumbnails->openStream(stream, 0, 8, 8), kResultOk);
        // The made-up frame: blue the position, red the stream.
        EXPECT_EQ(firstPixel(*thumbnails, stream, 9), (std::vector<int>{9, 0, static_cast<int>(stream), 255}));
    }
    thumbnails->unregisterClient();
}

TEST_F(SimThumbnailFactoryTest, TheSampleSessionsPoolClipsAreReadFromTheSampleVideos)
{
    std::string error;
    auto project = SessionFile::load(*host, MONTALA_SOURCE_DIR "/samples/sessions/short-film-25.json", error);
    ASSERT_TRUE(project) << error;
    auto thumbnails = makeService();
    ASSERT_EQ(thumbnails->openStream(1, 0, 888, 500), kResultOk);
    // The old cut's dark grey background (0x283038), not a made-up frame.
    const std::vector<int> pixel = firstPixel(*thumbnails, 1, 180);
    ASSERT_EQ(pixel.size(), 4u);
    EXPECT_NEAR(pixel[0], 0x38, 6);
    EXPECT_NEAR(pixel[1], 0x30, 6);
    EXPECT_NEAR(pixel[2], 0x28, 6);
    thumbnails->unregisterClient();
}

TEST_F(SimThumbnailFactoryTest, AHeldServiceKeepsFrameRequestsWaitingUntilReleased)
{
    auto thumbnails = makeService();
    ASSERT_EQ(thumbnails->openStream(6, 0, 4, 4), kResultOk);
    videos().hold();
    std::vector<int> pixel;
    std::thread worker([&] { pixel = firstPixel(*thumbnails, 6, 1); });
    while (videos().waiting() == 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(pixel.empty());
    videos().release();
    worker.join();
    EXPECT_EQ(pixel, (std::vector<int>{1, 0, 6, 255}));
    EXPECT_EQ(videos().framesServed(), 1);
    thumbnails->unregisterClient();
}

} // namespace
} // namespace montala::sim::test
