#include "sim/services/SimActionManager.h"

#include "kelmar/services/IActionHandler.h"
#include "sim/services/SimHost.h"
#include "sim/project/SimProjectManager.h"

#include <algorithm>

namespace montala::sim {

using namespace Kelmar;

tresult SimActionManager::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IActionManager>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimActionManager::addHandler(IActionHandler* handler)
{
    if (!handler)
        return kInvalidArgument;
    if (std::find(handlers.begin(), handlers.end(), handler) == handlers.end()) {
        handlers.push_back(handler);
        host->record("action handler added");
    }
    return kResultOk;
}

tresult SimActionManager::removeHandler(IActionHandler* handler)
{
    const auto found = std::find(handlers.begin(), handlers.end(), handler);
    if (found == handlers.end())
        return kResultFalse;
    handlers.erase(found);
    host->record("action handler removed");
    return kResultOk;
}

tresult SimActionManager::invoke(const char8* category, const char8* name)
{
    if (!category || !name)
        return kInvalidArgument;
    const std::string categoryText = category;
    const std::string nameText = name;
    log.push_back(categoryText + "/" + nameText);
    if (categoryText == "Edit" && (nameText == "Undo" || nameText == "Redo")) {
        SimProject* project = host->projectManager().activeProject();
        if (!project)
            return kResultFalse;
        const bool done = nameText == "Undo" ? host->undo(*project) : host->redo(*project);
        return done ? kResultOk : kResultFalse;
    }
    const auto current = handlers;
    for (IActionHandler* handler : current)
        if (std::find(handlers.begin(), handlers.end(), handler) != handlers.end()
            && handler->onAction(category, name, false) == kResultOk)
            return kResultOk;
    return kResultFalse;
}

bool SimActionManager::isEnabled(const std::string& category, const std::string& name)
{
    const auto current = handlers;
    for (IActionHandler* handler : current)
        if (handler->onAction(category.c_str(), name.c_str(), true) == kResultOk)
            return true;
    return false;
}

} // namespace montala::sim
