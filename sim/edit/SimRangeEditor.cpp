#include "sim/edit/SimRangeEditor.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace montala::sim {

using namespace Kelmar;

namespace {

void shift(SimObject& node, double delta)
{
    SimObject::Fields values = node.get();
    values.start += delta;
    values.end += delta;
    node.restoreFields(values);
}

// The host counts time in samples (one at 384 kHz is the finest any project
// has): a time that lands within a rounding hair of a sample lies on it. So
// what was on a sample is on the same sample after a trip to the far end of
// the timeline and back, as in a host that adds whole samples.
double onSample(double time)
{
    constexpr double rate = 384000.0;
    const double samples = std::round(time * rate);
    return std::abs(time * rate - samples) < 1e-4 ? samples / rate : time;
}

// Shifts a node pasted at `position` and puts its edges on their samples.
void place(SimObject& node, double position)
{
    SimObject::Fields values = node.get();
    values.start = onSample(values.start + position);
    values.end = onSample(values.end + position);
    node.restoreFields(values);
}

IPtr<SimObject> newPoint(double time, double value, bool segmentEnd = false)
{
    IPtr<SimObject> point = SimObject::create(ObjectKind::AutomationPoint);
    SimObject::Fields values;
    values.start = time;
    values.end = time;
    values.value = value;
    values.segmentEnd = segmentEnd;
    point->restoreFields(values);
    return point;
}

bool stepped(int curveType) { return curveType == 0 || curveType == 3; }

constexpr double unbounded = std::numeric_limits<double>::infinity();

bool isPoint(const SimObject& node)
{
    const SimObject::Fields& f = node.get();
    return node.kind() == ObjectKind::PointMarker
           || (node.kind() == ObjectKind::RangeMarker && f.end - f.start <= SimRangeEditor::epsilon);
}

// The fields of an event or marker (not a part) cut to [start, end); none
// when nothing of it lies there. A cut end ends its chain.
std::optional<SimObject::Fields> trimmedFields(const SimObject& node, double start, double end)
{
    constexpr double epsilon = SimRangeEditor::epsilon;
    const SimObject::Fields& f = node.get();
    if (isPoint(node)) {
        if (f.start < start - epsilon || f.start >= end - epsilon)
            return std::nullopt;
        return f;
    }
    const double low = std::max(f.start, start);
    const double high = std::min(f.end, end);
    if (high - low <= epsilon)
        return std::nullopt;
    SimObject::Fields values = f;
    values.start = low;
    values.end = high;
    if (node.kind() == ObjectKind::AudioEvent || node.kind() == ObjectKind::VideoEvent)
        values.offset += low - f.start;
    if (end <= f.end + epsilon)
        values.joinedToNext = false;
    return values;
}

// A curve's points in time order, found by time. The times are read from
// what the automation track keeps of them when it is given, else from the
// points: a search among a feature's thousands of points then reads a short
// list of numbers and fetches only the points it lands on, where reading
// each point it passes would go all over the heap.
class Points {
public:
    explicit Points(const SimObject::List& list, const std::vector<double>* times = nullptr)
        : list(list), times(times)
    {
    }

    // The first point after `time`, and the first on or after it.
    SimObject::List::const_iterator after(double time) const { return list.begin() + before(time, false); }
    SimObject::List::const_iterator from(double time) const { return list.begin() + before(time, true); }

    const SimObject::List& list;

private:
    // How many points lie before `time`, and on it unless `strictly`.
    std::ptrdiff_t before(double time, bool strictly) const
    {
        std::size_t low = 0;
        std::size_t high = list.size();
        while (low < high) {
            const std::size_t middle = low + (high - low) / 2;
            const double t = times ? (*times)[middle] : list[middle]->get().start;
            if (strictly ? t < time : t <= time)
                low = middle + 1;
            else
                high = middle;
        }
        return static_cast<std::ptrdiff_t>(low);
    }

