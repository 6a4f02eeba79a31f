#include "../SimFixture.h"

#include "kelmar/project/IAutomationCurvePoint.h"
#include "kelmar/project/IEditClip.h"
#include "kelmar/edit/IEditContext.h"
#include "kelmar/edit/IEditStep.h"
#include "kelmar/base/IObjectList.h"
#include "kelmar/project/IPointMarker.h"
#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/edit/IRangeEdit.h"
#include "kelmar/project/IStorage.h"
#include "sim/services/SimActionManager.h"
#include "sim/edit/SimEdit.h"
#include "sim/project/SimPlayback.h"
#include "sim/edit/SimRangeEditor.h"
#include "sim/services/SimUser.h"

#include <memory>
#include <vector>

namespace montala::sim::test {
namespace {

using namespace Kelmar;

// A plug-in's edit step that writes its calls into a shared log.
class LoggingStep : public FObject, public IEditStep {
public:
    LoggingStep(std::string name, std::shared_ptr<std::vector<std::string>> log) : name(std::move(name)), log(log) {}

    tresult queryInterface(const FUID& iid, void** obj) override
    {
        if (answerInterface<IEditStep>(this, iid, obj))
            return kResultOk;
        return FObject::queryInterface(iid, obj);
    }
    KELMAR_FOBJECT_REFCOUNT

    tresult perform() override { return kResultOk; }
    tresult undo() override { return note("undo"); }
    tresult redo() override { return note("redo"); }
    tresult discard() override { return note("discard"); }

private:
    tresult note(const std::string& what)
    {
        log->push_back(what + " " + name);
        return kResultOk;
    }

    std::string name;
    std::shared_ptr<std::vector<std::string>> log;
};

class SimEditTest : public SimFixture {
protected:
    void SetUp() override
    {
        project = open(smallSession());
        rangeEdit = service<IRangeEdit>();
        ASSERT_TRUE(rangeEdit);
        edit = Kelmar::queryInterface<IProjectEdit>(rangeEdit.get());
        ASSERT_TRUE(edit);
    }
    void TearDown() override
    {
        edit.reset();
        rangeEdit.reset();
        project.reset();
        SimFixture::TearDown();
    }

    SimObject& trackNamed(const char16_t* name) { return *project->findTrack(name); }

    IPtr<IObjectList> listOf(std::initializer_list<SimObject*> tracks)
    {
        auto list = service<IObjectList>();
        for (SimObject* track : tracks)
            list->add(dynamic_cast<ITrack*>(track));
        return list;
    }

    std::string played(const char16_t* trackName, double time) { return heard(trackNamed(trackName), time); }

    IPtr<SimProject> project;
    IPtr<IRangeEdit> rangeEdit;
    IPtr<IProjectEdit> edit;
};

TEST_F(SimEditTest, CopyingARangeCutsEventsAtItsEdgesAndAdvancesTheirSourceOffsets)
{
    SimObject& dx = trackNamed(u"DX");
    SimObject& fx = trackNamed(u"FX");
    SimObject& notes = trackNamed(u"Notes");
    const auto tracks = listOf({&dx, &fx, &notes});

    // 01:00:05:00 - 01:00:15:00 goes to 01:01:40:00.
    ASSERT_EQ(rangeEdit->copyRangeOnTracks(project.get(), tracks.get(), 5.0, 15.0, 100.0, 0), kResultOk);

    ASSERT_EQ(dx.children().size(), 4u);
    const SimObject::Fields& head = dx.children()[2]->get();
    EXPECT_DOUBLE_EQ(head.start, 100.0);
    EXPECT_DOUBLE_EQ(head.end, 105.0);
    EXPECT_EQ(head.file, "t1.wav");
    EXPECT_DOUBLE_EQ(head.offset, 5.0);
    EXPECT_TRUE(head.joinedToNext) << "its end was not cut, so it still joins the next";
    const SimObject::Fields& tail = dx.children()[3]->get();
    EXPECT_DOUBLE_EQ(tail.start, 105.0);
    EXPECT_DOUBLE_EQ(tail.end, 110.0);
    EXPECT_DOUBLE_EQ(tail.offset, 5.0);

    // What is heard at the destination is what was heard in the source range.
    for (double t : {5.0, 9.96, 10.0, 12.5, 14.96})
        EXPECT_EQ(played(u"DX", t + 95.0), played(u"DX", t)) << "at " << t;
    for (double t : {5.0, 10.0, 14.96})
        EXPECT_EQ(played(u"FX", t + 95.0), played(u"FX", t)) << "at " << t;
    EXPECT_EQ(played(u"DX", 110.0), "silence");

    // The curve goes 0 -> 1 over 20 s: the copy runs 0.25 -> 0.75, and the
    // curve holds 1 on either side of it as before.
    const SimObject& curve = *fx.automation()[0];
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 100.0), 0.25);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 105.0), 0.5);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 60.0), 1.0);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 110.0), 1.0);

    // The point marker at 12 and the scene marker 8-14 come along.
    ASSERT_EQ(notes.children().size(), 4u);
    EXPECT_DOUBLE_EQ(notes.children()[2]->get().start, 107.0);
    EXPECT_DOUBLE_EQ(notes.children()[3]->get().start, 103.0);
    EXPECT_DOUBLE_EQ(notes.children()[3]->get().end, 109.0);

    EXPECT_EQ(trackNamed(u"Picture").children().size(), 1u) << "tracks not listed are left alone";
}

