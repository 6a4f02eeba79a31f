#include "core/conform/MarkerKinds.h"

#include "core/conform/AutomationWarningDetectAlgorithm.h"
#include "core/conform/InsertDetectAlgorithm.h"
#include "core/conform/OverlapDetectAlgorithm.h"
#include "core/conform/RemainsDetectAlgorithm.h"
#include "core/conform/TransitionDetectAlgorithm.h"
#include "util/Result.h"

#include <string>

namespace montala::core {

namespace {

// Detectors are made on the stack for each run.
template <class Detector>
std::vector<InformationEntry> detectWith(const CutList& cuts, const InformationContext& context,
                                         ProgressHandlerBase* progress)
{
    Detector detector;
    return detector.detect(cuts, context, progress);
}

template <class Detector>
int64_t stepsOf(int64_t eventCount, int64_t trackCount)
{
    return Detector().getStepCount(eventCount, trackCount);
}

template <class Detector>
MarkerKindRow detected(MarkerKind kind, const char* commandLineName, const char* trackName,
                       InformationKind information, const char16_t* title)
{
    return {kind, commandLineName, trackName, information, title, &detectWith<Detector>, &stepsOf<Detector>};
}

} // namespace

const std::vector<MarkerKindRow>& markerKinds()
{
    static const std::vector<MarkerKindRow> rows = {
        {MarkerKind::Destination, "destination", "Destination", std::nullopt, nullptr, nullptr, nullptr},
        detected<InsertDetectAlgorithm>(MarkerKind::Insert, "insert", "Insert", InformationKind::Insert,
                                        u"Insert Markers"),
        detected<TransitionDetectAlgorithm>(MarkerKind::Transition, "transition", "Dissolve/Wipe",
                                            InformationKind::Transition, u"Dissolve/Wipe Markers"),
        detected<AutomationWarningDetectAlgorithm>(MarkerKind::AutomationWarning, "automation",
                                                   "Automation Warning", InformationKind::AutomationWarning,
                                                   u"Automation Warning Markers"),
        detected<RemainsDetectAlgorithm>(MarkerKind::Snippet, "snippet", "Audio Snippet", InformationKind::Snippet,
                                         u"Audio Snippet Markers"),
        detected<OverlapDetectAlgorithm>(MarkerKind::Overlap, "overlap", "Overlap", InformationKind::Overlap,
                                         u"Overlap Markers"),
    };
    return rows;
}

const MarkerKindRow& markerKindRow(MarkerKind kind)
{
    for (const MarkerKindRow& row : markerKinds())
        if (row.kind == kind)
            return row;
    throw util::Result::InvalidArgument;
}

MarkerKind markerKindOf(InformationKind information)
{
    for (const MarkerKindRow& row : markerKinds())
        if (row.information == information)
            return row.kind;
    throw util::Result::InvalidArgument;
}

std::optional<MarkerKind> markerKindNamed(std::string_view commandLineName)
{
    for (const MarkerKindRow& row : markerKinds())
        if (commandLineName == row.commandLineName)
            return row.kind;
    return std::nullopt;
}

std::vector<std::string> markerKindNames()
{
    std::vector<std::string> names;
    for (const MarkerKindRow& row : markerKinds())
        names.emplace_back(row.commandLineName);
    return names;
}

} // namespace montala::core
