// The Add EDLs overlay with the file dialog and the message box scripted:
// what a browse gathers, what an "Abort" throws away, where the offsets put
// the files, and what "Ok" adds to the list.

#include "gui/FileDialog.h"

#include "core/model/DataModel.h"
#include "core/model/PropertyKeys.h"
#include "gui/AlertWindowBase.h"
#include "gui/FileBrowserDialogBase.h"
#include "gui/GuiTestSupport.h"
#include "support/ModelFixture.h"
#include "support/TempFolderTest.h"

#include <gtest/gtest.h>

#include <deque>
#include <fstream>

namespace montala::gui {
namespace {

using test::tc;

// Answers each message box with the next of its answers, and remembers what it said.
class ScriptedAlert : public AlertWindowBase {
public:
    ScriptedAlert(std::deque<int>& answers, std::vector<std::string>& shown) : answers(answers), shown(shown) {}
    int show(const std::string& message, const std::string&, const std::string& button1,
             const std::string& button2) override
    {
        shown.push_back(message + " [" + button1 + (button2.empty() ? "" : "|" + button2) + "]");
        const int answer = answers.empty() ? FirstButton : answers.front();
        if (!answers.empty())
            answers.pop_front();
        return answer;
    }
    std::deque<int>& answers;
    std::vector<std::string>& shown;
};

// Picks the next set of files for each browse.
class ScriptedFiles : public FileBrowserDialogBase {
public:
    explicit ScriptedFiles(std::deque<std::vector<std::string>>& picks) : picks(picks) {}
    bool show(const std::string&, const std::string&, const std::string&, const std::string&, bool multiple,
              std::vector<std::string>& results) override
    {
        EXPECT_TRUE(multiple) << "several EDLs are added at once";
        if (picks.empty())
            return false;
        results = picks.front();
        picks.pop_front();
        return true;
    }
    std::deque<std::vector<std::string>>& picks;
};

class FileDialogTest : public test::TempFolderTest {
protected:
    FileDialogTest() : TempFolderTest("montala-file-dialog")
    {
        AlertWindowBase::install(std::make_unique<ScriptedAlert>(answers, alerts));
        FileBrowserDialogBase::install(std::make_unique<ScriptedFiles>(picks));
        dialog.setSize(1300, 750);
        dialog.setup(&model, folder.string());
        // Two shots on the new timeline from 10:00:00:00 to 10:00:08:00.
        write("reel1.edl", "FCM: NON-DROP FRAME\n\n"
                           "001  A001     V     C        01:00:00:00 01:00:04:00 10:00:00:00 10:00:04:00\n"
                           "002  B001     V     C        02:00:00:00 02:00:03:24 10:00:04:00 10:00:07:24\n");
        write("reel2.edl", "FCM: NON-DROP FRAME\n\n"
                           "001  C001     V     C        03:00:00:00 03:00:02:00 11:00:00:00 11:00:02:00\n"
                           "002  C001     V     C        03:00:10:00 03:00:10:24 11:00:02:00 11:00:02:24\n");
        // Drop-frame: a 29.97 fps cut in the 25 fps project.
        write("ntsc.edl", "FCM: DROP FRAME\n\n"
                          "001  D001     V     C        04:00:00;00 04:00:02;00 12:00:00;00 12:00:02;00\n");
    }
    ~FileDialogTest() override
    {
        AlertWindowBase::remove();
        FileBrowserDialogBase::remove();
    }

    void write(const std::string& name, const std::string& text) { std::ofstream(pathOf(name)) << text; }
    void browse(std::vector<std::string> names)
    {
        for (std::string& name : names)
            name = pathOf(name);
        picks.push_back(names);
        dialog.getBrowseButton().triggerClick();
        juce::MessageManager::getInstance()->runDispatchLoopUntil(5);
    }
    void click(juce::Button& button)
    {
        button.triggerClick();
        juce::MessageManager::getInstance()->runDispatchLoopUntil(5);
    }
    void typeOffset(TcInput& input, const char* value, bool positive)
    {
        input.setTimecode(tc(value), positive, true);
    }
    std::string range(FileDialog::RangeLabel which) { return dialog.getRangeText(which).toStdString(); }

