#include "sim/project/SimTimeParameter.h"

#include <cmath>
#include <cstring>

namespace montala::sim {

using namespace Kelmar;

SimTimeParameter::SimTimeParameter(IPtr<SimProject> project, double SimProject::*field)
    : project(std::move(project)), field(field)
{
}

tresult SimTimeParameter::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<ITimeParameter>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimTimeParameter::setTime(double time, int32)
{
    if (!std::isfinite(time))
        return kInvalidArgument;
    project.get()->*field = time;
    return kResultOk;
}

SimTimeParameter* SimTimeParameter::byName(SimProject& project, const char* name)
{
    if (!name)
        return nullptr;
    double SimProject::*field = nullptr;
    if (std::strcmp(name, "leftTime") == 0)
        field = &SimProject::leftLocator;
    else if (std::strcmp(name, "rightTime") == 0)
        field = &SimProject::rightLocator;
    else if (std::strcmp(name, "cycleLeftTime") == 0)
        field = &SimProject::cycleLeft;
    else if (std::strcmp(name, "cycleRightTime") == 0)
        field = &SimProject::cycleRight;
    else
        return nullptr;
    return new SimTimeParameter(shared(&project), field);
}

} // namespace montala::sim
