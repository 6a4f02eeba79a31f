#pragma once

#include "core/events/EventBase.h"

#include <juce_graphics/juce_graphics.h>

#include <memory>

namespace montala::gui {

// One Change event in the timeline strip: where it came from in the old cut
// (upper row) and where it lies in the new cut (lower row), in the strip's
// pixels, and the colour both are filled with. The rectangles are plain
// values that the strip paints itself; an event never placed has empty
// ones. The event is watched, not held, so that the strip never keeps a
// deleted event alive.
struct TimeLineEvent {
    juce::Rectangle<float> sourceRectangle;
    juce::Rectangle<float> destinationRectangle;
    juce::Colour fill;
    bool selected = false;
    std::weak_ptr<core::EventBase> event;
};

} // namespace montala::gui
