#include "sim/project/SimObjectIterator.h"

namespace montala::sim {

SimObjectIterator::SimObjectIterator(SimObject::ChildList list) : list(std::move(list)) {}

Kelmar::tresult SimObjectIterator::queryInterface(const Kelmar::FUID& iid, void** obj)
{
    if (Kelmar::answerInterface<Kelmar::IObjectIterator>(this, iid, obj))
        return Kelmar::kResultOk;
    return FObject::queryInterface(iid, obj);
}

Kelmar::IProjectObject* SimObjectIterator::next()
{
    if (atEnd())
        return nullptr;
    Kelmar::IProjectObject* object = list.items()[position++].get();
    object->addRef();
    return object;
}

} // namespace montala::sim
