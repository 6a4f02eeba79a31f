// The studio on the simulated host: sessions in and out, the host's undo
// list as the menu shows it, and what counts as a change a user would lose.

#include "core/model/DataModel.h"
#include "studio/Studio.h"
#include "studio/StudioWindow.h"

#include "sim/project/SimBase.h"
#include "sim/project/SimProjectManager.h"
#include "support/TempFolderTest.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace montala::studio {
namespace {

const std::string samples = std::string(MONTALA_SOURCE_DIR) + "/samples";
const std::string session = samples + "/sessions/short-film-25.json";
const std::string oldEdl = samples + "/edl/short-film-25/old.edl";
const std::string newEdl = samples + "/edl/short-film-25/new.edl";

class StudioTest : public test::TempFolderTest {
protected:
    StudioTest() : TempFolderTest("montala-studio-test") {}

    // Opens the sample session, adds both cuts and generates.
    void generateSample(Studio& studio)
    {
        std::string error;
        ASSERT_TRUE(studio.openSession(session, error)) << error;
        ASSERT_TRUE(studio.addEdl(core::EventList::OldKind, oldEdl).opened);
        ASSERT_TRUE(studio.addEdl(core::EventList::NewKind, newEdl).opened);
        ASSERT_EQ(studio.generate(), util::Result::Ok);
    }

    std::string menuText(Studio& studio, int index, int item)
    {
        const juce::PopupMenu menu = buildMenu(studio, index);
        for (juce::PopupMenu::MenuItemIterator it(menu); it.next();)
            if (it.getItem().itemID == item)
                return (it.getItem().text + (it.getItem().isEnabled ? "" : " (disabled)")).toStdString();
        return {};
    }

    juce::ScopedJuceInitialiser_GUI juce;
};

TEST_F(StudioTest, UndoCarriesTheHostsGroupTitlesAndASavedSessionKeepsTheModel)
{
    const std::string saved = pathOf("saved.json");
    size_t generated = 0;
    {
        Studio studio(MONTALA_SOURCE_DIR "/resources");
        EXPECT_FALSE(studio.isModified());
        generateSample(studio);
        generated = studio.model()->getChangeList().getSize();
        ASSERT_GT(generated, 0u);
        EXPECT_TRUE(studio.isModified()) << "a generated Change EDL would be lost";
        EXPECT_EQ(menuText(studio, 1, UndoItem), "Undo Generate Change EDL");
        EXPECT_EQ(menuText(studio, 1, RedoItem), "Redo (disabled)");

        std::string error;
        ASSERT_TRUE(studio.save(saved, error)) << error;
        EXPECT_FALSE(studio.isModified());
        EXPECT_EQ(studio.sessionPath(), saved);

        // An undo after the save is a change again.
        ASSERT_TRUE(studio.undo());
        EXPECT_TRUE(studio.isModified());
        EXPECT_EQ(studio.model()->getChangeList().getSize(), 0u);
        EXPECT_EQ(menuText(studio, 1, UndoItem), "Undo Add EDL");
        EXPECT_EQ(menuText(studio, 1, RedoItem), "Redo Generate Change EDL");
        ASSERT_TRUE(studio.redo());
        EXPECT_EQ(studio.model()->getChangeList().getSize(), generated);
        EXPECT_FALSE(studio.redo()) << "nothing is left to redo";
    }

    Studio reopened(MONTALA_SOURCE_DIR "/resources");
    std::string error;
    ASSERT_TRUE(reopened.openSession(saved, error)) << error;
    ASSERT_NE(reopened.model(), nullptr);
    EXPECT_EQ(reopened.model()->getChangeList().getSize(), generated);
    EXPECT_EQ(reopened.model()->getOldList().getSize(), 82u);
    EXPECT_FALSE(reopened.isModified());
}

TEST_F(StudioTest, FailedOpenOrSaveLeavesTheProjectAndTheFilesAsTheyWere)
{
    Studio studio(MONTALA_SOURCE_DIR "/resources");
    generateSample(studio);
    const size_t generated = studio.model()->getChangeList().getSize();

    const std::string broken = pathOf("broken.json");
    std::ofstream(broken) << "{\"format\": \"montala-session\",\n \"version\": 1,\n";
    std::string error;
    EXPECT_FALSE(studio.openSession(broken, error));
    EXPECT_NE(error.find("broken.json"), std::string::npos) << error;
    ASSERT_NE(studio.model(), nullptr);
    EXPECT_EQ(studio.model()->getChangeList().getSize(), generated);
    EXPECT_EQ(studio.sessionPath(), session);

    // A read-only file is refused and keeps its text.
    const std::string locked = pathOf("locked.json");
    std::ofstream(locked) << "old text";
    std::filesystem::permissions(locked, std::filesystem::perms::owner_read);
    error.clear();
    EXPECT_FALSE(studio.save(locked, error));
    EXPECT_NE(error.find("locked.json"), std::string::npos) << error;
    std::ifstream in(locked);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "old text");
    EXPECT_TRUE(studio.isModified());
    EXPECT_EQ(studio.sessionPath(), session);
}

