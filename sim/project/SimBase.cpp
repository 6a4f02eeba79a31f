#include "sim/project/SimBase.h"

#include <atomic>

namespace montala::sim {

namespace {
std::atomic<long> live{0};
}

SimBase::SimBase()
{
    ++live;
}

SimBase::~SimBase()
{
    --live;
}

long SimBase::liveObjects()
{
    return live.load();
}

} // namespace montala::sim
