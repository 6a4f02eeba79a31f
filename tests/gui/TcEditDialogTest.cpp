// The event edit popup: which times move together, what a locked time does
// with typing, and what Apply and Cancel leave on the event.

#include "gui/TcEditDialog.h"

#include "gui/GuiTestSupport.h"
#include "support/ModelFixture.h"

#include <gtest/gtest.h>

namespace montala::gui {
namespace {

using test::tc;
using Time = TcEditDialog::Time;

class TcEditDialogTest : public test::ModelFixture {
protected:
    TcEditDialogTest()
    {
        // Four seconds of source at 10:00:00:00 of the record.
        event = test::makeEvent("A001", "01:00:00:00", "01:00:04:00", "10:00:00:00", "10:00:04:00");
        dialog.setEvent(event);
        dialog.setVisible(true);
    }

    void type(Time time, const char* value) { dialog.getInput(time).setTimecode(tc(value), true); }
    std::string shown(Time time) { return dialog.getInput(time).getTimecode().toString(); }
    void click(juce::Button& button) { button.triggerClick(); juce::MessageManager::getInstance()->runDispatchLoopUntil(5); }
    bool on(Time time) { return dialog.getToggle(time).getToggleState(); }

    juce::ScopedJuceInitialiser_GUI juce;
    core::EventPtr event;
    test::RecordingUndo undo;
    TcEditDialog dialog;
};

TEST_F(TcEditDialogTest, TheTwoTimesOnMoveTogetherAndATimeOffCannotBeTyped)
{
    ASSERT_TRUE(on(Time::SrcIn) && on(Time::SrcOut));
    type(Time::SrcIn, "01:00:01:00");
    EXPECT_EQ(shown(Time::SrcOut), "01:00:05:00");
    EXPECT_EQ(shown(Time::DstIn), "10:00:00:00");
    EXPECT_EQ(shown(Time::DstOut), "10:00:04:00");
    EXPECT_EQ(dialog.getMotionSpeedText(), "1.00x");

    // DST OUT is off: what is typed there is put back.
    type(Time::DstOut, "10:00:06:00");
    EXPECT_EQ(shown(Time::DstOut), "10:00:04:00");

    // Switching on DST OUT drops SRC IN, the first one on; now SRC OUT and
    // DST OUT move together and the speed stays.
    click(dialog.getToggle(Time::DstOut));
    EXPECT_FALSE(on(Time::SrcIn));
    EXPECT_TRUE(on(Time::SrcOut) && on(Time::DstOut));
    type(Time::DstOut, "10:00:06:00");
    EXPECT_EQ(shown(Time::SrcOut), "01:00:07:00");
    EXPECT_EQ(shown(Time::SrcIn), "01:00:01:00");
    // A click on a time already on keeps both as they are.
    click(dialog.getToggle(Time::SrcOut));
    EXPECT_TRUE(on(Time::SrcOut) && on(Time::DstOut));
    EXPECT_FALSE(on(Time::SrcIn));

    // A shift that would push the partner before midnight is refused whole.
    click(dialog.getToggle(Time::DstIn));
    click(dialog.getToggle(Time::SrcIn));
    ASSERT_TRUE(on(Time::DstIn) && on(Time::SrcIn));
    type(Time::DstIn, "00:00:00:00");
    EXPECT_EQ(shown(Time::DstIn), "10:00:00:00");
    EXPECT_EQ(shown(Time::SrcIn), "01:00:01:00");

    EXPECT_EQ(event->getSrcIn().toString(), "01:00:00:00") << "nothing reaches the event before Apply";
}

TEST_F(TcEditDialogTest, ApplyWritesTheTimesInOneStepAndCancelLeavesTheEvent)
{
    click(dialog.getToggle(Time::DstIn));
    click(dialog.getToggle(Time::DstOut));
    // Two seconds longer on the record than in the source: slow motion.
    type(Time::DstOut, "10:00:06:00");
    EXPECT_EQ(shown(Time::DstIn), "10:00:02:00");
    click(dialog.getCancelButton());
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(event->getDstIn().toString(), "10:00:00:00");
    EXPECT_TRUE(undo.titles.empty());

    dialog.setEvent(event);
    EXPECT_TRUE(on(Time::SrcIn) && on(Time::SrcOut)) << "each event starts with the source pair";
    EXPECT_EQ(shown(Time::DstIn), "10:00:00:00");
    click(dialog.getToggle(Time::DstOut));
    // SRC OUT and DST OUT on: a shorter record range over the same source start.
    type(Time::SrcOut, "01:00:02:00");
    EXPECT_EQ(shown(Time::DstOut), "10:00:02:00");
    dialog.setVisible(true);
    click(dialog.getApplyButton());
    EXPECT_EQ(undo.titles, std::vector<std::string>{"Edit EDL Event"});
    EXPECT_EQ(event->getSrcOut().toString(), "01:00:02:00");
    EXPECT_EQ(event->getDstOut().toString(), "10:00:02:00");
    EXPECT_TRUE(event->isFlawless());
    EXPECT_FALSE(dialog.isVisible());

    // An OUT before the IN makes the range invalid, and the event says so.
    dialog.setEvent(event);
    click(dialog.getToggle(Time::DstOut));
    click(dialog.getToggle(Time::SrcIn));
    type(Time::DstOut, "09:59:59:00");
    EXPECT_EQ(shown(Time::SrcIn), "00:59:57:00");
    click(dialog.getApplyButton());
    EXPECT_TRUE(event->hasState(core::EventState::InvalidTimecodeRange));
}

} // namespace
} // namespace montala::gui
