// The whole apply on the simulated host, as `montala conform` runs it: a
// reel whose every shot moved (so each is one Change event) under a session
// of plain tracks, one event per shot and track, all markers on.
//
// The time reported is the run's own, from startConform to its end (the
// host's edit, the cuts, the detectors, the markers, the move home); loading
// the session and the EDLs, generating the Change EDL and saving are
// counted apart in "job". "perPiece" is the run's time per Change event x
// track, the unit of its work: it stays flat as the reel and the session
// grow when the run is linear in both.

#include "BenchReel.h"

#include "util/StringConverter.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <map>

namespace {

using namespace montala;
namespace fs = std::filesystem;

const char* const folderPrefix = "montala-conform-bench-";
const bench::ReelCleanup cleanup(folderPrefix);

// The files of one size, written once for all the runs of that size.
struct Reel {
    run::ConformRequest request;
    fs::path folder;
};

const Reel& reel(int shots, int tracks)
{
    static std::map<std::pair<int, int>, Reel> made;
    Reel& found = made[{shots, tracks}];
    if (!found.folder.empty())
        return found;
    found.folder = bench::reelFolder(folderPrefix, shots, tracks);
    found.request = bench::writeReel(found.folder, shots, tracks);
    return found;
}

void conformRun(benchmark::State& state)
{
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);
    const Reel& files = reel(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));

    run::ConformOutcome outcome;
    double job = 0.0;
    for (auto _ : state) {
        const auto began = std::chrono::steady_clock::now();
        outcome = run::runConform(files.request, {});
        job = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
        if (outcome.status != run::ConformOutcome::Status::Done) {
            state.SkipWithError(outcome.message.c_str());
            return;
        }
        state.SetIterationTime(outcome.seconds);
    }
    const double pieces = static_cast<double>(outcome.changeEvents) * static_cast<double>(state.range(1));
    state.counters["changeEvents"] = static_cast<double>(outcome.changeEvents);
    state.counters["markers"] = static_cast<double>(outcome.summary.markerCount());
    state.counters["job_s"] = job;
    state.counters["perPiece_us"] = outcome.seconds / pieces * 1e6;
}

BENCHMARK(conformRun)
    ->Args({250, 32})
    ->Args({1000, 32})
    ->Args({2000, 32})
    ->Args({5000, 32})
    ->Args({1000, 64})
    ->Args({2500, 64})
    ->Args({5000, 64})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
