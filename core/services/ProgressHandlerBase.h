#pragma once

#include <cstdint>
#include <string>

namespace montala::core {

// The progress window of a run, as the logic sees it. The host gives the
// real one; a run without a host can pass any plain implementation, or none:
// the algorithms take a null pointer to mean "nobody is watching".
class ProgressHandlerBase {
public:
    virtual ~ProgressHandlerBase();

    // Opens the window with a title and a total of steps. Only a cancellable
    // run can ever see isCancelled answer true.
    virtual void start(const std::u16string& text, int64_t total, bool cancellable) = 0;
    virtual void finish() = 0;
    virtual void setValue(int64_t value) = 0;
    virtual void advance(int64_t count) = 0;
    virtual bool isCancelled() = 0;
    // The detail line under the title: the step the run is in.
    virtual void setText(const std::u16string& text) = 0;
    // Moves the total, not the position: for work whose size is known late
    // (the markers, say, once the detectors have run).
    virtual void addSteps(int64_t count) = 0;
};

} // namespace montala::core