TEST_F(SimEditTest, CopiesLieOverWhatIsAtTheDestinationAsLayers)
{
    SimObject& dx = trackNamed(u"DX");
    const auto tracks = listOf({&dx});
    // take 2's second half goes over take 1's middle.
    ASSERT_EQ(rangeEdit->copyRangeOnTracks(project.get(), tracks.get(), 15.0, 17.0, 3.0, 0), kResultOk);
    EXPECT_EQ(played(u"DX", 2.96), "t1.wav @ 2.960000");
    EXPECT_EQ(played(u"DX", 3.0), "t2.wav @ 10.000000");
    EXPECT_EQ(played(u"DX", 5.0), "t1.wav @ 5.000000") << "beyond the copy the lower layer is heard again";
}

TEST_F(SimEditTest, DeletingARangeSplitsAtTheEdgesAndMovesNothingAfterIt)
{
    ASSERT_EQ(edit->deleteRange(project.get(), 5.0, 15.0, 0), kResultOk);

    SimObject& dx = trackNamed(u"DX");
    ASSERT_EQ(dx.children().size(), 2u);
    EXPECT_DOUBLE_EQ(dx.children()[0]->get().end, 5.0);
    EXPECT_FALSE(dx.children()[0]->get().joinedToNext);
    EXPECT_DOUBLE_EQ(dx.children()[1]->get().start, 15.0);
    EXPECT_DOUBLE_EQ(dx.children()[1]->get().offset, 10.0);

    // The door spans the range: it becomes two events with the gap between.
    SimObject& fx = trackNamed(u"FX");
    ASSERT_EQ(fx.children().size(), 2u);
    EXPECT_EQ(played(u"FX", 4.5), "door.wav @ 2.500000");
    EXPECT_EQ(played(u"FX", 10.0), "silence");
    EXPECT_EQ(played(u"FX", 15.5), "door.wav @ 13.500000");
    EXPECT_EQ(played(u"Picture", 20.0), "clip 1 @ 20.000000");

    EXPECT_TRUE(trackNamed(u"Notes").children().empty()) << "both markers lay inside";
}

TEST_F(SimEditTest, DeletingKeepsTheAutomationOutsideTheRangeAsItWas)
{
    SimObject& fx = trackNamed(u"FX");
    SimObject& curve = *fx.automation()[0];
    host->beginGroup();
    curve.insertPoint(SimObject::makePoint(10.0, 1.0));
    host->endGroup(project.get(), u"Add point");
    // 0 -> 1 over 0-10, then flat. Delete 5-12.
    ASSERT_EQ(edit->deleteRange(project.get(), 5.0, 12.0, 0), kResultOk);
    std::vector<std::pair<double, double>> points;
    for (const auto& point : curve.children())
        points.emplace_back(point->get().start, point->get().value);
    EXPECT_EQ(points, (std::vector<std::pair<double, double>>{{0.0, 0.0}, {5.0, 0.5}, {12.0, 1.0}, {20.0, 1.0}}));
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 2.5), 0.25);
}

