#pragma once

#include "core/time/Timecode.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <vector>

namespace montala::gui {

// A timecode typed, tabbed or wheeled field by field, with an optional sign:
//
//     [+][hh]:[mm]:[ss]:[ff]
//
// Two digits in a field move the focus on to the next and take the value.
// A value that is not a timecode at the project's rate (25 frames at 24
// fps) is put back at once, without a notice. The wheel steps the field
// under the mouse by one of its units, through seconds, so 59 seconds plus
// one reads one minute; an input without sign stops at zero.
class TcInput : public juce::Component, public juce::TextEditor::Listener {
public:
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void timecodeChanged(TcInput* input) = 0;
    };

    TcInput();
    ~TcInput() override;

    void setTimecode(const core::Timecode& timecode, bool positive, bool sendNotification);
    // Keeps the sign.
    void setTimecode(const core::Timecode& timecode, bool sendNotification);
    core::Timecode getTimecode() const { return timecode; }
    bool isPositive() const { return positive; }

    void addListener(Listener* listener);
    void removeListener(Listener* listener);

    // Shows the sign field; a signed input steps through zero into negative values.
    void setSigned(bool shouldBeSigned);
    bool isSigned() const { return signedInput; }
    void setBackgroundColour(juce::Colour colour);

    void mouseWheelMove(const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel) override;
    void paint(juce::Graphics& g) override;
    void resized() override;
    void enablementChanged() override;

    void textEditorTextChanged(juce::TextEditor& editor) override;
    void textEditorReturnKeyPressed(juce::TextEditor& editor) override;
    void textEditorEscapeKeyPressed(juce::TextEditor& editor) override;
    void textEditorFocusLost(juce::TextEditor& editor) override;

private:
    enum Field { Hours, Minutes, Seconds, Frames };

    juce::TextEditor& editorOf(Field field);
    // Shows the stored value in the fields, sending nothing.
    void writeFields();
    // Reads the fields and the sign: stores and notifies a new valid value,
    // puts the stored one back over an invalid one.
    void takeValue();
    // One unit of the field (an hour, a minute, a second, a frame) in seconds
    // at the current rate.
    static double unitSeconds(Field field);
    void step(Field field, bool up);
    void notifyListeners();

    std::vector<Listener*> listeners;
    bool signedInput = false;
    bool positive = true;
    core::Timecode timecode;
    juce::Colour background{juce::Colours::black};

    juce::TextEditor hoursEdit{"Hours Edit"};
    juce::TextEditor minutesEdit{"Minutes Edit"};
    juce::TextEditor secondsEdit{"Seconds Edit"};
    juce::TextEditor framesEdit{"FramesEdit"};
    juce::Label sign{"Sign", "+"};
    juce::Label colons[3];
    // Takes every click while the input is disabled.
    juce::Component m_disableOverlay;
};

} // namespace montala::gui
