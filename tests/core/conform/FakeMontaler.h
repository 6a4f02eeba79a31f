#pragma once

// An in-memory stand-in for the host behind MontalerBase: tracks of audio
// clips and automation, a work area per track, and a log of the slot calls.
// It edits like a plain audio editor: applying a cut copies the audio of
// each piece's source range to its destination in the work area, and
// complete() moves the work area home. Header-only, so that the benchmark
// can run conforms on it as well.

#include "core/conform/Cut.h"
#include "core/conform/CutList.h"
#include "core/EventList.h"
#include "core/conform/MontalerBase.h"
#include "core/ProgressHandlerBase.h"
#include "core/Settings.h"
#include "util/Result.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace montala::test {

// One audio event: [start, end] on the timeline, showing its recording
// from sourceIn on.
struct Clip {
    std::string name;
    double start = 0.0;
    double end = 0.0;
    double sourceIn = 0.0;

    bool operator==(const Clip& other) const = default;
};

struct AutomationPoint {
    double time = 0.0;
    double value = 0.0;
};

struct FakeTrack {
    std::string name;
    bool audio = true;
    bool locked = false;
    bool selected = true;
    std::vector<Clip> clips;
    std::vector<Clip> work;
    std::map<int, std::vector<AutomationPoint>> automation;

    FakeTrack& clip(const std::string& clipName, double start, double end)
    {
        clips.push_back({clipName, start, end, 0.0});
        std::sort(clips.begin(), clips.end(), [](const Clip& a, const Clip& b) { return a.start < b.start; });
        return *this;
    }

    FakeTrack& point(int index, double time, double value)
    {
        auto& points = automation[index];
        points.push_back({time, value});
        std::sort(points.begin(), points.end(),
                  [](const AutomationPoint& a, const AutomationPoint& b) { return a.time < b.time; });
        return *this;
    }

    // The clip under the position (its ends included; of two abutting clips
    // the later), the nearest ones before and after, and the automation
    // points on both sides. Clips of a track never overlap, so both ends
    // are sorted and a binary search finds them: the benchmark measures the
    // driver, not this double.
    core::AudioInfo surroundings(double position) const
    {
        core::AudioInfo info;
        // The first clip that starts after the position.
        const auto after = std::upper_bound(clips.begin(), clips.end(), position,
                                            [](double p, const Clip& clip) { return p < clip.start; });
        if (after != clips.end())
            info.after = {after->start, after->end};
        if (after != clips.begin()) {
            const Clip& last = *std::prev(after);
            if (position <= last.end)
                info.at = {last.start, last.end};
            else
                info.before = {last.start, last.end};
            if (!info.at.isEmpty() && std::prev(after) != clips.begin()) {
                const Clip& earlier = *std::prev(after, 2);
                if (earlier.end < position)
                    info.before = {earlier.start, earlier.end};
            }
        }
        for (const auto& [index, points] : automation) {
            const auto next = std::upper_bound(points.begin(), points.end(), position,
                                               [](double p, const AutomationPoint& point) { return p < point.time; });
            const AutomationPoint* previous = next == points.begin() ? nullptr : &*std::prev(next);
            if (previous && next != points.end())
                info.automation[index] = {previous->time, previous->value, next->time, next->value};
            else if (previous)
                info.automation[index] = {previous->time, previous->value, position, previous->value};
            else if (next != points.end())
                info.automation[index] = {position, next->value, next->time, next->value};
        }
        return info;
    }

    // Copies what lies in [srcStart, srcEnd] so that srcStart lands on
    // dstStart in the work area.
    void copyRange(double srcStart, double srcEnd, double dstStart)
    {
        auto clip = std::lower_bound(clips.begin(), clips.end(), srcStart,
                                     [](const Clip& c, double p) { return c.end <= p; });
        for (; clip != clips.end() && clip->start < srcEnd; ++clip) {
            const double from = std::max(clip->start, srcStart);
            const double to = std::min(clip->end, srcEnd);
            if (!(to > from))
                continue;
            work.push_back({clip->name, dstStart + (from - srcStart), dstStart + (to - srcStart),
                            clip->sourceIn + (from - clip->start)});
        }
    }
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

    FakeTrack& addTrack(const std::string& name)
    {
        FakeTrack& track = tracks.emplace_back();
        track.name = name;
        return track;
    }

    // Makes the named slot answer (or, for slots without a code, throw) the
    // code from its call number `from` on, counting from 1.
    void fail(const std::string& slot, Result::Type code, int from = 1) { failures[slot] = {code, from}; }

    util::Result::Type startConform() override { return Result::Ok; }
    util::Result::Type showPreview(const core::EventList&, size_t, size_t, bool) override { return Result::Ok; }
    void getLocators(double& left, double& right) override { left = right = 0.0; }
    void setLocators(double, double, bool) override {}
    void getCycle(double& start, double& end) override { start = end = 0.0; }
    void setCycle(double, double) override {}
    double getCursor() override { return 0.0; }
    void setCursor(double) override {}
    std::string getProjectName() override { return "Fake"; }
    core::MediaPoolInterface* getMediaPool() override { return nullptr; }
    double getProjectStart() override { return 0.0; }
    void setPreviewActive(bool) override {}
    bool isPreviewActive() override { return false; }
    util::Result::Type checkTracks() override { return Result::Ok; }
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
        std::vector<core::CutEventPtr> pieces;
        for (FakeTrack& track : tracks) {
            if (track.locked || (settings.getApplyTo() == core::ApplyTo::SelectedTracks && !track.selected))
                continue;
            pieces.push_back(std::make_shared<FakeCutEvent>(
                track, audioInfoQueries, event->getSrcIn().toSeconds(rate), event->getSrcOut().toSeconds(rate),
                event->getDstIn().toSeconds(rate), event->getDstOut().toSeconds(rate)));
        }
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
        for (FakeTrack& track : tracks) {
            track.clips = std::move(track.work);
            track.work.clear();
            std::sort(track.clips.begin(), track.clips.end(),
                      [](const Clip& a, const Clip& b) { return a.start < b.start; });
        }
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

    std::map<std::string, Failure> failures;
    std::map<std::string, int> callCounts;
};

} // namespace montala::test
