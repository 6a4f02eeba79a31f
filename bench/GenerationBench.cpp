// Generation of a Change EDL over large cuts: a feature's worth of events
// spread over many roll names, re-cut by trims, moves, deletes and inserts.

#include "core/ChangeEdlGenerator.h"
#include "core/EventList.h"
#include "core/Framerate.h"
#include "core/HealProcessing.h"
#include "core/Settings.h"
#include "util/StringConverter.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <vector>

using namespace montala;
using namespace montala::core;

namespace {

struct Shot {
    int roll;
    int srcIn;
    int length;
    int version = 1;
};

EventPtr makeEvent(const Shot& shot, int rec, int number)
{
    // Roll names as VFX vendors deliver them: shot code, then version.
    char roll[32];
    std::snprintf(roll, sizeof roll, "SH_%04d_v%03d", shot.roll, shot.version);
    auto event = std::make_shared<EventBase>();
    event->setTimecodes(Timecode(shot.srcIn), Timecode(shot.srcIn + shot.length), Timecode(rec),
                        Timecode(rec + shot.length));
    event->setRollName(roll);
    event->setEventNumber(number);
    return event;
}

EventList layOut(const std::vector<Shot>& shots, int kind)
{
    EventList events(kind);
    int rec = 90000; // 01:00:00:00 at 25 fps
    int number = 1;
    for (const Shot& shot : shots) {
        events.addEvent(makeEvent(shot, rec, number++));
        rec += shot.length;
    }
    return events;
}

struct Cuts {
    EventList oldList{EventList::OldKind};
    EventList newList{EventList::NewKind};
};

Cuts makeCuts(int events, int rolls)
{
    std::mt19937 random(42);
    std::vector<int> nextSource(static_cast<size_t>(rolls), 3600 * 25 * 2);
    std::vector<Shot> shots;
    for (int i = 0; i < events; ++i) {
        const int roll = i % rolls;
        const int length = std::uniform_int_distribution<int>(25, 75)(random);
        int& source = nextSource[static_cast<size_t>(roll)];
        source += std::uniform_int_distribution<int>(0, 50)(random);
        shots.push_back({roll, source, length});
        source += length;
    }
    std::vector<Shot> recut;
    for (size_t i = 0; i < shots.size(); ++i) {
        Shot shot = shots[i];
        switch (std::uniform_int_distribution<int>(0, 9)(random)) {
        case 0: shot.srcIn += 5; shot.length -= 5; break;      // head trim
        case 1: shot.length -= 10; break;                      // tail trim
        case 2: if (i + 1 < shots.size()) std::swap(shot, shots[i + 1]); break; // move
        case 3: shot.roll = rolls + static_cast<int>(i); break; // new picture
        case 4: shot.version = 2; break;                        // new VFX version
        default: break;
        }
        recut.push_back(shot);
    }
    Cuts cuts;
    cuts.oldList = layOut(shots, EventList::OldKind);
    cuts.newList = layOut(recut, EventList::NewKind);
    return cuts;
}

void runGeneration(benchmark::State& state, bool withVfx, bool withHeal)
{
    FixedFramerateProvider provider(Framerate(25, 0));
    ScopedFramerateProvider providerScope(&provider);
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);

    const Cuts cuts = makeCuts(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    Settings settings;
    if (withVfx) {
        // One pattern that fits every name, two that fit none.
        settings.setVfxPattern(VfxPatternEntry("SH_****_v", "", true), 0);
        settings.setVfxPattern(VfxPatternEntry("VFX.", "_comp", true), 1);
        settings.setVfxPattern(VfxPatternEntry("PL_", "_v", true), 2);
    }
    ChangeEdlGenerator generator;
    generator.configure(settings.getMatchName(), settings.getVfxPatterns());
    EventList changes(EventList::ChangeKind);
    for (auto _ : state) {
        generator.generate(cuts.oldList, cuts.newList, changes);
        if (withHeal) {
            EventListAlgorithm::Context context{&cuts.newList, &settings, provider.getFramerate()};
            HealProcessing().process(changes, context);
        }
        benchmark::DoNotOptimize(changes.getSize());
    }
    state.counters["changeEvents"] = static_cast<double>(changes.getSize());
}

void BM_Generate(benchmark::State& state) { runGeneration(state, false, false); }
void BM_GenerateWithVfxPatterns(benchmark::State& state) { runGeneration(state, true, false); }
void BM_GenerateAndHeal(benchmark::State& state) { runGeneration(state, true, true); }

} // namespace

BENCHMARK(BM_Generate)->Args({1000, 200})->Args({10000, 2000})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GenerateWithVfxPatterns)->Args({1000, 200})->Args({10000, 2000})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GenerateAndHeal)->Args({1000, 200})->Args({10000, 2000})->Unit(benchmark::kMillisecond);
