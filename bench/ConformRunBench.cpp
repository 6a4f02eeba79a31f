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

#include "run/RandomSession.h"

#include "run/ConformJob.h"
#include "util/StringConverter.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <map>

#include <unistd.h>

namespace {

using namespace montala;
namespace fs = std::filesystem;

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
    found.folder = fs::temp_directory_path() /
                   ("montala-conform-bench-" + std::to_string(::getpid()) + "-" + std::to_string(shots) + "x" +
                    std::to_string(tracks));
    fs::create_directories(found.folder);
    test::RandomRecut::Shape shape;
    shape.shots = shots;
    shape.audioTracks = tracks;
    shape.shuffled = true;
    shape.plain = true;
    test::RandomRecut recut(7, shape);
    run::ConformRequest& request = found.request;
    request.sessionPath = (found.folder / "old.json").string();
    test::RandomRecut::write(request.sessionPath, recut.session());
    const auto writeAll = [&](const std::vector<std::string>& texts, const std::string& stem) {
        std::vector<std::string> paths;
        for (size_t index = 0; index < texts.size(); ++index) {
            paths.push_back((found.folder / (stem + std::to_string(index) + ".edl")).string());
            test::RandomRecut::write(paths.back(), texts[index]);
        }
        return paths;
    };
    request.oldFiles = writeAll(recut.oldEdls(), "old");
    request.newFiles = writeAll(recut.newEdls(), "new");
    request.outputPath = (found.folder / "new.json").string();
    return found;
}

struct Cleanup {
    ~Cleanup()
    {
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator(fs::temp_directory_path(), ignored))
            if (entry.path().filename().string().rfind("montala-conform-bench-" + std::to_string(::getpid()), 0) == 0)
                fs::remove_all(entry.path(), ignored);
    }
} cleanup;

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
