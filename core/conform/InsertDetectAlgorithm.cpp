#include "core/conform/InsertDetectAlgorithm.h"

#include "core/conform/CutList.h"
#include "core/events/EventListIndex.h"
#include "core/conform/InformationContext.h"
#include "util/Result.h"

namespace montala::core {

using util::Result;

std::vector<InformationEntry> InsertDetectAlgorithm::detect(const CutList& cuts, const InformationContext& context,
                                                            ProgressHandlerBase* progress)
{
    if (!context.newList)
        throw Result::NotInitialized;
    advance(progress, 1);
    const EventListIndex& index = cuts.getEventIndex(context.framerate);
    advance(progress, 1);

    std::vector<InformationEntry> entries;
    const std::string label = translated(u"Insert") + ": ";
    for (const EventPtr& event : context.newList->getEvents()) {
        // An event whose timecodes do not fit the rate has no place to mark.
        if (event->hasState(EventState::InvalidTimecode))
            continue;
        const double start = event->getDstIn().toSeconds(context.framerate);
        const double end = event->getDstOut().toSeconds(context.framerate);
        if (start > end)
            throw Result::InvalidArgument;
        for (const SecondsRange& gap : index.findDstGaps(SecondsRange(start, end)))
            entries.push_back({gap.start, gap.end, label + eventName(*event, context), InformationKind::Insert});
    }
    advance(progress, 1);
    return entries;
}

} // namespace montala::core
