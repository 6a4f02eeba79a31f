#include "../SimFixture.h"

#include "kelmar/project/IAudioChainEntry.h"
#include "kelmar/project/IAutomationCurvePoint.h"
#include "kelmar/project/IAutomationPoint.h"
#include "kelmar/project/IAutomationTrack.h"
#include "kelmar/project/IMarkerTrack.h"
#include "kelmar/project/IPointMarker.h"
#include "kelmar/project/IRangeMarker.h"
#include "kelmar/project/IVideoEvent.h"
#include "kelmar/base/IObjectIterator.h"
#include "kelmar/project/IPoolClip.h"
#include "kelmar/project/IProject.h"
#include "kelmar/project/IProjectSettings.h"
#include "kelmar/project/IStorage.h"
#include "sim/edit/SimEditGroup.h"
#include "sim/project/SimStorage.h"

namespace montala::sim::test {
namespace {

using namespace Kelmar;

class SimObjectTest : public SimFixture {};

TEST_F(SimObjectTest, AttributesKeepTheirTypeAndHandOutOwnedCopies)
{
    auto project = open(smallSession());
    SimObject& notes = *project->findTrack(u"Notes");

    EXPECT_EQ(notes.hasAttribute("Montala:MarkerType"), kResultFalse);
    EXPECT_EQ(notes.setAttribute("Montala:MarkerType", FVariant(int64{3}), 1), kResultOk);
    EXPECT_EQ(notes.hasAttribute("Montala:MarkerType"), kResultOk);
    FVariant value;
    ASSERT_EQ(notes.getAttribute("Montala:MarkerType", value), kResultOk);
    EXPECT_TRUE(value.isInt());
    EXPECT_EQ(value.getInt(), 3);

    notes.children()[0]->setAttribute("User:STR_MAReel", FVariant("A001"), 1);
    FVariant reel;
    ASSERT_EQ(notes.children()[0]->getAttribute("User:STR_MAReel", reel), kResultOk);
    EXPECT_TRUE(reel.isOwner()) << "the reader frees what it was given";
    EXPECT_STREQ(reel.getString8(), "A001");

    // A store is kept by reference; the value handed in does not own it.
    auto storage = owned(new SimStorage);
    const char block[] = "model";
    storage->write("MontData", block, 5, 1);
    EXPECT_EQ(project->setAttribute("Mont", FVariant(static_cast<IStorage*>(storage.get())), 1), kResultOk);
    EXPECT_EQ(storage->getRefCount(), 2u);
    FVariant stored;
    ASSERT_EQ(project->getAttribute("Mont", stored), kResultOk);
    auto readBack = Kelmar::queryInterface<IStorage>(stored.getObject());
    ASSERT_TRUE(readBack);
    EXPECT_EQ(readBack->getSize("MontData"), 5);

    EXPECT_EQ(project->setAttribute("Bad", FVariant(static_cast<FUnknown*>(static_cast<IProjectObject*>(&notes))), 1),
              kInvalidArgument)
        << "only stores can be kept as objects";
    EXPECT_EQ(notes.removeAttribute("Montala:MarkerType"), kResultOk);
    EXPECT_EQ(notes.removeAttribute("Montala:MarkerType"), kResultFalse);
}

TEST_F(SimObjectTest, EachKindAnswersItsOwnInterfacesAndNoOthers)
{
    // What each kind answers besides IProjectObject, in the order of `asked`.
    const std::vector<std::pair<ObjectKind, std::string>> kinds = {
        {ObjectKind::Folder, "T........"},        {ObjectKind::AudioTrack, "T........"},
        {ObjectKind::MarkerTrack, "TM......."},   {ObjectKind::AudioEvent, "..A......"},
        {ObjectKind::VideoEvent, "...V....."},    {ObjectKind::PointMarker, "....P...."},
        {ObjectKind::RangeMarker, ".....R..."},   {ObjectKind::AutomationTrack, "......U.."},
        {ObjectKind::AutomationPoint, ".......pc"}, {ObjectKind::Part, "........."},
    };
    const std::vector<std::pair<char, FUID>> asked = {
        {'T', ITrack::iid},          {'M', IMarkerTrack::iid},    {'A', IAudioChainEvent::iid},
        {'V', IVideoEvent::iid},     {'P', IPointMarker::iid},    {'R', IRangeMarker::iid},
        {'U', IAutomationTrack::iid}, {'p', IAutomationPoint::iid}, {'c', IAutomationCurvePoint::iid},
    };
    for (const auto& [kind, expected] : kinds) {
        SCOPED_TRACE(kindName(kind));
        IPtr<SimObject> node = SimObject::create(kind);
        std::string answered;
        for (const auto& [letter, iid] : asked) {
            void* face = nullptr;
            const bool answers = node->queryInterface(iid, &face) == kResultOk;
            answered += answers ? letter : '.';
            if (!answers)
                continue;
            // Asked back through the interface, the node is the same node.
            IPtr<FUnknown> unknown = owned(static_cast<FUnknown*>(face));
            EXPECT_EQ(simObject(unknown.get()), node.get());
        }
        EXPECT_EQ(answered, expected);
        EXPECT_EQ(node->getRefCount(), 1u) << "every answer was released";
    }
}

TEST_F(SimObjectTest, TheLockToggleAnswersZeroWhenOnAndRefusesEditsOfTheTracksContent)
{
    auto project = open(smallSession());
    SimObject& dx = *project->findTrack(u"DX");
    SimObject& take = *dx.children()[0];

    EXPECT_EQ(dx.getToggle("lock"), kResultFalse);
    EXPECT_EQ(dx.setToggle("lock", true), kResultOk);
    EXPECT_EQ(dx.getToggle("lock"), kResultOk);
    EXPECT_EQ(dx.getToggle("mute"), kInvalidArgument);

    EXPECT_EQ(take.setStart(nullptr, 30.0, 0), kResultFalse);
    EXPECT_EQ(take.getStart(nullptr), 0.0);
    // The lock covers the track's own name and attributes too.
    EXPECT_EQ(dx.setName(nullptr, u"Dialogue", 0), kResultFalse);
    EXPECT_EQ(take.setName(nullptr, u"Line", 0), kResultFalse);
    EXPECT_EQ(dx.setAttribute("Montala:MarkerType", FVariant(int64{1}), 1), kResultFalse);
    EXPECT_EQ(take.setAttribute("MontEventUserId", FVariant(int64{1}), 1), kResultFalse);
    EXPECT_EQ(dx.get().name, u"DX");
    EXPECT_EQ(dx.hasAttribute("Montala:MarkerType"), kResultFalse);
    EXPECT_EQ(dx.setToggle("lock", false), kResultOk) << "but not the toggle that takes it off";
    EXPECT_EQ(dx.setName(nullptr, u"Dialogue", 0), kResultOk);
}

TEST_F(SimObjectTest, TimesAreHostTimesAndAPartsEventsAreRelativeToThePart)
{
    auto project = open(R"({"format": "montala-session", "version": 1, "frameRate": {"fps": 25},
      "start": "01:00:00:00", "end": "01:01:00:00",
      "tracks": [{"kind": "audio", "name": "DX", "events": [
        {"kind": "part", "name": "scene", "start": "01:00:10:00", "end": "01:00:20:00", "events": [
          {"kind": "audio", "start": "00:00:01:00", "end": "00:00:04:00", "file": "a.wav", "offset": 0, "joinedToNext": true},
          {"kind": "audio", "start": "00:00:04:00", "end": "00:00:06:00", "file": "b.wav", "offset": 0}]},
        {"kind": "audio", "start": "01:00:02:00", "end": "01:00:05:00", "file": "c.wav", "offset": 1}],
        "automation": [{"name": "Volume", "curveType": 1, "points": [{"time": 2, "value": 0.5}]}]}]})");
    SimObject& dx = *project->findTrack(u"DX");
    EXPECT_DOUBLE_EQ(project->getProjectStart(), 3600.0);
    // An event's source offset and a point's value lie in one place: each
    // kind answers only its own.
    EXPECT_DOUBLE_EQ(dx.children()[1]->getOffset(nullptr), 1.0);
    SimObject& point = *dx.automation()[0]->children()[0];
    EXPECT_DOUBLE_EQ(point.getOffset(nullptr), 0.0);
    EXPECT_FLOAT_EQ(point.getValue(), 0.5f);
    EXPECT_DOUBLE_EQ(project->getEnd(nullptr), 60.0);

