// A whole conform through the in-memory host of the tests: cuts, snippet
// algorithm, applying, all five detectors and the markers, over the
// shuffled reel of ConformScene.h.
//
// Reported per run: time, getAudioInfo calls and markers. Events x tracks
// is the unit of the driver's work, and the driver and its detectors do a
// constant amount of it per piece (the start order they walk costs n log n
// over events only): instructions per piece stay within a few percent from
// 250 to 8,000 events. Time per piece still grows at the large sizes, from
// memory: 8,000 events on 32 tracks are 256,000 pieces and 340,000 clips,
// far beyond the caches, and the host's answers come in the random order of
// the shuffled sources.

#include "core/conform/ConformScene.h"

#include "core/time/Framerate.h"
#include "util/StringConverter.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace {

using namespace montala;

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
        auto scene = std::make_unique<test::ShuffledReel>(eventCount, trackCount);
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