TEST_F(SimEditTest, RangeWorkLeavesLockedTracksAlone)
{
    SimObject& dx = trackNamed(u"DX");
    dx.setToggle("lock", true);
    ASSERT_EQ(edit->deleteRange(project.get(), 0.0, 30.0, 0), kResultOk);
    EXPECT_EQ(dx.children().size(), 2u);
    EXPECT_TRUE(trackNamed(u"FX").children().empty());

    const auto tracks = listOf({&dx});
    ASSERT_EQ(rangeEdit->copyRangeOnTracks(project.get(), tracks.get(), 0.0, 5.0, 40.0, 0), kResultOk);
    EXPECT_EQ(dx.children().size(), 2u);
}

TEST_F(SimEditTest, AnExtractedClipInsertsTheRangeOfEveryTrack)
{
    IPtr<IEditClip> clip;
    ASSERT_EQ(edit->extractRange(project.get(), 10.0, 20.0, clip.put()), kResultOk);
    EXPECT_DOUBLE_EQ(clip->getLength(), 10.0);
    EXPECT_EQ(trackNamed(u"DX").children().size(), 2u) << "extracting takes a copy";
    ASSERT_EQ(edit->insertClip(project.get(), clip.get(), 200.0, 0), kResultOk);
    for (const char16_t* track : {u"DX", u"FX", u"Picture"})
        for (double t : {10.0, 12.0, 19.9})
            EXPECT_EQ(played(track, t + 190.0), played(track, t));
    const SimObject::List& markers = trackNamed(u"Notes").children();
    ASSERT_EQ(markers.size(), 4u);
    EXPECT_DOUBLE_EQ(markers[2]->get().start, 202.0);
    EXPECT_DOUBLE_EQ(markers[3]->get().start, 200.0) << "the scene marker, cut to the range";
    EXPECT_DOUBLE_EQ(markers[3]->get().end, 204.0);
}

TEST_F(SimEditTest, ObjectsGoOnlyWhereTheirKindBelongsAndNotIntoLockedTracks)
{
    SimObject& notes = trackNamed(u"Notes");
    SimObject& dx = trackNamed(u"DX");
    auto marker = service<IPointMarker>();
    auto markerObject = Kelmar::queryInterface<IProjectObject>(marker.get());
    ASSERT_TRUE(markerObject);

    auto dxContext = owned(project->getEditContext(&dx));
    auto notesContext = owned(project->getEditContext(&notes));
    EXPECT_EQ(edit->addObject(dxContext.get(), markerObject.get()), kInvalidArgument);
    notes.setToggle("lock", true);
    EXPECT_EQ(edit->addObject(notesContext.get(), markerObject.get()), kResultFalse);
    notes.setToggle("lock", false);
    ASSERT_EQ(edit->addObject(notesContext.get(), markerObject.get()), kResultOk);
    EXPECT_EQ(markerObject->setStart(notesContext.get(), 30.0, 0), kResultOk);
    EXPECT_EQ(notes.children().back()->get().start, 30.0);
    EXPECT_EQ(edit->addObject(notesContext.get(), markerObject.get()), kInvalidArgument) << "it is already placed";

    // A track moves into a folder and back out.
    auto folder = owned(project->createTrack("folder"));
    auto newFolderContext = owned(project->getEditContext(folder.get()));
    ASSERT_TRUE(newFolderContext) << "a new track can be named in its context before it is added";
    EXPECT_EQ(folder->setName(newFolderContext.get(), u"Montala Markers", 0), kResultOk);
    auto root = owned(project->getEditContext(nullptr));
    ASSERT_EQ(edit->addObject(root.get(), folder.get()), kResultOk);
    auto folderContext = owned(project->getEditContext(folder.get()));
    ASSERT_EQ(edit->moveObject(root.get(), folderContext.get(), &notes), kResultOk);
    EXPECT_EQ(notes.parent(), simObject(folder.get()));
    EXPECT_EQ(edit->moveObject(folderContext.get(), folderContext.get(), folder.get()), kInvalidArgument)
        << "a folder cannot go into itself";
    EXPECT_EQ(edit->removeObject(dxContext.get(), &notes), kInvalidArgument) << "it is not in that track";
    edit->endEdit(project.get(), u"Markers");
}

