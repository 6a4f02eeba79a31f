#pragma once

// The one stand-in for the conform driver: an in-memory host behind
// MontalerBase with tracks of audio clips and automation, a work area per
// track, and a log of the slot calls. It edits like a plain audio editor:
// applying a cut copies the audio of each piece's source range to its
// destination in the work area, and complete() moves the work area home.
// For the window it also records what is asked of it (runs, previews) and
// keeps a data model's preview flag as the host does. Header-only, so that
// the benchmark can run conforms on it as well.

#include "core/conform/Cut.h"
#include "core/conform/CutList.h"
#include "core/events/EventList.h"
#include "core/conform/MontalerBase.h"
#include "core/model/DataModel.h"
#include "core/services/ProgressHandlerBase.h"
#include "core/model/Settings.h"
#include "util/Result.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace montala::test {

// A clip's name, kept once for all the clips of that name: a conform of a
// reel copies a pointer per piece instead of a text.
class ClipName {
public:
    ClipName() : ClipName(std::string()) {}
    ClipName(const char* text) : ClipName(std::string(text)) {}
    ClipName(const std::string& text) : text(&*known().insert(text).first) {}

    const std::string& str() const { return *text; }
    bool operator==(const ClipName& other) const { return text == other.text; }

private:
    static std::set<std::string>& known()
    {
        static std::set<std::string> names;
        return names;
    }

    const std::string* text;
};

// One audio event: [start, end] on the timeline, showing its recording
// from sourceIn on.
struct Clip {
    ClipName name;
    double start = 0.0;
    double end = 0.0;
    double sourceIn = 0.0;

    bool operator==(const Clip& other) const = default;
};

struct AutomationPoint {
    double time = 0.0;
    double value = 0.0;
};

// Finds, among items in ascending order of a time, the first one after a
// position, in about constant time. A grid of equal cells over the span
// remembers where each cell's items begin, so a lookup reads two grid
// entries and the few items of a cell or two. A binary search over a long
// track would miss the cache on most of its steps when the positions come in
// random order, and the conform benchmark would measure this double instead
// of the driver.
//
//   items   |  a b   |    c   | d e f  |        |   g
//   cells   0        1        2        3        4
class TimeGrid {
public:
    template <typename Item>
    void build(const std::vector<Item>& items, double Item::*time)
    {
        cellStarts.clear();
        if (items.empty())
            return;
        origin = items.front().*time;
        size_t cells = items.size();
        width = (items.back().*time - origin) / static_cast<double>(cells);
        // Cells too narrow for the numbers around them: one cell, and the
        // lookup becomes a plain binary search.
        if (!(width > 1e-6)) {
            cells = 1;
            width = 1.0;
        }
        cellStarts.resize(cells + 1);
        size_t item = 0;
        for (size_t cell = 0; cell < cells; ++cell) {
            const double cellStart = origin + static_cast<double>(cell) * width;
            while (item < items.size() && items[item].*time < cellStart)
                ++item;
            cellStarts[cell] = static_cast<uint32_t>(item);
        }
        cellStarts[cells] = static_cast<uint32_t>(items.size());
    }

    // The index of the first item whose time is greater than the position,
    // as std::upper_bound would answer.
    template <typename Item>
    size_t firstAfter(const std::vector<Item>& items, double Item::*time, double position) const
    {
        if (items.empty() || !(position >= items.front().*time))
            return 0;
        if (position >= items.back().*time)
            return items.size();
        const size_t cells = cellStarts.size() - 1;
        const size_t cell = std::min(static_cast<size_t>((position - origin) / width), cells - 1);
        // A cell of margin on each side absorbs the rounding of the cell
        // arithmetic.
        const auto low = items.begin() + cellStarts[cell == 0 ? 0 : cell - 1];
        const auto high = items.begin() + cellStarts[std::min(cell + 2, cells)];
        return static_cast<size_t>(
            std::upper_bound(low, high, position, [time](double p, const Item& item) { return p < item.*time; }) -
            items.begin());
    }

private:
    std::vector<uint32_t> cellStarts;
    double origin = 0.0;
    double width = 1.0;
};

// A track of the fake host. Clips are kept in order of their starts and
// never overlap; automation points in order of their times. The lookups go
// through grids that are rebuilt at the first lookup after a change, so every
// change goes through a setter or an edit...() accessor.
class FakeTrack {
public:
    std::string name;
    bool audio = true;
    bool locked = false;
    bool selected = true;
    // The work area: what the applied cuts built, in the order they built it.
    std::vector<Clip> work;

