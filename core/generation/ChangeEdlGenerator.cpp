#include "core/generation/ChangeEdlGenerator.h"

#include "core/events/EventArena.h"
#include "core/events/EventListAlgorithm.h"
#include "core/generation/SourceIntervalIndex.h"
#include "util/Result.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <tuple>
#include <unordered_map>

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

// What the match of an Old event with a New event has in common with the
// match of any Old event of the same source range, speed and transition:
// everything but the Old event's record place.
struct MatchShape {
    enum Case { Normal, Freeze, Varispeed };
    Case speedCase = Normal;
    Timecode oldOffset;
    Timecode length;
    // DST of the Change event.
    Timecode dstIn;
    Timecode dstOut;
    Timecode newSrcStart;
    Timecode newSrcEnd;
    // The New side of the time shift, and the Old offset it subtracts.
    double newSide = 0.0;
    double oldOffsetSeconds = 0.0;
};

bool matchShape(const EventBase& oldEvent, const EventBase& newEvent, MatchShape& shape)
{
    if (!oldEvent.hasMotionSpeed(newEvent.getMotionSpeed())
        || oldEvent.getTransitionType() != newEvent.getTransitionType()
        || oldEvent.getTransitionDuration() != newEvent.getTransitionDuration())
        return false;
    Timecode oldOffset;
    Timecode newOffset;
    Timecode length;
    if (!ChangeEdlGenerator::computeOverlap(oldEvent.getSrcIn(), oldEvent.getSrcOut(), newEvent.getSrcIn(),
                                            newEvent.getSrcOut(), oldOffset, newOffset, length))
        return false;

    if (oldEvent.isNormalSpeed()) {
        shape.speedCase = MatchShape::Normal;
        shape.dstIn = plus(newEvent.getDstIn(), newOffset);
    } else if (oldEvent.hasMotionSpeed(0.0)) {
        // A freeze shows one frame however long it stands: take the
        // shorter of the two record lengths from both record starts.
        shape.speedCase = MatchShape::Freeze;
        length = minus(oldEvent.getDstOut(), oldEvent.getDstIn());
        const Timecode newLength = minus(newEvent.getDstOut(), newEvent.getDstIn());
        if (newLength < length)
            length = newLength;
        shape.dstIn = newEvent.getDstIn();
    } else {
        // Source time becomes record time: S seconds of source last
        // S / speed on the timeline.
        shape.speedCase = MatchShape::Varispeed;
        const double speed = oldEvent.getMotionSpeed();
        length = Timecode(length.toSeconds() / speed);
        oldOffset = Timecode(oldOffset.toSeconds() / speed);
        newOffset = Timecode(newOffset.toSeconds() / speed);
        shape.dstIn = plus(newEvent.getDstIn(), newOffset);
    }
    shape.dstOut = plus(shape.dstIn, length);
    shape.oldOffset = oldOffset;
    shape.length = length;

    // These only rank rivals. For a varispeed they mix source time with
    // record lengths, and for a freeze they use offsets the event does not;
    // the ranking has always been made this way.
    shape.newSide = newEvent.getDstIn().toSeconds() + newOffset.toSeconds();
    shape.oldOffsetSeconds = oldOffset.toSeconds();
    shape.newSrcStart = plus(newEvent.getSrcIn(), newOffset);
    shape.newSrcEnd = plus(shape.newSrcStart, length);
    return true;
}

// oldDstIn is the seconds of the Old event's DST IN.
double timeShiftOf(double oldDstIn, const MatchShape& shape)
{
    return shape.newSide - (oldDstIn + shape.oldOffsetSeconds);
}

Timecode changeSrcIn(const EventBase& oldEvent, const MatchShape& shape)
{
    return shape.speedCase == MatchShape::Freeze ? oldEvent.getDstIn() : plus(oldEvent.getDstIn(), shape.oldOffset);
}

