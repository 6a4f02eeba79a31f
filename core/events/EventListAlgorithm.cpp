#include "core/events/EventListAlgorithm.h"

#include "core/events/EventList.h"

#include <algorithm>

namespace montala::core {

std::vector<EventPtr> EventListAlgorithm::orderByDstIn(const EventList& list)
{
    std::vector<EventPtr> order;
    order.reserve(list.getSize());
    for (const EventPtr& event : list.getEvents()) {
        if (!event->hasState(EventState::InvalidTimecode))
            order.push_back(event);
    }
    std::stable_sort(order.begin(), order.end(), [](const EventPtr& a, const EventPtr& b) {
        return a->getDstIn() < b->getDstIn();
    });
    return order;
}

} // namespace montala::core