    // A long regular track, as the conform benchmark lays out: a clip of
    // `length` every `period` seconds from `first` on, and one curve with a
    // point every `pointPeriod` seconds whose values repeat `values`. The
    // lists hold it as usual, and until they are edited the lookups work it
    // out by arithmetic: the benchmark asks at random places of a long reel,
    // and lookups in the lists would measure the cache misses of this double
    // instead of the driver.
    struct Pattern {
        double first = 0.0;
        double period = 1.0;
        double length = 0.0;
        std::size_t count = 0;
        double pointFirst = 0.0;
        double pointPeriod = 1.0;
        std::size_t pointCount = 0;
        std::vector<double> values;
        // Set by lay(): the clips' name, and the periods' inverses, since a
        // multiplication costs a fraction of a division.
        ClipName name;
        double perClip = 1.0;
        double perPoint = 1.0;

        double clipStart(std::size_t i) const { return first + static_cast<double>(i) * period; }
        double pointTime(std::size_t i) const { return pointFirst + static_cast<double>(i) * pointPeriod; }
    };

    void lay(const std::string& clipName, const Pattern& layout)
    {
        std::vector<Clip>& edited = editClips();
        const ClipName name(clipName);
        for (std::size_t i = 0; i < layout.count; ++i)
            edited.push_back({name, layout.clipStart(i), layout.clipStart(i) + layout.length, 0.0});
        std::vector<AutomationPoint>& points = editCurve(0);
        for (std::size_t i = 0; i < layout.pointCount; ++i)
            points.push_back({layout.pointTime(i), layout.values[i % layout.values.size()]});
        pattern = layout;
        pattern->name = name;
        pattern->perClip = 1.0 / layout.period;
        pattern->perPoint = 1.0 / layout.pointPeriod;
    }

    const std::vector<Clip>& clips() const
    {
        sortClips();
        return clipList;
    }
    // Whoever edits must keep the clips in order of their starts.
    std::vector<Clip>& editClips()
    {
        sortClips();
        indexed = false;
        pattern.reset();
        return clipList;
    }
    const std::map<int, std::vector<AutomationPoint>>& automation() const { return curves; }
    // Whoever edits must keep the points in order of their times.
    std::vector<AutomationPoint>& editCurve(int index)
    {
        indexed = false;
        pattern.reset();
        return curves[index];
    }

    FakeTrack& clip(const std::string& clipName, double start, double end)
    {
        std::vector<Clip>& edited = editClips();
        edited.push_back({clipName, start, end, 0.0});
        std::sort(edited.begin(), edited.end(), [](const Clip& a, const Clip& b) { return a.start < b.start; });
        return *this;
    }

    FakeTrack& point(int index, double time, double value)
    {
        std::vector<AutomationPoint>& points = editCurve(index);
        points.push_back({time, value});
        std::sort(points.begin(), points.end(),
                  [](const AutomationPoint& a, const AutomationPoint& b) { return a.time < b.time; });
        return *this;
    }

    // The clip under the position (its ends included; of two abutting clips
    // the later), the nearest ones before and after, and the automation
    // points on both sides.
    core::AudioInfo surroundings(double position) const
    {
        index();
        core::AudioInfo info;
        // The first clip that starts after the position.
        const size_t clipCount = pattern ? pattern->count : spans.size();
        const size_t after = pattern ? firstAfter(pattern->first, pattern->period, pattern->perClip, clipCount, position)
                                     : clipGrid.firstAfter(spans, &Span::start, position);
        const auto span = [this](size_t i) {
            return pattern ? Span{pattern->clipStart(i), pattern->clipStart(i) + pattern->length} : spans[i];
        };
        if (after < clipCount)
            info.after = {span(after).start, span(after).end};
        if (after > 0) {
            const Span last = span(after - 1);
            if (position <= last.end)
                info.at = {last.start, last.end};
            else
                info.before = {last.start, last.end};
            if (!info.at.isEmpty() && after > 1) {
                const Span earlier = span(after - 2);
                if (earlier.end < position)
                    info.before = {earlier.start, earlier.end};
            }
        }
        auto grid = curveGrids.begin();
        for (const auto& [curve, points] : curves) {
            const size_t next = pattern ? firstAfter(pattern->pointFirst, pattern->pointPeriod, pattern->perPoint,
                                                     points.size(), position)
                                        : (grid++)->firstAfter(points, &AutomationPoint::time, position);
            // The values of the pattern repeat: one remainder serves both
            // neighbours, which are consecutive.
            const size_t cycle = pattern ? pattern->values.size() : 1;
            const size_t slot = next % cycle;
            const auto point = [&](size_t i) {
                if (!pattern)
                    return points[i];
                const size_t at = i == next ? slot : (slot == 0 ? cycle - 1 : slot - 1);
                return AutomationPoint{pattern->pointTime(i), pattern->values[at]};
            };
            if (next > 0 && next < points.size())
                info.automation[curve] = {point(next - 1).time, point(next - 1).value, point(next).time,
                                          point(next).value};
            else if (next > 0)
                info.automation[curve] = {point(next - 1).time, point(next - 1).value, position,
                                          point(next - 1).value};
            else if (next < points.size())
                info.automation[curve] = {position, point(next).value, point(next).time, point(next).value};
        }
        return info;
    }

