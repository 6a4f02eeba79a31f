#pragma once

#include "kelmar/services/IMenuRegistry.h"
#include "sim/project/SimBase.h"

#include <string>
#include <vector>

namespace montala::sim {

class SimHost;

// The entries plug-ins put into the host's menus. A click on an entry invokes
// its action through the action manager.
class SimMenuRegistry : public SimBase, public Kelmar::IMenuRegistry {
public:
    struct Entry {
        Kelmar::ModuleHandle module = nullptr;
        std::string menu;
        std::u16string title;
        Kelmar::int32 flags = 0;
        std::string category;
        std::string action;
    };

    explicit SimMenuRegistry(SimHost& host) : host(&host) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult addEntry(Kelmar::ModuleHandle module, const Kelmar::char8* menu, const Kelmar::char16* title,
                             Kelmar::int32 flags, const Kelmar::char8* category, const Kelmar::char8* action) override;
    Kelmar::tresult removeEntries(Kelmar::ModuleHandle module) override;

    // The user's click on the entry `title` of `menu`; kResultFalse when there
    // is no such entry or nobody carried out its action.
    Kelmar::tresult click(const std::string& menu, std::u16string_view title);

    const std::vector<Entry>& entries() const { return list; }

private:
    SimHost* host;
    std::vector<Entry> list;
};

} // namespace montala::sim