    const std::vector<double>* times;
};

// An automation track's points with the times it keeps of them.
Points pointsOf(SimObject& automationTrack)
{
    const std::vector<double>& times = automationTrack.pointTimes();
    return Points(automationTrack.children(), &times);
}

std::optional<double> valueAt(const Points& points, int curve, double time)
{
    const SimObject::List& list = points.list;
    if (list.empty())
        return std::nullopt;
    if (time < list.front()->get().start)
        return list.front()->get().value;
    // The last point at or before `time`, and the one after it.
    const std::size_t before = static_cast<std::size_t>(points.after(time) - list.begin()) - 1;
    const SimObject::Fields& p = list[before]->get();
    if (before + 1 >= list.size())
        return p.value;
    const SimObject::Fields& q = list[before + 1]->get();
    if (p.segmentEnd || stepped(curve) || q.start - p.start <= SimRangeEditor::epsilon)
        return p.value;
    return p.value + (q.value - p.value) * (time - p.start) / (q.start - p.start);
}

std::optional<double> valueLeaving(const Points& points, int curve, double time)
{
    constexpr double epsilon = SimRangeEditor::epsilon;
    const SimObject::List& list = points.list;
    if (list.empty())
        return std::nullopt;
    // The last point on or before `time`; before the first, the first holds.
    const auto after = points.after(time + epsilon);
    if (after == list.begin())
        return list.front()->get().value;
    const SimObject::Fields& p = (*std::prev(after))->get();
    if (after == list.end() || p.segmentEnd || stepped(curve) || p.start >= time - epsilon)
        return p.value;
    const SimObject::Fields& q = (*after)->get();
    return p.value + (q.value - p.value) * (time - p.start) / (q.start - p.start);
}

std::optional<double> valueArriving(const Points& points, int curve, double time)
{
    constexpr double epsilon = SimRangeEditor::epsilon;
    const SimObject::List& list = points.list;
    if (list.empty())
        return std::nullopt;
    // The first point on or after `time`, and the one before it.
    const auto at = points.from(time - epsilon);
    if (at == list.begin())
        return list.front()->get().value;
    const SimObject::Fields& p = (*std::prev(at))->get();
    if (at == list.end() || p.segmentEnd || stepped(curve))
        return p.value;
    const SimObject::Fields& q = (*at)->get();
    if (q.start <= time + epsilon)
        return q.value;
    return p.value + (q.value - p.value) * (time - p.start) / (q.start - p.start);
}

bool holdsAt(const Points& points, double time)
{
    const auto after = points.after(time + SimRangeEditor::epsilon);
    return after != points.list.begin() && (*std::prev(after))->get().segmentEnd;
}

// `list` with `point` put after the points at or before its time.
void insertSorted(SimObject::List& list, IPtr<SimObject> point)
{
    const double time = point->get().start;
    auto at = std::find_if(list.begin(), list.end(), [time](const auto& p) { return p->get().start > time; });
    list.insert(at, std::move(point));
}

} // namespace

std::optional<double> SimRangeEditor::valueAt(const SimObject& automationTrack, double time)
{
    return valueAt(automationTrack.children(), automationTrack.get().curveType, time);
}

std::optional<double> SimRangeEditor::valueAt(const SimObject::List& points, int curve, double time)
{
    return sim::valueAt(Points(points), curve, time);
}

std::optional<double> SimRangeEditor::valueLeaving(const SimObject::List& points, int curve, double time)
{
    return sim::valueLeaving(Points(points), curve, time);
}

std::optional<double> SimRangeEditor::valueArriving(const SimObject::List& points, int curve, double time)
{
    return sim::valueArriving(Points(points), curve, time);
}

bool SimRangeEditor::holdsAt(const SimObject::List& points, double time)
{
    return sim::holdsAt(Points(points), time);
}

