#include "core/generation/HealProcessing.h"

#include "core/events/EventList.h"
#include "core/events/EventListIndex.h"
#include "core/events/HealedEvent.h"
#include "util/Result.h"
#include "util/StringUtil.h"

#include <cstdio>
#include <memory>
#include <optional>

namespace montala::core {

using util::Result;

namespace {

std::string healedEventName(int counter)
{
    char number[16];
    std::snprintf(number, sizeof number, "%03d", counter);
    return util::StringUtil::toUtf8(util::StringUtil::translate(u"Healed Event")) + " " + number;
}

} // namespace

void HealProcessing::process(EventList& list, const Context& context)
{
    const HealProcessingMode mode =
        context.settings ? context.settings->getHealProcessing() : HealProcessingMode::None;
    if (mode == HealProcessingMode::None || list.getSize() < 2)
        return;
    const bool namesAreClipNames =
        context.settings->getMatchName() == MatchName::ClipName;

    const std::vector<EventPtr> order = orderByDstIn(list);
    if (order.empty()) {
        list.clear();
        return;
    }

    // Only the mode that looks for inserts asks where the New events lie.
    const EventList noNewEvents(EventList::ChangeKind);
    std::optional<EventListIndex> newIndex;
    if (mode == HealProcessingMode::GapsWithoutInserts)
        newIndex.emplace(context.newList ? *context.newList : noNewEvents, context.framerate);

    EventList result(EventList::ChangeKind);
    std::shared_ptr<HealedEvent> healed;
    int nextNumber = 1;
    int healedCounter = 1;

    auto emit = [&](const EventPtr& event) {
        event->setEventNumber(nextNumber++);
        result.addEvent(event);
    };

    EventPtr previous = order.front();
    for (size_t i = 1; i < order.size(); ++i) {
        const EventPtr& current = order[i];
        if (!canHeal(*current, *previous, mode, newIndex ? &*newIndex : nullptr, context.framerate)) {
            if (!healed) {
                emit(previous);
            } else {
                healed->addHealedEvent(previous);
                emit(healed);
                healed.reset();
            }
        } else {
            if (!healed) {
                healed = std::make_shared<HealedEvent>();
                const std::string name = healedEventName(healedCounter++);
                if (namesAreClipNames)
                    healed->setClipName(name);
                else
                    healed->setRollName(name);
            }
            healed->addHealedEvent(previous);
        }
        previous = current;
    }
    if (healed) {
        healed->addHealedEvent(previous);
        emit(healed);
    } else {
        emit(previous);
    }

    list.clear();
    list.append(result);
}

bool HealProcessing::canHeal(const EventBase& current, const EventBase& previous,
                             HealProcessingMode mode, const EventListIndex* newIndex,
                             const Framerate& rate) const
{
    if (current.getSrcIn() < previous.getSrcOut() || current.getDstIn() < previous.getDstOut())
        return false;

    auto gapsAreEqual = [&] {
        return Timecode::difference(current.getDstIn(), previous.getDstOut())
               == Timecode::difference(current.getSrcIn(), previous.getSrcOut());
    };

    switch (mode) {
    case HealProcessingMode::Normal:
        return current.getSrcIn() == previous.getSrcOut() && current.getDstIn() == previous.getDstOut();
    case HealProcessingMode::GapsWithInserts:
        return gapsAreEqual();
    case HealProcessingMode::GapsWithoutInserts: {
        if (!gapsAreEqual())
            return false;
        const SecondsRange gap(previous.getDstOut().toSeconds(rate), current.getDstIn().toSeconds(rate));
        for (const EventPtr& inGap : newIndex->findDstEvents(gap)) {
            // A New event that only borders the gap is a neighbour, not an insert.
            if (inGap->getDstOut() == previous.getDstOut() || inGap->getDstIn() == current.getDstIn())
                continue;
            return false;
        }
        return true;
    }
    default:
        return false;
    }
}

} // namespace montala::core
