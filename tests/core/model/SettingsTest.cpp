#include "support/ModelFixture.h"
#include "../ChangeRecorder.h"
#include "core/model/Settings.h"
#include "core/serialize/SerializationTree.h"
#include "util/Result.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace montala::core {
namespace {

using serialize::SerializationTree;
using util::Result;
using Bytes = std::vector<uint8_t>;

class SettingsTest : public ::testing::Test {
protected:
    SettingsTest() { settings.addListener(&listener); }
    ~SettingsTest() override { settings.removeListener(&listener); }

    // Reads a hand-written block (version first) into the settings.
    void readBlock(const Bytes& block)
    {
        SerializationTree tree;
        tree.assign(block.data(), block.size());
        tree.readObject(settings);
        EXPECT_EQ(tree.getPosition(), block.size()) << "the form left bytes unread";
    }

    Settings settings;
    test::ChangeRecorder listener;
};

// The three rows of the VFX rule as bare stored bodies and as objects.
const Bytes shRowBody = {3, 0, 0, 0, 'S', 'H', '_', 5, 0, 0, 0, '_', 'c', 'o', 'm', 'p', 1};
const Bytes emptyRowBody = {0, 0, 0, 0, 0, 0, 0, 0, 0};
const Bytes vfxRowBody = {4, 0, 0, 0, 'V', 'F', 'X', '.', 0, 0, 0, 0, 0};

Bytes object(const Bytes& body)
{
    Bytes out = {0, 0, 0, 0};
    out.insert(out.end(), body.begin(), body.end());
    return out;
}

Bytes join(std::initializer_list<Bytes> parts)
{
    Bytes out;
    for (const Bytes& part : parts)
        out.insert(out.end(), part.begin(), part.end());
    return out;
}

// Leading fields that versions 1 to 4 share: ClipName, GapsWithInserts,
// SelectedTracks, then the six marker flags off/on alternately.
const Bytes sharedHead = {1, 0, 0, 0, 3, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 1};
// overhangPercentRule off, 25.0 %, includeOverhanging on, 7 frames.
const Bytes overhangFields = {0, 0, 0, 0, 0, 0, 0, 0x39, 0x40, 1, 7, 0, 0, 0};

void expectSharedHead(const Settings& s)
{
    EXPECT_EQ(s.getMatchName(), MatchName::ClipName);
    EXPECT_EQ(s.getHealProcessing(), HealProcessingMode::GapsWithInserts);
    EXPECT_EQ(s.getApplyTo(), ApplyTo::SelectedTracks);
    EXPECT_FALSE(s.getCreateDestinationMarkers());
    EXPECT_TRUE(s.getCreateTransitionMarkers());
    EXPECT_FALSE(s.getCreateInsertMarkers());
    EXPECT_TRUE(s.getCreateSnippetMarkers());
    EXPECT_FALSE(s.getCreateAutomationWarningMarkers());
    EXPECT_TRUE(s.getCreateOverlapMarkers());
    EXPECT_FALSE(s.getOverhangPercentRule());
    EXPECT_DOUBLE_EQ(s.getOverhangPercent(), 25.0);
    EXPECT_TRUE(s.getIncludeOverhanging());
    EXPECT_EQ(s.getOverhangFrames(), 7u);
}

TEST_F(SettingsTest, NewProjectStartsFromTheDefaultsWithThreeEmptyVfxRows)
{
    EXPECT_EQ(settings.getVersion(), 4u);
    EXPECT_EQ(settings.getMatchName(), MatchName::RollName);
    EXPECT_EQ(settings.getHealProcessing(), HealProcessingMode::Normal);
    EXPECT_EQ(settings.getApplyTo(), ApplyTo::AllTracks);
    EXPECT_TRUE(settings.getCreateDestinationMarkers());
    EXPECT_TRUE(settings.getCreateOverlapMarkers());
    EXPECT_EQ(settings.getSnippetMarkerFrames(), 5u);
    ASSERT_EQ(settings.getVfxPatterns().size(), 3u);
    for (const VfxPatternEntry& entry : settings.getVfxPatterns())
        EXPECT_EQ(entry, VfxPatternEntry());
    EXPECT_TRUE(settings.getOverhangPercentRule());
    EXPECT_DOUBLE_EQ(settings.getOverhangPercent(), 50.0);
    EXPECT_FALSE(settings.getIncludeOverhanging());
    EXPECT_EQ(settings.getOverhangFrames(), 5u);
    EXPECT_TRUE(settings.getBRollRenaming());
    EXPECT_FALSE(settings.getCreateVirginTerritories());
    EXPECT_FALSE(settings.getRestrictRange());
    EXPECT_EQ(settings.getRestrictedRange(), std::make_pair(0.0, 0.0));
}

TEST_F(SettingsTest, RunOnlyOptionsAndVfxRowsAreStoredSilently)
{
    settings.setIncludeOverhanging(true);
    settings.setCreateVirginTerritories(true);
    settings.setOverhangFrames(12);
    settings.setVfxPattern(VfxPatternEntry("SH_", "", true), 2);
    EXPECT_EQ(listener.count(), 0);
    EXPECT_TRUE(settings.getIncludeOverhanging());
    EXPECT_TRUE(settings.getCreateVirginTerritories());
    EXPECT_EQ(settings.getOverhangFrames(), 12u);
    EXPECT_EQ(settings.getVfxPattern(2).prefix, "SH_");
}

TEST_F(SettingsTest, RestrictRangeNotifiesOnAChangeAndABackwardRangeIsRefusedButStillTold)
{
    settings.setRestrictRange(true);
    settings.setRestrictRange(true);
    EXPECT_EQ(listener.count(), 1);
    settings.setRestrictRange(false);
    EXPECT_EQ(listener.count(), 2);

    settings.setRestrictedRange(3.0, 8.0);
    EXPECT_EQ(settings.getRestrictedRange(), std::make_pair(3.0, 8.0));
    settings.setRestrictedRange(10.0, 5.0);
    EXPECT_EQ(settings.getRestrictedRange(), std::make_pair(3.0, 8.0));
    EXPECT_EQ(listener.count(), 4);
    settings.setRestrictedRange(-4.0, -4.0);
    EXPECT_EQ(settings.getRestrictedRange(), std::make_pair(-4.0, -4.0));
}

TEST_F(SettingsTest, VfxRowIndexPastTheThirdIsInvalid)
{
    EXPECT_NO_THROW(settings.getVfxPattern(2));
    EXPECT_EQ(test::thrownCode([&] { settings.getVfxPattern(3); }), Result::InvalidArgument);
    EXPECT_EQ(test::thrownCode([&] { settings.setVfxPattern(VfxPatternEntry("A", "B", true), 3); }),
              Result::InvalidArgument);
}

TEST_F(SettingsTest, ResetKeepsTheTypedVfxRowsAndSilentlyRestoresTheRest)
{
    // Deliberate: a cleared model keeps the user's VFX rows.
    settings.setVfxPattern(VfxPatternEntry("SH_", "_v", true), 0);
    settings.setIncludeOverhanging(true);
    settings.setMatchName(MatchName::ClipName);
    settings.setRestrictRange(true);
    settings.setRestrictedRange(1.0, 2.0);
    const int before = listener.count();

    settings.reset();

    EXPECT_EQ(listener.count(), before);
    EXPECT_EQ(settings.getVfxPattern(0), VfxPatternEntry("SH_", "_v", true));
    EXPECT_EQ(settings.getVfxPatterns().size(), 3u);
    EXPECT_FALSE(settings.getIncludeOverhanging());
    EXPECT_EQ(settings.getMatchName(), MatchName::RollName);
    EXPECT_FALSE(settings.getRestrictRange());
    EXPECT_EQ(settings.getRestrictedRange(), std::make_pair(0.0, 0.0));
}

TEST_F(SettingsTest, CopiesTakeTheValuesButNotTheListeners)
{
    settings.setVfxPattern(VfxPatternEntry("SH_", "", true), 1);
    settings.setOverhangFrames(9);
    settings.setMatchName(MatchName::ClipName);
    const int before = listener.count();

    Settings copy(settings);
    EXPECT_EQ(copy.getListenerCount(), 0u);
    EXPECT_EQ(copy.getOverhangFrames(), 9u);
    EXPECT_EQ(copy.getVfxPattern(1).prefix, "SH_");

    Settings other;
    other.setOverhangFrames(1);
    settings = other;
    EXPECT_EQ(settings.getListenerCount(), 1u);
    EXPECT_EQ(settings.getOverhangFrames(), 1u);
    EXPECT_EQ(settings.getMatchName(), MatchName::RollName);
    EXPECT_EQ(listener.count(), before) << "assignment must not notify";
}

// A hand-written block of the current form with every field away from its
// default, so that a swapped or missing field shows.
const Bytes currentBlock = join({
    {4, 0, 0, 0},                                      // version 4
    sharedHead,                                        // enumerations, six flags
    {3, 0, 0, 0},                                      // three rows follow
    object(shRowBody), object(emptyRowBody), object(vfxRowBody),
    overhangFields,                                    // rule, percent, include, frames
    {0},                                               // bRollRenaming off
    {3, 0, 0, 0},                                      // snippetMarkerFrames 3
    {1},                                               // createVirginTerritories on
    {1},                                               // restrictRange on
    {0, 0, 0, 0, 0, 0, 0, 0xC0},                       // preserveBefore -2.0
    {0, 0, 0, 0, 0, 0x80, 0x56, 0x40},                 // preserveAfter 90.0
});

TEST_F(SettingsTest, WritesTheCurrentFormByteForByte)
{
    settings.setMatchName(MatchName::ClipName);
    settings.setHealProcessing(HealProcessingMode::GapsWithInserts);
    settings.setApplyTo(ApplyTo::SelectedTracks);
    settings.setCreateDestinationMarkers(false);
    settings.setCreateInsertMarkers(false);
    settings.setCreateAutomationWarningMarkers(false);
    settings.setVfxPattern(VfxPatternEntry("SH_", "_comp", true), 0);
    settings.setVfxPattern(VfxPatternEntry("VFX.", "", false), 2);
    settings.setOverhangPercentRule(false);
    settings.setOverhangPercent(25.0);
    settings.setIncludeOverhanging(true);
    settings.setOverhangFrames(7);
    settings.setBRollRenaming(false);
    settings.setSnippetMarkerFrames(3);
    settings.setCreateVirginTerritories(true);
    settings.setRestrictRange(true);
    settings.setRestrictedRange(-2.0, 90.0);

    SerializationTree tree;
    tree.writeObject(settings);
    EXPECT_EQ(tree.getBytes(), currentBlock);
}

TEST_F(SettingsTest, ReadsTheCurrentFormAndNotifiesOnce)
{
    readBlock(currentBlock);
    expectSharedHead(settings);
    EXPECT_EQ(settings.getVfxPattern(0), VfxPatternEntry("SH_", "_comp", true));
    EXPECT_EQ(settings.getVfxPattern(1), VfxPatternEntry());
    EXPECT_EQ(settings.getVfxPattern(2), VfxPatternEntry("VFX.", "", false));
    EXPECT_FALSE(settings.getBRollRenaming());
    EXPECT_EQ(settings.getSnippetMarkerFrames(), 3u);
    EXPECT_TRUE(settings.getCreateVirginTerritories());
    EXPECT_TRUE(settings.getRestrictRange());
    EXPECT_EQ(settings.getRestrictedRange(), std::make_pair(-2.0, 90.0));
    EXPECT_EQ(listener.count(), 1);

    SerializationTree again;
    again.writeObject(settings);
    EXPECT_EQ(again.getBytes(), currentBlock);
}

TEST_F(SettingsTest, StoredEnumerationsOutOfRangeFallBackAsTheUserExpects)
{
    Bytes block = currentBlock;
    block[4] = 7;   // matchName 7: any non-zero is ClipName
    block[8] = 4;   // healProcessing 4: kept, heals nothing
    block[12] = 2;  // applyTo 2: all tracks
    readBlock(block);
    EXPECT_EQ(settings.getMatchName(), MatchName::ClipName);
    EXPECT_EQ(static_cast<int>(settings.getHealProcessing()), 4);
    EXPECT_EQ(settings.getApplyTo(), ApplyTo::AllTracks);

    block[8] = 9;   // healProcessing 9: None
    readBlock(block);
    EXPECT_EQ(settings.getHealProcessing(), HealProcessingMode::None);

    // A stored 4 is written back as 4.
    SerializationTree tree;
    block[8] = 4;
    readBlock(block);
    tree.writeObject(settings);
    EXPECT_EQ(tree.getBytes()[8], 4);
}

TEST_F(SettingsTest, ReadsVersion0WithBareRowsAndKeepsWhatItLacks)
{
    settings.setApplyTo(ApplyTo::SelectedTracks);
    settings.setCreateOverlapMarkers(false);
    settings.setBRollRenaming(false);
    settings.setRestrictRange(true);
    settings.setRestrictedRange(1.0, 2.0);
    listener.kinds.clear();

    readBlock(join({
        {0, 0, 0, 0},                   // version 0
        {1, 0, 0, 0, 3, 0, 0, 0},       // ClipName, GapsWithInserts; no applyTo
        {0, 1, 0},                      // three marker flags only
        shRowBody, emptyRowBody, vfxRowBody, // no count, no row versions
        overhangFields,                 // the list ends here
    }));

    EXPECT_EQ(settings.getMatchName(), MatchName::ClipName);
    EXPECT_EQ(settings.getHealProcessing(), HealProcessingMode::GapsWithInserts);
    EXPECT_FALSE(settings.getCreateDestinationMarkers());
    EXPECT_TRUE(settings.getCreateTransitionMarkers());
    EXPECT_FALSE(settings.getCreateInsertMarkers());
    EXPECT_EQ(settings.getVfxPattern(0), VfxPatternEntry("SH_", "_comp", true));
    EXPECT_EQ(settings.getVfxPattern(2), VfxPatternEntry("VFX.", "", false));
    EXPECT_EQ(settings.getOverhangFrames(), 7u);
    // Held values survive.
    EXPECT_EQ(settings.getApplyTo(), ApplyTo::SelectedTracks);
    EXPECT_FALSE(settings.getCreateOverlapMarkers());
    EXPECT_FALSE(settings.getBRollRenaming());
    EXPECT_FALSE(settings.getCreateVirginTerritories());
    EXPECT_TRUE(settings.getRestrictRange());
    EXPECT_EQ(settings.getRestrictedRange(), std::make_pair(1.0, 2.0));
    EXPECT_EQ(listener.count(), 1);
}

Bytes version1Block(uint32_t rowCount, std::initializer_list<Bytes> rows)
{
    Bytes block = join({{1, 0, 0, 0}, sharedHead, {static_cast<uint8_t>(rowCount), 0, 0, 0}});
    for (const Bytes& row : rows)
        block = join({block, object(row)});
    return join({block, overhangFields});
}

TEST_F(SettingsTest, Version1AlwaysComesBackWithExactlyThreeRows)
{
    readBlock(version1Block(5, {shRowBody, emptyRowBody, vfxRowBody, shRowBody, shRowBody}));
    ASSERT_EQ(settings.getVfxPatterns().size(), 3u);
    EXPECT_EQ(settings.getVfxPattern(2), VfxPatternEntry("VFX.", "", false));

    readBlock(version1Block(2, {vfxRowBody, shRowBody}));
    ASSERT_EQ(settings.getVfxPatterns().size(), 3u);
    EXPECT_EQ(settings.getVfxPattern(0), VfxPatternEntry("VFX.", "", false));
    EXPECT_EQ(settings.getVfxPattern(1), VfxPatternEntry("SH_", "_comp", true));
    EXPECT_EQ(settings.getVfxPattern(2), VfxPatternEntry());
}

TEST_F(SettingsTest, OlderProjectsGetVirginTerritoriesOnAgainstTheNewDefault)
{
    // Deliberate: projects saved before the option existed were always
    // filled, so they keep that behaviour while new projects start without.
    settings.setBRollRenaming(false);
    settings.setSnippetMarkerFrames(9);
    settings.setRestrictRange(true);
    settings.setRestrictedRange(1.0, 2.0);
    listener.kinds.clear();

    readBlock(version1Block(3, {shRowBody, emptyRowBody, vfxRowBody}));
    expectSharedHead(settings);
    EXPECT_TRUE(settings.getCreateVirginTerritories());
    EXPECT_TRUE(settings.getBRollRenaming());
    EXPECT_EQ(settings.getSnippetMarkerFrames(), 5u);
    EXPECT_FALSE(settings.getRestrictRange());
    EXPECT_EQ(settings.getRestrictedRange(), std::make_pair(0.0, 0.0));
    EXPECT_EQ(listener.count(), 1);

    const Bytes rows = join({{3, 0, 0, 0}, object(shRowBody), object(emptyRowBody), object(vfxRowBody)});
    readBlock(join({{2, 0, 0, 0}, sharedHead, rows, overhangFields, {0}, {8, 0, 0, 0}}));
    EXPECT_FALSE(settings.getBRollRenaming());
    EXPECT_EQ(settings.getSnippetMarkerFrames(), 8u);
    EXPECT_TRUE(settings.getCreateVirginTerritories());
    EXPECT_FALSE(settings.getRestrictRange());

    settings.setRestrictRange(true);
    settings.setRestrictedRange(1.0, 2.0);
    readBlock(join({{3, 0, 0, 0}, sharedHead, rows, overhangFields, {1}, {8, 0, 0, 0}, {0}}));
    EXPECT_TRUE(settings.getBRollRenaming());
    EXPECT_FALSE(settings.getCreateVirginTerritories());
    EXPECT_FALSE(settings.getRestrictRange());
    EXPECT_EQ(settings.getRestrictedRange(), std::make_pair(0.0, 0.0));
}

TEST_F(SettingsTest, RefusesUnknownAndNewerVersionsAndTruncatedBlocks)
{
    settings.setOverhangFrames(11);
    listener.kinds.clear();

    SerializationTree tree;
    tree.assign(currentBlock.data(), currentBlock.size());
    tree.readUInt32();
    EXPECT_EQ(test::thrownCode([&] { settings.readOld(tree, 4); }), Result::UnknownVersion);

    Bytes newer = currentBlock;
    newer[0] = 5;
    EXPECT_EQ(test::thrownCode([&] { readBlock(newer); }), Result::NewerVersion) << "version 5 accepted";

    // Cut anywhere inside, the block is refused and nothing of it sticks.
    for (size_t length = 4; length < currentBlock.size(); ++length) {
        SerializationTree cut;
        cut.assign(currentBlock.data(), length);
        EXPECT_EQ(test::thrownCode([&] { cut.readObject(settings); }), Result::StreamExhausted)
            << "block of " << length << " bytes accepted";
    }
    EXPECT_EQ(settings.getOverhangFrames(), 11u);
    EXPECT_EQ(settings.getMatchName(), MatchName::RollName);
    EXPECT_EQ(listener.count(), 0);
}

} // namespace
} // namespace montala::core
