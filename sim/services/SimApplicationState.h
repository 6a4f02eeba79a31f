#pragma once

#include "kelmar/services/IApplicationState.h"
#include "sim/project/SimBase.h"

#include <vector>

namespace montala::sim {

// The application's run state: idle handlers, which the simulator's run loop
// calls, and the busy flag, whose every change is kept for tests.
// Idle handlers are not reference-counted: each removes itself before it goes.
class SimApplicationState : public SimBase, public Kelmar::IApplicationState {
public:
    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult addIdleHandler(Kelmar::IIdleHandler* handler) override;
    Kelmar::tresult removeIdleHandler(Kelmar::IIdleHandler* handler) override;
    Kelmar::tresult setBusy(bool busy) override;

    // One turn of the run loop: every idle handler once.
    void runIdle();

    bool isBusy() const { return busy; }
    const std::vector<bool>& busyChanges() const { return changes; }
    std::size_t idleHandlerCount() const { return handlers.size(); }

private:
    std::vector<Kelmar::IIdleHandler*> handlers;
    bool busy = false;
    std::vector<bool> changes;
};

} // namespace montala::sim
