#include "core/conform/TransitionDetectAlgorithm.h"

#include "core/conform/CutList.h"
#include "core/events/EventListIndex.h"
#include "core/conform/InformationContext.h"
#include "util/Result.h"

#include <set>
#include <utility>

namespace montala::core {

using util::Result;

namespace {

std::vector<EventPtr> transitionsOf(const EventList& list)
{
    std::vector<EventPtr> found;
    for (const EventPtr& event : list.getEvents()) {
        const int type = event->getTransitionType();
        if ((type == EventBase::Dissolve || type == EventBase::Wipe) &&
            !event->hasState(EventState::InvalidTimecode))
            found.push_back(event);
    }
    return found;
}

} // namespace

std::vector<InformationEntry> TransitionDetectAlgorithm::detect(const CutList& cuts,
                                                                const InformationContext& context,
                                                                ProgressHandlerBase* progress)
{
    if (!context.oldList || !context.newList)
        throw Result::NotInitialized;
    const Framerate& rate = context.framerate;
    std::set<std::pair<Timecode, Timecode>> oldPlaces;
    for (const EventPtr& old : transitionsOf(*context.oldList))
        oldPlaces.emplace(old->getDstIn(), old->getDstOut());
    std::vector<EventPtr> newTransitions = transitionsOf(*context.newList);

    std::erase_if(newTransitions, [&](const EventPtr& event) {
        return oldPlaces.count({event->getDstIn(), event->getDstOut()}) != 0;
    });
    advance(progress, 1);

    const EventListIndex& index = cuts.getEventIndex(rate);
    std::erase_if(newTransitions, [&](const EventPtr& event) {
        return index.isInsideOneEvent(SecondsRange(event->getDstIn().toSeconds(rate), event->getDstOut().toSeconds(rate)));
    });
    advance(progress, 1);

    std::vector<InformationEntry> entries;
    for (const EventPtr& event : newTransitions) {
        Timecode duration;
        duration.fromFrames(event->getTransitionDuration(), rate);
        const double start = event->getDstIn().toSeconds(rate);
        entries.push_back({start, start + duration.toSeconds(rate),
                           std::string(1, EventBase::transitionLetter(event->getTransitionType())) + " " +
                               std::to_string(event->getEventNumber()) + " " + eventName(*event, context),
                           InformationKind::Transition});
    }
    advance(progress, 1);
    return entries;
}

} // namespace montala::core
