#include "core/conform/InputChecks.h"

#include "core/events/EdlLoader.h"
#include "core/time/Timecode.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace montala::core {

namespace {

std::optional<Interval> recordRange(const EventBase& event, const Framerate& rate)
{
    const Timecode& in = event.getDstIn();
    const Timecode& out = event.getDstOut();
    if (!in.isInitialized() || !out.isInitialized() || !in.isValid(rate) || !out.isValid(rate))
        return std::nullopt;
    const Interval range{in.toSeconds(rate), out.toSeconds(rate)};
    if (!(range.first < range.second))
        return std::nullopt;
    return range;
}

std::optional<Interval> sourceRange(const EventBase& event, const Framerate& rate)
{
    const Timecode& in = event.getSrcIn();
    const Timecode& out = event.getSrcOut();
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

std::vector<Interval> recordRanges(const EventList& list, const Framerate& rate)
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

Fit fitOf(const std::vector<double>& picture, const std::vector<double>& markers, const EventList& cut,
          const Framerate& rate)
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

std::string percent(double share)
{
    char text[16];
    std::snprintf(text, sizeof text, "%.0f%%", share * 100.0);
    return text;
}

} // namespace

std::vector<double> pictureEdges(const std::vector<MediaStretch>& shown, double frame)
{
    std::vector<double> edges;
    const MediaStretch* previous = nullptr;
    for (const MediaStretch& stretch : shown) {
        const bool runsOn = previous && std::fabs(stretch.start - previous->end) < frame / 2 &&
                            stretch.clipId == previous->clipId &&
                            std::fabs(stretch.positionAtStart - (previous->positionAtStart + previous->end -
                                                                 previous->start)) < frame / 2;
        if (!runsOn) {
            if (previous)
                edges.push_back(previous->end);
            edges.push_back(stretch.start);
        }
        previous = &stretch;
    }
    if (previous)
        edges.push_back(previous->end);
    edges.erase(std::unique(edges.begin(), edges.end(),
                            [frame](double a, double b) { return std::fabs(a - b) < frame / 2; }),
                edges.end());
    return edges;
}

SessionFit sessionFit(const SessionEvidence& session, const Framerate& rate, const EventList& oldCut,
                      const EventList& newCut)
{
    // The picture says more than the markers; the markers serve where there
    // is no picture.
    const std::vector<double>& picture = session.pictureEdges;
    const std::vector<double> none;
    const std::vector<double>& markers = picture.empty() ? session.destinationMarkers : none;
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

std::optional<double> droppedSoundShare(const SessionEvidence& session, const Framerate& rate, const EventList& change)
{
    std::vector<Interval> kept;
    for (size_t index = 0; index < change.getSize(); ++index)
        if (const auto range = sourceRange(*change.getEvent(index), rate))
            kept.push_back(*range);
    kept = joined(std::move(kept));

    double sound = 0.0, held = 0.0;
    for (const std::vector<Interval>& track : session.soundByTrack)
        for (const Interval& heard : joined(track)) {
            sound += heard.second - heard.first;
            held += overlap(kept, heard);
        }
    if (sound <= 0.0)
        return std::nullopt;
    return std::clamp(1.0 - held / sound, 0.0, 1.0);
}

std::vector<InputRefusal> checkInputs(const SessionEvidence& session, const Framerate& rate, const EventList& oldCut,
                                      const EventList& newCut, const EventList& change,
                                      const InputCheckOptions& options)
{
    std::vector<InputRefusal> refusals;
    if (oldCut.getSize() > 0 && newCut.getSize() > 0) {
        const SessionFit fit = sessionFit(session, rate, oldCut, newCut);
        if (fit == SessionFit::New)
            refusals.push_back({"picture", options.conformedBefore
                                               ? "this session already follows the New cut"
                                               : "the session follows the New cut, not the Old one: " +
                                                 options.swappedCutsQuestion});
        else if (fit == SessionFit::Neither)
            refusals.push_back({"picture", "the session's picture does not follow the Old cut"});
    }
    if (options.wholeChange && change.getSize() > 0) {
        const std::optional<double> dropped = droppedSoundShare(session, rate, change);
        if (dropped && *dropped > options.maxDroppedShare)
            refusals.push_back({"dropped-sound", "the Change EDL would drop " + percent(*dropped) +
                                                     " of the session's sound (more than " +
                                                     percent(options.maxDroppedShare) + ")"});
    }
    return refusals;
}

std::vector<TimecodeSpan> uncoveredSpans(const EventList& newCut, const EventList& change,
                                         const Framerate& rate)
{
    const std::vector<Interval> cut = joined(recordRanges(newCut, rate));
    const std::vector<Interval> covered = joined(recordRanges(change, rate));
    const double frame = 1.0 / rate.exactRate;
    const auto timecode = [&](double seconds) {
        Timecode value;
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

std::vector<size_t> unmatchedEvents(const EventList& newCut, const EventList& change,
                                    const Framerate& rate)
{
    const std::vector<Interval> covered = joined(recordRanges(change, rate));
    std::vector<size_t> unmatched;
    for (size_t index = 0; index < newCut.getSize(); ++index) {
        const EventBase& event = *newCut.getEvent(index);
        if (!unusableReason(event).empty())
            continue;
        const auto range = recordRange(event, rate);
        if (range && overlap(covered, *range) <= 0.0)
            unmatched.push_back(index);
    }
    return unmatched;
}

std::vector<size_t> eventsOutsideSession(const SessionEvidence& session, const Framerate& rate,
                                         const EventList& change)
{
    std::vector<size_t> outside;
    for (size_t index = 0; index < change.getSize(); ++index) {
        const auto range = sourceRange(*change.getEvent(index), rate);
        if (range && (range->second <= session.start || range->first >= session.end))
            outside.push_back(index);
    }
    return outside;
}

} // namespace montala::core
