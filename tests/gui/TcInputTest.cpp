#include "gui/TcInput.h"

#include "gui/GuiTestSupport.h"
#include "support/ModelFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace montala::gui {
namespace {

using test::tc;

class Recorder : public TcInput::Listener {
public:
    void timecodeChanged(TcInput* input) override
    {
        ++calls;
        last = input->getTimecode().toString();
        lastPositive = input->isPositive();
    }

    int calls = 0;
    std::string last;
    bool lastPositive = true;
};

// Drives the input through its own editors and labels, at 24 fps.
class TcInputTest : public test::ModelFixture {
protected:
    TcInputTest()
    {
        setRate(24, 0);
        input.setSize(100, 22);
        input.addListener(&recorder);
    }

    ~TcInputTest() override { input.removeListener(&recorder); }

    template <typename Part = juce::TextEditor>
    Part& field(const char* name)
    {
        for (auto* child : input.getChildren())
            if (child->getName() == name)
                return dynamic_cast<Part&>(*child);
        throw std::string(name);
    }
    juce::Label& signLabel() { return field<juce::Label>("Sign"); }

    // Text changes reach the input through the message loop, as when typed.
    static void settle() { juce::MessageManager::getInstance()->runDispatchLoopUntil(5); }

    void type(juce::TextEditor& editor, const char* text)
    {
        editor.selectAll();
        editor.insertTextAtCaret(text);
        settle();
    }

    static void wheel(juce::Component& target, float deltaY) { test::turnWheel(target, deltaY); }

