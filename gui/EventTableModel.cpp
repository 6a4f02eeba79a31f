#include "gui/EventTableModel.h"

#include "core/model/DataModel.h"
#include "core/model/DataModelChangeScope.h"
#include "core/model/Settings.h"
#include "gui/EventTableColumns.h"
#include "gui/LookAndFeel.h"
#include "gui/Palette.h"
#include "util/StringUtil.h"

#include <algorithm>
#include <numeric>
#include <unordered_map>

namespace montala::gui {

namespace {

using core::EventBase;
using core::EventList;
using core::EventPtr;

// Menu labels go to the user's language. Without a converter (a window
// drawn by a test or a tool that runs no host) the English text stands.
juce::String translated(const std::u16string& english)
{
    if (util::StringUtil::getStringConverter() == nullptr)
        return juce::String(juce::CharPointer_UTF16(reinterpret_cast<const juce::CharPointer_UTF16::CharType*>(
            english.c_str())));
    return juce::String::fromUTF8(util::StringUtil::toUtf8(util::StringUtil::translate(english)).c_str());
}

// Sort columns come from stored projects too; anything that is no sortable
// column of ours falls back to the event number.
int sanitizeColumn(int column)
{
    if (column == eventtable::StateColumn
        || (column >= eventtable::RollColumn && column <= eventtable::lastColumn))
        return column;
    return eventtable::IdColumn;
}

int compareTimecodes(const core::Timecode& a, const core::Timecode& b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

template <typename T>
int compareValues(const T& a, const T& b)
{
    return a < b ? -1 : (b < a ? 1 : 0);
}

// Three-way comparison of two events by a column's key.
int compareByColumn(const EventBase& a, const EventBase& b, int column)
{
    switch (column) {
    case eventtable::StateColumn:
        return compareValues(a.isFlawless(), b.isFlawless());
    case eventtable::RollColumn:
        return a.getRollName().compare(b.getRollName());
    case eventtable::ClipNameColumn:
        return a.getClipName().compare(b.getClipName());
    case eventtable::EdlFileColumn:
        return a.getEdlFile().compare(b.getEdlFile());
    case eventtable::TransitionColumn:
        return compareValues(a.getTransitionType(), b.getTransitionType());
    case eventtable::SrcInColumn:
        return compareTimecodes(a.getSrcIn(), b.getSrcIn());
    case eventtable::SrcOutColumn:
        return compareTimecodes(a.getSrcOut(), b.getSrcOut());
    case eventtable::DstInColumn:
        return compareTimecodes(a.getDstIn(), b.getDstIn());
    case eventtable::DstOutColumn:
        return compareTimecodes(a.getDstOut(), b.getDstOut());
    default:
        return compareValues(a.getEventNumber(), b.getEventNumber());
    }
}

juce::String fromModelText(const std::string& text)
{
    return juce::String::fromUTF8(text.data(), static_cast<int>(text.size()));
}

} // namespace

EventTableModel::EventTableModel(juce::TableListBox* table, core::EventList* list, core::DataModel* dataModel)
    : table(table), list(list), dataModel(dataModel), sortColumn(eventtable::defaultSortColumn)
{
    fillRows();
}

EventTableModel::~EventTableModel() = default;

void EventTableModel::setList(core::EventList* newList)
{
    list = newList;
    fillRows();
}

void EventTableModel::fillRows()
{
    rows.clear();
    if (list != nullptr) {
        rows.reserve(list->getSize());
        for (const EventPtr& event : list->getEvents())
            rows.push_back(event);
    }
    sortRows();
}

void EventTableModel::sortRows()
{
    // Hold every event once for the whole sort: locking a weak pointer in
    // each comparison would cost more than the comparison itself. Rows that
    // tie keep the order they have in the list (the fill order), so that the
    // same column and flag always give the same rows, whatever was sorted
    // before: stored selections name rows by number.
    const size_t count = rows.size();
    std::vector<EventPtr> events(count);
    for (size_t i = 0; i < count; ++i)
        events[i] = rows[i].lock();

    std::vector<size_t> listOrder(count);
    if (list != nullptr && count != 0) {
        // A row's place in the list; rows are filled in list order, but an
        // earlier sort has moved them since.
        std::unordered_map<const EventBase*, size_t> position;
        position.reserve(list->getSize());
        for (size_t i = 0; i < list->getSize(); ++i)
            position.emplace(list->getEvent(i).get(), i);
        for (size_t i = 0; i < count; ++i) {
            const auto found = events[i] ? position.find(events[i].get()) : position.end();
            listOrder[i] = found != position.end() ? found->second : list->getSize() + i;
        }
    } else {
        std::iota(listOrder.begin(), listOrder.end(), size_t{0});
    }

    std::vector<size_t> order(count);
    std::iota(order.begin(), order.end(), size_t{0});
    const int column = sortColumn;
    // The header's "forwards" sorts descending: stored projects hold the
    // flag with that meaning, so it stays.
    const bool descending = sortFlag;
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) {
        const EventBase* first = events[a].get();
        const EventBase* second = events[b].get();
        if ((first == nullptr) != (second == nullptr))
            return second == nullptr;
        if (first != nullptr) {
            const int compared = compareByColumn(*first, *second, column);
            if (compared != 0)
                return descending ? compared > 0 : compared < 0;
        }
        return listOrder[a] < listOrder[b];
    });

