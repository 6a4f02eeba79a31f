// The settings overlay in the window, against a real data model: each
// control writes its field at once, the window shows the settings back as
// they change, and the restricted range never ends before it starts.

#include "gui/MainGui.h"

#include "core/model/DataModel.h"
#include "gui/GuiTestSupport.h"
#include "support/ModelFixture.h"

#include <gtest/gtest.h>

#include <functional>

namespace montala::gui {
namespace {

using test::tc;
using Dialog = SettingsDialog;

class SettingsDialogTest : public test::ModelFixture {
protected:
    SettingsDialogTest()
    {
        model.setNotifier(&project);
        gui.setProject(&project);
        gui.getSettingsButton().triggerClick();
        juce::MessageManager::getInstance()->runDispatchLoopUntil(5);
    }
    ~SettingsDialogTest() override
    {
        gui.setProject(nullptr);
        model.setNotifier(nullptr);
    }

    Dialog& dialog() { return gui.getSettingsDialog(); }
    const core::Settings& settings() const { return model.getSettings(); }
    void click(juce::Button& button) { button.triggerClick(); juce::MessageManager::getInstance()->runDispatchLoopUntil(5); }
    void type(juce::TextEditor& editor, const char* text)
    {
        editor.setText(text, true);
        juce::MessageManager::getInstance()->runDispatchLoopUntil(5);
    }

