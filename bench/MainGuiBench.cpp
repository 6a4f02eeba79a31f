// A click on a row of the Change table, in a window that shows a feature's
// worth of events: 10,000 shots whose neighbours swap places in the re-cut,
// so the Change EDL has 10,000 events too. One selection change marks the
// related Old and New rows, recolours the timeline and stores the selection;
// it has to fit into one frame at 60 Hz (16 ms). Painting is not part of it:
// JUCE paints later, only what is visible.
//
// Beside it, at 1,000 and 10,000 shots, the window's other costs that grow
// with the list: a click on "Generate" (the Change EDL worked out again, the
// Change table and the timeline rebuilt, against the generation alone),
// selecting every row, and closing the window.

#include "core/model/DataModel.h"
#include "core/events/EventList.h"
#include "core/time/Framerate.h"
#include "gui/MainGui.h"
#include "util/StringConverter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>

using namespace montala;

namespace {

constexpr int shotLength = 50;

core::EventPtr makeShot(int shot, int slot)
{
    char roll[16];
    std::snprintf(roll, sizeof roll, "R%05d", shot);
    auto event = std::make_shared<core::EventBase>();
    const int source = 3600 * 25 + shot * 100;
    const int record = 10 * 3600 * 25 + slot * shotLength;
    event->setTimecodes(core::Timecode(source), core::Timecode(source + shotLength), core::Timecode(record),
                        core::Timecode(record + shotLength));
    event->setRollName(roll);
    event->setEventNumber(slot + 1);
    return event;
}

class Project : public core::ChangeContextNotificationBase {
public:
    explicit Project(core::DataModel* model) : model(model) {}
    void addListener(core::ChangeContextListenerInterface* listener) override
    {
        core::ChangeContextNotificationBase::addListener(listener);
        listener->changed(core::DataModelChangeContext(model));
    }
    core::DataModel* model;
};

void BM_ChangeSelection(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    core::FixedFramerateProvider rate(core::Framerate(25, 0));
    core::ScopedFramerateProvider rateScope(&rate);
    util::StringConverter converter;
    util::ScopedStringConverter converterScope(converter);

    const int events = static_cast<int>(state.range(0));
    core::DataModel model;
    for (int shot = 0; shot < events; ++shot) {
        model.getOldList().addEvent(makeShot(shot, shot));
        model.getNewList().addEvent(makeShot(shot, shot ^ 1));
    }
    Project project(&model);
    model.setNotifier(&project);
    auto window = std::make_unique<gui::MainGui>();
    window->setProject(&project);
    window->buttonClicked(&window->getGenerateButton());
    if (model.getChangeList().getSize() != static_cast<size_t>(events)) {
        state.SkipWithError("the re-cut did not give one Change event per shot");
        return;
    }

    juce::TableListBox& table = window->getTable(gui::MainGui::ChangeTable);
    int row = 0;
    for (auto _ : state) {
        // Rows far apart, as a user clicking through the table would.
        row = (row + 3571) % events;
        table.selectRow(row, true, true);
    }
    benchmark::DoNotOptimize(window->getTableModel(gui::MainGui::OldTable)->getMarks().getSize());
    state.counters["events"] = events;

    window.reset();
    model.setNotifier(nullptr);
}

// The window over a re-cut of the given number of shots, Old and New
// loaded, nothing generated yet.
struct Window {
    explicit Window(int events)
    {
        for (int shot = 0; shot < events; ++shot) {
            model.getOldList().addEvent(makeShot(shot, shot));
            model.getNewList().addEvent(makeShot(shot, shot ^ 1));
        }
        model.setNotifier(&project);
        window = std::make_unique<gui::MainGui>();
        window->setProject(&project);
    }
    ~Window()
    {
        window.reset();
        model.setNotifier(nullptr);
    }

    core::FixedFramerateProvider rate{core::Framerate(25, 0)};
    core::ScopedFramerateProvider rateScope{&rate};
    util::StringConverter converter;
    util::ScopedStringConverter converterScope{converter};
    core::DataModel model;
    Project project{&model};
    std::unique_ptr<gui::MainGui> window;
};

// The Change EDL worked out by the data model alone, with no window
// listening: what "Generate" costs before the window redraws anything.
void BM_GenerateWithoutWindow(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    core::FixedFramerateProvider rate(core::Framerate(25, 0));
    core::ScopedFramerateProvider rateScope(&rate);
    const int events = static_cast<int>(state.range(0));
    core::DataModel model;
    for (int shot = 0; shot < events; ++shot) {
        model.getOldList().addEvent(makeShot(shot, shot));
        model.getNewList().addEvent(makeShot(shot, shot ^ 1));
    }
    for (auto _ : state)
        model.generateChangeEdl();
    state.counters["events"] = events;
}

// A click on "Generate" with a Change EDL already shown: the list is worked
// out again, the Change table rebuilt and the timeline refilled.
void BM_GenerateInWindow(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    const int events = static_cast<int>(state.range(0));
    Window window(events);
    window.window->buttonClicked(&window.window->getGenerateButton());
    for (auto _ : state)
        window.window->buttonClicked(&window.window->getGenerateButton());
    if (window.model.getChangeList().getSize() != static_cast<size_t>(events))
        state.SkipWithError("the re-cut did not give one Change event per shot");
    state.counters["events"] = events;
}

// Ctrl+A in the Change table: every row selected, all related rows of Old
// and New marked, every rectangle of the timeline lit.
void BM_SelectAllInWindow(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    const int events = static_cast<int>(state.range(0));
    Window window(events);
    window.window->buttonClicked(&window.window->getGenerateButton());
    juce::TableListBox& table = window.window->getTable(gui::MainGui::ChangeTable);
    for (auto _ : state) {
        table.selectRangeOfRows(0, events - 1, true);
        state.PauseTiming();
        table.deselectAllRows();
        state.ResumeTiming();
    }
    state.counters["events"] = events;
}

// Closing the window over a generated Change EDL, as the studio does it:
// the window leaves the project first (its tables and timeline empty),
// then goes.
void BM_CloseWindow(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    const int events = static_cast<int>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto window = std::make_unique<Window>(events);
        window->window->buttonClicked(&window->window->getGenerateButton());
        state.ResumeTiming();
        window->window->setProject(nullptr);
        window->window.reset();
        state.PauseTiming();
        window.reset();
        state.ResumeTiming();
    }
    state.counters["events"] = events;
}

} // namespace

BENCHMARK(BM_ChangeSelection)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GenerateWithoutWindow)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GenerateInWindow)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SelectAllInWindow)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CloseWindow)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(3);
