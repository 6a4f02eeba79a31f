#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace montala::gui {
class MainGui;
}

namespace montala::studio {

class Studio;

// The entries of the program's menu bar, by the id the menu gives them.
enum MenuItem {
    OpenItem = 1,
    SaveItem,
    SaveAsItem,
    QuitItem,
    UndoItem,
    RedoItem,
    ReportItem,
    // The entries plug-ins put into the host's "Project" menu, from here on.
    FirstProjectItem = 100,
};

// The File, Edit and Project menus as they stand for the studio now: Undo
// and Redo carry the titles of the host's groups ("Undo Generate Change
// EDL") and are disabled with nothing to take back or do again; Project
// holds what the loaded module put there ("Montala"); nothing is enabled
// while a run holds the host. Each entry of File and Edit shows its key.
juce::PopupMenu buildMenu(Studio& studio, int index);

// The menu entry a key stands for: Ctrl+O open, Ctrl+S save, Ctrl+Shift+S
// save as, Ctrl+Z undo, Ctrl+Shift+Z or Ctrl+Y redo, Ctrl+Q quit (Cmd on a
// Mac). Nothing for any other key.
std::optional<MenuItem> menuItemForKey(const juce::KeyPress& key);
// Every key that menuItemForKey knows.
std::vector<juce::KeyPress> menuKeys();

// What a user is asked before unsaved changes would be lost, and what they
// chose. Asked only when there is something to lose.
enum class UnsavedChoice { Save, Discard, Cancel };

// The desktop window of montala-studio, the simulated host's main window,
// under a menu bar. With the module loaded its content is the host's
// workspace, where "Project" > "Montala" opens Montala's window; with
// Montala built in, the content is Montala's window itself, at the size of
// the skin. A timer gives the host its idle calls, which carry out the runs
// the window asks for. Quitting, and opening another session, ask first
// when the project has unsaved changes.
class StudioWindow : public juce::DocumentWindow, public juce::MenuBarModel, private juce::Timer {
public:
    // How the user is asked; a modal JUCE box unless replaced.
    using AskUnsaved = std::function<UnsavedChoice(const std::string& name)>;
    // How a session file is picked; empty when the user cancelled.
    using PickFile = std::function<std::string(bool forSaving)>;
    // How the summary of a finished run is shown; a message box the user
    // dismisses unless replaced.
    using ShowSummary = std::function<void(const std::string& title, const std::string& text)>;

    // `view` is the wired Montala window, built in; null with the module.
    // `onQuit` ends the program.
    StudioWindow(Studio& studio, std::unique_ptr<gui::MainGui> view, std::function<void()> onQuit);
    ~StudioWindow() override;

    void setAskUnsaved(AskUnsaved ask) { askUnsaved = std::move(ask); }
    void setPickFile(PickFile pick) { pickFile = std::move(pick); }
    void setShowSummary(ShowSummary show) { showSummary = std::move(show); }

    // The built-in Montala window; NotInitialized with the module.
    gui::MainGui& view();
    // What a modal box of the host blocks: Montala's window or the workspace.
    juce::Component& content() { return *getContentComponent(); }

    juce::StringArray getMenuBarNames() override;
    juce::PopupMenu getMenuForIndex(int index, const juce::String& name) override;
    void menuItemSelected(int itemId, int menuIndex) override;

    void closeButtonPressed() override;
    // The menu's keys, when the window's content has not taken them.
    bool keyPressed(const juce::KeyPress& key) override;
    // One turn of the host's idle calls, and the summary of a run that ended.
    void idle();

    // The menu's entries, also for the keys and the tests.
    bool open();
    bool save();
    bool saveAs();
    // Quits unless the user keeps the project; true when it quit.
    bool quit();
    bool undo();
    bool redo();
    // Writes the change report as HTML and opens it in the browser, or says
    // why there is none yet.
    void openChangeReport();

    // "Montala - short-film-25.json *": the session, and a star for unsaved
    // changes.
    std::string windowTitle() const;

private:
    class Workspace;

    void timerCallback() override;
    void reportFinishedRun();
    // Saves or discards what would be lost; false when the user keeps it.
    bool settleUnsaved();
    void refresh();
    void showError(const std::string& message);

    Studio& studio;
    std::unique_ptr<gui::MainGui> montalaView;
    std::unique_ptr<Workspace> workspace; // with the module
    std::function<void()> onQuit;
    AskUnsaved askUnsaved;
    PickFile pickFile;
    ShowSummary showSummary;
    // A preview is reported when it starts, not on every selection that
    // moves it: set after the first preview's summary, cleared when the
    // preview ends.
    bool previewReported = false;
    // What the menu showed when it was last built; rebuilt only on a change.
    std::string menuState;
};

} // namespace montala::studio
