#include "../SimFixture.h"

#include "kelmar/services/IAlertService.h"
#include "kelmar/services/IFileDialogService.h"
#include "kelmar/base/IObjectList.h"
#include "kelmar/base/IPath.h"
#include "kelmar/services/IProgressService.h"
#include "sim/services/SimAlertService.h"
#include "sim/services/SimFileDialogService.h"
#include "sim/project/SimObjectList.h"
#include "sim/project/SimPath.h"
#include "sim/services/SimProgressService.h"

#include <cstring>

namespace montala::sim::test {
namespace {

using namespace Kelmar;

class SimProgressServiceTest : public SimFixture {};

TEST_F(SimProgressServiceTest, KeepsEveryCallAndCancelsAfterTheStepsATestAskedFor)
{
    SimProgressService& progress = host->progress();
    progress.cancelAfter(3);
    uint8 cancel = 0;
    progress.setup(1, u"Montala", &cancel);
    progress.setPosition(0);
    progress.setTotal(10);
    progress.setText(u"Processing Project");
    progress.show();
    progress.advance(2);
    EXPECT_EQ(cancel, 0);
    progress.advance(1);
    EXPECT_EQ(cancel, 1) << "the user pressed cancel";
    progress.hide();

    EXPECT_EQ(progress.calls(), (std::vector<std::string>{"setup 1 Montala cancellable", "setPosition 0", "setTotal 10",
                                                          "setText Processing Project", "show", "advance 2",
                                                          "advance 1", "hide"}));
    EXPECT_EQ(progress.position(), 3);
    EXPECT_FALSE(progress.isVisible());

    // A run that cannot be cancelled has no flag to write to.
    progress.setup(1, u"Montala", nullptr);
    progress.advance(5);
    EXPECT_FALSE(progress.wasCancelled());
}

TEST_F(SimProgressServiceTest, AlertsAnswerWithQueuedButtonsAndTheFirstByDefault)
{
    SimAlertService& alerts = host->alerts();
    alerts.queueAnswer(IAlertService::kSecondButton);
    EXPECT_EQ(alerts.show(u"Overwrite?", u"Montala", u"Yes", u"No"), IAlertService::kSecondButton);
    EXPECT_EQ(alerts.show(u"An error occurred while saving the Montala data.", nullptr, nullptr, nullptr),
              IAlertService::kFirstButton);
    ASSERT_EQ(alerts.shown().size(), 2u);
    EXPECT_EQ(alerts.shown()[1].message, u"An error occurred while saving the Montala data.");
    EXPECT_FALSE(alerts.shown()[1].title.has_value()) << "null stays distinct from empty";
}

TEST_F(SimProgressServiceTest, FileDialogsAnswerWithQueuedChoicesAndCancelByDefault)
{
    SimFileDialogService& dialogs = host->fileDialogs();
    auto results = owned(new SimObjectList);
    auto start = owned(new SimPath(u"/projects/film"));
    IFileDialogService::FileFilter filter;
    std::strcpy(filter.extension, "edl");
    std::strcpy(filter.description, "EDL files");

    EXPECT_EQ(dialogs.runFileDialog(u"Open Old EDL", &filter, 1, start.get(), results.get(), 0), kResultFalse);
    dialogs.queueChoice({u"/edl/old.edl", u"/edl/new.edl"});
    ASSERT_EQ(dialogs.runFileDialog(u"Open EDLs", &filter, 1, start.get(), results.get(),
                                    IFileDialogService::kAllowMultiple),
              kResultOk);
    ASSERT_EQ(results->getCount(), 2);
    char16 buffer[64];
    Kelmar::queryInterface<IPath>(owned(results->getAt(1)).get())->getText(buffer, sizeof buffer);
    EXPECT_EQ(std::u16string(buffer), u"/edl/new.edl");

    ASSERT_EQ(dialogs.calls().size(), 2u);
    EXPECT_EQ(dialogs.calls()[0].startPath, u"/projects/film");
    EXPECT_STREQ(dialogs.calls()[0].filters[0].extension, "edl");
    dialogs.queueFailure(kResultFailed);
    EXPECT_EQ(dialogs.runFileDialog(u"Open", nullptr, 0, start.get(), results.get(), 0), kResultFailed);
}

} // namespace
} // namespace montala::sim::test
