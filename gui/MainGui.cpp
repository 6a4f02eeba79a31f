#include "gui/MainGui.h"

#include "core/model/DataModel.h"
#include "core/model/DataModelChangeScope.h"
#include "core/model/PropertyKeys.h"
#include "core/time/SecondsRange.h"
#include "core/time/Tolerances.h"
#include "core/model/Variant.h"
#include "core/conform/MontalerBase.h"
#include "gui/AlertWindowBase.h"
#include "gui/EventTableColumns.h"
#include "gui/FileBrowserDialogBase.h"
#include "gui/Palette.h"
#include "gui/Texts.h"
#include "util/Result.h"
#include "util/StringUtil.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

namespace montala::gui {

using util::Result;
using util::StringUtil;

namespace {

void showAlert(const std::u16string& english)
{
    if (auto* alert = AlertWindowBase::getInstance())
        alert->show(StringUtil::toUtf8(StringUtil::translate(english)));
}

// The icons of the image buttons, drawn once at start-up so that the window
// needs no image files: a plus to add an EDL, a cross to delete one, a disk
// to save, a gear for the settings and a film frame for the video settings.
enum class Icon { Load, Clear, Save, Settings, Video };

juce::Image drawIcon(Icon icon, juce::Colour colour)
{
    constexpr int size = 24;
    juce::Image image(juce::Image::ARGB, size, size, true);
    juce::Graphics g(image);
    g.setColour(colour);
    const juce::Rectangle<float> box(4.0f, 4.0f, 16.0f, 16.0f);
    switch (icon) {
    case Icon::Load:
        g.fillRect(box.withSizeKeepingCentre(16.0f, 3.0f));
        g.fillRect(box.withSizeKeepingCentre(3.0f, 16.0f));
        break;
    case Icon::Clear:
        g.drawLine(5.0f, 5.0f, 19.0f, 19.0f, 3.0f);
        g.drawLine(19.0f, 5.0f, 5.0f, 19.0f, 3.0f);
        break;
    case Icon::Save:
        g.drawRoundedRectangle(box, 2.0f, 2.0f);
        g.fillRect(8.0f, 4.0f, 8.0f, 5.0f);
        g.fillRect(7.0f, 13.0f, 10.0f, 7.0f);
        break;
    case Icon::Settings: {
        juce::Path teeth;
        for (int tooth = 0; tooth < 8; ++tooth) {
            juce::Path one;
            one.addRectangle(10.5f, 2.0f, 3.0f, 5.0f);
            one.applyTransform(juce::AffineTransform::rotation(juce::MathConstants<float>::pi * tooth / 4.0f,
                                                               12.0f, 12.0f));
            teeth.addPath(one);
        }
        g.fillPath(teeth);
        g.drawEllipse(box.reduced(2.5f), 3.0f);
        break;
    }
    case Icon::Video:
        g.drawRect(juce::Rectangle<float>(3.0f, 6.0f, 18.0f, 12.0f), 2.0f);
        for (float x = 5.0f; x < 19.0f; x += 4.0f) {
            g.fillRect(x, 7.5f, 2.0f, 2.0f);
            g.fillRect(x, 14.5f, 2.0f, 2.0f);
        }
        break;
    }
    return image;
}

void setIcon(juce::ImageButton& button, Icon icon)
{
    const juce::Colour normal = palette::text;
    button.setImages(false, true, true, drawIcon(icon, normal), 1.0f, {}, drawIcon(icon, palette::bright), 1.0f,
                     {}, drawIcon(icon, palette::accent), 1.0f, {});
}

// Row numbers written as "3;4;9"; what is no row number is passed over, so
// that a damaged value selects less, never a wrong row 0.
juce::SparseSet<int> rowsFromText(const std::string& text)
{
    juce::SparseSet<int> rows;
    for (const std::string& piece : StringUtil::split(text, ';', true)) {
        char* end = nullptr;
        errno = 0;
        const long row = std::strtol(piece.c_str(), &end, 10);
        if (end == piece.c_str() || *end != '\0' || errno != 0 || row < 0 || row >= 0x7fffffff)
            continue;
        rows.addRange({static_cast<int>(row), static_cast<int>(row) + 1});
    }
    return rows;
}

std::string rowsToText(const juce::SparseSet<int>& rows)
{
    std::vector<int> numbers;
    for (int range = 0; range < rows.getNumRanges(); ++range) {
        const juce::Range<int> span = rows.getRange(range);
        for (int row = span.getStart(); row < span.getEnd(); ++row)
            numbers.push_back(row);
    }
    return StringUtil::joinInts(numbers, ";");
}

} // namespace

MainGui::MainGui()
{
    setLookAndFeel(&lookAndFeel);
    setWantsKeyboardFocus(true);
    saveFolder = juce::File::getSpecialLocation(juce::File::userHomeDirectory);
    tooltipWindow = std::make_unique<juce::TooltipWindow>(this, 700);

    const auto addButton = [this](juce::Button& button, const std::u16string& tooltip) {
        button.setTooltip(translated(tooltip));
        button.addListener(this);
        addAndMakeVisible(button);
    };
    for (juce::Button* button : loadButtons) {
        setIcon(static_cast<juce::ImageButton&>(*button), Icon::Load);
        addButton(*button, u"Add EDL");
    }
    for (juce::Button* button : clearButtons) {
        setIcon(static_cast<juce::ImageButton&>(*button), Icon::Clear);
        addButton(*button, u"Delete EDL");
    }
    generateButton.setButtonText(translated(u"Generate"));
    addButton(generateButton, u"Generate Change EDL");
    setIcon(saveChangeButton, Icon::Save);
    addButton(saveChangeButton, u"Save Change EDL");
    setIcon(settingsButton, Icon::Settings);
    addButton(settingsButton, u"Open Montala Settings");
    montalaButton.setButtonText(translated(u"Start Montala"));
    addButton(montalaButton, u"Start Montala");

    previewButton.setButtonText(translated(u"Preview"));
    previewButton.setClickingTogglesState(true);
    previewButton.setColour(juce::TextButton::buttonOnColourId, palette::accent);
    addButton(previewButton, u"Activate/Deactivate Preview");
    sourceToggle.setButtonText(translated(u"SRC"));
    addButton(sourceToggle, u"Show Source Preview");
    destinationToggle.setButtonText(translated(u"DST"));
    addButton(destinationToggle, u"Show Destination Preview");
    for (juce::TextButton* toggle : {&sourceToggle, &destinationToggle}) {
        toggle->setClickingTogglesState(true);
        toggle->setRadioGroupId(2);
        toggle->setEnabled(false);
    }
    sourceToggle.setToggleState(true, juce::dontSendNotification);

    setIcon(m_showNewVideosDialogButton, Icon::Video);
    addButton(m_showNewVideosDialogButton, u"Open Video Preview Settings");
    m_videoLeftToggle.setButtonText(translated(u"IN"));
    addButton(m_videoLeftToggle, u"Preview First Video Frame");
    m_videoRightToggle.setButtonText(translated(u"OUT"));
    addButton(m_videoRightToggle, u"Preview Last Video Frame");
    for (juce::TextButton* toggle : {&m_videoLeftToggle, &m_videoRightToggle}) {
        toggle->setClickingTogglesState(true);
        toggle->setRadioGroupId(1);
    }
    m_videoLeftToggle.setToggleState(true, juce::dontSendNotification);

    for (juce::TableListBox* table : tables) {
        table->setRowHeight(20);
        table->setMultipleSelectionEnabled(true);
        eventtable::addColumns(table->getHeader());
        table->getHeader().setStretchToFitActive(true);
        addAndMakeVisible(*table);
    }
    addAndMakeVisible(timelineView);
    // Behind the IN and OUT toggles, which stand in its top strip.
    addAndMakeVisible(videodisplay, 0);

    static const char* const prefixes[] = {"oldEdl", "newEdl", "changeEdl"};
    static const char* const captionNames[] = {"NoEventsLabel", "SelectedEventsLabel", "InvaldEventsLabel"};
    static const char* const valueNames[] = {"NoEventsValue", "SelectedEventsValue", "InvalidEventsValue"};
    const juce::String captionTexts[] = {translated(u"Total"), translated(u"Selected"), translated(u"Invalid")};
    for (int table = 0; table < 3; ++table) {
        for (int counter = 0; counter < 3; ++counter) {
            auto caption = std::make_unique<juce::Label>(juce::String(prefixes[table]) + captionNames[counter],
                                                         captionTexts[counter]);
            caption->setFont(LookAndFeel::getFont(LookAndFeel::regularFont));
            caption->setJustificationType(juce::Justification::centredLeft);
            caption->setColour(juce::Label::textColourId, palette::text);
            addAndMakeVisible(*caption);
            auto value = std::make_unique<juce::Label>(juce::String(prefixes[table]) + valueNames[counter], "0");
            value->setFont(LookAndFeel::getFont(LookAndFeel::regularFont));
            value->setJustificationType(juce::Justification::centredRight);
            value->setColour(juce::Label::textColourId, counter == InvalidCounter ? palette::green : palette::text);
            addAndMakeVisible(*value);
            counterCaptions[table][counter] = std::move(caption);
            counterValues[table][counter] = std::move(value);
        }
    }

    for (juce::Component* overlay : std::initializer_list<juce::Component*>{&settingsDialog, &newVideosDialog, &fileDialog,
                                                                                &tcEditDialog})
        addChildComponent(*overlay);
    settingsDialog.addComponentListener(this);
    fileDialog.addComponentListener(this);

    setSize(defaultWidth, defaultHeight);
    // Nothing to show or act on until a project hands over its data model.
    setEnabled(false);
}

MainGui::~MainGui()
{
    settingsDialog.removeComponentListener(this);
    fileDialog.removeComponentListener(this);
    if (projectNotifier)
        projectNotifier->removeListener(this);
    for (size_t table = 0; table < models.size(); ++table) {
        if (models[table]) {
            models[table]->removeListener(this);
            tables[table]->setModel(nullptr);
            // The models point at the tables, which go before them.
            models[table].reset();
        }
    }
    setLookAndFeel(nullptr);
}

void MainGui::setMontaler(core::MontalerBase* driver)
{
    montaler = driver;
}

void MainGui::setProject(core::ChangeContextNotificationBase* notifier)
{
    if (projectNotifier)
        projectNotifier->removeListener(this);
    projectNotifier = notifier;
    if (projectNotifier)
        projectNotifier->addListener(this);
    else
        changed(core::DataModelChangeContext(nullptr));
}

void MainGui::setVideoProvider(std::shared_ptr<VideoProviderBase> provider)
{
    videoProvider = std::move(provider);
    videodisplay.setVideoProvider(videoProvider);
    newVideosDialog.setTrackHandler(videoProvider ? videoProvider->getTrackHandler() : nullptr);
}

MainGui::TableKeys MainGui::keysOf(Table table)
{
    using core::PropertyKey;
    switch (table) {
    case OldTable:
        return {PropertyKey::OldSortColumn, PropertyKey::OldSortAscending, PropertyKey::OldSelectedRows};
    case NewTable:
        return {PropertyKey::NewSortColumn, PropertyKey::NewSortAscending, PropertyKey::NewSelectedRows};
    case ChangeTable:
        break;
    }
    return {PropertyKey::ChangeSortColumn, PropertyKey::ChangeSortAscending, PropertyKey::ChangeSelectedRows};
}

core::EventList* MainGui::listOf(Table table) const
{
    if (!dataModel)
        return nullptr;
    switch (table) {
    case OldTable:
        return &dataModel->getOldList();
    case NewTable:
        return &dataModel->getNewList();
    case ChangeTable:
        break;
    }
    return &dataModel->getChangeList();
}

MainGui::Table MainGui::tableOf(const EventTableModel* model) const
{
    if (model == models[OldTable].get())
        return OldTable;
    if (model == models[NewTable].get())
        return NewTable;
    return ChangeTable;
}

// ---- Change notification

void MainGui::changed(const core::ChangeContext& context)
{
    switch (context.kind) {
    case core::ChangeContext::DataModelKind:
        oldIndex.reset();
        newIndex.reset();
        dataModelChanged(static_cast<const core::DataModelChangeContext&>(context).model);
        break;
    case core::ChangeContext::EventListKind: {
        const int kind = static_cast<const core::EventListChangeContext&>(context).listKind;
        if (kind == OldTable)
            oldIndex.reset();
        else if (kind == NewTable)
            newIndex.reset();
        if (dataModel && kind >= OldTable && kind <= ChangeTable)
            listChanged(static_cast<Table>(kind));
        break;
    }
    case core::ChangeContext::SettingsKind:
        if (dataModel)
            settingsDialog.setSettings(&dataModel->getSettings());
        break;
    case core::ChangeContext::PreviewKind:
        previewStateChanged();
        break;
    case core::ChangeContext::ActionKind:
        if (static_cast<const core::ActionChangeContext&>(context).action == 0 && changeTable.isShowing())
            changeTable.grabKeyboardFocus();
        break;
    case core::ChangeContext::VideoListKind:
        // The pictures follow the list through their own source.
        newVideosDialog.reload();
        break;
    default:
        // A single event's change reaches the window again as its list's
        // change.
        break;
    }
}

void MainGui::dataModelChanged(core::DataModel* model)
{
    if (model)
        takeNewDataModel(model);
    else
        dropDataModel();
}

void MainGui::takeNewDataModel(core::DataModel* model)
{
    dataModel = model;
    for (Table table : {OldTable, NewTable, ChangeTable})
        rebuildModel(table);

    // A project saved during a preview comes back previewing: the button is
    // lit and the side that was heard is chosen again, but nothing is
    // played until the user asks.
    const bool previewActive = dataModel->isPreviewActive();
    if (previewButton.getToggleState() != previewActive) {
        previewButton.setToggleState(previewActive, juce::dontSendNotification);
        sourceToggle.setEnabled(previewActive);
        destinationToggle.setEnabled(previewActive);
        if (previewActive) {
            core::Variant destination;
            const bool showsDestination =
                dataModel->getProperty(core::PropertyKey::PreviewShowsDestination, destination) == Result::Ok
                && destination.asBool();
            destinationToggle.setToggleState(showsDestination, juce::dontSendNotification);
            sourceToggle.setToggleState(!showsDestination, juce::dontSendNotification);
        }
    }
    previewButton.setEnabled(models[ChangeTable]->getNumRows() > 0);

    for (Table table : {OldTable, NewTable, ChangeTable})
        updateListCounters(table);
    timelineView.setEvents(dataModel->getChangeList());

    settingsDialog.setSettings(&dataModel->getSettings());
    newVideosDialog.setVideoList(&dataModel->getVideoList());
    newVideosDialog.setMediaPool(montaler ? montaler->getMediaPool() : nullptr);
    newVideosDialog.setProjectStart(montaler ? montaler->getProjectStart() : 0.0);
    fileDialog.setup(dataModel, montaler ? montaler->getProjectName() : std::string());

    setEnabled(true);
    resized();

    for (Table table : {ChangeTable, OldTable, NewTable})
        restoreSelection(table);
    updateCounters();
}

void MainGui::dropDataModel()
{
    for (size_t table = 0; table < models.size(); ++table) {
        if (!models[table])
            continue;
        models[table]->removeListener(this);
        tables[table]->setModel(nullptr);
        models[table].reset();
        tables[table]->updateContent();
        tables[table]->repaint();
    }
    dataModel = nullptr;
    oldIndex.reset();
    newIndex.reset();
    showPreviewOff();
    // The radio group turns the destination side off.
    sourceToggle.setToggleState(true, juce::dontSendNotification);
    updateVideoDisplay(false);
    for (auto& values : counterValues) {
        for (auto& value : values)
            value->setText("0", juce::dontSendNotification);
        values[InvalidCounter]->setColour(juce::Label::textColourId, palette::green);
    }
    timelineView.setEvents(core::EventList(core::EventList::ChangeKind));
    settingsDialog.setSettings(nullptr);
    settingsDialog.setVisible(false);
    newVideosDialog.setVisible(false);
    newVideosDialog.setVideoList(nullptr);
    newVideosDialog.setMediaPool(nullptr);
    fileDialog.setup(nullptr, {});
    tcEditDialog.setVisible(false);
    setEnabled(false);
}

void MainGui::listChanged(Table table)
{
    rebuildModel(table);
    if (table == ChangeTable) {
        // Any edit of the Change list ends a running preview: what was
        // applied no longer matches the list.
        if (dataModel->isPreviewActive() && previewButton.getToggleState()) {
            if (montaler)
                montaler->setPreviewActive(false);
            showPreviewOff();
        }
        previewButton.setEnabled(models[ChangeTable]->getNumRows() > 0);
    }
    updateListCounters(table);
    if (table == ChangeTable)
        timelineView.setEvents(dataModel->getChangeList());
    restoreSelection(table);
}

void MainGui::previewStateChanged()
{
    if (dataModel && !dataModel->isPreviewActive())
        showPreviewOff();
}

void MainGui::showPreviewOff()
{
    previewButton.setToggleState(false, juce::dontSendNotification);
    sourceToggle.setEnabled(false);
    destinationToggle.setEnabled(false);
}

// ---- Tables

void MainGui::rebuildModel(Table table)
{
    juce::TableListBox& box = *tables[table];
    auto& model = models[table];
    if (model) {
        model->removeListener(this);
        model->setList(listOf(table));
    } else {
        model = std::make_shared<EventTableModel>(&box, listOf(table), dataModel);
        box.setModel(model.get());
    }

    // The window is no listener here, so the stored sort is not written back.
    const TableKeys keys = keysOf(table);
    if (dataModel->hasProperty(keys.sortColumn)) {
        core::Variant column;
        core::Variant flag;
        dataModel->getProperty(keys.sortColumn, column);
        dataModel->getProperty(keys.sortFlag, flag);
        model->setSort(column.asInt(), flag.asBool());
    }

    box.updateContent();
    // The header stretched its columns to the width it had; a vertical
    // scroll bar that came with the rows takes some of it, and without a
    // new fit a horizontal bar would appear for those few pixels.
    // (The header reports its new widths only later, from the message loop.)
    box.getHeader().resizeAllColumnsToFit(box.getVisibleContentWidth());
    box.setMinimumContentWidth(box.getHeader().getTotalWidth());
    box.repaint();
    model->addListener(this);
    updateCounters();
}

void MainGui::restoreSelection(Table table)
{
    const TableKeys keys = keysOf(table);
    EventTableModel* model = models[table].get();
    if (!dataModel || !model || !dataModel->hasProperty(keys.selectedRows))
        return;
    core::Variant stored;
    dataModel->getProperty(keys.selectedRows, stored);

    // The table clips rows past its end. The model must hear of the
    // selection to keep its own copy, the window must not: it would write
    // the value back and, for the Change table, start a preview.
    model->removeListener(this);
    tables[table]->setSelectedRows(rowsFromText(stored.asText()), juce::sendNotification);
    model->addListener(this);

    if (table != ChangeTable)
        return;
    if (model->getSelectedCount() == 0) {
        clearRelatedMarks();
        return;
    }
    try {
        highlightRelated();
    } catch (Result::Type) {
        // An event without a place on the timelines marks nothing.
    }
    timelineView.setSelection(model->getSelectedEvents());
    updateVideoDisplay(true);
}

void MainGui::highlightRelated()
{
    if (!dataModel || !models[OldTable] || !models[NewTable] || !models[ChangeTable])
        return;
    core::EventList oldMarks(core::EventList::ChangeKind);
    core::EventList newMarks(core::EventList::ChangeKind);
    const core::EventList selected = models[ChangeTable]->getSelectedEvents();
    for (const core::EventPtr& event : selected.getEvents()) {
        if (event->hasState(core::EventState::InvalidTimecode))
            continue;
        collectRelated(event, true, oldMarks);
        collectRelated(event, false, newMarks);
    }
    models[OldTable]->setMarks(oldMarks);
    models[NewTable]->setMarks(newMarks);
}

void MainGui::collectRelated(const core::EventPtr& changeEvent, bool onOldList, core::EventList& related)
{
    if (!(changeEvent->getSrcIn() < changeEvent->getSrcOut()) || !(changeEvent->getDstIn() < changeEvent->getDstOut()))
        return;
    const core::Framerate rate = core::Timecode::currentFramerate();
    std::unique_ptr<core::EventListIndex>& index = onOldList ? oldIndex : newIndex;
    if (!index || index->getFramerate() != rate)
        index = std::make_unique<core::EventListIndex>(onOldList ? dataModel->getOldList() : dataModel->getNewList(),
                                                       rate);
    // SRC lies on the old record timeline, DST on the new one: both are
    // found on the DST side of their list. Neighbours that only touch the
    // range are not related.
    const core::Timecode& in = onOldList ? changeEvent->getSrcIn() : changeEvent->getDstIn();
    const core::Timecode& out = onOldList ? changeEvent->getSrcOut() : changeEvent->getDstOut();
    const core::SecondsRange range(in.toSeconds(rate) + core::positionTolerance,
                                   out.toSeconds(rate) - core::positionTolerance);
    for (const core::EventPtr& event : index->findDstEvents(range))
        related.addEvent(event);
}

void MainGui::clearRelatedMarks()
{
    const core::EventList none(core::EventList::ChangeKind);
    for (Table table : {OldTable, NewTable})
        if (models[table])
            models[table]->setMarks(none);
}

void MainGui::updateCounters()
{
    for (Table table : {OldTable, NewTable, ChangeTable}) {
        const int selected = models[table] ? models[table]->getSelectedCount() : 0;
        counterValues[table][SelectedCounter]->setText(juce::String(selected), juce::dontSendNotification);
    }
}

void MainGui::updateListCounters(Table table)
{
    const core::EventList* list = listOf(table);
    if (!list)
        return;
    const int invalid = list->countFlawedEvents();
    counterValues[table][TotalCounter]->setText(juce::String(static_cast<int64_t>(list->getSize())),
                                                juce::dontSendNotification);
    juce::Label& invalidValue = *counterValues[table][InvalidCounter];
    invalidValue.setText(juce::String(invalid), juce::dontSendNotification);
    invalidValue.setColour(juce::Label::textColourId, invalid == 0 ? palette::green : palette::red);
}

void MainGui::updateVideoDisplay(bool show)
{
    videodisplay.setShown(show);
    EventTableModel* change = models[ChangeTable].get();
    if (!change || change->getSelectedCount() != 1) {
        videodisplay.setShown(false);
        return;
    }
    const core::EventList selected = change->getSelectedEvents();
    if (selected.getSize() != 1 || selected.getEvent(0)->hasState(core::EventState::InvalidTimecode)) {
        videodisplay.setShown(false);
        return;
    }
    const core::EventBase& event = *selected.getEvent(0);
    if (m_videoLeftToggle.getToggleState())
        videodisplay.setFrames(event.getSrcIn(), event.getDstIn(), false);
    else
        videodisplay.setFrames(event.getSrcOut(), event.getDstOut(), true);
}

void MainGui::selectionChanged(EventTableModel* model)
{
    if (!dataModel)
        return;
    updateCounters();
    const Table table = tableOf(model);
    if (table == ChangeTable) {
        try {
            if (dataModel->isPreviewActive())
                runPreview();
            if (model->getSelectedCount() > 0)
                highlightRelated();
            else
                clearRelatedMarks();
        } catch (Result::Type) {
            // The layer that failed has told the user.
        }
    }
    dataModel->setProperty(keysOf(table).selectedRows, core::Variant(rowsToText(tables[table]->getSelectedRows())));
    if (table == ChangeTable) {
        timelineView.setSelection(model->getSelectedEvents());
        updateVideoDisplay(true);
    }
}

void MainGui::sortChanged(EventTableModel* model)
{
    if (!dataModel)
        return;
    const TableKeys keys = keysOf(tableOf(model));
    dataModel->setProperty(keys.sortColumn, core::Variant(model->getSortColumn()));
    dataModel->setProperty(keys.sortFlag, core::Variant(model->getSortFlag()));
}

void MainGui::editRequested(std::shared_ptr<core::EventBase> event, EventTableModel* model,
                            const juce::MouseEvent& mouseEvent)
{
    // Beside the pointer, and inside the window however near its edge the
    // row was clicked.
    const juce::Point<int> at = mouseEvent.getEventRelativeTo(this).getPosition();
    const int width = tcEditDialog.getWidth();
    const int height = tcEditDialog.getHeight();
    const int x = at.x + 10 + width > getWidth() ? getWidth() - width - 10 : at.x + 10;
    const int y = at.y + 10 + height > getHeight() ? getHeight() - height - 10 : at.y + 10;
    tcEditDialog.setTopLeftPosition(x, y);
    tcEditDialog.setShowMotionSpeed(model != models[ChangeTable].get());
    tcEditDialog.setEvent(std::move(event));
    tcEditDialog.setVisible(true);
    tcEditDialog.toFront(true);
}

// ---- Buttons and keys

void MainGui::buttonClicked(juce::Button* button)
{
    if (button == &montalaButton) {
        runMontala();
    } else if (button == &generateButton) {
        generate();
    } else if (button == &clearOldButton) {
        clear(OldTable);
    } else if (button == &clearNewButton) {
        clear(NewTable);
    } else if (button == &clearChangeButton) {
        if (dataModel && dataModel->isPreviewActive() && previewButton.isEnabled() && montaler)
            montaler->setPreviewActive(false);
        clear(ChangeTable);
    } else if (button == &saveChangeButton) {
        save();
    } else if (button == &sourceToggle || button == &destinationToggle) {
        if (button->getToggleState())
            previewSideChosen();
    } else if (button == &m_videoLeftToggle || button == &m_videoRightToggle) {
        updateVideoDisplay(true);
    } else if (button == &previewButton) {
        previewToggled();
    } else if (button == &settingsButton) {
        settingsDialog.setVisible(true);
        settingsDialog.toFront(true);
    } else if (button == &loadOldButton || button == &loadNewButton || button == &loadChangeButton) {
        if (!projectNotifier || !dataModel)
            return;
        if (button == &loadOldButton)
            fileDialog.openForOld();
        else if (button == &loadNewButton)
            fileDialog.openForNew();
        else
            fileDialog.openForChange();
    } else if (button == &m_showNewVideosDialogButton) {
        newVideosDialog.setVisible(true);
    }
}

bool MainGui::keyPressed(const juce::KeyPress& key)
{
    if (key.getKeyCode() == juce::KeyPress::leftKey) {
        m_videoLeftToggle.setToggleState(true, juce::sendNotification);
        return true;
    }
    if (key.getKeyCode() == juce::KeyPress::rightKey) {
        m_videoRightToggle.setToggleState(true, juce::sendNotification);
        return true;
    }
    return false;
}

void MainGui::componentVisibilityChanged(juce::Component& component)
{
    // The VFX rows may have changed in the settings, and new events may have
    // come in: both are marked anew when either overlay closes.
    if ((&component != &settingsDialog && &component != &fileDialog) || component.isVisible() || !dataModel)
        return;
    try {
        dataModel->applyVfxPatterns();
    } catch (Result::Type) {
        // A row with a character that no name can hold marks nothing.
    }
}

void MainGui::generate()
{
    if (!dataModel)
        return;
    try {
        changeTable.deselectAllRows();
        core::DataModelChangeScope scope("Generate Change EDL");
        const Result::Type code = dataModel->generateChangeEdl();
        if (code != Result::Ok)
            throw code;
    } catch (Result::Type) {
        // The generator keeps its report; the window says nothing.
    }
}

void MainGui::clear(Table table)
{
    if (!projectNotifier || !dataModel)
        return;
    static const char* const titles[] = {"Delete Old EDL", "Delete New EDL", "Delete Change EDL"};
    try {
        core::DataModelChangeScope scope(titles[table]);
        if (table == ChangeTable) {
            dataModel->setPreviewActive(false);
            showPreviewOff();
        }
        listOf(table)->clear();
    } catch (Result::Type) {
    }
    if (table == ChangeTable)
        clearRelatedMarks();
}

void MainGui::save()
{
    FileBrowserDialogBase* dialog = FileBrowserDialogBase::getInstance();
    if (!dialog)
        return;
    std::vector<std::string> chosen;
    const bool picked = dialog->showForSaving(translatedUtf8(u"Save Change EDL as..."),
                                              saveFolder.getFullPathName().toStdString(), "edl",
                                              translatedUtf8(u"Edit Decision List"), chosen);
    if (!picked || chosen.empty() || !projectNotifier || !dataModel || dataModel->getChangeList().getSize() == 0)
        return;
    try {
        dataModel->getChangeList().saveEdl(StringUtil::fromUtf8(chosen.front()));
        saveFolder = juce::File(juce::String(chosen.front()));
    } catch (Result::Type) {
    }
}

void MainGui::previewToggled()
{
    const bool on = previewButton.getToggleState();
    if (dataModel && montaler && on != dataModel->isPreviewActive()) {
        montaler->setPreviewActive(on);
        if (on)
            previewStartedOnce = true;
    }
    runPreview();
    sourceToggle.setEnabled(on);
    destinationToggle.setEnabled(on);
}

void MainGui::previewSideChosen()
{
    EventTableModel* model = models[ChangeTable].get();
    if (!model || !montaler || !previewButton.getToggleState())
        return;
    try {
        int leadIn = 0;
        int leadOut = 0;
        const core::EventList run = model->getPreviewRun(model->getSelectedEvents(), leadIn, leadOut);
        montaler->showPreview(run, static_cast<size_t>(leadIn), static_cast<size_t>(leadOut),
                              destinationToggle.getToggleState());
    } catch (Result::Type) {
    }
}

void MainGui::runPreview()
{
    EventTableModel* model = models[ChangeTable].get();
    if (!model || !dataModel || !montaler || !dataModel->isPreviewActive())
        return;
    try {
        const Result::Type code = montaler->checkTracks();
        if (code != Result::Ok) {
            showAlert(core::cannotStartText(code, true));
            return;
        }
        int leadIn = 1;
        int leadOut = 1;
        const core::EventList run = model->getPreviewRun(model->getSelectedEvents(), leadIn, leadOut);
        try {
            if (run.getSize() == 0)
                montaler->deletePreview();
            else
                montaler->preview(run, static_cast<size_t>(leadIn), static_cast<size_t>(leadOut),
                                  destinationToggle.getToggleState());
        } catch (Result::Type) {
            juce::MessageManager::getInstance()->runDispatchLoopUntil(100);
            throw;
        }
        // The host's notices of the preview's edits arrive through the
        // message loop; they are let in before the user can act again.
        juce::MessageManager::getInstance()->runDispatchLoopUntil(100);
    } catch (Result::Type) {
    }
}

void MainGui::runMontala()
{
    if (!dataModel || !montaler)
        return;
    try {
        const Result::Type code = montaler->checkTracks();
        if (code != Result::Ok) {
            showAlert(core::cannotStartText(code, false));
            return;
        }
        if (dataModel->isPreviewActive()) {
            montaler->setPreviewActive(false);
            showPreviewOff();
            sourceToggle.setToggleState(true, juce::dontSendNotification);
        }
        montaler->startConform();
    } catch (Result::Type) {
    }
}

// ---- Layout and drawing

void MainGui::layoutCounterRow(Table table, int x, int y)
{
    const juce::Font font = LookAndFeel::getFont(LookAndFeel::regularFont);
    for (int counter = 0; counter < 3; ++counter) {
        juce::Label& caption = *counterCaptions[table][counter];
        const int captionWidth = LookAndFeel::getTextWidth(font, caption.getText()) + 32;
        caption.setBounds(x, y, captionWidth, 24);
        // The value overlaps the caption's padding, so that the number stands
        // close to its name.
        const int valueX = x + captionWidth - 30;
        counterValues[table][counter]->setBounds(valueX, y, 40, 24);
        x = valueX + 40 + 50;
    }
}

void MainGui::resized()
{
    const int w = getWidth();
    const int h = getHeight();

    oldTable.setBounds(18, 73, w / 2 - 36, h / 2 - 153);
    newTable.setBounds(w / 2 + 18, 73, w / 2 - 36, h / 2 - 153);
    changeTable.setBounds(18, h / 2 + 55, w - 244, h / 2 - 225);
    timelineView.setBounds(18, h - 130, w - 244, 80);
    videodisplay.setBounds(w - 210, h / 2 - 12, 204, h / 2 - 26);

    loadOldButton.setBounds(15, 34, 32, 24);
    clearOldButton.setBounds(w / 2 - 43, 34, 32, 24);
    loadNewButton.setBounds(w / 2 + 11, 34, 32, 24);
    clearNewButton.setBounds(w - 47, 34, 32, 24);
    loadChangeButton.setBounds(15, h / 2 + 15, 32, 24);
    saveChangeButton.setBounds(55, h / 2 + 15, 32, 24);
    clearChangeButton.setBounds(120, h / 2 + 15, 32, 24);
    generateButton.setBounds(w / 2 - 40, h / 2 - 42, 80, 24);
    previewButton.setBounds(w - 404, h / 2 + 15, 90, 24);
    sourceToggle.setBounds(w - 307, h / 2 + 15, 40, 24);
    destinationToggle.setBounds(w - 269, h / 2 + 15, 40, 24);
    m_showNewVideosDialogButton.setBounds(w - 201, h / 2 + 16, 32, 24);
    m_videoLeftToggle.setBounds(w - 93, h / 2 + 15, 40, 24);
    m_videoRightToggle.setBounds(w - 55, h / 2 + 15, 40, 24);
    settingsButton.setBounds(7, h - 32, 32, 24);
    montalaButton.setBounds(w - 164, h - 32, 112, 24);

    layoutCounterRow(OldTable, 22, h / 2 - 79);
    layoutCounterRow(NewTable, w / 2 + 19, h / 2 - 79);
    layoutCounterRow(ChangeTable, 22, h - 169);

    settingsDialog.setBounds(getLocalBounds());
    newVideosDialog.setBounds(getLocalBounds());
    fileDialog.setBounds(getLocalBounds());
}

void MainGui::paint(juce::Graphics& g)
{
    const int w = getWidth();
    const int h = getHeight();
    g.fillAll(palette::window);

    const auto panel = [&g](int x, int y, int width, int height) {
        const juce::Rectangle<float> area(static_cast<float>(x), static_cast<float>(y), static_cast<float>(width),
                                          static_cast<float>(height));
        g.setColour(palette::panel);
        g.fillRoundedRectangle(area, 8.0f);
        g.setColour(palette::outline);
        g.drawRoundedRectangle(area, 8.0f, 2.0f);
    };
    panel(8, 8, w / 2 - 12, h / 2 - 58);
    panel(w / 2 + 4, 8, w / 2 - 12, h / 2 - 58);
    panel(8, h / 2 - 10, w - 224, h / 2 - 30);

    g.setColour(palette::strip);
    g.fillRect(9, 28, w / 2 - 14, 35);
    g.fillRect(w / 2 + 5, 28, w / 2 - 14, 35);
    g.fillRect(9, h / 2 + 10, w - 226, 35);

    const juce::Font title = LookAndFeel::getFont(LookAndFeel::titleFont);
    LookAndFeel::drawFittedText(g, translated(u"Old EDL"), w / 4 - 100, 8, 200, 20, juce::Justification::centred,
                                title, palette::outline, false);
    LookAndFeel::drawFittedText(g, translated(u"New EDL"), 3 * w / 4 - 100, 8, 200, 20,
                                juce::Justification::centred, title, palette::outline, false);
    LookAndFeel::drawFittedText(g, translated(u"Change EDL"), 20, h / 2 - 10, w - 260, 20,
                                juce::Justification::centred, title, palette::outline, false);

    g.setColour(palette::outline);
    g.drawLine(8.0f, static_cast<float>(h - 140), static_cast<float>(w - 216), static_cast<float>(h - 140), 2.0f);
}

} // namespace montala::gui
