#pragma once

#include "kelmar/project/IProjectSettingsChange.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimBase.h"
#include "sim/project/SimProject.h"

namespace montala::sim {

// What a project's dependents are given when its settings change.
class SimSettingsChange : public SimBase, public Kelmar::IProjectSettingsChange {
public:
    explicit SimSettingsChange(Kelmar::IPtr<SimProject> project) : project(std::move(project)) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::IProject* getProject() override;

private:
    Kelmar::IPtr<SimProject> project;
};

} // namespace montala::sim
