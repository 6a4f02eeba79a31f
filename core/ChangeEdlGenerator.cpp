#include "core/ChangeEdlGenerator.h"

#include "core/EventListAlgorithm.h"
#include "util/Result.h"

#include <cmath>
#include <map>
#include <memory>

namespace montala::core {

using util::Result;

namespace {

bool isTransition(int type)
{
    return type == EventBase::Dissolve || type == EventBase::Wipe;
}

Timecode plus(const Timecode& a, const Timecode& b)
{
    return Timecode::sum(a, b);
}

Timecode minus(const Timecode& a, const Timecode& b)
{
    return Timecode::difference(a, b);
}

} // namespace

void ChangeEdlGenerator::configure(MatchName rule, const std::vector<VfxPatternEntry>& vfxPatterns)
{
    std::vector<std::pair<std::string, std::string>> pairs;
    for (const VfxPatternEntry& entry : rowsInUse(vfxPatterns))
        pairs.emplace_back(entry.prefix, entry.postfix);
    vfxFilter.setPatterns(pairs);
    matchName = rule;
}

const std::string& ChangeEdlGenerator::nameOf(const EventBase& event) const
{
    return matchName == MatchName::ClipName ? event.getClipName() : event.getRollName();
}

std::string ChangeEdlGenerator::matchKey(const EventBase& event, bool& changedByVfx) const
{
    const std::string& raw = nameOf(event);
    std::string key = vfxFilter.normalize(raw);
    changedByVfx = key != raw;
    return key;
}

bool ChangeEdlGenerator::computeOverlap(const Timecode& aIn, const Timecode& aOut, const Timecode& bIn,
                                        const Timecode& bOut, Timecode& aOffset, Timecode& bOffset,
                                        Timecode& length)
{
    const Timecode& start = aIn < bIn ? bIn : aIn;
    const Timecode& end = bOut < aOut ? bOut : aOut;
    if (!(start < end))
        return false;
    if (start > aIn) {
        aOffset = minus(start, aIn);
        bOffset = Timecode::zero();
    } else {
        aOffset = Timecode::zero();
        bOffset = minus(start, bIn);
    }
    length = minus(end, start);
    return true;
}

bool ChangeEdlGenerator::tryMatch(const EventBase& oldEvent, const EventBase& newEvent,
                                  MatchCandidate& candidate) const
{
    if (!oldEvent.hasMotionSpeed(newEvent.getMotionSpeed())
        || oldEvent.getTransitionType() != newEvent.getTransitionType()
        || oldEvent.getTransitionDuration() != newEvent.getTransitionDuration())
        return false;
    Timecode oldOffset;
    Timecode newOffset;
    Timecode length;
    if (!computeOverlap(oldEvent.getSrcIn(), oldEvent.getSrcOut(), newEvent.getSrcIn(),
                        newEvent.getSrcOut(), oldOffset, newOffset, length))
        return false;

    auto event = std::make_shared<EventBase>();
    event->setRollName(newEvent.getRollName());
    event->setClipName(newEvent.getClipName());
    event->setVfx(newEvent.isVfx());
    if (isTransition(oldEvent.getTransitionType()))
        event->setTransitionType(oldEvent.getTransitionType());

    if (oldEvent.isNormalSpeed()) {
        const Timecode srcIn = plus(oldEvent.getDstIn(), oldOffset);
        const Timecode dstIn = plus(newEvent.getDstIn(), newOffset);
        event->setTimecodes(srcIn, plus(srcIn, length), dstIn, plus(dstIn, length));
    } else if (oldEvent.hasMotionSpeed(0.0)) {
        // A freeze shows one frame however long it stands: take the
        // shorter of the two record lengths from both record starts.
        length = minus(oldEvent.getDstOut(), oldEvent.getDstIn());
        const Timecode newLength = minus(newEvent.getDstOut(), newEvent.getDstIn());
        if (newLength < length)
            length = newLength;
        event->setTimecodes(oldEvent.getDstIn(), plus(oldEvent.getDstIn(), length), newEvent.getDstIn(),
                            plus(newEvent.getDstIn(), length));
    } else {
        // Source time becomes record time: S seconds of source last
        // S / speed on the timeline.
        const double speed = oldEvent.getMotionSpeed();
        length = Timecode(length.toSeconds() / speed);
        oldOffset = Timecode(oldOffset.toSeconds() / speed);
        newOffset = Timecode(newOffset.toSeconds() / speed);
        const Timecode srcIn = plus(oldEvent.getDstIn(), oldOffset);
        const Timecode dstIn = plus(newEvent.getDstIn(), newOffset);
        event->setTimecodes(srcIn, plus(srcIn, length), dstIn, plus(dstIn, length));
    }

    // These only rank rivals. For a varispeed they mix source time with
    // record lengths, and for a freeze they use offsets the event does not;
    // the ranking has always been made this way.
    candidate.event = std::move(event);
    candidate.timeShift = (newEvent.getDstIn().toSeconds() + newOffset.toSeconds())
                          - (oldEvent.getDstIn().toSeconds() + oldOffset.toSeconds());
    candidate.newSrcStart = plus(newEvent.getSrcIn(), newOffset);
    candidate.newSrcEnd = plus(candidate.newSrcStart, length);
    return true;
}

void ChangeEdlGenerator::splitTransitions(EventList& list) const
{
    EventList transitions(EventList::ChangeKind);
    const std::vector<EventPtr> events = list.getEvents();
    for (size_t i = 0; i < events.size(); ++i) {
        EventBase& incoming = *events[i];
        // A flawed event takes no part in matching; splitting it would only
        // risk arithmetic on timecodes that do not hold.
        if (!isTransition(incoming.getTransitionType()) || !incoming.isFlawless())
            continue;
        auto mixed = std::make_shared<EventBase>();
        *mixed = incoming;

        // The transition's length in source time is divided by the speed,
        // not multiplied: matching has always cut it so, and both sides of
        // a comparison are cut the same way.
        Timecode sourceLength(incoming.getTransitionDuration());
        const double speed = incoming.getMotionSpeed();
        sourceLength = speed == 0.0 ? Timecode(0.0) : Timecode(sourceLength.toSeconds() / speed);
        if (plus(incoming.getSrcIn(), sourceLength) > incoming.getSrcOut())
            sourceLength = minus(incoming.getSrcOut(), incoming.getSrcIn());
        Timecode recordLength(incoming.getTransitionDuration());
        if (plus(incoming.getDstIn(), recordLength) > incoming.getDstOut())
            recordLength = minus(incoming.getDstOut(), incoming.getDstIn());
        mixed->setTimecodes(incoming.getSrcIn(), plus(incoming.getSrcIn(), sourceLength),
                            incoming.getDstIn(), plus(incoming.getDstIn(), recordLength));

        if (i > 0 && events[i - 1]->getEventNumber() == incoming.getEventNumber()) {
            // The outgoing clip's SRC OUT stands twice in the name; stored
            // Change EDLs and their users know the names in this form.
            const EventBase& outgoing = *events[i - 1];
            const std::string cutPoint = outgoing.getSrcOut().toString();
            const std::string tail = "_" + cutPoint + "_" + cutPoint;
            mixed->setClipName("TRANS_" + incoming.getClipName() + "--" + outgoing.getClipName() + tail);
            mixed->setRollName("TRANS_" + incoming.getRollName() + "--" + outgoing.getRollName() + tail);
        }

        incoming.setTimecodes(plus(incoming.getSrcIn(), sourceLength), incoming.getSrcOut(),
                              plus(incoming.getDstIn(), recordLength), incoming.getDstOut());
        incoming.setTransitionType(EventBase::Cut);
        incoming.setTransitionDuration(0);
        transitions.addEvent(mixed);
    }
    list.append(transitions);
}

void ChangeEdlGenerator::prune(std::list<MatchCandidate>& candidates, double lastShift) const
{
    auto length = [](const MatchCandidate& c) { return minus(c.newSrcEnd, c.newSrcStart); };
    auto distance = [lastShift](const MatchCandidate& c) { return std::fabs(c.timeShift - lastShift); };

    auto x = candidates.begin();
    while (x != candidates.end()) {
        bool xDeleted = false;
        for (auto y = candidates.begin(); y != candidates.end();) {
            Timecode unusedA, unusedB, unusedLength;
            if (y == x
                || !computeOverlap(x->newSrcStart, x->newSrcEnd, y->newSrcStart, y->newSrcEnd, unusedA,
                                   unusedB, unusedLength)) {
                ++y;
                continue;
            }
            const Timecode lengthX = length(*x);
            const Timecode lengthY = length(*y);
            const bool deleteY =
                lengthY == lengthX ? distance(*y) > distance(*x) : lengthY < lengthX;
            if (deleteY) {
                y = candidates.erase(y);
            } else {
                x = candidates.erase(x);
                xDeleted = true;
                break;
            }
        }
        if (!xDeleted)
            ++x;
    }
}

int ChangeEdlGenerator::generate(const EventList& oldList, const EventList& newList, EventList& changeList)
{
    changeList.clear();

    EventList oldCopy(EventList::ChangeKind);
    EventList newCopy(EventList::ChangeKind);
    oldCopy.copyEventsFrom(oldList);
    newCopy.copyEventsFrom(newList);
    splitTransitions(oldCopy);
    splitTransitions(newCopy);

    std::multimap<std::string, EventPtr> byKey;
    for (const EventPtr& event : oldCopy.getEvents()) {
        if (!event->isFlawless())
            continue;
        bool changedByVfx = false;
        byKey.emplace(matchKey(*event, changedByVfx), event);
        event->setVfx(changedByVfx);
    }

    double lastShift = 0.0;
    int nextNumber = 1;
    std::list<MatchCandidate> candidates;
    for (const EventPtr& newEvent : EventListAlgorithm::orderByDstIn(newCopy)) {
        if (!newEvent->isFlawless())
            continue;
        bool changedByVfx = false;
        const std::string key = matchKey(*newEvent, changedByVfx);
        newEvent->setVfx(changedByVfx);

        candidates.clear();
        const auto [first, last] = byKey.equal_range(key);
        for (auto it = first; it != last; ++it) {
            MatchCandidate candidate;
            if (tryMatch(*it->second, *newEvent, candidate))
                candidates.push_back(std::move(candidate));
        }
        prune(candidates, lastShift);
        for (const MatchCandidate& candidate : candidates) {
            candidate.event->setEventNumber(nextNumber++);
            changeList.addEvent(candidate.event);
            lastShift = candidate.timeShift;
        }
    }

    mergeTransitions(changeList);
    return Result::Ok;
}

void ChangeEdlGenerator::mergeTransitions(EventList& changeList) const
{
    const std::vector<EventPtr> order = EventListAlgorithm::orderByDstIn(changeList);
    EventList merged(EventList::ChangeKind);
    for (size_t i = 0; i < order.size(); ++i) {
        EventBase& mixed = *order[i];
        if (!isTransition(mixed.getTransitionType()))
            continue;
        if (i + 1 < order.size()) {
            const EventPtr& rest = order[i + 1];
            const std::string& mixedName = nameOf(mixed);
            const std::string restName = "TRANS_" + nameOf(*rest);
            if (rest->getDstIn() == mixed.getDstOut() && rest->getSrcIn() == mixed.getSrcOut()
                && mixedName.compare(0, restName.size(), restName) == 0) {
                mixed.setTimecodes(mixed.getSrcIn(), rest->getSrcOut(), mixed.getDstIn(), rest->getDstOut());
                mixed.setRollName(rest->getRollName());
                mixed.setClipName(rest->getClipName());
                merged.addEvent(rest);
            }
        }
        mixed.setTransitionType(EventBase::Cut);
    }
    if (merged.getSize() > 0)
        changeList.removeEvents(merged);
}

} // namespace montala::core
