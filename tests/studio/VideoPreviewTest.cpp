// The video display of the window on the simulated host, with a clip whose
// 25 frames tell themselves apart by colour (frame n is red 10 n): the one
// selected Change event shows the old cut's frame at SRC and the new cut's
// at DST, the first frames with "IN", the last with "OUT".

#include "core/model/DataModel.h"
#include "gui/MainGui.h"
#include "studio/Steps.h"
#include "studio/Studio.h"
#include "support/TempFolderTest.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

namespace montala::studio {
namespace {

const std::string clip = MONTALA_SOURCE_DIR "/tests/sim/fixtures/numbered-frames.mkv";

class VideoPreviewTest : public test::TempFolderTest {
protected:
    VideoPreviewTest() : TempFolderTest("montala-video-preview") {}

    // The old cut plays A then B, the new cut B then A: B's Change event has
    // SRC 01:00:00:10-01:00:00:20 and DST 01:00:00:00-01:00:00:10. The old
    // picture track runs the clip from the start of the old timeline; the
    // new cut's video is the same clip from the start of the new one.
    void SetUp() override
    {
        write("old.edl", "TITLE: OLD\n"
                         "001  A  V  C  10:00:00:00 10:00:00:10 01:00:00:00 01:00:00:10\n"
                         "002  B  V  C  20:00:00:00 20:00:00:10 01:00:00:10 01:00:00:20\n");
        write("new.edl", "TITLE: NEW\n"
                         "001  B  V  C  20:00:00:00 20:00:00:10 01:00:00:00 01:00:00:10\n"
                         "002  A  V  C  10:00:00:00 10:00:00:10 01:00:00:10 01:00:00:20\n");
        write("film.json", R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25},
          "start": "01:00:00:00", "end": "01:01:00:00",
          "mediaPool": [{"id": 1, "kind": "video", "name": "numbered-frames.mkv", "path": ")" + clip +
                               R"(", "length": 1.0}],
          "tracks": [{"kind": "video", "name": "PICTURE", "attributes": {"Montala:VideoType": 10},
                      "events": [{"kind": "video", "start": "01:00:00:00", "end": "01:00:01:00", "clip": 1}]},
                     {"kind": "audio", "name": "DIALOGUE",
                      "events": [{"kind": "audio", "start": "01:00:00:00", "end": "01:00:00:20", "file": "d.wav"}]}]})");
        std::string error;
        ASSERT_TRUE(studio.openSession(pathOf("film.json"), error)) << error;
        ASSERT_TRUE(studio.addEdl(core::EventList::OldKind, pathOf("old.edl")).opened);
        ASSERT_TRUE(studio.addEdl(core::EventList::NewKind, pathOf("new.edl")).opened);
        ASSERT_EQ(studio.generate(), util::Result::Ok);
        ViewWiring::wire(window, studio);
        // The new cut's video, chosen in the video settings overlay.
        StudioOptions steps;
        steps.newVideos = {"numbered-frames.mkv"};
        std::ostringstream out, err;
        ASSERT_EQ(runSteps(studio, window, steps, out, err), 0) << err.str();
        EXPECT_EQ(out.str(), "New video numbered-frames.mkv from 01:00:00:00\n");
    }

    void TearDown() override { ViewWiring::unwire(window); }

    void write(const std::string& name, const std::string& text) { std::ofstream(pathOf(name)) << text; }

    // Selects the Change event whose DST starts at `dstIn`.
    void selectChange(const std::string& dstIn)
    {
        const core::EventList& change = studio.model()->getChangeList();
        for (size_t row = 0; row < change.getSize(); ++row)
            if (change.getEvent(row)->getDstIn().toString() == dstIn)
                window.getTable(gui::MainGui::ChangeTable).selectRow(static_cast<int>(row));
    }

    // The red of both pictures, or -1 for one that shows no frame (the
    // placeholder and the messages are not of this clip's colours, blue 128).
    std::pair<int, int> shownReds()
    {
        const auto red = [this](int index) {
            const juce::Image image = window.getVideoDisplay().getShownImage(index);
            const juce::Colour pixel = image.getPixelAt(image.getWidth() / 2, image.getHeight() / 2);
            return pixel.getBlue() == 128 ? static_cast<int>(pixel.getRed()) : -1;
        };
        return {red(0), red(1)};
    }

    // Gives the host's idle call time until the pictures show these reds,
    // at most two seconds; then what they show.
    std::pair<int, int> awaitReds(std::pair<int, int> wanted)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        while (std::chrono::steady_clock::now() < end && shownReds() != wanted) {
            studio.idle();
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        return shownReds();
    }

    juce::ScopedJuceInitialiser_GUI juce;
    Studio studio{MONTALA_SOURCE_DIR "/resources"};
    gui::MainGui window;
};

TEST_F(VideoPreviewTest, OneSelectedEventShowsTheOldFrameAtSrcAboveTheNewFrameAtDst)
{
    selectChange("01:00:00:00");
    EXPECT_EQ(window.getVideoDisplay().getShownTime(0), "01:00:00:10");
    EXPECT_EQ(window.getVideoDisplay().getShownTime(1), "01:00:00:00");
    EXPECT_EQ(awaitReds({100, 0}), std::make_pair(100, 0)) << "old frame 10 on top, new frame 0 below";

    // OUT: the last frame of each side, the one before the out point.
    window.getVideoOutToggle().setToggleState(true, juce::sendNotification);
    EXPECT_EQ(window.getVideoDisplay().getShownTime(0), "01:00:00:20");
    EXPECT_EQ(awaitReds({190, 90}), std::make_pair(190, 90));

    // Two events selected: nothing is shown.
    window.getTable(gui::MainGui::ChangeTable).selectRangeOfRows(0, 1);
    EXPECT_EQ(window.getVideoDisplay().getShownTime(0), "--:--:--:--");
    EXPECT_FALSE(window.getVideoDisplay().isShown());
}

} // namespace
} // namespace montala::studio
