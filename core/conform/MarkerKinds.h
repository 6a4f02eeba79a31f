#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace montala::core {

class CutList;
class ProgressHandlerBase;
struct InformationContext;
struct InformationEntry;

// The kinds of marker a run writes, one marker track each. The number is the
// one written into the track's "Montala:MarkerType", by which a stored
// project finds its tracks again: never renumber.
enum class MarkerKind : int {
    Destination = 1,
    Transition = 2,
    Insert = 3,
    AutomationWarning = 4,
    Snippet = 5,
    Overlap = 6,
};
inline constexpr size_t markerKindCount = 6;

// What a detector reports a finding as. The detectors count on their own,
// not as the tracks do; markerKindOf maps one to the other.
enum class InformationKind {
    Insert = 1,
    Transition = 2,
    AutomationWarning = 3,
    Snippet = 4,
    Overlap = 5,
};

// Everything that is said about one kind of marker. Whether a run writes it
// is the kind's flag in Settings (createsMarkers).
struct MarkerKindRow {
    MarkerKind kind;
    // As --no-markers and a run's summary name it.
    const char* commandLineName;
    // The marker track's name, in English: it is translated when the track
    // is named.
    const char* trackName;
    // The detector that finds markers of this kind, with the progress text
    // shown while it runs. Destination markers have none: the cut of each
    // event writes its own.
    std::optional<InformationKind> information;
    const char16_t* detectorTitle;
    std::vector<InformationEntry> (*detect)(const CutList& cuts, const InformationContext& context,
                                            ProgressHandlerBase* progress);
    int64_t (*stepCount)(int64_t eventCount, int64_t trackCount);
};

// The rows in the order the marker tracks are made in Montala's folder.
const std::vector<MarkerKindRow>& markerKinds();

// The order the detectors run in: the progress window shows their titles
// and the markers are written in it.
inline constexpr MarkerKind detectionOrder[] = {MarkerKind::Insert, MarkerKind::Transition, MarkerKind::Snippet,
                                                MarkerKind::AutomationWarning, MarkerKind::Overlap};

// The row of a kind; Result::InvalidArgument for a number that is none.
const MarkerKindRow& markerKindRow(MarkerKind kind);
// The kind a detector's finding goes to; Result::InvalidArgument for a
// value that is no kind.
MarkerKind markerKindOf(InformationKind information);
std::optional<MarkerKind> markerKindNamed(std::string_view commandLineName);
// The command-line names, in the order of the table.
std::vector<std::string> markerKindNames();

} // namespace montala::core