TEST_F(SimEditTest, UndoAndRedoOfAGroupGiveBackTheSessionByteForByte)
{
    const std::string before = saved(*project);
    auto log = std::make_shared<std::vector<std::string>>();
    SimObject& dx = trackNamed(u"DX");
    SimObject& notes = trackNamed(u"Notes");

    ASSERT_EQ(edit->beginEdit(1), kResultOk);
    edit->addEditStep(owned(new LoggingStep("first", log)).get());
    rangeEdit->copyRangeOnTracks(project.get(), listOf({&dx, &trackNamed(u"FX")}).get(), 5.0, 15.0, 100.0, 0);
    edit->deleteRange(project.get(), 2.0, 3.0, 0);
    dx.setName(nullptr, u"Dialogue", 0);
    dx.setAttribute("Montala:LockState", FVariant(int64{1}), 1);
    dx.setToggle("lock", true);
    notes.children()[1]->setStart(nullptr, 40.0, 0);
    edit->removeObject(nullptr, notes.children()[0].get());
    project->setProjectLength(300.0);
    edit->addEditStep(owned(new LoggingStep("second", log)).get());
    ASSERT_EQ(edit->endEdit(project.get(), u"Apply Montala"), kResultOk);
    const std::string after = saved(*project);
    ASSERT_NE(after, before);
    EXPECT_EQ(project->undoTitle(), u"Apply Montala");

    ASSERT_EQ(host->actionManager().invoke("Edit", "Undo"), kResultOk);
    EXPECT_EQ(saved(*project), before);
    EXPECT_EQ(*log, (std::vector<std::string>{"undo second", "undo first"})) << "steps are undone last first";

    ASSERT_EQ(host->actionManager().invoke("Edit", "Redo"), kResultOk);
    EXPECT_EQ(saved(*project), after);
    EXPECT_EQ(log->back(), "redo second");

    host->actionManager().invoke("Edit", "Undo");
    EXPECT_EQ(saved(*project), before);
    log->clear();
    // A new edit drops the undone group: its steps hear that they are gone.
    dx.setName(nullptr, u"DX 2", 0);
    EXPECT_EQ(*log, (std::vector<std::string>{"discard first", "discard second"}));
    EXPECT_EQ(host->actionManager().invoke("Edit", "Redo"), kResultFalse);
}

TEST_F(SimEditTest, OutsideAGroupTogglesAndSettingsAreNotRecordedAndEditsAreStepsOfTheirOwn)
{
    SimObject& dx = trackNamed(u"DX");
    SimObject& door = *trackNamed(u"FX").children()[0];

    // What a plug-in sets outside any group is no edit...
    ASSERT_EQ(dx.setAttribute("Montala:LockState", FVariant(int64{1}), 1), kResultOk);
    ASSERT_EQ(dx.setToggle("lock", true), kResultOk);
    ASSERT_EQ(project->setProjectLength(300.0), kResultOk);
    EXPECT_FALSE(host->isGroupOpen());
    EXPECT_EQ(project->undoCount(), 0u);

    // ...and the user's next edit neither takes it in nor takes it back.
    SimUser user(*host);
    ASSERT_TRUE(user.moveEvent(door, 6.0));
    EXPECT_EQ(project->undoCount(), 1u);
    ASSERT_TRUE(user.undo());
    EXPECT_DOUBLE_EQ(door.get().start, 4.0);
    EXPECT_EQ(dx.getToggle("lock"), kResultOk);
    EXPECT_EQ(dx.hasAttribute("Montala:LockState"), kResultOk);
    EXPECT_DOUBLE_EQ(project->length(), 300.0);
    ASSERT_EQ(dx.setToggle("lock", false), kResultOk);

    // An edit made outside a group is an undo step at once, each on its own.
    const std::string before = saved(*project);
    ASSERT_EQ(edit->deleteRange(project.get(), 2.0, 3.0, 0), kResultOk);
    EXPECT_FALSE(host->isGroupOpen());
    EXPECT_EQ(project->undoTitle(), u"Delete Range");
    const std::string deleted = saved(*project);
    ASSERT_EQ(door.setStart(nullptr, 5.0, 0), kResultOk);
    EXPECT_EQ(project->undoTitle(), u"Move");
    ASSERT_TRUE(host->undo(*project));
    EXPECT_EQ(saved(*project), deleted) << "the move alone";
    ASSERT_TRUE(host->undo(*project));
    EXPECT_EQ(saved(*project), before);

    // Nested groups close only at the outermost end.
    edit->beginEdit(1);
    edit->beginEdit(1);
    dx.setName(nullptr, u"two", 0);
    edit->endEdit(project.get(), u"inner");
    EXPECT_TRUE(host->isGroupOpen());
    dx.setName(nullptr, u"three", 0);
    edit->endEdit(project.get(), u"outer");
    EXPECT_FALSE(host->isGroupOpen());
    EXPECT_EQ(project->undoTitle(), u"outer");
    ASSERT_TRUE(host->undo(*project));
    EXPECT_EQ(saved(*project), before);
}

