#include "core/model/Settings.h"

#include "core/serialize/SerializationTree.h"
#include "util/Result.h"

namespace montala::core {

using util::Result;

namespace {

// The order the marker flags are stored in; the first form of the block
// held only the first three.
constexpr MarkerKind storedMarkerOrder[] = {MarkerKind::Destination, MarkerKind::Transition,
                                            MarkerKind::Insert,      MarkerKind::Snippet,
                                            MarkerKind::AutomationWarning, MarkerKind::Overlap};

} // namespace

Settings::Settings() : Serializable(currentVersion), vfxPatterns(vfxPatternCount) {}

Settings::Settings(const Settings& other)
    : Serializable(other), ChangeContextNotificationBase(other)
{
    copyFields(other);
}

Settings& Settings::operator=(const Settings& other)
{
    if (this != &other)
        copyFields(other);
    return *this;
}

void Settings::copyFields(const Settings& other)
{
    matchName = other.matchName;
    healProcessing = other.healProcessing;
    applyTo = other.applyTo;
    createMarkers = other.createMarkers;
    snippetMarkerFrames = other.snippetMarkerFrames;
    vfxPatterns = other.vfxPatterns;
    overhangPercentRule = other.overhangPercentRule;
    overhangPercent = other.overhangPercent;
    includeOverhanging = other.includeOverhanging;
    overhangFrames = other.overhangFrames;
    bRollRenaming = other.bRollRenaming;
    createVirginTerritories = other.createVirginTerritories;
    restrictRange = other.restrictRange;
    preserveBefore = other.preserveBefore;
    preserveAfter = other.preserveAfter;
}

std::string Settings::getText(MatchName value)
{
    return value == MatchName::ClipName ? "Clip Name" : "Roll Name";
}

std::string Settings::getText(HealProcessingMode value)
{
    switch (value) {
    case HealProcessingMode::None: return "None";
    case HealProcessingMode::Normal: return "Normal";
    case HealProcessingMode::GapsWithoutInserts: return "Gaps without Inserts";
    case HealProcessingMode::GapsWithInserts: return "Gaps with Inserts";
    }
    return {};
}

std::string Settings::getText(ApplyTo value)
{
    return value == ApplyTo::SelectedTracks ? "Selected Tracks" : "All Tracks";
}

void Settings::setMatchName(MatchName value)
{
    matchName = value;
    notifyChange();
}

void Settings::setHealProcessing(HealProcessingMode value)
{
    healProcessing = value;
    notifyChange();
}

void Settings::setApplyTo(ApplyTo value)
{
    applyTo = value;
    notifyChange();
}

void Settings::setSnippetMarkerFrames(uint32_t frames)
{
    snippetMarkerFrames = frames;
    notifyChange();
}

size_t Settings::markerIndex(MarkerKind kind)
{
    const int number = static_cast<int>(kind);
    if (number < 1 || number > static_cast<int>(markerKindCount))
        throw Result::InvalidArgument;
    return static_cast<size_t>(number - 1);
}

void Settings::setCreateMarkers(MarkerKind kind, bool value)
{
    createMarkers[markerIndex(kind)] = value;
    notifyChange();
}

void Settings::setBRollRenaming(bool value)
{
    bRollRenaming = value;
    notifyChange();
}

void Settings::setRestrictRange(bool value)
{
    if (restrictRange == value)
        return;
    restrictRange = value;
    notifyChange();
}

void Settings::setRestrictedRange(double before, double after)
{
    if (before <= after) {
        preserveBefore = before;
        preserveAfter = after;
    }
    notifyChange();
}

VfxPatternEntry& Settings::getVfxPattern(size_t index)
{
    if (index >= vfxPatterns.size())
        throw Result::InvalidArgument;
    return vfxPatterns[index];
}

const VfxPatternEntry& Settings::getVfxPattern(size_t index) const
{
    if (index >= vfxPatterns.size())
        throw Result::InvalidArgument;
    return vfxPatterns[index];
}

void Settings::setVfxPattern(const VfxPatternEntry& entry, size_t index)
{
    getVfxPattern(index) = entry;
}

void Settings::reset()
{
    // The VFX rows are the one thing a user types at length; clearing the
    // model must not cost them.
    std::vector<VfxPatternEntry> keptPatterns = std::move(vfxPatterns);
    copyFields(Settings());
    vfxPatterns = std::move(keptPatterns);
    normalizePatterns();
}

void Settings::normalizePatterns()
{
    vfxPatterns.resize(vfxPatternCount);
}

void Settings::write(serialize::SerializationTree& tree) const
{
    tree.writeUInt32(static_cast<uint32_t>(matchName));
    tree.writeUInt32(static_cast<uint32_t>(healProcessing));
    tree.writeUInt32(static_cast<uint32_t>(applyTo));
    // The flags' stored order, which is neither the kinds' numbers nor the
    // order of their tracks.
    for (MarkerKind kind : storedMarkerOrder)
        tree.writeBool(createsMarkers(kind));
    tree.writeUInt32(static_cast<uint32_t>(vfxPatterns.size()));
    for (const VfxPatternEntry& entry : vfxPatterns)
        tree.writeObject(entry);
    tree.writeBool(overhangPercentRule);
    tree.writeDouble(overhangPercent);
    tree.writeBool(includeOverhanging);
    tree.writeUInt32(overhangFrames);
    tree.writeBool(bRollRenaming);
    tree.writeUInt32(snippetMarkerFrames);
    tree.writeBool(createVirginTerritories);
    tree.writeBool(restrictRange);
    tree.writeDouble(preserveBefore);
    tree.writeDouble(preserveAfter);
}

void Settings::readMarkerFlag(serialize::SerializationTree& tree, MarkerKind kind)
{
    createMarkers[markerIndex(kind)] = tree.readBool();
}

void Settings::readEnumerations(serialize::SerializationTree& tree, bool withApplyTo)
{
    matchName = tree.readUInt32() == 0 ? MatchName::RollName : MatchName::ClipName;
    const uint32_t heal = tree.readUInt32();
    healProcessing = heal <= 4 ? static_cast<HealProcessingMode>(heal) : HealProcessingMode::None;
    if (withApplyTo)
        applyTo = tree.readUInt32() == 1 ? ApplyTo::SelectedTracks : ApplyTo::AllTracks;
}

void Settings::readCountedPatterns(serialize::SerializationTree& tree)
{
    const uint32_t count = tree.readUInt32();
    vfxPatterns.clear();
    for (uint32_t i = 0; i < count; ++i) {
        VfxPatternEntry entry;
        tree.readObject(entry);
        if (vfxPatterns.size() < vfxPatternCount)
            vfxPatterns.push_back(entry);
    }
    normalizePatterns();
}

// Versions 1 to 4 share everything up to overhangFrames and differ only in
// where the list ends.
void Settings::readTail(serialize::SerializationTree& tree, uint32_t storedVersion)
{
    readEnumerations(tree, true);
    for (MarkerKind kind : storedMarkerOrder)
        readMarkerFlag(tree, kind);
    readCountedPatterns(tree);
    overhangPercentRule = tree.readBool();
    overhangPercent = tree.readDouble();
    includeOverhanging = tree.readBool();
    overhangFrames = tree.readUInt32();

    // Projects from before virgin territories existed get them switched on,
    // unlike a new project: their users always had the filled timeline.
    bRollRenaming = true;
    snippetMarkerFrames = 5;
    createVirginTerritories = true;
    restrictRange = false;
    preserveBefore = 0.0;
    preserveAfter = 0.0;
    if (storedVersion < 2)
        return;
    bRollRenaming = tree.readBool();
    snippetMarkerFrames = tree.readUInt32();
    if (storedVersion < 3)
        return;
    createVirginTerritories = tree.readBool();
    if (storedVersion < 4)
        return;
    restrictRange = tree.readBool();
    preserveBefore = tree.readDouble();
    preserveAfter = tree.readDouble();
}

void Settings::readCurrent(serialize::SerializationTree& tree)
{
    // Read into a copy so that a block cut short leaves this object whole.
    Settings read(*this);
    read.readTail(tree, currentVersion);
    copyFields(read);
    notifyChange();
}

void Settings::readOld(serialize::SerializationTree& tree, uint32_t storedVersion)
{
    if (storedVersion > 3)
        throw Result::UnknownVersion;
    Settings read(*this);
    if (storedVersion == 0) {
        // The first form: no applyTo, three marker flags fewer, the three
        // VFX rows bare (no count, no version), and nothing after
        // overhangFrames. What it lacks keeps the value held.
        read.readEnumerations(tree, false);
        for (size_t index = 0; index < 3; ++index)
            read.readMarkerFlag(tree, storedMarkerOrder[index]);
        read.vfxPatterns.assign(vfxPatternCount, VfxPatternEntry());
        for (VfxPatternEntry& entry : read.vfxPatterns)
            entry.readCurrent(tree);
        read.overhangPercentRule = tree.readBool();
        read.overhangPercent = tree.readDouble();
        read.includeOverhanging = tree.readBool();
        read.overhangFrames = tree.readUInt32();
    } else {
        read.readTail(tree, storedVersion);
    }
    copyFields(read);
    notifyChange();
}

} // namespace montala::core
