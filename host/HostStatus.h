#pragma once

#include "core/time/Framerate.h"
#include "host/RunSummary.h"

#include "kelmar/base/FObject.h"
#include "kelmar/base/IPtr.h"

#include <string>

namespace montala::host {

class Host;

// What a program that hosts Montala asks of it beyond the host's own
// interfaces, to tell its user about a run: whether a run holds the project,
// what the last one did, and the change report of the active project. The
// module's service hands it to its loader through queryInterface; a program
// with Montala built in makes one over its own Host.
//
// Every operation is virtual on purpose. A program that loaded the module
// has its own copy of the model and the window, with process-wide pointers
// (frame rate provider, string converter) that only the module's copy has
// set: the work must run in the module's code, never in the caller's copy.
// Values cross by copy, which needs one C++ runtime on both sides: true on
// Linux (one libstdc++); on Windows it holds only for a module built against
// the host's runtime DLL.
class HostStatusInterface : public Kelmar::FUnknown {
public:
    static constexpr Kelmar::FUID iid{"{26D05760-CC4D-4300-96A5-ECB6655FBFE7}"};

    // A run's own edits are under way.
    virtual bool isBusy() = 0;
    // A run was asked for and the next idle call carries it out.
    virtual bool isRunPending() = 0;
    virtual bool isPreviewActive() = 0;
    virtual RunSummary lastRun() = 0;
    // The active project's rate and Change EDL; undefined and 0 without one.
    virtual core::Framerate activeRate() = 0;
    virtual size_t changeEventCount() = 0;
    // The HTML change report of the active project, titled `title`; false
    // with `error` telling the user what to do first.
    virtual bool changeReportHtml(const std::string& title, std::string& html, std::string& error) = 0;
};

// The answers of one Host.
class HostStatus : public Kelmar::FObject, public HostStatusInterface {
public:
    explicit HostStatus(Host& host) : host(&host) {}

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    bool isBusy() override;
    bool isRunPending() override;
    bool isPreviewActive() override;
    RunSummary lastRun() override;
    core::Framerate activeRate() override;
    size_t changeEventCount() override;
    bool changeReportHtml(const std::string& title, std::string& html, std::string& error) override;

private:
    Host* host; // outlives this object
};

} // namespace montala::host
