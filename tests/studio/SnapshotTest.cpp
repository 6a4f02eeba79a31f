// The window on the sample reel, drawn without a display: the picture the
// --snapshot option writes, and the steps of the command line behind it.

#include "core/model/DataModel.h"
#include "gui/MainGui.h"
#include "gui/Palette.h"
#include "studio/Snapshot.h"
#include "studio/Steps.h"
#include "studio/Studio.h"
#include "support/TempFolderTest.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace montala::studio {
namespace {

const std::string samples = std::string(MONTALA_SOURCE_DIR) + "/samples";

class SnapshotTest : public test::TempFolderTest {
protected:
    SnapshotTest() : TempFolderTest("montala-snapshot") {}

    void SetUp() override
    {
        std::string error;
        ASSERT_TRUE(studio.openSession(samples + "/sessions/short-film-25.json", error)) << error;
        ViewWiring::wire(window, studio);
    }
    void TearDown() override { ViewWiring::unwire(window); }

    StudioOptions sampleSteps() const
    {
        StudioOptions options;
        options.session = samples + "/sessions/short-film-25.json";
        options.oldFiles = {samples + "/edl/short-film-25/old.edl"};
        options.newFiles = {samples + "/edl/short-film-25/new.edl"};
        options.generate = true;
        return options;
    }

    // How many pixels of a row of the picture have exactly this colour.
    static int countInRow(const juce::Image& image, int y, juce::Colour colour)
    {
        int count = 0;
        for (int x = 0; x < image.getWidth(); ++x)
            count += image.getPixelAt(x, y).getARGB() == colour.getARGB();
        return count;
    }

