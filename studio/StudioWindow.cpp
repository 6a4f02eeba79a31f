#include "studio/StudioWindow.h"

#include "core/model/DataModel.h"
#include "gui/MainGui.h"
#include "gui/Palette.h"
#include "studio/ChangeReportPage.h"
#include "studio/RunSummaryText.h"
#include "studio/Steps.h"
#include "studio/Studio.h"

#include <filesystem>
#include <iostream>

namespace montala::studio {

namespace {

// Often enough that a click on Start Montala is carried out at once to the
// eye, seldom enough to cost nothing while the window waits.
constexpr int idleIntervalMs = 40;

juce::String text(const std::string& utf8)
{
    return juce::String::fromUTF8(utf8.c_str());
}

std::string sessionName(const Studio& studio)
{
    return studio.sessionPath().empty() ? std::string("Untitled")
                                        : std::filesystem::path(studio.sessionPath()).filename().string();
}

UnsavedChoice askInWindow(const std::string& name)
{
    const int answer = juce::AlertWindow::showYesNoCancelBox(
        juce::MessageBoxIconType::QuestionIcon, "Montala",
        text("Save the changes to " + name + " before they are lost?"), "Save", "Don't Save", "Cancel", nullptr,
        nullptr);
    return answer == 1 ? UnsavedChoice::Save : answer == 2 ? UnsavedChoice::Discard : UnsavedChoice::Cancel;
}

// Starts in the folder of the session open now, where its EDLs and earlier
// versions usually lie.
std::string pickInWindow(bool forSaving, const std::string& sessionPath)
{
    const juce::File start = sessionPath.empty() ? juce::File::getCurrentWorkingDirectory()
                                                 : juce::File(text(sessionPath)).getParentDirectory();
    juce::FileChooser chooser(forSaving ? "Save Session" : "Open Session", start, "*.json", false);
    const bool chosen = forSaving ? chooser.browseForFileToSave(true) : chooser.browseForFileToOpen();
    return chosen ? chooser.getResult().getFullPathName().toStdString() : std::string();
}

// The summary in a box the user dismisses, and on the console too, where a
// run's facts can be kept or compared with what `montala conform` printed.
void showInWindow(const std::string& title, const std::string& message)
{
    std::cout << title << "\n" << message << "\n" << std::flush;
    juce::AlertWindow::showMessageBox(juce::MessageBoxIconType::InfoIcon, text(title), text(message));
}

// The keys of the menu's entries, with the command key of the platform.
juce::KeyPress keyOf(MenuItem item)
{
    const int command = juce::ModifierKeys::commandModifier;
    const int shift = juce::ModifierKeys::shiftModifier;
    switch (item) {
    case OpenItem:
        return juce::KeyPress('o', command, 0);
    case SaveItem:
        return juce::KeyPress('s', command, 0);
    case SaveAsItem:
        return juce::KeyPress('s', command | shift, 0);
    case QuitItem:
        return juce::KeyPress('q', command, 0);
    case UndoItem:
        return juce::KeyPress('z', command, 0);
    case ReportItem:
        return juce::KeyPress('r', command | shift, 0);
    case RedoItem:
        return juce::KeyPress('z', command | shift, 0);
    case FirstProjectItem:
        // Plug-ins' entries bring no key of the studio's.
        break;
    }
    return {};
}

void addEntry(juce::PopupMenu& menu, MenuItem item, const juce::String& name, bool enabled)
{
    juce::PopupMenu::Item entry(name);
    entry.itemID = item;
    entry.isEnabled = enabled;
    entry.shortcutKeyDescription = keyOf(item).getTextDescriptionWithIcons();
    menu.addItem(std::move(entry));
}

} // namespace

juce::PopupMenu buildMenu(Studio& studio, int index)
{
    const bool idle = !studio.isBusy();
    juce::PopupMenu menu;
    if (index == 0) {
        addEntry(menu, OpenItem, "Open Session...", idle);
        addEntry(menu, SaveItem, "Save Session", idle && studio.project() != nullptr);
        addEntry(menu, SaveAsItem, "Save Session As...", idle && studio.project() != nullptr);
        addEntry(menu, ReportItem, "Open Change Report", idle && studio.project() != nullptr);
        menu.addSeparator();
        addEntry(menu, QuitItem, "Quit", idle);
    } else if (index == 2) {
        int id = FirstProjectItem;
        for (const Studio::MenuEntry& entry : studio.menuEntries("Project")) {
            juce::PopupMenu::Item item(text(entry.title));
            item.itemID = id++;
            item.isEnabled = idle && entry.enabled;
            menu.addItem(std::move(item));
        }
    } else if (index == 1) {
        const std::string undoTitle = studio.undoTitle();
        const std::string redoTitle = studio.redoTitle();
        addEntry(menu, UndoItem, undoTitle.empty() ? juce::String("Undo") : text("Undo " + undoTitle),
                 idle && !undoTitle.empty());
        addEntry(menu, RedoItem, redoTitle.empty() ? juce::String("Redo") : text("Redo " + redoTitle),
                 idle && !redoTitle.empty());
    }
    return menu;
}

std::vector<juce::KeyPress> menuKeys()
{
    std::vector<juce::KeyPress> keys;
    for (MenuItem item : {OpenItem, SaveItem, SaveAsItem, QuitItem, UndoItem, RedoItem, ReportItem})
        keys.push_back(keyOf(item));
    keys.push_back(juce::KeyPress('y', juce::ModifierKeys::commandModifier, 0));
    return keys;
}

std::optional<MenuItem> menuItemForKey(const juce::KeyPress& key)
{
    for (MenuItem item : {OpenItem, SaveItem, SaveAsItem, QuitItem, UndoItem, RedoItem, ReportItem})
        if (key == keyOf(item))
            return item;
    if (key == juce::KeyPress('y', juce::ModifierKeys::commandModifier, 0))
        return RedoItem;
    return std::nullopt;
}

// The host's workspace: the area of the main window where the module's
// windows open. It tells the host where that area is on the X server each
// time it moves, changes size or comes on screen.
class StudioWindow::Workspace : public juce::Component {
public:
    explicit Workspace(Studio& studio) : studio(studio) { setOpaque(true); }

