#pragma once

#include "core/EventBase.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace montala::gui {

// One Change event in the timeline strip: where it came from in the old cut
// (upper row) and where it lies in the new cut (lower row). The event is
// watched, not held, so that the strip never keeps a deleted event alive.
struct TimeLineEvent {
    juce::DrawableRectangle sourceRectangle;
    juce::DrawableRectangle destinationRectangle;
    std::weak_ptr<core::EventBase> event;
};

} // namespace montala::gui
