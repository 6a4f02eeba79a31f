#pragma once

#include "core/time/Timecode.h"
#include "util/Result.h"

namespace montala::core {

// A pair of timecodes; the end may not be before the start.
struct TimecodeRange {
    TimecodeRange(const Timecode& start, const Timecode& end) : start(start), end(end)
    {
        if (end < start)
            throw util::Result::InvalidArgument;
    }

    Timecode start;
    Timecode end;
};

} // namespace montala::core
