#pragma once

#include "kelmar/project/IProject.h"
#include "kelmar/project/IProjectSettings.h"
#include "sim/project/SimFrameRate.h"
#include "sim/project/SimObject.h"

#include <memory>
#include <string>
#include <vector>

namespace Kelmar {
class IProjectStorageNotification;
}

namespace montala::sim {

class SimEditGroup;
class SimFailures;
class SimHost;
class SimMediaPool;

// How a change is kept for undo when no group is open (see SimHost).
enum class ChangeKind {
    Toggle,    // a track's lock: not recorded outside a group
    Setting,   // an attribute, the project's length: not recorded outside a group
    Structure, // anything else: an undo step of its own outside a group
};

// One project of the simulated host: the root node of the track tree, its
// time settings, locators, transport state, media pool and undo list.
class SimProject : public SimObject, public Kelmar::IProject, public Kelmar::IProjectSettings {
public:
    // A project of `host`, not yet open: changes are not recorded until the
    // project manager opens it.
    static Kelmar::IPtr<SimProject> create(SimHost& host, std::u16string name);

    ~SimProject() override;

    // ---- Kelmar::FUnknown
    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT
    const char* isA() const override { return "SimProject"; }

    // ---- Kelmar::IProject
    Kelmar::IDocument* getDocument() override;
    Kelmar::IMediaPool* getMediaPool() override;
    Kelmar::IProjectObject* getDefaultMarkerTrack() override;
    Kelmar::IParameterContainer* getLocators() override;
    Kelmar::IEditContext* getEditContext(Kelmar::IProjectObject* container) override;
    Kelmar::IProjectObject* createTrack(const Kelmar::char8* kind) override;
    Kelmar::tresult addStorageNotification(Kelmar::IProjectStorageNotification* notification) override;
    Kelmar::tresult removeStorageNotification(Kelmar::IProjectStorageNotification* notification) override;
    Kelmar::tresult setProjectLength(double length) override;

    // ---- Kelmar::IProjectSettings
    Kelmar::tresult getFrameRate(FrameRate& rate) override;
    double getProjectStart() override { return startSeconds; }

    // ---- The simulator's side
    SimHost& host() const { return *hostObject; }
    SimMediaPool& mediaPool() const { return *pool; }
    // The host's failure plan; kept here too, as a project may outlive its host.
    SimFailures& failures() const { return *failurePlan; }
    const std::shared_ptr<SimFailures>& failurePlanShared() const { return failurePlan; }

    // Changing the rate or the start tells the project's dependents
    // (IDependent::update with an IProjectSettingsChange).
    const SimFrameRate& frameRate() const { return rate; }
    void setFrameRate(const SimFrameRate& rate);
    void setProjectStart(double absoluteSeconds);
    // Set both without telling anyone, while a session is being read.
    void initSettings(const SimFrameRate& rate, double absoluteSeconds);

    double length() const { return get().end; }
    const std::u16string& documentPath() const { return document; }
    // Relative paths of the media pool are read from the document's folder.
    void setDocumentPath(std::u16string path);

    // Locators, cursor and cycle are host times; they are not undoable.
    double leftLocator = 0.0;
    double rightLocator = 0.0;
    double cursor = 0.0;
    bool playing = false;
    double cycleLeft = 0.0;
    double cycleRight = 0.0;
    bool cycleOn = false;

    // The group that a change of this kind is recorded in: the host's open
    // group, if it belongs to this project; with none, a structural change
    // goes into a new group put on the undo list at once, and the others are
    // not recorded (null). Null too while the project is not open.
    SimEditGroup* recordingGroup(ChangeKind change);
    void setRecording(bool on) { recording = on; }
    bool isRecording() const { return recording; }

    // The undo list: groups before `undoPosition` are done, those after it
    // undone and ready for redo.
    void commitGroup(std::unique_ptr<SimEditGroup> group);
    bool canUndo() const { return undoPosition > 0; }
    bool canRedo() const { return undoPosition < history.size(); }
    // Takes back (or does again) the last group; false when there is none.
    // What changed is marked in `marks`.
    bool undo(SimEditGroup& marks);
    bool redo(SimEditGroup& marks);
    std::size_t undoCount() const { return undoPosition; }
    // Title of the group that the next undo takes back.
    std::u16string undoTitle() const;
    // Title of the group that the next redo does again.
    std::u16string redoTitle() const;
    // Forgets the undo list, and with it the nodes that only the list still
    // held (what the edits replaced): nothing is left to undo or redo.
    void clearHistory();

    // finishRange calls, as the simulator recorded them.
    struct FinishRangeCall {
        std::vector<Kelmar::IPtr<SimObject>> tracks;
        double start = 0.0;
        double end = 0.0;
    };
    std::vector<FinishRangeCall> finishRangeCalls;

    const std::vector<Kelmar::IProjectStorageNotification*>& storageNotifications() const { return storage; }

    // All tracks of the tree, depth first, folders included.
    std::vector<SimObject*> allTracks();
    // The first track of that name, depth first; null if none.
    SimObject* findTrack(std::u16string_view name);

    // What the nodes bound to this project hold of it.
    ProjectLink* link() const { return nodesLink; }

private:
    SimProject(SimHost& host, std::u16string name);

    SimHost* hostObject;
    std::shared_ptr<SimFailures> failurePlan;
    Kelmar::IPtr<SimMediaPool> pool;
    SimFrameRate rate;
    double startSeconds = 0.0;
    std::u16string document;
    bool recording = false;
    std::vector<std::unique_ptr<SimEditGroup>> history;
    std::size_t undoPosition = 0;
    std::vector<Kelmar::IProjectStorageNotification*> storage;
    Kelmar::IPtr<SimObject> defaultMarkerTrack;
    ProjectLink* nodesLink = nullptr;
};

// The project behind an interface pointer of the simulator, or null.
SimProject* simProject(Kelmar::FUnknown* object);

} // namespace montala::sim