IPtr<SimObject> SimRangeEditor::trimmedCopy(const SimObject& node, double start, double end)
{
    if (node.kind() != ObjectKind::Part) {
        const auto values = trimmedFields(node, start, end);
        if (!values)
            return nullptr;
        IPtr<SimObject> copy = node.cloneTree();
        copy->restoreFields(*values);
        return copy;
    }
    const SimObject::Fields& f = node.get();
    const double low = std::max(f.start, start);
    const double high = std::min(f.end, end);
    if (high - low <= epsilon)
        return nullptr;
    IPtr<SimObject> part = SimObject::create(ObjectKind::Part);
    SimObject::Fields values = f;
    values.start = low;
    values.end = high;
    part->restoreFields(values);
    for (const auto& [name, value] : node.attributes())
        part->restoreAttribute(name, &value);
    // A range that ends at the part's end still cuts the chain inside it.
    const double cutEnd = end <= f.end + epsilon ? end : unbounded;
    SimObject::List inner;
    for (const auto& event : node.children()) {
        IPtr<SimObject> onTimeline = event->cloneTree();
        shift(*onTimeline, f.start);
        if (IPtr<SimObject> piece = trimmedCopy(*onTimeline, innerStart(f, low), cutEnd)) {
            shift(*piece, -low);
            inner.push_back(piece);
        }
    }
    part->restoreChildren(inner, false);
    return part;
}

double SimRangeEditor::innerStart(const SimObject::Fields& part, double low)
{
    // Only a cut edge cuts the events inside; an uncut edge leaves them as
    // they are, even where they reach past the part.
    return low > part.start + epsilon ? low : -unbounded;
}

double SimRangeEditor::innerEnd(const SimObject::Fields& part, double high)
{
    return high < part.end - epsilon ? high : unbounded;
}

void SimRangeEditor::fitPart(SimObject& part, double low, double high)
{
    const SimObject::Fields f = part.get();
    SimObject::List kept;
    bool removed = false;
    for (const auto& event : part.children()) {
        // The inner event on the timeline, cut to the part's new range, then
        // made relative to the part's new start.
        IPtr<SimObject> onTimeline = event->cloneTree();
        shift(*onTimeline, f.start);
        auto values = trimmedFields(*onTimeline, innerStart(f, low), innerEnd(f, high));
        if (!values) {
            removed = true;
            continue;
        }
        values->start -= low;
        values->end -= low;
        event->setFields(*values); // records nothing when nothing changes
        kept.push_back(event);
    }
    if (removed)
        part.replaceChildren(kept);
    SimObject::Fields values = f;
    values.start = low;
    values.end = high;
    part.setFields(values);
}

SimRangeEditor::TrackCopy SimRangeEditor::copyTrack(SimObject& track, double start, double end, bool pointsLater)
{
    const NodeHeap::Placing placing(track.heapPlace());
    TrackCopy copy;
    copy.track = shared(&track);
    if (pointsLater)
        copy.pointsFrom = start;
    // Only the children near the range can reach into it; they are taken
    // in the track's order.
    for (const std::size_t index : track.childrenNear(start, end)) {
        if (IPtr<SimObject> piece = trimmedCopy(*track.children()[index], start, end)) {
            shift(*piece, -start);
            copy.items.push_back(piece);
        }
    }
    for (const auto& automationTrack : track.automation()) {
        SimObject::List points;
        const Points curvePoints = pointsOf(*automationTrack);
        const SimObject::List& curve = curvePoints.list;
        const int type = automationTrack->get().curveType;
        if (!curve.empty()) {
            // The curve as it sounds inside the range: from the value after
            // a step on its start to the value before a step on its end.
            points.push_back(newPoint(0.0, *sim::valueLeaving(curvePoints, type, start), sim::holdsAt(curvePoints, start)));
            // Only the points inside the range, found in the time order.
            for (auto it = curvePoints.after(start + epsilon); it != curve.end(); ++it) {
                const double time = (*it)->get().start;
                if (time >= end - epsilon)
                    break;
                if (pointsLater) {
                    points.push_back(*it);
                    continue;
                }
                IPtr<SimObject> pointCopy = (*it)->cloneTree();
                shift(*pointCopy, -start);
                points.push_back(pointCopy);
            }
            points.push_back(newPoint(end - start, *sim::valueArriving(curvePoints, type, end)));
        }
        copy.automation.emplace_back(automationTrack, std::move(points));
    }
    return copy;
}

