// The main window against a real data model and a recording conform driver:
// what the user sees after each action, what is stored with the project, and
// which calls reach the driver.

#include "gui/MainGui.h"

#include "core/model/DataModel.h"
#include "core/model/PropertyKeys.h"
#include "core/model/Variant.h"
#include "gui/AlertWindowBase.h"
#include "gui/FileBrowserDialogBase.h"
#include "support/FakeMontaler.h"
#include "gui/GuiTestSupport.h"
#include "gui/Palette.h"
#include "support/ModelFixture.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace montala::gui {
namespace {

using core::PropertyKey;
using test::makeEvent;

class RecordingAlert : public AlertWindowBase {
public:
    explicit RecordingAlert(std::vector<std::string>& shown) : shown(shown) {}
    int show(const std::string& message, const std::string&, const std::string&, const std::string&) override
    {
        shown.push_back(message);
        return FirstButton;
    }
    std::vector<std::string>& shown;
};

class ChosenFile : public FileBrowserDialogBase {
public:
    explicit ChosenFile(std::string path) : path(std::move(path)) {}
    bool show(const std::string& title, const std::string&, const std::string& extension,
              const std::string& description, bool, std::vector<std::string>& results) override
    {
        asked = title + " | " + description + " | " + extension;
        results.push_back(path);
        return true;
    }
    std::string path;
    std::string asked;
};

class MainGuiTest : public test::ModelFixture {
protected:
    MainGuiTest()
    {
        model.setNotifier(&project);
        AlertWindowBase::install(std::make_unique<RecordingAlert>(alerts));
        gui.setMontaler(&driver);
    }
    ~MainGuiTest() override
    {
        AlertWindowBase::remove();
        FileBrowserDialogBase::remove();
        model.setNotifier(nullptr);
    }

