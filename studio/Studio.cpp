#include "studio/Studio.h"

#include "core/model/DataModelChangeScope.h"
#include "core/time/FramerateNames.h"
#include "host/Project.h"
#include "util/StringUtil.h"

#include <chrono>
#include <cstdlib>

#include "kelmar/base/IPluginBase.h"
#include "kelmar/edit/IProjectEditHook.h"
#include "kelmar/project/IProjectNotification.h"
#include "kelmar/base/String.h"
#include "sim/session/SessionFile.h"
#include "sim/services/SimActionManager.h"
#include "sim/services/SimMenuRegistry.h"
#include "sim/services/SimSkinService.h"
#include "sim/project/SimProjectManager.h"
#include "sim/services/SimTranslationService.h"

namespace montala::studio {

using util::Result;

// Hears of every undo group of the host that closes, is undone or redone: a
// change the user would lose by quitting. A notification of the project
// manager, as Host is, so that it sees exactly what Host sees.
class Studio::EditWatch : public Kelmar::FObject,
                          public Kelmar::IProjectNotification,
                          public Kelmar::IProjectEditHook {
public:
    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override
    {
        if (Kelmar::answerInterface<Kelmar::IProjectNotification>(this, iid, obj)
            || Kelmar::answerInterface<Kelmar::IProjectEditHook>(this, iid, obj))
            return Kelmar::kResultOk;
        return FObject::queryInterface(iid, obj);
    }
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult projectActivated(Kelmar::IProject*) override { return Kelmar::kResultOk; }
    Kelmar::tresult projectDeactivated(Kelmar::IProject*) override { return Kelmar::kResultOk; }
    Kelmar::tresult projectOpened(Kelmar::IProject*) override { return Kelmar::kResultOk; }
    Kelmar::tresult projectClosed(Kelmar::IProject*) override { return Kelmar::kResultOk; }
    Kelmar::tresult projectRenamed(Kelmar::IProject*) override { return Kelmar::kResultOk; }
    Kelmar::tresult projectEdited(Kelmar::IProject*, Kelmar::IProjectEdit*) override
    {
        modified = true;
        return Kelmar::kResultOk;
    }

    bool modified = false;
};

Studio::Studio(Bare, const std::string& language) : sim(sim::SimHost::create())
{
    sim->translation().setLanguage(language);
    watch = Kelmar::owned(new EditWatch);
    sim->projectManager().addNotification(watch.get());
}

Studio::Studio(const std::string& resourceFolder, const std::string& language) : Studio(Bare{}, language)
{
    sim->setResourceFolder(resourceFolder);
    // As the plug-in does on start-up; without the table the texts stay English.
    sim->translation().loadTable(nullptr, "translation.xml", "Montala");
    montala = Kelmar::owned(new host::Host(sim.get()));
    status = Kelmar::owned(new host::HostStatus(*montala));
}

std::unique_ptr<Studio> Studio::withModule(const std::string& module, const std::string& language,
                                           std::string& error)
{
    std::unique_ptr<Studio> studio(new Studio(Bare{}, language));
    if (!studio->sim->loadModule(module, error))
        return nullptr;
    studio->status = Kelmar::queryInterface<host::HostStatusInterface>(studio->sim->plugin());
    if (!studio->status) {
        error = module + ": its service does not tell how its runs went";
        return nullptr;
    }
    studio->texts = std::make_unique<host::StringTranslator>(studio->sim.get());
    studio->previousTexts = util::StringUtil::getStringConverter();
    util::StringUtil::setStringConverter(studio->texts.get());
    return studio;
}

Studio::~Studio()
{
    // Montala goes before the host it was built over, as in a host shutting
    // down a plug-in; the module's service goes with the host's shutdown.
    sim->projectManager().removeNotification(watch.get());
    if (texts && util::StringUtil::getStringConverter() == texts.get())
        util::StringUtil::setStringConverter(previousTexts);
    status.reset();
    montala.reset();
    current.reset();
    sim->shutdown();
}

host::Host& Studio::host() const
{
    if (!montala)
        throw Result::NotInitialized;
    return *montala;
}

bool Studio::changeReportHtml(const std::string& title, std::string& html, std::string& error) const
{
    if (!current || !status) {
        error = "Open a session first.";
        return false;
    }
    return status->changeReportHtml(title, html, error);
}

std::vector<Studio::MenuEntry> Studio::menuEntries(const std::string& menu) const
{
    std::vector<MenuEntry> found;
    for (const sim::SimMenuRegistry::Entry& entry : sim->menus().entries())
        if (entry.menu == menu)
            found.push_back({Kelmar::String::utf16ToUtf8(entry.title),
                             sim->actionManager().isEnabled(entry.category, entry.action)});
    return found;
}

bool Studio::clickMenu(const std::string& menu, const std::string& title)
{
    return sim->menus().click(menu, Kelmar::String::utf8ToUtf16(title)) == Kelmar::kResultOk;
}

bool Studio::setWorkspace(unsigned long window, int x, int y, int width, int height)
{
    if (!sim->openDisplay())
        return false;
    sim->setWorkspace(window, x, y);
    for (const Kelmar::IPtr<sim::SimPlugWindow>& opened : sim->skins().windows())
        if (opened->isOpen())
            opened->resize(width, height);
    return true;
}

bool Studio::isModuleWindowOpen() const
{
    return sim->skins().openWindowCount() > 0;
}

void Studio::replaceProject(Kelmar::IPtr<sim::SimProject> next)
{
    sim::SimProjectManager& manager = sim->projectManager();
    if (current)
        manager.closeProject(current.get());
    current = std::move(next);
    manager.openProject(current);
    watch->modified = false;
}

bool Studio::openSession(const std::string& file, std::string& error)
{
    Kelmar::IPtr<sim::SimProject> next = sim::SessionFile::load(*sim, file, error);
    if (!next)
        return false;
    replaceProject(std::move(next));
    path = file;
    return true;
}

void Studio::newProject(const core::Framerate& rate)
{
    if (rate.isUndefined())
        throw Result::InvalidArgument;
    sim::SimFrameRate simRate;
    simRate.fps = rate.fps;
    simRate.pullDown = rate.pulled;
    simRate.dropFrame = rate.dropMode == 1;
    Kelmar::IPtr<sim::SimProject> next = sim::SimProject::create(*sim, u"Untitled");
    next->initSettings(simRate, 3600.0);
    replaceProject(std::move(next));
    path.clear();
}

bool Studio::save(const std::string& file, std::string& error)
{
    if (!current) {
        error = "no project is open";
        return false;
    }
    if (!sim::SessionFile::save(*current, file, error))
        return false;
    path = file;
    watch->modified = false;
    return true;
}

bool Studio::isModified() const
{
    return watch->modified;
}

std::string Studio::undoTitle() const
{
    return current ? Kelmar::String::utf16ToUtf8(current->undoTitle()) : std::string();
}

std::string Studio::redoTitle() const
{
    return current ? Kelmar::String::utf16ToUtf8(current->redoTitle()) : std::string();
}

bool Studio::undo()
{
    if (!current || !current->canUndo())
        return false;
    return sim->actionManager().invoke("Edit", "Undo") == Kelmar::kResultOk;
}

bool Studio::redo()
{
    if (!current || !current->canRedo())
        return false;
    return sim->actionManager().invoke("Edit", "Redo") == Kelmar::kResultOk;
}

core::DataModel* Studio::model() const
{
    // With the module the model is the module's: only its own code reads it.
    host::Project* active = montala ? montala->getActiveProject() : nullptr;
    return active ? &active->getDataModel() : nullptr;
}

core::EdlFileReport Studio::addEdl(int listKind, const std::string& file)
{
    host::Project* active = host().getActiveProject();
    if (!active)
        throw Result::NoProject;
    core::ScopedFramerateProvider provider(active);
    core::DataModel& data = active->getDataModel();
    core::EventList& list = listKind == core::EventList::OldKind   ? data.getOldList()
                            : listKind == core::EventList::NewKind ? data.getNewList()
                                                                   : data.getChangeList();
    core::DataModelChangeScope scope("Add EDL");
    core::EdlLoader loader({file}, core::EdlLoadOptions{});
    return loader.load(0, list);
}

Result::Type Studio::generate()
{
    host::Project* active = host().getActiveProject();
    if (!active)
        return Result::NoProject;
    core::ScopedFramerateProvider provider(active);
    core::DataModel& data = active->getDataModel();
    core::DataModelChangeScope scope("Generate Change EDL");
    data.applyVfxPatterns();
    return data.generateChangeEdl();
}

Result::Type Studio::startConform()
{
    return host().startConform();
}

void Studio::idle()
{
    // A run shows its progress window, whose face lets the message thread
    // draw: a timer's idle call from in there must not start the run again.
    if (idling)
        return;
    idling = true;
    // What the window showed when the run was asked for, for its summary.
    const bool runPending = isRunPending();
    FinishedRun run;
    if (runPending) {
        if (const core::Framerate rate = status->activeRate(); !rate.isUndefined()) {
            run.rateName = core::rateName(rate);
            run.changeEvents = status->changeEventCount();
        }
    }
    const auto start = std::chrono::steady_clock::now();
    try {
        sim->runIdle();
    } catch (...) {
        idling = false;
        throw;
    }
    idling = false;
    if (runPending && !isRunPending())
        run.summary = status->lastRun();
    if (run.summary.kind != host::RunSummary::Kind::None) {
        run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        finished = std::move(run);
    }
}

std::optional<FinishedRun> Studio::takeFinishedRun()
{
    std::optional<FinishedRun> taken = std::move(finished);
    finished.reset();
    return taken;
}

std::string Studio::languageOfLocale(const std::string& locale)
{
    // The host's keys are its own: Japanese is "jp", English "us".
    static const std::pair<const char*, const char*> keys[] = {{"de", "de"}, {"fr", "fr"}, {"es", "es"},
                                                               {"it", "it"}, {"pt", "pt"}, {"ja", "jp"},
                                                               {"zh", "zh"}, {"ru", "ru"}};
    const std::string language = locale.substr(0, locale.find_first_of("_.@"));
    for (const auto& [code, key] : keys)
        if (language == code)
            return key;
    return "us";
}

std::string Studio::systemLanguage()
{
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value && *value)
            return languageOfLocale(value);
    }
    return "us";
}

bool Studio::parseRate(const std::string& name, core::Framerate& rate)
{
    const std::optional<core::Framerate> parsed = core::parseRateName(name);
    if (!parsed)
        return false;
    rate = *parsed;
    return true;
}

} // namespace montala::studio
