#include "sim/services/SimWindowRegistry.h"

#include "sim/services/SimHost.h"

#include "kelmar/view/IPlugWindowFactory.h"

#include <algorithm>

namespace montala::sim {

using namespace Kelmar;

tresult SimWindowRegistry::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IWindowRegistry>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimWindowRegistry::addWindowFactory(IPlugWindowFactory* factory)
{
    if (!factory)
        return kInvalidArgument;
    if (std::find(factories.begin(), factories.end(), factory) == factories.end()) {
        factories.push_back(factory);
        host->record("window factory added");
    }
    return kResultOk;
}

tresult SimWindowRegistry::removeWindowFactory(IPlugWindowFactory* factory)
{
    const auto found = std::find(factories.begin(), factories.end(), factory);
    if (found == factories.end())
        return kResultFalse;
    factories.erase(found);
    host->record("window factory removed");
    return kResultOk;
}

IPlugWindowFactory* SimWindowRegistry::find(const std::string& windowName) const
{
    for (IPlugWindowFactory* factory : factories) {
        const char8* name = factory->getWindowName();
        if (name && windowName == name)
            return factory;
    }
    return nullptr;
}

} // namespace montala::sim
