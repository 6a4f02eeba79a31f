#include "core/HealedEvent.h"

#include "core/serialize/SerializationTree.h"

namespace montala::core {

HealedEvent::HealedEvent() : EventBase(Healed) {}

void HealedEvent::addHealedEvent(const EventPtr& event)
{
    healedEvents.addEvent(event);
    if (event->isVfx())
        vfx = true;
    if (healedEvents.getSize() == 1) {
        srcIn = event->getSrcIn();
        srcOut = event->getSrcOut();
        dstIn = event->getDstIn();
        dstOut = event->getDstOut();
    } else {
        if (event->getSrcIn() < srcIn)
            srcIn = event->getSrcIn();
        if (event->getDstIn() < dstIn)
            dstIn = event->getDstIn();
        if (event->getSrcOut() > srcOut)
            srcOut = event->getSrcOut();
        if (event->getDstOut() > dstOut)
            dstOut = event->getDstOut();
    }
    validateTimecodes();
    computeMotionSpeed();
}

void HealedEvent::readCurrent(serialize::SerializationTree& tree)
{
    EventBase::readCurrent(tree);
    tree.readObject(healedEvents);
}

void HealedEvent::write(serialize::SerializationTree& tree) const
{
    EventBase::write(tree);
    tree.writeObject(healedEvents);
}

void HealedEvent::readOld(serialize::SerializationTree& tree, uint32_t storedVersion)
{
    EventBase::readOld(tree, storedVersion);
    tree.readObject(healedEvents);
}

} // namespace montala::core