    std::vector<std::weak_ptr<EventBase>> sorted;
    sorted.reserve(count);
    validRows.clear();
    for (size_t index : order) {
        sorted.push_back(events[index]);
        if (events[index] && events[index]->isFlawless())
            validRows.push_back(events[index]);
    }
    rows = std::move(sorted);
}

void EventTableModel::addListener(Listener* listener)
{
    listeners.addIfNotAlreadyThere(listener);
}

void EventTableModel::removeListener(Listener* listener)
{
    listeners.removeFirstMatchingValue(listener);
}

template <typename Call>
void EventTableModel::forEachListener(Call&& call)
{
    // Latest first; a listener may remove itself meanwhile.
    for (int i = listeners.size(); --i >= 0;) {
        if (i < listeners.size())
            call(listeners.getUnchecked(i));
    }
}

int EventTableModel::getSelectedCount() const
{
    int count = 0;
    for (int i = 0; i < selection.getNumRanges(); ++i)
        count += selection.getRange(i).getLength();
    return count;
}

core::EventList EventTableModel::getSelectedEvents() const
{
    EventList selected(EventList::ChangeKind);
    for (int i = 0; i < selection.getNumRanges(); ++i) {
        const juce::Range<int> range = selection.getRange(i);
        for (int row = std::max(range.getStart(), 0); row < range.getEnd() && row < static_cast<int>(rows.size());
             ++row) {
            if (EventPtr event = rows[static_cast<size_t>(row)].lock())
                selected.addEvent(event);
        }
    }
    return selected;
}

core::EventList EventTableModel::getPreviewRun(const core::EventList& selected, int& leadIn, int& leadOut) const
{
    EventList run(EventList::ChangeKind);
    std::unordered_set<const EventBase*> wanted;
    for (const EventPtr& event : selected.getEvents())
        wanted.insert(event.get());

    long first = -1;
    long last = -1;
    for (size_t i = 0; i < validRows.size(); ++i) {
        const EventPtr event = validRows[i].lock();
        if (event && wanted.count(event.get()) != 0) {
            if (first < 0)
                first = static_cast<long>(i);
            last = static_cast<long>(i);
        }
    }
    if (first < 0)
        return run;

    //   valid rows:   0   1   2   3   4   5
    //   selected:             [2 ... 3]
    //   leads 1, 1:       1   2   3   4        a lead past either end of the
    //                                          table lowers leadIn or leadOut
    const long size = static_cast<long>(validRows.size());
    const long from = first - leadIn;
    const long to = last + leadOut;
    for (long position = from; position <= to; ++position) {
        if (position >= 0 && position < size) {
            if (EventPtr event = validRows[static_cast<size_t>(position)].lock())
                run.addEvent(event);
        } else if (position < first) {
            --leadIn;
        } else if (position > last) {
            --leadOut;
        }
    }
    return run;
}