TEST_F(SimEditTest, AChangeInOneProjectNeverLandsOnAnothersUndoList)
{
    IPtr<SimProject> other = open(smallSession());
    host->projectManager().activateProject(project.get());
    SimObject& ours = trackNamed(u"DX");
    SimObject& theirs = *other->findTrack(u"DX");

    ASSERT_EQ(edit->beginEdit(1), kResultOk);
    ours.setName(nullptr, u"ours", 0);
    theirs.setName(nullptr, u"theirs", 0);
    theirs.setAttribute("Montala:LockState", FVariant(int64{1}), 1);
    ASSERT_EQ(edit->endEdit(project.get(), u"Rename"), kResultOk);

    EXPECT_EQ(project->undoCount(), 1u);
    EXPECT_EQ(other->undoCount(), 1u) << "the other project's rename is a step of its own there";
    ASSERT_TRUE(host->undo(*project));
    EXPECT_EQ(ours.get().name, u"DX");
    EXPECT_EQ(theirs.get().name, u"theirs");
    ASSERT_TRUE(host->undo(*other));
    EXPECT_EQ(theirs.get().name, u"DX");
    EXPECT_EQ(theirs.hasAttribute("Montala:LockState"), kResultOk) << "the attribute was never recorded";
    other.reset();
}

TEST_F(SimEditTest, AStepHandedInOutsideAGroupWaitsForItsEditsEnd)
{
    auto log = std::make_shared<std::vector<std::string>>();
    SimUser user(*host);
    ASSERT_EQ(edit->addEditStep(owned(new LoggingStep("model", log)).get()), kResultOk);
    EXPECT_FALSE(host->isGroupOpen());
    ASSERT_TRUE(user.moveEvent(*trackNamed(u"FX").children()[0], 6.0));
    ASSERT_EQ(edit->endEdit(project.get(), u"Change Model"), kResultOk);
    EXPECT_EQ(project->undoCount(), 2u);
    EXPECT_EQ(project->undoTitle(), u"Change Model");

    ASSERT_TRUE(user.undo());
    EXPECT_EQ(*log, (std::vector<std::string>{"undo model"}));
    ASSERT_TRUE(user.undo());
    EXPECT_EQ(*log, (std::vector<std::string>{"undo model"})) << "the user's move did not take the step in";
    EXPECT_DOUBLE_EQ(trackNamed(u"FX").children()[0]->get().start, 4.0);

    // An edit released with a step still waiting drops it.
    auto other = service<IProjectEdit>();
    ASSERT_TRUE(other);
    other->addEditStep(owned(new LoggingStep("lost", log)).get());
    other.reset();
    EXPECT_EQ(log->back(), "discard lost");
}

TEST_F(SimEditTest, ACopyOrACutEndsTheChainWhereItEnds)
{
    SimObject& dx = trackNamed(u"DX");
    const auto nextOf = [](SimObject& event) { return owned(event.getNextInChain()); };

    // take 1 (0-10 s) is joined to take 2, and take 3 lies later on the track.
    // Deleting take 2 leaves take 1 unjoined.
    SimUser user(*host);
    ASSERT_TRUE(user.addEvent(dx, SimObject::makeAudioEvent(u"take 3", 25.0, 30.0, "t3.wav", 0.0)));
    SimObject& take1 = *dx.children()[0];
    ASSERT_EQ(nextOf(take1).get(), static_cast<IProjectObject*>(dx.children()[1].get()));
    ASSERT_EQ(edit->deleteRange(project.get(), 10.0, 20.0, 0), kResultOk);
    EXPECT_FALSE(take1.get().joinedToNext);
    EXPECT_EQ(nextOf(take1), nullptr) << "take 3 is not take 1's next";
    ASSERT_TRUE(user.undo());
    ASSERT_TRUE(user.undo());
    ASSERT_TRUE(take1.get().joinedToNext);

    // Take 1's second half, copied to the end of the track, ends where take 1
    // ends: it is not joined to what follows it there.
    ASSERT_EQ(rangeEdit->copyRangeOnTracks(project.get(), listOf({&dx}).get(), 5.0, 10.0, 40.0, 0), kResultOk);
    ASSERT_TRUE(user.addEvent(dx, SimObject::makeAudioEvent(u"take 4", 45.0, 60.0, "t4.wav", 0.0)));
    SimObject& copy = *dx.children()[2];
    EXPECT_DOUBLE_EQ(copy.get().start, 40.0);
    EXPECT_FALSE(copy.get().joinedToNext);
    EXPECT_EQ(nextOf(copy), nullptr);
}

