#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace montala::sim {

// Where a window opens: on the desktop (no parent), or inside the window
// `parent` at (x, y).
struct WindowPlacement {
    unsigned long parent = 0;
    int x = 0;
    int y = 0;
};

// The host's connection to the X server, for plug windows that are real
// top-level windows. Windows are named by their X11 ids.
class SimDisplay {
public:
    // Null when no X server answers on $DISPLAY.
    static std::unique_ptr<SimDisplay> open();
    ~SimDisplay();
    SimDisplay(const SimDisplay&) = delete;
    SimDisplay& operator=(const SimDisplay&) = delete;

    // A top-level window, or with `parent` a child window at (x, y) inside it.
    unsigned long createWindow(const std::string& title, int width, int height, unsigned long parent = 0, int x = 0,
                               int y = 0);
    void resizeWindow(unsigned long window, int width, int height);
    void destroyWindow(unsigned long window);

    // What the server has now, after every request so far reached it.
    struct Size {
        int width = 0;
        int height = 0;
    };
    std::optional<Size> size(unsigned long window);
    std::vector<unsigned long> children(unsigned long window);
    bool exists(unsigned long window);

private:
    explicit SimDisplay(void* display) : display(display) {}

    void* display; // Display*
};

} // namespace montala::sim
