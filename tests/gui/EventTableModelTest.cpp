#include "gui/EventTableModel.h"

#include "core/model/DataModel.h"
#include "gui/EventTableColumns.h"
#include "gui/GuiTestSupport.h"
#include "gui/Palette.h"
#include "support/ModelFixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace montala::gui {
namespace {

using core::EventList;
using core::EventPtr;
using test::makeEvent;

// Stands in for the window: hears the model, and takes the list again
// whenever it changes, as the window does.
class WindowDouble : public EventTableModel::Listener, public core::ChangeContextListenerInterface {
public:
    void selectionChanged(EventTableModel*) override { ++selectionNotices; }
    void sortChanged(EventTableModel*) override { ++sortNotices; }
    void editRequested(std::shared_ptr<core::EventBase> event, EventTableModel*, const juce::MouseEvent&) override
    {
        edited = event;
    }
    void changed(const core::ChangeContext&) override
    {
        model->setList(list);
        table->updateContent();
    }

    EventTableModel* model = nullptr;
    EventList* list = nullptr;
    juce::TableListBox* table = nullptr;
    int selectionNotices = 0;
    int sortNotices = 0;
    EventPtr edited;
};

class EventTableModelTest : public test::ModelFixture {
protected:
    ~EventTableModelTest() override { hide(); }

    // Takes the table and the window double off the list; a fixture that
    // owns the list calls it before the list goes.
    void hide()
    {
        if (model) {
            model->removeListener(&window);
            window.list->removeListener(&window);
            table.setModel(nullptr);
            model.reset();
        }
    }

    // A table on the given list, with the window double listening.
    void show(EventList& list)
    {
        eventtable::addColumns(table.getHeader());
        table.setMultipleSelectionEnabled(true);
        table.setSize(800, 300);
        model = std::make_unique<EventTableModel>(&table, &list, &dataModel);
        table.setModel(model.get());
        window.model = model.get();
        window.list = &list;
        window.table = &table;
        model->addListener(&window);
        list.addListener(&window);
    }

    // Event numbers in row order.
    static std::vector<int> rowNumbers(EventTableModel& shown)
    {
        std::vector<int> numbers;
        for (int row = 0; row < shown.getNumRows(); ++row)
            numbers.push_back(shown.getRowEvent(row)->getEventNumber());
        return numbers;
    }
    std::vector<int> rowNumbers() const { return rowNumbers(*model); }

    static std::vector<int> numbersOf(const EventList& list)
    {
        std::vector<int> numbers;
        for (const EventPtr& event : list.getEvents())
            numbers.push_back(event->getEventNumber());
        return numbers;
    }

    void selectRows(std::initializer_list<int> rows)
    {
        juce::SparseSet<int> set;
        for (int row : rows)
            set.addRange({row, row + 1});
        table.setSelectedRows(set, juce::sendNotification);
    }

    static EventPtr numbered(EventPtr event, int number)
    {
        event->setEventNumber(number);
        return event;
    }

    juce::ScopedJuceInitialiser_GUI juce;
    core::DataModel dataModel;
    juce::TableListBox table;
    std::unique_ptr<EventTableModel> model;
    WindowDouble window;
};

// A Change EDL in DST order:
//   1  SRC 10:00:00:00-10:00:05:00  DST 20:00:00:00-20:00:05:00
//   2  SRC 10:00:05:00-10:00:08:00  DST 20:00:05:00-20:00:08:00   neighbour of 1
//   3  SRC 10:00:10:00-10:00:12:00  DST 20:00:10:00-20:00:12:00   2 s gap before
//   4  SRC 10:00:30:00-10:00:32:00  DST 20:00:12:00-20:00:14:00   touches 3 in DST
class ChangeTableTest : public EventTableModelTest {
protected:
    ChangeTableTest()
    {
        changes.addEvent(numbered(makeEvent("A", "10:00:00:00", "10:00:05:00", "20:00:00:00", "20:00:05:00"), 1));
        changes.addEvent(numbered(makeEvent("B", "10:00:05:00", "10:00:08:00", "20:00:05:00", "20:00:08:00"), 2));
        changes.addEvent(numbered(makeEvent("C", "10:00:10:00", "10:00:12:00", "20:00:10:00", "20:00:12:00"), 3));
        changes.addEvent(numbered(makeEvent("D", "10:00:30:00", "10:00:32:00", "20:00:12:00", "20:00:14:00"), 4));
        show(changes);
    }
    ~ChangeTableTest() override { hide(); }

