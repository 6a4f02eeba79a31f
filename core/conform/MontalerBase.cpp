#include "core/conform/MontalerBase.h"

#include "core/conform/CutList.h"
#include "core/conform/MarkerKinds.h"
#include "core/conform/SnippetAlgorithm.h"
#include "core/events/EventList.h"
#include "core/services/ProgressHandlerBase.h"
#include "core/model/Settings.h"
#include "core/time/Tolerances.h"
#include "util/StringUtil.h"

#include <cmath>

namespace montala::core {

using util::Result;
using util::StringUtil;

namespace {

void check(Result::Type code)
{
    if (code != Result::Ok)
        throw code;
}

// The detectors the settings switch on, in the order they run.
std::vector<const MarkerKindRow*> enabledDetectors(const Settings& settings)
{
    std::vector<const MarkerKindRow*> rows;
    for (MarkerKind kind : detectionOrder)
        if (settings.createsMarkers(kind))
            rows.push_back(&markerKindRow(kind));
    return rows;
}

} // namespace

void MontalerBase::buildArrangement(const EventList& events, CutList& cuts)
{
    check(clearWorkArea());
    check(buildCuts(events, cuts));
    SnippetContext snippetContext = getSnippetContext();
    check(runSnippetAlgorithm(cuts, snippetContext));
    check(applyCuts(cuts));
}

Result::Type MontalerBase::conform(const EventList& events)
{
    try {
        {
            CutList cuts;
            buildArrangement(events, cuts);
            const std::vector<InformationEntry> entries = collectInformation(cuts, getInformationContext());
            check(generateMarkers(entries));
        }
        check(complete());
        return Result::Ok;
    } catch (Result::Type code) {
        return code;
    }
}

Result::Type MontalerBase::preview(const EventList& events, size_t first, size_t last, bool showDestination)
{
    try {
        CutList cuts;
        buildArrangement(events, cuts);
        if (events.getSize() == 0)
            return Result::Ok;
        const InformationContext context = getInformationContext();
        std::vector<InformationEntry> entries = collectInformation(cuts, context);

        // Only what reaches into the previewed stretch; an entry that merely
        // touches one of its ends belongs to the neighbours.
        //
        //   previewed     S[=========]E
        //   kept            [==]  [=====]
        //   dropped   [==]S            E[==]
        const double s = events.getEvent(0)->getDstIn().toSeconds(context.framerate);
        const double e = events.getEvent(events.getSize() - 1)->getDstOut().toSeconds(context.framerate);
        std::erase_if(entries, [s, e](const InformationEntry& entry) {
            return s > entry.end || std::abs(entry.end - s) < positionTolerance || entry.start > e ||
                   std::abs(entry.start - e) < positionTolerance;
        });
        check(generateMarkers(entries));
        return Result::Ok;
    } catch (Result::Type code) {
        return code;
    }
}

Result::Type MontalerBase::deletePreview()
{
    return clearWorkArea();
}

Result::Type MontalerBase::buildCuts(const EventList& events, CutList& cuts)
{
    for (const EventPtr& event : events.getEvents()) {
        if (!event || event->hasState(EventState::InvalidTimecode))
            continue;
        cuts.append(createCut(event));
    }
    return Result::Ok;
}

Result::Type MontalerBase::runSnippetAlgorithm(CutList& cuts, SnippetContext& context)
{
    try {
        SnippetAlgorithm algorithm;
        algorithm.process(cuts, context);
    } catch (Result::Type code) {
        return code;
    }
    return Result::Ok;
}

Result::Type MontalerBase::applyCuts(CutList& cuts)
{
    for (size_t i = 0; i < cuts.size(); ++i) {
        const CutPtr& cut = cuts.getCut(i);
        if (cut)
            check(applyCut(*cut));
    }
    return Result::Ok;
}

std::vector<InformationEntry> MontalerBase::collectInformation(const CutList& cuts, const InformationContext& context)
{
    if (!context.settings)
        throw Result::NotInitialized;
    std::vector<InformationEntry> entries;
    for (const MarkerKindRow* row : enabledDetectors(*context.settings)) {
        if (progress)
            progress->setText(StringUtil::translate(row->detectorTitle));
        std::vector<InformationEntry> found = row->detect(cuts, context, progress);
        entries.insert(entries.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
    }
    return entries;
}

int64_t MontalerBase::countSteps(int64_t eventCount, const Settings& settings, int64_t trackCount)
{
    int64_t steps = 0;
    for (const MarkerKindRow* row : enabledDetectors(settings))
        steps += row->stepCount(eventCount, trackCount);
    return steps;
}

const char16_t* cannotStartText(Result::Type code, bool preview)
{
    if (code == Result::EmptyChangeList)
        return u"No events in Change EDL.";
    if (code == Result::NoSelectedTracks)
        return preview ? u"No tracks selected for the preview.\nPlease select the tracks that you want to use."
                       : u"No tracks selected for Montala process.\nPlease select the tracks that you want to use.";
    return preview ? u"No tracks available for the preview." : u"No tracks available for Montala process.";
}

} // namespace montala::core
