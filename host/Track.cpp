#include "host/Track.h"

#include "host/HostCalls.h"

#include "core/time/Tolerances.h"

#include "kelmar/project/IAudioChainEntry.h"
#include "kelmar/project/IAudioChainEvent.h"
#include "kelmar/project/IAutomationCurvePoint.h"
#include "kelmar/project/IAutomationPoint.h"
#include "kelmar/project/IAutomationTrack.h"
#include "kelmar/edit/IEditContext.h"
#include "kelmar/base/IObjectIterator.h"
#include "kelmar/base/String.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace montala::host {

using util::Result;

namespace {

constexpr const char* lockStateAttribute = "Montala:LockState";
constexpr const char* userIdAttribute = "MontEventUserId";

// Every child of `object`, each with a reference of its own.
std::vector<Kelmar::IPtr<Kelmar::IProjectObject>> childrenOf(Kelmar::IProjectObject& object)
{
    std::vector<Kelmar::IPtr<Kelmar::IProjectObject>> children;
    Kelmar::IPtr<Kelmar::IObjectIterator> iterator = Kelmar::owned(object.getChildren());
    if (!iterator)
        return children;
    while (!iterator->atEnd()) {
        Kelmar::IPtr<Kelmar::IProjectObject> child = Kelmar::owned(iterator->next());
        if (!child)
            break;
        children.push_back(std::move(child));
    }
    return children;
}

bool readInteger(Kelmar::IProjectObject& object, const char* name, int64_t& value)
{
    Kelmar::FVariant variant;
    if (object.getAttribute(name, variant) != Kelmar::kResultOk || !variant.isInt())
        return false;
    value = variant.getInt();
    return true;
}

} // namespace

const char* trackTypeName(int type)
{
    for (const core::MarkerKindRow& row : core::markerKinds())
        if (static_cast<int>(row.kind) == type)
            return row.trackName;
    switch (static_cast<TrackType>(type)) {
    case TrackType::Memos: return "Memos";
    case TrackType::NewVideo: return "New Video";
    case TrackType::Folder: return "Montala Markers";
    case TrackType::OldVideo: return "Old Video";
    default:
        // The marker kinds' tracks are named by their table above.
        break;
    }
    return "INVALID!";
}

Track::Track(TrackHome* owner, Kelmar::ITrack* track)
    : home(owner), hostTrack(track), seenChanges(owner ? owner->changeCount() : 0)
{
}

// ---- Identity

bool Track::isValid()
{
    if (!home || !hostTrack)
        return false;
    const uint64_t changes = home->changeCount();
    if (changes != seenChanges) {
        // Only the pointer is compared: a track that left may be gone.
        if (!home->containsTrack(hostTrack)) {
            hostTrack = nullptr;
            automation.clear();
            forgetAutomationValues();
            return false;
        }
        seenChanges = changes;
    }
    return true;
}

Kelmar::IPtr<Kelmar::IProjectObject> Track::object() const
{
    if (!hostTrack)
        throw Result::NotInitialized;
    return queryRequired<Kelmar::IProjectObject>(hostTrack);
}

HostClock Track::clock() const
{
    if (!home)
        throw Result::NotInitialized;
    return home->clock();
}

// ---- Selection, lock, kind, type, name

bool Track::isSelected() const { return object()->isSelected(); }

bool Track::isLocked() const
{
    if (!hostTrack)
        throw Result::NotInitialized;
    return hostTrack->getToggle("lock") == Kelmar::kResultOk;
}

void Track::setLocked(bool on)
{
    if (!hostTrack)
        throw Result::NotInitialized;
    // A locked track refuses every change, its attributes among them: the
    // mark is written while the track is open, before locking, after unlocking.
    const Kelmar::FVariant mark(static_cast<Kelmar::int64>(on ? 1 : 0));
    if (on) {
        check(object()->setAttribute(lockStateAttribute, mark, 1));
        // A lock the host refused is not claimed: the mark would lock the
        // track again the next time the project is loaded.
        if (hostTrack->setToggle("lock", true) != Kelmar::kResultOk) {
            object()->setAttribute(lockStateAttribute, Kelmar::FVariant(static_cast<Kelmar::int64>(0)), 1);
            throw Result::HostCallFailed;
        }
        return;
    }
    check(hostTrack->setToggle("lock", on));
    if (!on)
        check(object()->setAttribute(lockStateAttribute, mark, 1));
}