    void place()
    {
        juce::ComponentPeer* peer = getPeer();
        if (!peer)
            return;
        // On Linux a peer's native handle is its X11 window id, which the
        // host hands the view as its parent; on Windows it would be an HWND.
        const juce::Point<int> at = peer->getComponent().getLocalPoint(this, juce::Point<int>());
        const auto window = reinterpret_cast<juce::pointer_sized_uint>(peer->getNativeHandle());
        studio.setWorkspace(static_cast<unsigned long>(window), at.x, at.y, getWidth(), getHeight());
    }

    void paint(juce::Graphics& g) override
    {
        g.fillAll(gui::palette::window);
        g.setColour(gui::palette::window.contrasting(0.5f));
        g.setFont(16.0f);
        g.drawText("Project > Montala opens Montala's window", getLocalBounds(), juce::Justification::centred);
    }
    void resized() override { place(); }
    void parentHierarchyChanged() override { place(); }

private:
    Studio& studio;
};

StudioWindow::StudioWindow(Studio& studio, std::unique_ptr<gui::MainGui> view, std::function<void()> onQuit)
    : juce::DocumentWindow("Montala", gui::palette::window, juce::DocumentWindow::allButtons, true),
      studio(studio), montalaView(std::move(view)), onQuit(std::move(onQuit)), askUnsaved(askInWindow),
      pickFile([&studio](bool forSaving) { return pickInWindow(forSaving, studio.sessionPath()); }),
      showSummary(showInWindow)
{
    setUsingNativeTitleBar(true);
    setMenuBar(this);
    if (montalaView) {
        setContentNonOwned(montalaView.get(), true);
    } else {
        workspace = std::make_unique<Workspace>(studio);
        workspace->setSize(gui::MainGui::defaultWidth, gui::MainGui::defaultHeight);
        setContentNonOwned(workspace.get(), true);
    }
    // The skin's limits: never smaller than 1150 x 750.
    setResizable(true, false);
    setResizeLimits(1150, 750 + getMenuBarComponent()->getHeight(), 10000, 10000);
    centreWithSize(getWidth(), getHeight());
    refresh();
    startTimer(idleIntervalMs);
}

StudioWindow::~StudioWindow()
{
    stopTimer();
    setMenuBar(nullptr);
    clearContentComponent();
    if (montalaView)
        ViewWiring::unwire(*montalaView);
}

gui::MainGui& StudioWindow::view()
{
    if (!montalaView)
        throw util::Result::NotInitialized;
    return *montalaView;
}

juce::StringArray StudioWindow::getMenuBarNames()
{
    if (workspace)
        return {"File", "Edit", "Project"};
    return {"File", "Edit"};
}

juce::PopupMenu StudioWindow::getMenuForIndex(int index, const juce::String&)
{
    return buildMenu(studio, index);
}

void StudioWindow::menuItemSelected(int itemId, int)
{
    switch (itemId) {
    case OpenItem:
        open();
        break;
    case SaveItem:
        save();
        break;
    case SaveAsItem:
        saveAs();
        break;
    case QuitItem:
        quit();
        break;
    case UndoItem:
        undo();
        break;
    case RedoItem:
        redo();
        break;
    case ReportItem:
        openChangeReport();
        break;
    default:
        if (itemId >= FirstProjectItem && workspace && !studio.isBusy()) {
            const std::vector<Studio::MenuEntry> entries = studio.menuEntries("Project");
            const size_t index = static_cast<size_t>(itemId - FirstProjectItem);
            if (index < entries.size()) {
                workspace->place();
                studio.clickMenu("Project", entries[index].title);
            }
        }
        break;
    }
}

void StudioWindow::openChangeReport()
{
    std::string error;
    const std::string page = writeChangeReportPage(studio, error);
    if (page.empty())
        juce::AlertWindow::showMessageBoxAsync(juce::MessageBoxIconType::InfoIcon, "Montala", text(error));
    else
        juce::URL(juce::File(text(page))).launchInDefaultBrowser();
}

void StudioWindow::closeButtonPressed()
{
    quit();
}

bool StudioWindow::keyPressed(const juce::KeyPress& key)
{
    const std::optional<MenuItem> item = menuItemForKey(key);
    if (!item)
        return juce::DocumentWindow::keyPressed(key);
    menuItemSelected(*item, 0);
    return true;
}

bool StudioWindow::open()
{
    if (studio.isBusy() || !settleUnsaved())
        return false;
    const std::string file = pickFile(false);
    if (file.empty())
        return false;
    std::string error;
    const bool opened = studio.openSession(file, error);
    if (!opened)
        showError(error);
    refresh();
    return opened;
}

bool StudioWindow::save()
{
    if (studio.sessionPath().empty())
        return saveAs();
    std::string error;
    const bool saved = studio.save(studio.sessionPath(), error);
    if (!saved)
        showError(error);
    refresh();
    return saved;
}

bool StudioWindow::saveAs()
{
    const std::string file = pickFile(true);
    if (file.empty())
        return false;
    std::string error;
    const bool saved = studio.save(file, error);
    if (!saved)
        showError(error);
    refresh();
    return saved;
}

bool StudioWindow::quit()
{
    if (studio.isBusy() || !settleUnsaved())
        return false;
    stopTimer();
    if (onQuit)
        onQuit();
    return true;
}

bool StudioWindow::undo()
{
    const bool done = !studio.isBusy() && studio.undo();
    refresh();
    return done;
}

bool StudioWindow::redo()
{
    const bool done = !studio.isBusy() && studio.redo();
    refresh();
    return done;
}

std::string StudioWindow::windowTitle() const
{
    return "Montala - " + sessionName(studio) + (studio.isModified() ? " *" : "");
}

bool StudioWindow::settleUnsaved()
{
    if (!studio.isModified())
        return true;
    switch (askUnsaved(sessionName(studio))) {
    case UnsavedChoice::Save:
        return save();
    case UnsavedChoice::Discard:
        return true;
    case UnsavedChoice::Cancel:
        break;
    }
    return false;
}

void StudioWindow::timerCallback()
{
    if (studio.isBusy())
        return;
    idle();
}

void StudioWindow::idle()
{
    studio.idle();
    refresh();
    reportFinishedRun();
}

void StudioWindow::reportFinishedRun()
{
    if (!studio.isPreviewActive())
        previewReported = false;
    const std::optional<FinishedRun> run = studio.takeFinishedRun();
    if (!run)
        return;
    if (run->summary.kind == host::RunSummary::Kind::Preview) {
        if (previewReported && run->summary.result == util::Result::Ok)
            return;
        previewReported = true;
    }
    // Shown after this turn of the timer, so that the box's own message loop
    // does not run inside the timer's callback.
    juce::Component::SafePointer<StudioWindow> window(this);
    const std::string title = summaryTitle(*run);
    const std::string message = summaryText(*run);
    juce::MessageManager::callAsync([window, title, message] {
        if (window && window->showSummary)
            window->showSummary(title, message);
    });
}

void StudioWindow::refresh()
{
    const juce::String title = text(windowTitle());
    if (getName() != title)
        setName(title);
    const std::string state = studio.undoTitle() + '\n' + studio.redoTitle() + '\n'
                              + (studio.isBusy() ? "busy" : "idle") + (studio.project() ? " open" : "");
    if (state != menuState) {
        menuState = state;
        menuItemsChanged();
    }
}

void StudioWindow::showError(const std::string& message)
{
    juce::AlertWindow::showMessageBox(juce::MessageBoxIconType::WarningIcon, "Montala", text(message));
}

} // namespace montala::studio
