#pragma once

#include "kelmar/base/IObjectIterator.h"
#include "sim/project/SimBase.h"
#include "sim/project/SimObject.h"

namespace montala::sim {

// Walks a list of nodes as it was when the walk began: changes made while
// walking do not disturb it (see SimObject::ChildList).
class SimObjectIterator : public SimBase, public Kelmar::IObjectIterator {
public:
    // `parent`, when given, is the node whose children `list` holds: once
    // the walk is over, it takes out what left its list during the walk.
    explicit SimObjectIterator(SimObject::ChildList list, SimObject* parent = nullptr);
    ~SimObjectIterator() override;

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::IProjectObject* next() override;
    bool atEnd() override { return position >= list.items().size(); }
    Kelmar::int32 getCount() override { return static_cast<Kelmar::int32>(list.items().size()); }

private:
    SimObject::ChildList list;
    Kelmar::IPtr<SimObject> parent;
    std::size_t position = 0;
};

} // namespace montala::sim
