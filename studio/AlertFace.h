#pragma once

#include "sim/services/SimAlertService.h"

#include "kelmar/services/IAlertService.h"

#include <functional>
#include <ostream>
#include <string>

namespace montala::studio {

// The texts of one message box as a user sees it: the host's defaults filled
// in where Montala passed none.
struct AlertTexts {
    std::string title;
    std::string message;
    std::string firstButton;
    std::string secondButton; // empty: one button only
};

AlertTexts describeAlert(const sim::SimAlertService::Alert& alert);

// The host's message box with a face: a JUCE alert window that waits for the
// user, or, for runs without a user, a line on the console that answers the
// first button (which is what a message box of Montala offers as the safe
// choice). Taken off the service when it goes.
class AlertFace {
public:
    // How the window is asked; replaced in tests.
    using Ask = std::function<Kelmar::int32(const AlertTexts&)>;

    // The messages the service kept before it had a face (those of a
    // session opened on the command line before the window came up) are
    // shown first: nobody has seen them yet.
    AlertFace(sim::SimAlertService& service, Ask ask);
    ~AlertFace();
    AlertFace(const AlertFace&) = delete;
    AlertFace& operator=(const AlertFace&) = delete;

    // A modal JUCE alert window.
    static Kelmar::int32 askInWindow(const AlertTexts& texts);
    // "Montala: message" on `out`, answered with the first button.
    static Ask onConsole(std::ostream& out);

private:
    sim::SimAlertService& service;
};

} // namespace montala::studio
