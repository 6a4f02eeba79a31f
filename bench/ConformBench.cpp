// A whole conform through the in-memory host of the tests: cuts, snippet
// algorithm, applying, all five detectors and the markers. The scene is a
// re-cut of 4-second stretches in shuffled order over tracks of 2.5-second
// clips with automation; behind every tenth stretch the New EDL has one
// second that no Change event fills (an insert), and every 25th New event
// is a dissolve.
//
// Reported per run: time, getAudioInfo calls and markers. Events x tracks
// is the unit of the driver's work: time per (event x track) should stay
// flat across the sizes.

#include "core/conform/FakeMontaler.h"

#include "core/Framerate.h"
#include "core/Timecode.h"
#include "util/StringConverter.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace montala;

constexpr double firstSecond = 36000.0; // 10:00:00:00
constexpr double stretch = 4.0;

core::Timecode at(double seconds)
{
    core::Timecode timecode;
    timecode.fromSeconds(seconds);
    return timecode;
}

struct Scene {
    explicit Scene(int eventCount, int trackCount)
    {
        host.settings.setIncludeOverhanging(true);
        const double length = eventCount * stretch;
        for (int t = 0; t < trackCount; ++t) {
            test::FakeTrack& track = host.addTrack("Track " + std::to_string(t + 1));
            // Clips every 3 s, offset per track so that the edits fall in
            // different places of the clips.
            for (double start = firstSecond + 0.04 * t; start + 2.5 < firstSecond + length; start += 3.0)
                track.editClips().push_back({"clip", start, start + 2.5, 0.0});
            for (double time = firstSecond; time < firstSecond + length; time += 5.0)
                track.editCurve(0).push_back({time, (static_cast<int>(time) % 7) / 7.0});
        }

        std::vector<int> order(eventCount);
        for (int i = 0; i < eventCount; ++i)
            order[i] = i;
        std::shuffle(order.begin(), order.end(), std::mt19937(42));
        for (int i = 0; i < eventCount; ++i) {
            const int slot = order[i];
            const double src = firstSecond + i * stretch;
            const double dst = firstSecond + slot * stretch + (slot / 10) * 1.0;
            auto event = std::make_shared<core::EventBase>();
            event->setTimecodes(at(src), at(src + stretch), at(dst), at(dst + stretch));
            event->setRollName("A" + std::to_string(i));
            changes.addEvent(event);

            auto shot = std::make_shared<core::EventBase>();
            const double insert = slot % 10 == 9 ? 1.0 : 0.0;
            shot->setTimecodes(at(src), at(src + stretch + insert), at(dst), at(dst + stretch + insert));
            shot->setRollName("A" + std::to_string(i));
            if (i % 25 == 0) {
                shot->setTransitionType(core::EventBase::Dissolve);
                shot->setTransitionDuration(12);
            }
            host.newList.addEvent(shot);
        }
    }

    test::FakeMontaler host;
    core::EventList changes{core::EventList::ChangeKind};
};

void conform(benchmark::State& state)
{
    core::FixedFramerateProvider provider(core::Framerate(25, 0));
    core::ScopedFramerateProvider providerScope(&provider);
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);

    const int eventCount = static_cast<int>(state.range(0));
    const int trackCount = static_cast<int>(state.range(1));
    int64_t queries = 0;
    size_t markers = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto scene = std::make_unique<Scene>(eventCount, trackCount);
        state.ResumeTiming();
        const util::Result::Type result = scene->host.conform(scene->changes);
        benchmark::DoNotOptimize(result);
        state.PauseTiming();
        queries = scene->host.audioInfoQueries;
        markers = scene->host.markers.size();
        scene.reset();
        state.ResumeTiming();
    }
    const double pieces = static_cast<double>(eventCount) * trackCount;
    state.counters["getAudioInfo"] = static_cast<double>(queries);
    state.counters["markers"] = static_cast<double>(markers);
    state.counters["pieces"] = pieces;
    state.counters["perPiece"] =
        benchmark::Counter(pieces * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(conform)
    ->Args({250, 32})
    ->Args({1000, 32})
    ->Args({2000, 32})
    ->Args({4000, 32})
    ->Args({8000, 32})
    ->Unit(benchmark::kMillisecond);

} // namespace
