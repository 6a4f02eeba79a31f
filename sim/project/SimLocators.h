#pragma once

#include "kelmar/base/IParameterContainer.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimBase.h"
#include "sim/project/SimProject.h"

namespace montala::sim {

// The project's locators, as parameters "leftTime" and "rightTime".
class SimLocators : public SimBase, public Kelmar::IParameterContainer {
public:
    explicit SimLocators(Kelmar::IPtr<SimProject> project) : project(std::move(project)) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::FUnknown* getParameter(const Kelmar::char8* name) override;

private:
    Kelmar::IPtr<SimProject> project;
};

} // namespace montala::sim
