// The video panel against a provider that records what it is asked for and
// answers with plain colours: IN asks for the in points, OUT for the frame
// before each out point and never for one before zero, and a panel that is
// not shown reads "--:--:--:--" over black.

#include "gui/VideoDisplay.h"

#include "support/ModelFixture.h"

#include <gtest/gtest.h>

namespace montala::gui {
namespace {

using test::tc;

class RecordingProvider : public VideoProviderBase {
public:
    VideoTrackHandlerBase* getTrackHandler() override { return nullptr; }
    void setFrameSize(int index, int width, int height, double seconds, int) override
    {
        core::Timecode asked;
        asked.fromSeconds(seconds);
        wanted[index] = asked.toString();
        size = {width, height};
    }

    // A frame of one colour as the service gives it: blue, green, red, alpha.
    void serve(int index, uint8_t red)
    {
        core::VideoImage frame{4, 2, {}, {}};
        for (int pixel = 0; pixel < 8; ++pixel)
            frame.pixels.insert(frame.pixels.end(), {0, 0, red, 255});
        setImage(frame, index);
    }

    std::string wanted[2];
    std::pair<int, int> size;
};

class VideoDisplayTest : public test::ModelFixture {
protected:
    VideoDisplayTest()
    {
        display.setBounds(0, 0, 204, 349);
        display.setVideoProvider(provider);
        display.setShown(true);
    }

    juce::Colour centre(int index) const
    {
        const juce::Image image = display.getShownImage(index);
        return image.getPixelAt(image.getWidth() / 2, image.getHeight() / 2);
    }

    juce::ScopedJuceInitialiser_GUI juce;
    std::shared_ptr<RecordingProvider> provider = std::make_shared<RecordingProvider>();
    VideoDisplay display;
};

TEST_F(VideoDisplayTest, InShowsTheInPointsAndOutTheFrameBeforeEachOutPointNeverBeforeZero)
{
    display.setFrames(tc("01:00:07:05"), tc("01:00:04:10"), false);
    EXPECT_EQ(provider->size, std::make_pair(888, 500));
    EXPECT_EQ(provider->wanted[0], "01:00:07:05");
    EXPECT_EQ(provider->wanted[1], "01:00:04:10");
    EXPECT_EQ(display.getShownTime(0), "01:00:07:05") << "old on top";
    EXPECT_EQ(display.getShownTime(1), "01:00:04:10");
    provider->serve(0, 200);
    provider->serve(1, 100);
    EXPECT_EQ(centre(0), juce::Colour(200, 0, 0));
    EXPECT_EQ(centre(1), juce::Colour(100, 0, 0));

    // The labels keep the out points; the pictures are their last frames.
    display.setFrames(tc("00:00:00:00"), tc("01:00:05:00"), true);
    EXPECT_EQ(display.getShownTime(0), "00:00:00:00");
    EXPECT_EQ(provider->wanted[0], "00:00:00:00");
    EXPECT_EQ(provider->wanted[1], "01:00:04:24");
}

TEST_F(VideoDisplayTest, NotShownReadsDashesOverBlackUntilShownAgain)
{
    display.setFrames(tc("01:00:07:05"), tc("01:00:04:10"), false);
    provider->serve(0, 200);
    display.setShown(false);
    EXPECT_EQ(display.getShownTime(0), "--:--:--:--");
    EXPECT_EQ(display.getShownTime(1), "--:--:--:--");
    EXPECT_EQ(centre(0), juce::Colours::black);
    EXPECT_EQ(display.getShownImage(0).getWidth(), 888);

    // A frame that arrives meanwhile waits until the panel shows again.
    provider->serve(0, 50);
    EXPECT_EQ(centre(0), juce::Colours::black);
    display.setShown(true);
    EXPECT_EQ(centre(0), juce::Colour(50, 0, 0));
}

} // namespace
} // namespace montala::gui
