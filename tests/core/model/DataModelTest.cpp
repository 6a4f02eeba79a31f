#include "support/ModelFixture.h"
#include "support/StoredBytes.h"
#include "core/model/DataModel.h"
#include "core/model/DataModelChangeScope.h"
#include "core/model/DataModelCommandCreator.h"
#include "core/events/HealedEvent.h"
#include "core/model/PropertyKeys.h"
#include "core/serialize/SerializationTree.h"
#include "util/Result.h"
#include "util/StringConverter.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace montala::core {
namespace {

using montala::test::storedBytes;
using montala::test::treeOf;

using montala::test::thrownCode;
using montala::test::tc;
using montala::test::makeEvent;

using serialize::SerializationTree;
using util::Result;
using Bytes = std::vector<uint8_t>;

// Stands in for the window: records what the model reports.
class RecordingNotifier : public ChangeContextNotificationBase {
public:
    void notify(const ChangeContext& context) override { kinds.push_back(context.kind); }
    size_t count(int kind) const { return static_cast<size_t>(std::count(kinds.begin(), kinds.end(), kind)); }
    std::vector<int> kinds;
};

bool isEmpty(const DataModel& model)
{
    return model.getOldList().getSize() == 0 && model.getNewList().getSize() == 0 &&
           model.getChangeList().getSize() == 0 && model.getProperties().empty() &&
           model.getVideoList().getSize() == 0 && model.getSettings().getMatchName() == MatchName::RollName;
}

class DataModelTest : public ::testing::Test {
protected:
    DataModelTest() : providerScope(&provider), converterScope(converter) {}

    // Old: A and B back to back. New: B moved in front of A, with a hole.
    void loadCut(DataModel& target)
    {
        target.getOldList().addEvent(makeEvent("A", "01:00:00:00", "01:00:10:00", "10:00:00:00", "10:00:10:00"));
        target.getOldList().addEvent(makeEvent("B", "02:00:00:00", "02:00:05:00", "10:00:10:00", "10:00:15:00"));
        target.getNewList().addEvent(makeEvent("B", "02:00:00:00", "02:00:05:00", "10:00:00:00", "10:00:05:00"));
        target.getNewList().addEvent(makeEvent("A", "01:00:02:00", "01:00:08:00", "10:00:05:00", "10:00:11:00"));
    }

    // Everything the model stores, none of it at its default.
    void fillModel(DataModel& target)
    {
        loadCut(target);
        auto healed = std::make_shared<HealedEvent>();
        healed->addHealedEvent(makeEvent("X", "10:00:00:00", "10:00:02:00", "11:00:00:00", "11:00:02:00"));
        healed->addHealedEvent(makeEvent("Y", "10:00:02:00", "10:00:03:00", "11:00:02:00", "11:00:03:00"));
        healed->setRollName("Healed Event 001");
        target.getChangeList().addEvent(healed);
        EventPtr flawed = makeEvent("Z", "10:00:05:00", "10:00:04:00", "11:00:05:00", "11:00:06:00");
        flawed->addState(EventState::BadRollName);
        target.getChangeList().addEvent(flawed);
        target.setProperty(PropertyKey::LastFolder, Variant("/media/edl"));
        target.setProperty(PropertyKey::ConformOffset, Variant(7200.04));
        target.setProperty(PropertyKey::ChangeSortColumn, Variant(3));
        target.setProperty(-5, Variant());
        target.setPreviewActive(true);
        target.getSettings().setMatchName(MatchName::ClipName);
        target.getSettings().setHealProcessing(HealProcessingMode::GapsWithInserts);
        target.getSettings().setVfxPattern(VfxPatternEntry("VFX_", "_v", true), 1);
        target.getVideoList().addEntry({"/pic/reel1.mov", tc("10:00:00:00"), tc("00:20:00:00")});
        target.getVideoList().addEntry({"/pic/reel2.mov", tc("10:20:00:00"), tc("00:18:00:00")});
    }