    // Copies what lies in [srcStart, srcEnd] so that srcStart lands on
    // dstStart in the work area.
    void copyRange(double srcStart, double srcEnd, double dstStart)
    {
        index();
        // A re-cut holds about as many clips as the track did: the work area
        // grows once instead of doubling its way there.
        if (work.capacity() == 0)
            work.reserve((pattern ? pattern->count : clipList.size()) * 5 / 4);
        if (pattern) {
            // The clips worked out as the lookups do, without reading the
            // long list at random places.
            size_t i = firstAfter(pattern->first, pattern->period, pattern->perClip, pattern->count, srcStart);
            if (i > 0 && pattern->clipStart(i - 1) + pattern->length > srcStart)
                --i;
            for (; i < pattern->count && pattern->clipStart(i) < srcEnd; ++i) {
                const double start = pattern->clipStart(i);
                const double from = std::max(start, srcStart);
                const double to = std::min(start + pattern->length, srcEnd);
                if (to > from)
                    work.push_back({pattern->name, dstStart + (from - srcStart), dstStart + (to - srcStart), from - start});
            }
            return;
        }
        // The first clip that ends after srcStart: the one under it, if it
        // reaches past it, else the next. Ends are in order too, since clips
        // never overlap.
        const size_t first = clipGrid.firstAfter(spans, &Span::start, srcStart);
        auto clip = clipList.begin() + static_cast<std::ptrdiff_t>(first);
        if (clip != clipList.begin() && std::prev(clip)->end > srcStart)
            --clip;
        for (; clip != clipList.end() && clip->start < srcEnd; ++clip) {
            const double from = std::max(clip->start, srcStart);
            const double to = std::min(clip->end, srcEnd);
            if (!(to > from))
                continue;
            work.push_back({clip->name, dstStart + (from - srcStart), dstStart + (to - srcStart),
                            clip->sourceIn + (from - clip->start)});
        }
    }

    // The work area becomes the track. Its clips are put in order when they
    // are next read: a benchmark that throws the track away never pays it.
    void takeWork()
    {
        editClips() = std::move(work);
        work.clear();
        unsorted = true;
    }

private:
    // Where the clips lie, without their names: what the lookups read,
    // packed close.
    struct Span {
        double start;
        double end;
    };

    // Of the times first + i x period for i below count, the first after
    // the position (count if none), as std::upper_bound would answer.
    static size_t firstAfter(double first, double period, double perPeriod, size_t count, double position)
    {
        if (!(position >= first))
            return 0;
        const double estimate = (position - first) * perPeriod;
        size_t i = estimate < static_cast<double>(count) ? static_cast<size_t>(estimate) + 1 : count;
        while (i > 0 && first + static_cast<double>(i - 1) * period > position)
            --i;
        while (i < count && first + static_cast<double>(i) * period <= position)
            ++i;
        return i;
    }

    void sortClips() const
    {
        if (unsorted)
            std::sort(clipList.begin(), clipList.end(), [](const Clip& a, const Clip& b) { return a.start < b.start; });
        unsorted = false;
    }

