// The progress window, the message box and the file dialog, each run against
// the simulated host's own, which keeps every call and plays the user.

#include "sim/SimFixture.h"
#include "support/ModelFixture.h"

#include "host/AlertWindow.h"
#include "host/FileBrowserDialog.h"
#include "host/ProgressHandler.h"

#include "sim/services/SimAlertService.h"
#include "sim/services/SimFailures.h"
#include "sim/services/SimFileDialogService.h"
#include "sim/services/SimProgressService.h"

#include <algorithm>
#include <string>
#include <vector>

namespace montala::host::test {
namespace {

using namespace Kelmar;
using montala::test::thrownCode;
using util::Result;

class ProgressAndDialogsTest : public sim::test::SimFixture {
protected:
    void TearDown() override
    {
        AlertWindow::remove();
        FileBrowserDialog::remove();
        SimFixture::TearDown();
    }

    IHostServices* services() { return host.get(); }
};

TEST_F(ProgressAndDialogsTest, ProgressShowsTheRunsStepsAndItsDetailUnderItsTitle)
{
    sim::SimProgressService& window = host->progress();
    {
        ProgressHandler progress(services());
        progress.start(u"Processing Project", 10, true);
        progress.advance(3);
        progress.setText(u"Completing");
        progress.addSteps(5);
        progress.setValue(9);
        EXPECT_TRUE(window.isVisible());
        EXPECT_EQ(window.text(), u"Processing Project - Completing");
        EXPECT_EQ(window.total(), 15);
        EXPECT_EQ(window.position(), 9);
        progress.finish();
    }
    EXPECT_FALSE(window.isVisible());
}

TEST_F(ProgressAndDialogsTest, OnlyACancellableRunSeesTheUsersCancelAndANewStartForgetsIt)
{
    sim::SimProgressService& window = host->progress();
    ProgressHandler progress(services());

    window.cancelAfter(2);
    progress.start(u"Processing Project", 10, true);
    EXPECT_FALSE(progress.isCancelled());
    progress.advance(1);
    EXPECT_FALSE(progress.isCancelled());
    progress.advance(1);
    EXPECT_TRUE(progress.isCancelled()) << "the host wrote the flag";
    progress.finish();

    window.cancelAfter(0);
    progress.start(u"Project Preview", 4, false);
    EXPECT_FALSE(progress.isCancelled()) << "a new run starts uncancelled";
    progress.advance(4);
    EXPECT_FALSE(progress.isCancelled()) << "the user cannot cancel a run that does not allow it";
    const auto& calls = window.calls();
    EXPECT_NE(std::find(calls.begin(), calls.end(), "setup 1 Montala"), calls.end())
        << "the host is given no cancel flag to write";
    progress.finish();
}

TEST_F(ProgressAndDialogsTest, ProgressRefusesCallsOutsideARunAndClosesTheWindowItLeavesOpen)
{
    sim::SimProgressService& window = host->progress();
    {
        ProgressHandler progress(services());
        EXPECT_EQ(thrownCode([&] { progress.advance(1); }), Result::NotInitialized);
        EXPECT_EQ(thrownCode([&] { progress.addSteps(1); }), Result::NotInitialized);
        EXPECT_EQ(thrownCode([&] { progress.finish(); }), Result::NotInitialized);
        progress.start(u"Processing Project", 1, true);
        EXPECT_EQ(thrownCode([&] { progress.start(u"again", 1, true); }), Result::NotInitialized);
        EXPECT_TRUE(window.isVisible());
    }
    EXPECT_FALSE(window.isVisible()) << "a run left by a failure does not leave its window behind";

    ProgressHandler unhosted(nullptr);
    EXPECT_EQ(thrownCode([&] { unhosted.start(u"Processing Project", 1, true); }), Result::NotInitialized);
}

TEST_F(ProgressAndDialogsTest, TheMessageBoxPassesItsTextsAndAnswersTheUsersButton)
{
    AlertWindow::install(services());
    EXPECT_EQ(thrownCode([&] { AlertWindow::install(services()); }), Result::NotInitialized)
        << "there is one message box";
    core::AlertWindowBase* alert = core::AlertWindowBase::getInstance();
    ASSERT_NE(alert, nullptr);

    host->alerts().queueAnswer(IAlertService::kSecondButton);
    EXPECT_EQ(alert->show("Frame rate mismatch in “reel 1.edl”", "Add EDLs", "Abort", "Continue"),
              core::AlertWindowBase::SecondButton);
    EXPECT_EQ(alert->show("An error occurred while saving the Montala data."), core::AlertWindowBase::FirstButton);

    const auto& shown = host->alerts().shown();
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_EQ(shown[0].message, u"Frame rate mismatch in “reel 1.edl”");
    EXPECT_EQ(shown[0].title, u"Add EDLs");
    EXPECT_EQ(shown[0].firstButton, u"Abort");
    EXPECT_EQ(shown[0].secondButton, u"Continue");
    EXPECT_FALSE(shown[1].title) << "empty texts leave the host its own caption and buttons";
    EXPECT_FALSE(shown[1].firstButton);
    EXPECT_FALSE(shown[1].secondButton);

    AlertWindow::remove();
    EXPECT_EQ(core::AlertWindowBase::getInstance(), nullptr);
    AlertWindow::install(services()); // installable again once removed
    EXPECT_NE(core::AlertWindowBase::getInstance(), nullptr);
}

TEST_F(ProgressAndDialogsTest, TheFileDialogOffersOneFilterAndAppendsTheChosenPaths)
{
    FileBrowserDialog::install(services());
    EXPECT_EQ(thrownCode([&] { FileBrowserDialog::install(services()); }), Result::NotInitialized);
    core::FileBrowserDialogBase* dialog = core::FileBrowserDialogBase::getInstance();
    ASSERT_NE(dialog, nullptr);

    std::vector<std::string> results{"/edl/earlier.edl"};
    host->fileDialogs().queueChoice({u"/edl/reel 1 – old.edl", u"/edl/reel 2.edl"});
    ASSERT_TRUE(dialog->show("Add EDLs", "/edl", "edl", "Edit Decision List", true, results));
    EXPECT_EQ(results, (std::vector<std::string>{"/edl/earlier.edl", "/edl/reel 1 – old.edl", "/edl/reel 2.edl"}));

    host->fileDialogs().queueChoice({u"/edl/change.edl"});
    results.clear();
    ASSERT_TRUE(dialog->show("Save Change EDL as...", "", "", "", false, results));
    EXPECT_EQ(results, std::vector<std::string>{"/edl/change.edl"});

    const auto& calls = host->fileDialogs().calls();
    ASSERT_EQ(calls.size(), 2u);
    ASSERT_EQ(calls[0].filters.size(), 1u);
    EXPECT_STREQ(calls[0].filters[0].extension, "edl");
    EXPECT_TRUE(calls[1].filters.empty()) << "no extension, no filter: all files";
}

TEST_F(ProgressAndDialogsTest, ACancelledOrFailedFileDialogAddsNothing)
{
    FileBrowserDialog dialog(services());
    std::vector<std::string> results{"kept.edl"};
    host->fileDialogs().queueCancel();
    EXPECT_FALSE(dialog.show("Add EDLs", "/edl", "edl", "Edit Decision List", true, results));
    host->fileDialogs().queueFailure(kResultFailed);
    EXPECT_EQ(thrownCode([&] { dialog.show("Add EDLs", "/edl", "edl", "Edit Decision List", true, results); }),
              Result::NotInitialized);
    EXPECT_EQ(results, std::vector<std::string>{"kept.edl"});
}

TEST_F(ProgressAndDialogsTest, TheFilterRecordCutsItsTextsToTheirFieldsWithoutSplittingACharacter)
{
    const std::string longDescription(70, 'd');
    auto filter = FileBrowserDialog::makeFilter("mpeg4video", longDescription);
    EXPECT_EQ(std::string(filter.extension), "mpeg4vi");
    EXPECT_EQ(std::string(filter.description), std::string(63, 'd'));
    EXPECT_EQ(filter.extension[7], 0);
    EXPECT_EQ(filter.description[63], 0);

    // An ü (two bytes) across each cut is left out whole.
    filter = FileBrowserDialog::makeFilter("abcdef\xC3\xBC", std::string(62, 'x') + "\xC3\xBC");
    EXPECT_EQ(std::string(filter.extension), "abcdef");
    EXPECT_EQ(std::string(filter.description), std::string(62, 'x'));
}

TEST_F(ProgressAndDialogsTest, AHostWithoutTheServiceIsNoInterfaceAndChangesNothing)
{
    host->failures().withhold(IProgressService::iid);
    host->failures().withhold(IAlertService::iid);
    host->failures().withhold(IFileDialogService::iid);

    ProgressHandler progress(services());
    EXPECT_EQ(thrownCode([&] { progress.start(u"Processing Project", 1, true); }), Result::NoInterface);
    EXPECT_EQ(thrownCode([&] { progress.advance(1); }), Result::NotInitialized) << "no window was opened";

    EXPECT_EQ(thrownCode([&] { AlertWindow(services()).show("No events in Change EDL."); }), Result::NoInterface);

    std::vector<std::string> results{"kept.edl"};
    EXPECT_EQ(thrownCode([&] { FileBrowserDialog(services()).show("Add EDLs", "", "edl", "", true, results); }),
              Result::NoInterface);
    EXPECT_EQ(results, std::vector<std::string>{"kept.edl"});
}

} // namespace
} // namespace montala::host::test
