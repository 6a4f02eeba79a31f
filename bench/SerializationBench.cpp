// Every edit step stores the whole data model and every undo reads it back,
// so both must stay well below what a user notices on a long film: three
// lists of 10,000 events are to be written within 10 ms and read within 20 ms.
#include "core/model/DataModel.h"
#include "core/serialize/SerializationTree.h"
#include "util/StringConverter.h"

#include <benchmark/benchmark.h>

namespace {

using namespace montala;

constexpr int eventsPerList = 10000;

class BenchmarkEnvironment {
public:
    BenchmarkEnvironment() : providerScope(&provider), converterScope(converter) {}

private:
    core::FixedFramerateProvider provider{core::Framerate(25, 0)};
    core::ScopedFramerateProvider providerScope;
    util::StringConverter converter;
    util::ScopedStringConverter converterScope;
};

// One-second shots, laid end to end from 01:00:00:00, with names and a file
// as real EDL events carry them.
void fill(core::EventList& list, int offsetSeconds)
{
    for (int i = 0; i < eventsPerList; ++i) {
        const core::Timecode in(3600.0 + i);
        const core::Timecode out(3601.0 + i);
        const core::Timecode recordIn(3600.0 + offsetSeconds + i);
        const core::Timecode recordOut(3601.0 + offsetSeconds + i);
        core::EventPtr event = core::EventBase::create(core::EventBase::Plain);
        event->setTimecodes(in, out, recordIn, recordOut);
        event->setEventNumber(i % 1000);
        event->setRollName("A" + std::to_string(i % 97));
        event->setClipName("A" + std::to_string(i % 97) + "_C" + std::to_string(i) + ".mov");
        event->setEdlFile("reel1.edl");
        list.addEvent(event);
    }
}

void fillModel(core::DataModel& model)
{
    fill(model.getOldList(), 0);
    fill(model.getNewList(), 7);
    fill(model.getChangeList(), 7);
    model.setProperty(10003, core::Variant("/media/edl"));
    model.getVideoList().addEntry({"/pic/reel1.mov", core::Timecode(3600.0), core::Timecode(eventsPerList + 0.0)});
}

void writeModelWith30000Events(benchmark::State& state)
{
    BenchmarkEnvironment environment;
    core::DataModel model;
    fillModel(model);
    size_t bytes = 0;
    for (auto _ : state) {
        core::serialize::SerializationTree tree;
        tree.writeObject(model);
        bytes = tree.getSize();
        benchmark::DoNotOptimize(tree.getData());
    }
    state.counters["blockBytes"] = static_cast<double>(bytes);
}
BENCHMARK(writeModelWith30000Events)->Unit(benchmark::kMillisecond);

void readModelWith30000Events(benchmark::State& state)
{
    BenchmarkEnvironment environment;
    core::DataModel source;
    fillModel(source);
    core::serialize::SerializationTree tree;
    tree.writeObject(source);
    core::DataModel model;
    for (auto _ : state) {
        tree.rewind();
        tree.readObject(model);
        benchmark::DoNotOptimize(model.getChangeList().getSize());
    }
}
BENCHMARK(readModelWith30000Events)->Unit(benchmark::kMillisecond);

} // namespace
