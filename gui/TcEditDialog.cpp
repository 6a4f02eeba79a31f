#include "gui/TcEditDialog.h"

#include "core/model/DataModelChangeScope.h"
#include "gui/LookAndFeel.h"
#include "gui/OverlayStyle.h"
#include "gui/Palette.h"
#include "gui/Texts.h"
#include "util/Result.h"

#include <algorithm>

namespace montala::gui {

using core::Timecode;
using util::Result;

namespace {

constexpr int dialogWidth = 260;
constexpr int dialogHeight = 236;

} // namespace

TcEditDialog::TcEditDialog()
{
    heading.setText(translated(u"Edit Event"), juce::dontSendNotification);
    styleLabel(heading, LookAndFeel::labelFont);
    addAndMakeVisible(heading);
    styleLabel(m_eventName);
    addAndMakeVisible(m_eventName);

    const char16_t* const names[] = {u"SRC IN", u"SRC OUT", u"DST IN", u"DST OUT"};
    for (size_t time = 0; time < inputs.size(); ++time) {
        captions[time] = std::make_unique<juce::Label>(juce::String(), translated(names[time]));
        styleLabel(*captions[time]);
        addAndMakeVisible(*captions[time]);
        toggles[time]->setColour(juce::ToggleButton::tickColourId, palette::bright);
        toggles[time]->addListener(this);
        addAndMakeVisible(*toggles[time]);
        inputs[time]->addListener(this);
        addAndMakeVisible(*inputs[time]);
    }
    motionSpeedCaption.setText(translated(u"Motion Speed"), juce::dontSendNotification);
    styleLabel(motionSpeedCaption);
    styleLabel(motionSpeedValue);
    motionSpeedValue.setJustificationType(juce::Justification::centredRight);
    addChildComponent(motionSpeedCaption);
    addChildComponent(motionSpeedValue);

    m_applyButton.setButtonText(translated(u"Apply"));
    m_cancelButton.setButtonText(translated(u"Cancel"));
    for (juce::Button* button : {&m_applyButton, &m_cancelButton}) {
        button->addListener(this);
        addAndMakeVisible(*button);
    }
    setSize(dialogWidth, dialogHeight);
    setVisible(false);
}

TcEditDialog::~TcEditDialog()
{
    for (TcInput* input : inputs)
        input->removeListener(this);
}

void TcEditDialog::setShowMotionSpeed(bool show)
{
    showsMotionSpeed = show;
    motionSpeedCaption.setVisible(show);
    motionSpeedValue.setVisible(show);
}

Timecode TcEditDialog::timeOf(const core::EventBase& of, Time time) const
{
    switch (time) {
    case SrcIn:
        return of.getSrcIn();
    case SrcOut:
        return of.getSrcOut();
    case DstIn:
        return of.getDstIn();
    case DstOut:
        break;
    }
    return of.getDstOut();
}

void TcEditDialog::setEvent(std::shared_ptr<core::EventBase> newEvent)
{
    event = std::move(newEvent);
    if (!event)
        return;
    m_eventName.setText(juce::String::fromUTF8((event->getClipName() + " " + event->getRollName()).c_str()),
                        juce::dontSendNotification);
    workingCopy = core::EventBase::create(core::EventBase::Plain);
    *workingCopy = *event;
    for (Time time : {SrcIn, SrcOut, DstIn, DstOut})
        inputs[time]->setTimecode(timeOf(*event, time), false);
    showMotionSpeed();
    for (Time time : {SrcIn, SrcOut, DstIn, DstOut})
        toggles[time]->setToggleState(time == SrcIn || time == SrcOut, juce::dontSendNotification);
    switchedOn = {SrcIn, SrcOut};
}

void TcEditDialog::showMotionSpeed()
{
    motionSpeedValue.setText(juce::String(workingCopy->getMotionSpeed(), 2) + "x", juce::dontSendNotification);
}

void TcEditDialog::toggleClicked(Time time)
{
    if (std::find(switchedOn.begin(), switchedOn.end(), time) != switchedOn.end()) {
        // One of the two already on: a click leaves it on.
        toggles[time]->setToggleState(true, juce::dontSendNotification);
        return;
    }
    if (switchedOn.size() == 2) {
        toggles[switchedOn.front()]->setToggleState(false, juce::dontSendNotification);
        switchedOn.pop_front();
    }
    toggles[time]->setToggleState(true, juce::dontSendNotification);
    switchedOn.push_back(time);
}

void TcEditDialog::timecodeChanged(TcInput* input)
{
    if (!workingCopy)
        return;
    const auto edited = static_cast<Time>(std::find(inputs.begin(), inputs.end(), input) - inputs.begin());
    const bool editable = toggles[edited]->getToggleState();
    const Timecode before = timeOf(*workingCopy, edited);
    const double delta = input->getTimecode().toSeconds() - before.toSeconds();
    // The partner moves by the same amount; a shift that would push it out of
    // the day is refused whole, so that the pair keeps its distance.
    bool fits = editable;
    for (Time other : switchedOn)
        if (other != edited) {
            const double moved = timeOf(*workingCopy, other).toSeconds() + delta;
            fits = fits && moved >= 0.0 && moved <= Timecode::maximum().toSeconds();
        }
    if (!fits) {
        input->setTimecode(before, false);
        return;
    }
    for (Time other : switchedOn)
        if (other != edited)
            inputs[other]->setTimecode(Timecode(timeOf(*workingCopy, other).toSeconds() + delta), false);
    workingCopy->setTimecodes(inputs[SrcIn]->getTimecode(), inputs[SrcOut]->getTimecode(),
                              inputs[DstIn]->getTimecode(), inputs[DstOut]->getTimecode());
    showMotionSpeed();
}

void TcEditDialog::buttonClicked(juce::Button* button)
{
    for (Time time : {SrcIn, SrcOut, DstIn, DstOut})
        if (button == toggles[time]) {
            toggleClicked(time);
            return;
        }
    if (button == &m_applyButton && event && workingCopy) {
        try {
            core::DataModelChangeScope scope("Edit EDL Event");
            event->setTimecodes(workingCopy->getSrcIn(), workingCopy->getSrcOut(), workingCopy->getDstIn(),
                                workingCopy->getDstOut());
        } catch (Result::Type) {
            // The layer that failed has told the user.
        }
        close();
    } else if (button == &m_cancelButton) {
        close();
    }
}

void TcEditDialog::close()
{
    setVisible(false);
    giveAwayKeyboardFocus();
}

void TcEditDialog::resized()
{
    heading.setBounds(10, 6, dialogWidth - 20, 22);
    m_eventName.setBounds(10, 28, dialogWidth - 20, 20);
    for (size_t time = 0; time < inputs.size(); ++time) {
        const int y = 54 + static_cast<int>(time) * 28;
        toggles[time]->setBounds(10, y, 24, 22);
        captions[time]->setBounds(36, y, 90, 22);
        inputs[time]->setBounds(dialogWidth - 112, y, 100, 22);
    }
    motionSpeedCaption.setBounds(36, 168, 120, 22);
    motionSpeedValue.setBounds(dialogWidth - 112, 168, 100, 22);
    m_applyButton.setBounds(dialogWidth - 190, dialogHeight - 34, 85, 24);
    m_cancelButton.setBounds(dialogWidth - 95, dialogHeight - 34, 85, 24);
}

void TcEditDialog::paint(juce::Graphics& g)
{
    g.fillAll(palette::panel);
    g.setColour(palette::outline);
    g.drawRect(getLocalBounds(), 2);
}

} // namespace montala::gui
