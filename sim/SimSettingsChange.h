#pragma once

#include "kelmar/IProjectSettingsChange.h"
#include "kelmar/IPtr.h"
#include "sim/SimBase.h"
#include "sim/SimProject.h"

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
