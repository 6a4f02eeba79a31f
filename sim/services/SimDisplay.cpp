#include "sim/services/SimDisplay.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>

namespace montala::sim {

namespace {

Display* native(void* display)
{
    return static_cast<Display*>(display);
}

// A plug-in's view lives in windows of the host's, and the plug-in's toolkit
// may ask about them after the host destroyed them, or set properties that
// an X server without a window manager (Xvfb) refuses. Xlib's default
// handler would end the whole host for that; these errors are let pass.
int ignoreError(Display*, XErrorEvent*)
{
    return 0;
}

} // namespace

std::unique_ptr<SimDisplay> SimDisplay::open()
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return nullptr;
    XSetErrorHandler(ignoreError);
    return std::unique_ptr<SimDisplay>(new SimDisplay(display));
}

SimDisplay::~SimDisplay()
{
    XCloseDisplay(native(display));
}

unsigned long SimDisplay::createWindow(const std::string& title, int width, int height, unsigned long parent,
                                       int left, int top)
{
    Display* x = native(display);
    const int screen = DefaultScreen(x);
    const Window window = XCreateSimpleWindow(x, parent ? parent : RootWindow(x, screen), left, top,
                                              static_cast<unsigned>(width),
                                              static_cast<unsigned>(height), 0, BlackPixel(x, screen),
                                              BlackPixel(x, screen));
    XStoreName(x, window, title.c_str());
    XMapWindow(x, window);
    XSync(x, False);
    return window;
}

void SimDisplay::resizeWindow(unsigned long window, int width, int height)
{
    XResizeWindow(native(display), window, static_cast<unsigned>(width), static_cast<unsigned>(height));
    XSync(native(display), False);
}

void SimDisplay::destroyWindow(unsigned long window)
{
    XDestroyWindow(native(display), window);
    XSync(native(display), False);
}

std::optional<SimDisplay::Size> SimDisplay::size(unsigned long window)
{
    XSync(native(display), False);
    XWindowAttributes attributes;
    if (!XGetWindowAttributes(native(display), window, &attributes))
        return std::nullopt;
    return Size{attributes.width, attributes.height};
}

std::vector<unsigned long> SimDisplay::children(unsigned long window)
{
    XSync(native(display), False);
    Window root = 0;
    Window parent = 0;
    Window* list = nullptr;
    unsigned count = 0;
    std::vector<unsigned long> found;
    if (!XQueryTree(native(display), window, &root, &parent, &list, &count))
        return found;
    found.assign(list, list + count);
    if (list)
        XFree(list);
    return found;
}

bool SimDisplay::exists(unsigned long window)
{
    return size(window).has_value();
}

} // namespace montala::sim
