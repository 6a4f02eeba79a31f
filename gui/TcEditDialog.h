#pragma once

#include "core/events/EventBase.h"
#include "gui/TcInput.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <array>
#include <list>
#include <memory>

namespace montala::gui {

// The small popup behind "Edit" in a row's menu: the four times of one event.
// Two of the four toggles are on at any time and their times move together,
// so that a pair can be shifted without changing its distance: with SRC IN
// and SRC OUT on, typing a later SRC IN slips the source under a fixed
// record range. Switching on a third toggle switches off the oldest one.
//
// Edits go to a working copy first; "Apply" writes the four times to the
// event as one undo step, "Cancel" drops them.
class TcEditDialog : public juce::Component, public TcInput::Listener, public juce::Button::Listener {
public:
    enum Time { SrcIn = 0, SrcOut = 1, DstIn = 2, DstOut = 3 };

    TcEditDialog();
    ~TcEditDialog() override;

    // Shows or hides the motion speed, which only Old and New events carry.
    void setShowMotionSpeed(bool show);
    void setEvent(std::shared_ptr<core::EventBase> event);

    void paint(juce::Graphics& g) override;
    void resized() override;
    void timecodeChanged(TcInput* input) override;
    void buttonClicked(juce::Button* button) override;

    // The parts, for tests.
    TcInput& getInput(Time time) { return *inputs[time]; }
    juce::ToggleButton& getToggle(Time time) { return *toggles[time]; }
    juce::Button& getApplyButton() { return m_applyButton; }
    juce::Button& getCancelButton() { return m_cancelButton; }
    juce::String getMotionSpeedText() const { return motionSpeedValue.getText(); }
    bool isMotionSpeedShown() const { return motionSpeedValue.isVisible(); }

private:
    core::Timecode timeOf(const core::EventBase& event, Time time) const;
    void showMotionSpeed();
    void toggleClicked(Time time);
    void close();

    std::shared_ptr<core::EventBase> event;
    // Changes go here first; the event itself changes on "Apply" only.
    std::shared_ptr<core::EventBase> workingCopy;
    bool showsMotionSpeed = false;

    juce::Label heading;
    juce::Label m_eventName;
    juce::ToggleButton m_copyInSelect;
    juce::ToggleButton m_copyOutSelect;
    juce::ToggleButton m_pasteInSelect;
    juce::ToggleButton m_pasteOutSelect;
    TcInput m_copyInEdit;
    TcInput m_copyOutEdit;
    TcInput m_pasteInEdit;
    TcInput m_pasteOutEdit;
    std::array<std::unique_ptr<juce::Label>, 4> captions;
    juce::Label motionSpeedCaption;
    juce::Label motionSpeedValue;
    juce::TextButton m_applyButton;
    juce::TextButton m_cancelButton;
    std::array<juce::ToggleButton*, 4> toggles{&m_copyInSelect, &m_copyOutSelect, &m_pasteInSelect,
                                               &m_pasteOutSelect};
    std::array<TcInput*, 4> inputs{&m_copyInEdit, &m_copyOutEdit, &m_pasteInEdit, &m_pasteOutEdit};
    // The two toggles that are on, the one switched on first in front.
    std::list<Time> switchedOn;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(TcEditDialog)
};

} // namespace montala::gui
