#pragma once

#include "core/services/AlertWindowBase.h"

#include "kelmar/services/IHostServices.h"

#include <string>

namespace montala::host {

// The host's message box behind AlertWindowBase.
class AlertWindow : public core::AlertWindowBase {
public:
    // Borrowed: the services outlive the installed instance.
    explicit AlertWindow(Kelmar::IHostServices* services) : services(services) {}

    // NoInterface when the host has no message box.
    int show(const std::string& message, const std::string& title = {}, const std::string& button1 = {},
             const std::string& button2 = {}) override;

    // Makes the host's message box the one of the process; NotInitialized
    // when one is installed already.
    static void install(Kelmar::IHostServices* services);
    // Deletes the installed one; nothing happens without one.
    static void remove();

private:
    Kelmar::IHostServices* services = nullptr;
};

} // namespace montala::host