EventPtr makeChangeEvent(const EventBase& oldEvent, const EventBase& newEvent, const MatchShape& shape,
                         EventArena* arena = nullptr)
{
    EventPtr event = arena ? arena->makeEvent() : std::make_shared<EventBase>();
    event->setRollName(newEvent.getRollName());
    event->setClipName(newEvent.getClipName());
    event->setVfx(newEvent.isVfx());
    if (isTransition(oldEvent.getTransitionType()))
        event->setTransitionType(oldEvent.getTransitionType());
    const Timecode srcIn = changeSrcIn(oldEvent, shape);
    event->setTimecodes(srcIn, plus(srcIn, shape.length), shape.dstIn, shape.dstOut);
    return event;
}

bool overlaps(const Timecode& aIn, const Timecode& aOut, const Timecode& bIn, const Timecode& bOut)
{
    const Timecode& start = aIn < bIn ? bIn : aIn;
    const Timecode& end = bOut < aOut ? bOut : aOut;
    return start < end;
}

// A timecode as one number in the order of Timecode::operator<, for the
// interval index. Only fields that a valid timecode can hold fit.
std::optional<int64_t> orderKey(const Timecode& tc)
{
    const int fields[] = {tc.getHours(), tc.getMinutes(), tc.getSeconds(), tc.getFrames()};
    int64_t key = 0;
    for (int field : fields) {
        if (field < 0 || field >= (1 << 15))
            return std::nullopt;
        key = (key << 15) | field;
    }
    return key;
}

// One candidate of a New event as the rival walk sees it.
struct Rival {
    uint32_t position = 0; // of the Old event, in key order
    Timecode newSrcStart;
    Timecode newSrcEnd;
    Timecode length;
    double timeShift = 0.0;
    bool alive = true;
};

// The rule between two rivals, applied pairwise with two cursors: the
// outer cursor x walks the candidates in order; for each, the inner cursor
// walks all others from the first. Of two rivals the longer stays; of two
// of one length, the one whose shift lies nearer lastShift; on an exact tie
// the inner one. A loser goes whole. Every meeting of two rivals removes
// one of them, so the walk costs the candidates times those that do not
// rival the outer one: quadratic at worst, linear when all are rivals. The
// candidates still in play are linked in order, so that the removed ones
// cost nothing more.
void walkRivals(std::vector<Rival>& rivals, double lastShift)
{
    const uint32_t none = static_cast<uint32_t>(rivals.size());
    std::vector<uint32_t> next(rivals.size());
    std::vector<uint32_t> previous(rivals.size());
    for (uint32_t i = 0; i < none; ++i) {
        next[i] = i + 1;
        previous[i] = i == 0 ? none : i - 1;
    }
    uint32_t head = 0;
    auto remove = [&](uint32_t i) {
        rivals[i].alive = false;
        if (previous[i] == none)
            head = next[i];
        else
            next[previous[i]] = next[i];
        if (next[i] != none)
            previous[next[i]] = previous[i];
    };
    auto distance = [lastShift](const Rival& r) { return std::fabs(r.timeShift - lastShift); };
    for (uint32_t x = head; x != none;) {
        const Rival& outer = rivals[x];
        for (uint32_t y = head; y != none;) {
            const uint32_t behindY = next[y];
            const Rival& inner = rivals[y];
            if (y != x && overlaps(outer.newSrcStart, outer.newSrcEnd, inner.newSrcStart, inner.newSrcEnd)) {
                const bool removeY =
                    inner.length == outer.length ? distance(inner) > distance(outer) : inner.length < outer.length;
                if (!removeY) {
                    remove(x);
                    break;
                }
                remove(y);
            }
            y = behindY;
        }
        // The element behind x as the list now stands; a removed x keeps
        // the link it had when it went.
        x = next[x];
    }
}

struct OldMember {
    const EventBase* event;
    uint32_t position; // in key order
};

// Old events of one key that match any New event alike: same source range,
// speed and transition (and, for a freeze, record length). Only their
// record places differ. Members and places are stretches of the table's
// flat arrays.
struct OldClass {
    uint32_t memberBegin; // members in key order
    uint32_t memberEnd;
    // Distinct record starts in ascending order, each with the latest
    // member in key order that starts there.
    uint32_t placeBegin;
    uint32_t placeEnd;
};

struct Place {
    double dstInSeconds;
    uint32_t member;
};

