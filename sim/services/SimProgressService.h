#pragma once

#include "kelmar/services/IProgressService.h"
#include "sim/project/SimBase.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace montala::sim {

// The progress window. It keeps every call, in order, as a line such as
// "setTotal 12" (advances in a row as one, "advance 40"), and the state a
// user would see. A test makes the user press
// cancel after a number of steps: the service then writes 1 through the
// cancel flag, as the host does.
class SimProgressService : public SimBase, public Kelmar::IProgressService {
public:
    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult setup(Kelmar::int32 mode, const Kelmar::char16* title, Kelmar::uint8* cancelFlag) override;
    Kelmar::tresult setPosition(Kelmar::int64 position) override;
    Kelmar::tresult setTotal(Kelmar::int64 total) override;
    Kelmar::tresult setValue(Kelmar::int64 value) override;
    Kelmar::tresult setText(const Kelmar::char16* text) override;
    Kelmar::tresult advance(Kelmar::int64 count) override;
    Kelmar::tresult show() override;
    Kelmar::tresult hide() override;

    // Cancel once `steps` steps have been advanced since the last setup
    // (0: at the next call that advances). A negative count never cancels.
    void cancelAfter(std::int64_t steps) { cancelAt = steps; }

    // A program with a user gives the window a face: it is told after each
    // call that changes what a user sees (show, hide, text, value, advance)
    // and presses cancel() for the user.
    using Face = std::function<void(const SimProgressService&)>;
    void setFace(Face newFace) { face = std::move(newFace); }
    // The cancel button: writes 1 through the flag of a cancellable window
    // that is showing; nothing otherwise.
    void cancel();
    bool isCancellable() const { return cancelFlag != nullptr; }

    const std::vector<std::string>& calls() const { return log; }
    const std::u16string& title() const { return currentTitle; }
    const std::u16string& text() const { return currentText; }
    std::int64_t position() const { return currentPosition; }
    std::int64_t total() const { return currentTotal; }
    bool isVisible() const { return visible; }
    bool wasCancelled() const { return cancelled; }

private:
    void checkCancel();
    void tellFace();

    std::vector<std::string> log;
    // The length of the log when its last line was an advance, and their sum.
    std::size_t advanceLine = 0;
    std::int64_t advanceSum = 0;
    std::u16string currentTitle;
    std::u16string currentText;
    std::int64_t currentPosition = 0;
    std::int64_t currentTotal = 0;
    std::int64_t advanced = 0;
    std::int64_t cancelAt = -1;
    Kelmar::uint8* cancelFlag = nullptr;
    bool visible = false;
    bool cancelled = false;
    Face face;
};

} // namespace montala::sim
