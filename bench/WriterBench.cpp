// Saving a Change EDL of a whole feature: 10,000 events go to 11 numbered
// CMX files, within 20 ms.
#include "core/events/EventList.h"
#include "core/fileio/CmxWriter.h"
#include "util/StringConverter.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>
#include <unistd.h>

namespace {

using namespace montala;

void writeChangeEdlOf10000Events(benchmark::State& state)
{
    core::FixedFramerateProvider provider{core::Framerate(25, 0)};
    core::ScopedFramerateProvider providerScope(&provider);
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);

    core::EventList list(core::EventList::ChangeKind);
    for (int i = 0; i < 10000; ++i) {
        const core::Timecode in(3600.0 + i);
        const core::Timecode out(3601.0 + i);
        const core::Timecode recordIn(3605.0 + i);
        const core::Timecode recordOut(3606.0 + i);
        core::EventPtr event = core::EventBase::create(core::EventBase::Plain);
        event->setTimecodes(in, out, recordIn, recordOut);
        event->setRollName("Healed Event " + std::to_string(i));
        list.addEvent(event);
    }

    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("montala-writer-bench-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    const std::u16string path = (folder / "change.edl").u16string();
    for (auto _ : state) {
        if (core::fileio::writeEdlFile(path, list) != util::Result::Ok)
            state.SkipWithError("the Change EDL could not be written");
    }
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        (void)entry;
        ++files;
    }
    state.counters["files"] = static_cast<double>(files);
    std::filesystem::remove_all(folder);
}
BENCHMARK(writeChangeEdlOf10000Events)->Unit(benchmark::kMillisecond);

} // namespace
