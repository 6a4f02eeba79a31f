// Faults found by drawing the window with the sample reel: timecodes that
// must stay readable in their fixed columns, and the header's corner above
// the scroll bar.

#include "gui/EventTableColumns.h"
#include "gui/EventTableModel.h"
#include "gui/LookAndFeel.h"
#include "gui/Palette.h"
#include "support/ModelFixture.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>

namespace montala::gui {
namespace {

using test::makeEvent;

class WindowPartsAuditTest : public test::ModelFixture {
protected:
    juce::ScopedJuceInitialiser_GUI juce;
};

// Pixels of the image that are not the background.
int inkIn(const juce::Image& image, juce::Rectangle<int> area, juce::Colour background)
{
    int ink = 0;
    for (int y = area.getY(); y < area.getBottom(); ++y)
        for (int x = area.getX(); x < area.getRight(); ++x)
            ink += image.getPixelAt(x, y) != background ? 1 : 0;
    return ink;
}

TEST_F(WindowPartsAuditTest, TimecodeCellsShowTheirFramesWithinTheirFixedColumn)
{
    // Two events that differ in the last frame digit of every timecode only.
    core::EventList list(core::EventList::OldKind);
    list.addEvent(makeEvent("A", "23:58:58:20", "23:58:58:21", "23:58:58:20", "23:58:58:21"));
    list.addEvent(makeEvent("A", "23:58:58:22", "23:58:58:23", "23:58:58:22", "23:58:58:23"));
    EventTableModel model(nullptr, &list, nullptr);
    ASSERT_EQ(model.getCellText(0, eventtable::SrcInColumn), "23:58:58:20");

    const int width = eventtable::columns[eventtable::SrcInColumn - 1].maximumWidth;
    for (int column = eventtable::SrcInColumn; column <= eventtable::DstOutColumn; ++column) {
        SCOPED_TRACE(column);
        // Each cell drawn at the left of an image wider than the column.
        juce::Image cells[2];
        for (int row = 0; row < 2; ++row) {
            cells[row] = juce::Image(juce::Image::ARGB, width + 20, 20, true);
            juce::Graphics g(cells[row]);
            g.fillAll(palette::panel);
            model.paintCell(g, row, column, width, 20, false);
        }
        // An ellipsis in place of the frames would draw both alike.
        EXPECT_GT(inkIn(cells[0], {0, 0, width, 20}, palette::panel), 0);
        int differing = 0;
        for (int y = 0; y < 20; ++y)
            for (int x = width / 2; x < width; ++x)
                differing += cells[0].getPixelAt(x, y) != cells[1].getPixelAt(x, y) ? 1 : 0;
        EXPECT_GT(differing, 0) << "the frames are drawn";
        EXPECT_EQ(inkIn(cells[0], {width - 1, 0, 21, 20}, palette::panel), 0) << "and stay in the column";
    }
}

TEST_F(WindowPartsAuditTest, HeaderCornerAboveTheScrollBarIsDrawnInTheHeadersColours)
{
    LookAndFeel lookAndFeel;
    juce::TableHeaderComponent header;
    header.setLookAndFeel(&lookAndFeel);
    eventtable::addColumns(header);
    header.setStretchToFitActive(false);
    const int columnsWidth = header.getTotalWidth();
    header.setSize(columnsWidth + 20, 24);
    const juce::Image image = header.createComponentSnapshot(header.getLocalBounds(), true, 1.0f);

    // The 20 pixels right of the last column: the panel, the strip below.
    for (int y : {1, 6, 12, 20}) {
        SCOPED_TRACE(y);
        EXPECT_EQ(image.getPixelAt(columnsWidth + 10, y), palette::panel);
    }
    EXPECT_EQ(image.getPixelAt(columnsWidth + 10, 23), palette::strip);
    header.setLookAndFeel(nullptr);
}

} // namespace
} // namespace montala::gui
