#pragma once

#include "kelmar/base/IObjectList.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimBase.h"

#include <vector>

namespace montala::sim {

// A list of objects handed out empty by the host.
class SimObjectList : public SimBase, public Kelmar::IObjectList {
public:
    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::int32 getCount() override { return static_cast<Kelmar::int32>(items.size()); }
    Kelmar::FUnknown* getAt(Kelmar::int32 index) override;
    Kelmar::tresult add(Kelmar::FUnknown* object) override;

    const std::vector<Kelmar::IPtr<Kelmar::FUnknown>>& objects() const { return items; }

private:
    std::vector<Kelmar::IPtr<Kelmar::FUnknown>> items;
};

} // namespace montala::sim