    FixedFramerateProvider provider{Framerate(25, 0)};
    ScopedFramerateProvider providerScope;
    util::StringConverter converter;
    util::ScopedStringConverter converterScope;
    RecordingNotifier notifier;
    DataModel model;
};

TEST_F(DataModelTest, FullModelSurvivesAStoredRoundTrip)
{
    fillModel(model);
    const Bytes block = storedBytes(model);

    DataModel read;
    read.setNotifier(&notifier);
    SerializationTree tree = treeOf(block);
    tree.readObject(read);
    EXPECT_EQ(block.size(), tree.getPosition());
    EXPECT_EQ(block, storedBytes(read));

    ASSERT_EQ(2u, read.getOldList().getSize());
    EXPECT_EQ(tc("02:00:05:00"), read.getOldList().getEvent(1)->getSrcOut());
    ASSERT_EQ(2u, read.getChangeList().getSize());
    const auto* healed = dynamic_cast<const HealedEvent*>(read.getChangeList().getEvent(0).get());
    ASSERT_NE(nullptr, healed);
    EXPECT_EQ(2u, healed->getHealedEvents().getSize());
    EXPECT_EQ(tc("11:00:03:00"), healed->getDstOut());
    EXPECT_TRUE(read.getChangeList().getEvent(1)->hasState(EventState::BadRollName));
    Variant offset;
    ASSERT_EQ(Result::Ok, read.getProperty(PropertyKey::ConformOffset, offset));
    EXPECT_EQ(7200.04, offset.asDouble());
    EXPECT_TRUE(read.isPreviewActive());
    EXPECT_TRUE(read.hasProperty(-5));
    EXPECT_EQ(MatchName::ClipName, read.getSettings().getMatchName());
    EXPECT_EQ("VFX_", read.getSettings().getVfxPattern(1).prefix);
    EXPECT_EQ(2u, read.getVideoList().getSize());
    // One report for the whole model, none for its parts.
    EXPECT_EQ(std::vector<int>{ChangeContext::DataModelKind}, notifier.kinds);

    // The model listens to its parts again after reading.
    notifier.kinds.clear();
    read.getOldList().getEvent(0)->setRollName("A2");
    EXPECT_EQ(std::vector<int>{ChangeContext::EventListKind}, notifier.kinds);
}

TEST_F(DataModelTest, EmptyModelBlockStartsWithTheVersions)
{
    const Bytes block = storedBytes(model);
    // Model version 1, then the three lists (version 0, no events), no values.
    const Bytes start = {1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                         0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    ASSERT_GT(block.size(), start.size());
    EXPECT_EQ(start, Bytes(block.begin(), block.begin() + static_cast<long>(start.size())));
    // The video list closes the block: version 0, no entries.
    EXPECT_EQ(Bytes(8, 0), Bytes(block.end() - 8, block.end()));
}

TEST_F(DataModelTest, Version0BlockHasNoVideosAndLeavesTheListEmpty)
{
    DataModel source;
    fillModel(source);
    source.getVideoList().clear();
    Bytes block = storedBytes(source);
    // Version 0: the same without the video list at the end.
    block[0] = 0;
    block.resize(block.size() - 8);

    model.getVideoList().addEntry({"stale.mov", tc("10:00:00:00"), tc("00:01:00:00")});
    SerializationTree tree = treeOf(block);
    tree.readObject(model);
    EXPECT_EQ(block.size(), tree.getPosition());
    EXPECT_EQ(0u, model.getVideoList().getSize());
    EXPECT_EQ(2u, model.getNewList().getSize());

    // Whatever fails inside a version 0 block is reported as an unknown version.
    Bytes cut(block.begin(), block.begin() + 40);
    SerializationTree cutTree = treeOf(cut);
    EXPECT_EQ(Result::UnknownVersion, thrownCode([&] { cutTree.readObject(model); }));
    EXPECT_TRUE(isEmpty(model));
}

TEST_F(DataModelTest, NewerOrUnknownVersionsLeaveTheModelUntouched)
{
    fillModel(model);
    Bytes block = storedBytes(model);
    block[0] = 2;
    SerializationTree tree = treeOf(block);
    EXPECT_EQ(Result::NewerVersion, thrownCode([&] { tree.readObject(model); }));
    EXPECT_EQ(2u, model.getOldList().getSize());
    tree.rewind();
    EXPECT_EQ(Result::UnknownVersion, thrownCode([&] { model.readOld(tree, 7); }));
    EXPECT_EQ(2u, model.getVideoList().getSize());
}

TEST_F(DataModelTest, BlockCutAtAnyPositionLeavesAnEmptyModel)
{
    DataModel source;
    fillModel(source);
    const Bytes block = storedBytes(source);
    model.setNotifier(&notifier);
    // Cut inside the leading version the block never reaches the model.
    for (size_t length = 1; length < 4; ++length) {
        fillModel(model);
        SerializationTree tree = treeOf(Bytes(block.begin(), block.begin() + static_cast<long>(length)));
        ASSERT_EQ(Result::StreamExhausted, thrownCode([&] { tree.readObject(model); }));
        ASSERT_EQ(2u, model.getOldList().getSize());
        model.clearAll();
    }
    for (size_t length = 4; length < block.size(); ++length) {
        fillModel(model);
        notifier.kinds.clear();
        SerializationTree tree = treeOf(Bytes(block.begin(), block.begin() + static_cast<long>(length)));
        ASSERT_EQ(Result::StreamExhausted, thrownCode([&] { tree.readObject(model); })) << "cut at " << length;
        ASSERT_TRUE(isEmpty(model)) << "cut at " << length;
        // Told once, and listening again.
        ASSERT_EQ(std::vector<int>{ChangeContext::DataModelKind}, notifier.kinds) << "cut at " << length;
        model.getOldList().addEvent(makeEvent("A", "01:00:00:00", "01:00:01:00", "01:00:00:00", "01:00:01:00"));
        ASSERT_EQ(ChangeContext::EventListKind, notifier.kinds.back());
        model.clearAll();
    }
}

TEST_F(DataModelTest, DamagedBlocksEndInACodeWithTheModelEmptyOrWhole)
{
    DataModel source;
    fillModel(source);
    const Bytes block = storedBytes(source);
    std::mt19937 random(20240611);
    std::uniform_int_distribution<size_t> position(0, block.size() - 1);
    std::uniform_int_distribution<int> byte(0, 255);
    std::uniform_int_distribution<int> flips(1, 4);
    int failures = 0;
    for (int round = 0; round < 1500; ++round) {
        Bytes damaged = block;
        for (int flip = flips(random); flip > 0; --flip)
            damaged[position(random)] = static_cast<uint8_t>(byte(random));
        DataModel read;
        SerializationTree tree = treeOf(damaged);
        const Result::Type code = thrownCode([&] { tree.readObject(read); });
        if (code != Result::Ok) {
            ++failures;
            ASSERT_TRUE(isEmpty(read)) << "round " << round << " code " << code;
        } else {
            // Read whole: it stores again without loss of what it read.
            SerializationTree again = treeOf(storedBytes(read));
            DataModel copy;
            again.readObject(copy);
            ASSERT_EQ(storedBytes(read), storedBytes(copy)) << "round " << round;
        }
    }
    // Most damage is noticed; the test would be idle otherwise.
    EXPECT_GT(failures, 100);
}

TEST_F(DataModelTest, RestoringAnUndoStepKeepsTheSettingsOfTheMoment)
{
    fillModel(model);
    SerializationTree snapshot = treeOf(storedBytes(model));
    model.clearAll();
    model.getSettings().setHealProcessing(HealProcessingMode::None);
    model.setNotifier(&notifier);

    model.restoreKeepingSettings(snapshot);
    EXPECT_EQ(2u, model.getOldList().getSize());
    EXPECT_EQ(2u, model.getVideoList().getSize());
    EXPECT_EQ(HealProcessingMode::None, model.getSettings().getHealProcessing());
    EXPECT_EQ(MatchName::RollName, model.getSettings().getMatchName());
    EXPECT_EQ(std::vector<int>{ChangeContext::DataModelKind}, notifier.kinds);

    // A failed restore still reports once and keeps the settings.
    notifier.kinds.clear();
    SerializationTree broken = treeOf({1, 0, 0, 0, 0, 0});
    EXPECT_EQ(Result::StreamExhausted, thrownCode([&] { model.restoreKeepingSettings(broken); }));
    EXPECT_EQ(0u, model.getOldList().getSize());
    EXPECT_EQ(HealProcessingMode::None, model.getSettings().getHealProcessing());
    EXPECT_EQ(std::vector<int>{ChangeContext::DataModelKind}, notifier.kinds);
}

TEST_F(DataModelTest, GeneratesTheChangeEdlAndReportsOnce)
{
    loadCut(model);
    model.getSettings().setHealProcessing(HealProcessingMode::None);
    // Without a notifier it runs and tells nobody.
    ASSERT_EQ(Result::Ok, model.generateChangeEdl());
    ASSERT_EQ(2u, model.getChangeList().getSize());

    model.setNotifier(&notifier);
    ASSERT_EQ(Result::Ok, model.generateChangeEdl());
    EXPECT_EQ(std::vector<int>{ChangeContext::EventListKind}, notifier.kinds);
    // B moved from 10:00:10:00 to the start; the middle of A follows it.
    const EventList& change = model.getChangeList();
    ASSERT_EQ(2u, change.getSize());
    EXPECT_EQ(tc("10:00:10:00"), change.getEvent(0)->getSrcIn());
    EXPECT_EQ(tc("10:00:00:00"), change.getEvent(0)->getDstIn());
    EXPECT_EQ(tc("10:00:05:00"), change.getEvent(0)->getDstOut());
    EXPECT_EQ(tc("10:00:02:00"), change.getEvent(1)->getSrcIn());
    EXPECT_EQ(tc("10:00:08:00"), change.getEvent(1)->getSrcOut());
    EXPECT_EQ(tc("10:00:05:00"), change.getEvent(1)->getDstIn());
    // The inputs are never touched.
    EXPECT_EQ(2u, model.getOldList().getSize());
    EXPECT_EQ(tc("10:00:10:00"), model.getOldList().getEvent(1)->getDstIn());
}

TEST_F(DataModelTest, FailedGenerationEmptiesTheChangeListAndReturnsTheCode)
{
    loadCut(model);
    ASSERT_EQ(Result::Ok, model.generateChangeEdl());
    ASSERT_FALSE(model.getChangeList().getSize() == 0);
    model.setNotifier(&notifier);
    // "#" is not allowed in a VFX pattern.
    model.getSettings().setVfxPattern(VfxPatternEntry("SH#", "", true), 0);
    EXPECT_EQ(Result::InvalidArgument, model.generateChangeEdl());
    EXPECT_EQ(0u, model.getChangeList().getSize());
    EXPECT_EQ(std::vector<int>{ChangeContext::EventListKind}, notifier.kinds);
    // An inactive row does not take part.
    model.getSettings().setVfxPattern(VfxPatternEntry("SH#", "", false), 0);
    EXPECT_EQ(Result::Ok, model.generateChangeEdl());
    EXPECT_EQ(2u, model.getChangeList().getSize());
}

TEST_F(DataModelTest, FindsTheEventsAChangeEventCameFrom)
{
    loadCut(model);
    model.getSettings().setHealProcessing(HealProcessingMode::None);
    ASSERT_EQ(Result::Ok, model.generateChangeEdl());
    const EventPtr& movedB = model.getChangeList().getEvent(0);
    // SRC 10:00:10:00-10:00:15:00 lies inside Old B alone.
    EventList old = model.findOldEvents(movedB);
    ASSERT_EQ(1u, old.getSize());
    EXPECT_EQ(model.getOldList().getEvent(1), old.getEvent(0));
    EventList found = model.findNewEvents(movedB);
    ASSERT_EQ(1u, found.getSize());
    EXPECT_EQ(model.getNewList().getEvent(0), found.getEvent(0));

    // A range that only touches New A at its edge finds B alone.
    EventPtr touching = makeEvent("T", "10:00:00:00", "10:00:05:00", "10:00:00:00", "10:00:05:00");
    model.getChangeList().addEvent(touching);
    EXPECT_EQ(1u, model.findNewEvents(touching).getSize());
    EventPtr spanning = makeEvent("S", "10:00:00:00", "10:00:05:00", "10:00:04:00", "10:00:06:00");
    model.getChangeList().addEvent(spanning);
    EXPECT_EQ(2u, model.findNewEvents(spanning).getSize());

    // Zero length, not in the Change list, or a bad timecode: nothing.
    EventPtr empty = makeEvent("E", "10:00:00:00", "10:00:00:00", "10:00:01:00", "10:00:01:00");
    model.getChangeList().addEvent(empty);
    EXPECT_EQ(0u, model.findNewEvents(empty).getSize());
    EXPECT_EQ(0u, model.findOldEvents(model.getNewList().getEvent(0)).getSize());
    EventPtr invalid = makeEvent("I", "10:00:00:30", "10:00:02:00", "10:00:00:00", "10:00:02:00");
    model.getChangeList().addEvent(invalid);
    EXPECT_EQ(0u, model.findOldEvents(invalid).getSize());
}

TEST_F(DataModelTest, RevalidatesEveryListAtANewRateWithOneReport)
{
    loadCut(model);
    model.getChangeList().addEvent(makeEvent("C", "10:00:00:27", "10:00:01:00", "10:00:00:27", "10:00:01:00"));
    ASSERT_TRUE(model.getChangeList().getEvent(0)->hasState(EventState::InvalidTimecode));
    model.setNotifier(&notifier);
    provider.setFramerate(Framerate(30, 0));
    model.revalidateAll();
    EXPECT_TRUE(model.getChangeList().getEvent(0)->isFlawless());
    EXPECT_EQ(std::vector<int>{ChangeContext::DataModelKind}, notifier.kinds);
}

// A host stand-in that records which steps were opened and closed.
class RecordingCreator : public DataModelCommandCreator {
public:
    class Command : public DataModelChangeCommand {
    public:
        Command(std::string title, std::vector<std::string>& log) : DataModelChangeCommand(std::move(title)), log(log)
        {
            log.push_back("open " + getTitle());
        }
        ~Command() override { log.push_back("close " + getTitle()); }

    private:
        std::vector<std::string>& log;
    };

    std::unique_ptr<DataModelChangeCommand> createCommand(const std::string& title) override
    {
        return std::make_unique<Command>(title, log);
    }
    std::unique_ptr<DataModelChangeCommand> createCommand(Kelmar::IProjectEdit*) override { return nullptr; }
    std::unique_ptr<DataModelChangeCommand> createCommand(Kelmar::IProjectEdit*, const SerializationTree&) override
    {
        return nullptr;
    }

    std::vector<std::string> log;
};

TEST(DataModelChangeScopes, OpenAStepForTheScopeAndWorkWithoutACreator)
{
    ASSERT_EQ(nullptr, DataModelCommandCreator::getCommandCreator());
    {
        DataModelChangeScope scope("Clear");
        EXPECT_FALSE(scope.isRecording());
    }
    touchDataModel("Edit Event");

    RecordingCreator creator;
    DataModelCommandCreator::setCommandCreator(&creator);
    {
        DataModelChangeScope scope("Generate");
        EXPECT_TRUE(scope.isRecording());
        creator.log.push_back("change");
    }
    touchDataModel("Heal");
    DataModelCommandCreator::setCommandCreator(nullptr);
    EXPECT_EQ((std::vector<std::string>{"open Generate", "change", "close Generate", "open Heal", "close Heal"}),
              creator.log);
}

} // namespace
} // namespace montala::core