struct ClassKey {
    int64_t srcIn;
    int64_t srcOut;
    uint64_t speedBits;
    int transitionType;
    int transitionDuration;
    int freezeLength; // record frames of a freeze, else -1
    auto tied() const { return std::tie(srcIn, srcOut, speedBits, transitionType, transitionDuration, freezeLength); }
};

std::optional<ClassKey> classKeyOf(const EventBase& event, const Framerate& rate)
{
    const std::optional<int64_t> srcIn = orderKey(event.getSrcIn());
    const std::optional<int64_t> srcOut = orderKey(event.getSrcOut());
    if (!srcIn || !srcOut)
        return std::nullopt;
    ClassKey key{*srcIn, *srcOut, 0, event.getTransitionType(), event.getTransitionDuration(), -1};
    const double speed = event.getMotionSpeed();
    std::memcpy(&key.speedBits, &speed, sizeof speed);
    if (!event.isNormalSpeed() && event.hasMotionSpeed(0.0))
        key.freezeLength = event.getDstOut().toFrames(rate) - event.getDstIn().toFrames(rate);
    return key;
}

// The candidate of a class that the walk keeps when the class rivals nothing
// else: all its candidates share one range, so each rivals every other, and
// the walk leaves the one whose shift lies nearest lastShift, the latest in
// key order on a tie. The shift falls as the record start rises, so the
// distance falls and then rises over the places: search for the turn.
uint32_t classWinner(const Place* places, size_t count, const std::vector<OldMember>& members,
                     const MatchShape& shape, double lastShift)
{
    auto signedDistance = [&](size_t i) { return timeShiftOf(places[i].dstInSeconds, shape) - lastShift; };
    size_t lo = 0;
    size_t hi = count;
    while (lo < hi) {
        const size_t mid = lo + (hi - lo) / 2;
        if (signedDistance(mid) >= 0.0)
            lo = mid + 1;
        else
            hi = mid;
    }
    // Places before lo lie at or above lastShift, from lo on below it.
    double best = std::numeric_limits<double>::infinity();
    if (lo > 0)
        best = std::fabs(signedDistance(lo - 1));
    if (lo < count)
        best = std::min(best, std::fabs(signedDistance(lo)));
    const uint32_t none = std::numeric_limits<uint32_t>::max();
    uint32_t winner = none;
    auto consider = [&](size_t i) {
        if (winner == none || members[places[i].member].position > members[winner].position)
            winner = places[i].member;
    };
    for (size_t i = lo; i-- > 0 && std::fabs(signedDistance(i)) == best;)
        consider(i);
    for (size_t i = lo; i < count && std::fabs(signedDistance(i)) == best; ++i)
        consider(i);
    return winner;
}

std::string firstLine(std::string_view text)
{
    return std::string(text.substr(0, text.find('\n')));
}

GenerationFailure::EventInfo infoOf(const EventBase& event)
{
    GenerationFailure::EventInfo info;
    info.eventNumber = event.getEventNumber();
    info.rollName = event.getRollName();
    info.clipName = event.getClipName();
    info.edlFile = event.getEdlFile();
    info.lineText = firstLine(event.getEdlText());
    return info;
}

// Why a transition could not be split.
std::string transitionFault(const EventBase& event)
{
    if (Timecode::getFramerateProvider() == nullptr)
        return "no frame rate is set";
    const Framerate rate = Timecode::currentFramerate();
    const std::pair<const char*, const Timecode*> fields[] = {{"SRC IN", &event.getSrcIn()},
                                                              {"SRC OUT", &event.getSrcOut()},
                                                              {"DST IN", &event.getDstIn()},
                                                              {"DST OUT", &event.getDstOut()}};
    for (const auto& [name, tc] : fields) {
        if (!tc->isValid(rate))
            return std::string(name) + " " + tc->toString() + " is not a valid timecode at the project's frame rate";
    }
    if (event.getSrcOut() < event.getSrcIn())
        return "SRC OUT " + event.getSrcOut().toString() + " lies before SRC IN " + event.getSrcIn().toString();
    if (event.getDstOut() < event.getDstIn())
        return "DST OUT " + event.getDstOut().toString() + " lies before DST IN " + event.getDstIn().toString();
    if (event.getTransitionDuration() < 0)
        return "its transition length " + std::to_string(event.getTransitionDuration()) + " is negative";
    return "its transition of " + std::to_string(event.getTransitionDuration())
        + " frames would leave the day (00:00:00:00 to 23:59:59)";
}

} // namespace

