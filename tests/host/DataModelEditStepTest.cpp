// Undo of the data model with the host's undo list: a command takes the state
// before, hands the host a step when it goes, and the host's "Undo" and
// "Redo" swap the model between its two states. Run against the simulated
// host, whose undo list calls the step as a real one does.

#include "sim/SimFixture.h"
#include "support/ModelFixture.h"

#include "core/model/DataModel.h"
#include "core/time/Framerate.h"
#include "core/serialize/SerializationTree.h"
#include "host/DataModelChangeCommand.h"
#include "util/StringConverter.h"

#include "kelmar/edit/IProjectEdit.h"
#include "sim/services/SimActionManager.h"
#include "sim/edit/SimEdit.h"
#include "sim/services/SimFailures.h"
#include "sim/project/SimProject.h"

#include <memory>
#include <string>

namespace montala::host::test {
namespace {

using namespace Kelmar;
using montala::test::makeEvent;
using montala::test::thrownCode;

// Translates the one title the tests use, as the host's table would.
class GermanTitles : public util::StringConverter {
public:
    std::u16string translate(const std::u16string& wide) override
    {
        return wide == u"Edit Event" ? u"Ereignis bearbeiten" : wide;
    }
};

class DataModelEditStepTest : public sim::test::SimFixture {
protected:
    void SetUp() override
    {
        project = open(smallSession());
        ASSERT_TRUE(project);
        model.getChangeList().addEvent(makeEvent("A001", "01:00:00:00", "01:00:04:00", "01:00:10:00", "01:00:14:00"));
    }
    void TearDown() override
    {
        project.reset();
        SimFixture::TearDown();
    }

    IPtr<IProjectEdit> newEdit()
    {
        void* answer = nullptr;
        EXPECT_EQ(host->getService(IProjectEdit::iid, &answer), kResultOk);
        return owned(static_cast<IProjectEdit*>(answer));
    }

    // The model's stored form: equal bytes, equal model.
    std::vector<uint8_t> stored() const
    {
        core::serialize::SerializationTree tree;
        tree.writeObject(model);
        return tree.getBytes();
    }

    std::vector<std::string> changeRolls() const
    {
        std::vector<std::string> rolls;
        for (const auto& event : model.getChangeList().getEvents())
            rolls.push_back(event->getRollName());
        return rolls;
    }

    bool undo() { return host->actionManager().invoke("Edit", "Undo") == kResultOk; }
    bool redo() { return host->actionManager().invoke("Edit", "Redo") == kResultOk; }

    core::FixedFramerateProvider rate{core::Framerate(25, 0)};
    core::ScopedFramerateProvider rateScope{&rate};
    GermanTitles converter;
    util::ScopedStringConverter converterScope{converter};
    core::DataModel model;
    IPtr<sim::SimProject> project;
};

TEST_F(DataModelEditStepTest, UndoAndRedoSwapTheModelUnderTheTranslatedTitleAndKeepTheSettingsOfTheMoment)
{
    const auto before = stored();
    {
        DataModelChangeCommand command("Edit Event", newEdit(), model, project.get(), true);
        EXPECT_TRUE(host->isGroupOpen()) << "a command that closes its edit opens it too";
        model.getChangeList().addEvent(
            makeEvent("B002", "01:00:04:00", "01:00:08:00", "01:00:14:00", "01:00:18:00"));
    }
    const auto after = stored();
    EXPECT_FALSE(host->isGroupOpen());
    EXPECT_EQ(project->undoTitle(), u"Ereignis bearbeiten");

    // The user changes a setting later, outside any step.
    model.getSettings().setCreateVirginTerritories(true);

    ASSERT_TRUE(undo());
    EXPECT_EQ(changeRolls(), std::vector<std::string>{"A001"});
    EXPECT_TRUE(model.getSettings().getCreateVirginTerritories()) << "undo leaves the settings as they are";

    ASSERT_TRUE(redo());
    EXPECT_EQ(changeRolls(), (std::vector<std::string>{"A001", "B002"}));
    EXPECT_TRUE(model.getSettings().getCreateVirginTerritories());

    // Back and forth again: each swap finds the state the other one left.
    model.getSettings().setCreateVirginTerritories(false);
    ASSERT_TRUE(undo());
    EXPECT_EQ(stored(), before);
    ASSERT_TRUE(redo());
    EXPECT_EQ(stored(), after) << "undo then redo is the state after the change";
}

TEST_F(DataModelEditStepTest, ARunsStepJoinsItsGroupSoThatOneUndoTakesBackProjectAndModel)
{
    const std::string sessionBefore = saved(*project);
    const auto before = stored();
    IPtr<IProjectEdit> edit = newEdit();
    ASSERT_EQ(edit->beginEdit(1), kResultOk);
    {
        DataModelChangeCommand command(edit, model, project.get());
        edit->deleteRange(project.get(), 2.0, 3.0, 0);
        model.getChangeList().clear();
    }
    EXPECT_TRUE(host->isGroupOpen()) << "a command without a title leaves the group to its owner";
    ASSERT_EQ(edit->endEdit(project.get(), u"Apply Montala"), kResultOk);
    EXPECT_EQ(project->undoCount(), 1u);
    EXPECT_EQ(model.getChangeList().getSize(), 0u);

    ASSERT_TRUE(undo());
    EXPECT_EQ(saved(*project), sessionBefore);
    EXPECT_EQ(stored(), before);
}

TEST_F(DataModelEditStepTest, AStateTakenEarlierIsWhatUndoGivesBack)
{
    // A preview takes the state when it starts; the command is made later,
    // after the preview has changed the model. The tree is handed over as
    // written, its cursor at the end: the step must read it from the start.
    core::serialize::SerializationTree atStart;
    atStart.writeObject(model);
    model.setProperty(10005, core::Variant(true));

    IPtr<IProjectEdit> edit = newEdit();
    ASSERT_EQ(edit->beginEdit(1), kResultOk);
    {
        DataModelChangeCommand command("", edit, model, project.get(), false, atStart);
        model.getChangeList().addEvent(
            makeEvent("C003", "01:00:08:00", "01:00:09:00", "01:00:20:00", "01:00:21:00"));
    }
    edit->endEdit(project.get(), u"Preview");

    ASSERT_TRUE(undo());
    EXPECT_FALSE(model.hasProperty(10005));
    EXPECT_EQ(changeRolls(), std::vector<std::string>{"A001"});
    ASSERT_TRUE(redo());
    EXPECT_TRUE(model.isPreviewActive());
    EXPECT_EQ(changeRolls(), (std::vector<std::string>{"A001", "C003"}));
}

TEST_F(DataModelEditStepTest, AGroupTheHostRefusesRecordsNothingAndAStepItRefusesStillClosesTheGroup)
{
    host->failures().failCall("beginEdit");
    EXPECT_EQ(thrownCode([&] { DataModelChangeCommand command("Edit Event", newEdit(), model, project.get(), true); }),
              util::Result::HostCallFailed);
    EXPECT_FALSE(host->isGroupOpen());
    EXPECT_EQ(project->undoCount(), 0u);

    // The model's change is made either way; the user's step must not stay
    // open and swallow the next edits.
    host->failures().failCall("addEditStep");
    {
        DataModelChangeCommand command("Edit Event", newEdit(), model, project.get(), true);
        model.getChangeList().clear();
    }
    EXPECT_FALSE(host->isGroupOpen());
    EXPECT_EQ(model.getChangeList().getSize(), 0u);
}

} // namespace
} // namespace montala::host::test
