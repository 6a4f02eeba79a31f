// EventList's heal operations, kept beside the heal processing they drive.

#include "core/EventList.h"
#include "core/EventListAlgorithm.h"
#include "core/EventListIndex.h"
#include "core/HealProcessing.h"
#include "core/HealedEvent.h"
#include "core/Settings.h"
#include "util/StringUtil.h"

#include <algorithm>
#include <cstdio>
#include <unordered_map>

namespace montala::core {

namespace {

// The selected events of the list, in list order, with every healed event
// broken up into its parts so that it can be healed anew.
void collectSelection(const std::vector<EventPtr>& events, const EventListIndex& selectionIndex,
                      EventList& parts)
{
    for (const EventPtr& event : events) {
        if (!selectionIndex.containsEvent(event))
            continue;
        auto* healed = event->getEventType() == EventBase::Healed
                           ? dynamic_cast<HealedEvent*>(event.get())
                           : nullptr;
        if (healed)
            parts.append(healed->getHealedEvents());
        else
            parts.addEvent(event);
    }
}

void runHealing(EventList& parts, const EventList& newList, int healMode, const Framerate& rate)
{
    Settings settings;
    settings.setHealProcessing(static_cast<HealProcessingMode>(healMode));
    EventListAlgorithm::Context context;
    context.newList = &newList;
    context.settings = &settings;
    context.framerate = rate;
    HealProcessing().process(parts, context);
}

} // namespace

void EventList::healEvents(const EventList& selection, const EventList& newList, int healMode)
{
    const Framerate rate = Timecode::currentFramerate();
    const EventListIndex selectionIndex(selection, rate);

    // Heal first, take out afterwards: a failure of the healing leaves the
    // list as it was.
    EventList healed(ChangeKind);
    collectSelection(events, selectionIndex, healed);
    runHealing(healed, newList, healMode, rate);

    std::vector<EventPtr> kept;
    kept.reserve(events.size() + healed.getSize());
    for (const EventPtr& event : events) {
        if (!selectionIndex.containsEvent(event))
            kept.push_back(event);
    }
    kept.insert(kept.end(), healed.getEvents().begin(), healed.getEvents().end());
    std::stable_sort(kept.begin(), kept.end(), [](const EventPtr& a, const EventPtr& b) {
        return a->getDstIn() < b->getDstIn();
    });

    {
        // The events' own notifications of the renumbering and renaming do
        // not reach this list's listeners one by one.
        BulkChange bulk(*this);
        const std::string healedName =
            util::StringUtil::toUtf8(util::StringUtil::translate(u"Healed Event"));
        int healedCounter = 1;
        for (size_t i = 0; i < kept.size(); ++i) {
            kept[i]->setEventNumber(static_cast<int>(i) + 1);
            if (kept[i]->getEventType() == EventBase::Healed) {
                char number[16];
                std::snprintf(number, sizeof number, "%03d", healedCounter++);
                kept[i]->setRollName(healedName + " " + number);
            }
        }
        events = std::move(kept);
    }
    notifyListChanged();
}

bool EventList::canHealEvents(const EventList& selection, const EventList& newList, int healMode) const
{
    const Framerate rate = Timecode::currentFramerate();
    const std::vector<EventPtr> selected = EventListAlgorithm::orderByDstIn(selection);
    if (selected.size() >= 2) {
        const std::vector<EventPtr> order = EventListAlgorithm::orderByDstIn(*this);
        std::unordered_map<const EventBase*, size_t> position;
        for (size_t i = 0; i < order.size(); ++i)
            position.emplace(order[i].get(), i);
        for (size_t i = 0; i + 1 < selected.size(); ++i) {
            const auto first = position.find(selected[i].get());
            const auto second = position.find(selected[i + 1].get());
            if (first == position.end() || second == position.end() || second->second != first->second + 1)
                return false;
        }
    }

    // Try it on independent copies of the parts, so nothing here changes.
    const EventListIndex selectionIndex(selection, rate);
    EventList parts(ChangeKind);
    collectSelection(events, selectionIndex, parts);
    EventList copies(ChangeKind);
    copies.copyEventsFrom(parts);
    runHealing(copies, newList, healMode, rate);
    return copies.getSize() != selection.getSize();
}

} // namespace montala::core