void ChangeEdlGenerator::configure(MatchName rule, const std::vector<VfxPatternEntry>& vfxPatterns)
{
    failure = GenerationFailure();
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
    MatchShape shape;
    if (!matchShape(oldEvent, newEvent, shape))
        return false;
    candidate.event = makeChangeEvent(oldEvent, newEvent, shape);
    candidate.timeShift = timeShiftOf(oldEvent.getDstIn().toSeconds(), shape);
    candidate.newSrcStart = shape.newSrcStart;
    candidate.newSrcEnd = shape.newSrcEnd;
    return true;
}

void ChangeEdlGenerator::splitTransitions(EventList& list) const
{
    std::vector<EventPtr> events = list.getEvents();
    const size_t before = events.size();
    splitEvents(events, false, nullptr);
    EventList transitions(EventList::ChangeKind);
    for (size_t i = before; i < events.size(); ++i)
        transitions.addEvent(events[i]);
    list.append(transitions);
}

void ChangeEdlGenerator::splitEvents(std::vector<EventPtr>& events, bool copyChanged, EventPtr* failed)
{
    const size_t count = events.size();
    for (size_t i = 0; i < count; ++i) {
        // Flawed ones too: a transition whose timecodes do not hold fails
        // here, loudly, instead of leaving its stretch out of the result.
        if (!isTransition(events[i]->getTransitionType()))
            continue;
        if (failed != nullptr)
            *failed = events[i];
        if (copyChanged) {
            auto copy = std::make_shared<EventBase>();
            *copy = *events[i];
            events[i] = std::move(copy);
        }
        EventBase& incoming = *events[i];
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
        events.push_back(std::move(mixed));
    }
}

namespace {

// The flawless events in ascending DST IN, equal ones in list order, sorted
// on keys held side by side rather than through the events, which a long
// list would scatter over memory.
std::vector<EventPtr> flawlessByDstIn(const std::vector<EventPtr>& events)
{
    struct Keyed {
        int64_t dstIn;
        uint32_t index;
    };
    std::vector<Keyed> keyed;
    keyed.reserve(events.size());
    for (size_t i = 0; i < events.size(); ++i) {
        if (!events[i]->isFlawless())
            continue;
        const std::optional<int64_t> key = orderKey(events[i]->getDstIn());
        if (!key) {
            std::vector<EventPtr> order;
            std::copy_if(events.begin(), events.end(), std::back_inserter(order),
                         [](const EventPtr& e) { return e->isFlawless(); });
            std::stable_sort(order.begin(), order.end(),
                             [](const EventPtr& a, const EventPtr& b) { return a->getDstIn() < b->getDstIn(); });
            return order;
        }
        keyed.push_back({*key, static_cast<uint32_t>(i)});
    }
    std::stable_sort(keyed.begin(), keyed.end(), [](const Keyed& a, const Keyed& b) { return a.dstIn < b.dstIn; });
    std::vector<EventPtr> order;
    order.reserve(keyed.size());
    for (const Keyed& k : keyed)
        order.push_back(events[k.index]);
    return order;
}

// The Old events by key, and the search of one New event's candidates.
class OldEventTable {
public:
    // A candidate the walk kept: the Old event and, if already made, the
    // Change event; otherwise the shape it is made from.
    struct Survivor {
        uint32_t position;
        const EventBase* oldEvent;
        EventPtr event;
        const MatchShape* shape;
        double timeShift;
    };

