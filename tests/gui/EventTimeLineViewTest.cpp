#include "gui/EventTimeLineView.h"

#include "gui/Palette.h"
#include "support/ModelFixture.h"

#include <gtest/gtest.h>

#include <cmath>

namespace montala::gui {
namespace {

using test::makeEvent;
using test::tc;

// 25 fps. The strip is 1100 wide, so 1000 pixels show the events; the
// fixtures span 100 seconds, which makes 10 pixels a second.
class EventTimeLineViewTest : public test::ModelFixture {
protected:
    EventTimeLineViewTest() { view.setSize(1100, 80); }

    juce::Image draw() { return view.createComponentSnapshot(view.getLocalBounds(), true, 1.0f); }

    juce::uint32 at(const juce::Image& image, int x, int y) { return image.getPixelAt(x, y).getARGB(); }

    // The x of a place on the strip, in whole pixels of the reel's scale.
    static int column(double secondsFromStart) { return 100 + static_cast<int>(secondsFromStart * 10.0); }

    juce::ScopedJuceInitialiser_GUI juce;
    EventTimeLineView view;
    core::EventList list{core::EventList::ChangeKind};
};

constexpr int sourceRow = 17;
constexpr int destinationRow = 62;

TEST_F(EventTimeLineViewTest, PlacesSourceAndDestinationOnOneScaleAndKeepsOneFrameEventsVisible)
{
    // SRC starts at 01:00:00:00, DST ends at 01:01:40:00: the strip runs
    // from 3600 s to 3700 s.
    list.addEvent(makeEvent("A", "01:00:00:00", "01:00:10:00", "01:00:20:00", "01:00:30:00"));
    list.addEvent(makeEvent("B", "01:00:50:00", "01:00:50:01", "01:01:39:24", "01:01:40:00"));
    list.addEvent(makeEvent("C", "01:00:30:00", "01:00:45:00", "01:00:40:00", "01:00:55:00"));
    view.setEvents(list);
    EXPECT_DOUBLE_EQ(view.getStart(), 3600.0);
    EXPECT_DOUBLE_EQ(view.getEnd(), 3700.0);

    const juce::Image image = draw();
    const juce::uint32 event = palette::event.getARGB();
    // A: 0 s to 10 s above, 20 s to 30 s below.
    EXPECT_EQ(at(image, column(0) + 1, sourceRow), event);
    EXPECT_EQ(at(image, column(9.9), sourceRow), event);
    EXPECT_NE(at(image, column(10) + 2, sourceRow), event);
    EXPECT_NE(at(image, column(0) + 1, destinationRow), event);
    EXPECT_EQ(at(image, column(25), destinationRow), event);
    // The rows keep their gap between y = 35 and y = 45.
    EXPECT_EQ(at(image, column(5), 0), event);
    EXPECT_EQ(at(image, column(5), 34), event);
    EXPECT_NE(at(image, column(5), 40), event);
    EXPECT_NE(at(image, column(25), 40), event);
    EXPECT_EQ(at(image, column(25), 79), event);

    // B lasts one frame (0.4 pixels at this scale) and is drawn a pixel wide.
    EXPECT_EQ(at(image, column(50), sourceRow), event);
    EXPECT_NE(at(image, column(50) + 2, sourceRow), event);
    const auto oneFrame = view.getTimeLineEvents()[1].destinationRectangle;
    EXPECT_FLOAT_EQ(oneFrame.getX(), 1099.6f);
    EXPECT_FLOAT_EQ(oneFrame.getWidth(), 1.0f);
    for (const auto& item : view.getTimeLineEvents()) {
        EXPECT_GE(item.sourceRectangle.getWidth(), 1.0f);
        EXPECT_GE(item.destinationRectangle.getWidth(), 1.0f);
    }

    // Nothing is drawn over the labels' column.
    EXPECT_NE(at(image, 99, sourceRow), event);

    // A narrower strip scales everything down: 500 pixels for 100 s.
    view.setSize(600, 80);
    const juce::Image narrow = draw();
    EXPECT_EQ(at(narrow, 100 + 5 * 25, destinationRow), event);
    EXPECT_NE(at(narrow, 100 + 5 * 35, destinationRow), event);
}

TEST_F(EventTimeLineViewTest, SelectionIsBrightOnTopAndTheRestKeepListOrderAndTheirColours)
{
    // Three overlapping events, VFX, plain, VFX: in list order each later
    // one covers the overlap with the one before.
    //   A (vfx)    0 s ..  40 s
    //   B (plain) 20 s ..  60 s
    //   C (vfx)   50 s .. 100 s
    core::EventPtr a = makeEvent("A", "01:00:00:00", "01:00:40:00", "01:00:00:00", "01:00:40:00");
    core::EventPtr b = makeEvent("B", "01:00:20:00", "01:01:00:00", "01:00:20:00", "01:01:00:00");
    core::EventPtr c = makeEvent("C", "01:00:50:00", "01:01:40:00", "01:00:50:00", "01:01:40:00");
    a->setVfx(true);
    c->setVfx(true);
    for (const core::EventPtr& event : {a, b, c})
        list.addEvent(event);
    view.setEvents(list);
    const auto expectListOrder = [this](const char* when) {
        const juce::Image image = draw();
        EXPECT_EQ(at(image, column(10), sourceRow), palette::vfx.getARGB()) << when;
        EXPECT_EQ(at(image, column(30), sourceRow), palette::event.getARGB()) << when;
        EXPECT_EQ(at(image, column(55), destinationRow), palette::vfx.getARGB()) << when;
    };
    expectListOrder("as filled");

    // Everything selected: all bright, on both rows, over the whole span.
    view.setSelection(list);
    juce::Image image = draw();
    for (double seconds : {1.0, 30.0, 55.0, 99.0}) {
        EXPECT_EQ(at(image, column(seconds), sourceRow), palette::bright.getARGB()) << seconds;
        EXPECT_EQ(at(image, column(seconds), destinationRow), palette::bright.getARGB()) << seconds;
    }

    // The middle one alone selected lies above both neighbours; the others
    // are no longer bright.
    core::EventList middle(core::EventList::ChangeKind);
    middle.addEvent(b);
    view.setSelection(middle);
    image = draw();
    EXPECT_EQ(at(image, column(10), sourceRow), palette::vfx.getARGB());
    EXPECT_EQ(at(image, column(30), sourceRow), palette::bright.getARGB());
    EXPECT_EQ(at(image, column(55), sourceRow), palette::bright.getARGB());
    EXPECT_EQ(at(image, column(80), sourceRow), palette::vfx.getARGB());

    // The first and the last, named in the reverse order: the middle one
    // goes back between them.
    core::EventList outer(core::EventList::ChangeKind);
    outer.addEvent(c);
    outer.addEvent(a);
    view.setSelection(outer);
    image = draw();
    EXPECT_EQ(at(image, column(30), sourceRow), palette::bright.getARGB());
    EXPECT_EQ(at(image, column(45), sourceRow), palette::event.getARGB());
    EXPECT_EQ(at(image, column(55), sourceRow), palette::bright.getARGB());

    view.setSelection(core::EventList(core::EventList::ChangeKind));
    expectListOrder("after the selection is dropped");

    // A list taken again starts with nothing selected.
    view.setSelection(list);
    view.setEvents(list);
    expectListOrder("after the list is taken again");
}

TEST_F(EventTimeLineViewTest, EventsShorterThanAPixelKeepTheirColoursAndOrderOnAScaledDisplay)
{
    // 1,000 one-frame events back to back from 3600 s, 0.4 pixels each and
    // drawn a pixel wide, then a long one from 3650 s to 3700 s. The 501st
    // is selected, the last short one is VFX. Drawn at twice the size, as on
    // a high-density display: 20 device pixels a second.
    for (int frame = 0; frame < 1000; ++frame) {
        auto event = std::make_shared<core::EventBase>();
        const core::Timecode in(90000 + frame);
        const core::Timecode out(90000 + frame + 1);
        event->setTimecodes(in, out, in, out);
        event->setVfx(frame == 999);
        list.addEvent(event);
    }
    list.addEvent(makeEvent("L", "01:00:50:00", "01:01:40:00", "01:00:50:00", "01:01:40:00"));
    view.setEvents(list);
    core::EventList selected(core::EventList::ChangeKind);
    selected.addEvent(list.getEvents()[500]);
    view.setSelection(selected);

    const juce::Image image = view.createComponentSnapshot(view.getLocalBounds(), true, 2.0f);
    // A colour to a shade: where many events share a pixel, the shade of
    // their edges depends on how they are blended.
    const auto shows = [&image](int x, int y, juce::Colour colour) {
        const juce::Colour pixel = image.getPixelAt(x, y);
        return pixel.getAlpha() == 255 && std::abs(pixel.getRed() - colour.getRed()) <= 2 &&
               std::abs(pixel.getGreen() - colour.getGreen()) <= 2 && std::abs(pixel.getBlue() - colour.getBlue()) <= 2;
    };
    for (const int row : {2 * sourceRow, 2 * destinationRow}) {
        SCOPED_TRACE(row);
        // The selected one at 20 s, 2 device pixels, above those after it.
        EXPECT_TRUE(shows(600, row, palette::bright));
        EXPECT_TRUE(shows(601, row, palette::bright));
        // No gap from the first to the last; the VFX one last and on top.
        for (int x = 200; x < 999; ++x)
            if (x != 600 && x != 601) {
                ASSERT_TRUE(shows(x, row, palette::event)) << x;
            }
        EXPECT_TRUE(shows(1000, row, palette::vfx));
        EXPECT_EQ(image.getPixelAt(1003, row).getAlpha(), 0);
        EXPECT_TRUE(shows(1250, row, palette::event));
    }
}

TEST_F(EventTimeLineViewTest, EmptyAndZeroLengthListsAreDrawnWithFiniteWidths)
{
    list.addEvent(makeEvent("A", "01:00:00:00", "01:00:10:00", "01:00:00:00", "01:00:10:00"));
    view.setEvents(list);

    // An empty list leaves the labels alone on the strip.
    view.setEvents(core::EventList(core::EventList::ChangeKind));
    EXPECT_EQ(view.getStart(), 0.0);
    EXPECT_EQ(view.getEnd(), 0.0);
    EXPECT_TRUE(view.getTimeLineEvents().empty());
    juce::Image image = draw();
    bool labelInked = false;
    for (int x = 0; x < 100 && !labelInked; ++x)
        for (int y = 0; y < 35 && !labelInked; ++y)
            labelInked = image.getPixelAt(x, y).getBrightness() > 0.5f;
    EXPECT_TRUE(labelInked);
    for (int x = 100; x < 1100; x += 7)
        ASSERT_EQ(image.getPixelAt(x, sourceRow).getAlpha(), 0) << x;

    // Events of no length at one place: start equals end, so there is no
    // scale; each event is a pixel wide at the left edge of the strip.
    list.clear();
    list.addEvent(makeEvent("A", "01:00:00:00", "01:00:00:00", "01:00:00:00", "01:00:00:00"));
    list.addEvent(makeEvent("B", "01:00:00:00", "01:00:00:00", "01:00:00:00", "01:00:00:00"));
    view.setEvents(list);
    EXPECT_EQ(view.getStart(), view.getEnd());
    for (const auto& item : view.getTimeLineEvents())
        for (const juce::Rectangle<float>& box : {item.sourceRectangle, item.destinationRectangle}) {
            EXPECT_TRUE(std::isfinite(box.getX()) && std::isfinite(box.getWidth()));
            EXPECT_FLOAT_EQ(box.getX(), 100.0f);
            EXPECT_FLOAT_EQ(box.getWidth(), 1.0f);
        }
    image = draw();
    EXPECT_EQ(at(image, 100, sourceRow), palette::event.getARGB());
    EXPECT_EQ(at(image, 100, destinationRow), palette::event.getARGB());
    EXPECT_NE(at(image, 102, sourceRow), palette::event.getARGB());
}

TEST_F(EventTimeLineViewTest, EventWithUnreadableTimecodesKeepsItsLastPlace)
{
    core::EventPtr first = makeEvent("A", "01:00:00:00", "01:00:50:00", "01:00:00:00", "01:00:50:00");
    core::EventPtr second = makeEvent("B", "01:00:50:00", "01:01:40:00", "01:00:50:00", "01:01:40:00");
    list.addEvent(first);
    list.addEvent(second);
    view.setEvents(list);
    const auto placedBefore = view.getTimeLineEvents().back().sourceRectangle;

    // 30 frames do not exist at 25 fps: the event gets error 11.
    second->setSrcIn(core::Timecode(1, 0, 50, 30));
    ASSERT_TRUE(second->hasState(core::EventState::InvalidTimecode));
    view.setSize(600, 80);
    EXPECT_EQ(view.getTimeLineEvents().back().sourceRectangle, placedBefore);
    EXPECT_FLOAT_EQ(view.getTimeLineEvents().front().sourceRectangle.getWidth(), 250.0f);

    // A new strip has no place for it at all.
    EventTimeLineView fresh;
    fresh.setSize(1100, 80);
    fresh.setEvents(list);
    EXPECT_TRUE(fresh.getTimeLineEvents().back().sourceRectangle.isEmpty());
}

} // namespace
} // namespace montala::gui

