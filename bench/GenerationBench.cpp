// Generation of a Change EDL over large cuts: a feature's worth of events
// spread over many roll names, re-cut by trims, moves, deletes and inserts.
// The cost should follow the events (and their overlaps), not how many of
// them share a roll: 1k, 10k and 100k events at five events a roll, 10k
// events on 20 rolls against 2,000 rolls, and a cut that uses one stretch of
// one take for every event.

#include "core/generation/ChangeEdlGenerator.h"
#include "core/events/EventList.h"
#include "core/time/Framerate.h"
#include "core/generation/HealProcessing.h"
#include "core/model/Settings.h"
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

// Shots of minLength to maxLength frames; a day holds 100k shots of 20.
Cuts makeCuts(int events, int rolls, int minLength = 25, int maxLength = 75)
{
    std::mt19937 random(42);
    std::vector<int> nextSource(static_cast<size_t>(rolls), 3600 * 25 * 2);
    std::vector<Shot> shots;
    for (int i = 0; i < events; ++i) {
        const int roll = i % rolls;
        const int length = std::uniform_int_distribution<int>(minLength, maxLength)(random);
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

void runGeneration(benchmark::State& state, bool withVfx, bool withHeal, bool shortShots = false)
{
    FixedFramerateProvider provider(Framerate(25, 0));
    ScopedFramerateProvider providerScope(&provider);
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);

    const Cuts cuts = shortShots ? makeCuts(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), 12, 20)
                                 : makeCuts(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
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
// Shots short enough for 100k of them to fit in a day, at five to a roll.
void BM_GenerateScaling(benchmark::State& state) { runGeneration(state, false, false, true); }

// Every event of both cuts shows the same four seconds of one take: each New
// event overlaps every Old event, and all its candidates are rivals. With
// the second argument 1, every hundredth Old use starts ten frames later, so
// the candidates are no longer all alike (but still share a stretch). With 2,
// the Old uses are 60 frames long and start 0 to 99 frames in, so they share
// no common stretch: the pairwise walk's worst case, quadratic in the Old
// events that one New event overlaps.
void BM_GenerateOneSourceRangeEverywhere(benchmark::State& state)
{
    FixedFramerateProvider provider(Framerate(25, 0));
    ScopedFramerateProvider providerScope(&provider);
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);

    const int events = static_cast<int>(state.range(0));
    std::vector<Shot> shots(static_cast<size_t>(events), Shot{1, 3600 * 25 * 2, 100});
    std::vector<Shot> oldShots = shots;
    if (state.range(1) == 1) {
        for (size_t i = 0; i < oldShots.size(); i += 100)
            oldShots[i].srcIn += 10;
    } else if (state.range(1) == 2) {
        for (size_t i = 0; i < oldShots.size(); ++i) {
            oldShots[i].srcIn += static_cast<int>(i % 100);
            oldShots[i].length = 60;
        }
    }
    const EventList oldList = layOut(oldShots, EventList::OldKind);
    // The re-cut drops every third use, so the New places differ.
    std::vector<Shot> recut;
    for (size_t i = 0; i < shots.size(); ++i) {
        if (i % 3 != 2)
            recut.push_back(shots[i]);
    }
    const EventList newList = layOut(recut, EventList::NewKind);
    ChangeEdlGenerator generator;
    EventList changes(EventList::ChangeKind);
    for (auto _ : state) {
        generator.generate(oldList, newList, changes);
        benchmark::DoNotOptimize(changes.getSize());
    }
    state.counters["changeEvents"] = static_cast<double>(changes.getSize());
}

} // namespace

// events, rolls
BENCHMARK(BM_Generate)
    ->Args({1000, 200})
    ->Args({10000, 2000})
    ->Args({10000, 20})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GenerateScaling)
    ->Args({1000, 200})
    ->Args({10000, 2000})
    ->Args({100000, 20000})
    ->Args({100000, 2000})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GenerateWithVfxPatterns)->Args({1000, 200})->Args({10000, 2000})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GenerateAndHeal)->Args({1000, 200})->Args({10000, 2000})->Unit(benchmark::kMillisecond);
// events, whether some uses are shifted
BENCHMARK(BM_GenerateOneSourceRangeEverywhere)
    ->Args({8000, 0})
    ->Args({16000, 0})
    ->Args({8000, 1})
    ->Args({500, 2})
    ->Args({1000, 2})
    ->Unit(benchmark::kMillisecond);
