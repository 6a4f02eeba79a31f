#include "../SimFixture.h"

#include "kelmar/project/IAudioChainEntry.h"
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

// Whether `object` answers the interface whose GUID text is given.
bool answers(FUnknown* object, const char* guid)
{
    FUID iid;
    EXPECT_TRUE(FUID::fromText(guid, iid)) << guid;
    void* answer = nullptr;
    if (object->queryInterface(iid, &answer) != kResultOk)
        return false;
    static_cast<FUnknown*>(answer)->release();
    return true;
}

bool answers(SimObject* object, const char* guid)
{
    return answers(static_cast<IProjectObject*>(object), guid);
}

constexpr const char* projectObject = "{7A6F999F-BDBC-4BCC-AC40-3DABACE8A171}";
constexpr const char* track = "{AE3A033C-70E0-4568-8715-0F35A8A446F2}";
constexpr const char* markerTrack = "{E9C743A1-6C48-4AFA-99BC-24C081225239}";
constexpr const char* chainEvent = "{21FFE452-D832-40D6-AE8B-6DB6AE400165}";
constexpr const char* videoEvent = "{EE190F09-858B-473B-B1B4-981BB7C9BD28}";
constexpr const char* pointMarker = "{0499AB46-4C5F-463D-9BAF-00E704B52D35}";
constexpr const char* rangeMarker = "{B52FC642-AA6F-4D32-AFA2-7CE272C1F81B}";
constexpr const char* automationTrack = "{3C4D78BE-B7F1-425F-B0ED-E9977B5E43FD}";
constexpr const char* automationPoint = "{501B33DD-B717-4533-B793-E1408425375F}";
constexpr const char* curvePoint = "{A17080F9-9F90-4198-A6ED-641A168E119E}";
constexpr const char* settings = "{E797277C-0260-4ADE-B8CB-AC383346B5CD}";

TEST_F(SimObjectTest, EachKindAnswersTheInterfacesAndKindNamesOfItsKind)
{
    auto project = open(smallSession());
    SimObject& dx = *project->findTrack(u"DX");
    SimObject& fx = *project->findTrack(u"FX");
    SimObject& notes = *project->findTrack(u"Notes");
    SimObject& picture = *project->findTrack(u"Picture");

    EXPECT_TRUE(answers(static_cast<IProject*>(project.get()), projectObject));
    EXPECT_TRUE(answers(static_cast<IProject*>(project.get()), settings));
    EXPECT_FALSE(answers(static_cast<IProject*>(project.get()), track));

    EXPECT_TRUE(answers(static_cast<ITrack*>(&dx), projectObject));
    EXPECT_TRUE(answers(static_cast<ITrack*>(&dx), track));
    EXPECT_FALSE(answers(static_cast<ITrack*>(&dx), markerTrack));
    EXPECT_TRUE(answers(static_cast<ITrack*>(&notes), markerTrack));

    IProjectObject* take = dx.children()[0].get();
    EXPECT_TRUE(answers(take, chainEvent));
    EXPECT_FALSE(answers(take, videoEvent));
    EXPECT_FALSE(answers(take, track));
    EXPECT_TRUE(answers(picture.children()[0].get(), videoEvent));
    EXPECT_TRUE(answers(notes.children()[0].get(), pointMarker));
    EXPECT_FALSE(answers(notes.children()[0].get(), rangeMarker));
    EXPECT_TRUE(answers(notes.children()[1].get(), rangeMarker));
    EXPECT_TRUE(answers(fx.automation()[0].get(), automationTrack));
    IProjectObject* point = fx.automation()[0]->children()[0].get();
    EXPECT_TRUE(answers(point, automationPoint));
    EXPECT_TRUE(answers(point, curvePoint));
    EXPECT_FALSE(answers(point, automationTrack));

    // The kinds by name, as the adapter asks for them.
    EXPECT_TRUE(dx.isKind("track") && dx.isKind("audio"));
    EXPECT_FALSE(dx.isKind("marker") || dx.isKind("folder"));
    EXPECT_TRUE(notes.isKind("track") && notes.isKind("marker"));
    EXPECT_TRUE(picture.isKind("track") && picture.isKind("video"));
    EXPECT_TRUE(dx.children()[0]->isKind("audio"));
    EXPECT_FALSE(dx.children()[0]->isKind("track"));
    EXPECT_TRUE(notes.children()[1]->isKind("marker") && notes.children()[1]->isKind("range"));
    EXPECT_FALSE(notes.children()[0]->isKind("range"));
    EXPECT_FALSE(dx.isKind(nullptr));

    auto folder = owned(project->createTrack("folder"));
    EXPECT_TRUE(folder->isKind("track") && folder->isKind("folder"));
    EXPECT_EQ(owned(project->createTrack("timeline")), nullptr);

    // A video event gives its pool clip.
    auto clip = owned(picture.children()[0]->getClip());
    ASSERT_TRUE(clip);
    EXPECT_EQ(clip->getId(), 1);
    EXPECT_TRUE(clip->isKind("video"));
    String name;
    clip->getName(name);
    EXPECT_EQ(name.toUtf8(), "old.mov");
}

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

    EXPECT_EQ(project->setAttribute("Bad", FVariant(static_cast<FUnknown*>(static_cast<ITrack*>(&notes))), 1),
              kInvalidArgument)
        << "only stores can be kept as objects";
    EXPECT_EQ(notes.removeAttribute("Montala:MarkerType"), kResultOk);
    EXPECT_EQ(notes.removeAttribute("Montala:MarkerType"), kResultFalse);
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
        {"kind": "audio", "start": "01:00:02:00", "end": "01:00:05:00", "file": "c.wav", "offset": 1}]}]})");
    SimObject& dx = *project->findTrack(u"DX");
    EXPECT_DOUBLE_EQ(project->getProjectStart(), 3600.0);
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
}

} // namespace
} // namespace montala::sim::test
