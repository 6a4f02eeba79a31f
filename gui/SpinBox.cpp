#include "gui/SpinBox.h"

#include "gui/LookAndFeel.h"

#include <algorithm>
#include <utility>

namespace montala::gui {

namespace {

// The buttons' small arrows, drawn once in code so that no image file is needed.
juce::Image arrowImage(bool up, juce::Colour colour)
{
    juce::Image image(juce::Image::ARGB, 9, 5, true);
    juce::Graphics g(image);
    juce::Path arrow;
    if (up)
        arrow.addTriangle(0.0f, 5.0f, 9.0f, 5.0f, 4.5f, 0.0f);
    else
        arrow.addTriangle(0.0f, 0.0f, 9.0f, 0.0f, 4.5f, 5.0f);
    g.setColour(colour);
    g.fillPath(arrow);
    return image;
}

void setArrowImages(juce::ImageButton& button, bool up)
{
    button.setImages(false, false, true, arrowImage(up, palette::text), 1.0f, {}, arrowImage(up, palette::bright),
                     1.0f, {}, arrowImage(up, palette::accent), 1.0f, {});
}

constexpr int buttonWidth = 14;

} // namespace

SpinBox::SpinBox()
{
    m_valueDisplay.setName("Value");
    m_upButton.setName("Up");
    m_downButton.setName("Down");
    m_valueDisplay.setFont(LookAndFeel::getFont(LookAndFeel::regularFont));
    m_valueDisplay.setColour(juce::Label::textColourId, palette::text);
    m_valueDisplay.setColour(juce::Label::outlineColourId, palette::outline);
    m_valueDisplay.setJustificationType(juce::Justification::centredRight);
    m_valueDisplay.setBorderSize(juce::BorderSize<int>(0));
    // The box takes the clicks on the number and opens the label's editor
    // itself; the editor, a child of the label, still takes its own.
    m_valueDisplay.setInterceptsMouseClicks(false, true);
    m_valueDisplay.addListener(this);
    addAndMakeVisible(m_valueDisplay);

    setArrowImages(m_upButton, true);
    setArrowImages(m_downButton, false);
    for (juce::ImageButton* button : {&m_upButton, &m_downButton}) {
        button->addListener(this);
        addAndMakeVisible(button);
    }
    showValue();
}

SpinBox::~SpinBox()
{
    m_valueDisplay.removeListener(this);
    m_upButton.removeListener(this);
    m_downButton.removeListener(this);
}

void SpinBox::setValue(double newValue, bool sendNotification)
{
    value = std::clamp(newValue, minimum, std::max(minimum, maximum));
    showValue();
    if (sendNotification)
        notifyListeners();
}

void SpinBox::setRange(double newMinimum, double newMaximum)
{
    minimum = newMinimum;
    maximum = newMaximum;
}

void SpinBox::setStep(double step)
{
    stepUp = step;
    stepDown = step;
}

void SpinBox::setSuffix(const juce::String& text)
{
    suffix = text;
    showValue();
}

void SpinBox::addListener(Listener* listener)
{
    if (std::find(listeners.begin(), listeners.end(), listener) == listeners.end())
        listeners.push_back(listener);
}

void SpinBox::removeListener(Listener* listener)
{
    listeners.erase(std::remove(listeners.begin(), listeners.end(), listener), listeners.end());
}

void SpinBox::showValue()
{
    juce::String text(juce::roundToInt(value));
    if (suffix.isNotEmpty())
        text << " " << suffix;
    m_valueDisplay.setText(text, juce::dontSendNotification);
}

void SpinBox::notifyListeners()
{
    // Newest first; a listener may remove itself or others, or delete the box.
    juce::Component::SafePointer<SpinBox> alive(this);
    for (size_t i = listeners.size(); i-- > 0;) {
        if (i >= listeners.size())
            continue;
        listeners[i]->valueChanged(this);
        if (alive == nullptr)
            return;
    }
}

void SpinBox::mouseDown(const juce::MouseEvent&)
{
    if (!isEnabled() || m_valueDisplay.isBeingEdited())
        return;
    // The plain number is edited, without its suffix.
    m_valueDisplay.setBorderSize(juce::BorderSize<int>(1));
    m_valueDisplay.setText(juce::String(juce::roundToInt(value)), juce::dontSendNotification);
    m_valueDisplay.showEditor();
    if (juce::TextEditor* editor = m_valueDisplay.getCurrentTextEditor())
        editor->setInputRestrictions(0, "0123456789");
}

void SpinBox::mouseWheelMove(const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel)
{
    if (!isEnabled() || wheel.deltaY == 0.0f)
        return;
    if (!m_valueDisplay.getBounds().contains(event.getEventRelativeTo(this).getPosition()))
        return;
    setValue(wheel.deltaY > 0.0f ? value + stepUp : value - stepDown, true);
}

void SpinBox::paint(juce::Graphics& g)
{
    g.fillAll(juce::Colours::black);
}

void SpinBox::resized()
{
    auto area = getLocalBounds();
    auto buttons = area.removeFromRight(buttonWidth);
    m_valueDisplay.setBounds(area.withTrimmedRight(2));
    m_upButton.setBounds(buttons.removeFromTop(buttons.getHeight() / 2).reduced(1));
    m_downButton.setBounds(buttons.reduced(1));
}

void SpinBox::labelTextChanged(juce::Label*)
{
    m_valueDisplay.setBorderSize(juce::BorderSize<int>(0));
    const juce::String text = m_valueDisplay.getText();
    if (std::exchange(restoringDisplay, false) && text == editedText) {
        // The label took back the very number it showed: nothing was edited.
        showValue();
        return;
    }
    setValue(text.getDoubleValue(), true);
}

void SpinBox::editorHidden(juce::Label*, juce::TextEditor& editor)
{
    // The label is told about this before it compares the editor with its
    // text. An editor left as it was would not count as a change and the
    // suffix would stay away, so the display gets its suffix back here and
    // labelTextChanged is told not to take the same number for an edit.
    m_valueDisplay.setBorderSize(juce::BorderSize<int>(0));
    editedText = editor.getText();
    restoringDisplay = editedText == juce::String(juce::roundToInt(value));
    if (restoringDisplay)
        showValue();
}

void SpinBox::buttonClicked(juce::Button* button)
{
    if (button == &m_upButton)
        setValue(value + stepUp, true);
    else if (button == &m_downButton)
        setValue(value - stepDown, true);
}

} // namespace montala::gui
