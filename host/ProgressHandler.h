#pragma once

#include "core/services/ProgressHandlerBase.h"

#include "kelmar/services/IHostServices.h"
#include "kelmar/services/IProgressService.h"
#include "kelmar/base/IPtr.h"

#include <cstdint>
#include <string>

namespace montala::host {

// The host's progress window behind the logic's progress handler. It lives
// on the stack of one run: start opens the window, finish closes it, and the
// host cancels by writing 1 into a byte of this object, which isCancelled
// reads. Going out of scope closes a window still open, so that a run left
// by a failure does not leave it on screen.
//
// Every call but start and isCancelled needs an open window: without one it
// is NotInitialized.
class ProgressHandler : public core::ProgressHandlerBase {
public:
    // Borrowed: the services outlive the run.
    explicit ProgressHandler(Kelmar::IHostServices* services) : services(services) {}
    ~ProgressHandler() override;
    ProgressHandler(const ProgressHandler&) = delete;
    ProgressHandler& operator=(const ProgressHandler&) = delete;

    // `text` is the title line of the run; NotInitialized when already open.
    void start(const std::u16string& text, int64_t total, bool cancellable) override;
    void finish() override;
    void setValue(int64_t value) override;
    void advance(int64_t count) override;
    bool isCancelled() override { return cancelFlag != 0; }
    // Shows "<title> - <detail>".
    void setText(const std::u16string& detail) override;
    void addSteps(int64_t count) override;

    int64_t getTotal() const { return total; }

private:
    Kelmar::IProgressService& open();

    // Written by the host when the user cancels a cancellable run.
    Kelmar::uint8 cancelFlag = 0;
    Kelmar::IPtr<Kelmar::IProgressService> service;
    Kelmar::IHostServices* services = nullptr;
    std::u16string text;
    int64_t total = 0;
};

} // namespace montala::host
