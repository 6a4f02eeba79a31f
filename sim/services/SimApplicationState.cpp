#include "sim/services/SimApplicationState.h"

#include "kelmar/services/IIdleHandler.h"

#include <algorithm>

namespace montala::sim {

using namespace Kelmar;

tresult SimApplicationState::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IApplicationState>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimApplicationState::addIdleHandler(IIdleHandler* handler)
{
    if (!handler)
        return kInvalidArgument;
    if (std::find(handlers.begin(), handlers.end(), handler) == handlers.end())
        handlers.push_back(handler);
    return kResultOk;
}

tresult SimApplicationState::removeIdleHandler(IIdleHandler* handler)
{
    const auto found = std::find(handlers.begin(), handlers.end(), handler);
    if (found == handlers.end())
        return kResultFalse;
    handlers.erase(found);
    return kResultOk;
}

tresult SimApplicationState::setBusy(bool on)
{
    busy = on;
    changes.push_back(on);
    return kResultOk;
}

void SimApplicationState::runIdle()
{
    const auto current = handlers;
    for (IIdleHandler* handler : current)
        if (std::find(handlers.begin(), handlers.end(), handler) != handlers.end())
            handler->onIdle();
}

} // namespace montala::sim