bool Track::hasLockState()
{
    if (!isValid())
        return false;
    int64_t value = 0;
    return readInteger(*object(), lockStateAttribute, value) && value != 0;
}

bool Track::isAudioTrack() const
{
    auto asObject = object();
    return asObject->isKind("track") && asObject->isKind("audio");
}

bool Track::isMarkerTrack() const
{
    auto asObject = object();
    return asObject->isKind("track") && asObject->isKind("marker");
}

bool Track::isVideoTrack() const
{
    auto asObject = object();
    return asObject->isKind("track") && asObject->isKind("video");
}

bool Track::isFolderTrack() const
{
    auto asObject = object();
    return asObject->isKind("track") && asObject->isKind("folder");
}

const char* Track::typeAttribute() const
{
    if (isMarkerTrack())
        return "Montala:MarkerType";
    if (isVideoTrack())
        return "Montala:VideoType";
    if (isFolderTrack())
        return "Montala:FolderType";
    throw Result::NotSupported;
}

int Track::getType()
{
    if (!isValid())
        return -1;
    auto asObject = object();
    if (!asObject->isKind("track") || asObject->isKind("audio") || asObject->isKind("ruler"))
        return -1;
    int64_t value = 0;
    if (!readInteger(*asObject, typeAttribute(), value))
        return -1;
    return static_cast<int>(value);
}

void Track::setType(int type)
{
    check(object()->setAttribute(typeAttribute(), Kelmar::FVariant(static_cast<Kelmar::int64>(type)), 1));
}

bool Track::hasType(int type, int mask)
{
    if (!isValid())
        return false;
    auto asObject = object();
    if (!asObject->isKind("marker") && !asObject->isKind("video") && !asObject->isKind("folder"))
        return false;
    int64_t value = 0;
    if (!readInteger(*asObject, typeAttribute(), value))
        return false;
    return (value & mask) == (type & mask);
}

std::string Track::getName() const
{
    Kelmar::String name;
    if (object()->getName(name) != Kelmar::kResultOk)
        return {};
    return name.toUtf8();
}

void Track::setName(const std::string& name)
{
    auto asObject = object();
    Kelmar::IPtr<Kelmar::IEditContext> context = Kelmar::owned(home->getHostProject()->getEditContext(asObject.get()));
    const std::u16string wide = Kelmar::String::utf8ToUtf16(name);
    check(asObject->setName(context.get(), wide.c_str(), 0));
}

// ---- Events

std::vector<TrackEvent> Track::getEvents() const
{
    std::vector<TrackEvent> events;
    eachEvent([&](Kelmar::IProjectObject& event) { events.emplace_back(this, &event); });
    return events;
}

void Track::eachEvent(const std::function<void(Kelmar::IProjectObject& event)>& visit) const
{
    auto asObject = object();
    // A part holds audio events; it answers "part", not "audio", and moves
    // with the track's audio as one event.
    const bool audio = asObject->isKind("audio");
    const char* kind = audio ? "audio" : asObject->isKind("video") ? "video" : asObject->isKind("marker") ? "marker" : nullptr;
    if (!kind)
        return;
    Kelmar::IPtr<Kelmar::IObjectIterator> children = Kelmar::owned(asObject->getChildren());
    while (children && !children->atEnd()) {
        Kelmar::IPtr<Kelmar::IProjectObject> child = Kelmar::owned(children->next());
        if (!child)
            break;
        if (child->isKind(kind) || (audio && child->isKind("part")))
            visit(*child);
    }
}

