#pragma once

#include "kelmar/services/IActionManager.h"
#include "sim/project/SimBase.h"

#include <string>
#include <vector>

namespace montala::sim {

class SimHost;

// Dispatches actions. The host's own "Edit" "Undo" and "Edit" "Redo" act on
// the active project; any other action goes to the handlers in the order
// they were added until one carries it out. Handlers are not
// reference-counted: each removes itself before it goes.
class SimActionManager : public SimBase, public Kelmar::IActionManager {
public:
    explicit SimActionManager(SimHost& host) : host(&host) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult addHandler(Kelmar::IActionHandler* handler) override;
    Kelmar::tresult removeHandler(Kelmar::IActionHandler* handler) override;
    Kelmar::tresult invoke(const Kelmar::char8* category, const Kelmar::char8* name) override;

    // Whether some handler would carry the action out (a menu asks so before
    // it shows an entry as enabled).
    bool isEnabled(const std::string& category, const std::string& name);

    // Every invoke, as "category/name".
    const std::vector<std::string>& invoked() const { return log; }
    std::size_t handlerCount() const { return handlers.size(); }

private:
    SimHost* host;
    std::vector<Kelmar::IActionHandler*> handlers;
    std::vector<std::string> log;
};

} // namespace montala::sim