void SimRangeEditor::paste(const TrackCopy& copy, double position, double length)
{
    paste(copy, position, length, false);
}

void SimRangeEditor::paste(TrackCopy&& copy, double position, double length)
{
    paste(copy, position, length, true);
}

void SimRangeEditor::paste(const TrackCopy& copy, double position, double length, bool fresh)
{
    const double end = onSample(position + length);
    // The timeline begins at the project start (host time 0): what the paste
    // would put before it is cut away, as a host does at its first frame.
    //
    //   copy          |a....:....b|
    //   timeline            0 ---------
    //   pasted              |:...b|      (a point at 0 holds the copy's value)
    const double low = std::max(onSample(position), 0.0);
    if (end - low <= epsilon)
        return;
    const bool clipped = position < 0.0 && low > position + epsilon;
    SimObject& track = *copy.track;
    const NodeHeap::Placing placing(track.heapPlace());
    SimObject::List pasted;
    pasted.reserve(copy.items.size());
    for (const auto& item : copy.items) {
        IPtr<SimObject> placed = fresh ? item : item->cloneTree();
        place(*placed, position);
        if (clipped && placed->get().start < low) {
            placed = trimmedCopy(*placed, low, unbounded);
            if (!placed)
                continue;
        }
        pasted.push_back(std::move(placed));
    }
    track.appendChildren(pasted);
    for (const auto& [automationTrack, points] : copy.automation) {
        if (points.empty())
            continue;
        // The curve just outside the range keeps its values: a point on each
        // edge holds them, and the copy's own edge points lie inside those.
        //
        //   before   0 ------------------------ 1
        //   after    0 ------ a|copy.........|b ----- 1   (a, b: old values)
        //
        // Before the timeline's start there is no curve to keep.
        const Points curvePoints = pointsOf(*automationTrack);
        const int type = automationTrack->get().curveType;
        const auto valueBefore = sim::valueAt(curvePoints, type, low);
        const auto valueAfter = sim::valueAt(curvePoints, type, end);
        // The points in time order: those up to the destination's start stay
        // before it, those from its end on after it, and the ones between
        // make way. Only that stretch of the list changes, so a paste costs
        // the points it touches, not all the track's.
        const SimObject::List& all = curvePoints.list;
        // A point at 0 lies inside a clipped destination and makes way.
        const auto before = clipped ? all.begin() : curvePoints.after(low + epsilon);
        const auto after = std::max(before, curvePoints.from(end - epsilon));
        const auto near = [](double a, double b) { return std::abs(a - b) <= epsilon; };
        const auto at = [&near](const SimObject::List& list, double time) {
            return std::any_of(list.begin(), list.end(), [&](const auto& p) { return near(p->get().start, time); });
        };
        // The last point before the destination is the latest there.
        const bool pointAtLow = before != all.begin() && near((*std::prev(before))->get().start, low);
        // Times within epsilon are one time, but the curve must stay in
        // order to the last bit: a destination that was summed another way
        // than the neighbouring paste's may lie a hair before it. The new
        // points are moved onto their neighbours, never the old ones, each
        // as it is placed: a long curve's copies are fetched once here.
        double floor = before == all.begin() ? -unbounded : (*std::prev(before))->get().start;
        const double ceiling = after == all.end() ? unbounded : (*after)->get().start;
        SimObject::List placed;
        placed.reserve(points.size() + 2);
        const auto put = [&](IPtr<SimObject> point) {
            const double time = std::min(std::max(point->get().start, floor), ceiling);
            if (time != point->get().start)
                shift(*point, time - point->get().start);
            floor = time;
            placed.push_back(std::move(point));
        };
        if (valueBefore && !clipped && !pointAtLow)
            put(newPoint(low, *valueBefore));
        if (clipped && !at(points, low - position))
            put(newPoint(low, *valueAt(points, automationTrack->get().curveType, low - position)));
        for (const auto& point : points) {
            IPtr<SimObject> copied = point;
            // A curve's own point still to be copied (the edge points are
            // new) is copied now, as copyTrack would have.
            const bool copiedNow = copy.pointsFrom && point->parent();
            if (copiedNow) {
                copied = point->cloneTree();
                shift(*copied, -*copy.pointsFrom);
            }
            if (copied->get().start + position < low - epsilon)
                continue;
            if (!copiedNow && !fresh)
                copied = point->cloneTree();
            place(*copied, position);
            put(std::move(copied));
        }
        if (valueAfter && !(after != all.end() && near((*after)->get().start, end)))
            put(newPoint(end, *valueAfter));
        automationTrack->replaceChildren(static_cast<std::size_t>(before - all.begin()),
                                         static_cast<std::size_t>(after - all.begin()), placed);
    }
}

