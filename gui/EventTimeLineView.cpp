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

void paintRectangle(juce::DrawableRectangle& rectangle, juce::Colour colour)
{
    rectangle.setFill(juce::FillType(colour));
}

// x and width of a span on the strip; never thinner than a pixel, and never
// a non-finite number, whatever the scale.
juce::Parallelogram<float> placeSpan(double in, double out, double start, float scale, float top, float bottom)
{
    float x = static_cast<float>(EventTimeLineView::labelWidth) + static_cast<float>(in - start) * scale;
    float width = static_cast<float>(out - in) * scale;
    if (!std::isfinite(x))
        x = static_cast<float>(EventTimeLineView::labelWidth);
    if (!std::isfinite(width) || width < 1.0f)
        width = 1.0f;
    return juce::Parallelogram<float>(juce::Rectangle<float>(x, top, width, bottom - top));
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
    // The rectangles are painted from paint(), not as children of the view,
    // so that they never take the mouse or the focus.
    setInterceptsMouseClicks(false, false);
}

EventTimeLineView::~EventTimeLineView()
{
    // The rectangles belong to the events, not to the content.
    content.removeAllChildren();
}

void EventTimeLineView::setEvents(const core::EventList& list)
{
    content.removeAllChildren();
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

    for (const core::EventPtr& event : list.getEvents()) {
        auto item = std::make_shared<TimeLineEvent>();
        item->event = event;
        for (juce::DrawableRectangle* rectangle : {&item->sourceRectangle, &item->destinationRectangle}) {
            paintRectangle(*rectangle, colourOf(*event));
            rectangle->setStrokeFill(juce::FillType(juce::Colours::transparentBlack));
            rectangle->setStrokeType(juce::PathStrokeType(0.0f));
            content.addAndMakeVisible(rectangle);
        }
        events.push_back(std::move(item));
    }
    layOut();
    repaint();
}

void EventTimeLineView::setSelection(const core::EventList& selected)
{
    // The unselected ones stand in list order, the selected ones above them
    // all. Every move of a child makes the content measure all its children
    // again, so only the rectangles whose state changes move: a rectangle
    // leaving the selection goes back behind the next unselected one in the
    // list (the list is walked backwards to know it), or, for the last,
    // forward, where the selected ones then pass it.
    std::unordered_set<const core::EventBase*> wanted;
    for (const core::EventPtr& event : selected.getEvents())
        wanted.insert(event.get());
    std::vector<TimeLineEvent*> chosen;
    TimeLineEvent* nextUnselected = nullptr;
    for (auto item = events.rbegin(); item != events.rend(); ++item) {
        const core::EventPtr event = (*item)->event.lock();
        if (event == nullptr)
            continue;
        if (wanted.count(event.get()) != 0) {
            chosen.push_back(item->get());
            continue;
        }
        const bool wasChosen = (*item)->sourceRectangle.getFill().colour == palette::bright;
        for (juce::DrawableRectangle* rectangle : {&(*item)->sourceRectangle, &(*item)->destinationRectangle}) {
            paintRectangle(*rectangle, colourOf(*event));
            if (!wasChosen)
                continue;
            if (nextUnselected)
                rectangle->toBehind(&nextUnselected->sourceRectangle);
            else
                rectangle->toFront(false);
        }
        nextUnselected = item->get();
    }
    std::reverse(chosen.begin(), chosen.end());
    for (TimeLineEvent* item : chosen)
        for (juce::DrawableRectangle* rectangle : {&item->sourceRectangle, &item->destinationRectangle}) {
            paintRectangle(*rectangle, palette::bright);
            rectangle->toFront(false);
        }
    repaint();
}

void EventTimeLineView::paint(juce::Graphics& g)
{
    content.draw(g, 1.0f, juce::AffineTransform());
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
    for (const auto& item : events) {
        const core::EventPtr event = item->event.lock();
        // An event whose timecodes cannot be placed keeps where it was.
        if (event == nullptr || event->hasState(core::EventState::InvalidTimecode))
            continue;
        item->sourceRectangle.setRectangle(placeSpan(event->getSrcIn().toSeconds(rate),
                                                     event->getSrcOut().toSeconds(rate), start, scale, top,
                                                     sourceBottom));
        item->destinationRectangle.setRectangle(placeSpan(event->getDstIn().toSeconds(rate),
                                                          event->getDstOut().toSeconds(rate), start, scale,
                                                          destinationTopF, destinationBottom));
    }
}

} // namespace montala::gui
