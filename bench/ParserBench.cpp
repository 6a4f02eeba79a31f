// Reading a long EDL, and the timecode conversions that every event runs.
#include "core/events/EventList.h"
#include "core/time/Framerate.h"
#include "core/time/Timecode.h"
#include "core/fileio/CmxParser.h"
#include "util/StringConverter.h"

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

using namespace montala;
using core::Framerate;
using core::Timecode;

namespace {

std::string timecodeText(int frames, int fps)
{
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d:%02d", frames / (fps * 3600), frames / (fps * 60) % 60,
                  frames / fps % 60, frames % fps);
    return text;
}

// A reel of cuts with a comment each and a dissolve pair every tenth event,
// the way an editing system writes it.
std::string generateEdl(int events)
{
    std::string text = "TITLE: BENCH REEL\nFCM: NON-DROP FRAME\n\n";
    int record = 90000; // 01:00:00:00 at 25 fps
    char line[160];
    for (int i = 1; i <= events; ++i) {
        const int length = 25 + i % 100;
        const int source = 1800000 + (i * 997) % 500000;
        std::string roll = "A" + std::to_string(100 + i % 400);
        if (i % 10 == 0) {
            std::snprintf(line, sizeof line, "%03d  %-8s V     C        %s %s %s %s\n", i % 1000, roll.c_str(),
                          timecodeText(source, 25).c_str(), timecodeText(source, 25).c_str(),
                          timecodeText(record, 25).c_str(), timecodeText(record, 25).c_str());
            text += line;
            std::snprintf(line, sizeof line, "%03d  %-8s V     D    025 %s %s %s %s\n", i % 1000, "B200",
                          timecodeText(source, 25).c_str(), timecodeText(source + length, 25).c_str(),
                          timecodeText(record, 25).c_str(), timecodeText(record + length, 25).c_str());
            text += line;
            text += "* FROM CLIP NAME:  " + roll + "_C001_0412AB.mov\n";
            text += "* TO CLIP NAME:  B200_C002_0412AB.mov\n";
        } else {
            std::snprintf(line, sizeof line, "%03d  %-8s V     C        %s %s %s %s\n", i % 1000, roll.c_str(),
                          timecodeText(source, 25).c_str(), timecodeText(source + length, 25).c_str(),
                          timecodeText(record, 25).c_str(), timecodeText(record + length, 25).c_str());
            text += line;
            text += "* FROM CLIP NAME:  " + roll + "_C001_0412AB.mov\n";
        }
        record += length;
    }
    return text;
}

size_t residentBytes()
{
    size_t pages = 0;
    size_t resident = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%zu %zu", &pages, &resident) != 2)
            resident = 0;
        std::fclose(file);
    }
    return resident * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

struct ModelEnvironment {
    core::FixedFramerateProvider provider{Framerate(25, 0)};
    core::ScopedFramerateProvider providerScope{&provider};
    util::StringConverter converter;
    util::ScopedStringConverter converterScope{converter};
};

void ParseTenThousandEventEdl(benchmark::State& state)
{
    ModelEnvironment environment;
    const int events = static_cast<int>(state.range(0));
    const std::string path = "/tmp/montala_bench_reel.edl";
    std::ofstream(path, std::ios::binary) << generateEdl(events);
    const std::u16string widePath = environment.converter.fromUtf8(path);

    size_t parsed = 0;
    for (auto _ : state) {
        core::EventList list(core::EventList::OldKind);
        Framerate rate;
        core::fileio::parseEdlFile(widePath, list, rate, false);
        parsed = list.getSize();
        benchmark::DoNotOptimize(parsed);
    }

    // Memory the parsed events keep, measured outside the timed loop as the
    // pages they made resident: the heap's own count misses blocks that are
    // mapped apart, as a long list's events are.
    malloc_trim(0);
    const size_t before = residentBytes();
    {
        core::EventList list(core::EventList::OldKind);
        Framerate rate;
        core::fileio::parseEdlFile(widePath, list, rate, false);
        const size_t after = residentBytes();
        state.counters["resident_bytes_per_event"] =
            static_cast<double>(after - before) / static_cast<double>(list.getSize());
    }
    state.counters["events"] = static_cast<double>(parsed);
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(parsed));
    std::remove(path.c_str());
}
BENCHMARK(ParseTenThousandEventEdl)->Arg(10000)->Unit(benchmark::kMillisecond);
// One read only: run alone (--benchmark_filter=FirstRead), it is the first
// read of a fresh process, as `montala inspect` or `generate` reads, with
// every page new to the process. Run the program a few times for a spread.
BENCHMARK(ParseTenThousandEventEdl)
    ->Name("FirstReadOfTenThousandEventEdl")
    ->Arg(10000)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

void TimecodeFramesRoundTrip(benchmark::State& state)
{
    const Framerate rate(30, true, static_cast<int>(state.range(0)));
    int n = 0;
    Timecode value;
    for (auto _ : state) {
        value.fromFrames(n, rate);
        benchmark::DoNotOptimize(value.toFrames(rate));
        n = (n + 7919) % rate.getMaxFrames();
    }
    state.SetItemsProcessed(state.iterations());
    state.SetLabel(state.range(0) ? "29.97 drop frame" : "29.97 non-drop");
}
BENCHMARK(TimecodeFramesRoundTrip)->Arg(0)->Arg(1);

void TimecodeSecondsRoundTrip(benchmark::State& state)
{
    ModelEnvironment environment;
    const Framerate rate(25, 0);
    double seconds = 0.0;
    Timecode value;
    for (auto _ : state) {
        value.fromSeconds(seconds, rate);
        benchmark::DoNotOptimize(value.toSeconds(rate));
        seconds += 1.37;
        if (seconds > 86000.0)
            seconds = 0.0;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(TimecodeSecondsRoundTrip);

// Timecode to text, as lists and `inspect --json` print thousands of them.
void TimecodeToText(benchmark::State& state)
{
    const Framerate rate(25, 0);
    int n = 0;
    Timecode value;
    for (auto _ : state) {
        value.fromFrames(n, rate);
        benchmark::DoNotOptimize(value.toString());
        n = (n + 7919) % rate.getMaxFrames();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(TimecodeToText);

} // namespace