    juce::ScopedJuceInitialiser_GUI juce;
    core::FixedFramerateProvider provider{core::Framerate(25, 0)};
    core::ScopedFramerateProvider providerScope{&provider};
    util::StringConverter converter;
    util::ScopedStringConverter converterScope{converter};
    std::deque<int> answers;
    std::vector<std::string> alerts;
    std::deque<std::vector<std::string>> picks;
    core::DataModel model;
    test::RecordingUndo undo;
    FileDialog dialog;
};

TEST_F(FileDialogTest, AbortOnAnyFileOfABrowseDropsTheWholeBrowseAndContinueKeepsIt)
{
    dialog.openForNew();
    EXPECT_EQ(dialog.getHeading(), "Add EDL to New List");
    browse({"reel2.edl"});
    ASSERT_EQ(dialog.getFileCount(), 1u);

    // The second file of the browse is at the wrong rate: "Abort" takes the
    // first one of the same browse too, but not the file of the browse before.
    answers = {AlertWindowBase::FirstButton};
    browse({"reel1.edl", "ntsc.edl"});
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0], "Frame rate mismatch between current project and loaded EDL ntsc.edl [Abort|Continue]");
    EXPECT_EQ(dialog.getFileCount(), 1u);
    EXPECT_EQ(range(FileDialog::DstIn), "11:00:00:00");

    answers = {AlertWindowBase::SecondButton};
    browse({"reel1.edl", "ntsc.edl"});
    EXPECT_EQ(dialog.getFileCount(), 3u);
    EXPECT_TRUE(dialog.getFileListText().contains("reel1.edl")) << dialog.getFileListText();
    // The ranges span all files of the overlay.
    EXPECT_EQ(range(FileDialog::DstIn), "10:00:00:00");
    EXPECT_EQ(range(FileDialog::DstOut), "12:00:02:00");
    EXPECT_EQ(dialog.getLastFolder().getFullPathName().toStdString(), folder.string());
    EXPECT_TRUE(model.hasProperty(core::PropertyKey::LastFolder)) << "the folder is kept with the project";

    // "Ok" adds every file in one undo step, and the overlay starts afresh.
    click(dialog.getOkButton());
    EXPECT_EQ(model.getNewList().getSize(), 5u);
    EXPECT_EQ(model.getOldList().getSize(), 0u);
    EXPECT_EQ(undo.titles, std::vector<std::string>{"Load New EDL"});
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(dialog.getFileCount(), 0u);
    EXPECT_EQ(range(FileDialog::DstOut), "00:00:00:00");
}

