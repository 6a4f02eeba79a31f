#include "gui/EventTimeLineView.h"

#include "gui/LookAndFeel.h"
#include "util/StringUtil.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace montala::gui {

using util::StringUtil;

namespace {

juce::String translated(const std::u16string& english)
{
    // Without a converter (the strip drawn alone) the English text, which is
    // ASCII, is shown.
    if (StringUtil::getStringConverter() == nullptr)
        return juce::String(std::string(english.begin(), english.end()));
    return juce::String::fromUTF8(StringUtil::toUtf8(StringUtil::translate(english)).c_str());
}

juce::Colour colourOf(const core::EventBase& event)
{
    return event.isVfx() ? palette::vfx : palette::event;
}

// x and width of a span on the strip; never thinner than a pixel, and never
// a non-finite number, whatever the scale.
juce::Rectangle<float> placeSpan(double in, double out, double start, float scale, float top, float bottom)
{
    float x = static_cast<float>(EventTimeLineView::labelWidth) + static_cast<float>(in - start) * scale;
    float width = static_cast<float>(out - in) * scale;
    if (!std::isfinite(x))
        x = static_cast<float>(EventTimeLineView::labelWidth);
    if (!std::isfinite(width) || width < 1.0f)
        width = 1.0f;
    return {x, top, width, bottom - top};
}

} // namespace

EventTimeLineView::EventTimeLineView()
{
    const auto setUp = [this](juce::Label& label, const char* name, const std::u16string& text, int top) {
        label.setName(name);
        label.setText(translated(text), juce::dontSendNotification);
        label.setFont(LookAndFeel::getFont(LookAndFeel::labelFont));
        label.setColour(juce::Label::textColourId, palette::text);
        label.setJustificationType(juce::Justification::centredLeft);
        label.setBorderSize(juce::BorderSize<int>(0));
        label.setBounds(0, top, labelWidth, rowHeight);
        addAndMakeVisible(label);
    };
    setUp(sourceLabel, "SourceLabel", u"Source", 0);
    setUp(destinationLabel, "DestinationLabel", u"Destination", destinationTop);
    // The strip only shows; clicks go through to the window.
    setInterceptsMouseClicks(false, false);
}

EventTimeLineView::~EventTimeLineView() = default;

void EventTimeLineView::setEvents(const core::EventList& list)
{
    events.clear();

    if (list.getSize() == 0) {
        start = 0.0;
        end = 0.0;
        layOut();
        repaint();
        return;
    }

    const core::Framerate rate = core::Timecode::currentFramerate();
    const core::TimecodeRange source = list.getRange(core::EventList::Src);
    const core::TimecodeRange destination = list.getRange(core::EventList::Dst);
    start = std::min(source.start.toSeconds(rate), destination.start.toSeconds(rate));
    end = std::max(source.end.toSeconds(rate), destination.end.toSeconds(rate));

    events.reserve(list.getSize());
    for (const core::EventPtr& event : list.getEvents()) {
        TimeLineEvent& item = events.emplace_back();
        item.event = event;
        item.fill = colourOf(*event);
    }
    layOut();
    repaint();
}

void EventTimeLineView::setSelection(const core::EventList& selected)
{
    std::unordered_set<const core::EventBase*> wanted;
    wanted.reserve(selected.getSize());
    for (const core::EventPtr& event : selected.getEvents())
        wanted.insert(event.get());
    for (TimeLineEvent& item : events) {
        const core::EventPtr event = item.event.lock();
        // A deleted event keeps its colour and its place until the next list.
        if (event == nullptr)
            continue;
        item.selected = wanted.count(event.get()) != 0;
        item.fill = item.selected ? palette::bright : colourOf(*event);
    }
    repaint();
}

void EventTimeLineView::paint(juce::Graphics& g)
{
    // Two passes give the z-order: the unselected events in list order,
    // then the selected ones above them, again in list order.
    if (!paintRows(g))
        paintPaths(g);
}

