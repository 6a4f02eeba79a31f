// The event table over a feature's Change EDL of 10,000 events: what the
// window pays when the list changes (the model takes the list again and the
// table refreshes) and when the user sorts by a column, with a hundred rows
// selected that must stay selected. Both must fit well inside a frame or
// two: the goal is at most 30 ms for taking the list and sorting it.

#include "core/events/EventList.h"
#include "core/time/Framerate.h"
#include "core/time/Timecode.h"
#include "gui/EventTableColumns.h"
#include "gui/EventTableModel.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>

using namespace montala;
using namespace montala::core;

namespace {

constexpr int eventCount = 10000;

// Events in DST order with shuffled sources, names shared by a few events
// each (so that name sorts meet ties), one in fifty invalid and one in
// twenty a VFX shot.
void fill(EventList& list)
{
    std::mt19937 random(12);
    int rec = 90000; // 01:00:00:00 at 25 fps
    for (int i = 0; i < eventCount; ++i) {
        const int length = 10 + static_cast<int>(random() % 200);
        const int src = static_cast<int>(random() % 1500000);
        char roll[32];
        std::snprintf(roll, sizeof roll, "A%03d_C%03d", static_cast<int>(random() % 400), static_cast<int>(random() % 9));
        char clip[48];
        std::snprintf(clip, sizeof clip, "SC%03d_TK%02d_%s", static_cast<int>(random() % 900),
                      static_cast<int>(random() % 12), i % 20 == 0 ? "comp" : "cam");
        auto event = std::make_shared<EventBase>();
        event->setTimecodes(Timecode(src), Timecode(src + length), Timecode(rec), Timecode(rec + length));
        event->setRollName(roll);
        event->setClipName(clip);
        event->setEdlFile(i < eventCount / 2 ? "reel1.edl" : "reel2.edl");
        event->setEventNumber(i + 1);
        event->setTransitionType(i % 17 == 0 ? EventBase::Dissolve : EventBase::Cut);
        event->setVfx(i % 20 == 0);
        if (i % 50 == 0)
            event->addState(EventState::BadRollName);
        list.addEvent(event);
        rec += length;
    }
}

// A table as the window shows it, on the big list, 100 rows selected.
struct Table {
    Table()
    {
        fill(list);
        model.setList(&list);
        gui::eventtable::addColumns(box.getHeader());
        box.setMultipleSelectionEnabled(true);
        box.setSize(1056, 300);
        box.setModel(&model);
        box.updateContent();
        juce::SparseSet<int> rows;
        for (int row = 0; row < eventCount; row += eventCount / 100)
            rows.addRange({row, row + 1});
        box.setSelectedRows(rows, juce::sendNotification);
    }
    ~Table() { box.setModel(nullptr); }

    FixedFramerateProvider rate{Framerate(25, 0)};
    ScopedFramerateProvider rateScope{&rate};
    EventList list{EventList::ChangeKind};
    juce::TableListBox box;
    gui::EventTableModel model{&box, &list, nullptr};
};

// The window's list update: take the list again, sort as stored, refresh.
void BM_RebuildModel(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    Table table;
    for (auto _ : state) {
        table.model.setList(&table.list);
        table.box.updateContent();
        benchmark::DoNotOptimize(table.model.getNumRows());
    }
}
BENCHMARK(BM_RebuildModel)->Unit(benchmark::kMillisecond);

// A click on a column header: each turn sorts the other way.
void BM_SortByColumn(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    Table table;
    const int column = static_cast<int>(state.range(0));
    bool flag = false;
    for (auto _ : state) {
        flag = !flag;
        table.model.sortOrderChanged(column, flag);
    }
    if (table.model.getSelectedCount() != 100)
        state.SkipWithError("the selection did not survive the sort");
}
BENCHMARK(BM_SortByColumn)
    ->ArgName("column")
    ->Arg(gui::eventtable::StateColumn)
    ->Arg(gui::eventtable::RollColumn)
    ->Arg(gui::eventtable::ClipNameColumn)
    ->Arg(gui::eventtable::SrcInColumn)
    ->Arg(gui::eventtable::DstInColumn)
    ->Unit(benchmark::kMillisecond);

// The whole list update of a stored project: the list again, then the
// stored sort put on the header, then the refresh.
void BM_RebuildAndSort(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    Table table;
    bool flag = false;
    for (auto _ : state) {
        flag = !flag;
        table.model.setList(&table.list);
        table.model.setSort(gui::eventtable::ClipNameColumn, flag);
        table.box.updateContent();
    }
}
BENCHMARK(BM_RebuildAndSort)->Unit(benchmark::kMillisecond);

} // namespace
