#pragma once

#include "core/events/VideoList.h"
#include "core/services/MediaPoolInterface.h"
#include "gui/VideoListTableModel.h"
#include "gui/VideoProviderBase.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <array>
#include <memory>

namespace montala::gui {

// The overlay of the video settings: which pool videos make up the new cut,
// where each starts, and which of the project's first two video tracks
// holds the old cut and which the new. Every click writes at once; a click
// beside the panel closes it.
class NewVideosDialog : public juce::Component,
                        public VideoTrackHandlerBase::Listener,
                        public juce::Button::Listener {
public:
    NewVideosDialog();
    ~NewVideosDialog() override;

    // Borrowed, null for none; the table is made anew each time the dialog
    // shows, so that it lists the pool as it is then.
    void setMediaPool(core::MediaPoolInterface* pool);
    void setVideoList(core::VideoList* list);
    void setProjectStart(double seconds);
    void setTrackHandler(VideoTrackHandlerBase* handler);
    // The video list changed: the table shows it again.
    void reload();

    juce::TableListBox& getTable() { return videosTable; }
    VideoListTableModel* getModel() const { return model.get(); }
    // The old or new toggle of track row 0 or 1, and its name label.
    juce::ToggleButton& trackToggle(int track, bool newCut) { return newCut ? *newSelect[track] : *oldSelect[track]; }
    juce::Label& trackName(int track) { return *trackNames[track]; }
    juce::Rectangle<int> getPanelBounds() const;

    void setVisible(bool shouldBeVisible) override;
    void mouseDown(const juce::MouseEvent& event) override;
    void paint(juce::Graphics& g) override;
    void resized() override;
    void tracksChanged() override;
    void buttonClicked(juce::Button* button) override;

private:
    core::MediaPoolInterface* pool = nullptr;
    core::VideoList* videoList = nullptr;
    VideoTrackHandlerBase* trackHandler = nullptr;
    double projectStart = 0.0;
    std::shared_ptr<VideoListTableModel> model;
    juce::TableListBox videosTable{"VideosTable"};
    std::array<std::unique_ptr<juce::Label>, 2> trackNames;
    juce::ToggleButton videoTrack1OldSelect;
    juce::ToggleButton videoTrack1NewSelect;
    juce::ToggleButton videoTrack2OldSelect;
    juce::ToggleButton videoTrack2NewSelect;
    std::array<juce::ToggleButton*, 2> oldSelect{&videoTrack1OldSelect, &videoTrack2OldSelect};
    std::array<juce::ToggleButton*, 2> newSelect{&videoTrack1NewSelect, &videoTrack2NewSelect};
    std::array<juce::Label, 8> texts;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(NewVideosDialog)
};

} // namespace montala::gui
