#pragma once

#include "kelmar/edit/IEditContext.h"
#include "sim/project/SimBase.h"
#include "sim/project/SimObject.h"

namespace montala::sim {

// Names the node that a change goes into; the project node for the root.
class SimEditContext : public SimBase, public Kelmar::IEditContext {
public:
    explicit SimEditContext(Kelmar::IPtr<SimObject> container);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::IProjectObject* getContainer() override;

    SimObject* container() const { return node.get(); }

    // The container named by a context of the simulator, or null.
    static SimObject* containerOf(Kelmar::IEditContext* context);

private:
    Kelmar::IPtr<SimObject> node;
};

} // namespace montala::sim
