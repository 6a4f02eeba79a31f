#pragma once

#include "kelmar/view/IPlugView.h"
#include "kelmar/view/IPlugWindow.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimBase.h"

#include <string>

namespace montala::sim {

// A window the skin service opened. Headless: the view is built but never
// attached to a system window.
class SimPlugWindow : public SimBase, public Kelmar::IPlugWindow {
public:
    SimPlugWindow(std::string name, Kelmar::IPtr<Kelmar::IPlugView> view);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult show() override;
    // Tells the close notification, then lets the view go.
    Kelmar::tresult close(Kelmar::int32 flags) override;
    Kelmar::tresult setCloseNotification(Kelmar::ICloseWindowNotification* notification) override;

    const std::string& name() const { return windowName; }
    bool isOpen() const { return open; }
    bool isVisible() const { return visible; }
    Kelmar::IPlugView* view() const { return plugView.get(); }

private:
    std::string windowName;
    Kelmar::IPtr<Kelmar::IPlugView> plugView;
    Kelmar::ICloseWindowNotification* closeNotification = nullptr;
    bool open = true;
    bool visible = false;
};

} // namespace montala::sim