bool EventTimeLineView::paintRows(juce::Graphics& g)
{
    const auto fitsRow = [](const juce::Rectangle<float>& r, int top) {
        return r.getHeight() == 0.0f ||
               (r.getY() == static_cast<float>(top) && r.getBottom() == static_cast<float>(top + rowHeight));
    };
    if (!TimeLineRowPainter::canPaint(g) ||
        !std::all_of(events.begin(), events.end(), [&fitsRow](const TimeLineEvent& item) {
            return TimeLineRowPainter::canFill(item.fill) && fitsRow(item.sourceRectangle, 0) &&
                   fitsRow(item.destinationRectangle, destinationTop);
        }))
        return false;

    for (const int top : {0, destinationTop}) {
        rowFills.clear();
        for (const bool selectedPass : {false, true})
            for (const TimeLineEvent& item : events) {
                const juce::Rectangle<float>& r = top == 0 ? item.sourceRectangle : item.destinationRectangle;
                if (item.selected == selectedPass && r.getHeight() > 0.0f)
                    rowFills.push_back({r.getX(), r.getRight(), item.fill});
            }
        rowPainter.paint(g, rowFills, top, top + rowHeight);
    }
    return true;
}

void EventTimeLineView::paintPaths(juce::Graphics& g) const
{
    // Each rectangle is filled as a path: fillRect shades fractional edges
    // by another rule, and the thin events' edges would come out a shade
    // off. Events shorter than a pixel (drawn a pixel wide) of one colour
    // that follow each other are filled together, as the union of their
    // spans: a feature's events crowd a dozen to a pixel there, a path
    // apiece is most of the paint, and the union differs from one fill after
    // the other only in the shade of pixels that several of them share.
    std::vector<juce::Rectangle<float>> spans;
    juce::Colour spansColour;
    juce::Path path;
    for (const int top : {0, destinationTop}) {
        const auto fill = [&](const juce::Colour& colour) {
            if (spans.empty())
                return;
            std::sort(spans.begin(), spans.end(), [](const auto& a, const auto& b) { return a.getX() < b.getX(); });
            path.clear();
            juce::Rectangle<float> joined = spans.front();
            for (auto span = spans.begin() + 1; span != spans.end(); ++span) {
                if (span->getX() > joined.getRight()) {
                    path.addRectangle(joined);
                    joined = *span;
                } else {
                    joined = joined.getUnion(*span);
                }
            }
            path.addRectangle(joined);
            spans.clear();
            g.setColour(colour);
            g.fillPath(path);
        };
        for (const bool selectedPass : {false, true})
            for (const TimeLineEvent& item : events) {
                const juce::Rectangle<float>& r = top == 0 ? item.sourceRectangle : item.destinationRectangle;
                if (item.selected != selectedPass || r.getHeight() <= 0.0f)
                    continue;
                const bool alone = r.getWidth() > 1.0f;
                if (alone || item.fill != spansColour)
                    fill(spansColour);
                spansColour = item.fill;
                spans.push_back(r);
                if (alone)
                    fill(spansColour);
            }
        fill(spansColour);
    }
}

void EventTimeLineView::resized()
{
    layOut();
}

void EventTimeLineView::layOut()
{
    // Pixels per second. Zero-length lists (start equal to end) and a strip
    // narrower than its labels get no scale at all: every event then sits at
    // the left edge, one pixel wide.
    float scale = static_cast<float>(getWidth() - labelWidth) / static_cast<float>(end - start);
    if (!std::isfinite(scale) || scale < 0.0f)
        scale = 0.0f;

    const core::Framerate rate = events.empty() ? core::Framerate() : core::Timecode::currentFramerate();
    const auto top = 0.0f;
    const auto sourceBottom = static_cast<float>(rowHeight);
    const auto destinationTopF = static_cast<float>(destinationTop);
    const auto destinationBottom = static_cast<float>(destinationTop + rowHeight);
    for (TimeLineEvent& item : events) {
        const core::EventPtr event = item.event.lock();
        // An event whose timecodes cannot be placed keeps where it was.
        if (event == nullptr || event->hasState(core::EventState::InvalidTimecode))
            continue;
        item.sourceRectangle = placeSpan(event->getSrcIn().toSeconds(rate), event->getSrcOut().toSeconds(rate),
                                         start, scale, top, sourceBottom);
        item.destinationRectangle = placeSpan(event->getDstIn().toSeconds(rate), event->getDstOut().toSeconds(rate),
                                              start, scale, destinationTopF, destinationBottom);
    }
}

} // namespace montala::gui
