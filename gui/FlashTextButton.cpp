#include "gui/FlashTextButton.h"

namespace montala::gui {

FlashTextButton::FlashTextButton(const juce::String& name) : juce::TextButton(name) {}

FlashTextButton::~FlashTextButton()
{
    stopTimer();
}

void FlashTextButton::buttonStateChanged()
{
    juce::TextButton::buttonStateChanged();
    const bool on = getToggleState();
    if (on && !isTimerRunning()) {
        // The colour is read when the blinking starts, so that whoever set
        // it last (the window sets the accent colour) is what blinks.
        normalColour = findColour(juce::TextButton::buttonOnColourId, false);
        flashColour = normalColour.darker(0.4f);
        startTimer(flashIntervalMs);
    } else if (!on && isTimerRunning()) {
        stopTimer();
        // Never left dark: an off button must come back in its own colour
        // when it is switched on again.
        setColour(juce::TextButton::buttonOnColourId, normalColour);
        repaint();
    }
}

void FlashTextButton::timerCallback()
{
    const bool showingNormal = findColour(juce::TextButton::buttonOnColourId, false) == normalColour;
    setColour(juce::TextButton::buttonOnColourId, showingNormal ? flashColour : normalColour);
    repaint();
}

} // namespace montala::gui
