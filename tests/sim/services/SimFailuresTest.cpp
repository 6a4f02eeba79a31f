#include "../SimFixture.h"

#include "kelmar/edit/IEditContext.h"
#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/project/IProjectSettings.h"
#include "kelmar/edit/IRangeEdit.h"
#include "kelmar/project/IStorage.h"
#include "sim/services/SimFailures.h"

#include <stdexcept>

namespace montala::sim::test {
namespace {

using namespace Kelmar;

using SimFailuresTest = SimFixture;

TEST_F(SimFailuresTest, AWithheldInterfaceIsAnsweredNoInterfaceEverywhere)
{
    auto project = open(smallSession());
    auto edit = service<IProjectEdit>();
    ASSERT_TRUE(edit);

    host->failures().withhold(IRangeEdit::iid);
    host->failures().withhold(IProjectSettings::iid);
    host->failures().withhold(IStorage::iid);
    void* answer = reinterpret_cast<void*>(1);
    EXPECT_EQ(host->getService(IRangeEdit::iid, &answer), kNoInterface);
    EXPECT_EQ(answer, nullptr);
    EXPECT_FALSE(service<IStorage>());
    EXPECT_FALSE(Kelmar::queryInterface<IRangeEdit>(edit.get())) << "nor does an edit already handed out answer it";
    EXPECT_FALSE(Kelmar::queryInterface<IProjectSettings>(static_cast<IProject*>(project.get())));
    EXPECT_TRUE(Kelmar::queryInterface<IProjectObject>(static_cast<IProject*>(project.get())));
    EXPECT_TRUE(service<IProjectEdit>()) << "the others are still there";

    host->failures().provide(IRangeEdit::iid);
    EXPECT_TRUE(Kelmar::queryInterface<IRangeEdit>(edit.get()));
    host->failures().clear();
    EXPECT_TRUE(service<IStorage>());
}

TEST_F(SimFailuresTest, TheNthCallFailsAndChangesNothing)
{
    auto project = open(smallSession());
    auto edit = service<IProjectEdit>();
    SimFailures& failures = host->failures();
    SimObject& dx = *project->findTrack(u"DX");

    edit->deleteRange(project.get(), 0.0, 1.0, 0);
    failures.failCall("deleteRange", 2);
    EXPECT_EQ(edit->deleteRange(project.get(), 1.0, 2.0, 0), kResultOk);
    const std::string before = saved(*project);
    EXPECT_EQ(edit->deleteRange(project.get(), 2.0, 3.0, 0), kResultFailed);
    EXPECT_EQ(saved(*project), before);
    EXPECT_EQ(edit->deleteRange(project.get(), 2.0, 3.0, 0), kResultOk) << "only that one";
    EXPECT_EQ(failures.callCount("deleteRange"), 4);

    // A store's write and an attribute, each at its first call from now.
    auto storage = service<IStorage>();
    failures.failCall("write");
    failures.failCall("setAttribute");
    EXPECT_EQ(storage->write("MontData", "abc", 3, 1), kResultFailed);
    EXPECT_EQ(storage->getSize("MontData"), 0);
    EXPECT_EQ(dx.setAttribute("Mnts", FVariant(int64{7}), 1), kResultFailed);
    EXPECT_EQ(dx.hasAttribute("Mnts"), kResultFalse);
    EXPECT_EQ(failures.failedCalls(), (std::vector<std::string>{"deleteRange #3", "write #1", "setAttribute #1"}));

    failures.failEveryCall("addObject");
    auto context = owned(project->getEditContext(nullptr));
    auto track = owned(project->createTrack("marker"));
    EXPECT_EQ(edit->addObject(context.get(), track.get()), kResultFailed);
    EXPECT_EQ(edit->addObject(context.get(), track.get()), kResultFailed);
    failures.clear();
    EXPECT_EQ(edit->addObject(context.get(), track.get()), kResultOk);

    EXPECT_THROW(failures.failCall("deleteRnage"), std::invalid_argument) << "a misspelt call is the test's fault";
    EXPECT_THROW(failures.failCall("endEdit", 0), std::invalid_argument);
}

TEST_F(SimFailuresTest, AFailedBeginOpensNoGroupAndAFailedEndLeavesItOpenForAnother)
{
    auto project = open(smallSession());
    auto edit = service<IProjectEdit>();
    SimObject& dx = *project->findTrack(u"DX");

    host->failures().failCall("beginEdit");
    EXPECT_EQ(edit->beginEdit(1), kResultFailed);
    EXPECT_FALSE(host->isGroupOpen());

    // A run whose closing fails closes again under another title.
    host->failures().failCall("endEdit");
    ASSERT_EQ(edit->beginEdit(1), kResultOk);
    dx.setName(nullptr, u"Dialogue", 0);
    EXPECT_EQ(edit->endEdit(project.get(), u"Apply Montala"), kResultFailed);
    EXPECT_TRUE(host->isGroupOpen());
    EXPECT_EQ(edit->endEdit(project.get(), u"Apply Montala (incomplete)"), kResultOk);
    EXPECT_EQ(project->undoTitle(), u"Apply Montala (incomplete)");
    EXPECT_EQ(project->undoCount(), 1u);
}

} // namespace
} // namespace montala::sim::test
