#include "gui/SpinBox.h"

#include "gui/GuiTestSupport.h"

#include <gtest/gtest.h>

#include <string>

namespace montala::gui {
namespace {

class SpinBoxTest : public ::testing::Test, public SpinBox::Listener {
protected:
    SpinBoxTest()
    {
        box.setSize(90, 22);
        box.setRange(0.0, 10.0);
        box.setSuffix("frames");
        box.addListener(this);
    }

    ~SpinBoxTest() override { box.removeListener(this); }

    void valueChanged(SpinBox* changed) override
    {
        ++calls;
        heard = changed->getValue();
    }

    template <typename Type>
    Type& child(const char* name)
    {
        for (auto* component : box.getChildren())
            if (component->getName() == name)
                return dynamic_cast<Type&>(*component);
        throw std::string(name);
    }

    juce::Label& display() { return child<juce::Label>("Value"); }

    static void settle() { juce::MessageManager::getInstance()->runDispatchLoopUntil(5); }

    void wheel(float deltaY) { test::turnWheel(box, deltaY, display().getBounds().getCentre().toFloat()); }
    void click() { box.mouseDown(test::mouseOn(box, display().getBounds().getCentre().toFloat())); }

    juce::ScopedJuceInitialiser_GUI juce;
    SpinBox box;
    int calls = 0;
    double heard = -1.0;
};

TEST_F(SpinBoxTest, ValuesAreClampedToTheRangeAndShownWithTheSuffix)
{
    box.setValue(15.0, false);
    EXPECT_EQ(box.getValue(), 10.0);
    EXPECT_EQ(display().getText(), "10 frames");
    EXPECT_EQ(calls, 0);

    box.setValue(-3.0, true);
    EXPECT_EQ(box.getValue(), 0.0);
    EXPECT_EQ(display().getText(), "0 frames");
    EXPECT_EQ(calls, 1);

    box.setSuffix({});
    box.setValue(4.0, false);
    EXPECT_EQ(display().getText(), "4");
}

TEST_F(SpinBoxTest, ButtonsAndWheelStepWithinTheRange)
{
    box.setStep(3.0);
    box.setValue(5.0, false);

    child<juce::Button>("Up").triggerClick();
    settle();
    EXPECT_EQ(box.getValue(), 8.0);
    EXPECT_EQ(heard, 8.0);
    child<juce::Button>("Up").triggerClick();
    settle();
    EXPECT_EQ(box.getValue(), 10.0);
    child<juce::Button>("Down").triggerClick();
    settle();
    EXPECT_EQ(box.getValue(), 7.0);
    EXPECT_EQ(calls, 3);

    wheel(-1.0f);
    EXPECT_EQ(box.getValue(), 4.0);
    wheel(-1.0f);
    wheel(-1.0f);
    EXPECT_EQ(box.getValue(), 0.0);
    EXPECT_EQ(display().getText(), "0 frames");
    wheel(0.0f);
    EXPECT_EQ(calls, 6);

    box.setEnabled(false);
    wheel(1.0f);
    EXPECT_EQ(box.getValue(), 0.0);
    EXPECT_EQ(calls, 6);
}

TEST_F(SpinBoxTest, ClickOpensThePlainNumberForDigitsOnly)
{
    box.setValue(5.0, false);
    click();
    juce::TextEditor* editor = display().getCurrentTextEditor();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->getText(), "5");

    // Letters are refused as they are typed.
    editor->selectAll();
    editor->insertTextAtCaret("abc");
    EXPECT_EQ(editor->getText(), "");
    editor->insertTextAtCaret("12");
    EXPECT_EQ(editor->getText(), "12");

    // Taken on leaving the editor, clamped, and shown clamped with the suffix.
    display().hideEditor(false);
    EXPECT_EQ(box.getValue(), 10.0);
    EXPECT_EQ(display().getText(), "10 frames");
    EXPECT_EQ(calls, 1);

    // Leaving the number as it was changes nothing and says nothing.
    click();
    ASSERT_NE(display().getCurrentTextEditor(), nullptr);
    display().hideEditor(false);
    EXPECT_EQ(display().getText(), "10 frames");
    EXPECT_EQ(calls, 1);
}

} // namespace
} // namespace montala::gui
