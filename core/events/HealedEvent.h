#pragma once

#include "core/events/EventBase.h"
#include "core/events/EventList.h"

namespace montala::core {

// One event that stands for several neighbouring ones after healing. Its
// ranges are the union of the parts it holds.
class HealedEvent : public EventBase {
public:
    HealedEvent();

    // Appends the part and widens this event's ranges to take it in; a VFX
    // part makes the whole event VFX. Does not notify.
    void addHealedEvent(const EventPtr& event);
    EventList& getHealedEvents() { return healedEvents; }
    const EventList& getHealedEvents() const { return healedEvents; }

    void readCurrent(serialize::SerializationTree& tree) override;
    void write(serialize::SerializationTree& tree) const override;
    void readOld(serialize::SerializationTree& tree, uint32_t storedVersion) override;

private:
    EventList healedEvents{EventList::ChangeKind};
};

} // namespace montala::core
