#pragma once

#include "core/model/DataModel.h"
#include "core/events/EdlLoader.h"
#include "core/time/Framerate.h"
#include "host/Host.h"
#include "host/HostStatus.h"
#include "host/StringTranslator.h"
#include "util/Result.h"

#include "kelmar/base/IPtr.h"
#include "sim/services/SimHost.h"
#include "sim/project/SimProject.h"
#include "studio/RunSummaryText.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace montala::studio {

// Montala on the simulated host, brought up one of two ways, never both (two
// Hosts on one project would both answer its notices and store its block):
//
//   the module:  the real way. The simulated host loads Montala.so, whose
//                service builds the one Host and puts "Montala" into the
//                host's "Project" menu; the entry opens Montala's window
//                inside the program's window. The program reaches Montala
//                only through the host's services and HostStatusInterface.
//   built in:    one Host over the host's services, made here, and a
//                MainGui this program makes and drives itself: for the
//                command-line steps and the snapshots, which press the
//                window's buttons directly.
//
// Either way the Host adopts the projects already open and follows those
// opened later. Everything a user does in the program's menu goes through
// here, as a host would carry it out:
//
//   open:  session file -> new SimProject -> project manager opens it
//          -> Host::projectOpened/projectActivated -> the window hears of it
//   save:  SessionFile::save -> Host::projectSaving (the model's block goes
//          into the project) -> the file, written next to itself and swapped in
//   undo:  the host's "Edit" "Undo" action, on the active project's groups
//
// One project is open at a time; opening another closes the one before.
class Studio {
public:
    // `resourceFolder` holds translation.xml; a folder without it leaves the
    // texts in English. `language` is the host's application language
    // ("us", "de", ...), which Montala's texts follow.
    explicit Studio(const std::string& resourceFolder, const std::string& language = "us");
    // Montala from the module file `module`, loaded as a host loads it; null
    // with `error` naming the file when it does not come up.
    static std::unique_ptr<Studio> withModule(const std::string& module, const std::string& language,
                                              std::string& error);
    ~Studio();
    Studio(const Studio&) = delete;
    Studio& operator=(const Studio&) = delete;

    // A session file in place of the project open now; on failure `error`
    // names the file and line and the project open before stays.
    bool openSession(const std::string& path, std::string& error);
    // An empty project at `rate`, starting at 01:00:00:00, not yet saved.
    // InvalidArgument for an undefined rate.
    void newProject(const core::Framerate& rate);
    // Through the host's save: the model goes into the project, the file is
    // swapped in whole. The session's path becomes `path`.
    bool save(const std::string& path, std::string& error);
    // Where the session was read from or last saved to; empty for a new one.
    const std::string& sessionPath() const { return path; }
    // Some undo group closed (or was undone or redone) since the project was
    // opened or saved.
    bool isModified() const;

    // The host's undo list of the active project. Titles are empty when
    // there is nothing to undo or redo.
    std::string undoTitle() const;
    std::string redoTitle() const;
    bool undo();
    bool redo();

    // What a user does in the window, for runs driven from the command line.
    // Each is one undo step of the host, as in the window.
    core::EdlFileReport addEdl(int listKind, const std::string& file);
    util::Result::Type generate();
    // Asks for a conform; the next idle call runs it.
    util::Result::Type startConform();

    // One idle turn of the host: every idle handler, Montala's included.
    // Nothing while an idle turn is already under way further up the stack.
    void idle();
    // The run that the last idle turns carried out, once: nothing when no
    // run ended since it was last taken.
    std::optional<FinishedRun> takeFinishedRun();
    bool isRunPending() const { return status && status->isRunPending(); }
    bool isBusy() const { return status && status->isBusy(); }
    bool isPreviewActive() const { return status && status->isPreviewActive(); }
    // The change report of the active project as an HTML page; false with
    // `error` telling the user what to do first.
    bool changeReportHtml(const std::string& title, std::string& html, std::string& error) const;

    // ---- The host's menus, as plug-ins filled them (the module's "Montala")
    struct MenuEntry {
        std::string title;
        bool enabled = false;
    };
    std::vector<MenuEntry> menuEntries(const std::string& menu) const;
    // The user's click on an entry; false when nobody carried it out.
    bool clickMenu(const std::string& menu, const std::string& title);
    // The program's main window, where the module's windows open at (x, y)
    // with the given size, and keep that size as the program's window is
    // resized. Needs the X server of $DISPLAY; false without one.
    bool setWorkspace(unsigned long window, int x, int y, int width, int height);
    // Whether one of the module's windows is open.
    bool isModuleWindowOpen() const;

    bool hasModule() const { return !montala; }
    // The Host built in; NotInitialized with the module, whose Host is its own.
    host::Host& host() const;
    sim::SimHost& simHost() const { return *sim; }
    // The active project's model; null when none is open.
    core::DataModel* model() const;
    sim::SimProject* project() const { return current.get(); }

    // The rate names a user may give ("25", "29.97df", ...).
    static bool parseRate(const std::string& name, core::Framerate& rate);
    // The host's language key for a locale name such as "de_DE.UTF-8"
    // ("ja_JP" is "jp"); English ("us") for one the table does not have.
    static std::string languageOfLocale(const std::string& locale);
    // The language of the system, from LC_ALL, LC_MESSAGES or LANG.
    static std::string systemLanguage();

private:
    class EditWatch;

    struct Bare {};
    // The simulated host alone, in `language`; Montala not yet up.
    Studio(Bare, const std::string& language);
    void replaceProject(Kelmar::IPtr<sim::SimProject> next);

    Kelmar::IPtr<sim::SimHost> sim;
    Kelmar::IPtr<host::Host> montala; // built in only
    Kelmar::IPtr<host::HostStatusInterface> status;
    // The studio's own texts (a run's summary) through the host's table,
    // with the module: the module's Host sets the converter of the module's
    // copy of StringUtil only.
    std::unique_ptr<host::StringTranslator> texts;
    util::StringUtil::StringConverterInterface* previousTexts = nullptr;
    Kelmar::IPtr<EditWatch> watch;
    Kelmar::IPtr<sim::SimProject> current;
    std::string path;
    bool idling = false;
    std::optional<FinishedRun> finished;
};

} // namespace montala::studio