void EventTableModel::setMarks(const core::EventList& events)
{
    marks = events;
    markSet.clear();
    for (const EventPtr& event : marks.getEvents())
        markSet.insert(event.get());
    if (table != nullptr)
        table->repaint();
}

bool EventTableModel::isMarked(const core::EventBase* event) const
{
    return markSet.count(event) != 0;
}

void EventTableModel::setSort(int column, bool flag)
{
    // The header shows the column that is really sorted, so that its late
    // message below names the same column and flag.
    column = sanitizeColumn(column);
    if (table != nullptr)
        table->getHeader().setSortColumnId(column, flag);
    // The header tells its table only on the next pass of the message loop;
    // the window restores a stored selection right after this call, so the
    // rows must be in their new order already. When the header's message
    // arrives it finds the sort done and does nothing.
    sortOrderChanged(column, flag);
}

std::shared_ptr<core::EventBase> EventTableModel::getRowEvent(int row) const
{
    if (row < 0 || row >= static_cast<int>(rows.size()))
        return nullptr;
    return rows[static_cast<size_t>(row)].lock();
}

juce::String EventTableModel::getCellText(int row, int column) const
{
    const EventPtr event = getRowEvent(row);
    if (!event)
        return {};
    switch (column) {
    case eventtable::StateColumn:
        return fromModelText(event->getStateText());
    case eventtable::IdColumn:
        return juce::String(event->getEventNumber());
    case eventtable::RollColumn:
        return fromModelText(event->getRollName());
    case eventtable::ClipNameColumn:
        return fromModelText(event->getClipName());
    case eventtable::EdlFileColumn:
        return fromModelText(event->getEdlFile());
    case eventtable::TransitionColumn:
        return juce::String::charToString(EventBase::transitionLetter(event->getTransitionType()));
    case eventtable::SrcInColumn:
        return event->getSrcIn().toString();
    case eventtable::SrcOutColumn:
        return event->getSrcOut().toString();
    case eventtable::DstInColumn:
        return event->getDstIn().toString();
    case eventtable::DstOutColumn:
        return event->getDstOut().toString();
    default:
        return {};
    }
}

int EventTableModel::getNumRows()
{
    return static_cast<int>(rows.size());
}

void EventTableModel::paintRowBackground(juce::Graphics& g, int row, int width, int height, bool selected)
{
    g.fillAll(palette::panel);
    if (selected) {
        g.setColour(palette::bright);
        g.fillRect(5, 1, width - 8, height - 1);
    }
    if (row > 0) {
        // A line between rows, not above the first.
        g.setColour(palette::strip);
        g.drawHorizontalLine(0, 5.0f, static_cast<float>(width - 8));
    }
}

juce::Colour EventTableModel::textColour(const core::EventBase& event, bool selected) const
{
    if (selected)
        return juce::Colours::black;
    if (isMarked(&event))
        return palette::bright;
    if (event.isVfx())
        return palette::vfx;
    return palette::text;
}

void EventTableModel::paintCell(juce::Graphics& g, int row, int column, int width, int height, bool selected)
{
    if (column > eventtable::lastColumn)
        return;
    const EventPtr event = getRowEvent(row);
    if (!event)
        return;

    const juce::String text = getCellText(row, column);
    if (column == eventtable::StateColumn) {
        // A dot: green for a valid event, red for one with any message.
        const bool valid = text.isEmpty();
        const float diameter = static_cast<float>(std::min(width, height) - 10);
        if (diameter <= 0.0f)
            return;
        const float centreX = width * 0.5f;
        const float centreY = height * 0.5f;
        g.setColour(valid ? palette::darkGreen : palette::darkRed);
        g.fillEllipse(centreX - diameter * 0.5f, centreY - diameter * 0.5f, diameter, diameter);
        const float inner = diameter - 2.0f;
        g.setColour(valid ? palette::green : palette::red);
        g.fillEllipse(centreX - inner * 0.5f, centreY - inner * 0.5f, inner, inner);
        return;
    }
    // A timecode cut off with an ellipsis loses its frames, the part an
    // editor reads; in a stand-in font wider than Segoe UI it is squeezed
    // into its fixed column instead. Names are cut, and their tooltips
    // show them whole.
    const bool timecode = column >= eventtable::SrcInColumn && column <= eventtable::DstOutColumn;
    LookAndFeel::drawFittedText(g, text, 2, 0, width - 4, height, juce::Justification::centredLeft,
                                LookAndFeel::getFont(LookAndFeel::tableFont), textColour(*event, selected), timecode);
}

