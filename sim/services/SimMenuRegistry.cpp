#include "sim/services/SimMenuRegistry.h"

#include "sim/services/SimActionManager.h"
#include "kelmar/base/String.h"
#include "sim/services/SimHost.h"

#include <algorithm>

namespace montala::sim {

using namespace Kelmar;

tresult SimMenuRegistry::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IMenuRegistry>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimMenuRegistry::addEntry(ModuleHandle module, const char8* menu, const char16* title, int32 flags,
                                  const char8* category, const char8* action)
{
    if (!menu || !title || !category || !action)
        return kInvalidArgument;
    list.push_back(Entry{module, menu, title, flags, category, action});
    host->record(std::string("menu entry ") + menu + "/" + String::utf16ToUtf8(title));
    return kResultOk;
}

tresult SimMenuRegistry::removeEntries(ModuleHandle module)
{
    const auto before = list.size();
    std::erase_if(list, [module](const Entry& entry) { return entry.module == module; });
    host->record("menu entries removed: " + std::to_string(before - list.size()));
    return list.size() < before ? kResultOk : kResultFalse;
}

tresult SimMenuRegistry::click(const std::string& menu, std::u16string_view title)
{
    const auto found = std::find_if(list.begin(), list.end(),
                                    [&](const Entry& entry) { return entry.menu == menu && entry.title == title; });
    if (found == list.end())
        return kResultFalse;
    // A copy: the action may change the menus.
    const Entry entry = *found;
    return host->actionManager().invoke(entry.category.c_str(), entry.action.c_str());
}

} // namespace montala::sim
