#pragma once

#include "core/conform/MarkerKinds.h"
#include "core/model/ChangeContext.h"
#include "core/events/VfxPatternEntry.h"
#include "core/serialize/Serializable.h"

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace montala::core {

// Which name of an event generation compares.
enum class MatchName : int { RollName = 0, ClipName = 1 };

// How the events are joined after generation. Stored data may hold 4: it is
// kept as it is, has no text and heals nothing.
enum class HealProcessingMode : int { None = 0, Normal = 1, GapsWithoutInserts = 2, GapsWithInserts = 3 };

// Which tracks a run cuts.
enum class ApplyTo : int { AllTracks = 0, SelectedTracks = 1 };

// The user's options, stored with the project. A plain store: no option is
// checked against another. Setters of what the window shows notify with a
// settings context; those read only at the start of a run do not.
class Settings : public serialize::Serializable, public ChangeContextNotificationBase {
public:
    static constexpr uint32_t currentVersion = 4;
    static constexpr size_t vfxPatternCount = 3;

    Settings();
    // Copies every field; listeners stay with their object and nobody is told.
    Settings(const Settings& other);
    Settings& operator=(const Settings& other);
    ~Settings() override = default;

    // The texts the user sees for the choices ("" for a stored 4).
    static std::string getText(MatchName value);
    static std::string getText(HealProcessingMode value);
    static std::string getText(ApplyTo value);

    MatchName getMatchName() const { return matchName; }
    HealProcessingMode getHealProcessing() const { return healProcessing; }
    ApplyTo getApplyTo() const { return applyTo; }
    // Whether a run writes markers of that kind; one flag per marker kind.
    bool createsMarkers(MarkerKind kind) const { return createMarkers[markerIndex(kind)]; }
    bool getCreateDestinationMarkers() const { return createsMarkers(MarkerKind::Destination); }
    bool getCreateTransitionMarkers() const { return createsMarkers(MarkerKind::Transition); }
    bool getCreateInsertMarkers() const { return createsMarkers(MarkerKind::Insert); }
    bool getCreateSnippetMarkers() const { return createsMarkers(MarkerKind::Snippet); }
    uint32_t getSnippetMarkerFrames() const { return snippetMarkerFrames; }
    bool getCreateAutomationWarningMarkers() const { return createsMarkers(MarkerKind::AutomationWarning); }
    bool getCreateOverlapMarkers() const { return createsMarkers(MarkerKind::Overlap); }
    const std::vector<VfxPatternEntry>& getVfxPatterns() const { return vfxPatterns; }
    bool getOverhangPercentRule() const { return overhangPercentRule; }
    double getOverhangPercent() const { return overhangPercent; }
    bool getIncludeOverhanging() const { return includeOverhanging; }
    uint32_t getOverhangFrames() const { return overhangFrames; }
    bool getBRollRenaming() const { return bRollRenaming; }
    bool getCreateVirginTerritories() const { return createVirginTerritories; }
    bool getRestrictRange() const { return restrictRange; }
    double getPreserveBefore() const { return preserveBefore; }
    double getPreserveAfter() const { return preserveAfter; }
    // Preserve-before and preserve-after, in seconds.
    std::pair<double, double> getRestrictedRange() const { return {preserveBefore, preserveAfter}; }

    // These store and always notify, changed or not.
    void setMatchName(MatchName value);
    void setHealProcessing(HealProcessingMode value);
    void setApplyTo(ApplyTo value);
    void setSnippetMarkerFrames(uint32_t frames);
    void setCreateMarkers(MarkerKind kind, bool value);
    void setCreateDestinationMarkers(bool value) { setCreateMarkers(MarkerKind::Destination, value); }
    void setCreateTransitionMarkers(bool value) { setCreateMarkers(MarkerKind::Transition, value); }
    void setCreateInsertMarkers(bool value) { setCreateMarkers(MarkerKind::Insert, value); }
    void setCreateSnippetMarkers(bool value) { setCreateMarkers(MarkerKind::Snippet, value); }
    void setCreateAutomationWarningMarkers(bool value) { setCreateMarkers(MarkerKind::AutomationWarning, value); }
    void setCreateOverlapMarkers(bool value) { setCreateMarkers(MarkerKind::Overlap, value); }
    void setBRollRenaming(bool value);

    // Notifies only when the value changes.
    void setRestrictRange(bool value);
    // Keeps the old range when before is later than after, but notifies
    // either way so that the inputs show the range that holds.
    void setRestrictedRange(double before, double after);

    // Read at the start of a run and shown nowhere: store only.
    void setIncludeOverhanging(bool value) { includeOverhanging = value; }
    void setCreateVirginTerritories(bool value) { createVirginTerritories = value; }
    void setOverhangFrames(uint32_t frames) { overhangFrames = frames; }
    void setOverhangPercentRule(bool value) { overhangPercentRule = value; }
    void setOverhangPercent(double percent) { overhangPercent = percent; }

    // Result::InvalidArgument for an index past the three entries.
    VfxPatternEntry& getVfxPattern(size_t index);
    const VfxPatternEntry& getVfxPattern(size_t index) const;
    // Copies the entry in without notifying; same failure.
    void setVfxPattern(const VfxPatternEntry& entry, size_t index);

    // Every field back to its default, except the VFX rows: their texts and
    // check boxes survive, the vector is only brought to three entries.
    // Silent: the data model announces its own reset.
    void reset();

    void readCurrent(serialize::SerializationTree& tree) override;
    void write(serialize::SerializationTree& tree) const override;
    void readOld(serialize::SerializationTree& tree, uint32_t storedVersion) override;

private:
    // Result::InvalidArgument for a number that is no marker kind.
    static size_t markerIndex(MarkerKind kind);
    void copyFields(const Settings& other);
    void readMarkerFlag(serialize::SerializationTree& tree, MarkerKind kind);
    void notifyChange() { notify(changeContext); }
    void readEnumerations(serialize::SerializationTree& tree, bool withApplyTo);
    void readCountedPatterns(serialize::SerializationTree& tree);
    void readTail(serialize::SerializationTree& tree, uint32_t storedVersion);
    void normalizePatterns();

    MatchName matchName = MatchName::RollName;
    HealProcessingMode healProcessing = HealProcessingMode::Normal;
    ApplyTo applyTo = ApplyTo::AllTracks;
    std::array<bool, markerKindCount> createMarkers{true, true, true, true, true, true};
    uint32_t snippetMarkerFrames = 5;
    std::vector<VfxPatternEntry> vfxPatterns;
    bool overhangPercentRule = true;
    double overhangPercent = 50.0;
    bool includeOverhanging = false;
    uint32_t overhangFrames = 5;
    bool bRollRenaming = true;
    bool createVirginTerritories = false;
    bool restrictRange = false;
    double preserveBefore = 0.0;
    double preserveAfter = 0.0;
    ChangeContext changeContext{ChangeContext::SettingsKind};
};

} // namespace montala::core
