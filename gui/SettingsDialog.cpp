#include "gui/SettingsDialog.h"

#include "core/time/Timecode.h"
#include "gui/LookAndFeel.h"
#include "gui/OverlayStyle.h"
#include "gui/Palette.h"
#include "gui/Texts.h"
#include "util/Result.h"

#include <cmath>

namespace montala::gui {

using core::Settings;
using util::Result;

namespace {

constexpr int rowHeight = 26;
constexpr int rowWidth = 480;
constexpr int controlX = 270;

const char16_t* const toggleCaptions[] = {
    u"B-Roll Renaming",
    u"Include Overhanging Audio Events",
    u"Create Destination Markers",
    u"Create Dissolve/Wipe Markers",
    u"Create Insert Markers",
    u"Create Automation Warning Markers",
    u"Create Overlap Markers",
    u"Create Audio Snippet Markers",
    u"Create Virgin Territories (May Take Some Time)",
    u"Restrict Montala Range",
};

} // namespace

SettingsDialog::SettingsDialog()
{
    static const char16_t* const headingTexts[] = {u"EDL Loading Options", u"Change EDL Generating Options",
                                                  u"Processing Options"};
    for (size_t index = 0; index < headings.size(); ++index) {
        headings[index] = std::make_unique<juce::Label>(juce::String(), translated(headingTexts[index]));
        styleLabel(*headings[index], LookAndFeel::labelFont);
        addAndMakeVisible(*headings[index]);
        // The rule under a heading is a label one pixel high, drawn by its
        // background colour.
        headingLines[index] = std::make_unique<juce::Label>();
        headingLines[index]->setColour(juce::Label::backgroundColourId, palette::outline);
        addAndMakeVisible(*headingLines[index]);
    }

    for (int which = 0; which < toggleCount; ++which) {
        auto toggle = std::make_unique<juce::ToggleButton>(translated(toggleCaptions[which]));
        toggle->setColour(juce::ToggleButton::textColourId, palette::text);
        toggle->setColour(juce::ToggleButton::tickColourId, palette::bright);
        toggle->addListener(this);
        addAndMakeVisible(*toggle);
        toggles[static_cast<size_t>(which)] = std::move(toggle);
    }

    static const char16_t* const choiceTexts[] = {u"Match Name", u"Heal Processing", u"Apply Montala to"};
    for (int which = 0; which < choiceCount; ++which) {
        choiceCaptions[static_cast<size_t>(which)] =
            std::make_unique<juce::Label>(juce::String(), translated(choiceTexts[which]));
        styleLabel(*choiceCaptions[static_cast<size_t>(which)]);
        addAndMakeVisible(*choiceCaptions[static_cast<size_t>(which)]);
        choices[static_cast<size_t>(which)] = std::make_unique<juce::ComboBox>();
        choices[static_cast<size_t>(which)]->addListener(this);
        addAndMakeVisible(*choices[static_cast<size_t>(which)]);
    }
    choices[MatchNameChoice]->addItem(translated(u"Roll Name"), 1);
    choices[MatchNameChoice]->addItem(translated(u"Clip Name"), 2);
    int id = 1;
    for (const char16_t* mode : {u"None", u"Normal", u"Gaps without Inserts", u"Gaps with Inserts"})
        choices[HealProcessingChoice]->addItem(translated(mode), id++);
    choices[ApplyToChoice]->addItem(translated(u"All Tracks"), 1);
    choices[ApplyToChoice]->addItem(translated(u"Selected Tracks"), 2);

    for (auto& number : numbers) {
        number = std::make_unique<SpinBox>();
        number->setRange(0.0, 999.0);
        number->setStep(1.0);
        number->setSuffix(translated(u"frames"));
        number->addListener(this);
        addAndMakeVisible(*number);
    }

    vfxCaption.setText(translated(u"VFX Handling"), juce::dontSendNotification);
    styleLabel(vfxCaption);
    addAndMakeVisible(vfxCaption);
    for (auto& row : vfxRows) {
        row = std::make_unique<VfxRow>();
        row->active.addListener(this);
        row->active.setColour(juce::ToggleButton::tickColourId, palette::bright);
        row->versionNumber.setText(translated(u"Version Number"), juce::dontSendNotification);
        styleLabel(row->versionNumber);
        row->versionNumber.setJustificationType(juce::Justification::centred);
        for (juce::TextEditor* editor : {&row->prefix, &row->postfix}) {
            editor->addListener(this);
            addAndMakeVisible(*editor);
        }
        addAndMakeVisible(row->active);
        addAndMakeVisible(row->versionNumber);
    }

    beforeCaption.setText(translated(u"Preserve Material Before"), juce::dontSendNotification);
    afterCaption.setText(translated(u"Preserve Material After"), juce::dontSendNotification);
    for (juce::Label* caption : {&beforeCaption, &afterCaption}) {
        styleLabel(*caption);
        addAndMakeVisible(*caption);
    }
    for (TcInput* input : {&preserveBefore, &preserveAfter}) {
        input->setSigned(true);
        input->addListener(this);
        addAndMakeVisible(*input);
    }

    setVisible(false);
    setEnabled(false);
}

SettingsDialog::~SettingsDialog()
{
    preserveBefore.removeListener(this);
    preserveAfter.removeListener(this);
    for (auto& number : numbers)
        number->removeListener(this);
}

void SettingsDialog::setSettings(Settings* newSettings)
{
    settings = newSettings;
    if (!settings) {
        setEnabled(false);
        return;
    }
    const bool values[] = {
        settings->getBRollRenaming(),
        settings->getIncludeOverhanging(),
        settings->getCreateDestinationMarkers(),
        settings->getCreateTransitionMarkers(),
        settings->getCreateInsertMarkers(),
        settings->getCreateAutomationWarningMarkers(),
        settings->getCreateOverlapMarkers(),
        settings->getCreateSnippetMarkers(),
        settings->getCreateVirginTerritories(),
        settings->getRestrictRange(),
    };
    for (int which = 0; which < toggleCount; ++which)
        toggles[static_cast<size_t>(which)]->setToggleState(values[which], juce::dontSendNotification);
    choices[MatchNameChoice]->setSelectedId(static_cast<int>(settings->getMatchName()) + 1,
                                            juce::dontSendNotification);
    choices[HealProcessingChoice]->setSelectedId(static_cast<int>(settings->getHealProcessing()) + 1,
                                                 juce::dontSendNotification);
    choices[ApplyToChoice]->setSelectedId(static_cast<int>(settings->getApplyTo()) + 1, juce::dontSendNotification);
    numbers[OverhangFrames]->setValue(settings->getOverhangFrames(), false);
    numbers[SnippetMarkerFrames]->setValue(settings->getSnippetMarkerFrames(), false);
    for (size_t index = 0; index < vfxRows.size(); ++index) {
        const core::VfxPatternEntry& entry = settings->getVfxPattern(index);
        VfxRow& row = *vfxRows[index];
        row.active.setToggleState(entry.active, juce::dontSendNotification);
        // Rewriting an editor's own text would move its caret while it is typed in.
        if (row.prefix.getText().toStdString() != entry.prefix)
            row.prefix.setText(juce::String::fromUTF8(entry.prefix.c_str()), false);
        if (row.postfix.getText().toStdString() != entry.postfix)
            row.postfix.setText(juce::String::fromUTF8(entry.postfix.c_str()), false);
    }
    showSeconds(preserveBefore, settings->getPreserveBefore());
    showSeconds(preserveAfter, settings->getPreserveAfter());

    // The range's inputs mean something only while the range is restricted.
    for (juce::Component* part : std::initializer_list<juce::Component*>{&preserveBefore, &preserveAfter,
                                                                         &beforeCaption, &afterCaption})
        part->setEnabled(settings->getRestrictRange());
    setEnabled(true);
}

double SettingsDialog::secondsOf(const TcInput& input)
{
    const double seconds = input.getTimecode().toSeconds();
    return input.isPositive() ? seconds : -seconds;
}

void SettingsDialog::showSeconds(TcInput& input, double seconds)
{
    input.setTimecode(core::Timecode(std::fabs(seconds)), seconds >= 0.0, false);
}

void SettingsDialog::buttonClicked(juce::Button* button)
{
    if (!settings)
        return;
    for (int which = 0; which < toggleCount; ++which)
        if (button == toggles[static_cast<size_t>(which)].get())
            writeToggle(static_cast<Toggle>(which), button->getToggleState());
    for (size_t index = 0; index < vfxRows.size(); ++index)
        if (button == &vfxRows[index]->active)
            writeVfxRow(index);
}

void SettingsDialog::writeToggle(Toggle which, bool on)
{
    switch (which) {
    case BRollRenaming:
        settings->setBRollRenaming(on);
        break;
    case IncludeOverhanging:
        settings->setIncludeOverhanging(on);
        break;
    case DestinationMarkers:
        settings->setCreateDestinationMarkers(on);
        break;
    case TransitionMarkers:
        settings->setCreateTransitionMarkers(on);
        break;
    case InsertMarkers:
        settings->setCreateInsertMarkers(on);
        break;
    case AutomationWarningMarkers:
        settings->setCreateAutomationWarningMarkers(on);
        break;
    case OverlapMarkers:
        settings->setCreateOverlapMarkers(on);
        break;
    case SnippetMarkers:
        settings->setCreateSnippetMarkers(on);
        break;
    case VirginTerritories:
        settings->setCreateVirginTerritories(on);
        break;
    case RestrictRange:
        settings->setRestrictRange(on);
        break;
    case toggleCount:
        break;
    }
}

void SettingsDialog::writeVfxRow(size_t index)
{
    VfxRow& row = *vfxRows[index];
    core::VfxPatternEntry entry = settings->getVfxPattern(index);
    entry.active = row.active.getToggleState();
    entry.prefix = row.prefix.getText().toStdString();
    entry.postfix = row.postfix.getText().toStdString();
    settings->setVfxPattern(entry, index);
}

void SettingsDialog::textEditorTextChanged(juce::TextEditor& editor)
{
    if (!settings)
        return;
    for (size_t index = 0; index < vfxRows.size(); ++index)
        if (&editor == &vfxRows[index]->prefix || &editor == &vfxRows[index]->postfix)
            writeVfxRow(index);
}

void SettingsDialog::comboBoxChanged(juce::ComboBox* comboBox)
{
    if (!settings)
        return;
    const int id = comboBox->getSelectedId();
    if (comboBox == choices[MatchNameChoice].get())
        settings->setMatchName(id == 2 ? core::MatchName::ClipName : core::MatchName::RollName);
    else if (comboBox == choices[HealProcessingChoice].get() && id >= 1)
        settings->setHealProcessing(static_cast<core::HealProcessingMode>(id - 1));
    else if (comboBox == choices[ApplyToChoice].get())
        settings->setApplyTo(id == 1 ? core::ApplyTo::AllTracks : core::ApplyTo::SelectedTracks);
}

void SettingsDialog::valueChanged(SpinBox* spinBox)
{
    if (!settings)
        return;
    const auto frames = static_cast<uint32_t>(std::lround(spinBox->getValue()));
    if (spinBox == numbers[OverhangFrames].get())
        settings->setOverhangFrames(frames);
    else
        settings->setSnippetMarkerFrames(frames);
}

void SettingsDialog::timecodeChanged(TcInput* input)
{
    if (!settings)
        return;
    double before = secondsOf(preserveBefore);
    double after = secondsOf(preserveAfter);
    if (before > after) {
        if (input == &preserveBefore)
            after = before;
        else
            before = after;
    }
    settings->setRestrictedRange(before, after);
}

void SettingsDialog::mouseDown(const juce::MouseEvent& event)
{
    if (!getPanelBounds().contains(event.getPosition()))
        setVisible(false);
}

juce::Rectangle<int> SettingsDialog::getPanelBounds() const
{
    const int h = getHeight();
    return {5, h - 700, rowWidth + 25, 661};
}

void SettingsDialog::resized()
{
    const int h = getHeight();
    const int x = 15;
    int y = h - 693;
    const auto heading = [&](size_t index) {
        headings[index]->setBounds(x, y, rowWidth, 22);
        headingLines[index]->setBounds(x, y + 23, rowWidth, 1);
        y += 28;
    };
    const auto toggleRow = [&](Toggle which, juce::Component* beside = nullptr) {
        toggles[which]->setBounds(x, y, beside ? controlX - 5 : rowWidth, 22);
        if (beside)
            beside->setBounds(x + controlX, y, 120, 22);
        y += rowHeight;
    };
    const auto choiceRow = [&](Choice which) {
        choiceCaptions[which]->setBounds(x, y, controlX, 22);
        choices[which]->setBounds(x + controlX, y, rowWidth - controlX, 22);
        y += rowHeight;
    };

    heading(0);
    toggleRow(BRollRenaming);

    y = h - 641;
    heading(1);
    choiceRow(MatchNameChoice);
    choiceRow(HealProcessingChoice);
    vfxCaption.setBounds(x, y, rowWidth, 22);
    y += rowHeight - 2;
    for (auto& row : vfxRows) {
        row->active.setBounds(x + 10, y, 24, 22);
        row->prefix.setBounds(x + 40, y, 150, 22);
        row->versionNumber.setBounds(x + 195, y, 120, 22);
        row->postfix.setBounds(x + 320, y, rowWidth - 320, 22);
        y += rowHeight;
    }

    y = h - 425;
    heading(2);
    choiceRow(ApplyToChoice);
    toggleRow(IncludeOverhanging, numbers[OverhangFrames].get());
    for (Toggle which : {DestinationMarkers, TransitionMarkers, InsertMarkers, AutomationWarningMarkers,
                         OverlapMarkers})
        toggleRow(which);
    toggleRow(SnippetMarkers, numbers[SnippetMarkerFrames].get());
    toggleRow(VirginTerritories);
    toggleRow(RestrictRange);
    beforeCaption.setBounds(x + 20, y, controlX - 20, 22);
    preserveBefore.setBounds(x + controlX, y, 100, 22);
    y += rowHeight;
    afterCaption.setBounds(x + 20, y, controlX - 20, 22);
    preserveAfter.setBounds(x + controlX, y, 100, 22);
}

void SettingsDialog::paint(juce::Graphics& g)
{
    paintOverlayPanel(g, getPanelBounds());
}

} // namespace montala::gui
