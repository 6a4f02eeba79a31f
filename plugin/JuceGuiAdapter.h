#pragma once

#include "kelmar/view/CPluginView.h"
#include "kelmar/view/IPlugViewContentScaleSupport.h"

#include <juce_gui_basics/juce_gui_basics.h>

#include <memory>

namespace montala::gui {
class MainGui;
}

namespace montala::host {

// Montala's window inside a host window: the view the host attaches to its
// native window, holding the main component. The host's rectangle is in
// device pixels; the component is laid out in JUCE's logical pixels, the
// host's size divided by the content scale.
class JuceGuiAdapter : public Kelmar::CPluginView,
                       public Kelmar::IPlugViewContentScaleSupport,
                       public juce::Component {
public:
    explicit JuceGuiAdapter(std::unique_ptr<gui::MainGui> main);
    ~JuceGuiAdapter() override;

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT
    const char* isA() const override { return "JuceGuiAdapter"; }

    // The parent kind of the system the module is built for: "HWND" on
    // Windows, the X11 window id on Linux.
    Kelmar::tresult isPlatformTypeSupported(const Kelmar::char8* type) override;
    Kelmar::tresult attached(void* parent, const Kelmar::char8* type) override;
    Kelmar::tresult onWheel(float) override { return Kelmar::kResultFalse; }
    Kelmar::tresult onKeyDown(Kelmar::char16 key, Kelmar::int16 keyCode, Kelmar::int16 modifiers) override;
    Kelmar::tresult onKeyUp(Kelmar::char16 key, Kelmar::int16 keyCode, Kelmar::int16 modifiers) override;
    Kelmar::tresult onSize(Kelmar::ViewRect* newSize) override;
    Kelmar::tresult onFocus(bool) override { return Kelmar::kResultFalse; }
    Kelmar::tresult canResize() override { return Kelmar::kResultOk; }
    Kelmar::tresult checkSizeConstraint(Kelmar::ViewRect*) override { return Kelmar::kResultFalse; }

    Kelmar::tresult setContentScaleFactor(float factor) override;

    void resized() override;
    // Opaque, as the host's window behind it is not drawn: what the main
    // component leaves shows the window's colour.
    void paint(juce::Graphics& g) override;

protected:
    void removedFromParent() override;

private:
    std::unique_ptr<gui::MainGui> main;
    float scale = 1.0f;
};

} // namespace montala::host
