#pragma once

#include "core/events/EventList.h"
#include "gui/TimeLineEvent.h"
#include "gui/TimeLineRowPainter.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <vector>

namespace montala::gui {

// The strip under the Change table: every Change event as a rectangle in
// the old cut ("Source", upper row) and in the new cut ("Destination", lower
// row), on one scale that fits the whole list into the width. No zoom, no
// scrolling, no mouse.
//
//     0        100                                          width
//   0 +---------+----------------------------------------------+
//     | Source  | [==]  [=====]     [=] [====]                 |
//  35 +---------+----------------------------------------------+
//  45 +---------+----------------------------------------------+
//     | Destin. |  [=====] [==]  [====]   [=]                  |
//  80 +---------+----------------------------------------------+
//                ^ start                                  end ^
//
// An event is never thinner than a pixel, so a one-frame event in a long
// reel stays visible.
//
// The rectangles are plain values painted in paint(), not child components:
// a feature's Change EDL has 10,000 events, and a component parent looks at
// all its children whenever one is added, moved in the z-order or resized,
// which made filling, laying out and selecting cost the square of the count.
// The z-order is worked out as it is painted: the unselected events in list
// order, the selected ones above them all, again in list order.
class EventTimeLineView : public juce::Component {
public:
    using TimeLineEvent = gui::TimeLineEvent;

    static constexpr int labelWidth = 100;
    static constexpr int rowHeight = 35;
    static constexpr int destinationTop = 45;

    EventTimeLineView();
    ~EventTimeLineView() override;

    // Rebuilds all rectangles from the list, at the current frame rate.
    void setEvents(const core::EventList& list);
    // Marks the rectangles of the selected events (by pointer) and brings
    // them to the front; the others take their own colours and their place
    // in list order back.
    void setSelection(const core::EventList& selected);

    void paint(juce::Graphics& g) override;
    void resized() override;

    // The time span the strip shows, in seconds.
    double getStart() const { return start; }
    double getEnd() const { return end; }
    // One per event of the last list, in its order.
    const std::vector<TimeLineEvent>& getTimeLineEvents() const { return events; }

private:
    void layOut();
    bool paintRows(juce::Graphics& g);
    void paintPaths(juce::Graphics& g) const;

    juce::Label sourceLabel;
    juce::Label destinationLabel;
    double start = 0.0;
    double end = 0.0;
    std::vector<TimeLineEvent> events;
    // Kept from paint to paint, so that a paint allocates nothing.
    TimeLineRowPainter rowPainter;
    std::vector<TimeLineRowPainter::Fill> rowFills;
};

} // namespace montala::gui
