// The change report of a long re-cut: 10,000 shots over 2,000 rolls, of
// which about one in ten is trimmed, moved, deleted, inserted, slowed or a
// new VFX version without its pattern, so every kind of row and many
// stretches needing sound are there. Measured: building the report from the
// cuts and their Change EDL, and writing it in each form.

#include "core/generation/ChangeEdlGenerator.h"
#include "core/model/DataModel.h"
#include "core/report/ChangeReport.h"
#include "core/report/ReportWriters.h"
#include "util/StringConverter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <sstream>

using namespace montala;
using namespace montala::core;

namespace {

void add(EventList& list, int number, const std::string& roll, int srcIn, int srcLength, int rec, int recLength)
{
    auto event = std::make_shared<EventBase>();
    event->setTimecodes(Timecode(srcIn), Timecode(srcIn + srcLength), Timecode(rec), Timecode(rec + recLength));
    event->setRollName(roll);
    event->setEventNumber(number);
    list.addEvent(event);
}

// Old: shots laid end to end from 01:00:00:00. New: the same with changes.
void makeRecut(DataModel& model, int shots, int rolls)
{
    std::mt19937 random(18);
    const auto pick = [&random](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
    const auto rollName = [](int roll, int version) {
        char name[24];
        std::snprintf(name, sizeof name, "R%04dV%02d", roll, version);
        return std::string(name);
    };
    int oldRec = 90000, newRec = 90000, newNumber = 1;
    for (int i = 0; i < shots; ++i) {
        const int roll = i % rolls;
        const int source = 180000 + (i / rolls) * 200;
        const int length = pick(25, 75);
        add(model.getOldList(), i + 1, rollName(roll, 1), source, length, oldRec, length);
        oldRec += length;
        switch (pick(0, 19)) {
        case 0: // head trim
            add(model.getNewList(), newNumber++, rollName(roll, 1), source + 5, length - 5, newRec, length - 5);
            newRec += length - 5;
            break;
        case 1: // deleted
            break;
        case 2: // an insert before the shot
            add(model.getNewList(), newNumber++, "NEW" + std::to_string(i), 0, 40, newRec, 40);
            newRec += 40;
            add(model.getNewList(), newNumber++, rollName(roll, 1), source, length, newRec, length);
            newRec += length;
            break;
        case 3: // half speed
            add(model.getNewList(), newNumber++, rollName(roll, 1), source, length / 2, newRec, length / 2 * 2);
            newRec += length / 2 * 2;
            break;
        case 4: // new VFX version, no pattern
            add(model.getNewList(), newNumber++, rollName(roll, 2), source, length, newRec, length);
            newRec += length;
            break;
        default:
            add(model.getNewList(), newNumber++, rollName(roll, 1), source, length, newRec, length);
            newRec += length;
        }
    }
}

void BM_Report(benchmark::State& state)
{
    FixedFramerateProvider provider(Framerate(25, 0));
    ScopedFramerateProvider providerScope(&provider);
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);
    DataModel model;
    makeRecut(model, static_cast<int>(state.range(0)), 2000);
    model.generateChangeEdl();
    const int format = static_cast<int>(state.range(1));
    size_t bytes = 0;
    for (auto _ : state) {
        const report::ChangeReport changes = report::ChangeReportBuilder().build(model, provider.getFramerate());
        std::ostringstream out;
        switch (format) {
        case 0: report::writeText(out, changes); break;
        case 1: report::writeCsv(out, changes); break;
        case 2: report::writeJson(out, changes); break;
        case 3: report::writeHtml(out, changes, "old to new"); break;
        default: break; // the report alone, unwritten
        }
        bytes = out.str().size();
        benchmark::DoNotOptimize(bytes);
    }
    state.counters["bytes"] = static_cast<double>(bytes);
    state.counters["changeEvents"] = static_cast<double>(model.getChangeList().getSize());
}

} // namespace

// shots, format: 0 text, 1 CSV, 2 JSON, 3 HTML, 4 none (building only)
BENCHMARK(BM_Report)
    ->Args({10000, 0})
    ->Args({10000, 1})
    ->Args({10000, 2})
    ->Args({10000, 3})
    ->Args({10000, 4})
    ->Unit(benchmark::kMillisecond);