std::vector<TrackEvent> Track::getEventsInRange(double start, double end) const
{
    if (end < start)
        throw Result::InvalidArgument;
    // Frame times have no exact binary form: a boundary and an event's edge
    // on the same frame differ by a few ulps, and so do the two halves of an
    // event split on a frame. Within a sample they are the same.
    constexpr double tolerance = core::positionTolerance;
    std::vector<TrackEvent> taken;
    for (TrackEvent& event : getEvents()) {
        const double s = event.getStart();
        const double e = event.getEnd();
        const bool startsInside = start - tolerance <= s && s <= end + tolerance;
        const bool endsInside = start - tolerance <= e && e <= end + tolerance;
        // An event belongs to the range it lies mostly in: one half exactly
        // is not enough, so an event split in the middle goes to neither side.
        const double half = (e - s) / 2.0 + tolerance;
        if (startsInside && endsInside)
            taken.push_back(event);
        else if (s < start && endsInside && e - start > half)
            taken.push_back(event);
        else if (startsInside && e > end && end - s > half)
            taken.push_back(event);
    }
    return taken;
}

int64_t Track::nextEventId() const
{
    int64_t largest = 0;
    for (const TrackEvent& event : getEvents()) {
        int64_t id = 0;
        if (event.getUserId(id))
            largest = std::max(largest, id);
    }
    return largest + 1;
}

void Track::assignEventIds(double start, double end)
{
    for (const TrackEvent& event : getEventsInRange(start, end)) {
        int64_t id = 0;
        if (event.getUserId(id))
            continue;
        check(event.getObject()->setAttribute(userIdAttribute, Kelmar::FVariant(static_cast<Kelmar::int64>(nextEventId())), 1));
    }
}

// ---- Audio around a position

core::AudioInfo::Range Track::chainRange(Kelmar::IAudioChainEntry& entry) const
{
    const HostClock host = clock();
    core::AudioInfo::Range range{entry.getStart(), entry.getEnd()};

    // A chain of joined events sounds as one: its range ends where the last
    // member ends.
    Kelmar::IPtr<Kelmar::IProjectObject> member = Kelmar::owned(entry.getObject());
    Kelmar::IPtr<Kelmar::IProjectObject> last;
    while (member) {
        Kelmar::IPtr<Kelmar::IAudioChainEvent> link = Kelmar::queryInterface<Kelmar::IAudioChainEvent>(member.get());
        Kelmar::IPtr<Kelmar::IProjectObject> next = link ? Kelmar::owned(link->getNextInChain()) : nullptr;
        if (!next)
            break;
        last = next;
        member = next;
    }
    if (last) {
        range.end = last->getEnd(nullptr);
        Kelmar::IPtr<Kelmar::IProjectObject> parent = Kelmar::owned(last->getParent());
        if (parent && parent->isKind("part"))
            range.end += parent->getStart(nullptr);
    }
    range.start = host.fromHost({range.start}).seconds;
    range.end = host.fromHost({range.end}).seconds;
    if (range.end < range.start)
        throw Result::InvalidArgument;
    return range;
}

// The ranges of a chain that the surroundings count, in chain order. A layer
// that starts on or inside the range before it counts only when it reaches
// past that range's end:
//
//   chain     [====a====]  [==b==]    [===c===]
//               [=x=]                      [====d====]
//   counted   [====a====]  [==b==]    [===c===]
//                                          [====d====]
//
// x ends inside a and is left out; d reaches past c and counts. So each
// counted range starts no earlier and ends later than the one before, and a
// position is found by binary search. A chain the walk refuses (a range that
// ends before it starts, a layer reaching past its predecessor from before
// its start) keeps the ranges counted before the refusal and the refusal's
// code: only a position whose walk gets that far is refused.
//
// A feature's track counts thousands of ranges and the detectors ask at
// positions all over it: every 16th start is kept apart as well, so that a
// search reads that short list and then one stretch of 16 ranges, a few
// cache lines, instead of one far place of the whole list per step.
struct ChainImage {
    static constexpr std::size_t stretch = 16;
    std::vector<core::AudioInfo::Range> ranges;
    std::vector<double> stretchStarts;
    std::optional<Result::Type> failure;
};

