#pragma once

#include "core/events/EventList.h"
#include "core/time/Timecode.h"
#include "gui/TcInput.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <array>
#include <map>
#include <memory>
#include <string>

namespace montala::core {
class DataModel;
}

namespace montala::gui {

// The Add EDLs overlay: it gathers one or more EDL files for the Old, New or
// Change list, shows where they lie, lets the user shift them, and on "Ok"
// adds them to the list as one undo step.
//
//   +------------- Add EDL to New List -------------+
//   | File           SRC IN  SRC OUT  DST IN  ...    | [...]
//   | reel1.edl      ...                             |
//   |                                                |
//   | (SRC IN  SRC OUT  SRC Offset)  DST IN  DST OUT |
//   |                                DST Offset [tc] |
//   |                                  [Ok] [Cancel] |
//   +------------------------------------------------+
//
// The SRC side is shown for a Change EDL only: an Old or New EDL's source
// side is tape time, which no conform moves. An offset that would move the
// files out of the day is rewritten to the largest shift that fits.
class FileDialog : public juce::Component, public TcInput::Listener, public juce::Button::Listener {
public:
    // The range labels, in the order the overlay shows them.
    enum RangeLabel { SrcIn = 0, SrcOut = 1, DstIn = 2, DstOut = 3 };

    FileDialog();
    ~FileDialog() override;

    // Not owned; null empties the overlay. The last folder browsed comes
    // from the model, else `projectFolder` (a project file names its folder).
    void setup(core::DataModel* model, const std::string& projectFolder);
    void openForOld();
    void openForNew();
    void openForChange();

    // Shows the SRC side only for a Change EDL.
    void setVisible(bool shouldBeVisible) override;
    void paint(juce::Graphics& g) override;
    void resized() override;
    void buttonClicked(juce::Button* button) override;
    void timecodeChanged(TcInput* input) override;

    // Asks the file dialog for EDL files and reads them; see the class comment.
    void browse();

    // The parts, for the window and for tests.
    int getListKind() const { return listKind; }
    size_t getFileCount() const { return files.size(); }
    juce::String getHeading() const { return heading.getText(); }
    juce::String getFileListText() const { return fileList.getText(); }
    juce::String getRangeText(RangeLabel which) const { return rangeValues[which]->getText(); }
    TcInput& getSrcOffset() { return srcOffset; }
    TcInput& getDstOffset() { return dstOffset; }
    juce::Button& getBrowseButton() { return browseButton; }
    juce::Button& getOkButton() { return okButton; }
    juce::Button& getCancelButton() { return cancelButton; }
    const juce::File& getLastFolder() const { return lastFolder; }

private:
    void open(int kind);
    // Adds the gathered files to the list, then resets.
    void accept();
    // Hides the overlay, drops the files, zeroes offsets and labels.
    void reset();
    // Reads one file into files; false when the user chose "Abort".
    bool read(const std::string& path, std::map<std::string, std::unique_ptr<core::EventList>>& gathered);
    void showFiles();
    // The labels of one side from its range and offset; an offset that would
    // leave the day is rewritten first.
    void showSide(core::EventList::RangeKind side);
    juce::Rectangle<int> panelBounds() const;

    core::DataModel* dataModel = nullptr;
    int listKind = core::EventList::OldKind;
    std::map<std::string, std::unique_ptr<core::EventList>> files;
    // The span of all gathered files per side, in frames; no value while
    // no file holds a usable event.
    struct Span {
        bool known = false;
        int in = 0;
        int out = 0;
    };
    std::array<Span, 2> spans;
    juce::File lastFolder;

    juce::Label heading;
    juce::TextEditor fileList{"EDL File List"};
    juce::TextButton browseButton{"Browse Button"};
    std::array<std::unique_ptr<juce::Label>, 4> rangeCaptions;
    std::array<std::unique_ptr<juce::Label>, 4> rangeValues;
    juce::Label srcOffsetCaption{"SRC Offset Label"};
    juce::Label dstOffsetCaption{"DST Offset Label"};
    TcInput srcOffset;
    TcInput dstOffset;
    juce::TextButton okButton{"Ok Button"};
    juce::TextButton cancelButton{"Cancel Button"};

    JUCE_DECLARE_NON_COPYABLE_WITH_LEAK_DETECTOR(FileDialog)
};

} // namespace montala::gui
