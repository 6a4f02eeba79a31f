#pragma once

#include "kelmar/base/FObject.h"

namespace montala::sim {

// Base of every object the simulated host hands out. It counts the objects
// alive, so that a test can check that every reference it was given has been
// released again.
class SimBase : public Kelmar::FObject {
public:
    SimBase();
    ~SimBase() override;

    static long liveObjects();
};

} // namespace montala::sim