    SimObject& part = *dx.children()[0];
    EXPECT_DOUBLE_EQ(part.children()[0]->getStart(nullptr), 1.0);
    EXPECT_DOUBLE_EQ(part.children()[0]->timelineStart(), 11.0);

    // The chain runs in time order over parts and plain events; its entries
    // give timeline times.
    auto entry = owned(dx.getAudioChain());
    ASSERT_TRUE(entry);
    EXPECT_DOUBLE_EQ(entry->getStart(), 2.0);
    entry = owned(entry->next(0));
    EXPECT_DOUBLE_EQ(entry->getStart(), 11.0);
    EXPECT_DOUBLE_EQ(entry->getEnd(), 14.0);
    auto first = owned(entry->getObject());
    auto joined = owned(Kelmar::queryInterface<IAudioChainEvent>(first.get())->getNextInChain());
    ASSERT_TRUE(joined);
    EXPECT_DOUBLE_EQ(joined->getEnd(nullptr), 6.0) << "inside the part";
    auto parent = owned(joined->getParent());
    EXPECT_TRUE(parent->isKind("part"));
    EXPECT_EQ(owned(Kelmar::queryInterface<IAudioChainEvent>(joined.get())->getNextInChain()), nullptr);
    entry = owned(entry->next(0));
    entry = owned(entry->next(0));
    EXPECT_EQ(entry, nullptr);
}

TEST_F(SimObjectTest, ChildrenTakenOutDuringAWalkAreLetGoOfWhenTheWalkEnds)
{
    auto project = open(smallSession());
    SimObject& dx = *project->findTrack(u"DX");
    for (int i = 0; i < 8; ++i)
        dx.appendChild(SimObject::makeAudioEvent(u"piece", 30.0 + i, 30.5 + i, "p.wav", 0.0));
    const IPtr<SimObject> last = dx.children().back();
    host->beginGroup();
    IPtr<IObjectIterator> walk = owned(dx.getChildren());
    while (!walk->atEnd()) {
        IPtr<IProjectObject> child = owned(walk->next());
        if (child->getStart(nullptr) >= 30.0) {
            EXPECT_TRUE(dx.removeChild(simObject(child.get())));
        }
    }
    // Undo keeps what it recorded; the list lets go of it once the walk is over.
    const auto held = last->getRefCount();
    walk = nullptr;
    EXPECT_EQ(last->getRefCount(), held - 1);
    EXPECT_EQ(dx.children().size(), 2u);
    host->endGroup(project.get(), u"Remove");
}

TEST_F(SimObjectTest, FlagsSayWhatLeftTheProjectAndWhatChangedInTheOpenGroup)
{
    auto project = open(smallSession());
    SimObject& notes = *project->findTrack(u"Notes");
    IPtr<SimObject> hit = notes.children()[0];
    EXPECT_EQ(notes.getFlags(), 0);

    host->beginGroup();
    notes.removeChild(hit.get());
    EXPECT_EQ(hit->getFlags() & IProjectObject::kLeftProject, IProjectObject::kLeftProject);
    EXPECT_EQ(notes.getFlags(), IProjectObject::kContentChanged);
    EXPECT_EQ(project->findTrack(u"DX")->getFlags(), 0);
    host->endGroup(project.get(), u"Delete");
    EXPECT_EQ(notes.getFlags(), 0) << "the marks last as long as the group";

    EXPECT_EQ(owned(project->getDefaultMarkerTrack())->getFlags(), IProjectObject::kLeftProject);

    // Held past the project's end, a node and its copy belong to none.
    IPtr<SimObject> track = shared(project->findTrack(u"DX"));
    IPtr<SimObject> copy = track->cloneTree();
    copy->bindTo(project.get());
    host->projectManager().closeProject(project.get());
    project.reset();
    EXPECT_EQ(track->project(), nullptr);
    EXPECT_EQ(copy->project(), nullptr);
    EXPECT_EQ(track->getFlags() & IProjectObject::kLeftProject, IProjectObject::kLeftProject);
    EXPECT_EQ(track->setName(nullptr, u"kept", 0), kResultOk) << "a change with no project records nothing";
}

} // namespace
} // namespace montala::sim::test
