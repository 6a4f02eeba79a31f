#pragma once

#include <juce_gui_basics/juce_gui_basics.h>

#include <functional>
#include <vector>

namespace montala::studio {

// The menu's keys anywhere in the studio's window, Montala's window
// included. That window is a child X11 window read by the module's own copy
// of JUCE, so keys typed there never reach this program's JUCE. A
// workstation takes its shortcuts before its plug-ins' windows do; here a
// passive grab on the main window does the same: the X server hands those
// keys to a connection of this object's, whichever window inside has the
// focus, and a timer passes them on.
//
// Linux only: on Windows the host's own message loop sees every key first
// and offers it to the view (IPlugView::onKeyDown), so no grab is needed.
class HostKeys : private juce::Timer {
public:
    using Press = std::function<void(const juce::KeyPress&)>;

    // Grabs `keys` (letters with Ctrl and Shift) on the X11 window `window`.
    // Does nothing without an X server.
    HostKeys(unsigned long window, const std::vector<juce::KeyPress>& keys, Press press);
    ~HostKeys() override;
    HostKeys(const HostKeys&) = delete;
    HostKeys& operator=(const HostKeys&) = delete;

private:
    void timerCallback() override;

    void* display = nullptr; // Display*
    unsigned long window;
    Press press;
};

} // namespace montala::studio
