#include "sim/project/SimProjectManager.h"

#include "kelmar/project/IProjectNotification.h"
#include "kelmar/project/IProjectStorageNotification.h"

#include <algorithm>

namespace montala::sim {

using namespace Kelmar;

namespace {

template <class Call>
void tellAll(const std::vector<IProjectNotification*>& handlers, Call call)
{
    // A copy: a notification may remove itself while it is told.
    const auto current = handlers;
    for (IProjectNotification* handler : current)
        if (std::find(handlers.begin(), handlers.end(), handler) != handlers.end())
            call(*handler);
}

} // namespace

tresult SimProjectManager::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IProjectManager>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

IProject* SimProjectManager::getProject(int32 index)
{
    if (index < 0 || index >= getProjectCount())
        return nullptr;
    SimProject* project = projects[static_cast<std::size_t>(index)].get();
    project->addRef();
    return project;
}

IProject* SimProjectManager::getActiveProject()
{
    if (!active)
        return nullptr;
    active->addRef();
    return active;
}

tresult SimProjectManager::addNotification(IProjectNotification* notification)
{
    if (!notification)
        return kInvalidArgument;
    if (std::find(handlers.begin(), handlers.end(), notification) == handlers.end())
        handlers.push_back(notification);
    return kResultOk;
}

tresult SimProjectManager::removeNotification(IProjectNotification* notification)
{
    const auto found = std::find(handlers.begin(), handlers.end(), notification);
    if (found == handlers.end())
        return kResultFalse;
    handlers.erase(found);
    return kResultOk;
}

void SimProjectManager::openProject(IPtr<SimProject> project, bool activate)
{
    if (!project || std::find(projects.begin(), projects.end(), project) != projects.end())
        return;
    projects.push_back(project);
    project->setRecording(true);
    tellAll(handlers, [&](IProjectNotification& h) { h.projectOpened(project.get()); });
    if (activate || !active)
        activateProject(project.get());
}

void SimProjectManager::activateProject(SimProject* project)
{
    if (project == active || std::find(projects.begin(), projects.end(), project) == projects.end())
        return;
    if (SimProject* previous = active) {
        active = nullptr;
        tellAll(handlers, [&](IProjectNotification& h) { h.projectDeactivated(previous); });
    }
    active = project;
    tellAll(handlers, [&](IProjectNotification& h) { h.projectActivated(project); });
}

void SimProjectManager::closeProject(SimProject* project)
{
    const auto found = std::find(projects.begin(), projects.end(), project);
    if (found == projects.end())
        return;
    // Held until the notifications are through.
    IPtr<SimProject> keep = *found;
    const bool wasActive = project == active;
    if (wasActive) {
        active = nullptr;
        tellAll(handlers, [&](IProjectNotification& h) { h.projectDeactivated(project); });
    }
    tellAll(handlers, [&](IProjectNotification& h) { h.projectClosed(project); });
    projects.erase(std::find(projects.begin(), projects.end(), keep));
    project->setRecording(false);
    if (wasActive && !projects.empty())
        activateProject(projects.front().get());
}

void SimProjectManager::closeAll()
{
    while (!projects.empty())
        closeProject(projects.back().get());
}

void SimProjectManager::saveProject(SimProject* project)
{
    if (!project)
        return;
    // What goes into the project while it is saved is no edit: it is not
    // put on the undo list.
    const bool recording = project->isRecording();
    project->setRecording(false);
    const auto current = project->storageNotifications();
    for (IProjectStorageNotification* notification : current)
        notification->projectSaving(project);
    project->setRecording(recording);
}

} // namespace montala::sim
