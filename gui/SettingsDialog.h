#pragma once

#include "core/model/Settings.h"
#include "gui/SpinBox.h"
#include "gui/TcInput.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <array>
#include <memory>

namespace montala::gui {

// The settings overlay: a panel at the bottom left of the window, over a
// dimmed window that closes it when clicked. Every control writes its field
// at once, so there is neither "Ok" nor "Cancel"; what the user sees is what
// the project holds.
//
// The restricted range keeps its start before its end: when a typed value
// would cross the other one, the input the user did not touch gives way.
class SettingsDialog : public juce::Component,
                       public juce::TextEditor::Listener,
                       public TcInput::Listener,
                       public SpinBox::Listener,
                       public juce::Button::Listener,
                       public juce::ComboBox::Listener {
public:
    // The on/off fields, in the order of the panel.
    enum Toggle {
        BRollRenaming,
        IncludeOverhanging,
        DestinationMarkers,
        TransitionMarkers,
        InsertMarkers,
        AutomationWarningMarkers,
        OverlapMarkers,
        SnippetMarkers,
        VirginTerritories,
        RestrictRange,
        toggleCount
    };
    enum Choice { MatchNameChoice, HealProcessingChoice, ApplyToChoice, choiceCount };
    enum Number { OverhangFrames, SnippetMarkerFrames, numberCount };

    struct VfxRow {
        juce::ToggleButton active;
        juce::TextEditor prefix;
        juce::Label versionNumber;
        juce::TextEditor postfix;
    };

    SettingsDialog();
    ~SettingsDialog() override;

    // Not owned. Shows the fields without telling anybody and enables the
    // panel; null leaves the controls as they are and disables them.
    void setSettings(core::Settings* settings);

    void mouseDown(const juce::MouseEvent& event) override;
    void paint(juce::Graphics& g) override;
    void resized() override;

    void textEditorTextChanged(juce::TextEditor& editor) override;
    void timecodeChanged(TcInput* input) override;
    void valueChanged(SpinBox* spinBox) override;
    void buttonClicked(juce::Button* button) override;
    void comboBoxChanged(juce::ComboBox* comboBox) override;

    // The controls, for tests.
    juce::ToggleButton& getToggle(Toggle which) { return *toggles[which]; }
    juce::ComboBox& getChoice(Choice which) { return *choices[which]; }
    SpinBox& getNumber(Number which) { return *numbers[which]; }
    VfxRow& getVfxRow(size_t index) { return *vfxRows[index]; }
    TcInput& getPreserveBefore() { return preserveBefore; }
    TcInput& getPreserveAfter() { return preserveAfter; }
    juce::Rectangle<int> getPanelBounds() const;

private:
    // Writes one control's field.
    void writeToggle(Toggle which, bool on);
    void writeVfxRow(size_t index);
    // Both inputs as signed seconds.
    static double secondsOf(const TcInput& input);
    static void showSeconds(TcInput& input, double seconds);

    core::Settings* settings = nullptr;
    std::array<std::unique_ptr<juce::ToggleButton>, toggleCount> toggles;
    std::array<std::unique_ptr<juce::ComboBox>, choiceCount> choices;
    std::array<std::unique_ptr<juce::Label>, choiceCount> choiceCaptions;
    std::array<std::unique_ptr<SpinBox>, numberCount> numbers;
    std::array<std::unique_ptr<VfxRow>, core::Settings::vfxPatternCount> vfxRows;
    juce::Label vfxCaption;
    juce::Label beforeCaption;
    juce::Label afterCaption;
    TcInput preserveBefore;
    TcInput preserveAfter;
    std::array<std::unique_ptr<juce::Label>, 3> headings;
    std::array<std::unique_ptr<juce::Label>, 3> headingLines;

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(SettingsDialog)
};

} // namespace montala::gui