std::shared_ptr<const ChainImage> Track::chainImage() const
{
    if (!hostTrack)
        throw Result::NotInitialized;
    TrackHome::KeptChains* kept = home ? home->keptChains() : nullptr;
    if (kept) {
        const auto found = kept->find(hostTrack);
        if (found != kept->end())
            return found->second;
    }

    constexpr double tolerance = core::positionTolerance;
    auto image = std::make_shared<ChainImage>();
    try {
        Kelmar::IPtr<Kelmar::IAudioChainEntry> entry = Kelmar::owned(hostTrack->getAudioChain());
        for (; entry; entry = Kelmar::owned(entry->next(0))) {
            const core::AudioInfo::Range range = chainRange(*entry);
            if (!image->ranges.empty()) {
                const core::AudioInfo::Range& previous = image->ranges.back();
                if (range.start < previous.end || std::abs(range.start - previous.end) <= tolerance) {
                    // Layered on what came before: only counts when it
                    // reaches past it.
                    if (range.end < previous.end + tolerance)
                        continue;
                    if (range.start < previous.start)
                        throw Result::InvalidArgument;
                }
            }
            image->ranges.push_back(range);
        }
    } catch (Result::Type code) {
        // A failure to reach the host at all is no answer for any position.
        if (code != Result::InvalidArgument)
            throw;
        image->failure = code;
    }
    // Kept through the detectors' pass for every track at once: no room to
    // grow.
    image->ranges.shrink_to_fit();
    image->stretchStarts.reserve((image->ranges.size() + ChainImage::stretch - 1) / ChainImage::stretch);
    for (std::size_t index = 0; index < image->ranges.size(); index += ChainImage::stretch)
        image->stretchStarts.push_back(image->ranges[index].start);
    if (kept)
        (*kept)[hostTrack] = image;
    return image;
}

void Track::getSurroundings(double position, core::AudioInfo::Range& before, core::AudioInfo::Range& at,
                            core::AudioInfo::Range& after) const
{
    before = at = after = core::AudioInfo::Range{};
    const std::shared_ptr<const ChainImage> image = chainImage();
    const std::vector<core::AudioInfo::Range>& ranges = image->ranges;

    // The walk in chain order ends at the first range that starts after the
    // position; before it, the ranges that end before the position come
    // first (ends rise), and the last of the others holds the position. A
    // range that starts within a sample of the position starts on it: a
    // cut's edge reckoned from its timecode and an event's start read from
    // the host may differ by a rounding hair.
    const auto first = ranges.begin();
    const double reach = position + core::positionTolerance;
    // The stretch whose first range is the last to start up to the position
    // holds the first range that starts after it, or that range begins the
    // next stretch.
    const auto stretch = static_cast<std::size_t>(
        std::upper_bound(image->stretchStarts.begin(), image->stretchStarts.end(), reach) - image->stretchStarts.begin());
    const auto from = first + static_cast<std::ptrdiff_t>(stretch == 0 ? 0 : (stretch - 1) * ChainImage::stretch);
    const auto to = first + static_cast<std::ptrdiff_t>(std::min(ranges.size(), stretch * ChainImage::stretch));
    const auto following = std::upper_bound(from, to, reach, [](double p, const core::AudioInfo::Range& r) {
        return p < r.start;
    });
    if (following == ranges.end() && image->failure)
        throw *image->failure;
    // The range that holds the position is mostly the one just before: the
    // search steps back from there, doubling its step, before it halves.
    auto low = first;
    auto high = following;
    for (std::ptrdiff_t step = 1; high != first; step *= 2) {
        const auto probe = high - first > step ? high - step : first;
        if (probe->end < position) {
            low = probe + 1;
            break;
        }
        high = probe;
    }
    const auto holding = std::lower_bound(low, high, position,
                                          [](const core::AudioInfo::Range& r, double p) { return r.end < p; });
    if (following != ranges.end())
        after = *following;
    if (holding != following)
        at = *std::prev(following);
    if (holding != first)
        before = *std::prev(holding);
}

