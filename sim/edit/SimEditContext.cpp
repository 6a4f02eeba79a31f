#include "sim/edit/SimEditContext.h"

namespace montala::sim {

SimEditContext::SimEditContext(Kelmar::IPtr<SimObject> container) : node(std::move(container)) {}

Kelmar::tresult SimEditContext::queryInterface(const Kelmar::FUID& iid, void** obj)
{
    if (Kelmar::answerInterface<Kelmar::IEditContext>(this, iid, obj))
        return Kelmar::kResultOk;
    return FObject::queryInterface(iid, obj);
}

Kelmar::IProjectObject* SimEditContext::getContainer()
{
    if (!node)
        return nullptr;
    node->addRef();
    return node.get();
}

SimObject* SimEditContext::containerOf(Kelmar::IEditContext* context)
{
    auto* simContext = dynamic_cast<SimEditContext*>(context);
    return simContext ? simContext->container() : nullptr;
}

} // namespace montala::sim
