#pragma once

#include "kelmar/base/FObject.h"
#include "kelmar/services/IHostServices.h"
#include "kelmar/services/IProgressService.h"
#include "kelmar/base/IPtr.h"

#include <cstdint>
#include <functional>
#include <string>

namespace montala::run {

// What the progress window shows at a moment.
struct ProgressState {
    std::u16string title;
    std::u16string detail;
    std::int64_t position = 0;
    std::int64_t total = 0;
};

// The host's services as Montala sees them, with the progress window looked
// over: every call to the window goes on to the host's own, and the watcher
// hears of it. The watcher answers whether the user wants the run to stop;
// the relay then writes 1 through the cancel flag that Montala gave the
// window, exactly as the host does when its cancel button is pressed. So a
// program that drives a run (a terminal, a Ctrl-C) talks to Montala only the
// way a host would.
//
//   Host --getService--> ServicesRelay --(all but progress)--> host services
//                             |
//                             +-- progress --> relay window --> host window
//                                                   |
//                                              watcher(state) -> cancel?
class ServicesRelay : public Kelmar::FObject, public Kelmar::IHostServices {
public:
    // Answers true to ask for a cancel.
    using Watcher = std::function<bool(const ProgressState&)>;

    static Kelmar::IPtr<ServicesRelay> create(Kelmar::IHostServices* hostServices, Watcher watcher);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT
    const char* isA() const override { return "ServicesRelay"; }

    Kelmar::tresult getService(const Kelmar::FUID& iid, void** service) override;

    // Whether a cancel has been written through the flag since the window
    // was last set up.
    bool cancelWritten() const;

    // Lets the services go, so that the host can shut down cleanly.
    void releaseServices();

private:
    class Window;

    ServicesRelay(Kelmar::IHostServices* hostServices, Watcher watcher);

    Kelmar::IPtr<Kelmar::IHostServices> inner;
    Kelmar::IPtr<Window> window;
};

} // namespace montala::run
