#include "sim/project/SimClip.h"

namespace montala::sim {

Kelmar::tresult SimClip::queryInterface(const Kelmar::FUID& iid, void** obj)
{
    if (Kelmar::answerInterface<Kelmar::IEditClip>(this, iid, obj))
        return Kelmar::kResultOk;
    return FObject::queryInterface(iid, obj);
}

} // namespace montala::sim
