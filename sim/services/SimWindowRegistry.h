#pragma once

#include "kelmar/view/IWindowRegistry.h"
#include "sim/project/SimBase.h"

#include <string>
#include <vector>

namespace montala::sim {

class SimHost;

// The plug-in window factories the host knows. Factories are not
// reference-counted: each removes itself before it goes.
class SimWindowRegistry : public SimBase, public Kelmar::IWindowRegistry {
public:
    explicit SimWindowRegistry(SimHost& host) : host(&host) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult addWindowFactory(Kelmar::IPlugWindowFactory* factory) override;
    Kelmar::tresult removeWindowFactory(Kelmar::IPlugWindowFactory* factory) override;

    // The factory whose window has that name, or null.
    Kelmar::IPlugWindowFactory* find(const std::string& windowName) const;
    std::size_t size() const { return factories.size(); }

private:
    SimHost* host;
    std::vector<Kelmar::IPlugWindowFactory*> factories;
};

} // namespace montala::sim
