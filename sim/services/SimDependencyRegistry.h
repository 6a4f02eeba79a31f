#pragma once

#include "kelmar/base/IDependencyRegistry.h"
#include "sim/project/SimBase.h"

#include <utility>
#include <vector>

namespace montala::sim {

// Who depends on what. Subjects are compared by their FUnknown identity, so a
// dependent registered with any interface of an object hears of it.
// Dependents are not reference-counted: each removes itself before it goes.
class SimDependencyRegistry : public SimBase, public Kelmar::IDependencyRegistry {
public:
    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult addDependent(Kelmar::FUnknown* subject, Kelmar::FObject* dependent) override;
    Kelmar::tresult removeDependent(Kelmar::FUnknown* subject, Kelmar::FObject* dependent) override;

    // Sends update(changed, IDependent::kChanged) to the dependents of `subject`.
    void notify(Kelmar::FUnknown* subject, Kelmar::FUnknown* changed);

    std::size_t dependentCount(Kelmar::FUnknown* subject) const;
    std::size_t size() const { return entries.size(); }

private:
    static Kelmar::FUnknown* identity(Kelmar::FUnknown* object);

    std::vector<std::pair<Kelmar::FUnknown*, Kelmar::FObject*>> entries;
};

} // namespace montala::sim
