#include "studio/HostKeys.h"

#include <X11/Xlib.h>
#include <X11/keysym.h>

// Xlib's event type, under a name that leaves juce::KeyPress alone.
constexpr int xKeyPress = KeyPress;
#undef KeyPress

namespace montala::studio {

namespace {

Display* native(void* display)
{
    return static_cast<Display*>(display);
}

// Caps Lock and Num Lock change nothing of a shortcut: each key is grabbed
// with every state of the two.
constexpr unsigned int lockStates[] = {0, LockMask, Mod2Mask, LockMask | Mod2Mask};

unsigned int modifierMask(const juce::ModifierKeys& modifiers)
{
    return (modifiers.isCtrlDown() ? ControlMask : 0u) | (modifiers.isShiftDown() ? ShiftMask : 0u);
}

} // namespace

HostKeys::HostKeys(unsigned long window, const std::vector<juce::KeyPress>& keys, Press press)
    : window(window), press(std::move(press))
{
    Display* x = XOpenDisplay(nullptr);
    if (!x)
        return;
    display = x;
    for (const juce::KeyPress& key : keys) {
        const KeyCode code = XKeysymToKeycode(x, static_cast<KeySym>(juce::CharacterFunctions::toLowerCase(
                                                      static_cast<juce::juce_wchar>(key.getKeyCode()))));
        if (code == 0)
            continue;
        for (unsigned int lock : lockStates)
            XGrabKey(x, code, modifierMask(key.getModifiers()) | lock, window, True, GrabModeAsync, GrabModeAsync);
    }
    XSync(x, False);
    startTimer(40);
}

HostKeys::~HostKeys()
{
    stopTimer();
    if (!display)
        return;
    XUngrabKey(native(display), AnyKey, AnyModifier, window);
    XCloseDisplay(native(display));
}

void HostKeys::timerCallback()
{
    Display* x = native(display);
    while (XPending(x) > 0) {
        XEvent event;
        XNextEvent(x, &event);
        if (event.type != xKeyPress)
            continue;
        // A box or dialog of the studio's that waits for an answer keeps the
        // menu's keys from the window behind it, as it keeps the mouse.
        if (juce::Component::getCurrentlyModalComponent() != nullptr)
            continue;
        const KeySym symbol = XLookupKeysym(&event.xkey, 0);
        int modifiers = 0;
        if (event.xkey.state & ControlMask)
            modifiers |= juce::ModifierKeys::ctrlModifier;
        if (event.xkey.state & ShiftMask)
            modifiers |= juce::ModifierKeys::shiftModifier;
        press(juce::KeyPress(static_cast<int>(symbol), juce::ModifierKeys(modifiers), 0));
    }
}

} // namespace montala::studio