juce::String EventTableModel::getCellTooltip(int row, int column)
{
    // The state's messages, and the two names that are often cut off.
    if (column == eventtable::StateColumn || column == eventtable::ClipNameColumn
        || column == eventtable::EdlFileColumn)
        return getCellText(row, column);
    return {};
}

juce::PopupMenu EventTableModel::buildMenu() const
{
    juce::PopupMenu menu;
    if (list == nullptr)
        return menu;
    const bool changeList = list->getListKind() == EventList::ChangeKind;
    const EventList selected = getSelectedEvents();
    const bool oneRow = getSelectedCount() == 1;

    if (changeList) {
        static const std::u16string labels[] = {u"None", u"Normal", u"Gaps without Inserts", u"Gaps with Inserts"};
        juce::PopupMenu healing;
        for (int kind = 0; kind < 4; ++kind) {
            const bool enabled = dataModel != nullptr
                && list->canHealEvents(selected, dataModel->getNewList(), static_cast<core::HealProcessingMode>(kind));
            healing.addItem(HealNoneItem + kind, translated(labels[kind]), enabled);
        }
        menu.addSubMenu(translated(u"Healing"), healing);
        menu.addSeparator();
    }

    const EventPtr single = oneRow && selected.getSize() == 1 ? selected.getEvent(0) : nullptr;
    if (changeList && oneRow) {
        const bool backwards = single && list->canExtendToNeighbour(single, true);
        const bool forwards = single && list->canExtendToNeighbour(single, false);
        juce::PopupMenu extend;
        extend.addItem(ExtendToPreviousItem, translated(u"Until Previous Event"), backwards);
        extend.addItem(ExtendToNextItem, translated(u"Until Next Event"), forwards);
        extend.addItem(ExtendToBothItem, translated(u"Until Previous and Next Event"), backwards && forwards);
        menu.addSubMenu(translated(u"Extend Event"), extend);
        menu.addSeparator();
    }

    if (oneRow)
        menu.addItem(EditItem, translated(u"Edit"),
                     single && !single->hasState(core::EventState::InvalidTimecode));
    menu.addItem(DeleteItem, translated(u"Delete"), true);
    return menu;
}

void EventTableModel::clearSelection()
{
    selection.clear();
    if (table != nullptr)
        table->deselectAllRows();
}

void EventTableModel::performMenuItem(int itemId, int row, const juce::MouseEvent& mouseEvent)
{
    if (list == nullptr)
        return;
    switch (itemId) {
    case HealNoneItem:
    case HealNormalItem:
    case HealGapsWithoutInsertsItem:
    case HealGapsWithInsertsItem: {
        if (dataModel == nullptr)
            return;
        const EventList selected = getSelectedEvents();
        clearSelection();
        // The first kind's step has always been named in lower case; undo
        // histories of stored projects show it so.
        core::DataModelChangeScope scope(itemId == HealNoneItem ? "Heal EDL events" : "Heal EDL Events");
        list->healEvents(selected, dataModel->getNewList(), static_cast<core::HealProcessingMode>(itemId - 1));
        return;
    }
    case DeleteItem: {
        const EventList selected = getSelectedEvents();
        clearSelection();
        core::DataModelChangeScope scope("Delete EDL Events");
        list->removeEvents(selected);
        return;
    }
    case EditItem: {
        if (EventPtr event = getRowEvent(row))
            forEachListener([&](Listener* listener) { listener->editRequested(event, this, mouseEvent); });
        return;
    }
    case ExtendToPreviousItem:
    case ExtendToNextItem:
    case ExtendToBothItem: {
        const EventList selected = getSelectedEvents();
        if (selected.getSize() == 0)
            return;
        const EventPtr event = selected.getEvent(0);
        core::DataModelChangeScope scope("Extend EDL Event");
        if (itemId != ExtendToNextItem)
            list->extendToNeighbour(event, true);
        if (itemId != ExtendToPreviousItem)
            list->extendToNeighbour(event, false);
        return;
    }
    default:
        return;
    }
}

