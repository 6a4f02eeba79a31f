#include "studio/SettingStep.h"

#include "core/time/Timecode.h"
#include "gui/MainGui.h"
#include "studio/StudioOptions.h"

#include <map>

namespace montala::studio {

using Dialog = gui::SettingsDialog;

namespace {

const std::map<std::string, Dialog::Toggle>& toggleNames()
{
    static const std::map<std::string, Dialog::Toggle> names{
        {"b-roll-renaming", Dialog::BRollRenaming},
        {"include-overhanging", Dialog::IncludeOverhanging},
        {"destination-markers", Dialog::DestinationMarkers},
        {"transition-markers", Dialog::TransitionMarkers},
        {"insert-markers", Dialog::InsertMarkers},
        {"automation-warning-markers", Dialog::AutomationWarningMarkers},
        {"overlap-markers", Dialog::OverlapMarkers},
        {"snippet-markers", Dialog::SnippetMarkers},
        {"virgin-territories", Dialog::VirginTerritories},
        {"restrict-range", Dialog::RestrictRange},
    };
    return names;
}

struct ChoiceValues {
    Dialog::Choice choice;
    std::vector<std::string> values; // by item id, from 1
};

const std::map<std::string, ChoiceValues>& choiceNames()
{
    static const std::map<std::string, ChoiceValues> names{
        {"match-name", {Dialog::MatchNameChoice, {"roll", "clip"}}},
        {"heal", {Dialog::HealProcessingChoice, {"none", "normal", "gaps-without-inserts", "gaps-with-inserts"}}},
        {"apply-to", {Dialog::ApplyToChoice, {"all", "selected"}}},
    };
    return names;
}

bool setControl(Dialog& dialog, const std::string& name, const std::string& value, std::string& error)
{
    if (const auto toggle = toggleNames().find(name); toggle != toggleNames().end()) {
        if (value != "on" && value != "off") {
            error = "on or off";
            return false;
        }
        dialog.getToggle(toggle->second).setToggleState(value == "on", juce::sendNotificationSync);
        return true;
    }
    if (const auto choice = choiceNames().find(name); choice != choiceNames().end()) {
        const std::vector<std::string>& values = choice->second.values;
        const auto found = std::find(values.begin(), values.end(), value);
        if (found == values.end()) {
            for (const std::string& allowed : values)
                error += (error.empty() ? "" : " | ") + allowed;
            return false;
        }
        dialog.getChoice(choice->second.choice)
            .setSelectedId(static_cast<int>(found - values.begin()) + 1, juce::sendNotificationSync);
        return true;
    }
    if (name == "overhang-frames" || name == "snippet-frames") {
        if (value.empty() || value.size() > 3 || value.find_first_not_of("0123456789") != std::string::npos) {
            error = "a whole number of frames, 0 to 999";
            return false;
        }
        dialog.getNumber(name == "overhang-frames" ? Dialog::OverhangFrames : Dialog::SnippetMarkerFrames)
            .setValue(std::stod(value), true);
        return true;
    }
    if (name == "preserve-before" || name == "preserve-after") {
        std::string timecode;
        bool positive = true;
        if (!parseOffset(value, timecode, positive) || !core::Timecode(timecode).isValid()) {
            error = "a timecode at the project's rate, -HH:MM:SS:FF for one before the event";
            return false;
        }
        gui::TcInput& input = name == "preserve-before" ? dialog.getPreserveBefore() : dialog.getPreserveAfter();
        input.setTimecode(core::Timecode(timecode), positive, true);
        return true;
    }
    if (name.size() == 4 && name.compare(0, 3, "vfx") == 0 && name[3] >= '1' && name[3] <= '3') {
        Dialog::VfxRow& row = dialog.getVfxRow(static_cast<size_t>(name[3] - '1'));
        const size_t hash = value.find('#');
        if (value != "off" && hash == std::string::npos) {
            error = "PREFIX#POSTFIX, with # where the version number stands, or off";
            return false;
        }
        if (value != "off") {
            row.prefix.setText(juce::String::fromUTF8(value.substr(0, hash).c_str()), true);
            row.postfix.setText(juce::String::fromUTF8(value.substr(hash + 1).c_str()), true);
        }
        row.active.setToggleState(value != "off", juce::sendNotificationSync);
        return true;
    }
    error = "no such setting";
    return false;
}

} // namespace

bool changeSetting(gui::MainGui& window, const std::string& assignment, std::string& error)
{
    const size_t equals = assignment.find('=');
    if (equals == std::string::npos) {
        error = "--set " + assignment + ": NAME=VALUE, such as heal=normal";
        return false;
    }
    const std::string name = assignment.substr(0, equals);
    const std::string value = assignment.substr(equals + 1);
    window.buttonClicked(&window.getSettingsButton());
    Dialog& dialog = window.getSettingsDialog();
    std::string wanted;
    const bool set = dialog.isEnabled() && setControl(dialog, name, value, wanted);
    // Closed as a user closes it, with a click beside the panel.
    const juce::Point<int> beside(dialog.getPanelBounds().getRight() + 20, dialog.getPanelBounds().getY() + 20);
    dialog.mouseDown(juce::MouseEvent(juce::Desktop::getInstance().getMainMouseSource(), beside.toFloat(), {},
                                      juce::MouseInputSource::defaultPressure, 0.0f, 0.0f, 0.0f, 0.0f, &dialog,
                                      &dialog, juce::Time::getCurrentTime(), beside.toFloat(),
                                      juce::Time::getCurrentTime(), 1, false));
    if (!set)
        error = !dialog.isEnabled() ? "--set " + assignment + ": no project is open"
                                    : "--set " + assignment + ": " + (wanted == "no such setting"
                                                                          ? "no such setting"
                                                                          : name + " takes " + wanted);
    return set;
}

} // namespace montala::studio
