#include "core/model/Settings.h"

#include "core/serialize/SerializationTree.h"
#include "util/Result.h"

namespace montala::core {

using util::Result;

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
    createDestinationMarkers = other.createDestinationMarkers;
    createTransitionMarkers = other.createTransitionMarkers;
    createInsertMarkers = other.createInsertMarkers;
    createSnippetMarkers = other.createSnippetMarkers;
    snippetMarkerFrames = other.snippetMarkerFrames;
    createAutomationWarningMarkers = other.createAutomationWarningMarkers;
    createOverlapMarkers = other.createOverlapMarkers;
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

void Settings::setCreateDestinationMarkers(bool value)
{
    createDestinationMarkers = value;
    notifyChange();
}

void Settings::setCreateTransitionMarkers(bool value)
{
    createTransitionMarkers = value;
    notifyChange();
}

void Settings::setCreateInsertMarkers(bool value)
{
    createInsertMarkers = value;
    notifyChange();
}

void Settings::setCreateSnippetMarkers(bool value)
{
    createSnippetMarkers = value;
    notifyChange();
}

void Settings::setCreateAutomationWarningMarkers(bool value)
{
    createAutomationWarningMarkers = value;
    notifyChange();
}

void Settings::setCreateOverlapMarkers(bool value)
{
    createOverlapMarkers = value;
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
    tree.writeBool(createDestinationMarkers);
    tree.writeBool(createTransitionMarkers);
    tree.writeBool(createInsertMarkers);
    tree.writeBool(createSnippetMarkers);
    tree.writeBool(createAutomationWarningMarkers);
    tree.writeBool(createOverlapMarkers);
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
    createDestinationMarkers = tree.readBool();
    createTransitionMarkers = tree.readBool();
    createInsertMarkers = tree.readBool();
    createSnippetMarkers = tree.readBool();
    createAutomationWarningMarkers = tree.readBool();
    createOverlapMarkers = tree.readBool();
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
        read.createDestinationMarkers = tree.readBool();
        read.createTransitionMarkers = tree.readBool();
        read.createInsertMarkers = tree.readBool();
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