    juce::ScopedJuceInitialiser_GUI juce;
    TcInput input;
    Recorder recorder;
};

TEST_F(TcInputTest, TypedFieldsAreTakenAndAValueNotAtTheRateIsPutBackWithoutANotice)
{
    input.setTimecode(tc("01:00:00:10"), false);
    EXPECT_EQ(field("Hours Edit").getText(), "01");
    EXPECT_EQ(field("FramesEdit").getText(), "10");
    EXPECT_EQ(recorder.calls, 0);

    // 25 frames do not exist at 24 fps.
    type(field("FramesEdit"), "25");
    EXPECT_EQ(input.getTimecode().toString(), "01:00:00:10");
    EXPECT_EQ(field("FramesEdit").getText(), "10");
    EXPECT_EQ(recorder.calls, 0);

    type(field("FramesEdit"), "23");
    EXPECT_EQ(input.getTimecode().toString(), "01:00:00:23");
    EXPECT_EQ(recorder.calls, 1);

    // Two digits in the hours are taken at once; one digit waits.
    type(field("Hours Edit"), "12");
    EXPECT_EQ(recorder.last, "12:00:00:23");
    type(field("Minutes Edit"), "5");
    EXPECT_EQ(recorder.calls, 2);
    EXPECT_EQ(input.getTimecode().toString(), "12:00:00:23");

    // Return takes the half-typed field; the same value again says nothing.
    field("Minutes Edit").keyPressed(juce::KeyPress(juce::KeyPress::returnKey));
    settle();
    EXPECT_EQ(recorder.last, "12:05:00:23");
    EXPECT_EQ(recorder.calls, 3);
    field("Minutes Edit").keyPressed(juce::KeyPress(juce::KeyPress::returnKey));
    settle();
    EXPECT_EQ(recorder.calls, 3);

    // Escape puts the stored value back over what was typed, with a notice.
    type(field("Seconds Edit"), "4");
    field("Seconds Edit").keyPressed(juce::KeyPress(juce::KeyPress::escapeKey));
    settle();
    EXPECT_EQ(field("Seconds Edit").getText(), "00");
    EXPECT_EQ(recorder.calls, 4);
    EXPECT_EQ(input.getTimecode().toString(), "12:05:00:23");

    // Letters cannot be typed.
    type(field("Seconds Edit"), "a");
    EXPECT_EQ(field("Seconds Edit").getText(), "");
}

TEST_F(TcInputTest, WheelStepsTheFieldUnderTheMouseWithRolloverAndStopsAtZeroWithoutSign)
{
    input.setTimecode(tc("00:00:00:00"), false);

    // Not below zero: nothing moves, nothing is said.
    wheel(field("FramesEdit"), -1.0f);
    wheel(field("Hours Edit"), -1.0f);
    EXPECT_EQ(input.getTimecode().toString(), "00:00:00:00");
    EXPECT_EQ(recorder.calls, 0);

    // A delta of zero does nothing either.
    wheel(field("FramesEdit"), 0.0f);
    EXPECT_EQ(recorder.calls, 0);

    wheel(field("FramesEdit"), 1.0f);
    EXPECT_EQ(recorder.last, "00:00:00:01");

    // Rollover comes through seconds: the last frame plus one is a second,
    // 59 seconds plus one a minute, and back down again.
    input.setTimecode(tc("00:00:59:23"), false);
    wheel(field("FramesEdit"), 1.0f);
    EXPECT_EQ(recorder.last, "00:01:00:00");
    EXPECT_EQ(field("Minutes Edit").getText(), "01");
    EXPECT_EQ(field("Seconds Edit").getText(), "00");
    wheel(field("FramesEdit"), -1.0f);
    EXPECT_EQ(recorder.last, "00:00:59:23");
    input.setTimecode(tc("00:59:59:00"), false);
    wheel(field("Seconds Edit"), 1.0f);
    EXPECT_EQ(recorder.last, "01:00:00:00");
    wheel(field("Minutes Edit"), -1.0f);
    EXPECT_EQ(recorder.last, "00:59:00:00");

    // The wheel over the sign does nothing without a sign, and a disabled
    // input takes no wheel at all.
    const int calls = recorder.calls;
    wheel(signLabel(), 1.0f);
    input.setEnabled(false);
    wheel(field("Hours Edit"), 1.0f);
    EXPECT_EQ(recorder.calls, calls);
    EXPECT_EQ(input.getTimecode().toString(), "00:59:00:00");
}

TEST_F(TcInputTest, SignedInputStepsThroughZeroAndTheSignFlipsOnTheWheel)
{
    input.setSigned(true);
    input.setTimecode(tc("00:00:00:01"), true, false);

    wheel(field("FramesEdit"), -1.0f);
    EXPECT_EQ(recorder.last, "00:00:00:00");
    EXPECT_TRUE(recorder.lastPositive);
    wheel(field("FramesEdit"), -1.0f);
    EXPECT_EQ(recorder.last, "00:00:00:01");
    EXPECT_FALSE(recorder.lastPositive);
    EXPECT_EQ(signLabel().getText(), "-");

    // Further down is further from zero on the negative side.
    wheel(field("Seconds Edit"), -1.0f);
    EXPECT_EQ(recorder.last, "00:00:01:01");
    EXPECT_FALSE(input.isPositive());

    // The wheel on the sign flips it and tells the listeners.
    const int calls = recorder.calls;
    wheel(signLabel(), 1.0f);
    EXPECT_TRUE(input.isPositive());
    EXPECT_EQ(signLabel().getText(), "+");
    EXPECT_EQ(input.getTimecode().toString(), "00:00:01:01");
    EXPECT_EQ(recorder.calls, calls + 1);

    // Setting a timecode keeps the sign unless told otherwise.
    input.setTimecode(tc("00:00:02:00"), true, false);
    input.setTimecode(tc("00:00:03:00"), false);
    EXPECT_TRUE(input.isPositive());
}

TEST_F(TcInputTest, ListenerThatDeletesTheInputStopsTheNotice)
{
    struct Deleter : TcInput::Listener {
        std::unique_ptr<TcInput> owned;
        int calls = 0;
        void timecodeChanged(TcInput*) override
        {
            ++calls;
            owned.reset();
        }
    };
    Deleter deleter;
    Recorder earlier;
    deleter.owned = std::make_unique<TcInput>();
    deleter.owned->addListener(&earlier);
    deleter.owned->addListener(&deleter);
    // The newest listener hears first and deletes the input: the older one
    // is not called on a dead input.
    deleter.owned->setTimecode(tc("00:00:01:00"), true);
    EXPECT_EQ(deleter.calls, 1);
    EXPECT_EQ(earlier.calls, 0);
    EXPECT_EQ(deleter.owned, nullptr);
}

TEST_F(TcInputTest, WheelStepsEveryFieldAtDropFrameWhereTheMinutesLabelDoesNotExist)
{
    // 29.97 drop frame: 00:01:00;00 and ;01 are no timecodes.
    setRate(30, 1, true);
    input.setTimecode(core::Timecode(0, 0, 0, 0), false);

    wheel(field("Minutes Edit"), 1.0f);
    EXPECT_EQ(input.getTimecode(), core::Timecode(0, 1, 0, 2)) << "the first label of minute one";
    EXPECT_EQ(recorder.calls, 1);

    wheel(field("FramesEdit"), -1.0f);
    EXPECT_EQ(input.getTimecode(), core::Timecode(0, 0, 59, 29)) << "back over the two dropped labels";
    wheel(field("Seconds Edit"), 1.0f);
    EXPECT_EQ(input.getTimecode().getMinutes(), 1);
    wheel(field("Hours Edit"), 1.0f);
    EXPECT_EQ(input.getTimecode().getHours(), 1);
    // Down twice from 01:01:01;01: a minute back, then back over the hour.
    wheel(field("Minutes Edit"), -1.0f);
    EXPECT_EQ(input.getTimecode().getHours(), 1);
    EXPECT_EQ(input.getTimecode().getMinutes(), 0);
    wheel(field("Minutes Edit"), -1.0f);
    EXPECT_EQ(input.getTimecode().getHours(), 0);
    EXPECT_EQ(input.getTimecode().getMinutes(), 59);
    EXPECT_TRUE(input.getTimecode().isValid());
    EXPECT_EQ(recorder.calls, 6);

    // The project's rate changes under an open input: the wheel leaves a
    // value that is no timecode at the new rate alone.
    setRate(30, 0);
    input.setTimecode(core::Timecode(1, 0, 0, 29), false);
    setRate(25, 0);
    for (const char* name : {"Hours Edit", "Minutes Edit", "Seconds Edit", "FramesEdit"}) {
        SCOPED_TRACE(name);
        wheel(field(name), 1.0f);
        wheel(field(name), -1.0f);
    }
    EXPECT_EQ(input.getTimecode(), core::Timecode(1, 0, 0, 29));
    EXPECT_EQ(recorder.calls, 6);
}

} // namespace
} // namespace montala::gui