TEST_F(StudioTest, NewProjectRunsAtTheChosenRateWithoutAPath)
{
    Studio studio(MONTALA_SOURCE_DIR "/resources");
    core::Framerate rate;
    ASSERT_TRUE(Studio::parseRate("29.97df", rate));
    studio.newProject(rate);
    ASSERT_NE(studio.project(), nullptr);
    EXPECT_EQ(studio.project()->frameRate().fps, 30);
    EXPECT_TRUE(studio.project()->frameRate().pullDown);
    EXPECT_TRUE(studio.project()->frameRate().dropFrame);
    EXPECT_TRUE(studio.sessionPath().empty());
    ASSERT_NE(studio.model(), nullptr);

    // A Change EDL read at the rate of the project: drop-frame timecodes hold.
    EXPECT_TRUE(studio.addEdl(core::EventList::OldKind, samples + "/edl/short-film-2997df/old.edl").opened);
    EXPECT_FALSE(studio.model()->getOldList().getSize() == 0);

    EXPECT_FALSE(Studio::parseRate("26", rate));
    EXPECT_THROW(studio.newProject(core::Framerate()), util::Result::Type);
}

TEST_F(StudioTest, MenusShowTheirKeysAndTheKeysReachTheEntries)
{
    Studio studio(MONTALA_SOURCE_DIR "/resources");
    const auto shortcut = [&](int index, int item) {
        const juce::PopupMenu menu = buildMenu(studio, index);
        for (juce::PopupMenu::MenuItemIterator it(menu); it.next();)
            if (it.getItem().itemID == item)
                return it.getItem().shortcutKeyDescription;
        return juce::String();
    };
    const int command = juce::ModifierKeys::commandModifier;
    const int shift = juce::ModifierKeys::shiftModifier;
    const struct {
        int menu;
        MenuItem item;
        juce::KeyPress key;
    } entries[] = {
        {0, OpenItem, juce::KeyPress('o', command, 0)},    {0, SaveItem, juce::KeyPress('s', command, 0)},
        {0, SaveAsItem, juce::KeyPress('s', command | shift, 0)}, {0, QuitItem, juce::KeyPress('q', command, 0)},
        {1, UndoItem, juce::KeyPress('z', command, 0)},    {1, RedoItem, juce::KeyPress('z', command | shift, 0)},
    };
    for (const auto& entry : entries) {
        SCOPED_TRACE(entry.item);
        EXPECT_EQ(shortcut(entry.menu, entry.item), entry.key.getTextDescriptionWithIcons());
        EXPECT_EQ(menuItemForKey(entry.key), entry.item);
    }
    EXPECT_EQ(menuItemForKey(juce::KeyPress('y', command, 0)), RedoItem);
    EXPECT_EQ(menuItemForKey(juce::KeyPress('z', 0, 0)), std::nullopt) << "a plain key is typed, not a command";
}

