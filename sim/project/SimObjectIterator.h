#pragma once

#include "kelmar/base/IObjectIterator.h"
#include "sim/project/SimBase.h"
#include "sim/project/SimObject.h"

namespace montala::sim {

// Walks a copy of a list of nodes, so that changes made while walking do not
// disturb it.
class SimObjectIterator : public SimBase, public Kelmar::IObjectIterator {
public:
    explicit SimObjectIterator(SimObject::List list);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::IProjectObject* next() override;
    bool atEnd() override { return position >= list.size(); }
    Kelmar::int32 getCount() override { return static_cast<Kelmar::int32>(list.size()); }

private:
    SimObject::List list;
    std::size_t position = 0;
};

} // namespace montala::sim