TEST_F(FileDialogTest, OffsetsMoveTheFilesAndAreRewrittenToStayInsideTheDay)
{
    dialog.openForOld();
    browse({"reel1.edl"});
    EXPECT_FALSE(dialog.getSrcOffset().isVisible()) << "an Old EDL's source side is tape time";

    // An offset of zero shows and adds the times as they are.
    EXPECT_EQ(range(FileDialog::DstIn), "10:00:00:00");
    EXPECT_EQ(range(FileDialog::DstOut), "10:00:07:24");

    // Eleven hours back would pass midnight: the offset becomes the old IN, negative.
    typeOffset(dialog.getDstOffset(), "11:00:00:00", false);
    EXPECT_EQ(dialog.getDstOffset().getTimecode().toString(), "10:00:00:00");
    EXPECT_FALSE(dialog.getDstOffset().isPositive());
    EXPECT_EQ(range(FileDialog::DstIn), "00:00:00:00");
    EXPECT_EQ(range(FileDialog::DstOut), "00:00:07:24");

    // Twenty hours on would pass the end of the day: as far as the last frame.
    typeOffset(dialog.getDstOffset(), "20:00:00:00", true);
    EXPECT_EQ(dialog.getDstOffset().getTimecode().toString(), "13:59:52:00");
    EXPECT_TRUE(dialog.getDstOffset().isPositive());
    EXPECT_EQ(range(FileDialog::DstOut), "23:59:59:24");

    typeOffset(dialog.getDstOffset(), "00:00:10:00", false);
    EXPECT_EQ(range(FileDialog::DstIn), "09:59:50:00");
    click(dialog.getOkButton());
    ASSERT_EQ(model.getOldList().getSize(), 2u);
    EXPECT_EQ(model.getOldList().getEvent(0)->getDstIn().toString(), "09:59:50:00");
    EXPECT_EQ(model.getOldList().getEvent(1)->getDstOut().toString(), "09:59:57:24");
    EXPECT_EQ(model.getOldList().getEvent(0)->getSrcIn().toString(), "01:00:00:00") << "the source side stays";

    // "Cancel" adds nothing and zeroes the offsets.
    dialog.openForOld();
    browse({"reel2.edl"});
    typeOffset(dialog.getDstOffset(), "00:00:01:00", true);
    click(dialog.getCancelButton());
    EXPECT_EQ(model.getOldList().getSize(), 2u);
    EXPECT_EQ(dialog.getDstOffset().getTimecode().toString(), "00:00:00:00");
    EXPECT_EQ(dialog.getFileCount(), 0u);
}

TEST_F(FileDialogTest, AChangeEdlKeepsOnlyItsCutsAndMovesBothSides)
{
    write("change.edl", "FCM: NON-DROP FRAME\n\n"
                        "001  AX       V     C        10:00:00:00 10:00:04:00 20:00:00:00 20:00:04:00\n"
                        "002  AX       V     C        10:00:04:00 10:00:04:00 20:00:04:00 20:00:04:00\n"
                        "002  BX       V     D    010 10:00:10:00 10:00:14:00 20:00:04:00 20:00:08:00\n"
                        "003  BX       V     C        10:00:14:00 10:00:18:00 20:00:08:00 20:00:12:00\n");
    dialog.openForChange();
    EXPECT_EQ(dialog.getHeading(), "Add EDL to Change EDL List");
    EXPECT_TRUE(dialog.getSrcOffset().isVisible());
    browse({"change.edl"});
    typeOffset(dialog.getSrcOffset(), "01:00:00:00", false);
    EXPECT_EQ(range(FileDialog::SrcIn), "09:00:00:00");
    click(dialog.getOkButton());

    const core::EventList& change = model.getChangeList();
    ASSERT_FALSE(change.getEvents().empty());
    for (const core::EventPtr& event : change.getEvents())
        EXPECT_EQ(event->getTransitionType(), core::EventBase::Cut) << event->getRollName();
    EXPECT_EQ(change.getEvents().back()->getSrcIn().toString(), "09:00:14:00");
    EXPECT_EQ(change.getEvents().back()->getDstIn().toString(), "20:00:08:00");
    EXPECT_EQ(undo.titles, std::vector<std::string>{"Load Change EDL"});
}

TEST_F(FileDialogTest, AFileWithoutUsableEventsIsSkippedWithAMessage)
{
    write("empty.edl", "TITLE: NOTHING\n");
    dialog.openForOld();
    browse({"empty.edl", "reel1.edl", "missing.edl"});
    ASSERT_EQ(alerts.size(), 2u);
    EXPECT_EQ(alerts[0], "The loaded EDL file empty.edl does not contain valid entries. [Ok]");
    EXPECT_EQ(alerts[1], "An error occurred while loading the file.\nmissing.edl: no such file [Ok]");
    EXPECT_EQ(dialog.getFileCount(), 1u);
}

} // namespace
} // namespace montala::gui
