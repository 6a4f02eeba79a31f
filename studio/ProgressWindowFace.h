#pragma once

#include "sim/services/SimProgressService.h"

#include <memory>
#include <string>

namespace juce {
class Component;
}

namespace montala::studio {

// What the progress window shows at a moment: the run's title, the line
// under it, and how far the bar is (0 to 1; 0 while the total is unknown).
struct ProgressView {
    std::string title;
    std::string text;
    double fraction = 0.0;
    bool cancellable = false;
};

ProgressView describeProgress(const sim::SimProgressService& service);

// The host's progress window with a face: a small window over the main one
// with the run's text, a bar and Cancel. A run of Montala keeps the message
// thread for itself, so the face lets the thread draw and take the Cancel
// click at most every 50 ms of the run; the main window takes no clicks
// meanwhile. Cancel goes to the service, which writes the cancel flag as
// the host does. Taken off the service when it goes.
class ProgressWindowFace {
public:
    // `blocked` (not owned, may be null) is disabled while the window shows.
    ProgressWindowFace(sim::SimProgressService& service, juce::Component* blocked);
    ~ProgressWindowFace();
    ProgressWindowFace(const ProgressWindowFace&) = delete;
    ProgressWindowFace& operator=(const ProgressWindowFace&) = delete;

    bool isShowing() const;

private:
    class Window;

    void update(const sim::SimProgressService& service);

    sim::SimProgressService& service;
    juce::Component* blocked;
    std::unique_ptr<Window> window;
    double lastDispatch = 0.0;
};

} // namespace montala::studio
