#pragma once

#include "kelmar/view/IPlugFrame.h"
#include "kelmar/view/IPlugView.h"
#include "kelmar/view/IPlugWindow.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimBase.h"
#include "sim/services/SimDisplay.h"

#include <string>

namespace montala::sim {

// A window the skin service opened. Without a display it is headless: the
// view is built but never attached. With one, show() opens an X11 window of
// the view's size, top-level or inside the host's main window (its
// workspace), and attaches the view to it, as its frame:
//
//   show:   isPlatformTypeSupported, setFrame(this), attached(window), onSize
//   resize: onSize, from the user (resize) or the view (resizeView)
//   close:  removed, setFrame(null), the X11 window destroyed, then the
//           close notification, then the view let go; the host's lifecycle
//           records "close window NAME"
class SimHost;

class SimPlugWindow : public SimBase, public Kelmar::IPlugWindow, public Kelmar::IPlugFrame {
public:
    // On `host`'s display, where the host places its windows now; headless
    // without one.
    SimPlugWindow(std::string name, std::string title, Kelmar::IPtr<Kelmar::IPlugView> view, SimHost& host);
    ~SimPlugWindow() override;

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult show() override;
    Kelmar::tresult close(Kelmar::int32 flags) override;
    Kelmar::tresult setCloseNotification(Kelmar::ICloseWindowNotification* notification) override;

    // The view asks for a new size of its window.
    Kelmar::tresult resizeView(Kelmar::IPlugView* view, Kelmar::ViewRect* newSize) override;
    // The user drags the window to this size.
    void resize(int width, int height);

    const std::string& name() const { return windowName; }
    bool isOpen() const { return open; }
    bool isVisible() const { return visible; }
    Kelmar::IPlugView* view() const { return plugView.get(); }
    // The X11 window the view is attached to; 0 when headless or closed.
    unsigned long nativeWindow() const { return native; }

private:
    void detach();

    std::string windowName;
    std::string title;
    Kelmar::IPtr<Kelmar::IPlugView> plugView;
    SimHost* host;
    SimDisplay* display; // the host's, or null
    WindowPlacement placement;
    unsigned long native = 0;
    Kelmar::ICloseWindowNotification* closeNotification = nullptr;
    bool open = true;
    bool visible = false;
};

} // namespace montala::sim
