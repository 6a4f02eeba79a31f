#pragma once

#include "kelmar/base/IObjectIterator.h"
#include "sim/project/SimBase.h"
#include "sim/project/SimObject.h"

namespace montala::sim {

// Walks a list of nodes as it was when the walk began: changes made while
// walking do not disturb it (see SimObject::ChildList).
class SimObjectIterator : public SimBase, public Kelmar::IObjectIterator {
public:
    explicit SimObjectIterator(SimObject::ChildList list);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::IProjectObject* next() override;
    bool atEnd() override { return position >= list.items().size(); }
    Kelmar::int32 getCount() override { return static_cast<Kelmar::int32>(list.items().size()); }

private:
    SimObject::ChildList list;
    std::size_t position = 0;
};

} // namespace montala::sim
