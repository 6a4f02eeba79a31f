#pragma once

#include "gui/LookAndFeel.h"
#include "gui/Palette.h"

#include <juce_gui_basics/juce_gui_basics.h>

namespace montala::gui {

// What the overlays share: their labels, and a panel over the dimmed window.

// Text in the window's colour, left aligned, in the given font kind.
inline void styleLabel(juce::Label& label, int font = LookAndFeel::regularFont)
{
    label.setFont(LookAndFeel::getFont(font));
    label.setColour(juce::Label::textColourId, palette::text);
    label.setJustificationType(juce::Justification::centredLeft);
}

// The window behind stays visible but dimmed, so that it is plain that the
// overlay takes every click until it is closed; the panel is drawn as the
// window's own panels are.
inline void paintOverlayPanel(juce::Graphics& g, juce::Rectangle<int> panel)
{
    g.fillAll(palette::window.withAlpha(0.6f));
    const juce::Rectangle<float> area = panel.toFloat();
    g.setColour(palette::panel);
    g.fillRoundedRectangle(area, 8.0f);
    g.setColour(palette::outline);
    g.drawRoundedRectangle(area, 8.0f, 2.0f);
}

} // namespace montala::gui
