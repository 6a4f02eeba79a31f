#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <vector>

namespace montala::gui {

// A whole number with a suffix ("12 frames") in a label, with an up and a
// down button beside it. A click on the number opens it for typing (digits
// only); the wheel over it steps. Values are kept inside the range.
class SpinBox : public juce::Component, public juce::Label::Listener, public juce::Button::Listener {
public:
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void valueChanged(SpinBox* spinBox) = 0;
    };

    SpinBox();
    ~SpinBox() override;

    // Clamps to the range and shows the value; listeners are told when asked.
    void setValue(double newValue, bool sendNotification);
    double getValue() const { return value; }
    // Does not move the value: the next setValue clamps it.
    void setRange(double newMinimum, double newMaximum);
    // The same step up and down.
    void setStep(double step);
    void setSuffix(const juce::String& text);

    void addListener(Listener* listener);
    void removeListener(Listener* listener);

    void mouseDown(const juce::MouseEvent& event) override;
    void mouseWheelMove(const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel) override;
    void paint(juce::Graphics& g) override;
    void resized() override;

    void labelTextChanged(juce::Label* label) override;
    void editorHidden(juce::Label* label, juce::TextEditor& editor) override;
    void buttonClicked(juce::Button* button) override;

private:
    void showValue();
    void notifyListeners();

    juce::Label m_valueDisplay;
    juce::ImageButton m_upButton;
    juce::ImageButton m_downButton;
    double value = 0.0;
    double minimum = 0.0;
    double maximum = 100.0;
    double stepUp = 1.0;
    double stepDown = 1.0;
    juce::String suffix;
    std::vector<Listener*> listeners;
    // Between editorHidden and labelTextChanged of an edit that kept the number.
    bool restoringDisplay = false;
    juce::String editedText;
};

} // namespace montala::gui
