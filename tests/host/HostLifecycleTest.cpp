// The Host's life beside the host's projects: adopting what is open, following
// activation, closing and saving, and going away without a trace.

#include "HostRunFixture.h"

#include "core/services/AlertWindowBase.h"
#include "core/model/DataModelCommandCreator.h"
#include "core/services/FileBrowserDialogBase.h"
#include "core/time/Timecode.h"
#include "host/ProjectListener.h"

#include "sim/services/SimApplicationState.h"
#include "sim/project/SimProjectManager.h"
#include "sim/services/SimUser.h"

#include <gtest/gtest.h>

namespace montala::host::test {
namespace {

using util::Result;

// Counts what a project tells its listeners.
class EditCounter : public ProjectListener {
public:
    void projectChanged(Project&) override { ++changes; }
    void projectEdited(Project&) override { ++edits; }
    int changes = 0;
    int edits = 0;
};

class HostLifecycleTest : public HostRunFixture {
protected:
    // The small session under another name, with more top-level fields.
    static std::string sessionNamed(const std::string& name, const std::string& attributes = {})
    {
        std::string text = smallSession();
        const std::string from = R"("name": "Small",)";
        text.replace(text.find(from), from.size(), R"("name": ")" + name + R"(",)" + attributes);
        return text;
    }
};

TEST_F(HostLifecycleTest, ProjectsOpenBeforeTheHostAreAdoptedAndTheActiveOneIsFollowed)
{
    Kelmar::IPtr<sim::SimProject> first = open(sessionNamed("First"));
    Kelmar::IPtr<sim::SimProject> second = open(sessionNamed("Second"));
    montala = Kelmar::owned(new Host(host.get()));

    ASSERT_EQ(montala->getProjectCount(), 2u);
    Project* secondProject = montala->findProject(second.get());
    ASSERT_NE(secondProject, nullptr);
    EXPECT_EQ(montala->getActiveProject(), secondProject);
    EXPECT_EQ(core::Timecode::getFramerateProvider(), secondProject);
    EXPECT_EQ(secondProject->getDataModel().getNotifier(), montala.get());

    // Switching projects moves the model's notices and the rate with it.
    host->projectManager().activateProject(first.get());
    Project* firstProject = montala->findProject(first.get());
    EXPECT_EQ(montala->getActiveProject(), firstProject);
    EXPECT_EQ(secondProject->getDataModel().getNotifier(), nullptr);
    EXPECT_EQ(core::Timecode::getFramerateProvider(), firstProject);

    // A window that starts listening now is told which model to show.
    struct ModelWatcher : core::ChangeContextListenerInterface {
        void changed(const core::ChangeContext& context) override
        {
            if (context.kind == core::ChangeContext::DataModelKind) {
                ++notices;
                model = static_cast<const core::DataModelChangeContext&>(context).model;
            }
        }
        int notices = 0;
        core::DataModel* model = nullptr;
    } watcher;
    montala->addListener(&watcher);
    EXPECT_EQ(watcher.notices, 1);
    EXPECT_EQ(watcher.model, &firstProject->getDataModel());
    montala->removeListener(&watcher);

    // A project opened later is adopted too; closing the last clears all.
    Kelmar::IPtr<sim::SimProject> third = open(sessionNamed("Third"));
    EXPECT_EQ(montala->getProjectCount(), 3u);
    EXPECT_EQ(montala->getActiveProject(), montala->findProject(third.get()));
    host->projectManager().closeAll();
    EXPECT_EQ(montala->getProjectCount(), 0u);
    EXPECT_EQ(montala->getActiveProject(), nullptr);
    EXPECT_EQ(core::Timecode::getFramerateProvider(), nullptr);
    EXPECT_EQ(montala->checkTracks(), Result::NoProject);
    EXPECT_EQ(montala->startConform(), Result::NoProject);
}

TEST_F(HostLifecycleTest, GoingAwayTakesEverythingItInstalledBack)
{
    auto* converterBefore = util::StringUtil::getStringConverter();
    startOn(smallSession());
    EXPECT_NE(core::AlertWindowBase::getInstance(), nullptr);
    EXPECT_NE(core::FileBrowserDialogBase::getInstance(), nullptr);
    EXPECT_EQ(core::DataModelCommandCreator::getCommandCreator(), montala.get());
    EXPECT_EQ(host->applicationState().idleHandlerCount(), 1u);
    EXPECT_EQ(host->projectManager().notifications().size(), 1u);
    EXPECT_EQ(hostProject->storageNotifications().size(), 1u);

    montala.reset();
    EXPECT_EQ(core::AlertWindowBase::getInstance(), nullptr);
    EXPECT_EQ(core::FileBrowserDialogBase::getInstance(), nullptr);
    EXPECT_EQ(core::DataModelCommandCreator::getCommandCreator(), nullptr);
    EXPECT_EQ(util::StringUtil::getStringConverter(), converterBefore);
    EXPECT_EQ(host->applicationState().idleHandlerCount(), 0u);
    EXPECT_TRUE(host->projectManager().notifications().empty());
    EXPECT_TRUE(hostProject->storageNotifications().empty());
    EXPECT_EQ(core::Timecode::getFramerateProvider(), nullptr);

    // Without a project manager there is nothing to follow, and nothing is
    // left installed by the attempt.
    host->failures().withhold(Kelmar::IProjectManager::iid);
    EXPECT_EQ(montala::test::thrownCode([&] { Kelmar::owned(new Host(host.get())); }), Result::NoInterface);
    EXPECT_EQ(core::AlertWindowBase::getInstance(), nullptr);
    EXPECT_EQ(core::DataModelCommandCreator::getCommandCreator(), nullptr);
    host->failures().clear();
}

TEST_F(HostLifecycleTest, ClosingTheActiveProjectWhileTheRunWaitsMakesTheRunAnswerNoProject)
{
    startOn(smallSession());
    swapHalves();
    ASSERT_EQ(montala->startConform(), Result::Ok);
    host->projectManager().closeProject(hostProject.get());
    EXPECT_EQ(montala->getActiveProject(), nullptr);

    host->runIdle();
    EXPECT_FALSE(montala->isRunPending());
    EXPECT_EQ(montala->lastRun().kind, RunSummary::Kind::Apply);
    EXPECT_EQ(montala->lastRun().result, Result::NoProject);
    EXPECT_TRUE(host->applicationState().busyChanges().empty());
}

TEST_F(HostLifecycleTest, OnlyTheActiveProjectsEditsAreFollowed)
{
    Kelmar::IPtr<sim::SimProject> background = open(sessionNamed("Background"));
    startOn(smallSession());
    EditCounter activeCounter;
    EditCounter backgroundCounter;
    active().addListener(&activeCounter);
    Project* backgroundProject = montala->findProject(background.get());
    ASSERT_NE(backgroundProject, nullptr);
    backgroundProject->addListener(&backgroundCounter);

    sim::SimUser user(*host);
    ASSERT_TRUE(user.addMarker(*background->findTrack(u"Notes"), u"elsewhere", 5.0, 6.0));
    EXPECT_EQ(backgroundCounter.edits, 0);
    EXPECT_EQ(activeCounter.edits, 0);
    ASSERT_TRUE(user.addMarker(simTrack("Notes"), u"here", 5.0, 6.0));
    EXPECT_EQ(activeCounter.edits, 1);

    // A changed rate reaches the project it belongs to, active or not.
    sim::SimFrameRate rate = background->frameRate();
    rate.fps = 30;
    background->setFrameRate(rate);
    EXPECT_EQ(backgroundCounter.changes, 1);
    EXPECT_EQ(backgroundProject->getFramerate().fps, 30);
    EXPECT_EQ(activeCounter.changes, 0);

    active().removeListener(&activeCounter);
    backgroundProject->removeListener(&backgroundCounter);
}

TEST_F(HostLifecycleTest, TheModelTravelsInTheProjectAndLoadFailuresAreShown)
{
    startOn(smallSession());
    swapHalves();
    sim::SimUser(*host).save(*hostProject);
    const std::string withModel = saved(*hostProject);
    EXPECT_TRUE(alerts().empty());

    // Reopened, the Change EDL is there again.
    host->projectManager().closeAll();
    hostProject = open(withModel);
    ASSERT_NE(montala->getActiveProject(), nullptr);
    EXPECT_EQ(model().getChangeList().getSize(), 2u);

    // A failed save tells the user and leaves the host's save to go on.
    host->failures().failEveryCall("write");
    sim::SimUser(*host).save(*hostProject);
    host->failures().clear();
    ASSERT_EQ(alerts().size(), 1u);
    EXPECT_EQ(alerts()[0], "An error occurred while saving the Montala data.");

    // A block whose checksum does not fit is ignored with a message; the
    // project stays open with an empty model.
    Kelmar::IPtr<sim::SimProject> damaged =
        open(sessionNamed("Damaged", R"( "attributes": {"Mnts": 1234, "Mont": {"storage": {"MontData": "TW9udA=="}}},)"));
    ASSERT_EQ(alerts().size(), 2u);
    EXPECT_EQ(alerts()[1], "An error occurred while loading the Montala data. The data will be ignored.");
    EXPECT_EQ(montala->getActiveProject(), montala->findProject(damaged.get()));
    EXPECT_EQ(model().getChangeList().getSize(), 0u);
}

} // namespace
} // namespace montala::host::test
