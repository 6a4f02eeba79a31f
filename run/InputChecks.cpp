#include "run/InputChecks.h"

#include "core/events/EdlLoader.h"
#include "core/time/Timecode.h"
#include "run/PlaybackTrace.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace montala::run {

namespace {

using sim::ObjectKind;
using sim::SimObject;

// [start, end) in absolute seconds.
using Interval = std::pair<double, double>;

// Montala's own tracks carry their type under one of these.
constexpr const char* videoTypeAttribute = "Montala:VideoType";
constexpr const char* markerTypeAttribute = "Montala:MarkerType";
constexpr std::int64_t destinationMarkers = 1;

std::optional<Interval> recordRange(const core::EventBase& event, const core::Framerate& rate)
{
    const core::Timecode& in = event.getDstIn();
    const core::Timecode& out = event.getDstOut();
    if (!in.isInitialized() || !out.isInitialized() || !in.isValid(rate) || !out.isValid(rate))
        return std::nullopt;
    const Interval range{in.toSeconds(rate), out.toSeconds(rate)};
    if (!(range.first < range.second))
        return std::nullopt;
    return range;
}

std::optional<Interval> sourceRange(const core::EventBase& event, const core::Framerate& rate)
{
    const core::Timecode& in = event.getSrcIn();
    const core::Timecode& out = event.getSrcOut();
    if (!in.isInitialized() || !out.isInitialized() || !in.isValid(rate) || !out.isValid(rate))
        return std::nullopt;
    const Interval range{in.toSeconds(rate), std::max(out.toSeconds(rate), in.toSeconds(rate) + 1.0 / rate.exactRate)};
    return range;
}

// Sorted and joined where they touch or overlap.
std::vector<Interval> joined(std::vector<Interval> intervals)
{
    std::sort(intervals.begin(), intervals.end());
    std::vector<Interval> result;
    for (const Interval& interval : intervals) {
        if (!result.empty() && interval.first <= result.back().second)
            result.back().second = std::max(result.back().second, interval.second);
        else
            result.push_back(interval);
    }
    return result;
}

std::vector<Interval> recordRanges(const core::EventList& list, const core::Framerate& rate)
{
    std::vector<Interval> ranges;
    for (size_t index = 0; index < list.getSize(); ++index)
        if (const auto range = recordRange(*list.getEvent(index), rate))
            ranges.push_back(*range);
    return ranges;
}

double overlap(const std::vector<Interval>& sorted, const Interval& with)
{
    double total = 0.0;
    for (const Interval& interval : sorted)
        total += std::max(0.0, std::min(interval.second, with.second) - std::max(interval.first, with.first));
    return total;
}

void collectTracks(const SimObject& node, std::vector<const SimObject*>& tracks)
{
    for (const auto& child : node.children()) {
        if (!child->isTrack())
            continue;
        tracks.push_back(child.get());
        collectTracks(*child, tracks);
    }
}

std::vector<const SimObject*> tracksOf(sim::SimProject& project)
{
    std::vector<const SimObject*> tracks;
    collectTracks(project, tracks);
    return tracks;
}

std::optional<std::int64_t> intAttribute(const SimObject& object, const char* name)
{
    const auto found = object.attributes().find(name);
    if (found == object.attributes().end())
        return std::nullopt;
    return found->second.getInt();
}

// Where the picture starts, jumps and ends, absolute seconds: one track's
// stretches, joined where the picture runs on in the same clip.
std::vector<double> pictureEdges(const SimObject& track, double projectStart, double frame)
{
    const PlaybackTrace trace(track);
    std::vector<double> edges;
    const PlaybackTrace::Stretch* previous = nullptr;
    for (const PlaybackTrace::Stretch& stretch : trace.stretches()) {
        const bool runsOn = previous && std::fabs(stretch.start - previous->end) < frame / 2 &&
                            stretch.clipId == previous->clipId &&
                            std::fabs(stretch.positionAtStart - (previous->positionAtStart + previous->end -
                                                                 previous->start)) < frame / 2;
        if (!runsOn) {
            if (previous)
                edges.push_back(previous->end + projectStart);
            edges.push_back(stretch.start + projectStart);
        }
        previous = &stretch;
    }
    if (previous)
        edges.push_back(previous->end + projectStart);
    edges.erase(std::unique(edges.begin(), edges.end(),
                            [frame](double a, double b) { return std::fabs(a - b) < frame / 2; }),
                edges.end());
    return edges;
}

bool nearAny(double time, const std::vector<double>& times, double frame)
{
    return std::any_of(times.begin(), times.end(), [&](double other) { return std::fabs(other - time) <= frame * 1.01; });
}

// How well the evidence fits a cut. Strict: the picture starts and ends
// with the cut; Covered: it runs past it (a leader, a tail pop). Either way
// most of the picture's jumps, or of the markers, lie on the cut's event
// edges: not all, since a stretch that the Change EDL of an earlier run left
// open (inside a dissolve of another length, say) jumps where the cut does
// not.
enum class Fit { No, Covered, Strict };

Fit fitOf(const std::vector<double>& picture, const std::vector<double>& markers, const core::EventList& cut,
          const core::Framerate& rate)
{
    const std::vector<Interval> ranges = recordRanges(cut, rate);
    if (ranges.empty())
        return Fit::No;
    const double frame = 1.0 / rate.exactRate;
    const double near = frame * 1.01;
    std::vector<double> edges;
    double first = ranges.front().first, last = ranges.front().second;
    for (const Interval& range : ranges) {
        edges.push_back(range.first);
        edges.push_back(range.second);
        first = std::min(first, range.first);
        last = std::max(last, range.second);
    }
    size_t inside = 0, onEdges = 0;
    for (const std::vector<double>* times : {&picture, &markers})
        for (const double time : *times) {
            if (times == &picture && (time <= first + near || time >= last - near))
                continue;
            ++inside;
            onEdges += nearAny(time, edges, frame) ? 1 : 0;
        }
    constexpr double mostEdges = 0.75;
    if (inside > 0 && static_cast<double>(onEdges) < mostEdges * static_cast<double>(inside))
        return Fit::No;
    if (picture.empty())
        return Fit::Strict;
    if (std::fabs(picture.front() - first) <= near && std::fabs(picture.back() - last) <= near)
        return Fit::Strict;
    if (picture.front() <= first + near && picture.back() >= last - near)
        return Fit::Covered;
    return Fit::No;
}

} // namespace