TEST_F(StudioTest, StartsInTheSystemsLanguageAndTellsTheRunInIt)
{
    EXPECT_EQ(Studio::languageOfLocale("de_DE.UTF-8"), "de");
    EXPECT_EQ(Studio::languageOfLocale("ja_JP.UTF-8"), "jp");
    EXPECT_EQ(Studio::languageOfLocale("pt_BR"), "pt");
    EXPECT_EQ(Studio::languageOfLocale("en_GB.UTF-8"), "us");
    EXPECT_EQ(Studio::languageOfLocale("C.UTF-8"), "us");
    EXPECT_EQ(Studio::languageOfLocale("nl_NL"), "us") << "a language the table lacks is shown in English";

    Studio studio(MONTALA_SOURCE_DIR "/resources", "de");
    generateSample(studio);
    ASSERT_EQ(studio.startConform(), util::Result::Ok);
    for (int turn = 0; turn < 100 && studio.isRunPending(); ++turn)
        studio.idle();
    const std::optional<FinishedRun> run = studio.takeFinishedRun();
    ASSERT_TRUE(run);
    EXPECT_FALSE(studio.takeFinishedRun()) << "a run is told once";
    EXPECT_EQ(run->rateName, "25");
    EXPECT_EQ(run->changeEvents, studio.model()->getChangeList().getSize());

    const std::string text = summaryText(*run);
    EXPECT_EQ(summaryTitle(*run), "Montala anwenden");
    EXPECT_NE(text.find("Projektrate: 25\n"), std::string::npos) << text;
    EXPECT_NE(text.find("Angewendete Ereignisse: " + std::to_string(run->summary.eventsApplied) + "\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("Beteiligte Spuren (" + std::to_string(run->summary.tracksTakingPart.size()) + "): "
                        + run->summary.tracksTakingPart.front() + ";"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("Geschriebene Marker: " + std::to_string(run->summary.markerCount())), std::string::npos)
        << text;
    EXPECT_NE(text.find("Dauer: "), std::string::npos) << text;
}

// Montala.so loaded by the studio's host: the module's service owns the only
// Host on the project, and the host's "Project" menu opens and closes its
// window.
TEST_F(StudioTest, WithTheModuleTheProjectMenuTogglesMontalasWindowAndNoHostOfItsOwnIsMade)
{
    std::string error;
    EXPECT_FALSE(Studio::withModule(pathOf("missing.so"), "us", error));
    EXPECT_NE(error.find("missing.so"), std::string::npos) << error;

    std::unique_ptr<Studio> studio = Studio::withModule(MONTALA_MODULE, "us", error);
    ASSERT_TRUE(studio) << error;
    ASSERT_TRUE(studio->openSession(session, error)) << error;
    EXPECT_EQ(studio->simHost().projectManager().notifications().size(), 2u)
        << "the studio's edit watch and the module's Host, nothing else";
    EXPECT_THROW(studio->host(), util::Result::Type);

    EXPECT_EQ(menuText(*studio, 2, FirstProjectItem), "Montala");
    EXPECT_FALSE(studio->isModuleWindowOpen());
    ASSERT_TRUE(studio->clickMenu("Project", "Montala"));
    EXPECT_TRUE(studio->isModuleWindowOpen());
    ASSERT_TRUE(studio->clickMenu("Project", "Montala"));
    EXPECT_FALSE(studio->isModuleWindowOpen()) << "a second click closes it";

    // The change report is the module's model's: it has no cuts yet.
    std::string html;
    EXPECT_FALSE(studio->changeReportHtml("short-film-25.json", html, error));
    EXPECT_EQ(error, "Add the Old and the New EDL first.");
}

} // namespace
} // namespace montala::studio
