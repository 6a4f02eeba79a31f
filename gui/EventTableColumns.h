#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

// The columns of the three event tables (Old, New, Change). All three show
// the same set, so that a user who learnt one table reads the others; the
// ids are stored with the project as the sort column, so they never change.
namespace montala::gui::eventtable {

enum Column {
    StateColumn = 1,
    IdColumn = 2,
    RollColumn = 3,
    ClipNameColumn = 4,
    EdlFileColumn = 5,
    TransitionColumn = 6,
    SrcInColumn = 7,
    SrcOutColumn = 8,
    DstInColumn = 9,
    DstOutColumn = 10,
};

constexpr int firstColumn = StateColumn;
constexpr int lastColumn = DstOutColumn;
// The order a fresh table shows: by place on the record timeline.
constexpr int defaultSortColumn = DstInColumn;

struct ColumnInfo {
    int id;
    const char* name;
    // The width a column starts at is also its minimum: the user cannot
    // narrow a column, only the header's stretch widens the wide ones.
    int width;
    int maximumWidth;
};

inline constexpr ColumnInfo columns[] = {
    {StateColumn, "State", 50, 50},
    {IdColumn, "ID", 40, 40},
    {RollColumn, "Roll", 70, 400},
    {ClipNameColumn, "Clip Name", 70, 800},
    {EdlFileColumn, "EDL File", 80, 800},
    {TransitionColumn, "TR", 30, 30},
    {SrcInColumn, "SRC IN", 65, 65},
    {SrcOutColumn, "SRC OUT", 65, 65},
    {DstInColumn, "DST IN", 65, 65},
    {DstOutColumn, "DST OUT", 65, 65},
};

// The column names are the same in every language, as editors know them from
// their EDLs; they are not translated.
inline juce::String getColumnName(int id)
{
    for (const ColumnInfo& column : columns)
        if (column.id == id)
            return column.name;
    return "Unknown Column";
}

// Fills an empty header with the ten columns. They can be sorted and hidden
// from the header's menu but neither dragged nor resized; the header
// stretches them to the table's width.
inline void addColumns(juce::TableHeaderComponent& header)
{
    constexpr int flags = juce::TableHeaderComponent::visible | juce::TableHeaderComponent::appearsOnColumnMenu
        | juce::TableHeaderComponent::sortable;
    for (const ColumnInfo& column : columns)
        header.addColumn(column.name, column.id, column.width, column.width, column.maximumWidth, flags);
    header.setStretchToFitActive(true);
}

} // namespace montala::gui::eventtable
