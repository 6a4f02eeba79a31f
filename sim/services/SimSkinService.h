#pragma once

#include "kelmar/base/IPtr.h"
#include "kelmar/view/ISkinService.h"
#include "sim/project/SimBase.h"
#include "sim/services/SimPlugWindow.h"

#include <map>
#include <string>
#include <vector>

namespace montala::sim {

class SimHost;

// Opens windows from the skins that modules load from their resources (root
// <skin> with <template name="..." title="..."> elements). Opening a window
// asks the controller for IViewBuilder and builds the view of the template's
// name. The windows are the host's: openWindow hands out a borrowed pointer,
// good until the window closes.
class SimSkinService : public SimBase, public Kelmar::ISkinService {
public:
    explicit SimSkinService(SimHost& host) : host(&host) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult loadSkin(Kelmar::ModuleHandle module, const Kelmar::char8* resource) override;
    Kelmar::tresult openWindow(const Kelmar::char8* name, Kelmar::IPlugController* controller,
                               Kelmar::IPlugWindow** window) override;

    // Every window opened so far, closed ones included.
    const std::vector<Kelmar::IPtr<SimPlugWindow>>& windows() const { return opened; }
    std::size_t openWindowCount() const;
    // Closes every window still open and forgets them all.
    void closeAll();
    const std::string& lastError() const { return error; }

private:
    SimHost* host;
    std::map<std::string, std::string> templates; // name -> title
    std::vector<Kelmar::IPtr<SimPlugWindow>> opened;
    std::string error;
};

} // namespace montala::sim