    void add(const std::string& key, const EventBase& event, uint32_t position, const Framerate& rate)
    {
        const uint32_t group = groupIds.try_emplace(key, static_cast<uint32_t>(groupIds.size())).first->second;
        std::optional<ClassKey> classKey;
        double dstInSeconds = 0.0;
        try {
            classKey = classKeyOf(event, rate);
            dstInSeconds = event.getDstIn().toSeconds();
        } catch (Result::Type) {
            classKey.reset();
        }
        if (classKey)
            pending.push_back({group, *classKey, {&event, position}, dstInSeconds});
        else
            unindexed.push_back({group, {&event, position}});
    }

    void build()
    {
        // Events came in key order; a stable sort keeps it within a class.
        std::stable_sort(pending.begin(), pending.end(), [](const Pending& a, const Pending& b) {
            return a.group != b.group ? a.group < b.group : a.key.tied() < b.key.tied();
        });
        members.reserve(pending.size());
        places.reserve(pending.size());
        for (size_t first = 0; first < pending.size();) {
            size_t last = first + 1;
            while (last < pending.size() && pending[last].group == pending[first].group
                   && pending[last].key.tied() == pending[first].key.tied())
                ++last;
            OldClass oldClass{static_cast<uint32_t>(members.size()), 0, static_cast<uint32_t>(places.size()), 0};
            for (size_t i = first; i < last; ++i) {
                places.push_back({pending[i].dstInSeconds, static_cast<uint32_t>(members.size())});
                members.push_back(pending[i].member);
            }
            oldClass.memberEnd = static_cast<uint32_t>(members.size());
            // Of equal record starts the last is the latest in key order:
            // keep that one.
            std::stable_sort(places.begin() + oldClass.placeBegin, places.end(),
                             [](const Place& a, const Place& b) { return a.dstInSeconds < b.dstInSeconds; });
            size_t kept = oldClass.placeBegin;
            for (size_t i = oldClass.placeBegin; i < places.size(); ++i) {
                if (i > oldClass.placeBegin && places[i].dstInSeconds == places[kept - 1].dstInSeconds)
                    places[kept - 1] = places[i];
                else
                    places[kept++] = places[i];
            }
            places.resize(kept);
            oldClass.placeEnd = static_cast<uint32_t>(places.size());
            index.add(pending[first].group, pending[first].key.srcIn, pending[first].key.srcOut,
                      static_cast<uint32_t>(classes.size()));
            classes.push_back(oldClass);
            classGroup.push_back(pending[first].group);
            first = last;
        }
        pending.clear();
        pending.shrink_to_fit();
        index.build();
        std::stable_sort(unindexed.begin(), unindexed.end(),
                         [](const Unindexed& a, const Unindexed& b) { return a.group < b.group; });
    }

    // The candidates of the New event that survive the rival walk, in key
    // order. lastShift is the shift of the event emitted last.
    const std::vector<Survivor>& match(const std::string& key, const EventBase& newEvent, double lastShift,
                                       const std::function<void(const EventBase&)>& onFailure)
    {
        survivors.clear();
        const auto found = groupIds.find(key);
        if (found == groupIds.end())
            return survivors;
        const uint32_t group = found->second;
        const auto [unindexedBegin, unindexedEnd] =
            std::equal_range(unindexed.begin(), unindexed.end(), Unindexed{group, {}},
                             [](const Unindexed& a, const Unindexed& b) { return a.group < b.group; });
        classIds.clear();
        const std::optional<int64_t> srcIn = orderKey(newEvent.getSrcIn());
        const std::optional<int64_t> srcOut = orderKey(newEvent.getSrcOut());
        bool quick = srcIn && srcOut && unindexedBegin == unindexedEnd;
        if (srcIn && srcOut) {
            index.findOverlapping(group, *srcIn, *srcOut, classIds);
        } else {
            // Not to be found through the index: try every class of the key.
            for (uint32_t id = 0; id < classes.size(); ++id) {
                if (classGroup[id] == group)
                    classIds.push_back(id);
            }
        }
        if (quick) {
            try {
                matchByClass(newEvent, lastShift);
            } catch (Result::Type) {
                // Some placement leaves the day: walk the plain way, which
                // fails on the first such pair in key order.
                quick = false;
            }
        }
        if (!quick) {
            tried.clear();
            for (uint32_t id : classIds) {
                for (uint32_t m = classes[id].memberBegin; m < classes[id].memberEnd; ++m)
                    tried.push_back(members[m]);
            }
            for (auto it = unindexedBegin; it != unindexedEnd; ++it)
                tried.push_back(it->member);
            matchOneByOne(newEvent, lastShift, onFailure);
        }
        std::sort(survivors.begin(), survivors.end(),
                  [](const Survivor& a, const Survivor& b) { return a.position < b.position; });
        return survivors;
    }

private:
    struct Pending {
        uint32_t group;
        ClassKey key;
        OldMember member;
        double dstInSeconds;
    };
    struct Unindexed {
        uint32_t group;
        OldMember member;
    };
    struct Hit {
        uint32_t classId;
        MatchShape shape;
    };

