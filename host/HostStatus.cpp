#include "host/HostStatus.h"

#include "core/report/ChangeReport.h"
#include "core/report/ReportWriters.h"
#include "host/Host.h"
#include "host/Project.h"

#include <sstream>

namespace montala::host {

Kelmar::tresult HostStatus::queryInterface(const Kelmar::FUID& iid, void** obj)
{
    if (Kelmar::answerInterface<HostStatusInterface>(this, iid, obj))
        return Kelmar::kResultOk;
    return FObject::queryInterface(iid, obj);
}

bool HostStatus::isBusy()
{
    return host->isBusy();
}

bool HostStatus::isRunPending()
{
    return host->isRunPending();
}

bool HostStatus::isPreviewActive()
{
    Project* active = host->getActiveProject();
    return active && active->getDataModel().isPreviewActive();
}

RunSummary HostStatus::lastRun()
{
    return host->lastRun();
}

core::Framerate HostStatus::activeRate()
{
    Project* active = host->getActiveProject();
    return active ? active->getFramerate() : core::Framerate{};
}

size_t HostStatus::changeEventCount()
{
    Project* active = host->getActiveProject();
    return active ? active->getDataModel().getChangeList().getSize() : 0;
}

bool HostStatus::changeReportHtml(const std::string& title, std::string& html, std::string& error)
{
    Project* active = host->getActiveProject();
    if (!active) {
        error = "Open a session first.";
        return false;
    }
    const core::DataModel& model = active->getDataModel();
    if (model.getOldList().getSize() == 0 || model.getNewList().getSize() == 0) {
        error = "Add the Old and the New EDL first.";
        return false;
    }
    if (model.getChangeList().getSize() == 0) {
        error = "Generate the Change EDL first: the report tells what it carries.";
        return false;
    }
    std::ostringstream page;
    core::report::writeHtml(page, core::report::ChangeReportBuilder().build(model, active->getFramerate()), title);
    html = page.str();
    return true;
}

} // namespace montala::host
