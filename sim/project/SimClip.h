#pragma once

#include "kelmar/project/IEditClip.h"
#include "sim/project/SimBase.h"
#include "sim/edit/SimRangeEditor.h"

#include <vector>

namespace montala::sim {

// What extractRange took: a copy of each track's range, to be inserted as
// often as wanted.
class SimClip : public SimBase, public Kelmar::IEditClip {
public:
    SimClip(std::vector<SimRangeEditor::TrackCopy> copies, double length)
        : copies(std::move(copies)), length(length)
    {
    }

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    double getLength() override { return length; }

    const std::vector<SimRangeEditor::TrackCopy>& tracks() const { return copies; }

private:
    std::vector<SimRangeEditor::TrackCopy> copies;
    double length;
};

} // namespace montala::sim
