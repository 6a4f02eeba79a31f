#include "gui/VideoListTableModel.h"

#include "gui/LookAndFeel.h"
#include "gui/Palette.h"
#include "gui/Texts.h"
#include "util/Result.h"

#include <algorithm>
#include <tuple>

namespace montala::gui {

namespace {

const juce::Identifier rowProperty("row");

} // namespace

VideoListTableModel::VideoListTableModel(juce::TableListBox& table, core::MediaPoolInterface& pool,
                                         core::VideoList& list)
    : table(table), pool(pool), list(list)
{
    pool.addListener(this);
    rebuild();
}

VideoListTableModel::~VideoListTableModel()
{
    pool.removeListener(this);
}

void VideoListTableModel::setProjectStart(double seconds)
{
    if (core::Timecode::isValidSeconds(seconds))
        defaultStart.fromSeconds(seconds);
    rebuild();
}

juce::String VideoListTableModel::columnName(int column)
{
    switch (column) {
    case NameColumn: return translated(u"Name");
    case UseColumn: return translated(u"Use as New Video");
    case StartColumn: return translated(u"Start");
    case LengthColumn: return translated(u"Length");
    default: return translated(u"Unknown Column");
    }
}

void VideoListTableModel::rebuild()
{
    rows.clear();
    try {
        for (int index = 0; index < pool.getClipCount(); ++index) {
            Row row;
            row.name = pool.getClipFileName(index);
            row.path = pool.getClipPath(index);
            row.length.fromSeconds(pool.getClipLength(index));
            row.inUse = list.containsPath(row.name);
            row.start = row.inUse ? list.getEntryForPath(row.name).getStart() : defaultStart;
            rows.push_back(row);
        }
    } catch (util::Result::Type) {
        // A pool the host cannot read lists what it could.
    }
    sortRows();
    table.updateContent();
    table.repaint();
}

void VideoListTableModel::setInUse(int index, bool on)
{
    if (index < 0 || index >= getNumRows())
        return;
    const Row row = rows[static_cast<size_t>(index)];
    if (on)
        list.addEntry(core::VideoList::Entry(row.path, row.start, row.length));
    else
        list.removeEntry(row.name);
    rebuild();
}

void VideoListTableModel::setStart(int index, const core::Timecode& start)
{
    if (index < 0 || index >= getNumRows())
        return;
    Row& row = rows[static_cast<size_t>(index)];
    row.start = start;
    if (row.inUse)
        list.setEntryStart(row.name, start);
    rebuild();
}

void VideoListTableModel::paintRowBackground(juce::Graphics& g, int, int, int, bool selected)
{
    g.fillAll(selected ? palette::bright : palette::panel);
}

void VideoListTableModel::paintCell(juce::Graphics& g, int index, int column, int width, int height, bool selected)
{
    if (index < 0 || index >= getNumRows())
        return;
    const Row& row = rows[static_cast<size_t>(index)];
    juce::String text;
    if (column == NameColumn)
        text = juce::String::fromUTF8(row.name.c_str());
    else if (column == LengthColumn)
        text = row.length.toString();
    else
        return;
    LookAndFeel::drawFittedText(g, text, 4, 0, width - 8, height, juce::Justification::centredLeft,
                                LookAndFeel::getFont(LookAndFeel::tableFont),
                                selected ? palette::panel : palette::text, false);
}

juce::Component* VideoListTableModel::refreshComponentForCell(int index, int column, bool, juce::Component* existing)
{
    if (index < 0 || index >= getNumRows() || (column != UseColumn && column != StartColumn)) {
        delete existing;
        return nullptr;
    }
    const Row& row = rows[static_cast<size_t>(index)];
    if (column == UseColumn) {
        auto* toggle = dynamic_cast<juce::ToggleButton*>(existing);
        if (!toggle) {
            delete existing;
            toggle = new juce::ToggleButton();
            toggle->addListener(this);
        }
        toggle->getProperties().set(rowProperty, index);
        toggle->setToggleState(row.inUse, juce::dontSendNotification);
        return toggle;
    }
    auto* input = dynamic_cast<TcInput*>(existing);
    if (!input) {
        delete existing;
        input = new TcInput();
        input->addListener(this);
    }
    input->getProperties().set(rowProperty, index);
    input->setTimecode(row.start, false);
    input->setEnabled(row.inUse);
    return input;
}

void VideoListTableModel::sortOrderChanged(int column, bool forwards)
{
    // The selection follows its videos, not the row numbers.
    std::vector<std::pair<std::string, core::Timecode>> selected;
    for (int index = 0; index < getNumRows(); ++index)
        if (table.isRowSelected(index))
            selected.emplace_back(rows[static_cast<size_t>(index)].name, rows[static_cast<size_t>(index)].start);
    sortColumn = column;
    sortForwards = forwards;
    sortRows();
    juce::SparseSet<int> again;
    for (int index = 0; index < getNumRows(); ++index) {
        const Row& row = rows[static_cast<size_t>(index)];
        for (const auto& [name, start] : selected)
            if (row.name == name && row.start == start)
                again.addRange({index, index + 1});
    }
    table.updateContent();
    table.setSelectedRows(again, juce::dontSendNotification);
    table.repaint();
}

void VideoListTableModel::sortRows()
{
    const auto key = [this](const Row& row) {
        switch (sortColumn) {
        case StartColumn: return std::make_tuple(row.start.toFrames(), std::string());
        case LengthColumn: return std::make_tuple(row.length.toFrames(), std::string());
        case UseColumn: return std::make_tuple(row.inUse ? 1 : 0, std::string());
        default: return std::make_tuple(0, row.name);
        }
    };
    std::stable_sort(rows.begin(), rows.end(), [&](const Row& a, const Row& b) {
        return sortForwards ? key(a) < key(b) : key(b) < key(a);
    });
}

int VideoListTableModel::rowOf(const juce::Component& cell)
{
    return static_cast<int>(cell.getProperties().getWithDefault(rowProperty, -1));
}

void VideoListTableModel::timecodeChanged(TcInput* input)
{
    if (input)
        setStart(rowOf(*input), input->getTimecode());
}

void VideoListTableModel::buttonClicked(juce::Button* button)
{
    if (button)
        setInUse(rowOf(*button), button->getToggleState());
}

} // namespace montala::gui