// ---- Automation

void Track::readAutomation()
{
    automation.clear();
    if (!hostTrack)
        throw Result::NotInitialized;
    const HostClock host = clock();
    Kelmar::IPtr<Kelmar::IObjectIterator> tracks = Kelmar::owned(hostTrack->getAutomationTracks());
    if (!tracks)
        return;
    while (!tracks->atEnd()) {
        Kelmar::IPtr<Kelmar::IProjectObject> trackObject = Kelmar::owned(tracks->next());
        if (!trackObject)
            break;
        AutomationData data;
        data.track = queryRequired<Kelmar::IAutomationTrack>(trackObject.get());
        // The host's stepped kinds 0 and 3 each hold their value; ours keep
        // them apart only to say which one it was.
        const int curveType = data.track->getCurveType();
        data.curve.mode = curveType == 0 ? AutomationCurve::SteppedHold
                          : curveType == 3 ? AutomationCurve::Stepped
                                           : AutomationCurve::Linear;
        for (auto& pointObject : childrenOf(*trackObject)) {
            auto point = queryRequired<Kelmar::IAutomationPoint>(pointObject.get());
            auto curvePoint = Kelmar::queryInterface<Kelmar::IAutomationCurvePoint>(pointObject.get());
            const double time = host.fromHost({pointObject->getStart(nullptr)}).seconds;
            const double value = point->getValue();
            data.points.emplace(time, point);
            data.curve.add(time, value, curvePoint && curvePoint->isSegmentEnd());
        }
        automation.push_back(std::move(data));
    }
}

