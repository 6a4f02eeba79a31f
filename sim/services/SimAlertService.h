#pragma once

#include "kelmar/services/IAlertService.h"
#include "sim/project/SimBase.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace montala::sim {

// The message box. It keeps every message shown and answers with the buttons
// a test has queued, the first button when none is queued.
class SimAlertService : public SimBase, public Kelmar::IAlertService {
public:
    struct Alert {
        std::u16string message;
        std::optional<std::u16string> title;
        std::optional<std::u16string> firstButton;
        std::optional<std::u16string> secondButton;
    };

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::int32 show(const Kelmar::char16* message, const Kelmar::char16* title, const Kelmar::char16* firstButton,
                       const Kelmar::char16* secondButton) override;

    void queueAnswer(Kelmar::int32 button) { answers.push_back(button); }
    // A program with a user gives the message box a face: it is asked for
    // the button instead of the queue. The message is kept all the same.
    using Face = std::function<Kelmar::int32(const Alert&)>;
    void setFace(Face newFace)
    {
        face = std::move(newFace);
        seenUpTo = alerts.size();
    }
    bool hasFace() const { return static_cast<bool>(face); }
    // The messages kept since the last face went (or since the start) that
    // no face has shown.
    std::vector<Alert> unseen() const
    {
        return std::vector<Alert>(alerts.begin() + static_cast<std::ptrdiff_t>(std::min(seenUpTo, alerts.size())),
                                  alerts.end());
    }
    const std::vector<Alert>& shown() const { return alerts; }
    void clear()
    {
        alerts.clear();
        seenUpTo = 0;
    }

private:
    std::vector<Alert> alerts;
    // Messages before this one were there when the last face came or went:
    // shown by it, or by the one before.
    size_t seenUpTo = 0;
    std::deque<Kelmar::int32> answers;
    Face face;
};

} // namespace montala::sim
