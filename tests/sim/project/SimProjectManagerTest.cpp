#include "../Recorder.h"
#include "../SimFixture.h"

#include "kelmar/edit/IEditContext.h"
#include "kelmar/project/IMediaPool.h"
#include "kelmar/base/IPath.h"
#include "kelmar/project/IPoolClip.h"
#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/project/IStorage.h"
#include "sim/services/SimDependencyRegistry.h"
#include "sim/project/SimPath.h"
#include "sim/services/SimUser.h"

namespace montala::sim::test {
namespace {

using namespace Kelmar;

class SimProjectManagerTest : public SimFixture {
protected:
    IPtr<SimProject> project(const char16_t* name)
    {
        IPtr<SimProject> made = SimProject::create(*host, name);
        made->initSettings(SimFrameRate{25, false, false}, 3600.0);
        return made;
    }

    IPtr<Recorder> recorder = owned(new Recorder);
};

TEST_F(SimProjectManagerTest, SavingTellsTheProjectsStorageNotificationsAndIsNoEdit)
{
    auto one = project(u"One");
    host->projectManager().openProject(one);
    one->addStorageNotification(recorder.get());
    // What a plug-in does while the project is saved: store its block.
    recorder->onSaving = [this](IProject* saving) {
        auto storage = service<IStorage>();
        storage->write("MontData", "abc", 3, 1);
        auto object = Kelmar::queryInterface<IProjectObject>(saving);
        object->setAttribute("Mont", FVariant(static_cast<FUnknown*>(storage.get())), 1);
        object->setAttribute("Mnts", FVariant(int64{1234}), 1);
    };
    SimUser(*host).save(*one);
    EXPECT_EQ(recorder->heard, (std::vector<std::string>{"saving One"}));
    EXPECT_EQ(one->hasAttribute("Mont"), kResultOk);
    EXPECT_FALSE(host->isGroupOpen()) << "storing is not put on the undo list";
    EXPECT_NE(saved(*one).find(R"("storage": {"MontData": "YWJj"})"), std::string::npos);
    one->removeStorageNotification(recorder.get());
}

TEST_F(SimProjectManagerTest, AUsersEditReachesTheEditHookWhoseChangesJoinTheUsersGroup)
{
    auto one = open(smallSession());
    host->projectManager().addNotification(recorder.get());
    SimObject& notes = *one->findTrack(u"Notes");
    const std::string before = saved(*one);

    // As a plug-in mirrors a marker: the hook adds one more through the edit.
    recorder->onEdited = [&](IProject*, IProjectEdit* edit) {
        if (notes.getFlags() & IProjectObject::kContentChanged && notes.children().size() == 3) {
            auto context = owned(one->getEditContext(&notes));
            auto mirror = SimObject::makeMarker(u"mirror", 50.0, 50.0);
            edit->addObject(context.get(), mirror.get());
        }
    };
    SimUser user(*host);
    ASSERT_TRUE(user.addMarker(notes, u"memo", 30.0, 30.0));
    EXPECT_EQ(recorder->heard, (std::vector<std::string>{"edited Small"}));
    EXPECT_EQ(notes.children().size(), 4u);
    EXPECT_EQ(one->undoTitle(), u"Add Event");

    ASSERT_TRUE(user.undo());
    EXPECT_EQ(saved(*one), before) << "one undo takes back the user's marker and the mirrored one";
    EXPECT_EQ(recorder->heard.back(), "edited Small") << "the hook hears of the undo too";

    recorder->heard.clear();
    user.setSelected(notes, true);
    EXPECT_EQ(recorder->heard, (std::vector<std::string>{"edited Small"}));
    EXPECT_TRUE(notes.isSelected());
    EXPECT_EQ(one->undoCount(), 0u) << "a selection is no edit";
    host->projectManager().removeNotification(recorder.get());
}

TEST_F(SimProjectManagerTest, TheUsersEditsOfALockedTrackAreRefused)
{
    auto one = open(smallSession());
    SimUser user(*host);
    SimObject& dx = *one->findTrack(u"DX");
    SimObject& take = *dx.children()[1];
    ASSERT_TRUE(user.trimEvent(take, 12.0, 18.0));
    EXPECT_DOUBLE_EQ(take.get().offset, 7.0) << "a trimmed head keeps the sound in place";
    ASSERT_TRUE(user.setLocked(dx, true));
    EXPECT_FALSE(user.moveEvent(take, 30.0));
    EXPECT_FALSE(user.deleteEvent(take));
    EXPECT_EQ(dx.children().size(), 2u);
    ASSERT_TRUE(user.undo());
    EXPECT_TRUE(user.deleteEvent(take));
    EXPECT_EQ(dx.children().size(), 1u);
}

} // namespace
} // namespace montala::sim::test