SessionFit sessionFit(sim::SimProject& project, const core::Framerate& rate, const core::EventList& oldCut,
                      const core::EventList& newCut)
{
    const double start = project.getProjectStart();
    const double frame = 1.0 / rate.exactRate;
    std::vector<double> picture;
    std::vector<double> markers;
    for (const SimObject* track : tracksOf(project)) {
        if (track->kind() == ObjectKind::VideoTrack && picture.empty() && !intAttribute(*track, videoTypeAttribute))
            picture = pictureEdges(*track, start, frame);
        if (track->kind() == ObjectKind::MarkerTrack &&
            intAttribute(*track, markerTypeAttribute) == destinationMarkers)
            for (const auto& marker : track->children())
                markers.push_back(marker->timelineStart() + start);
    }
    // The picture says more than the markers; the markers serve where there
    // is no picture.
    if (!picture.empty())
        markers.clear();
    if (picture.empty() && markers.empty())
        return SessionFit::Unknown;
    const Fit old = fitOf(picture, markers, oldCut, rate);
    const Fit fresh = fitOf(picture, markers, newCut, rate);
    if (old == Fit::Strict)
        return SessionFit::Old;
    if (fresh == Fit::Strict)
        return SessionFit::New;
    if (old == Fit::Covered)
        return SessionFit::Old;
    if (fresh == Fit::Covered)
        return SessionFit::New;
    return SessionFit::Neither;
}

std::optional<double> droppedSoundShare(sim::SimProject& project, const core::Framerate& rate,
                                        const core::EventList& change, bool selectedTracksOnly)
{
    std::vector<Interval> kept;
    for (size_t index = 0; index < change.getSize(); ++index)
        if (const auto range = sourceRange(*change.getEvent(index), rate))
            kept.push_back(*range);
    kept = joined(std::move(kept));

    const double start = project.getProjectStart();
    double sound = 0.0, held = 0.0;
    for (const SimObject* track : tracksOf(project)) {
        if (track->kind() != ObjectKind::AudioTrack || track->get().locked ||
            (selectedTracksOnly && !track->selectedFlag()))
            continue;
        const PlaybackTrace trace(*track);
        for (const PlaybackTrace::Stretch& stretch : trace.stretches()) {
            const Interval heard{stretch.start + start, stretch.end + start};
            sound += heard.second - heard.first;
            held += overlap(kept, heard);
        }
    }
    if (sound <= 0.0)
        return std::nullopt;
    return std::clamp(1.0 - held / sound, 0.0, 1.0);
}

std::vector<TimecodeSpan> uncoveredSpans(const core::EventList& newCut, const core::EventList& change,
                                         const core::Framerate& rate)
{
    const std::vector<Interval> cut = joined(recordRanges(newCut, rate));
    const std::vector<Interval> covered = joined(recordRanges(change, rate));
    const double frame = 1.0 / rate.exactRate;
    const auto timecode = [&](double seconds) {
        core::Timecode value;
        value.fromFrames(static_cast<int>(std::llround(seconds * rate.exactRate)), rate);
        return value.toString();
    };
    std::vector<TimecodeSpan> spans;
    for (const Interval& stretch : cut) {
        double from = stretch.first;
        for (const Interval& part : covered) {
            if (part.second <= from || part.first >= stretch.second)
                continue;
            if (part.first - from >= frame / 2)
                spans.push_back({timecode(from), timecode(part.first)});
            from = std::max(from, part.second);
        }
        if (stretch.second - from >= frame / 2)
            spans.push_back({timecode(from), timecode(stretch.second)});
    }
    return spans;
}

std::vector<size_t> unmatchedEvents(const core::EventList& newCut, const core::EventList& change,
                                    const core::Framerate& rate)
{
    const std::vector<Interval> covered = joined(recordRanges(change, rate));
    std::vector<size_t> unmatched;
    for (size_t index = 0; index < newCut.getSize(); ++index) {
        const core::EventBase& event = *newCut.getEvent(index);
        if (!core::unusableReason(event).empty())
            continue;
        const auto range = recordRange(event, rate);
        if (range && overlap(covered, *range) <= 0.0)
            unmatched.push_back(index);
    }
    return unmatched;
}

std::vector<size_t> eventsOutsideSession(sim::SimProject& project, const core::Framerate& rate,
                                         const core::EventList& change)
{
    const double start = project.getProjectStart();
    const Interval session{start, start + project.length()};
    std::vector<size_t> outside;
    for (size_t index = 0; index < change.getSize(); ++index) {
        const auto range = sourceRange(*change.getEvent(index), rate);
        if (range && (range->second <= session.first || range->first >= session.second))
            outside.push_back(index);
    }
    return outside;
}

} // namespace montala::run