    void matchByClass(const EventBase& newEvent, double lastShift)
    {
        hits.clear();
        for (uint32_t id : classIds) {
            const OldClass& oldClass = classes[id];
            Hit hit{id, {}};
            if (!matchShape(*members[oldClass.memberBegin].event, newEvent, hit.shape))
                continue;
            // The latest record start places the latest Change event: if it
            // stays inside the day, every member's does.
            const EventBase& latest = *members[places[oldClass.placeEnd - 1].member].event;
            plus(changeSrcIn(latest, hit.shape), hit.shape.length);
            hits.push_back(hit);
        }

        // A candidate of no length rivals nothing: all of its class stay.
        // Those classes go behind the others, where they stay put, since
        // the survivors point at their shapes.
        const size_t withLength = static_cast<size_t>(
            std::partition(hits.begin(), hits.end(),
                           [](const Hit& hit) { return hit.shape.newSrcStart < hit.shape.newSrcEnd; })
            - hits.begin());
        for (size_t h = withLength; h < hits.size(); ++h) {
            for (uint32_t m = classes[hits[h].classId].memberBegin; m < classes[hits[h].classId].memberEnd; ++m)
                keep(members[m], hits[h].shape);
        }

        // Classes whose candidates overlap, directly or through others, go
        // through the walk together; apart from them nothing rivals them.
        std::sort(hits.begin(), hits.begin() + static_cast<std::ptrdiff_t>(withLength),
                  [](const Hit& a, const Hit& b) { return a.shape.newSrcStart < b.shape.newSrcStart; });
        size_t first = 0;
        while (first < withLength) {
            Timecode end = hits[first].shape.newSrcEnd;
            size_t last = first + 1;
            for (; last < withLength && hits[last].shape.newSrcStart < end; ++last) {
                if (end < hits[last].shape.newSrcEnd)
                    end = hits[last].shape.newSrcEnd;
            }
            if (allRivals(first, last))
                keepBestOf(first, last, lastShift);
            else
                walkClasses(first, last, lastShift);
            first = last;
        }
    }

    // Whether every candidate of hits[first, last) rivals every other. Ranges
    // that overlap pairwise share a stretch, so it is enough that the latest
    // start lies before the earliest end.
    bool allRivals(size_t first, size_t last) const
    {
        const Timecode* latestStart = &hits[first].shape.newSrcStart;
        const Timecode* earliestEnd = &hits[first].shape.newSrcEnd;
        for (size_t h = first + 1; h < last; ++h) {
            if (*latestStart < hits[h].shape.newSrcStart)
                latestStart = &hits[h].shape.newSrcStart;
            if (hits[h].shape.newSrcEnd < *earliestEnd)
                earliestEnd = &hits[h].shape.newSrcEnd;
        }
        return *latestStart < *earliestEnd;
    }