    // Two shots that swap places in the re-cut:
    //   Old  | A 10:00:00:00 | B 10:00:04:00 |
    //   New  | B 10:00:00:00 | A 10:00:04:00 |
    // so the Change EDL holds B first (row 0) and A second (row 1).
    void fillSwappedShots()
    {
        model.getOldList().addEvent(makeEvent("A", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00"));
        model.getOldList().addEvent(makeEvent("B", "02:00:00:00", "02:00:04:00", "10:00:04:00", "10:00:08:00"));
        model.getNewList().addEvent(makeEvent("B", "02:00:00:00", "02:00:04:00", "10:00:00:00", "10:00:04:00"));
        model.getNewList().addEvent(makeEvent("A", "01:00:00:00", "01:00:04:00", "10:00:04:00", "10:00:08:00"));
    }
    void generate() { gui.buttonClicked(&gui.getGenerateButton()); }
    juce::String counter(MainGui::Table table, MainGui::Counter which)
    {
        return gui.getCounter(table, which).getText();
    }
    std::string property(int key)
    {
        core::Variant value;
        model.getProperty(key, value);
        return value.asText();
    }
    void switchPreview(bool on) { gui.getPreviewButton().setToggleState(on, juce::sendNotification); }

    juce::ScopedJuceInitialiser_GUI juce;
    core::DataModel model;
    test::ProjectNotifier project{&model};
    test::FakeMontaler driver{&model};
    std::vector<std::string> alerts;
    test::RecordingUndo undo;
    MainGui gui;
};

TEST_F(MainGuiTest, OpensDisabledAndEmptyAndFollowsTheProjectsModelInAndOut)
{
    EXPECT_FALSE(gui.isEnabled());
    EXPECT_TRUE(gui.getSourceToggle().getToggleState());
    EXPECT_FALSE(gui.getSourceToggle().isEnabled());

    fillSwappedShots();
    gui.setProject(&project);
    EXPECT_TRUE(gui.isEnabled());
    EXPECT_EQ(gui.getTableModel(MainGui::OldTable)->getNumRows(), 2);
    EXPECT_EQ(counter(MainGui::NewTable, MainGui::TotalCounter), "2");
    EXPECT_FALSE(gui.getPreviewButton().isEnabled()) << "no Change events, nothing to preview";

    // Leaving the project drops the tables' models and zeroes every counter.
    gui.setProject(nullptr);
    EXPECT_FALSE(gui.isEnabled());
    EXPECT_EQ(gui.getTableModel(MainGui::OldTable), nullptr);
    EXPECT_EQ(gui.getTable(MainGui::OldTable).getModel(), nullptr);
    EXPECT_EQ(counter(MainGui::NewTable, MainGui::TotalCounter), "0");
    EXPECT_EQ(project.getListenerCount(), 0u);
    // Actions without a model are ignored.
    generate();
    EXPECT_EQ(model.getChangeList().getSize(), 0u);
}

TEST_F(MainGuiTest, GenerateFillsTheChangeTableAndCountersInOneUndoStep)
{
    fillSwappedShots();
    // An Old event that ends before it starts is kept, counted as invalid.
    const core::EventPtr backwards = makeEvent("C", "03:00:01:00", "03:00:00:00", "10:00:08:00", "10:00:09:00");
    backwards->revalidate();
    model.getOldList().addEvent(backwards);
    gui.setProject(&project);
    EXPECT_EQ(counter(MainGui::OldTable, MainGui::InvalidCounter), "1");
    EXPECT_EQ(gui.getCounter(MainGui::OldTable, MainGui::InvalidCounter).findColour(juce::Label::textColourId),
              palette::red);

    generate();
    EXPECT_EQ(undo.titles, std::vector<std::string>{"Generate Change EDL"});
    ASSERT_EQ(gui.getTableModel(MainGui::ChangeTable)->getNumRows(), 2);
    EXPECT_EQ(gui.getTableModel(MainGui::ChangeTable)->getCellText(0, 9), "10:00:00:00");
    EXPECT_EQ(gui.getTableModel(MainGui::ChangeTable)->getCellText(0, 7), "10:00:04:00");
    EXPECT_EQ(counter(MainGui::ChangeTable, MainGui::TotalCounter), "2");
    EXPECT_EQ(counter(MainGui::ChangeTable, MainGui::InvalidCounter), "0");
    EXPECT_EQ(gui.getCounter(MainGui::ChangeTable, MainGui::InvalidCounter).findColour(juce::Label::textColourId),
              palette::green);
    EXPECT_TRUE(gui.getPreviewButton().isEnabled());
    EXPECT_FALSE(gui.getPreviewButton().getToggleState());

    // Clearing the Change list is a step of its own and takes the marks along.
    gui.getTable(MainGui::ChangeTable).selectRow(0);
    ASSERT_EQ(gui.getTableModel(MainGui::OldTable)->getMarks().getSize(), 1u);
    gui.buttonClicked(&gui.getClearButton(MainGui::ChangeTable));
    EXPECT_EQ(undo.titles.back(), "Delete Change EDL");
    EXPECT_EQ(counter(MainGui::ChangeTable, MainGui::TotalCounter), "0");
    EXPECT_EQ(gui.getTableModel(MainGui::OldTable)->getMarks().getSize(), 0u);
    EXPECT_FALSE(gui.getPreviewButton().isEnabled());
}

TEST_F(MainGuiTest, ChangeSelectionMarksRelatedRowsAndIsStoredWithTheProject)
{
    fillSwappedShots();
    gui.setProject(&project);
    generate();

    // Row 0 is shot B, which was the Old list's second event and is the New
    // list's first.
    gui.getTable(MainGui::ChangeTable).selectRow(0);
    const core::EventList& oldMarks = gui.getTableModel(MainGui::OldTable)->getMarks();
    const core::EventList& newMarks = gui.getTableModel(MainGui::NewTable)->getMarks();
    ASSERT_EQ(oldMarks.getSize(), 1u);
    ASSERT_EQ(newMarks.getSize(), 1u);
    EXPECT_EQ(oldMarks.getEvent(0), model.getOldList().getEvent(1));
    EXPECT_EQ(newMarks.getEvent(0), model.getNewList().getEvent(0));
    EXPECT_EQ(counter(MainGui::ChangeTable, MainGui::SelectedCounter), "1");
    EXPECT_EQ(property(PropertyKey::ChangeSelectedRows), "0");

    gui.getTable(MainGui::ChangeTable).selectRangeOfRows(0, 1);
    EXPECT_EQ(gui.getTableModel(MainGui::OldTable)->getMarks().getSize(), 2u);
    EXPECT_EQ(property(PropertyKey::ChangeSelectedRows), "0;1");

    gui.getTable(MainGui::ChangeTable).deselectAllRows();
    EXPECT_EQ(gui.getTableModel(MainGui::NewTable)->getMarks().getSize(), 0u);
    EXPECT_EQ(property(PropertyKey::ChangeSelectedRows), "");

    // A sort is stored as column and flag; reopened, the table sorts so again
    // and a stored row past the end is dropped while the rest stands.
    // (The header tells its model asynchronously; the test calls it as the
    // header would.)
    gui.getTableModel(MainGui::OldTable)->sortOrderChanged(3, false);
    core::Variant column;
    ASSERT_EQ(model.getProperty(PropertyKey::OldSortColumn, column), util::Result::Ok);
    EXPECT_EQ(column.asInt(), 3);
    model.setProperty(PropertyKey::ChangeSelectedRows, core::Variant("1;7"));
    gui.setProject(nullptr);
    gui.setProject(&project);
    EXPECT_EQ(gui.getTableModel(MainGui::OldTable)->getSortColumn(), 3);
    EXPECT_EQ(gui.getTable(MainGui::ChangeTable).getSelectedRows().size(), 1);
    EXPECT_TRUE(gui.getTable(MainGui::ChangeTable).isRowSelected(1));
    EXPECT_EQ(gui.getTableModel(MainGui::NewTable)->getMarks().getSize(), 1u);
    EXPECT_EQ(driver.previews.size(), 0u) << "restoring a selection plays nothing";
}

TEST_F(MainGuiTest, MarksAreTheEventsTheModelRelatesToEachSelectedChangeEvent)
{
    // The window keeps its own search structures over Old and New; what it
    // marks must stay what the data model relates, on a real re-cut and
    // after the Old list has changed underneath.
    test::loadShortFilm(model);
    gui.setProject(&project);
    generate();
    const auto expectMarksOfEachRow = [this] {
        EventTableModel& change = *gui.getTableModel(MainGui::ChangeTable);
        ASSERT_GT(change.getNumRows(), 5);
        for (int row = 0; row < change.getNumRows(); ++row) {
            SCOPED_TRACE(row);
            gui.getTable(MainGui::ChangeTable).selectRow(row);
            const core::EventPtr event = change.getRowEvent(row);
            EXPECT_EQ(gui.getTableModel(MainGui::OldTable)->getMarks().getEvents(),
                      model.findOldEvents(event).getEvents());
            EXPECT_EQ(gui.getTableModel(MainGui::NewTable)->getMarks().getEvents(),
                      model.findNewEvents(event).getEvents());
        }
    };
    expectMarksOfEachRow();
    model.getOldList().removeRange(0, 3);
    expectMarksOfEachRow();
    EXPECT_EQ(gui.getTableModel(MainGui::OldTable)->getNumRows(), static_cast<int>(model.getOldList().getSize()));
}

TEST_F(MainGuiTest, PreviewButtonGoesFromNoEventsToIdleToPreviewingAndBack)
{
    fillSwappedShots();
    gui.setProject(&project);
    EXPECT_FALSE(gui.getPreviewButton().isEnabled());
    generate();
    EXPECT_TRUE(gui.getPreviewButton().isEnabled());

    gui.getTable(MainGui::ChangeTable).selectRow(1);
    switchPreview(true);
    EXPECT_EQ(driver.previewActivations, std::vector<bool>{true});
    EXPECT_TRUE(gui.getPreviewButton().isFlashing());
    const auto lit = [this] { return gui.getPreviewButton().findColour(juce::TextButton::buttonOnColourId); };
    for (int waited = 0; waited < 3 * FlashTextButton::flashIntervalMs && lit() == palette::accent; waited += 50)
        juce::MessageManager::getInstance()->runDispatchLoopUntil(50);
    EXPECT_EQ(lit(), palette::accent.darker(0.4f)) << "the lit button blinks dark";
    EXPECT_TRUE(gui.getSourceToggle().isEnabled());
    EXPECT_TRUE(gui.getDestinationToggle().isEnabled());
    // Row 1 is the last: the run takes one event before it and none after.
    ASSERT_EQ(driver.previews.size(), 1u);
    EXPECT_EQ(driver.previews[0].events.size(), 2u);
    EXPECT_EQ(driver.previews[0].first, 1u);
    EXPECT_EQ(driver.previews[0].last, 0u);
    EXPECT_FALSE(driver.previews[0].showDestination);

    // Choosing the destination side shows the selection alone, no leads.
    gui.getDestinationToggle().setToggleState(true, juce::sendNotification);
    ASSERT_EQ(driver.shownPreviews.size(), 1u);
    EXPECT_EQ(driver.shownPreviews[0].events.size(), 1u);
    EXPECT_TRUE(driver.shownPreviews[0].showDestination);

    // A new selection previews again; no selection ends the preview.
    gui.getTable(MainGui::ChangeTable).selectRow(0);
    EXPECT_EQ(driver.previews.size(), 2u);
    EXPECT_TRUE(driver.previews[1].showDestination);
    gui.getTable(MainGui::ChangeTable).deselectAllRows();
    EXPECT_EQ(driver.deletePreviewCalls, 1);

    // An edit of the Change list leaves the preview: back to idle.
    model.getChangeList().removeRange(0, 1);
    EXPECT_EQ(driver.previewActivations, (std::vector<bool>{true, false}));
    EXPECT_FALSE(gui.getPreviewButton().getToggleState());
    EXPECT_FALSE(gui.getPreviewButton().isFlashing());
    EXPECT_EQ(lit(), palette::accent) << "never left dark";
    EXPECT_FALSE(gui.getDestinationToggle().isEnabled());
    EXPECT_TRUE(gui.getPreviewButton().isEnabled());

    // The model leaving preview by itself turns the button off as well.
    switchPreview(true);
    model.setPreviewActive(false);
    model.notifyPreviewChanged();
    EXPECT_FALSE(gui.getPreviewButton().getToggleState());
    EXPECT_FALSE(gui.getSourceToggle().isEnabled());
}

TEST_F(MainGuiTest, StoredPreviewReopensLitOnTheSavedSideWithoutPlaying)
{
    fillSwappedShots();
    ASSERT_EQ(model.generateChangeEdl(), util::Result::Ok);
    model.setPreviewActive(true);
    model.setProperty(PropertyKey::PreviewShowsDestination, core::Variant(true));
    model.setProperty(PropertyKey::ChangeSelectedRows, core::Variant("1"));

    gui.setProject(&project);
    EXPECT_TRUE(gui.getPreviewButton().getToggleState());
    EXPECT_TRUE(gui.getPreviewButton().isFlashing());
    EXPECT_TRUE(gui.getDestinationToggle().getToggleState());
    EXPECT_FALSE(gui.getSourceToggle().getToggleState());
    EXPECT_TRUE(gui.getSourceToggle().isEnabled());
    EXPECT_TRUE(gui.getTable(MainGui::ChangeTable).isRowSelected(1));
    EXPECT_TRUE(driver.previews.empty());
    EXPECT_EQ(driver.deletePreviewCalls, 0);
    EXPECT_TRUE(driver.previewActivations.empty());
}

TEST_F(MainGuiTest, PreviewAndRunSayWhyTheyCannotStart)
{
    fillSwappedShots();
    gui.setProject(&project);
    generate();
    gui.getTable(MainGui::ChangeTable).selectRow(0);

    struct Case {
        util::Result::Type code;
        const char* preview;
        const char* run;
    };
    const Case cases[] = {
        {util::Result::NoSelectedTracks,
         "No tracks selected for the preview.\nPlease select the tracks that you want to use.",
         "No tracks selected for Montala process.\nPlease select the tracks that you want to use."},
        {util::Result::EmptyChangeList, "No events in Change EDL.", "No events in Change EDL."},
        {util::Result::NoTracks, "No tracks available for the preview.", "No tracks available for Montala process."},
    };
    model.setPreviewActive(true);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.code);
        driver.tracksCode = c.code;
        alerts.clear();
        gui.runPreview();
        gui.runMontala();
        EXPECT_EQ(alerts, (std::vector<std::string>{c.preview, c.run}));
    }
    EXPECT_TRUE(driver.previews.empty());
    EXPECT_EQ(driver.startConformCalls, 0);

