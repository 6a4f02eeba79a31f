// `montala verify` on the conforms of ConformRunBench: both sessions read,
// both cuts read by source timecode, and every frame of the New cut heard
// on every track of the two sessions. The time is the whole audit, reading
// included, as a user waits for it. "perFrameTrack" is that time per frame
// of the New cut and audited track.

#include "BenchReel.h"

#include "run/SyncAudit.h"
#include "util/StringConverter.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <map>

namespace {

using namespace montala;
namespace fs = std::filesystem;

struct Conformed {
    run::AuditRequest request;
    fs::path folder;
    std::string error;
};

const char* const folderPrefix = "montala-verify-bench-";
const bench::ReelCleanup cleanup(folderPrefix);

// The reel conformed once; every run audits that result.
const Conformed& conformed(int shots, int tracks)
{
    static std::map<std::pair<int, int>, Conformed> made;
    Conformed& found = made[{shots, tracks}];
    if (!found.folder.empty())
        return found;
    found.folder = bench::reelFolder(folderPrefix, shots, tracks);
    const run::ConformRequest conform = bench::writeReel(found.folder, shots, tracks);
    const run::ConformOutcome outcome = run::runConform(conform, {});
    if (outcome.status != run::ConformOutcome::Status::Done)
        found.error = outcome.message;
    found.request.oldSession = conform.sessionPath;
    found.request.newSession = conform.outputPath;
    found.request.oldFiles = conform.oldFiles;
    found.request.newFiles = conform.newFiles;
    return found;
}

void verify(benchmark::State& state)
{
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);
    const Conformed& files = conformed(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    if (!files.error.empty()) {
        state.SkipWithError(files.error.c_str());
        return;
    }
    run::AuditReport report;
    for (auto _ : state) {
        report = run::auditSync(files.request);
        benchmark::DoNotOptimize(report);
    }
    if (!report.inSync()) {
        state.SkipWithError("the conform is not in sync");
        return;
    }
    size_t judged = 0;
    for (const run::TrackAudit& track : report.tracks)
        judged += track.inSync + track.outOfSync + track.newPicture;
    state.counters["frames"] = static_cast<double>(report.newCutFrames);
    state.counters["tracks"] = static_cast<double>(report.tracks.size());
    state.counters["perFrameTrack"] =
        benchmark::Counter(static_cast<double>(judged) * static_cast<double>(state.iterations()),
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(verify)->Args({1000, 32})->Args({2500, 64})->Args({5000, 64})->Unit(benchmark::kMillisecond);

} // namespace
