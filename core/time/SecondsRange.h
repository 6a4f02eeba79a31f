#pragma once

#include "util/Result.h"

namespace montala::core {

// A pair of positions in seconds; the end may not be before the start.
struct SecondsRange {
    SecondsRange(double start, double end) : start(start), end(end)
    {
        // Written so that NaN is refused as well.
        if (!(end >= start))
            throw util::Result::InvalidArgument;
    }

    bool isEmpty() const { return start == end; }
    bool operator==(const SecondsRange& other) const { return start == other.start && end == other.end; }

    double start;
    double end;
};

} // namespace montala::core