    // When all candidates rival each other, the walk comes down to a
    // champion carried along the candidates in order, replaced by each one
    // that is longer, or as long and no farther from lastShift. What stays
    // is the longest, then nearest, then latest in key order: in each class
    // its own winner, and of those the best.
    //
    //   class A  |=========|        (longest: its nearest member stays)
    //   class B     |======|
    //   class C   |=====|
    void keepBestOf(size_t first, size_t last, double lastShift)
    {
        const OldMember* best = nullptr;
        const Hit* bestHit = nullptr;
        Timecode bestLength;
        double bestDistance = 0.0;
        for (size_t h = first; h < last; ++h) {
            const Hit& hit = hits[h];
            const OldClass& oldClass = classes[hit.classId];
            const OldMember& member = members[classWinner(places.data() + oldClass.placeBegin,
                                                          oldClass.placeEnd - oldClass.placeBegin, members,
                                                          hit.shape, lastShift)];
            const Timecode length = last == first + 1 ? Timecode() : minus(hit.shape.newSrcEnd, hit.shape.newSrcStart);
            const double distance =
                std::fabs(timeShiftOf(member.event->getDstIn().toSeconds(), hit.shape) - lastShift);
            const bool better = best == nullptr
                || (length == bestLength ? distance < bestDistance
                                               || (distance == bestDistance && member.position > best->position)
                                         : bestLength < length);
            if (better) {
                best = &member;
                bestHit = &hit;
                bestLength = length;
                bestDistance = distance;
            }
        }
        keep(*best, bestHit->shape);
    }

    void keep(const OldMember& member, const MatchShape& shape)
    {
        survivors.push_back(
            {member.position, member.event, nullptr, &shape, timeShiftOf(member.event->getDstIn().toSeconds(), shape)});
    }

    // The plain walk over the candidates of the classes hits[first, last).
    void walkClasses(size_t first, size_t last, double lastShift)
    {
        struct Source {
            const OldMember* member;
            const MatchShape* shape;
        };
        std::vector<std::pair<Rival, Source>> candidates;
        for (size_t h = first; h < last; ++h) {
            const Hit& hit = hits[h];
            const Timecode length = minus(hit.shape.newSrcEnd, hit.shape.newSrcStart);
            for (uint32_t m = classes[hit.classId].memberBegin; m < classes[hit.classId].memberEnd; ++m) {
                const OldMember& member = members[m];
                candidates.push_back({{member.position, hit.shape.newSrcStart, hit.shape.newSrcEnd, length,
                                       timeShiftOf(member.event->getDstIn().toSeconds(), hit.shape), true},
                                      {&member, &hit.shape}});
            }
        }
        std::sort(candidates.begin(), candidates.end(),
                  [](const auto& a, const auto& b) { return a.first.position < b.first.position; });
        rivals.clear();
        for (const auto& candidate : candidates)
            rivals.push_back(candidate.first);
        walkRivals(rivals, lastShift);
        for (size_t i = 0; i < rivals.size(); ++i) {
            if (rivals[i].alive)
                keep(*candidates[i].second.member, *candidates[i].second.shape);
        }
    }

    // The walk as it always was: every Old event in tried that may overlap,
    // in key order, the candidates made at once.
    void matchOneByOne(const EventBase& newEvent, double lastShift,
                       const std::function<void(const EventBase&)>& onFailure)
    {
        survivors.clear();
        std::sort(tried.begin(), tried.end(),
                  [](const OldMember& a, const OldMember& b) { return a.position < b.position; });
        std::vector<MatchCandidate> candidates;
        std::vector<const OldMember*> sources;
        for (const OldMember& member : tried) {
            MatchShape shape;
            MatchCandidate candidate;
            try {
                if (!matchShape(*member.event, newEvent, shape))
                    continue;
                candidate.event = makeChangeEvent(*member.event, newEvent, shape);
                candidate.timeShift = timeShiftOf(member.event->getDstIn().toSeconds(), shape);
            } catch (Result::Type) {
                onFailure(*member.event);
                throw;
            }
            candidate.newSrcStart = shape.newSrcStart;
            candidate.newSrcEnd = shape.newSrcEnd;
            candidates.push_back(std::move(candidate));
            sources.push_back(&member);
        }
        rivals.clear();
        for (size_t i = 0; i < candidates.size(); ++i) {
            const MatchCandidate& c = candidates[i];
            rivals.push_back({sources[i]->position, c.newSrcStart, c.newSrcEnd, minus(c.newSrcEnd, c.newSrcStart),
                              c.timeShift, true});
        }
        walkRivals(rivals, lastShift);
        for (size_t i = 0; i < candidates.size(); ++i) {
            if (rivals[i].alive)
                survivors.push_back(
                    {sources[i]->position, sources[i]->event, candidates[i].event, nullptr, candidates[i].timeShift});
        }
    }

