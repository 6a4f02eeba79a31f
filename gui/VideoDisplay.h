#pragma once

#include "core/time/Timecode.h"
#include "gui/VideoProviderBase.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace montala::gui {

// The panel at the bottom right of the window: the old cut's frame above the
// new cut's, each with its timecode, for the one Change event selected.
//
//   +------- Video -------+
//   |       (strip)       |
//   |  [ old picture ]    |
//   |     01:00:07:05     |  source time
//   |------ Result -------|
//   |  [ new picture ]    |
//   |     01:00:04:10     |  destination time
//   +---------------------+
//
// A picture is the provider's frame, or its message ("Loading", "No video
// available.") white on black. While not shown, both read "--:--:--:--" over
// black.
class VideoDisplay : public juce::Component, public VideoProviderBase::Listener {
public:
    static constexpr int placeholderWidth = 888;
    static constexpr int placeholderHeight = 500;

    VideoDisplay();
    ~VideoDisplay() override;

    // Leaves the old provider and asks the new one for both frames.
    void setVideoProvider(std::shared_ptr<VideoProviderBase> provider);
    void setShown(bool on);
    bool isShown() const { return show; }
    // The frames of SRC and DST at these timecodes; with `lastFrame` they are
    // out points, and the frame before each is shown (never before zero).
    void setFrames(const core::Timecode& source, const core::Timecode& destination, bool lastFrame);

    // What a picture and a timecode label show: 0 old, 1 new.
    juce::Image getShownImage(int index) const;
    juce::String getShownTime(int index) const;

    // The provider's picture as the window draws it.
    static juce::Image toImage(const core::VideoImage& image);

    void paint(juce::Graphics& g) override;
    void resized() override;
    void imageChanged(int index) override;

private:
    void requestFrames();
    void refresh();

    std::shared_ptr<VideoProviderBase> provider;
    core::Timecode sourceTime;
    core::Timecode destinationTime;
    bool lastFrame = false;
    bool show = false;
    juce::ImageComponent oldImage{"Old Image"};
    juce::ImageComponent newImage{"New Image"};
    juce::Label oldTime{"old time", "00:00:00:00"};
    juce::Label newTime{"new time", "00:00:00:00"};
    juce::Image placeholder{juce::Image::RGB, placeholderWidth, placeholderHeight, true};

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(VideoDisplay)
};

} // namespace montala::gui
