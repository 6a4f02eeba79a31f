#include "sim/project/SimTransport.h"

#include "sim/services/SimHost.h"
#include "sim/project/SimProjectManager.h"
#include "sim/project/SimTimeParameter.h"

#include <cmath>
#include <cstring>

namespace montala::sim {

using namespace Kelmar;

tresult SimTransport::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<ITransport>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimTransport::stop()
{
    SimProject* project = host->projectManager().activeProject();
    if (!project)
        return kResultFalse;
    project->playing = false;
    return kResultOk;
}

tresult SimTransport::play()
{
    SimProject* project = host->projectManager().activeProject();
    if (!project)
        return kResultFalse;
    project->playing = true;
    return kResultOk;
}

bool SimTransport::isPlaying()
{
    SimProject* project = host->projectManager().activeProject();
    return project && project->playing;
}

double SimTransport::getCursor()
{
    SimProject* project = host->projectManager().activeProject();
    return project ? project->cursor : 0.0;
}

tresult SimTransport::setCursor(double time)
{
    SimProject* project = host->projectManager().activeProject();
    if (!project)
        return kResultFalse;
    if (!std::isfinite(time))
        return kInvalidArgument;
    project->cursor = time;
    return kResultOk;
}

FUnknown* SimTransport::getParameter(const char8* name)
{
    SimProject* project = host->projectManager().activeProject();
    if (!project || !name || (std::strcmp(name, "cycleLeftTime") != 0 && std::strcmp(name, "cycleRightTime") != 0))
        return nullptr;
    return static_cast<ITimeParameter*>(SimTimeParameter::byName(*project, name));
}

} // namespace montala::sim
