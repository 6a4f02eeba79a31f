#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

namespace montala::gui {

// A toggling text button that blinks while it is on: its on-colour swaps
// between the colour it was given and that colour darkened, every 800 ms.
// The preview button is one, so that a running preview cannot be missed.
class FlashTextButton : public juce::TextButton, private juce::Timer {
public:
    static constexpr int flashIntervalMs = 800;

    explicit FlashTextButton(const juce::String& name = {});
    ~FlashTextButton() override;

    bool isFlashing() const { return isTimerRunning(); }

protected:
    // Toggle changes arrive here too, with or without a notification.
    void buttonStateChanged() override;

private:
    void timerCallback() override;

    juce::Colour flashColour;
    juce::Colour normalColour;
};

} // namespace montala::gui
