#include "core/events/HealedEvent.h"

#include "core/serialize/SerializationTree.h"
#include "util/Result.h"

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

namespace {

// Healing breaks healed events up into their parts, so nothing Montala
// writes nests them; a damaged or hostile block could, deep enough to
// exhaust the stack. The bound is far above any real use.
constexpr int maxStoredNesting = 32;
thread_local int storedNesting = 0;

class StoredNestingGuard {
public:
    StoredNestingGuard()
    {
        if (storedNesting >= maxStoredNesting)
            throw util::Result::BadStoredData;
        ++storedNesting;
    }
    ~StoredNestingGuard() { --storedNesting; }
    StoredNestingGuard(const StoredNestingGuard&) = delete;
    StoredNestingGuard& operator=(const StoredNestingGuard&) = delete;
};

} // namespace

void HealedEvent::readCurrent(serialize::SerializationTree& tree)
{
    StoredNestingGuard guard;
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
    StoredNestingGuard guard;
    EventBase::readOld(tree, storedVersion);
    tree.readObject(healedEvents);
}

} // namespace montala::core