    void index() const
    {
        sortClips();
        if (indexed || pattern)
            return;
        spans.clear();
        spans.reserve(clipList.size());
        for (const Clip& clip : clipList)
            spans.push_back({clip.start, clip.end});
        clipGrid.build(spans, &Span::start);
        curveGrids.clear();
        for (const auto& [curve, points] : curves)
            curveGrids.emplace_back().build(points, &AutomationPoint::time);
        indexed = true;
    }

    mutable std::vector<Clip> clipList;
    mutable bool unsorted = false;
    std::map<int, std::vector<AutomationPoint>> curves;
    std::optional<Pattern> pattern;
    mutable bool indexed = false;
    mutable std::vector<Span> spans;
    mutable TimeGrid clipGrid;
    // One per curve, in the order of the curves.
    mutable std::vector<TimeGrid> curveGrids;
};

class FakeCutEvent : public core::CutEventBase {
public:
    FakeCutEvent(FakeTrack& track, int64_t& queries, double srcStart, double srcEnd, double dstStart, double dstEnd)
        : CutEventBase(srcStart, srcEnd, dstStart, dstEnd), track(track), queries(queries)
    {
    }

    core::AudioInfo getAudioInfo(double position) override
    {
        ++queries;
        return track.surroundings(position);
    }
    std::string getTrackName() override { return track.name; }
    bool isAudioTrack() override { return track.audio; }

    FakeTrack& track;

private:
    int64_t& queries;
};

// Counts the steps advanced under each detail text, and answers a cancel
// once a given number of steps has been advanced.
class RecordingProgress : public core::ProgressHandlerBase {
public:
    void start(const std::u16string& text, int64_t newTotal, bool cancellable) override { total = newTotal; }
    void finish() override {}
    void setValue(int64_t value) override { advanced = value; }
    void advance(int64_t count) override
    {
        advanced += count;
        advancedUnder[detail] += count;
    }
    bool isCancelled() override { return cancelAfter >= 0 && advanced >= cancelAfter; }
    void setText(const std::u16string& text) override
    {
        detail = text;
        details.push_back(text);
    }
    void addSteps(int64_t count) override { total += count; }

    int64_t cancelAfter = -1;
    int64_t total = 0;
    int64_t advanced = 0;
    std::u16string detail;
    std::vector<std::u16string> details;
    std::map<std::u16string, int64_t> advancedUnder;
};

class FakeMontaler : public core::MontalerBase {
public:
    using Result = util::Result;

    struct PreviewCall {
        std::vector<core::EventPtr> events;
        size_t first = 0;
        size_t last = 0;
        bool showDestination = false;
    };

    // With a model, the preview flag is kept in it as the host keeps it.
    explicit FakeMontaler(core::DataModel* model = nullptr) : model(model) {}

    FakeTrack& addTrack(const std::string& name)
    {
        FakeTrack& track = tracks.emplace_back();
        track.name = name;
        return track;
    }

    // Makes the named slot answer (or, for slots without a code, throw) the
    // code from its call number `from` on, counting from 1.
    void fail(const std::string& slot, Result::Type code, int from = 1) { failures[slot] = {code, from}; }

    util::Result::Type startConform() override
    {
        ++startConformCalls;
        return Result::Ok;
    }
    util::Result::Type preview(const core::EventList& events, size_t first, size_t last, bool showDestination) override
    {
        previews.push_back({events.getEvents(), first, last, showDestination});
        return MontalerBase::preview(events, first, last, showDestination);
    }
    util::Result::Type showPreview(const core::EventList& events, size_t first, size_t last,
                                   bool showDestination) override
    {
        shownPreviews.push_back({events.getEvents(), first, last, showDestination});
        return Result::Ok;
    }
    util::Result::Type deletePreview() override
    {
        ++deletePreviewCalls;
        return MontalerBase::deletePreview();
    }
    void getLocators(double& left, double& right) override { left = right = 0.0; }
    void setLocators(double, double, bool) override {}
    void getCycle(double& start, double& end) override { start = end = 0.0; }
    void setCycle(double, double) override {}
    double getCursor() override { return 0.0; }
    void setCursor(double) override {}
    std::string getProjectName() override { return "Fake"; }
    core::MediaPoolInterface* getMediaPool() override { return nullptr; }
    double getProjectStart() override { return 0.0; }
    void setPreviewActive(bool on) override
    {
        previewActivations.push_back(on);
        if (model)
            model->setPreviewActive(on);
    }
    bool isPreviewActive() override { return model && model->isPreviewActive(); }
    util::Result::Type checkTracks() override { return tracksCode; }
    void setPreviewEvents(const core::EventList&) override {}