    std::unordered_map<std::string, uint32_t> groupIds;
    std::vector<Pending> pending;
    std::vector<OldClass> classes;
    std::vector<uint32_t> classGroup; // the key of each class
    std::vector<OldMember> members;
    std::vector<Place> places;
    SourceIntervalIndex index;
    // Events whose timecodes do not fit the index (they never should, since
    // flawless events hold valid timecodes): tried against every New event
    // of their key. Sorted by group.
    std::vector<Unindexed> unindexed;

    // Scratch of one New event, kept to spare allocations.
    std::vector<uint32_t> classIds;
    std::vector<Hit> hits;
    std::vector<Rival> rivals;
    std::vector<OldMember> tried;
    std::vector<Survivor> survivors;
};

} // namespace

int ChangeEdlGenerator::generate(const EventList& oldList, const EventList& newList, EventList& changeList)
{
    failure = GenerationFailure();
    changeList.clear();

    // The input lists' events are shared, not copied: only a split
    // transition gets events of its own, and the VFX flag of a New event
    // goes straight to its Change events.
    std::vector<EventPtr> oldEvents = oldList.getEvents();
    std::vector<EventPtr> newEvents = newList.getEvents();
    for (std::vector<EventPtr>* events : {&oldEvents, &newEvents}) {
        EventPtr failed;
        try {
            splitEvents(*events, true, &failed);
        } catch (Result::Type code) {
            failure.code = code;
            failure.stage = events == &oldEvents ? GenerationFailure::Stage::SplitOldTransition
                                                 : GenerationFailure::Stage::SplitNewTransition;
            if (failed) {
                failure.event = infoOf(*failed);
                failure.reason = transitionFault(*failed);
            }
            throw;
        }
    }

    const Framerate rate = Timecode::currentFramerate();
    OldEventTable table;
    // Most Change events are made here, one after the other.
    EventArena arena;
    arena.expect(newEvents.size());
    uint32_t position = 0;
    for (const EventPtr& event : oldEvents) {
        if (!event->isFlawless())
            continue;
        bool changedByVfx = false;
        table.add(matchKey(*event, changedByVfx), *event, position++, rate);
    }
    table.build();

    double lastShift = 0.0;
    int nextNumber = 1;
    for (const EventPtr& newEvent : flawlessByDstIn(newEvents)) {
        bool changedByVfx = false;
        const std::string key = matchKey(*newEvent, changedByVfx);

        auto onFailure = [&](const EventBase& oldEvent) {
            failure.stage = GenerationFailure::Stage::Match;
            failure.event = infoOf(*newEvent);
            failure.oldEvent = infoOf(oldEvent);
            failure.reason = "a timecode of the Change event would leave the day (00:00:00:00 to 23:59:59)";
        };
        try {
            for (const OldEventTable::Survivor& survivor : table.match(key, *newEvent, lastShift, onFailure)) {
                EventPtr event = survivor.event ? survivor.event
                                                : makeChangeEvent(*survivor.oldEvent, *newEvent, *survivor.shape, &arena);
                event->setEventNumber(nextNumber++);
                event->setVfx(changedByVfx);
                changeList.addEvent(event);
                lastShift = survivor.timeShift;
            }
        } catch (Result::Type code) {
            // No half of a Change EDL is left behind.
            changeList.clear();
            failure.code = code;
            if (failure.stage != GenerationFailure::Stage::Match) {
                failure.stage = GenerationFailure::Stage::Match;
                failure.event = infoOf(*newEvent);
                failure.reason = "a timecode of the Change event would leave the day (00:00:00:00 to 23:59:59)";
            }
            throw;
        }
    }
    mergeTransitions(changeList);
    return Result::Ok;
}

void ChangeEdlGenerator::mergeTransitions(EventList& changeList) const
{
    const std::vector<EventPtr>& events = changeList.getEvents();
    if (std::none_of(events.begin(), events.end(),
                     [](const EventPtr& e) { return isTransition(e->getTransitionType()); }))
        return;
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
