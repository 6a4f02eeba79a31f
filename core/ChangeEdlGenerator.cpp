#include "core/ChangeEdlGenerator.h"

#include "core/EventListAlgorithm.h"
#include "core/SourceIntervalIndex.h"
#include "util/Result.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
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

EventPtr makeChangeEvent(const EventBase& oldEvent, const EventBase& newEvent, const MatchShape& shape)
{
    auto event = std::make_shared<EventBase>();
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
// the inner one. A loser goes whole. Quadratic in the candidates given.
void walkRivals(std::vector<Rival>& rivals, double lastShift)
{
    auto distance = [lastShift](const Rival& r) { return std::fabs(r.timeShift - lastShift); };
    for (Rival& x : rivals) {
        if (!x.alive)
            continue;
        for (Rival& y : rivals) {
            if (&y == &x || !y.alive || !overlaps(x.newSrcStart, x.newSrcEnd, y.newSrcStart, y.newSrcEnd))
                continue;
            const bool deleteY = y.length == x.length ? distance(y) > distance(x) : y.length < x.length;
            if (deleteY) {
                y.alive = false;
            } else {
                x.alive = false;
                break;
            }
        }
    }
}

struct OldMember {
    EventPtr event;
    uint32_t position = 0;
};

// Old events of one key that match any New event alike: same source range,
// speed and transition (and, for a freeze, record length). Only their
// record places differ.
struct OldClass {
    std::vector<OldMember> members; // in key order
    // Distinct record starts in ascending order, each with the latest
    // member in key order that starts there.
    struct Place {
        double dstInSeconds;
        uint32_t member;
    };
    std::vector<Place> places;
};

struct ClassKey {
    int64_t srcIn;
    int64_t srcOut;
    uint64_t speedBits;
    int transitionType;
    int transitionDuration;
    int freezeLength; // record frames of a freeze, else -1
    bool operator<(const ClassKey& o) const
    {
        return std::tie(srcIn, srcOut, speedBits, transitionType, transitionDuration, freezeLength)
            < std::tie(o.srcIn, o.srcOut, o.speedBits, o.transitionType, o.transitionDuration, o.freezeLength);
    }
};

// The Old events of one match key.
struct KeyGroup {
    std::vector<OldClass> classes;
    std::map<ClassKey, uint32_t> classOf;
    SourceIntervalIndex index;
    // Events whose timecodes do not fit the index (they never should, since
    // flawless events hold valid timecodes): tried against every New event.
    std::vector<OldMember> unindexed;
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
uint32_t classWinner(const OldClass& oldClass, const MatchShape& shape, double lastShift)
{
    const std::vector<OldClass::Place>& places = oldClass.places;
    auto signedDistance = [&](size_t i) { return timeShiftOf(places[i].dstInSeconds, shape) - lastShift; };
    size_t lo = 0;
    size_t hi = places.size();
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
    if (lo < places.size())
        best = std::min(best, std::fabs(signedDistance(lo)));
    uint32_t winner = 0;
    bool found = false;
    auto consider = [&](size_t i) {
        const uint32_t member = places[i].member;
        if (!found || oldClass.members[member].position > oldClass.members[winner].position)
            winner = member;
        found = true;
    };
    for (size_t i = lo; i-- > 0 && std::fabs(signedDistance(i)) == best;)
        consider(i);
    for (size_t i = lo; i < places.size() && std::fabs(signedDistance(i)) == best; ++i)
        consider(i);
    return winner;
}

std::string firstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
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
    splitList(list, nullptr);
}

void ChangeEdlGenerator::splitList(EventList& list, EventPtr* failed)
{
    EventList transitions(EventList::ChangeKind);
    const std::vector<EventPtr> events = list.getEvents();
    for (size_t i = 0; i < events.size(); ++i) {
        EventBase& incoming = *events[i];
        // Flawed ones too: a transition whose timecodes do not hold fails
        // here, loudly, instead of leaving its stretch out of the result.
        if (!isTransition(incoming.getTransitionType()))
            continue;
        if (failed != nullptr)
            *failed = events[i];
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

namespace {

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

    void add(const std::string& key, const EventPtr& event, uint32_t position, const Framerate& rate)
    {
        KeyGroup& group = groups[key];
        std::optional<ClassKey> classKey;
        double dstInSeconds = 0.0;
        try {
            classKey = classKeyOf(*event, rate);
            dstInSeconds = event->getDstIn().toSeconds();
        } catch (Result::Type) {
            classKey.reset();
        }
        if (!classKey) {
            group.unindexed.push_back({event, position});
            return;
        }
        const auto [it, added] = group.classOf.try_emplace(*classKey, static_cast<uint32_t>(group.classes.size()));
        if (added) {
            group.classes.emplace_back();
            group.index.add(classKey->srcIn, classKey->srcOut, it->second);
        }
        OldClass& oldClass = group.classes[it->second];
        oldClass.places.push_back({dstInSeconds, static_cast<uint32_t>(oldClass.members.size())});
        oldClass.members.push_back({event, position});
    }

    void build()
    {
        for (auto& [key, group] : groups) {
            group.index.build();
            group.classOf.clear();
            for (OldClass& oldClass : group.classes) {
                // Members come in key order, so the last of equal starts is
                // the latest: keep that one.
                std::stable_sort(oldClass.places.begin(), oldClass.places.end(),
                                 [](const OldClass::Place& a, const OldClass::Place& b) {
                                     return a.dstInSeconds < b.dstInSeconds;
                                 });
                std::vector<OldClass::Place> distinct;
                for (const OldClass::Place& place : oldClass.places) {
                    if (!distinct.empty() && distinct.back().dstInSeconds == place.dstInSeconds)
                        distinct.back() = place;
                    else
                        distinct.push_back(place);
                }
                oldClass.places = std::move(distinct);
            }
        }
    }

    // The candidates of the New event that survive the rival walk, in key
    // order. lastShift is the shift of the event emitted last.
    const std::vector<Survivor>& match(const std::string& key, const EventBase& newEvent, double lastShift,
                                       const std::function<void(const EventBase&)>& onFailure)
    {
        survivors.clear();
        const auto found = groups.find(key);
        if (found == groups.end())
            return survivors;
        const KeyGroup& group = found->second;
        classIds.clear();
        const std::optional<int64_t> srcIn = orderKey(newEvent.getSrcIn());
        const std::optional<int64_t> srcOut = orderKey(newEvent.getSrcOut());
        bool quick = srcIn && srcOut && group.unindexed.empty();
        if (srcIn && srcOut) {
            group.index.findOverlapping(*srcIn, *srcOut, classIds);
        } else {
            for (uint32_t id = 0; id < group.classes.size(); ++id)
                classIds.push_back(id);
        }
        if (quick) {
            try {
                matchByClass(group, newEvent, lastShift);
            } catch (Result::Type) {
                // Some placement leaves the day: walk the plain way, which
                // fails on the first such pair in key order.
                quick = false;
            }
        }
        if (!quick)
            matchOneByOne(group, newEvent, lastShift, onFailure);
        std::sort(survivors.begin(), survivors.end(),
                  [](const Survivor& a, const Survivor& b) { return a.position < b.position; });
        return survivors;
    }

private:
    struct Hit {
        uint32_t classId;
        MatchShape shape;
        Timecode length; // of the candidates' New source stretch
    };

    void matchByClass(const KeyGroup& group, const EventBase& newEvent, double lastShift)
    {
        hits.clear();
        for (uint32_t id : classIds) {
            const OldClass& oldClass = group.classes[id];
            Hit hit{id, {}, {}};
            if (!matchShape(*oldClass.members.front().event, newEvent, hit.shape))
                continue;
            // The latest record start places the latest Change event: if it
            // stays inside the day, every member's does.
            const EventBase& latest = *oldClass.members[oldClass.places.back().member].event;
            plus(changeSrcIn(latest, hit.shape), hit.shape.length);
            hit.length = minus(hit.shape.newSrcEnd, hit.shape.newSrcStart);
            hits.push_back(hit);
        }

        // A candidate of no length rivals nothing: all of its class stay.
        auto empty = [](const Hit& hit) { return !(hit.shape.newSrcStart < hit.shape.newSrcEnd); };
        for (const Hit& hit : hits) {
            if (empty(hit)) {
                for (const OldMember& member : group.classes[hit.classId].members)
                    keep(member, hit.shape);
            }
        }
        hits.erase(std::remove_if(hits.begin(), hits.end(), empty), hits.end());

        // Classes whose candidates overlap, directly or through others, go
        // through the walk together; apart from them nothing rivals them.
        std::sort(hits.begin(), hits.end(),
                  [](const Hit& a, const Hit& b) { return a.shape.newSrcStart < b.shape.newSrcStart; });
        size_t first = 0;
        while (first < hits.size()) {
            Timecode end = hits[first].shape.newSrcEnd;
            size_t last = first + 1;
            for (; last < hits.size() && hits[last].shape.newSrcStart < end; ++last) {
                if (end < hits[last].shape.newSrcEnd)
                    end = hits[last].shape.newSrcEnd;
            }
            if (last == first + 1) {
                const OldClass& oldClass = group.classes[hits[first].classId];
                keep(oldClass.members[classWinner(oldClass, hits[first].shape, lastShift)], hits[first].shape);
            } else {
                walkClasses(group, first, last, lastShift);
            }
            first = last;
        }
    }

    void keep(const OldMember& member, const MatchShape& shape)
    {
        survivors.push_back({member.position, member.event.get(), nullptr, &shape,
                             timeShiftOf(member.event->getDstIn().toSeconds(), shape)});
    }

    // The plain walk over the candidates of the classes hits[first, last).
    void walkClasses(const KeyGroup& group, size_t first, size_t last, double lastShift)
    {
        rivals.clear();
        rivalSources.clear();
        for (size_t h = first; h < last; ++h) {
            const Hit& hit = hits[h];
            for (const OldMember& member : group.classes[hit.classId].members) {
                rivals.push_back({member.position, hit.shape.newSrcStart, hit.shape.newSrcEnd, hit.length,
                                  timeShiftOf(member.event->getDstIn().toSeconds(), hit.shape), true});
                rivalSources.push_back({&member, &hit.shape});
            }
        }
        sortRivalsByPosition();
        walkRivals(rivals, lastShift);
        for (size_t i = 0; i < rivals.size(); ++i) {
            if (rivals[i].alive)
                keep(*rivalSources[order[i]].first, *rivalSources[order[i]].second);
        }
    }

    // The walk as it always was: every Old event that may overlap tried in
    // key order, the candidates made at once.
    void matchOneByOne(const KeyGroup& group, const EventBase& newEvent, double lastShift,
                       const std::function<void(const EventBase&)>& onFailure)
    {
        survivors.clear();
        std::vector<const OldMember*> tried;
        for (uint32_t id : classIds) {
            for (const OldMember& member : group.classes[id].members)
                tried.push_back(&member);
        }
        for (const OldMember& member : group.unindexed)
            tried.push_back(&member);
        std::sort(tried.begin(), tried.end(),
                  [](const OldMember* a, const OldMember* b) { return a->position < b->position; });

        std::vector<MatchCandidate> candidates;
        std::vector<const OldMember*> sources;
        for (const OldMember* member : tried) {
            MatchShape shape;
            MatchCandidate candidate;
            try {
                if (!matchShape(*member->event, newEvent, shape))
                    continue;
                candidate.event = makeChangeEvent(*member->event, newEvent, shape);
                candidate.timeShift = timeShiftOf(member->event->getDstIn().toSeconds(), shape);
            } catch (Result::Type) {
                onFailure(*member->event);
                throw;
            }
            candidate.newSrcStart = shape.newSrcStart;
            candidate.newSrcEnd = shape.newSrcEnd;
            candidates.push_back(std::move(candidate));
            sources.push_back(member);
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
                survivors.push_back({sources[i]->position, sources[i]->event.get(), candidates[i].event, nullptr,
                                     candidates[i].timeShift});
        }
    }

    // Sorts rivals (and, through order, their sources) by key order.
    void sortRivalsByPosition()
    {
        order.resize(rivals.size());
        for (size_t i = 0; i < order.size(); ++i)
            order[i] = i;
        std::sort(order.begin(), order.end(),
                  [this](size_t a, size_t b) { return rivals[a].position < rivals[b].position; });
        std::vector<Rival> sorted;
        sorted.reserve(rivals.size());
        for (size_t i : order)
            sorted.push_back(rivals[i]);
        rivals = std::move(sorted);
    }

    std::unordered_map<std::string, KeyGroup> groups;
    // Scratch of one New event, kept to spare allocations.
    std::vector<uint32_t> classIds;
    std::vector<Hit> hits;
    std::vector<Rival> rivals;
    std::vector<std::pair<const OldMember*, const MatchShape*>> rivalSources;
    std::vector<size_t> order;
    std::vector<Survivor> survivors;
};

} // namespace

int ChangeEdlGenerator::generate(const EventList& oldList, const EventList& newList, EventList& changeList)
{
    failure = GenerationFailure();
    changeList.clear();

    EventList oldCopy(EventList::ChangeKind);
    EventList newCopy(EventList::ChangeKind);
    oldCopy.copyEventsFrom(oldList);
    newCopy.copyEventsFrom(newList);
    for (EventList* copy : {&oldCopy, &newCopy}) {
        EventPtr failed;
        try {
            splitList(*copy, &failed);
        } catch (Result::Type code) {
            failure.code = code;
            failure.stage = copy == &oldCopy ? GenerationFailure::Stage::SplitOldTransition
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
    uint32_t position = 0;
    for (const EventPtr& event : oldCopy.getEvents()) {
        if (!event->isFlawless())
            continue;
        bool changedByVfx = false;
        const std::string key = matchKey(*event, changedByVfx);
        event->setVfx(changedByVfx);
        table.add(key, event, position++, rate);
    }
    table.build();

    double lastShift = 0.0;
    int nextNumber = 1;
    EventList emitted(EventList::ChangeKind);
    for (const EventPtr& newEvent : EventListAlgorithm::orderByDstIn(newCopy)) {
        if (!newEvent->isFlawless())
            continue;
        bool changedByVfx = false;
        const std::string key = matchKey(*newEvent, changedByVfx);
        newEvent->setVfx(changedByVfx);

        auto onFailure = [&](const EventBase& oldEvent) {
            failure.stage = GenerationFailure::Stage::Match;
            failure.event = infoOf(*newEvent);
            failure.oldEvent = infoOf(oldEvent);
            failure.reason = "a timecode of the Change event would leave the day (00:00:00:00 to 23:59:59)";
        };
        try {
            for (const OldEventTable::Survivor& survivor : table.match(key, *newEvent, lastShift, onFailure)) {
                EventPtr event = survivor.event ? survivor.event
                                                : makeChangeEvent(*survivor.oldEvent, *newEvent, *survivor.shape);
                event->setEventNumber(nextNumber++);
                emitted.addEvent(event);
                lastShift = survivor.timeShift;
            }
        } catch (Result::Type code) {
            failure.code = code;
            if (failure.stage != GenerationFailure::Stage::Match) {
                failure.stage = GenerationFailure::Stage::Match;
                failure.event = infoOf(*newEvent);
                failure.reason = "a timecode of the Change event would leave the day (00:00:00:00 to 23:59:59)";
            }
            throw;
        }
    }
    changeList.append(emitted);

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
