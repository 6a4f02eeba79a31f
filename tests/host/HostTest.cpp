// The Host's slots as the window and the command line reach them: the
// model's undo steps through the process-wide creator, the transport's cycle,
// and the answers without a project.

#include "HostRunFixture.h"

#include "core/model/DataModelChangeScope.h"

#include <gtest/gtest.h>

namespace montala::host::test {
namespace {

using util::Result;

class HostTest : public HostRunFixture {
protected:
    core::EventList previewEvents{core::EventList::ChangeKind};
};

TEST_F(HostTest, AChangeOfTheModelInTheWindowIsOneStepOnTheHostsUndoList)
{
    startOn(smallSession());
    const std::vector<uint8_t> before = storedModel();
    {
        core::DataModelChangeScope scope("Edit Event");
        ASSERT_TRUE(scope.isRecording());
        swapHalves();
    }
    const std::vector<uint8_t> after = storedModel();
    EXPECT_EQ(undoTitle(), "Edit Event");
    ASSERT_TRUE(undo());
    EXPECT_EQ(storedModel(), before);
    EXPECT_EQ(model().getChangeList().getSize(), 0u);
    ASSERT_TRUE(redo());
    EXPECT_EQ(storedModel(), after);

    // Without an active project there is no step to make, and the change
    // still happens.
    host->projectManager().closeAll();
    EXPECT_EQ(montala->createCommand("Edit Event"), nullptr);
    EXPECT_FALSE(core::DataModelChangeScope("Edit Event").isRecording());
}

TEST_F(HostTest, WithoutAProjectTheSlotsAnswerRatherThanReachTheHost)
{
    startOn(smallSession());
    swapHalves();
    const core::Settings settings;
    EXPECT_GT(montala->countSteps(2, settings, 1), 0);
    host->projectManager().closeAll();

    EXPECT_EQ(montala->checkTracks(), Result::NoProject);
    EXPECT_EQ(montala->startConform(), Result::NoProject);
    EXPECT_EQ(montala->preview(previewEvents, 0, 0, true), Result::NoProject);
    EXPECT_EQ(montala->deletePreview(), Result::NoProject);
    EXPECT_EQ(montala->endPreview(true), Result::NoProject);
    EXPECT_EQ(montala->clearWorkArea(), Result::NoProject);
    EXPECT_EQ(montala->countSteps(2, settings, 1), 0);
    EXPECT_FALSE(montala->isPreviewActive());
    EXPECT_EQ(montala->getMediaPool(), nullptr);
    EXPECT_EQ(montala->getProjectName(), "");
    EXPECT_EQ(montala::test::thrownCode([&] { montala->getSnippetContext(); }), Result::HostCallFailed);
    EXPECT_EQ(montala::test::thrownCode([&] { montala->createCut(nullptr); }), Result::NoProject);
    montala->setPreviewActive(true);
    EXPECT_FALSE(montala->isRunPending());
}

} // namespace
} // namespace montala::host::test
