#include "sim/project/SimSettingsChange.h"

namespace montala::sim {

Kelmar::tresult SimSettingsChange::queryInterface(const Kelmar::FUID& iid, void** obj)
{
    if (Kelmar::answerInterface<Kelmar::IProjectSettingsChange>(this, iid, obj))
        return Kelmar::kResultOk;
    return FObject::queryInterface(iid, obj);
}

Kelmar::IProject* SimSettingsChange::getProject()
{
    project->addRef();
    return project.get();
}

} // namespace montala::sim
