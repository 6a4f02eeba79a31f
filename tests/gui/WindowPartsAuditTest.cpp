// Faults found by drawing the window with the sample reel and by driving its
// inputs at the rates a project can have: timecodes that must stay readable
// in their fixed columns, the header's corner above the scroll bar, and the
// wheel over a timecode input at drop-frame rates.

#include "gui/EventTableColumns.h"
#include "gui/EventTableModel.h"
#include "gui/LookAndFeel.h"
#include "gui/Palette.h"
#include "gui/TcInput.h"
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

class Recorder : public TcInput::Listener {
public:
    void timecodeChanged(TcInput*) override { ++calls; }
    int calls = 0;
};

class TcInputRatesTest : public WindowPartsAuditTest {
protected:
    TcInputRatesTest()
    {
        input.setSize(100, 22);
        input.addListener(&recorder);
    }
    ~TcInputRatesTest() override { input.removeListener(&recorder); }

    juce::Component& field(const char* name)
    {
        for (auto* child : input.getChildren())
            if (child->getName() == name)
                return *child;
        throw std::string(name);
    }

    void wheel(const char* name, float deltaY)
    {
        juce::Component& target = field(name);
        const juce::Point<float> centre = target.getLocalBounds().getCentre().toFloat();
        const juce::Time now = juce::Time::getCurrentTime();
        const juce::MouseEvent event(juce::Desktop::getInstance().getMainMouseSource(), centre, {},
                                     juce::MouseInputSource::defaultPressure, 0.0f, 0.0f, 0.0f, 0.0f, &target,
                                     &target, now, centre, now, 0, false);
        juce::MouseWheelDetails details{};
        details.deltaY = deltaY;
        target.mouseWheelMove(event, details);
    }

    std::string shown() const { return input.getTimecode().toString(); }

    TcInput input;
    Recorder recorder;
};

TEST_F(TcInputRatesTest, WheelStepsEveryFieldAtDropFrameWhereTheMinutesLabelDoesNotExist)
{
    // 29.97 drop frame: 00:01:00;00 and ;01 are no timecodes.
    setRate(30, 1, true);
    input.setTimecode(core::Timecode(0, 0, 0, 0), false);

    wheel("Minutes Edit", 1.0f);
    EXPECT_EQ(input.getTimecode(), core::Timecode(0, 1, 0, 2)) << "the first label of minute one";
    EXPECT_EQ(recorder.calls, 1);

    wheel("FramesEdit", -1.0f);
    EXPECT_EQ(input.getTimecode(), core::Timecode(0, 0, 59, 29)) << "back over the two dropped labels";
    wheel("Seconds Edit", 1.0f);
    EXPECT_EQ(input.getTimecode().getMinutes(), 1);
    wheel("Hours Edit", 1.0f);
    EXPECT_EQ(input.getTimecode().getHours(), 1);
    // Down twice from 01:01:01;01: a minute back, then back over the hour.
    wheel("Minutes Edit", -1.0f);
    EXPECT_EQ(input.getTimecode().getHours(), 1);
    EXPECT_EQ(input.getTimecode().getMinutes(), 0);
    wheel("Minutes Edit", -1.0f);
    EXPECT_EQ(input.getTimecode().getHours(), 0);
    EXPECT_EQ(input.getTimecode().getMinutes(), 59);
    EXPECT_TRUE(input.getTimecode().isValid());
    EXPECT_EQ(recorder.calls, 6);
}

TEST_F(TcInputRatesTest, WheelLeavesAValueThatIsNoTimecodeAtTheCurrentRateAlone)
{
    setRate(30, 0);
    input.setTimecode(core::Timecode(1, 0, 0, 29), false);
    // The project's rate changes under an open input.
    setRate(25, 0);
    for (const char* name : {"Hours Edit", "Minutes Edit", "Seconds Edit", "FramesEdit"}) {
        SCOPED_TRACE(name);
        wheel(name, 1.0f);
        wheel(name, -1.0f);
    }
    EXPECT_EQ(input.getTimecode(), core::Timecode(1, 0, 0, 29));
    EXPECT_EQ(recorder.calls, 0);
}

} // namespace
} // namespace montala::gui
