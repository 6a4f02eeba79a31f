#pragma once

#include "core/services/ProcessInstance.h"

#include <string>

namespace montala::core {

// The message box, as the logic and the window use it. There is one for the
// process: whoever hosts Montala installs it (the host adapter puts the
// host's own message box behind it) and removes it when it goes. It is
// declared here, below the window and the host adapter, so that both can
// reach it without knowing each other.
class AlertWindowBase : public ProcessInstance<AlertWindowBase> {
public:
    enum Button {
        FirstButton = 1,
        SecondButton = 2,
    };

    virtual ~AlertWindowBase() = default;

    // Texts are UTF-8 and already translated. An empty title or button takes
    // the default of the one who shows it. Answers the button chosen.
    virtual int show(const std::string& message, const std::string& title = {}, const std::string& button1 = {},
                     const std::string& button2 = {}) = 0;
};

} // namespace montala::core
