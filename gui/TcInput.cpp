#include "gui/TcInput.h"

#include "gui/LookAndFeel.h"
#include "util/Result.h"

#include <algorithm>
#include <cmath>

namespace montala::gui {

namespace {

constexpr int fieldHeight = 22;

juce::String twoDigits(int value)
{
    return juce::String(value).paddedLeft('0', 2);
}

} // namespace

TcInput::TcInput()
{
    for (Field field : {Hours, Minutes, Seconds, Frames}) {
        juce::TextEditor& editor = editorOf(field);
        editor.setInputRestrictions(2, "0123456789");
        editor.setJustification(juce::Justification::centred);
        editor.setFont(LookAndFeel::getFont(LookAndFeel::regularFont));
        editor.setSelectAllWhenFocused(true);
        editor.setIndents(0, 2);
        editor.setBorder(juce::BorderSize<int>(0));
        editor.addListener(this);
        addAndMakeVisible(editor);
    }
    for (juce::Label* label : {&sign, &colons[0], &colons[1], &colons[2]}) {
        label->setFont(LookAndFeel::getFont(LookAndFeel::regularFont));
        label->setColour(juce::Label::textColourId, palette::text);
        label->setJustificationType(juce::Justification::centred);
        label->setBorderSize(juce::BorderSize<int>(0));
        addAndMakeVisible(label);
    }
    for (juce::Label& colon : colons)
        colon.setText(":", juce::dontSendNotification);
    sign.setVisible(false);

    m_disableOverlay.setInterceptsMouseClicks(true, true);
    addChildComponent(m_disableOverlay);
    setSize(100, fieldHeight);
}

TcInput::~TcInput()
{
    for (Field field : {Hours, Minutes, Seconds, Frames})
        editorOf(field).removeListener(this);
}

juce::TextEditor& TcInput::editorOf(Field field)
{
    switch (field) {
    case Hours:
        return hoursEdit;
    case Minutes:
        return minutesEdit;
    case Seconds:
        return secondsEdit;
    case Frames:
        break;
    }
    return framesEdit;
}

void TcInput::setTimecode(const core::Timecode& value, bool isPositive, bool sendNotification)
{
    timecode = value;
    positive = isPositive;
    writeFields();
    if (sendNotification)
        notifyListeners();
}

void TcInput::setTimecode(const core::Timecode& value, bool sendNotification)
{
    setTimecode(value, positive, sendNotification);
}

void TcInput::addListener(Listener* listener)
{
    if (std::find(listeners.begin(), listeners.end(), listener) == listeners.end())
        listeners.push_back(listener);
}

void TcInput::removeListener(Listener* listener)
{
    listeners.erase(std::remove(listeners.begin(), listeners.end(), listener), listeners.end());
}

void TcInput::setSigned(bool shouldBeSigned)
{
    signedInput = shouldBeSigned;
    sign.setVisible(signedInput);
}

void TcInput::setBackgroundColour(juce::Colour colour)
{
    background = colour;
    repaint();
}

void TcInput::writeFields()
{
    sign.setText(positive ? "+" : "-", juce::dontSendNotification);
    // An unset timecode leaves the fields as they are: there is nothing to show.
    if (!timecode.isInitialized())
        return;
    hoursEdit.setText(twoDigits(timecode.getHours()), false);
    minutesEdit.setText(twoDigits(timecode.getMinutes()), false);
    secondsEdit.setText(twoDigits(timecode.getSeconds()), false);
    framesEdit.setText(twoDigits(timecode.getFrames()), false);
}

void TcInput::takeValue()
{
    core::Timecode typed(hoursEdit.getText().getIntValue(), minutesEdit.getText().getIntValue(),
                         secondsEdit.getText().getIntValue(), framesEdit.getText().getIntValue());
    const bool typedPositive = !signedInput || sign.getText() != "-";
    if (!typed.isValid()) {
        writeFields();
        return;
    }
    if (typed == timecode && timecode.isInitialized() && typedPositive == positive)
        return;
    timecode = typed;
    positive = typedPositive;
    writeFields();
    notifyListeners();
}

void TcInput::notifyListeners()
{
    // Newest first; a listener may remove itself or others, or delete the input.
    juce::Component::SafePointer<TcInput> alive(this);
    for (size_t i = listeners.size(); i-- > 0;) {
        if (i >= listeners.size())
            continue;
        listeners[i]->timecodeChanged(this);
        if (alive == nullptr)
            return;
    }
}

double TcInput::unitSeconds(Field field)
{
    static constexpr int units[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    const int* u = units[field];
    core::Timecode unit(u[0], u[1], u[2], u[3]);
    // At drop-frame rates the label 00:01:00;00 is one of the dropped ones;
    // the first label of that minute, 00:01:00;02, stands for the minute,
    // so that the wheel from zero reads one minute.
    if (!unit.isValid() && field == Minutes)
        unit = core::Timecode(0, 1, 0, 2);
    return unit.toSeconds();
}

void TcInput::step(Field field, bool up)
{
    // A stored value that is no timecode at the current rate (the rate
    // changed since it was set) and a rate without frames cannot be stepped.
    if ((timecode.isInitialized() && !timecode.isValid()) || !core::Timecode(0, 0, 0, 1).isValid())
        return;
    const double unit = unitSeconds(field);
    double now = timecode.isInitialized() ? timecode.toSeconds() : 0.0;
    if (signedInput && !positive)
        now = -now;
    const double next = up ? now + unit : now - unit;
    // Without a sign the input stops at zero rather than pass it.
    if (!signedInput && next < 0.0)
        return;
    // Nor does it pass the end of the day: there is no wrap at midnight.
    if (!core::Timecode::isValidSeconds(std::fabs(next)))
        return;
    core::Timecode stepped;
    stepped.fromSeconds(std::fabs(next));
    setTimecode(stepped, next >= 0.0 || stepped == core::Timecode::zero(), true);
}

void TcInput::mouseWheelMove(const juce::MouseEvent& event, const juce::MouseWheelDetails& wheel)
{
    if (!isEnabled() || wheel.deltaY == 0.0f)
        return;
    const bool up = wheel.deltaY > 0.0f;
    juce::Component* target = event.originalComponent;
    if (target == this || target == nullptr)
        target = getComponentAt(event.getEventRelativeTo(this).getPosition());

    if (target == &sign || (target != nullptr && sign.isParentOf(target))) {
        if (!signedInput)
            return;
        sign.setText(sign.getText() == "-" ? "+" : "-", juce::dontSendNotification);
        takeValue();
        return;
    }
    for (Field field : {Hours, Minutes, Seconds, Frames}) {
        juce::TextEditor& editor = editorOf(field);
        if (target != &editor && (target == nullptr || !editor.isParentOf(target)))
            continue;
        editor.grabKeyboardFocus();
        step(field, up);
        editor.setHighlightedRegion({0, 2});
        return;
    }
}

void TcInput::paint(juce::Graphics& g)
{
    g.fillAll(background);
}

void TcInput::resized()
{
    const int y = (getHeight() - fieldHeight) / 2;
    sign.setBounds(0, y, 15, fieldHeight);
    hoursEdit.setBounds(14, y, 24, fieldHeight);
    minutesEdit.setBounds(34, y, 24, fieldHeight);
    secondsEdit.setBounds(54, y, 24, fieldHeight);
    framesEdit.setBounds(74, y, 24, fieldHeight);
    colons[0].setBounds(31, y, 10, fieldHeight);
    colons[1].setBounds(51, y, 10, fieldHeight);
    colons[2].setBounds(71, y, 10, fieldHeight);
    m_disableOverlay.setBounds(getLocalBounds());
}

void TcInput::enablementChanged()
{
    // Drawn at half strength while disabled, as disabled labels are, so that
    // a value that does not count now does not read as one that does.
    setAlpha(isEnabled() ? 1.0f : 0.5f);
    m_disableOverlay.setVisible(!isEnabled());
    if (!isEnabled())
        m_disableOverlay.toFront(false);
}

void TcInput::textEditorTextChanged(juce::TextEditor& editor)
{
    if (!isEnabled() || editor.getText().length() != 2)
        return;
    juce::TextEditor* next = nullptr;
    if (&editor == &hoursEdit)
        next = &minutesEdit;
    else if (&editor == &minutesEdit)
        next = &secondsEdit;
    else if (&editor == &secondsEdit)
        next = &framesEdit;
    if (next != nullptr)
        next->grabKeyboardFocus();
    juce::Component::SafePointer<TcInput> alive(this);
    takeValue();
    if (alive != nullptr && next != nullptr)
        editor.setHighlightedRegion({0, 2});
}

void TcInput::textEditorReturnKeyPressed(juce::TextEditor& editor)
{
    textEditorFocusLost(editor);
}

void TcInput::textEditorEscapeKeyPressed(juce::TextEditor&)
{
    writeFields();
    notifyListeners();
}

void TcInput::textEditorFocusLost(juce::TextEditor& editor)
{
    editor.setHighlightedRegion({});
    takeValue();
}

} // namespace montala::gui
