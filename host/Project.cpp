#include "host/Project.h"

namespace montala::host {

Project::Project(Kelmar::IProject* project, Kelmar::IHostServices* hostServices)
    : hostProject(Kelmar::shared(project)), services(hostServices)
{
}

Project::~Project() = default;

} // namespace montala::host