    juce::ScopedJuceInitialiser_GUI juce;
    core::DataModel model;
    test::ProjectNotifier project{&model};
    MainGui gui;
};

TEST_F(SettingsDialogTest, EveryControlWritesItsFieldAtOnce)
{
    ASSERT_TRUE(dialog().isVisible());
    ASSERT_TRUE(dialog().isEnabled());
    struct Case {
        const char* control;
        std::function<void()> change;
        std::function<bool()> written;
    };
    const core::Settings defaults = settings();
    const auto toggle = [this](Dialog::Toggle which) { return [this, which] { click(dialog().getToggle(which)); }; };
    const auto choose = [this](Dialog::Choice which, int id) {
        return [this, which, id] { dialog().getChoice(which).setSelectedId(id, juce::sendNotificationSync); };
    };
    const Case cases[] = {
        {"B-Roll Renaming", toggle(Dialog::BRollRenaming), [&] { return !settings().getBRollRenaming(); }},
        {"Match Name", choose(Dialog::MatchNameChoice, 2),
         [&] { return settings().getMatchName() == core::MatchName::ClipName; }},
        {"Heal Processing", choose(Dialog::HealProcessingChoice, 4),
         [&] { return settings().getHealProcessing() == core::HealProcessingMode::GapsWithInserts; }},
        {"Apply Montala to", choose(Dialog::ApplyToChoice, 2),
         [&] { return settings().getApplyTo() == core::ApplyTo::SelectedTracks; }},
        {"Include Overhanging", toggle(Dialog::IncludeOverhanging), [&] { return settings().getIncludeOverhanging(); }},
        {"overhang frames", [this] { dialog().getNumber(Dialog::OverhangFrames).setValue(12, true); },
         [&] { return settings().getOverhangFrames() == 12u; }},
        {"Destination Markers", toggle(Dialog::DestinationMarkers),
         [&] { return !settings().getCreateDestinationMarkers(); }},
        {"Dissolve/Wipe Markers", toggle(Dialog::TransitionMarkers),
         [&] { return !settings().getCreateTransitionMarkers(); }},
        {"Insert Markers", toggle(Dialog::InsertMarkers), [&] { return !settings().getCreateInsertMarkers(); }},
        {"Automation Warning Markers", toggle(Dialog::AutomationWarningMarkers),
         [&] { return !settings().getCreateAutomationWarningMarkers(); }},
        {"Overlap Markers", toggle(Dialog::OverlapMarkers), [&] { return !settings().getCreateOverlapMarkers(); }},
        {"Audio Snippet Markers", toggle(Dialog::SnippetMarkers),
         [&] { return !settings().getCreateSnippetMarkers(); }},
        {"snippet frames", [this] { dialog().getNumber(Dialog::SnippetMarkerFrames).setValue(8, true); },
         [&] { return settings().getSnippetMarkerFrames() == 8u; }},
        {"Virgin Territories", toggle(Dialog::VirginTerritories),
         [&] { return settings().getCreateVirginTerritories(); }},
        {"Restrict Montala Range", toggle(Dialog::RestrictRange), [&] { return settings().getRestrictRange(); }},
        {"VFX row 2 on", [this] { click(dialog().getVfxRow(1).active); },
         [&] { return settings().getVfxPattern(1).active; }},
        {"VFX row 2 prefix", [this] { type(dialog().getVfxRow(1).prefix, "VFX_"); },
         [&] { return settings().getVfxPattern(1).prefix == "VFX_"; }},
        {"VFX row 3 postfix", [this] { type(dialog().getVfxRow(2).postfix, "_comp"); },
         [&] { return settings().getVfxPattern(2).postfix == "_comp"; }},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.control);
        EXPECT_FALSE(one.written()) << "already so before the change";
        one.change();
        EXPECT_TRUE(one.written());
    }
    EXPECT_EQ(settings().getVfxPattern(0), defaults.getVfxPattern(0)) << "the other rows stay as they were";
}

TEST_F(SettingsDialogTest, TheRestrictedRangeIsTypedOnlyWhileOnAndTheUntouchedEndGivesWay)
{
    TcInput& before = dialog().getPreserveBefore();
    TcInput& after = dialog().getPreserveAfter();
    EXPECT_FALSE(before.isEnabled());
    click(dialog().getToggle(Dialog::RestrictRange));
    EXPECT_TRUE(before.isEnabled());
    EXPECT_TRUE(after.isEnabled());

    after.setTimecode(tc("00:00:10:00"), true, true);
    EXPECT_EQ(settings().getRestrictedRange(), std::make_pair(0.0, 10.0));

    // A start typed after the end drags the end along...
    before.setTimecode(tc("00:00:12:00"), true, true);
    EXPECT_EQ(settings().getRestrictedRange(), std::make_pair(12.0, 12.0));
    EXPECT_EQ(after.getTimecode().toString(), "00:00:12:00") << "the window shows the range that holds";

    // ...and an end typed before the start drags the start, signs included.
    after.setTimecode(tc("00:00:02:00"), false, true);
    EXPECT_EQ(settings().getRestrictedRange(), std::make_pair(-2.0, -2.0));
    EXPECT_EQ(before.getTimecode().toString(), "00:00:02:00");
    EXPECT_FALSE(before.isPositive());

    click(dialog().getToggle(Dialog::RestrictRange));
    EXPECT_FALSE(after.isEnabled());
}

TEST_F(SettingsDialogTest, WithoutSettingsTheControlsStayAsTheyWereAndDisabled)
{
    click(dialog().getToggle(Dialog::VirginTerritories));
    gui.setProject(nullptr);
    EXPECT_FALSE(dialog().isEnabled());
    EXPECT_FALSE(dialog().isVisible());
    EXPECT_TRUE(dialog().getToggle(Dialog::VirginTerritories).getToggleState());
    // A click that somehow reaches a control writes nowhere.
    dialog().getToggle(Dialog::BRollRenaming).setToggleState(false, juce::sendNotificationSync);
    EXPECT_TRUE(settings().getBRollRenaming());
}

TEST_F(SettingsDialogTest, AClickBesideThePanelClosesItAndMarksVfxShotsAgain)
{
    model.getOldList().addEvent(test::makeEvent("VFX_010", "01:00:00:00", "01:00:01:00", "10:00:00:00", "10:00:01:00"));
    click(dialog().getVfxRow(0).active);
    type(dialog().getVfxRow(0).prefix, "VFX_");
    EXPECT_FALSE(model.getOldList().getEvent(0)->isVfx()) << "marked when the panel closes, not while typing";

    const juce::Rectangle<int> panel = dialog().getPanelBounds();
    dialog().mouseDown(test::mouseOn(dialog(), panel.getCentre().toFloat()));
    EXPECT_TRUE(dialog().isVisible()) << "a click on the panel keeps it open";
    dialog().mouseDown(test::mouseOn(dialog(), {static_cast<float>(panel.getRight() + 50), 100.0f}));
    EXPECT_FALSE(dialog().isVisible());
    EXPECT_TRUE(model.getOldList().getEvent(0)->isVfx());
}

} // namespace
} // namespace montala::gui