    util::Result::Type clearWorkArea() override
    {
        if (const Result::Type code = enter("clearWorkArea"))
            return code;
        for (FakeTrack& track : tracks)
            track.work.clear();
        return Result::Ok;
    }

    core::CutPtr createCut(const core::EventPtr& event) override
    {
        if (const Result::Type code = enter("createCut"))
            throw code;
        const double srcIn = event->getSrcIn().toSeconds(rate);
        const double srcOut = event->getSrcOut().toSeconds(rate);
        const double dstIn = event->getDstIn().toSeconds(rate);
        const double dstOut = event->getDstOut().toSeconds(rate);
        const bool selectedOnly = settings.getApplyTo() == core::ApplyTo::SelectedTracks;
        // The pieces of a cut side by side in one block, as the driver walks
        // them together.
        auto block = std::make_shared<std::vector<FakeCutEvent>>();
        block->reserve(tracks.size());
        for (FakeTrack& track : tracks) {
            if (track.locked || (selectedOnly && !track.selected))
                continue;
            block->emplace_back(track, audioInfoQueries, srcIn, srcOut, dstIn, dstOut);
        }
        std::vector<core::CutEventPtr> pieces;
        pieces.reserve(block->size());
        for (FakeCutEvent& piece : *block)
            pieces.push_back(core::CutEventPtr(block, &piece));
        return std::make_shared<core::Cut>(event, std::move(pieces));
    }

    util::Result::Type applyCut(core::Cut& cut) override
    {
        if (const Result::Type code = enter("applyCut"))
            return code;
        if (progress && progress->isCancelled())
            throw Result::Cancelled;
        for (const core::CutEventPtr& piece : cut.getPieces()) {
            auto& fake = static_cast<FakeCutEvent&>(*piece);
            fake.track.copyRange(piece->getSrcStart(), piece->getSrcEnd(), piece->getDstStart());
        }
        if (progress)
            progress->advance(static_cast<int64_t>(cut.getPieces().size()));
        return Result::Ok;
    }

    util::Result::Type complete() override
    {
        if (const Result::Type code = enter("complete"))
            return code;
        for (FakeTrack& track : tracks)
            track.takeWork();
        return Result::Ok;
    }

    util::Result::Type generateMarkers(const std::vector<core::InformationEntry>& entries) override
    {
        if (const Result::Type code = enter("generateMarkers"))
            return code;
        markers.insert(markers.end(), entries.begin(), entries.end());
        return Result::Ok;
    }

    core::InformationContext getInformationContext() override
    {
        if (const Result::Type code = enter("getInformationContext"))
            throw code;
        return {&oldList, &newList, rate, &settings, offset};
    }

    core::SnippetContext getSnippetContext() override
    {
        if (const Result::Type code = enter("getSnippetContext"))
            throw code;
        return {rate, &settings};
    }

    util::Result::Type applyCuts(core::CutList& cuts) override
    {
        if (const Result::Type code = enter("applyCuts"))
            return code;
        return MontalerBase::applyCuts(cuts);
    }

    // A deque: the pieces hold references to their tracks.
    std::deque<FakeTrack> tracks;
    core::Settings settings;
    core::EventList oldList{core::EventList::OldKind};
    core::EventList newList{core::EventList::NewKind};
    core::Framerate rate{25, 0};
    double offset = 0.0;

    std::vector<std::string> calls;
    std::vector<core::InformationEntry> markers;
    int64_t audioInfoQueries = 0;

    // What checkTracks answers, and what the window asked for.
    Result::Type tracksCode = Result::Ok;
    int startConformCalls = 0;
    int deletePreviewCalls = 0;
    std::vector<PreviewCall> previews;
    std::vector<PreviewCall> shownPreviews;
    std::vector<bool> previewActivations;

private:
    struct Failure {
        Result::Type code;
        int from;
    };

    Result::Type enter(const std::string& slot)
    {
        calls.push_back(slot);
        const int count = ++callCounts[slot];
        const auto failure = failures.find(slot);
        if (failure == failures.end())
            return Result::Ok;
        return count >= failure->second.from ? failure->second.code : Result::Ok;
    }

    core::DataModel* model;
    std::map<std::string, Failure> failures;
    std::map<std::string, int> callCounts;
};

} // namespace montala::test