    // With tracks, the run leaves a running preview first.
    driver.tracksCode = util::Result::Ok;
    model.setPreviewActive(false);
    switchPreview(true);
    gui.getDestinationToggle().setToggleState(true, juce::dontSendNotification);
    alerts.clear();
    gui.buttonClicked(&gui.getMontalaButton());
    EXPECT_TRUE(alerts.empty());
    EXPECT_EQ(driver.startConformCalls, 1);
    EXPECT_EQ(driver.previewActivations.back(), false);
    EXPECT_FALSE(gui.getPreviewButton().getToggleState());
    EXPECT_TRUE(gui.getSourceToggle().getToggleState());
    EXPECT_FALSE(gui.getDestinationToggle().isEnabled());
}

TEST_F(MainGuiTest, SaveWritesTheChangeListWhereTheUserChoseAndNothingWhenItIsEmpty)
{
    const auto folder = std::filesystem::temp_directory_path() / ("montala-maingui-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    const std::string path = (folder / "change.edl").string();
    auto dialog = std::make_unique<ChosenFile>(path);
    ChosenFile* chosen = dialog.get();
    FileBrowserDialogBase::install(std::move(dialog));

    fillSwappedShots();
    gui.setProject(&project);
    gui.buttonClicked(&gui.getSaveButton());
    EXPECT_EQ(chosen->asked, "Save Change EDL as... | Edit Decision List | edl");
    EXPECT_FALSE(std::filesystem::exists(path)) << "an empty Change list writes nothing";

    generate();
    gui.buttonClicked(&gui.getSaveButton());
    std::ifstream written(path);
    const std::string text((std::istreambuf_iterator<char>(written)), std::istreambuf_iterator<char>());
    EXPECT_NE(text.find("10:00:04:00 10:00:08:00 10:00:00:00 10:00:04:00"), std::string::npos) << text;
    std::filesystem::remove_all(folder);
}

TEST_F(MainGuiTest, LoadButtonsOpenTheAddEdlsOverlayForTheirListOnlyWithAModel)
{
    gui.buttonClicked(&gui.getLoadButton(MainGui::NewTable));
    EXPECT_FALSE(gui.getFileDialog().isVisible()) << "no project, nothing to load into";

    gui.setProject(&project);
    for (MainGui::Table table : {MainGui::OldTable, MainGui::NewTable, MainGui::ChangeTable}) {
        gui.buttonClicked(&gui.getLoadButton(table));
        EXPECT_TRUE(gui.getFileDialog().isVisible());
        EXPECT_EQ(gui.getFileDialog().getListKind(), static_cast<int>(table));
        EXPECT_EQ(gui.getFileDialog().getBounds(), gui.getLocalBounds()) << "it covers the window";
        gui.getFileDialog().setVisible(false);
    }
}

TEST_F(MainGuiTest, EditOpensThePopupBesideThePointerAndInsideTheWindow)
{
    fillSwappedShots();
    gui.setProject(&project);
    generate();
    TcEditDialog& popup = gui.getEditDialog();
    const core::EventPtr event = model.getChangeList().getEvent(0);

    gui.editRequested(event, gui.getTableModel(MainGui::ChangeTable), test::mouseOn(gui, {100.0f, 200.0f}));
    EXPECT_TRUE(popup.isVisible());
    EXPECT_EQ(popup.getPosition(), juce::Point<int>(110, 210));
    EXPECT_FALSE(popup.isMotionSpeedShown()) << "a Change event has no speed of its own";
    EXPECT_EQ(popup.getInput(TcEditDialog::DstIn).getTimecode(), event->getDstIn());

    // Near the bottom right corner it opens up and to the left of the pointer.
    gui.editRequested(model.getOldList().getEvent(0), gui.getTableModel(MainGui::OldTable),
                      test::mouseOn(gui, {1290.0f, 740.0f}));
    EXPECT_EQ(popup.getRight(), gui.getWidth() - 10);
    EXPECT_EQ(popup.getBottom(), gui.getHeight() - 10);
    EXPECT_TRUE(popup.isMotionSpeedShown());
}

} // namespace
} // namespace montala::gui
