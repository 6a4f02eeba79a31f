#pragma once

#include "core/events/EventBase.h"
#include "core/events/EventList.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

namespace montala::core {
class DataModel;
}

namespace montala::gui {

// Shows one event list (Old, New or Change) in a table: a sorted view of the
// list, cell text and colours, the row menu, delete by keyboard, and a copy
// of the table's selection. The rows hold the events weakly: the list owns
// them, and a row whose event is gone is skipped until the next setList.
//
// The table's rows and the list's order differ; everything that acts on
// "the selection" turns row numbers into events first, so that a sort, a
// delete or a heal in between cannot make it act on the wrong event.
class EventTableModel : public juce::TableListBoxModel {
public:
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void selectionChanged(EventTableModel* model) = 0;
        virtual void sortChanged(EventTableModel* model) = 0;
        virtual void editRequested(std::shared_ptr<core::EventBase> event, EventTableModel* model,
                                   const juce::MouseEvent& mouseEvent) = 0;
    };

    // The ids of the row menu; the window's tests and the menu handler share them.
    enum MenuItem {
        HealNoneItem = 1,
        HealNormalItem = 2,
        HealGapsWithoutInsertsItem = 3,
        HealGapsWithInsertsItem = 4,
        DeleteItem = 5,
        EditItem = 6,
        ExtendToPreviousItem = 7,
        ExtendToNextItem = 8,
        ExtendToBothItem = 9,
    };

    // None of the three is owned; the table and the data model may be null
    // (a model without a table sorts and answers, but shows nothing).
    EventTableModel(juce::TableListBox* table, core::EventList* list, core::DataModel* dataModel);
    ~EventTableModel() override;

    // Takes the rows from the list again, sorted as before.
    void setList(core::EventList* list);
    core::EventList* getList() const { return list; }

    void addListener(Listener* listener);
    void removeListener(Listener* listener);

    int getSelectedCount() const;
    // The events of the selected rows in row order, in a list of the Change kind.
    core::EventList getSelectedEvents() const;
    // The valid events from lead-in rows before the first selected event to
    // lead-out rows after the last one, in row order. Invalid events are no
    // part of it, so leads count valid events only; where the table ends
    // first, leadIn and leadOut come back lowered to what the run holds.
    core::EventList getPreviewRun(const core::EventList& selected, int& leadIn, int& leadOut) const;

    // Events drawn in the mark colour: the rows related to the selection of
    // another table.
    void setMarks(const core::EventList& events);
    const core::EventList& getMarks() const { return marks; }

    // Sorts now, and shows the sort on the header. The flag is the header's
    // "forwards", and forwards sorts descending (see sortOrderChanged).
    void setSort(int column, bool flag);
    int getSortColumn() const { return sortColumn; }
    bool getSortFlag() const { return sortFlag; }

    // The text of a cell as the table shows it; empty for an unknown column
    // or a row past the end.
    juce::String getCellText(int row, int column) const;
    std::shared_ptr<core::EventBase> getRowEvent(int row) const;

    // The row menu for the rows selected now, and what choosing an item
    // does. cellClicked shows the one and carries out the other; they are
    // apart so that both can be checked without a menu on screen.
    juce::PopupMenu buildMenu() const;
    void performMenuItem(int itemId, int row, const juce::MouseEvent& mouseEvent);

    int getNumRows() override;
    void paintRowBackground(juce::Graphics& g, int row, int width, int height, bool selected) override;
    void paintCell(juce::Graphics& g, int row, int column, int width, int height, bool selected) override;
    void cellClicked(int row, int column, const juce::MouseEvent& mouseEvent) override;
    void sortOrderChanged(int column, bool flag) override;
    juce::String getCellTooltip(int row, int column) override;
    void selectedRowsChanged(int lastRowSelected) override;
    void deleteKeyPressed(int lastRowSelected) override;

private:
    // Rows first by column and flag, ties in list order, gone events last.
    void sortRows();
    void fillRows();
    bool isMarked(const core::EventBase* event) const;
    juce::Colour textColour(const core::EventBase& event, bool selected) const;
    // Takes the table's selection; tells the listeners only while notify is on.
    void copySelection();
    void clearSelection();
    template <typename Call>
    void forEachListener(Call&& call);

    juce::Array<Listener*> listeners;
    juce::TableListBox* table;
    core::EventList* list;
    core::DataModel* dataModel;
    std::vector<std::weak_ptr<core::EventBase>> rows;
    std::vector<std::weak_ptr<core::EventBase>> validRows;
    juce::SparseSet<int> selection;
    core::EventList marks{core::EventList::ChangeKind};
    // marks by address, for painting without a search per cell.
    std::unordered_set<const core::EventBase*> markSet;
    int sortColumn;
    bool sortFlag = false;
    bool notify = true;
};

} // namespace montala::gui
