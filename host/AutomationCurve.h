#pragma once

#include <map>

namespace montala::host {

// The values of one automation track as Montala reads them: a point per
// time, each with its value and whether the curve ends there until the next
// point. Mode 0 joins points by straight lines; modes 1 and 2 hold each
// value until the next point.
struct AutomationCurve {
    enum Mode { Linear = 0, Stepped = 1, SteppedHold = 2 };

    int mode = Linear;
    std::map<double, double> values;
    std::map<double, bool> segmentEnds;

    // The curve's value at `time`, absolute seconds. False where the curve
    // says nothing: before its first point, after a segment end, or with a
    // mode it does not know.
    bool valueAt(double time, double& out) const;

    bool empty() const { return values.empty(); }
    void add(double time, double value, bool segmentEnd)
    {
        values[time] = value;
        segmentEnds[time] = segmentEnd;
    }
};

} // namespace montala::host
