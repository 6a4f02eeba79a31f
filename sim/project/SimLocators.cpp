#include "sim/project/SimLocators.h"

#include "sim/project/SimTimeParameter.h"

#include <cstring>

namespace montala::sim {

using namespace Kelmar;

tresult SimLocators::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IParameterContainer>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

FUnknown* SimLocators::getParameter(const char8* name)
{
    if (!name || (std::strcmp(name, "leftTime") != 0 && std::strcmp(name, "rightTime") != 0))
        return nullptr;
    SimTimeParameter* parameter = SimTimeParameter::byName(*project, name);
    return static_cast<ITimeParameter*>(parameter);
}

} // namespace montala::sim
