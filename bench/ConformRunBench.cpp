// The whole apply on the simulated host, as `montala conform` runs it: a
// reel whose every shot moved (so each is one Change event) under a session
// of plain tracks (one event per shot and track), the same with volume
// automation on every fourth track, or a mix's tracks (layers, parts,
// joined takes) with that automation; all markers on.
//
// The time reported is the run's own, from startConform to its end (the
// host's edit, the cuts, the detectors, the markers, the move home); loading
// the session and the EDLs, generating the Change EDL and saving are
// counted apart in "job". "perPiece" is the run's time per Change event x
// track, the unit of its work: it stays flat as the reel and the session
// grow when the run is linear in both; "perPieceCpu" the same in CPU time.
// "peakRss_MB" is the process's peak resident memory during the whole job,
// from loading the session to saving it, and "peakPerSession" that peak over
// the session file's size (what `montala conform` is held to).

#include "BenchReel.h"

#include "util/StringConverter.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <tuple>

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

double threadSeconds()
{
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The kernel's peak resident memory of this process since the last call,
// in bytes. Each call starts a new peak from what is resident then, after
// the heap has handed back what it holds free: the runs before this one
// leave no high-water mark behind.
double peakResidentSinceLast()
{
    std::ifstream status("/proc/self/status");
    double kilobytes = 0.0;
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmHWM:"))
            kilobytes = std::stod(line.substr(6));
    ::malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
    return kilobytes * 1024.0;
}

const Reel& reel(int shots, int tracks, bench::Session session)
{
    static std::map<std::tuple<int, int, bench::Session>, Reel> made;
    Reel& found = made[{shots, tracks, session}];
    if (!found.folder.empty())
        return found;
    found.folder = bench::reelFolder(folderPrefix, shots, tracks, session);
    found.request = bench::writeReel(found.folder, shots, tracks, session);
    return found;
}

void conformRun(benchmark::State& state)
{
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);
    const auto session = static_cast<bench::Session>(state.range(2));
    const Reel& files = reel(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), session);
    state.SetLabel(bench::sessionName(session));

    run::ConformOutcome outcome;
    double job = 0.0;
    // The run's CPU time as well, from the start of the conform stage to
    // the end of the run: on a shared machine the wall time says as much of
    // the others as of the run.
    double cpu = 0.0;
    double cpuBegan = 0.0;
    run::ConformWatcher watcher;
    watcher.stage = [&](run::ConformStage stage) {
        if (stage == run::ConformStage::Conforming)
            cpuBegan = threadSeconds();
    };
    watcher.conformed = [&](sim::SimProject&) { cpu = threadSeconds() - cpuBegan; };
    double peak = 0.0;
    for (auto _ : state) {
        peakResidentSinceLast();
        const auto began = std::chrono::steady_clock::now();
        outcome = run::runConform(files.request, watcher);
        job = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
        peak = peakResidentSinceLast();
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
    state.counters["perPieceCpu_us"] = cpu / pieces * 1e6;
    state.counters["peakRss_MB"] = peak / 1e6;
    state.counters["peakPerSession"] = peak / static_cast<double>(fs::file_size(files.request.sessionPath));
}

constexpr int plain = static_cast<int>(bench::Session::Plain);
constexpr int automated = static_cast<int>(bench::Session::Automated);
constexpr int mixed = static_cast<int>(bench::Session::Mixed);

BENCHMARK(conformRun)
    ->ArgNames({"shots", "tracks", "session"})
    ->Args({250, 32, plain})
    ->Args({1000, 32, plain})
    ->Args({2000, 32, plain})
    ->Args({5000, 32, plain})
    ->Args({1000, 64, plain})
    ->Args({2500, 64, plain})
    ->Args({5000, 64, plain})
    ->Args({500, 32, automated})
    ->Args({1000, 32, automated})
    ->Args({2000, 32, automated})
    ->Args({5000, 32, automated})
    ->Args({10000, 32, automated})
    ->Args({500, 32, mixed})
    ->Args({2000, 32, mixed})
    ->Args({5000, 32, mixed})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
