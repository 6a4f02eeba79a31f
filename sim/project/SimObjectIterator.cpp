#include "sim/project/SimObjectIterator.h"

namespace montala::sim {

SimObjectIterator::SimObjectIterator(SimObject::ChildList list, SimObject* parent)
    : list(std::move(list)), parent(Kelmar::shared(parent))
{
}

SimObjectIterator::~SimObjectIterator()
{
    // The list is let go of first, so that the parent's is its own again.
    list = SimObject::ChildList();
    if (parent)
        parent->settleIfDue();
}

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