void Track::readAutomationValues(double until)
{
    automationValues.clear();
    if (!hostTrack)
        throw Result::NotInitialized;
    const HostClock host = clock();
    Kelmar::IPtr<Kelmar::IObjectIterator> tracks = Kelmar::owned(hostTrack->getAutomationTracks());
    while (tracks && !tracks->atEnd()) {
        Kelmar::IPtr<Kelmar::IProjectObject> trackObject = Kelmar::owned(tracks->next());
        if (!trackObject)
            break;
        std::vector<std::pair<double, float>> read;
        Kelmar::IPtr<Kelmar::IObjectIterator> points = Kelmar::owned(trackObject->getChildren());
        while (points && !points->atEnd()) {
            Kelmar::IPtr<Kelmar::IProjectObject> pointObject = Kelmar::owned(points->next());
            if (!pointObject)
                break;
            const double time = host.fromHost({pointObject->getStart(nullptr)}).seconds;
            if (time < until)
                read.emplace_back(time, queryRequired<Kelmar::IAutomationPoint>(pointObject.get())->getValue());
        }
        std::stable_sort(read.begin(), read.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        // An automation track without points keeps its place: the index is
        // how the two sides of a seam find the same curve.
        AutomationValues& lane = automationValues.emplace_back();
        lane.times.reserve(read.size());
        lane.values.reserve(read.size());
        for (const auto& [time, value] : read) {
            lane.times.push_back(time);
            lane.values.push_back(value);
        }
    }
}

core::AudioInfo::Automation Track::getAutomationAround(double position) const
{
    core::AudioInfo::Automation around;
    for (size_t index = 0; index < automationValues.size(); ++index) {
        // -1 stands for "not found": a time or value below zero counts as
        // not there.
        double previousTime = -1.0, previousValue = -1.0;
        double nextTime = -1.0, nextValue = -1.0;
        // The first point after the position, and the last one up to it (of
        // points at one time, the last one entered).
        const AutomationValues& lane = automationValues[index];
        const auto next = std::upper_bound(lane.times.begin(), lane.times.end(), position);
        const auto at = static_cast<size_t>(next - lane.times.begin());
        if (at < lane.times.size()) {
            nextTime = lane.times[at];
            nextValue = lane.values[at];
        }
        if (at > 0) {
            previousTime = lane.times[at - 1];
            previousValue = lane.values[at - 1];
        }
        const bool hasPrevious = previousTime >= 0.0 && previousValue >= 0.0;
        const bool hasNext = nextTime >= 0.0 && nextValue >= 0.0;
        const int key = static_cast<int>(index);
        if (hasPrevious && hasNext)
            around[key] = {previousTime, previousValue, nextTime, nextValue};
        else if (hasPrevious)
            around[key] = {previousTime, previousValue, position, previousValue};
        else if (hasNext)
            around[key] = {position, nextValue, nextTime, nextValue};
    }
    return around;
}

void Track::bridgeGap(Kelmar::IProjectEdit& edit, double start, double end)
{
    if (end < start)
        throw Result::InvalidArgument;
    const HostClock clockOfHost = clock();
    Kelmar::IProject& host = *home->getHostProject();

    // The curve arrives at the gap as it was and leaves it as it was; in
    // between it holds the value it arrived with:
    //
    //   before   ..../|\.../\.../|......      after   ..../|_____________|......
    //                start        end                      start         end
    for (AutomationData& data : automation) {
        AutomationCurve& curve = data.curve;
        double held = 0.0;
        double leaving = 0.0;
        if (!curve.valueArriving(start, held) || !curve.valueAt(end, leaving))
            continue;
        const bool holdsAfter = curve.holdsAt(end);
        auto trackObject = queryRequired<Kelmar::IProjectObject>(data.track.get());
        Kelmar::IPtr<Kelmar::IEditContext> context = Kelmar::owned(host.getEditContext(trackObject.get()));

        // Of the points on the start the first stays, the one the curve
        // arrives on; of those on the end the last, the one it leaves from.
        // Everything between goes. The host's points and the curve have the
        // same times, so the same bounds find the same points in both.
        constexpr double tolerance = core::positionTolerance;
        const auto firstOnStart = data.points.lower_bound(start - tolerance);
        const bool onStart = firstOnStart != data.points.upper_bound(start + tolerance);
        const auto pastOnEnd = data.points.upper_bound(end + tolerance);
        const bool onEnd = data.points.lower_bound(end - tolerance) != pastOnEnd;
        // The new point on the start goes right after the one that stays
        // there, on the host's very time of it.
        const double startTime = onStart ? queryRequired<Kelmar::IProjectObject>(firstOnStart->second.get())->getStart(nullptr)
                                         : clockOfHost.toHost({start}).seconds;
        const auto from = onStart ? std::next(firstOnStart) : firstOnStart;
        const auto to = onEnd ? std::prev(pastOnEnd) : pastOnEnd;
        // The gap is wider than two samples: what stays on its edges does not
        // overlap.
        if (from != to) {
            for (auto it = from; it != to; ++it)
                check(edit.removeObject(context.get(), queryRequired<Kelmar::IProjectObject>(it->second.get()).get()));
            auto curveFrom = curve.firstOn(start);
            if (onStart)
                ++curveFrom;
            auto curveTo = curve.pastOn(end);
            if (onEnd)
                --curveTo;
            data.points.erase(from, to);
            curve.points.erase(curveFrom, curveTo);
        }

        auto addPoint = [&](double hostTime, double value, bool segmentEnd) {
            auto point = getService<Kelmar::IAutomationCurvePoint>(home->getServices());
            auto pointObject = queryRequired<Kelmar::IProjectObject>(point.get());
            check(point->setValue(context.get(), static_cast<float>(value), 0));
            if (segmentEnd)
                check(point->setSegmentEnd(context.get(), true, 0));
            check(pointObject->setStart(context.get(), hostTime, 0));
            check(edit.addObject(context.get(), pointObject.get()));
            const double absolute = clockOfHost.fromHost({hostTime}).seconds;
            data.points.emplace(absolute, queryRequired<Kelmar::IAutomationPoint>(point.get()));
            curve.add(absolute, static_cast<float>(value), segmentEnd);
        };
        addPoint(startTime, held, true);
        // Without a point on the end the curve leaves it from a new one.
        if (!onEnd)
            addPoint(clockOfHost.toHost({end}).seconds, leaving, holdsAfter);
    }
}

} // namespace montala::host
