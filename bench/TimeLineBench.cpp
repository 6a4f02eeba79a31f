// The timeline strip alone over a Change EDL of 1,000 and of 10,000 events,
// as wide as the window shows it: taking a new list (the old rectangles go,
// new ones are laid out), selecting every event and dropping the selection
// again, painting, and tearing the strip down. Each of them must stay well
// inside a frame at 60 Hz, so that the window's own costs fit beside them.

#include "core/events/EventList.h"
#include "core/time/Framerate.h"
#include "core/time/Timecode.h"
#include "gui/EventTimeLineView.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <random>

using namespace montala;
using namespace montala::core;

namespace {

// Shots of 10 to 200 frames, back to back on the new timeline, taken from
// anywhere in an hour of the old one; one in twenty is a VFX shot.
void fill(EventList& list, int count)
{
    std::mt19937 random(7);
    int record = 90000; // 01:00:00:00 at 25 fps
    for (int i = 0; i < count; ++i) {
        const int length = 10 + static_cast<int>(random() % 190);
        const int source = 90000 + static_cast<int>(random() % 90000);
        auto event = std::make_shared<EventBase>();
        event->setTimecodes(Timecode(source), Timecode(source + length), Timecode(record),
                            Timecode(record + length));
        event->setEventNumber(i + 1);
        event->setVfx(i % 20 == 0);
        list.addEvent(event);
        record += length;
    }
}

struct Strip {
    explicit Strip(int count)
    {
        fill(list, count);
        view.setSize(1056, 80);
    }

    FixedFramerateProvider rate{Framerate(25, 0)};
    ScopedFramerateProvider rateScope{&rate};
    EventList list{EventList::ChangeKind};
    gui::EventTimeLineView view;
};

// A new Change list: the previous rectangles are dropped and the new ones
// laid out.
void BM_TimeLineSetEvents(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    Strip strip(static_cast<int>(state.range(0)));
    for (auto _ : state)
        strip.view.setEvents(strip.list);
    state.counters["events"] = static_cast<double>(state.range(0));
}
BENCHMARK(BM_TimeLineSetEvents)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// Ctrl+A in the Change table, from nothing selected; then the way back.
void BM_TimeLineSelectAll(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    Strip strip(static_cast<int>(state.range(0)));
    strip.view.setEvents(strip.list);
    const EventList none(EventList::ChangeKind);
    for (auto _ : state) {
        strip.view.setSelection(strip.list);
        state.PauseTiming();
        strip.view.setSelection(none);
        state.ResumeTiming();
    }
    state.counters["events"] = static_cast<double>(state.range(0));
}
BENCHMARK(BM_TimeLineSelectAll)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_TimeLineSelectNone(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    Strip strip(static_cast<int>(state.range(0)));
    strip.view.setEvents(strip.list);
    const EventList none(EventList::ChangeKind);
    for (auto _ : state) {
        state.PauseTiming();
        strip.view.setSelection(strip.list);
        state.ResumeTiming();
        strip.view.setSelection(none);
    }
    state.counters["events"] = static_cast<double>(state.range(0));
}
BENCHMARK(BM_TimeLineSelectNone)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// The whole strip painted into an image, a hundred events selected; on a
// display of `percent` scale (a high-density one at 150 or 200).
void paint(benchmark::State& state, int percent)
{
    juce::ScopedJuceInitialiser_GUI juce;
    Strip strip(static_cast<int>(state.range(0)));
    strip.view.setEvents(strip.list);
    EventList selected(EventList::ChangeKind);
    for (size_t i = 0; i < strip.list.getSize(); i += strip.list.getSize() / 100)
        selected.addEvent(strip.list.getEvents()[i]);
    strip.view.setSelection(selected);
    const float scale = static_cast<float>(percent) / 100.0f;
    juce::Image image(juce::Image::ARGB, juce::roundToInt(static_cast<float>(strip.view.getWidth()) * scale),
                      juce::roundToInt(static_cast<float>(strip.view.getHeight()) * scale), true);
    for (auto _ : state) {
        juce::Graphics g(image);
        g.addTransform(juce::AffineTransform::scale(scale));
        strip.view.paintEntireComponent(g, true);
    }
    state.counters["events"] = static_cast<double>(state.range(0));
}

void BM_TimeLinePaint(benchmark::State& state)
{
    paint(state, 100);
}
BENCHMARK(BM_TimeLinePaint)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void BM_TimeLinePaintScaled(benchmark::State& state)
{
    paint(state, static_cast<int>(state.range(1)));
}
BENCHMARK(BM_TimeLinePaintScaled)->Args({10000, 150})->Args({10000, 200})->Unit(benchmark::kMillisecond);

// The strip going away with all its rectangles, as when the window closes.
void BM_TimeLineTeardown(benchmark::State& state)
{
    juce::ScopedJuceInitialiser_GUI juce;
    FixedFramerateProvider rate{Framerate(25, 0)};
    ScopedFramerateProvider rateScope{&rate};
    EventList list(EventList::ChangeKind);
    fill(list, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        auto view = std::make_unique<gui::EventTimeLineView>();
        view->setSize(1056, 80);
        view->setEvents(list);
        state.ResumeTiming();
        view.reset();
    }
    state.counters["events"] = static_cast<double>(state.range(0));
}
BENCHMARK(BM_TimeLineTeardown)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

} // namespace
