#include "sim/project/SimProject.h"

#include "kelmar/project/IProjectStorageNotification.h"
#include "sim/services/SimDependencyRegistry.h"
#include "sim/project/SimDocument.h"
#include "sim/edit/SimEditContext.h"
#include "sim/edit/SimEditGroup.h"
#include "sim/services/SimFailures.h"
#include "sim/services/SimHost.h"
#include "sim/project/SimLocators.h"
#include "sim/project/SimMediaPool.h"
#include "sim/project/SimSettingsChange.h"

#include <algorithm>
#include <filesystem>
#include <cmath>
#include <cstring>

namespace montala::sim {

using namespace Kelmar;

SimProject* simProject(FUnknown* object)
{
    return dynamic_cast<SimProject*>(object);
}

IPtr<SimProject> SimProject::create(SimHost& host, std::u16string name)
{
    return owned(new SimProject(host, std::move(name)));
}

SimProject::SimProject(SimHost& host, std::u16string name)
    : SimObject(ObjectKind::Project), hostObject(&host), failurePlan(host.failurePlanShared()),
      pool(owned(new SimMediaPool(host)))
{
    Fields values;
    values.name = std::move(name);
    restoreFields(values);
    ProjectLink::hold(nodesLink, new ProjectLink{this, 0});
    bindTo(this);
}

SimProject::~SimProject()
{
    history.clear();
    defaultMarkerTrack.reset();
    // Nodes still held elsewhere outlive the project: they forget it.
    nodesLink->project = nullptr;
    ProjectLink::hold(nodesLink, nullptr);
}

tresult SimProject::queryInterface(const FUID& iid, void** obj)
{
    if (obj && failurePlan->isWithheld(iid)) {
        *obj = nullptr;
        return kNoInterface;
    }
    if (answerInterface<IProject>(this, iid, obj) || answerInterface<IProjectSettings>(this, iid, obj))
        return kResultOk;
    return SimObject::queryInterface(iid, obj);
}

// ---- Kelmar::IProject

IDocument* SimProject::getDocument()
{
    return new SimDocument(document);
}

IMediaPool* SimProject::getMediaPool()
{
    pool->addRef();
    return pool.get();
}

IProjectObject* SimProject::getDefaultMarkerTrack()
{
    // The same track until it has been put somewhere; then a new one.
    if (!defaultMarkerTrack || defaultMarkerTrack->parent())
        defaultMarkerTrack = SimObject::create(ObjectKind::MarkerTrack);
    defaultMarkerTrack->addRef();
    return defaultMarkerTrack.get();
}

IParameterContainer* SimProject::getLocators()
{
    return new SimLocators(Kelmar::shared(this));
}

IEditContext* SimProject::getEditContext(IProjectObject* container)
{
    // A new node that is in no project yet has a context too, so that it can
    // be named before it is added.
    SimObject* node = container ? simObject(container) : this;
    if (!node || (node->project() && node->project() != this))
        return nullptr;
    return new SimEditContext(Kelmar::shared(node));
}

IProjectObject* SimProject::createTrack(const char8* kind)
{
    if (!kind)
        return nullptr;
    ObjectKind trackKind;
    if (std::strcmp(kind, "audio") == 0)
        trackKind = ObjectKind::AudioTrack;
    else if (std::strcmp(kind, "video") == 0)
        trackKind = ObjectKind::VideoTrack;
    else if (std::strcmp(kind, "marker") == 0)
        trackKind = ObjectKind::MarkerTrack;
    else if (std::strcmp(kind, "folder") == 0)
        trackKind = ObjectKind::Folder;
    else if (std::strcmp(kind, "ruler") == 0)
        trackKind = ObjectKind::RulerTrack;
    else
        return nullptr;
    return SimObject::create(trackKind).take();
}

tresult SimProject::addStorageNotification(IProjectStorageNotification* notification)
{
    if (!notification)
        return kInvalidArgument;
    if (std::find(storage.begin(), storage.end(), notification) == storage.end())
        storage.push_back(notification);
    return kResultOk;
}

tresult SimProject::removeStorageNotification(IProjectStorageNotification* notification)
{
    const auto found = std::find(storage.begin(), storage.end(), notification);
    if (found == storage.end())
        return kResultFalse;
    storage.erase(found);
    return kResultOk;
}

tresult SimProject::setProjectLength(double length)
{
    if (failurePlan->fails("setProjectLength"))
        return kResultFailed;
    if (!std::isfinite(length) || length < 0.0)
        return kInvalidArgument;
    Fields values = get();
    values.end = length;
    setFields(values);
    return kResultOk;
}

// ---- Kelmar::IProjectSettings

tresult SimProject::getFrameRate(FrameRate& out)
{
    out.framesPerSecond = rate.fps;
    out.flags = (rate.pullDown ? FrameRate::kPullDown : 0) | (rate.dropFrame ? FrameRate::kDropFrame : 0);
    return kResultOk;
}

void SimProject::setFrameRate(const SimFrameRate& newRate)
{
    rate = newRate;
    auto change = owned(new SimSettingsChange(Kelmar::shared(this)));
    hostObject->dependencies().notify(static_cast<IProject*>(this), static_cast<IProjectSettingsChange*>(change.get()));
}

void SimProject::setProjectStart(double absoluteSeconds)
{
    startSeconds = absoluteSeconds;
    auto change = owned(new SimSettingsChange(Kelmar::shared(this)));
    hostObject->dependencies().notify(static_cast<IProject*>(this), static_cast<IProjectSettingsChange*>(change.get()));
}

void SimProject::initSettings(const SimFrameRate& newRate, double absoluteSeconds)
{
    rate = newRate;
    startSeconds = absoluteSeconds;
}

// ---- Undo list

SimEditGroup* SimProject::recordingGroup(ChangeKind change)
{
    if (!recording)
        return nullptr;
    if (SimEditGroup* open = hostObject->openGroupFor(*this))
        return open;
    if (change != ChangeKind::Structure)
        return nullptr;
    // The group is on the list before the change is made; it holds the
    // values from before, and those after are taken at undo.
    auto step = std::make_unique<SimEditGroup>();
    step->project = this;
    step->committed = true;
    SimEditGroup* recorded = step.get();
    commitGroup(std::move(step));
    return recorded;
}

void SimProject::commitGroup(std::unique_ptr<SimEditGroup> group)
{
    // A new edit drops what was undone.
    history.resize(undoPosition);
    history.push_back(std::move(group));
    undoPosition = history.size();
}

bool SimProject::undo(SimEditGroup& marks)
{
    if (!canUndo())
        return false;
    history[--undoPosition]->undo(marks);
    return true;
}

bool SimProject::redo(SimEditGroup& marks)
{
    if (!canRedo())
        return false;
    history[undoPosition++]->redo(marks);
    return true;
}

void SimProject::clearHistory()
{
    history.clear();
    undoPosition = 0;
}

std::u16string SimProject::undoTitle() const
{
    return canUndo() ? history[undoPosition - 1]->title : std::u16string();
}

std::u16string SimProject::redoTitle() const
{
    return canRedo() ? history[undoPosition]->title : std::u16string();
}

// ---- Tree

std::vector<SimObject*> SimProject::allTracks()
{
    std::vector<SimObject*> tracks;
    const auto walk = [&tracks](const auto& self, const SimObject& node) -> void {
        for (const auto& child : node.children()) {
            if (child->isTrack()) {
                tracks.push_back(child.get());
                self(self, *child);
            }
        }
    };
    walk(walk, *this);
    return tracks;
}

SimObject* SimProject::findTrack(std::u16string_view name)
{
    for (SimObject* track : allTracks())
        if (track->get().name == name)
            return track;
    return nullptr;
}

void SimProject::setDocumentPath(std::u16string path)
{
    document = std::move(path);
    pool->setMediaFolder(std::filesystem::path(Kelmar::String::utf16ToUtf8(document)).parent_path().string());
}

} // namespace montala::sim
