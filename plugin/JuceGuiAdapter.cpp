#include "plugin/JuceGuiAdapter.h"

#include "gui/MainGui.h"
#include "gui/Palette.h"

#include "kelmar/view/IPlugFrame.h"

#include <cstring>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace montala::host {

using namespace Kelmar;

namespace {

// The host's window that the view goes into: an HWND on Windows, an X11
// window id on Linux, where JUCE makes its own window a child of it.
#if defined(_WIN32)
constexpr const char8* nativeParentType = kPlatformTypeHWND;
#else
constexpr const char8* nativeParentType = kPlatformTypeX11EmbedWindowID;
#endif

#if defined(_WIN32)
// The host's frame keeps the mouse wheel from its child windows, so one
// thread-bound mouse hook, shared by every open view, hands WM_MOUSEWHEEL to
// the JUCE window under the pointer. On Linux the X server sends the wheel
// (buttons 4 and 5) straight to JUCE's own window: no hook is needed there.
HHOOK wheelHook = nullptr;
int wheelHookUsers = 0;

LRESULT CALLBACK forwardWheel(int code, WPARAM message, LPARAM data)
{
    if (code >= 0 && message == WM_MOUSEWHEEL) {
        const auto* event = reinterpret_cast<const MOUSEHOOKSTRUCTEX*>(data);
        juce::Component* under = juce::Desktop::getInstance().findComponentAt({event->pt.x, event->pt.y});
        if (juce::ComponentPeer* peer = under ? under->getPeer() : nullptr)
            return SendMessageW(static_cast<HWND>(peer->getNativeHandle()), WM_MOUSEWHEEL,
                                static_cast<WPARAM>(event->mouseData & 0xFFFF0000u),
                                MAKELPARAM(event->pt.x, event->pt.y));
    }
    return CallNextHookEx(wheelHook, code, message, data);
}

void holdWheelHook()
{
    if (wheelHookUsers++ == 0)
        wheelHook = SetWindowsHookExW(WH_MOUSE, forwardWheel, nullptr, GetCurrentThreadId());
}

void releaseWheelHook()
{
    if (--wheelHookUsers == 0 && wheelHook) {
        UnhookWindowsHookEx(wheelHook);
        wheelHook = nullptr;
    }
}
#endif

const ViewRect initialRect{0, 0, gui::MainGui::defaultWidth, gui::MainGui::defaultHeight};

} // namespace

JuceGuiAdapter::JuceGuiAdapter(std::unique_ptr<gui::MainGui> mainComponent)
    : CPluginView(&initialRect), main(std::move(mainComponent))
{
#if defined(_WIN32)
    holdWheelHook();
#endif
    setSize(initialRect.getWidth(), initialRect.getHeight());
    addAndMakeVisible(main.get());
}

JuceGuiAdapter::~JuceGuiAdapter()
{
#if defined(_WIN32)
    releaseWheelHook();
#endif
    removeChildComponent(main.get());
    if (isOnDesktop())
        removeFromDesktop();
    // The window leaves the Host's listeners before it goes.
    main->setProject(nullptr);
    main->setMontaler(nullptr);
    main.reset();
}

tresult JuceGuiAdapter::queryInterface(const FUID& iid, void** obj)
{
    if (!obj)
        return kInvalidArgument;
    if (answerInterface<IPlugViewContentScaleSupport>(this, iid, obj))
        return kResultOk;
    return CPluginView::queryInterface(iid, obj);
}

tresult JuceGuiAdapter::isPlatformTypeSupported(const char8* type)
{
    // Byte by byte, the terminator included: the one type of the system the
    // module is built for ("HWND" on Windows, the X11 window id on Linux) and
    // nothing longer.
    const std::size_t length = std::strlen(nativeParentType) + 1;
    if (type && std::memcmp(type, nativeParentType, length) == 0)
        return kResultOk;
    return kInvalidArgument;
}

tresult JuceGuiAdapter::attached(void* parent, const char8* type)
{
    if (isPlatformTypeSupported(type) != kResultOk)
        return kInvalidArgument;
    setOpaque(true);
    setVisible(false);
    addToDesktop(0, parent);
    setVisible(true);
    return CPluginView::attached(parent, type);
}

void JuceGuiAdapter::removedFromParent()
{
    // The host destroys its window right after this: JUCE's own window
    // inside it goes first, while it still has a parent.
    if (isOnDesktop())
        removeFromDesktop();
}

tresult JuceGuiAdapter::onKeyDown(char16 key, int16 keyCode, int16 modifiers)
{
    juce::ComponentPeer* peer = main ? main->getPeer() : nullptr;
    if (!peer)
        return kResultFalse;
    const juce::KeyPress press(keyCode, juce::ModifierKeys(modifiers), static_cast<juce::juce_wchar>(key));
    return peer->handleKeyPress(press) ? kResultOk : kResultFalse;
}

tresult JuceGuiAdapter::onKeyUp(char16, int16, int16)
{
    juce::ComponentPeer* peer = main ? main->getPeer() : nullptr;
    if (!peer)
        return kResultFalse;
    return peer->handleKeyUpOrDown(false) ? kResultOk : kResultFalse;
}

tresult JuceGuiAdapter::onSize(ViewRect* newSize)
{
    const tresult stored = CPluginView::onSize(newSize);
    if (stored != kResultOk)
        return stored;
    setSize(static_cast<int>(newSize->getWidth() / scale), static_cast<int>(newSize->getHeight() / scale));
    return kResultOk;
}

tresult JuceGuiAdapter::setContentScaleFactor(float factor)
{
    if (!(factor > 0.0f))
        return kInvalidArgument;
    scale = factor;
    juce::Desktop::getInstance().setGlobalScaleFactor(factor);
    ViewRect scaled = rect;
    scaled.right = scaled.left + static_cast<int32>(rect.getWidth() * factor);
    scaled.bottom = scaled.top + static_cast<int32>(rect.getHeight() * factor);
    if (frame)
        frame->resizeView(this, &scaled);
    resized();
    return kResultOk;
}

void JuceGuiAdapter::paint(juce::Graphics& g)
{
    g.fillAll(gui::palette::window);
}

void JuceGuiAdapter::resized()
{
    if (main)
        main->setBounds(getLocalBounds());
}

} // namespace montala::host
