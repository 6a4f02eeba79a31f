#pragma once

#include "core/events/VideoList.h"
#include "core/services/MediaPoolInterface.h"
#include "core/time/Timecode.h"
#include "gui/TcInput.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <string>
#include <vector>

namespace montala::gui {

// The pool's videos as the new videos dialog lists them: each with its
// length, the start on the new timeline and whether it is one of the new
// cut's videos ("in use": the video list has it). Turning "Use as New Video"
// on puts the video into the list at the row's start, off takes it out; a
// start typed into a row in use moves its entry.
class VideoListTableModel : public juce::TableListBoxModel,
                            public core::MediaPoolInterface::Listener,
                            public TcInput::Listener,
                            public juce::Button::Listener {
public:
    enum Column { NameColumn = 1, UseColumn = 2, StartColumn = 3, LengthColumn = 4 };

    struct Row {
        std::string name; // the clip's file name, which the video list goes by
        std::string path;
        core::Timecode start;
        core::Timecode length;
        bool inUse = false;
    };

    // All borrowed; the model follows the pool until it goes.
    VideoListTableModel(juce::TableListBox& table, core::MediaPoolInterface& pool, core::VideoList& list);
    ~VideoListTableModel() override;

    // Where a video not yet in use would start: the project's start.
    void setProjectStart(double seconds);
    const std::vector<Row>& getRows() const { return rows; }
    // Reads the pool and the video list again, keeping the sort.
    void rebuild();
    // What the row's toggle and start input do.
    void setInUse(int row, bool on);
    void setStart(int row, const core::Timecode& start);

    static juce::String columnName(int column);

    int getNumRows() override { return static_cast<int>(rows.size()); }
    void paintRowBackground(juce::Graphics& g, int row, int width, int height, bool selected) override;
    void paintCell(juce::Graphics& g, int row, int column, int width, int height, bool selected) override;
    juce::Component* refreshComponentForCell(int row, int column, bool selected, juce::Component* existing) override;
    void sortOrderChanged(int column, bool forwards) override;

    void poolChanged() override { rebuild(); }
    void timecodeChanged(TcInput* input) override;
    void buttonClicked(juce::Button* button) override;

private:
    void sortRows();
    static int rowOf(const juce::Component& cell);

    juce::TableListBox& table;
    core::MediaPoolInterface& pool;
    core::VideoList& list;
    std::vector<Row> rows;
    core::Timecode defaultStart = core::Timecode::zero();
    int sortColumn = NameColumn;
    bool sortForwards = true;
};

} // namespace montala::gui
