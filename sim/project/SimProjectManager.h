#pragma once

#include "kelmar/project/IProjectManager.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimBase.h"
#include "sim/project/SimProject.h"

#include <vector>

namespace Kelmar {
class IProjectNotification;
}

namespace montala::sim {

class SimHost;

// The open projects and the active one. Opening, switching, saving and
// closing tell the registered notifications, in the order a host does:
//   open:      projectOpened(new), projectDeactivated(old), projectActivated(new)
//   activate:  projectDeactivated(old), projectActivated(new)
//   close:     projectDeactivated(it, if active), projectClosed(it),
//              projectActivated(the first left, if it was active)
//   save:      projectSaving(it) to the project's storage notifications
// Notifications are not reference-counted: each removes itself before it goes.
class SimProjectManager : public SimBase, public Kelmar::IProjectManager {
public:
    explicit SimProjectManager(SimHost& host) : host(&host) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::int32 getProjectCount() override { return static_cast<Kelmar::int32>(projects.size()); }
    Kelmar::IProject* getProject(Kelmar::int32 index) override;
    Kelmar::IProject* getActiveProject() override;
    Kelmar::tresult addNotification(Kelmar::IProjectNotification* notification) override;
    Kelmar::tresult removeNotification(Kelmar::IProjectNotification* notification) override;

    void openProject(Kelmar::IPtr<SimProject> project, bool activate = true);
    void activateProject(SimProject* project);
    void closeProject(SimProject* project);
    void closeAll();
    void saveProject(SimProject* project);

    SimProject* activeProject() const { return active; }
    const std::vector<Kelmar::IPtr<SimProject>>& openProjects() const { return projects; }
    const std::vector<Kelmar::IProjectNotification*>& notifications() const { return handlers; }

private:
    SimHost* host;
    std::vector<Kelmar::IPtr<SimProject>> projects;
    SimProject* active = nullptr;
    std::vector<Kelmar::IProjectNotification*> handlers;
};

} // namespace montala::sim
