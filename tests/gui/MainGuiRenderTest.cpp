// The main window drawn without a display, as an editor would see it with the
// 25 fps sample reel loaded, generated and one Change event selected. The
// picture is written beside the test program (MainGuiRender.png) so that it
// can be looked at; the pixels probed are the layout's landmarks.

#include "gui/MainGui.h"

#include "core/model/DataModel.h"
#include "gui/GuiTestSupport.h"
#include "gui/Palette.h"
#include "support/ModelFixture.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace montala::gui {
namespace {

class MainGuiRenderTest : public test::ModelFixture {
protected:
    void SetUp() override
    {
        test::loadShortFilm(model);
        model.setNotifier(&project);
        gui.setProject(&project);
        gui.buttonClicked(&gui.getGenerateButton());
        ASSERT_GT(model.getChangeList().getSize(), 10u);
        // Row 0 came from rows that the Old and New tables show at the top.
        gui.getTable(MainGui::ChangeTable).selectRow(0);

        image = gui.createComponentSnapshot(gui.getLocalBounds(), true, 1.0f);
        const juce::File png = juce::File::getSpecialLocation(juce::File::currentExecutableFile)
                                   .getSiblingFile("MainGuiRender.png");
        png.deleteFile();
        juce::FileOutputStream out(png);
        ASSERT_TRUE(out.openedOk());
        ASSERT_TRUE(juce::PNGImageFormat().writeImageToStream(image, out));
    }
    void TearDown() override { model.setNotifier(nullptr); }

    juce::Colour at(int x, int y) const { return image.getPixelAt(x, y); }
    // Pixels of exactly that colour in the area (text is drawn antialiased,
    // but the inside of its strokes has the colour itself).
    int count(juce::Rectangle<int> area, juce::Colour colour) const
    {
        int found = 0;
        for (int y = area.getY(); y < area.getBottom(); ++y)
            for (int x = area.getX(); x < area.getRight(); ++x)
                found += image.getPixelAt(x, y) == colour ? 1 : 0;
        return found;
    }
    // Centre of a cell of a table, in the window's coordinates.
    juce::Point<int> cellCentre(MainGui::Table table, int column, int row)
    {
        juce::TableListBox& box = gui.getTable(table);
        return box.getCellPosition(column, row, true).getCentre() + box.getPosition();
    }

    juce::ScopedJuceInitialiser_GUI juce;
    core::DataModel model;
    test::ProjectNotifier project{&model};
    MainGui gui;
    juce::Image image;
};

TEST_F(MainGuiRenderTest, PanelsStandWhereTheLayoutPutsThemAndShowTheGeneratedCut)
{
    ASSERT_EQ(image.getWidth(), 1300);
    ASSERT_EQ(image.getHeight(), 750);
    const int w = 1300;
    const int h = 750;

    EXPECT_EQ(at(3, 3), palette::window);
    EXPECT_EQ(at(w - 5, h / 2 + 200), palette::window) << "right of the Change panel, under the video place";
    // Outlines of the Old, New and Change panels, their insides beside the tables.
    EXPECT_EQ(at(8, 150), palette::outline);
    EXPECT_EQ(at(w / 2 + 4, 150), palette::outline);
    EXPECT_EQ(at(8, h / 2 + 150), palette::outline);
    EXPECT_EQ(at(12, 150), palette::panel);
    EXPECT_EQ(at(w - 10, 150), palette::panel);
    EXPECT_EQ(at(12, h / 2 + 150), palette::panel);
    // Strips under the titles, clear of the buttons on them.
    EXPECT_EQ(at(200, 30), palette::strip);
    EXPECT_EQ(at(w / 2 + 200, 60), palette::strip);
    EXPECT_EQ(at(500, h / 2 + 12), palette::strip);
    // The line above the timeline.
    EXPECT_EQ(at(400, h - 140), palette::outline);
    // Titles in the outline colour inside the top band of each panel.
    EXPECT_GT(count({w / 4 - 100, 8, 200, 20}, palette::outline), 20);
    EXPECT_GT(count({20, h / 2 - 10, w - 260, 20}, palette::outline), 20);

    // Every event of the sample reel is valid: green dots in the State column.
    for (MainGui::Table table : {MainGui::OldTable, MainGui::NewTable, MainGui::ChangeTable}) {
        SCOPED_TRACE(table);
        const juce::Point<int> dot = cellCentre(table, 1, 0);
        EXPECT_EQ(at(dot.x, dot.y), palette::green);
    }
    // The selected Change row is drawn bright, the text on it black.
    const juce::Point<int> selected = cellCentre(MainGui::ChangeTable, 2, 0);
    EXPECT_EQ(at(selected.x + 15, selected.y), palette::bright);
    EXPECT_GT(count(gui.getTable(MainGui::ChangeTable).getCellPosition(9, 0, true) +
                        gui.getTable(MainGui::ChangeTable).getPosition(),
                    juce::Colours::black),
              5);
    // The Old and New rows it came from carry the mark colour in their text.
    for (MainGui::Table table : {MainGui::OldTable, MainGui::NewTable}) {
        SCOPED_TRACE(table);
        EXPECT_GT(count(gui.getTable(table).getBounds(), palette::bright), 20);
    }
    // The timeline shows the events in their colour and the selection bright,
    // on both rows.
    const juce::Rectangle<int> timeline = gui.getTimeline().getBounds();
    const juce::Rectangle<int> source = timeline.withTrimmedLeft(100).withHeight(35);
    const juce::Rectangle<int> destination = source.withY(timeline.getY() + 45);
    for (const auto& row : {source, destination}) {
        EXPECT_GT(count(row, palette::event), 1000);
        EXPECT_GT(count(row, palette::bright), 35);
    }
    // Counters: no invalid events is said in green.
    EXPECT_GT(count(gui.getCounter(MainGui::ChangeTable, MainGui::InvalidCounter).getBounds(), palette::green), 5);
}

} // namespace
} // namespace montala::gui
