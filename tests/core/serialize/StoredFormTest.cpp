#include "support/ModelFixture.h"
#include "support/StoredBytes.h"
#include "core/events/EventList.h"
#include "core/events/HealedEvent.h"
#include "core/serialize/SerializationTree.h"
#include "util/Result.h"
#include "util/StringConverter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

// Golden bytes of the stored classes. A stored block lives in users'
// projects for years: if one of these fails, the form has changed and old
// projects would no longer load. Add a new version instead of editing bytes.
namespace montala::core::serialize {
namespace {

using montala::test::storedBytes;
using montala::test::treeOf;

using montala::test::thrownCode;
using montala::test::tc;

using util::Result;
using Bytes = std::vector<uint8_t>;

Bytes concat(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

class StoredFormTest : public ::testing::Test {
protected:
    StoredFormTest() : providerScope(&provider), converterScope(converter) {}

    FixedFramerateProvider provider{Framerate(25, 0)};
    ScopedFramerateProvider providerScope;
    util::StringConverter converter;
    util::ScopedStringConverter converterScope;
};

// Event 3, roll "A", clip "C", SRC 01:00:00:00-01:00:01:00, DST
// 10:00:00:00-10:00:01:00, a 12-frame dissolve, from "x.edl", VFX.
const Bytes eventV2Body = {
    2, 0, 0, 0, 1, 0, 0, 0, 1,       // srcIn, Timecode version 2
    2, 0, 0, 0, 1, 0, 1, 0, 1,       // srcOut
    2, 0, 0, 0, 10, 0, 0, 0, 1,      // dstIn
    2, 0, 0, 0, 10, 0, 1, 0, 1,      // dstOut
    3, 0, 0, 0,                      // eventNumber
    1, 0, 0, 0, 'A',                 // rollName
    1, 0, 0, 0, 'C',                 // clipName
    0, 0, 0, 0,                      // no states
    1, 0, 0, 0,                      // dissolve
    12, 0, 0, 0,                     // its duration
    0, 0, 0, 0,                      // reservedText
    5, 0, 0, 0, 'x', '.', 'e', 'd', 'l',  // edlFile
    1,                               // vfx
};

EventPtr goldenEvent(int type)
{
    EventPtr event = EventBase::create(type);
    event->setTimecodes(tc("01:00:00:00"), tc("01:00:01:00"), tc("10:00:00:00"), tc("10:00:01:00"));
    event->setEventNumber(3);
    event->setRollName("A");
    event->setClipName("C");
    event->setTransitionType(EventBase::Dissolve);
    event->setTransitionDuration(12);
    event->setEdlFile("x.edl");
    event->setVfx(true);
    return event;
}

TEST(Checksum, IsTheStandardCrc32)
{
    SerializationTree tree;
    EXPECT_EQ(0u, tree.computeChecksum());
    tree.assign("123456789", 9);
    EXPECT_EQ(0xCBF43926u, tree.computeChecksum());
    tree.assign("\0", 1);
    EXPECT_EQ(0xD202EF8Du, tree.computeChecksum());
}

TEST_F(StoredFormTest, TimecodeReadsAllThreeVersions)
{
    EXPECT_EQ((Bytes{2, 0, 0, 0, 1, 2, 3, 4, 1}), storedBytes(tc("01:02:03:04")));
    EXPECT_EQ((Bytes{2, 0, 0, 0, 0, 0, 0, 0, 0}), storedBytes(Timecode()));

    Timecode read;
    SerializationTree current = treeOf({2, 0, 0, 0, 23, 59, 59, 24, 1});
    current.readObject(read);
    EXPECT_EQ(tc("23:59:59:24"), read);
    EXPECT_TRUE(read.isInitialized());

    // Version 1: four int32 and the flag.
    SerializationTree v1 = treeOf({1, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0, 0});
    v1.readObject(read);
    EXPECT_EQ(tc("01:02:03:04"), read);
    EXPECT_FALSE(read.isInitialized());
    // Version 0: four int32, always initialized.
    SerializationTree v0 = treeOf({0, 0, 0, 0, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5, 0, 0, 0});
    v0.readObject(read);
    EXPECT_EQ(tc("10:00:00:05"), read);
    EXPECT_TRUE(read.isInitialized());

    SerializationTree newer = treeOf({3, 0, 0, 0, 1, 2, 3, 4, 1});
    EXPECT_EQ(Result::NewerVersion, thrownCode([&] { newer.readObject(read); }));
    SerializationTree cut = treeOf({2, 0, 0, 0, 1, 2, 3, 4});
    EXPECT_EQ(Result::StreamExhausted, thrownCode([&] { cut.readObject(read); }));
}

TEST_F(StoredFormTest, TimecodeFieldsAbove255LoseTheirHighBits)
{
    // A deliberate limit of the byte form: nothing checks it.
    Timecode wide(1, 2, 3, 260);
    Timecode read;
    SerializationTree tree = treeOf(storedBytes(wide));
    tree.readObject(read);
    EXPECT_EQ(4, read.getFrames());
}

TEST_F(StoredFormTest, EventVersion2MatchesGoldenBytesAndReadsBack)
{
    EventPtr event = goldenEvent(EventBase::Plain);
    ASSERT_TRUE(event->isFlawless());
    const Bytes golden = concat({{2, 0, 0, 0}, eventV2Body});
    EXPECT_EQ(golden, storedBytes(*event));

    EventPtr read = EventBase::create(EventBase::Plain);
    SerializationTree tree = treeOf(golden);
    tree.readObject(*read);
    EXPECT_EQ(golden.size(), tree.getPosition());
    EXPECT_EQ(golden, storedBytes(*read));
    EXPECT_TRUE(read->isFlawless());
    EXPECT_EQ(1.0, read->getMotionSpeed());

    SerializationTree newer = treeOf(concat({{3, 0, 0, 0}, eventV2Body}));
    EXPECT_EQ(Result::NewerVersion, thrownCode([&] { newer.readObject(*read); }));
}

TEST_F(StoredFormTest, EventVersion1ReplacesStatesAndDropsTheEdlTextOnTheNextSave)
{
    const Bytes v1 = {
        1, 0, 0, 0,                      // EventBase version 1
        2, 0, 0, 0, 1, 0, 0, 0, 1,       // srcIn
        2, 0, 0, 0, 1, 0, 1, 0, 1,       // srcOut
        2, 0, 0, 0, 10, 0, 0, 0, 1,      // dstIn
        2, 0, 0, 0, 10, 0, 1, 0, 1,      // dstOut
        3, 0, 0, 0,                      // eventNumber
        1, 0, 0, 0, 'A',                 // rollName
        1, 0, 0, 0, 'C',                 // clipName
        2, 0, 0, 0, 3, 0, 0, 0, 11, 0, 0, 0,  // states: BadRollName, InvalidTimecode
        1, 0, 0, 0,                      // dissolve
        12, 0, 0, 0,                     // duration
        0, 0, 0, 0,                      // reservedText
        5, 0, 0, 0, 'x', '.', 'e', 'd', 'l',  // edlFile
        3, 0, 0, 0, 'o', 'l', 'd',       // edlText
        1,                               // vfx
    };
    EventPtr read = EventBase::create(EventBase::Plain);
    read->addState(EventState::NotVideoEvent);
    SerializationTree tree = treeOf(v1);
    tree.readObject(*read);
    EXPECT_EQ(v1.size(), tree.getPosition());
    EXPECT_EQ("old", read->getEdlText());
    // The stored states replace the event's; InvalidTimecode is worked out
    // anew from the timecodes, which are fine at 25 fps.
    EXPECT_EQ((std::set<EventState>{EventState::BadRollName}), read->getStates());
    EXPECT_TRUE(read->isVfx());

    // Written again as version 2: edlText is gone, the state stays.
    Bytes expected = concat({{2, 0, 0, 0}, eventV2Body});
    const Bytes noStates = {0, 0, 0, 0};
    const Bytes oneState = {1, 0, 0, 0, 3, 0, 0, 0};
    // Version, four timecodes, number, roll, clip: the state count follows.
    const long statesAt = 4 + 4 * 9 + 4 + 5 + 5;
    ASSERT_TRUE(std::equal(noStates.begin(), noStates.end(), expected.begin() + statesAt));
    expected.erase(expected.begin() + statesAt, expected.begin() + statesAt + 4);
    expected.insert(expected.begin() + statesAt, oneState.begin(), oneState.end());
    EXPECT_EQ(expected, storedBytes(*read));
}

TEST_F(StoredFormTest, EventVersion0AddsTheLegacyStateToWhatTheEventHeld)
{
    const Bytes v0 = {
        0, 0, 0, 0,                                                  // EventBase version 0
        0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  // srcIn, Timecode version 0
        0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0,  // srcOut
        0, 0, 0, 0, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, // dstIn
        0, 0, 0, 0, 10, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, // dstOut
        7, 0, 0, 0,                                                  // eventNumber
        2, 0, 0, 0, 'R', '1',                                        // rollName
        0, 0, 0, 0,                                                  // clipName
        1, 0, 0, 0,                                                  // legacy flag set
        0, 0, 0, 0,                                                  // cut
        0, 0, 0, 0,                                                  // duration
        0, 0, 0, 0,                                                  // reservedText
        0, 0, 0, 0,                                                  // edlFile
        2, 0, 0, 0, 'e', 't',                                        // edlText
        2, 0, 0, 0, 'l', 's',                                        // legacyStateText
        0,                                                           // vfx
    };
    EventPtr read = EventBase::create(EventBase::Plain);
    read->addState(EventState::BadRollName);
    SerializationTree tree = treeOf(v0);
    tree.readObject(*read);
    EXPECT_EQ(v0.size(), tree.getPosition());
    EXPECT_EQ(tc("01:00:01:00"), read->getSrcOut());
    EXPECT_EQ("R1", read->getRollName());
    EXPECT_EQ(7, read->getEventNumber());
    EXPECT_EQ((std::set<EventState>{EventState::LegacyState, EventState::BadRollName}), read->getStates());

    // Any legacy flag other than 0 or 1 is bad data.
    Bytes bad = v0;
    bad[4 + 80 + 4 + 6 + 4] = 2;
    SerializationTree badTree = treeOf(bad);
    EXPECT_EQ(Result::BadStoredData, thrownCode([&] { badTree.readObject(*read); }));
}

TEST_F(StoredFormTest, EventStatesFollowTheRateAtTheTimeOfReading)
{
    // Stored flawless with frame 27, which only exists above 25 fps.
    provider.setFramerate(Framerate(30, 0));
    EventPtr event = EventBase::create(EventBase::Plain);
    event->setTimecodes(tc("01:00:00:27"), tc("01:00:01:00"), tc("01:00:00:27"), tc("01:00:01:00"));
    ASSERT_TRUE(event->isFlawless());
    const Bytes block = storedBytes(*event);

    provider.setFramerate(Framerate(25, 0));
    EventPtr read = EventBase::create(EventBase::Plain);
    SerializationTree tree = treeOf(block);
    tree.readObject(*read);
    EXPECT_TRUE(read->hasState(EventState::InvalidTimecode));
}

TEST_F(StoredFormTest, HealedEventIsTheEventBodyFollowedByItsParts)
{
    auto healed = std::make_shared<HealedEvent>();
    healed->addHealedEvent(goldenEvent(EventBase::Plain));
    healed->setTimecodes(tc("01:00:00:00"), tc("01:00:01:00"), tc("10:00:00:00"), tc("10:00:01:00"));
    healed->setEventNumber(3);
    healed->setRollName("A");
    healed->setClipName("C");
    healed->setTransitionType(EventBase::Dissolve);
    healed->setTransitionDuration(12);
    healed->setEdlFile("x.edl");

    const Bytes golden = concat({{2, 0, 0, 0}, eventV2Body,  // the healed event itself
                                 {0, 0, 0, 0, 1, 0, 0, 0},   // its parts: EventList version 0, one event
                                 {0, 0, 0, 0, 2, 0, 0, 0},   // plain, EventBase version 2
                                 eventV2Body});
    EXPECT_EQ(golden, storedBytes(*healed));

    EventList list(EventList::ChangeKind);
    list.addEvent(healed);
    const Bytes listBlock = concat({{0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}, golden});
    EXPECT_EQ(listBlock, storedBytes(list));

    EventList read(EventList::NewKind);
    SerializationTree tree = treeOf(listBlock);
    tree.readObject(read);
    ASSERT_EQ(1u, read.getSize());
    auto* readHealed = dynamic_cast<HealedEvent*>(read.getEvent(0).get());
    ASSERT_NE(nullptr, readHealed);
    EXPECT_EQ(1u, readHealed->getHealedEvents().getSize());
    EXPECT_EQ(listBlock, storedBytes(read));
}

TEST_F(StoredFormTest, EventListRefusesUnknownEventTypesAndKeepsItsEvents)
{
    EventList list(EventList::OldKind);
    list.addEvent(goldenEvent(EventBase::Plain));
    const Bytes typeTwo = concat({{0, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0}, eventV2Body});
    SerializationTree tree = treeOf(typeTwo);
    EXPECT_EQ(Result::BadStoredData, thrownCode([&] { tree.readObject(list); }));
    EXPECT_EQ(1u, list.getSize());

    const Bytes empty = {0, 0, 0, 0, 0, 0, 0, 0};
    SerializationTree emptyTree = treeOf(empty);
    emptyTree.readObject(list);
    EXPECT_EQ(0u, list.getSize());
    EXPECT_EQ(EventList::OldKind, list.getListKind());

    // EventList has no older form.
    SerializationTree older = treeOf({0, 0, 0, 0});
    EXPECT_EQ(Result::NotSupported, thrownCode([&] { list.readOld(older, 0); }));
}

TEST_F(StoredFormTest, EventListReadsBackEachEventsOwnFileName)
{
    // Reading hands each event the name before it; a different one must
    // still win, and so must none.
    EventList list(EventList::OldKind);
    for (const char* file : {"reel1.edl", "reel1.edl", "", "reel2.edl", "reel1.edl"}) {
        auto event = std::make_shared<EventBase>();
        event->setEdlFile(file);
        list.addEvent(event);
    }
    EventList read(EventList::OldKind);
    SerializationTree tree = treeOf(storedBytes(list));
    tree.readObject(read);
    std::vector<std::string> files;
    for (const EventPtr& event : read.getEvents())
        files.push_back(event->getEdlFile());
    EXPECT_EQ(files, (std::vector<std::string>{"reel1.edl", "reel1.edl", "", "reel2.edl", "reel1.edl"}));
}

TEST_F(StoredFormTest, BlocksCutAnywhereAreExhaustedNeverMisread)
{
    auto healed = std::make_shared<HealedEvent>();
    healed->addHealedEvent(goldenEvent(EventBase::Plain));
    healed->addHealedEvent(goldenEvent(EventBase::Plain));
    EventList list(EventList::ChangeKind);
    list.addEvent(healed);
    list.addEvent(goldenEvent(EventBase::Plain));
    const Bytes whole = storedBytes(list);
    for (size_t length = 0; length < whole.size(); ++length) {
        EventList read(EventList::ChangeKind);
        SerializationTree tree = treeOf(Bytes(whole.begin(), whole.begin() + static_cast<long>(length)));
        EXPECT_EQ(Result::StreamExhausted, thrownCode([&] { tree.readObject(read); })) << "cut at " << length;
    }
}

TEST_F(StoredFormTest, DeeplyNestedHealedEventsAreBadDataNotAStackOverflow)
{
    // A list holding a healed event whose only part is a healed event, and
    // so on, depth levels down to an empty list.
    auto nested = [](int depth) {
        Bytes block = {0, 0, 0, 0, 0, 0, 0, 0};
        for (int level = 0; level < depth; ++level)
            block = concat({{0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0}, eventV2Body, block});
        return block;
    };
    EventList read(EventList::ChangeKind);
    SerializationTree shallow = treeOf(nested(3));
    shallow.readObject(read);
    EXPECT_EQ(shallow.getSize(), shallow.getPosition());
    EXPECT_EQ(1u, read.getSize());
    SerializationTree deep = treeOf(nested(5000));
    EXPECT_EQ(Result::BadStoredData, thrownCode([&] { deep.readObject(read); }));
    // The bound is per read: a good block still loads afterwards.
    shallow.rewind();
    EXPECT_EQ(Result::Ok, thrownCode([&] { shallow.readObject(read); }));
}

} // namespace
} // namespace montala::core::serialize