    // The menu as ids and enabled flags; submenus as their label, then their items.
    static std::vector<std::string> describeMenu(const juce::PopupMenu& menu)
    {
        std::vector<std::string> lines;
        for (juce::PopupMenu::MenuItemIterator it(menu); it.next();) {
            const juce::PopupMenu::Item& item = it.getItem();
            if (item.isSeparator)
                lines.push_back("-");
            else if (item.subMenu != nullptr) {
                lines.push_back(item.text.toStdString() + ":");
                for (juce::PopupMenu::MenuItemIterator sub(*item.subMenu); sub.next();)
                    lines.push_back("  " + std::to_string(sub.getItem().itemID)
                                    + (sub.getItem().isEnabled ? " on" : " off"));
            } else {
                lines.push_back(std::to_string(item.itemID) + (item.isEnabled ? " on" : " off"));
            }
        }
        return lines;
    }

    juce::MouseEvent rightClick()
    {
        return test::mouseOn(table, {10.0f, 10.0f}, juce::ModifierKeys::rightButtonModifier);
    }

    EventList changes{EventList::ChangeKind};
    test::RecordingUndo undoSteps;
};

using Lines = std::vector<std::string>;

TEST_F(EventTableModelTest, SortsEachColumnByItsKeyAndTheFlagSortsDescending)
{
    //        number roll   clip     file     TR  SRC IN       SRC OUT      DST IN       DST OUT
    //  [0]   30     B      zeta     b.edl    C   01:00:10:00  01:00:12:00  10:00:04:00  10:00:06:00
    //  [1]   10     a      Alpha    a.edl    D   01:00:02:00  01:00:05:00  10:00:00:00  10:00:03:00
    //  [2]   40     A      beta     c.edl    W   01:00:05:00  01:00:06:00  10:00:08:00  10:00:09:00
    //  [3]   20     B      Beta     a.edl    C   00:59:59:24  01:00:01:00  10:00:03:00  10:00:04:00  invalid
    //  [4]   50     B10             b.edl    C   01:00:00:00  01:00:00:10  10:00:06:00  10:00:06:10
    struct Row {
        int number;
        const char* roll;
        const char* clip;
        const char* file;
        int transition;
        const char* tc[4];
    };
    const Row content[] = {
        {30, "B", "zeta", "b.edl", 0, {"01:00:10:00", "01:00:12:00", "10:00:04:00", "10:00:06:00"}},
        {10, "a", "Alpha", "a.edl", 1, {"01:00:02:00", "01:00:05:00", "10:00:00:00", "10:00:03:00"}},
        {40, "A", "beta", "c.edl", 2, {"01:00:05:00", "01:00:06:00", "10:00:08:00", "10:00:09:00"}},
        {20, "B", "Beta", "a.edl", 0, {"00:59:59:24", "01:00:01:00", "10:00:03:00", "10:00:04:00"}},
        {50, "B10", "", "b.edl", 0, {"01:00:00:00", "01:00:00:10", "10:00:06:00", "10:00:06:10"}},
    };
    EventList list(EventList::OldKind);
    for (const Row& row : content) {
        EventPtr event = numbered(makeEvent(row.roll, row.tc[0], row.tc[1], row.tc[2], row.tc[3]), row.number);
        event->setClipName(row.clip);
        event->setEdlFile(row.file);
        event->setTransitionType(row.transition);
        list.addEvent(event);
    }
    list.getEvent(3)->addState(core::EventState::BadRollName);

    EventTableModel sorted(nullptr, &list, nullptr);
    const auto rowNumbers = [&] { return EventTableModelTest::rowNumbers(sorted); };
    EXPECT_EQ(sorted.getSortColumn(), eventtable::DstInColumn);
    EXPECT_EQ(rowNumbers(), (std::vector<int>{10, 20, 30, 50, 40})) << "a new table is in DST IN order";

    struct Case {
        int column;
        std::vector<int> ascending;
        std::vector<int> descending;
    };
    // Ties keep the list's order in both directions (the two "B" rolls, the
    // valid states, the cuts).
    const Case cases[] = {
        {1, {20, 30, 10, 40, 50}, {30, 10, 40, 50, 20}},
        {2, {10, 20, 30, 40, 50}, {50, 40, 30, 20, 10}},
        {3, {40, 30, 20, 50, 10}, {10, 50, 30, 20, 40}},
        {4, {50, 10, 20, 40, 30}, {30, 40, 20, 10, 50}},
        {5, {10, 20, 30, 50, 40}, {40, 30, 50, 10, 20}},
        {6, {30, 20, 50, 10, 40}, {40, 10, 30, 20, 50}},
        {7, {20, 50, 10, 40, 30}, {30, 40, 10, 50, 20}},
        {8, {50, 20, 10, 40, 30}, {30, 40, 10, 20, 50}},
        {9, {10, 20, 30, 50, 40}, {40, 50, 30, 20, 10}},
        {10, {10, 20, 30, 50, 40}, {40, 50, 30, 20, 10}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.column);
        sorted.sortOrderChanged(c.column, false);
        EXPECT_EQ(rowNumbers(), c.ascending);
        sorted.sortOrderChanged(c.column, true);
        EXPECT_EQ(rowNumbers(), c.descending);
        EXPECT_EQ(sorted.getSortFlag(), true);
    }

    // A stored column that is no sortable column of ours sorts by number.
    for (int column : {0, -3, 11, 99}) {
        sorted.sortOrderChanged(3, false);
        sorted.sortOrderChanged(column, false);
        EXPECT_EQ(sorted.getSortColumn(), eventtable::IdColumn);
        EXPECT_EQ(rowNumbers(), (std::vector<int>{10, 20, 30, 40, 50}));
    }

    // Taking the list again keeps column and flag.
    sorted.sortOrderChanged(3, true);
    list.removeRange(0, 1);
    sorted.setList(&list);
    EXPECT_EQ(rowNumbers(), (std::vector<int>{10, 50, 20, 40}));
}

TEST_F(ChangeTableTest, SelectionSurvivesASortWithoutASelectionNotice)
{
    selectRows({1, 3});
    ASSERT_EQ(window.selectionNotices, 1);
    ASSERT_EQ(numbersOf(model->getSelectedEvents()), (std::vector<int>{2, 4}));

    // Descending by DST IN: rows 4 3 2 1.
    model->setSort(eventtable::DstInColumn, true);
    EXPECT_EQ(rowNumbers(), (std::vector<int>{4, 3, 2, 1}));
    EXPECT_EQ(numbersOf(model->getSelectedEvents()), (std::vector<int>{4, 2}));
    EXPECT_TRUE(table.isRowSelected(0));
    EXPECT_TRUE(table.isRowSelected(2));
    EXPECT_EQ(model->getSelectedCount(), 2);
    EXPECT_EQ(table.getLastRowSelected(), 2) << "the delete key's anchor is the last row reselected";
    EXPECT_EQ(window.selectionNotices, 1);
    EXPECT_EQ(window.sortNotices, 1);
    // The header shows the flag as "forwards".
    EXPECT_EQ(table.getHeader().getSortColumnId(), eventtable::DstInColumn);
    EXPECT_TRUE(table.getHeader().isSortedForwards());

    // The header's own message arrives later and finds nothing to do.
    juce::MessageManager::getInstance()->runDispatchLoopUntil(50);
    EXPECT_EQ(window.sortNotices, 1);

    // A click on a column header goes through the header's message. All
    // four are valid: by state they stand in list order.
    table.getHeader().setSortColumnId(eventtable::StateColumn, false);
    juce::MessageManager::getInstance()->runDispatchLoopUntil(50);
    EXPECT_EQ(model->getSortColumn(), eventtable::StateColumn);
    EXPECT_FALSE(model->getSortFlag());
    EXPECT_EQ(rowNumbers(), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(numbersOf(model->getSelectedEvents()), (std::vector<int>{2, 4}));
    EXPECT_EQ(window.selectionNotices, 1);
    EXPECT_EQ(window.sortNotices, 2);
}

TEST_F(ChangeTableTest, PreviewRunTakesValidNeighboursAndLowersLeadsAtTheEnds)
{
    // 2.5 lies between 2 and 3 and is invalid: it is no part of any run.
    EventPtr invalid = numbered(makeEvent("X", "10:00:08:00", "10:00:09:00", "20:00:08:00", "20:00:09:00"), 5);
    invalid->addState(core::EventState::BadSrcIn);
    changes.addEvent(invalid);
    ASSERT_EQ(rowNumbers(), (std::vector<int>{1, 2, 5, 3, 4}));

    const auto run = [&](std::vector<int> selectedRows, int leadIn, int leadOut) {
        EventList selected(EventList::ChangeKind);
        for (int row : selectedRows)
            selected.addEvent(model->getRowEvent(row));
        EventList result = model->getPreviewRun(selected, leadIn, leadOut);
        std::vector<int> numbers = numbersOf(result);
        numbers.push_back(leadIn);
        numbers.push_back(leadOut);
        return numbers;
    };
    // Numbers of the run, then leadIn and leadOut.
    EXPECT_EQ(run({1}, 1, 1), (std::vector<int>{1, 2, 3, 1, 1})) << "2 with the valid event behind the invalid one";
    EXPECT_EQ(run({3}, 1, 1), (std::vector<int>{2, 3, 4, 1, 1}));
    EXPECT_EQ(run({0}, 1, 1), (std::vector<int>{1, 2, 0, 1})) << "first row";
    EXPECT_EQ(run({4}, 1, 1), (std::vector<int>{3, 4, 1, 0})) << "last row";
    EXPECT_EQ(run({1}, 3, 3), (std::vector<int>{1, 2, 3, 4, 1, 2}));
    EXPECT_EQ(run({0, 4}, 0, 0), (std::vector<int>{1, 2, 3, 4, 0, 0})) << "the span between, without the invalid";
    EXPECT_EQ(run({2}, 1, 1), (std::vector<int>{1, 1})) << "an invalid event alone has no run";
    EXPECT_EQ(run({}, 1, 1), (std::vector<int>{1, 1}));

    // The run follows the rows' order, not the list's.
    model->setSort(eventtable::DstInColumn, true);
    EXPECT_EQ(run({0}, 1, 1), (std::vector<int>{4, 3, 0, 1}));
}

TEST_F(ChangeTableTest, MenuOffersWhatTheSelectionAllows)
{
    // Nothing selected: the healing submenu (all off) and Delete.
    EXPECT_EQ(describeMenu(model->buildMenu()),
              (Lines{"Healing:", "  1 off", "  2 off", "  3 off", "  4 off", "-", "5 on"}));

    // 1 and 2 are strict neighbours: Normal heals them, None does not.
    selectRows({0, 1});
    EXPECT_EQ(describeMenu(model->buildMenu()),
              (Lines{"Healing:", "  1 off", "  2 on", "  3 on", "  4 on", "-", "5 on"}))
        << "two rows: no Edit, no Extend";

    // 2 and 3 have a 2 s gap: only the gap modes heal them.
    selectRows({1, 2});
    EXPECT_EQ(describeMenu(model->buildMenu()),
              (Lines{"Healing:", "  1 off", "  2 off", "  3 on", "  4 on", "-", "5 on"}));

    // 3 alone: it can extend back over the gap, not on into 4 that it touches.
    selectRows({2});
    EXPECT_EQ(describeMenu(model->buildMenu()),
              (Lines{"Healing:", "  1 off", "  2 off", "  3 off", "  4 off", "-", "Extend Event:", "  7 on",
                     "  8 off", "  9 off", "-", "6 on", "5 on"}));

    // An event with an invalid timecode cannot be edited.
    model->getRowEvent(2)->setSrcIn(core::Timecode(25, 0, 0, 0));
    ASSERT_TRUE(model->getRowEvent(2)->hasState(core::EventState::InvalidTimecode));
    EXPECT_EQ(describeMenu(model->buildMenu()).at(11), "6 off");

    // The Old and New tables neither heal nor extend.
    EventList old(EventList::OldKind);
    old.addEvent(makeEvent("A", "10:00:00:00", "10:00:05:00", "20:00:00:00", "20:00:05:00"));
    EventTableModel oldModel(nullptr, &old, &dataModel);
    EXPECT_EQ(describeMenu(oldModel.buildMenu()), (Lines{"5 on"}));
}

TEST_F(ChangeTableTest, MenuActionsChangeTheListInsideNamedUndoSteps)
{
    // Extend 3 back to the end of 2.
    selectRows({2});
    model->performMenuItem(EventTableModel::ExtendToPreviousItem, 2, rightClick());
    EXPECT_EQ(changes.getEvent(2)->getDstIn(), test::tc("20:00:08:00"));
    EXPECT_EQ(changes.getEvent(2)->getSrcIn(), test::tc("10:00:08:00"));

    // Edit hands the clicked row's event to the window.
    model->performMenuItem(EventTableModel::EditItem, 1, rightClick());
    EXPECT_EQ(window.edited, changes.getEvent(1));

    // Healing 1 and 2 leaves one healed event and three rows.
    selectRows({0, 1});
    model->performMenuItem(EventTableModel::HealNormalItem, 0, rightClick());
    EXPECT_EQ(model->getNumRows(), 3);
    EXPECT_EQ(model->getSelectedCount(), 0);
    EXPECT_EQ(model->getRowEvent(0)->getEventType(), core::EventBase::Healed);

    // Breaking it up again with kind None.
    selectRows({0});
    model->performMenuItem(EventTableModel::HealNoneItem, 0, rightClick());
    EXPECT_EQ(model->getNumRows(), 4);

    selectRows({1, 3});
    model->performMenuItem(EventTableModel::DeleteItem, 1, rightClick());
    EXPECT_EQ(numbersOf(changes), (std::vector<int>{1, 3}));
    EXPECT_EQ(model->getNumRows(), 2);

    // Delete with nothing selected changes nothing but is still a step.
    model->performMenuItem(EventTableModel::DeleteItem, 0, rightClick());
    EXPECT_EQ(changes.getSize(), 2u);

    EXPECT_EQ(undoSteps.titles, (Lines{"Extend EDL Event", "Heal EDL Events", "Heal EDL events", "Delete EDL Events",
                                       "Delete EDL Events"}));
}

TEST_F(ChangeTableTest, DeleteKeySelectsTheRowAfterTheDeletedOnes)
{
    const auto addBack = [&](const char* roll, int number, const char* dstIn, const char* dstOut) {
        changes.addEvent(numbered(makeEvent(roll, "10:00:40:00", "10:00:41:00", dstIn, dstOut), number));
    };
    addBack("E", 5, "20:00:20:00", "20:00:21:00");
    addBack("F", 6, "20:00:30:00", "20:00:31:00");
    ASSERT_EQ(rowNumbers(), (std::vector<int>{1, 2, 3, 4, 5, 6}));

    // Rows 1 and 3, the anchor (the row clicked last) on 1: the row that
    // followed the anchor takes the selection.
    selectRows({1, 3});
    window.selectionNotices = 0;
    model->deleteKeyPressed(1);
    EXPECT_EQ(rowNumbers(), (std::vector<int>{1, 3, 5, 6}));
    EXPECT_EQ(numbersOf(model->getSelectedEvents()), (std::vector<int>{3}));
    EXPECT_GE(window.selectionNotices, 1);

    // The same rows with the anchor on 3: one deleted row above it.
    addBack("B", 2, "20:00:05:00", "20:00:08:00");
    addBack("D", 4, "20:00:12:00", "20:00:14:00");
    selectRows({1, 3});
    model->deleteKeyPressed(3);
    EXPECT_EQ(rowNumbers(), (std::vector<int>{1, 3, 5, 6}));
    EXPECT_EQ(numbersOf(model->getSelectedEvents()), (std::vector<int>{5}));

    // The last two rows: the selection lands on the new last row.
    selectRows({2, 3});
    model->deleteKeyPressed(3);
    EXPECT_EQ(rowNumbers(), (std::vector<int>{1, 3}));
    EXPECT_EQ(table.getSelectedRows().size(), 1);
    EXPECT_TRUE(table.isRowSelected(1));

    // No anchor: nothing happens.
    model->deleteKeyPressed(-1);
    EXPECT_EQ(changes.getSize(), 2u);

    // Everything: nothing is left to select.
    selectRows({0, 1});
    model->deleteKeyPressed(1);
    EXPECT_EQ(changes.getSize(), 0u);
    EXPECT_EQ(model->getSelectedCount(), 0);
    EXPECT_EQ(undoSteps.titles, Lines(4, "Delete EDL Events"));
}

// Paints one row of the table into an image, as the table does.
class RowPainting : public ChangeTableTest {
protected:
    juce::Image paintRow(int row, bool selected)
    {
        juce::Image image(juce::Image::ARGB, 400, 20, true);
        juce::Graphics g(image);
        model->paintRowBackground(g, row, 400, 20, selected);
        // State (50 wide) at 0, roll (150 wide) at 50.
        model->paintCell(g, row, eventtable::StateColumn, 50, 20, selected);
        g.setOrigin(50, 0);
        model->paintCell(g, row, eventtable::RollColumn, 150, 20, selected);
        return image;
    }

    // Sum of the channel differences: anti-aliased edges blend with the row.
    static int distance(juce::Colour a, juce::Colour b)
    {
        return std::abs(a.getRed() - b.getRed()) + std::abs(a.getGreen() - b.getGreen())
            + std::abs(a.getBlue() - b.getBlue());
    }

    // Pixels of the roll cell close to the colour.
    static int pixelsNear(const juce::Image& image, juce::Colour colour)
    {
        int count = 0;
        for (int x = 50; x < 200; ++x)
            for (int y = 0; y < 20; ++y)
                count += distance(image.getPixelAt(x, y), colour) < 12 ? 1 : 0;
        return count;
    }
};

TEST_F(RowPainting, DrawsDotsTextBackgroundAndTooltipsInThePalettesColours)
{
    for (int row = 0; row < 4; ++row)
        model->getRowEvent(row)->setRollName("IIIIIIII");
    model->getRowEvent(1)->addState(core::EventState::BadRollName);
    model->getRowEvent(2)->setVfx(true);
    EventList marks(EventList::ChangeKind);
    marks.addEvent(model->getRowEvent(3));
    model->setMarks(marks);

    // A valid event: green dot with a dark green ring, text in the text colour.
    const juce::Image valid = paintRow(0, false);
    EXPECT_EQ(valid.getPixelAt(25, 10), palette::green);
    EXPECT_LT(distance(valid.getPixelAt(20, 10), palette::darkGreen), 24) << "the ring";
    EXPECT_EQ(valid.getPixelAt(300, 10), palette::panel);
    EXPECT_EQ(valid.getPixelAt(20, 0), palette::panel) << "no line above the first row";
    EXPECT_GT(pixelsNear(valid, palette::text), 0);
    EXPECT_EQ(pixelsNear(valid, palette::vfx), 0);

    const juce::Image invalid = paintRow(1, false);
    EXPECT_EQ(invalid.getPixelAt(25, 10), palette::red);
    EXPECT_LT(distance(invalid.getPixelAt(20, 10), palette::darkRed), 24);
    EXPECT_EQ(invalid.getPixelAt(300, 0), palette::strip) << "the line between rows";
    EXPECT_EQ(invalid.getPixelAt(2, 0), palette::panel) << "the line starts 5 pixels in";

    const juce::Image vfx = paintRow(2, false);
    EXPECT_GT(pixelsNear(vfx, palette::vfx), 0);
    EXPECT_EQ(pixelsNear(vfx, palette::text), 0);

    const juce::Image marked = paintRow(3, false);
    EXPECT_GT(pixelsNear(marked, palette::bright), 0);
    EXPECT_EQ(pixelsNear(marked, palette::text), 0);

    // Selected: bright background from x = 5, black text.
    const juce::Image selected = paintRow(2, true);
    EXPECT_EQ(selected.getPixelAt(300, 10), palette::bright);
    EXPECT_EQ(selected.getPixelAt(3, 10), palette::panel);
    EXPECT_GT(pixelsNear(selected, juce::Colours::black), 0);
    EXPECT_EQ(pixelsNear(selected, palette::vfx), 0);

    // The dot's tooltip lists the messages; of the names only the clip and
    // the file have one.
    EXPECT_EQ(model->getCellTooltip(0, eventtable::StateColumn), "");
    EXPECT_EQ(model->getCellTooltip(1, eventtable::StateColumn),
              juce::String(core::EventBase::getStateMessage(core::EventState::BadRollName) + "\n"));
    model->getRowEvent(0)->setClipName("the whole clip name");
    EXPECT_EQ(model->getCellTooltip(0, eventtable::ClipNameColumn), "the whole clip name");
    EXPECT_EQ(model->getCellTooltip(0, eventtable::RollColumn), "");
}

} // namespace
} // namespace montala::gui
