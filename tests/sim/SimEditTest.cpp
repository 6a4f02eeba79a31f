#include "SimFixture.h"

#include "kelmar/IEditClip.h"
#include "kelmar/IEditContext.h"
#include "kelmar/IEditStep.h"
#include "kelmar/IObjectList.h"
#include "kelmar/IPointMarker.h"
#include "kelmar/IProjectEdit.h"
#include "kelmar/IRangeEdit.h"
#include "sim/SimActionManager.h"
#include "sim/SimEdit.h"
#include "sim/SimPlayback.h"
#include "sim/SimRangeEditor.h"

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
        void* answer = nullptr;
        ASSERT_EQ(host->getService(IRangeEdit::iid, &answer), kResultOk);
        rangeEdit = owned(static_cast<IRangeEdit*>(answer));
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
        void* answer = nullptr;
        host->getService(IObjectList::iid, &answer);
        auto list = owned(static_cast<IObjectList*>(answer));
        for (SimObject* track : tracks)
            list->add(static_cast<ITrack*>(track));
        return list;
    }

    std::string played(const char16_t* trackName, double time)
    {
        const auto source = SimPlayback::at(trackNamed(trackName), time);
        if (!source)
            return "silence";
        return (source->clipId ? "clip " + std::to_string(source->clipId) : source->file) + " @ "
               + std::to_string(source->position);
    }

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

    // The curve goes 0 -> 1 over 20 s: the copy holds 0.25 and 0.75 at its edges.
    const SimObject::List& points = fx.automation()[0]->children();
    ASSERT_EQ(points.size(), 4u);
    EXPECT_DOUBLE_EQ(points[2]->get().start, 100.0);
    EXPECT_DOUBLE_EQ(points[2]->get().value, 0.25);
    EXPECT_DOUBLE_EQ(points[3]->get().start, 110.0);
    EXPECT_DOUBLE_EQ(points[3]->get().value, 0.75);

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
    void* answer = nullptr;
    ASSERT_EQ(host->getService(IPointMarker::iid, &answer), kResultOk);
    auto marker = owned(static_cast<IPointMarker*>(answer));
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
    edit->endEdit(project.get(), u"Rename");
    EXPECT_EQ(*log, (std::vector<std::string>{"discard first", "discard second"}));
    EXPECT_EQ(host->actionManager().invoke("Edit", "Redo"), kResultFalse);
}

TEST_F(SimEditTest, ChangesWithNoGroupOpenGoIntoOneImplicitGroupThatTheNextEndCloses)
{
    const std::string before = saved(*project);
    SimObject& dx = trackNamed(u"DX");
    dx.setName(nullptr, u"one", 0);
    dx.children()[0]->setEnd(nullptr, 8.0, 0);
    EXPECT_TRUE(host->isGroupOpen());
    edit->endEdit(project.get(), u"Trim");
    EXPECT_EQ(project->undoCount(), 1u);

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
    ASSERT_TRUE(host->undo(*project));
    EXPECT_EQ(saved(*project), before);
    EXPECT_FALSE(host->undo(*project));
}

TEST_F(SimEditTest, FinishRangeIsRecordedAndAnswersZero)
{
    SimObject& dx = trackNamed(u"DX");
    EXPECT_EQ(rangeEdit->finishRange(project.get(), listOf({&dx}).get(), 0.0, 86400.0, 0.0), kResultOk);
    ASSERT_EQ(project->finishRangeCalls.size(), 1u);
    EXPECT_EQ(project->finishRangeCalls[0].tracks[0].get(), &dx);
    EXPECT_DOUBLE_EQ(project->finishRangeCalls[0].end, 86400.0);
}

} // namespace
} // namespace montala::sim::test