void EventTableModel::cellClicked(int row, int column, const juce::MouseEvent& mouseEvent)
{
    if (!mouseEvent.mods.isRightButtonDown())
        return;
    juce::PopupMenu menu = buildMenu();
    // At the pointer, in the table's look and feel.
    juce::PopupMenu::Options options;
    if (table != nullptr)
        options = options.withTargetComponent(table);
    const int chosen = menu.showMenu(options.withMousePosition());
    performMenuItem(chosen, row, mouseEvent);
}

void EventTableModel::sortOrderChanged(int column, bool flag)
{
    const int newColumn = sanitizeColumn(column);
    // Rows are always in the order of the current column and flag, so the
    // same sort again (the header's late message after setSort) changes
    // nothing and tells nobody.
    if (newColumn == sortColumn && flag == sortFlag)
        return;

    notify = false;
    const EventList selected = getSelectedEvents();
    sortColumn = newColumn;
    sortFlag = flag;
    sortRows();
    if (table != nullptr) {
        table->deselectAllRows();
        std::unordered_set<const EventBase*> wanted;
        for (const EventPtr& event : selected.getEvents())
            wanted.insert(event.get());
        // All rows but the last at once, then the last through selectRow, so
        // that the table's anchor for shift-clicks and the delete key is
        // the last row selected, as if each had been selected in turn.
        juce::SparseSet<int> rowsToSelect;
        int lastRow = -1;
        for (size_t i = 0; i < rows.size(); ++i) {
            const EventPtr event = rows[i].lock();
            if (event && wanted.count(event.get()) != 0) {
                if (lastRow >= 0)
                    rowsToSelect.addRange({lastRow, lastRow + 1});
                lastRow = static_cast<int>(i);
            }
        }
        if (lastRow >= 0) {
            table->setSelectedRows(rowsToSelect, juce::dontSendNotification);
            table->selectRow(lastRow, true, false);
        }
        table->repaint();
    }
    notify = true;
    if (table != nullptr)
        selection = table->getSelectedRows();
    forEachListener([this](Listener* listener) { listener->sortChanged(this); });
}

void EventTableModel::copySelection()
{
    if (table != nullptr)
        selection = table->getSelectedRows();
    if (notify)
        forEachListener([this](Listener* listener) { listener->selectionChanged(this); });
}

void EventTableModel::selectedRowsChanged(int)
{
    copySelection();
}

void EventTableModel::deleteKeyPressed(int lastRowSelected)
{
    if (lastRowSelected == -1 || list == nullptr)
        return;
    const EventList selected = getSelectedEvents();
    core::DataModelChangeScope scope("Delete EDL Events");

    // The row that follows the deleted ones takes the selection: the
    // anchor row moves up by one for each deleted row above it.
    //
    //   before:  0  1 [2] 3 [4] 5        anchor 4, one selected row above
    //   after:   0  1  3  5              next = 4 - 1 = 3 -> row 3 ("5")
    int next = lastRowSelected;
    for (int i = 0; i < selection.getNumRanges(); ++i) {
        const juce::Range<int> range = selection.getRange(i);
        next -= std::max(0, std::min(range.getEnd(), lastRowSelected) - range.getStart());
    }
    next = std::max(next, 0);

    clearSelection();
    list->removeEvents(selected);
    if (list->getSize() != 0 && table != nullptr)
        table->selectRow(std::min(next, static_cast<int>(list->getSize()) - 1));
    forEachListener([this](Listener* listener) { listener->selectionChanged(this); });
}

} // namespace montala::gui
