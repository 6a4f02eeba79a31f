#pragma once

#include "kelmar/base/IPtr.h"
#include "kelmar/project/ITimeParameter.h"
#include "sim/project/SimBase.h"
#include "sim/project/SimProject.h"

namespace montala::sim {

// One time value of a project: a locator or a cycle edge.
class SimTimeParameter : public SimBase, public Kelmar::ITimeParameter {
public:
    SimTimeParameter(Kelmar::IPtr<SimProject> project, double SimProject::*field);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult setTime(double time, Kelmar::int32 notify) override;
    double getTime() override { return project.get()->*field; }

    // The parameter of that name ("leftTime", "rightTime", "cycleLeftTime",
    // "cycleRightTime"), or null.
    static SimTimeParameter* byName(SimProject& project, const char* name);

private:
    Kelmar::IPtr<SimProject> project;
    double SimProject::*field;
};

} // namespace montala::sim
