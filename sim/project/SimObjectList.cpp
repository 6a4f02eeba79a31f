#include "sim/project/SimObjectList.h"

namespace montala::sim {

using namespace Kelmar;

tresult SimObjectList::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IObjectList>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

FUnknown* SimObjectList::getAt(int32 index)
{
    if (index < 0 || index >= getCount())
        return nullptr;
    FUnknown* object = items[static_cast<std::size_t>(index)].get();
    object->addRef();
    return object;
}

tresult SimObjectList::add(FUnknown* object)
{
    if (!object)
        return kInvalidArgument;
    items.push_back(shared(object));
    return kResultOk;
}

} // namespace montala::sim