void SimRangeEditor::deleteOnTrack(SimObject& track, double start, double end)
{
    const NodeHeap::Placing placing(track.heapPlace());
    SimObject::List children;
    bool changed = false;
    for (const auto& child : track.children()) {
        const SimObject::Fields& f = child->get();
        if (isPoint(*child)) {
            if (f.start >= start - epsilon && f.start < end - epsilon)
                changed = true;
            else
                children.push_back(child);
            continue;
        }
        if (f.end <= start + epsilon || f.start >= end - epsilon) {
            // What joined an event that ends where the range begins is cut away.
            if (f.joinedToNext && std::abs(f.end - start) <= epsilon && end - start > epsilon) {
                SimObject::Fields values = f;
                values.joinedToNext = false;
                child->setFields(values);
            }
            children.push_back(child);
            continue;
        }
        changed = true;
        if (f.start >= start - epsilon && f.end <= end + epsilon)
            continue; // wholly inside
        IPtr<SimObject> left = f.start < start ? trimmedCopy(*child, f.start, start) : nullptr;
        IPtr<SimObject> right = f.end > end ? trimmedCopy(*child, end, unbounded) : nullptr;
        // The node itself becomes the first piece, as a host keeps an event it
        // trims (and a part the events inside it); a second piece is a new
        // event beside it.
        IPtr<SimObject> first = left ? left : right;
        if (!first)
            continue;
        if (child->kind() == ObjectKind::Part)
            fitPart(*child, first->get().start, first->get().end);
        else
            child->setFields(first->get());
        children.push_back(child);
        if (left && right)
            children.push_back(right);
    }
    if (changed)
        track.replaceChildren(children);

    for (const auto& automationTrack : track.automation()) {
        const Points curvePoints = pointsOf(*automationTrack);
        const SimObject::List& points = curvePoints.list;
        if (points.empty())
            continue;
        const int type = automationTrack->get().curveType;
        const double valueAtStart = *sim::valueAt(curvePoints, type, start);
        const double valueAtEnd = *sim::valueAt(curvePoints, type, end);
        // The points are in time order: only those from the range's start
        // to its end change places, and the new edge points go among them.
        const auto from = curvePoints.after(start);
        const auto to = std::max(from, curvePoints.after(end));
        // Whether a point lies within epsilon of the time (never one that
        // goes): the latest up to a hair after it is no more than a hair
        // before it.
        const auto pointAt = [&](double time) {
            const auto it = curvePoints.after(time + epsilon);
            return it != points.begin() && (*std::prev(it))->get().start >= time - epsilon;
        };
        const bool hasStart = pointAt(start);
        const bool hasEnd = pointAt(end);
        SimObject::List kept;
        bool removed = false;
        for (auto it = from; it != to; ++it) {
            const double time = (*it)->get().start;
            if (time > start + epsilon && time < end - epsilon)
                removed = true;
            else
                kept.push_back(*it);
        }
        if (!removed)
            continue;
        // Nothing lies before the timeline's start: a range that begins
        // there has no curve on its left to keep.
        if (!hasStart && start >= -epsilon)
            insertSorted(kept, newPoint(start, valueAtStart));
        if (!hasEnd)
            insertSorted(kept, newPoint(end, valueAtEnd));
        automationTrack->replaceChildren(static_cast<std::size_t>(from - points.begin()),
                                         static_cast<std::size_t>(to - points.begin()), kept);
    }
}

} // namespace montala::sim
