#include "sim/services/SimSkinService.h"

#include "kelmar/view/IPlugController.h"
#include "kelmar/view/IViewBuilder.h"
#include "sim/services/SimHost.h"
#include "sim/session/XmlElement.h"

#include <algorithm>

namespace montala::sim {

using namespace Kelmar;

tresult SimSkinService::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<ISkinService>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimSkinService::loadSkin(ModuleHandle module, const char8* resource)
{
    if (!resource)
        return kInvalidArgument;
    const auto root = host->readResource(module, resource, error);
    if (!root)
        return kResultFalse;
    if (root->name() != "skin") {
        error = std::string(resource) + ": the root is not <skin>";
        return kResultFalse;
    }
    for (const auto& element : root->children()) {
        const std::string* name = element->attribute("name");
        const std::string* title = element->attribute("title");
        if (element->name() == "template" && name)
            templates[*name] = title ? *title : *name;
    }
    error.clear();
    return kResultOk;
}

tresult SimSkinService::openWindow(const char8* name, IPlugController* controller, IPlugWindow** window)
{
    if (!name || !controller || !window)
        return kInvalidArgument;
    *window = nullptr;
    const auto found = templates.find(name);
    if (found == templates.end()) {
        error = std::string("no template \"") + name + "\" in the loaded skins";
        return kInvalidArgument;
    }
    IPtr<IPlugView> view;
    if (auto builder = Kelmar::queryInterface<IViewBuilder>(controller)) {
        if (builder->createView(name, nullptr, view.put()) != kResultOk) {
            error = std::string("the view of \"") + name + "\" could not be built";
            return kResultFailed;
        }
    }
    auto created = owned(new SimPlugWindow(name, found->second, view, *host));
    opened.push_back(created);
    *window = created.get();
    return kResultOk;
}

void SimSkinService::closeAll()
{
    const auto windows = std::move(opened);
    for (const auto& window : windows)
        window->close(0);
}

std::size_t SimSkinService::openWindowCount() const
{
    return static_cast<std::size_t>(
        std::count_if(opened.begin(), opened.end(), [](const auto& window) { return window->isOpen(); }));
}

} // namespace montala::sim