TEST_F(SimEditTest, PastingAutomationLeavesTheCurveOutsideTheDestinationAsItWas)
{
    // FX's volume runs 0 -> 1 over 0-20 s; [0, 2) goes to 10 s.
    SimObject& fx = trackNamed(u"FX");
    const SimObject& curve = *fx.automation()[0];
    ASSERT_EQ(rangeEdit->copyRangeOnTracks(project.get(), listOf({&fx}).get(), 0.0, 2.0, 10.0, 0), kResultOk);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 5.0), 0.25);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 9.999), 0.49995);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 10.0), 0.0) << "the copy begins";
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 11.0), 0.05);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 12.0), 0.6) << "the copy ended";
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 15.0), 0.75);

    // A paste onto a point that lies on the edge keeps that point.
    ASSERT_EQ(rangeEdit->copyRangeOnTracks(project.get(), listOf({&fx}).get(), 0.0, 2.0, 18.0, 0), kResultOk);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 20.0), 1.0);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 19.0), 0.05);
    EXPECT_DOUBLE_EQ(*SimRangeEditor::valueAt(curve, 17.0), 0.85);
}

TEST_F(SimEditTest, ACopyTakesTheCurveAsEarlierPastesAndAddedPointsLeftIt)
{
    // FX's volume runs 0 -> 1 over 0-20 s. Its copy at 100 gets a point of 0
    // at 110: from 100 it holds 0 to 110, then rises to 1 at 120. A copy of
    // 105-115 from there to 200 finds that point.
    SimObject& fx = trackNamed(u"FX");
    SimObject& curve = *fx.automation()[0];
    ASSERT_EQ(rangeEdit->copyRangeOnTracks(project.get(), listOf({&fx}).get(), 0.0, 20.0, 100.0, 0), kResultOk);
    auto point = service<IAutomationCurvePoint>();
    auto pointObject = Kelmar::queryInterface<IProjectObject>(point.get());
    auto context = owned(project->getEditContext(&curve));
    ASSERT_EQ(point->setValue(context.get(), 0.0f, 0), kResultOk);
    ASSERT_EQ(pointObject->setStart(context.get(), 110.0, 0), kResultOk);
    ASSERT_EQ(edit->addObject(context.get(), pointObject.get()), kResultOk);
    ASSERT_EQ(rangeEdit->copyRangeOnTracks(project.get(), listOf({&fx}).get(), 105.0, 115.0, 200.0, 0), kResultOk);
    for (const auto& [time, value] : {std::pair{200.0, 0.0}, {205.0, 0.0}, {207.5, 0.25}, {209.99, 0.499}})
        EXPECT_NEAR(*SimRangeEditor::valueAt(curve, time), value, 1e-9) << "at " << time;
}

TEST_F(SimEditTest, ACopiedEventHasAStoreOfItsOwn)
{
    SimObject& door = *trackNamed(u"FX").children()[0];
    auto store = service<IStorage>();
    ASSERT_TRUE(store);
    store->write("Block", "old", 3, 1);
    ASSERT_EQ(door.setAttribute("Data", FVariant(static_cast<FUnknown*>(store.get())), 1), kResultOk);
    const std::string before = saved(*project);

    ASSERT_EQ(rangeEdit->copyRangeOnTracks(project.get(), listOf({&trackNamed(u"FX")}).get(), 4.0, 16.0, 40.0, 0),
              kResultOk);
    SimObject& copy = *trackNamed(u"FX").children()[1];
    FVariant value;
    ASSERT_EQ(copy.getAttribute("Data", value), kResultOk);
    auto copied = Kelmar::queryInterface<IStorage>(value.getObject());
    ASSERT_TRUE(copied);
    EXPECT_NE(copied.get(), store.get());
    ASSERT_EQ(copied->write("Block", "new!", 4, 1), kResultOk);
    EXPECT_EQ(store->getSize("Block"), 3) << "the original's block is as it was";

    ASSERT_TRUE(host->undo(*project));
    EXPECT_EQ(saved(*project), before);
}

} // namespace
} // namespace montala::sim::test