    juce::ScopedJuceInitialiser_GUI juce;
    Studio studio{MONTALA_SOURCE_DIR "/resources"};
    gui::MainGui window;
    std::ostringstream out;
    std::ostringstream err;
};

TEST_F(SnapshotTest, WritesAPngOfTheSkinsSizeWhosePanelsShowThePalette)
{
    StudioOptions options = sampleSteps();
    options.selectRows = {3, 4};
    options.snapshot = pathOf("window.png");
    ASSERT_EQ(runSteps(studio, window, options, out, err), 0) << err.str();

    const juce::Image image = juce::ImageFileFormat::loadFrom(juce::File(options.snapshot));
    ASSERT_TRUE(image.isValid());
    ASSERT_EQ(image.getWidth(), 1300);
    ASSERT_EQ(image.getHeight(), 750);

    // Behind the panels, in the gap between Old and New at the top.
    EXPECT_EQ(image.getPixelAt(650, 200).getARGB(), gui::palette::window.getARGB());
    // The panels' bodies and their strips, on the rows through the counters
    // of the Old and New tables and through the timeline.
    EXPECT_GT(countInRow(image, 318, gui::palette::panel), 400);
    EXPECT_GT(countInRow(image, 45, gui::palette::strip), 400);
    // The timeline draws the cut in the events' colour and the selection
    // bright.
    const int timelineRow = 640;
    EXPECT_GT(countInRow(image, timelineRow, gui::palette::event), 200);
    EXPECT_GT(countInRow(image, timelineRow, gui::palette::bright), 20);
    // Green dots: every event is valid.
    EXPECT_GT(countInRow(image, 110, gui::palette::green), 4);
}

TEST_F(SnapshotTest, StepsConformAndSaveTheSessionAndStopAtTheFirstFailure)
{
    StudioOptions options = sampleSteps();
    options.conform = true;
    options.saveTo = pathOf("conformed.json");
    ASSERT_EQ(runSteps(studio, window, options, out, err), 0) << err.str();
    EXPECT_EQ(studio.host().lastRun().result, util::Result::Ok);
    EXPECT_GT(studio.host().lastRun().eventsApplied, 0u);
    EXPECT_EQ(window.getCounter(gui::MainGui::ChangeTable, gui::MainGui::TotalCounter).getText(),
              juce::String(studio.model()->getChangeList().getSize()));
    EXPECT_TRUE(std::filesystem::exists(options.saveTo));
    EXPECT_FALSE(studio.isModified());
    EXPECT_EQ(studio.undoTitle(), "Apply Montala");

    // A missing EDL stops before anything is generated or written.
    StudioOptions broken;
    broken.oldFiles = {pathOf("missing.edl")};
    broken.generate = true;
    broken.saveTo = pathOf("never.json");
    err.str("");
    EXPECT_EQ(runSteps(studio, window, broken, out, err), 1);
    EXPECT_NE(err.str().find("missing.edl"), std::string::npos) << err.str();
    EXPECT_FALSE(std::filesystem::exists(broken.saveTo));

    // --save naming an EDL of the run is refused before the first step.
    const std::string edl = pathOf("mine.edl");
    std::filesystem::copy_file(MONTALA_SOURCE_DIR "/samples/edl/short-film-25/new.edl", edl);
    StudioOptions overInput = sampleSteps();
    overInput.newFiles = {edl};
    overInput.saveTo = edl;
    err.str("");
    EXPECT_EQ(runSteps(studio, window, overInput, out, err), 2);
    EXPECT_NE(err.str().find("--save " + edl + ": is the EDL"), std::string::npos) << err.str();
    const auto readText = [](const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    };
    EXPECT_EQ(readText(edl), readText(MONTALA_SOURCE_DIR "/samples/edl/short-film-25/new.edl"));

    // More rows than the table has.
    StudioOptions tooFar;
    tooFar.selectRows = {1000};
    err.str("");
    EXPECT_EQ(runSteps(studio, window, tooFar, out, err), 1);
    EXPECT_NE(err.str().find("1000"), std::string::npos) << err.str();
}

TEST_F(SnapshotTest, StepsLoadThroughTheOverlayAndSetSettingsThatOutliveTheUndo)
{
    StudioOptions options;
    options.settings = {"heal=none", "insert-markers=off", "preserve-before=-00:00:02:00"};
    options.overlayFiles[core::EventList::OldKind] = {samples + "/edl/short-film-25/old.edl"};
    options.overlayFiles[core::EventList::NewKind] = {samples + "/edl/short-film-25/new.edl",
                                                      samples + "/edl/short-film-25/old.edl"};
    options.dstOffset = "-00:00:10:00";
    ASSERT_EQ(runSteps(studio, window, options, out, err), 0) << err.str();
    EXPECT_NE(out.str().find("New EDL: 2 files through the overlay, DST 00:59:50:00"), std::string::npos) << out.str();

    core::DataModel& model = *studio.model();
    EXPECT_EQ(model.getOldList().getSize(), 82u);
    EXPECT_EQ(model.getOldList().getEvent(0)->getDstIn().toString(), "00:59:50:00");
    EXPECT_EQ(model.getNewList().getSize(), 83u + 82u);
    EXPECT_EQ(model.getSettings().getHealProcessing(), core::HealProcessingMode::None);
    EXPECT_FALSE(model.getSettings().getCreateInsertMarkers());
    EXPECT_EQ(model.getSettings().getPreserveBefore(), -2.0);

    // Both files of the New list came in one step, and one undo takes both;
    // the settings of the moment stay.
    EXPECT_EQ(studio.undoTitle(), "Load New EDL");
    ASSERT_TRUE(studio.undo());
    EXPECT_EQ(studio.model()->getNewList().getSize(), 0u);
    EXPECT_EQ(studio.model()->getOldList().getSize(), 82u);
    EXPECT_EQ(studio.model()->getSettings().getHealProcessing(), core::HealProcessingMode::None);
    EXPECT_FALSE(window.getSettingsDialog().getToggle(gui::SettingsDialog::InsertMarkers).getToggleState());

    StudioOptions wrong;
    wrong.settings = {"heal=sometimes"};
    EXPECT_EQ(runSteps(studio, window, wrong, out, err), 1);
    EXPECT_NE(err.str().find("heal takes none | normal | gaps-without-inserts | gaps-with-inserts"), std::string::npos)
        << err.str();
    EXPECT_FALSE(window.getSettingsDialog().isVisible()) << "closed again after a refused value";
}

} // namespace
} // namespace montala::studio
