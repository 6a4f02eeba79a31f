#include "host/AutomationCurve.h"

#include <iterator>

namespace montala::host {

bool AutomationCurve::valueAt(double time, double& out) const
{
    if (segmentEnds.empty() || values.empty())
        return false;

    // The curve says nothing before its first point, nor after a point that
    // ends a segment (until the next point, which starts a new one).
    auto atOrAfter = segmentEnds.lower_bound(time);
    if (atOrAfter == segmentEnds.begin() && atOrAfter->first != time)
        return false;
    if (atOrAfter == segmentEnds.end() || atOrAfter->first != time) {
        auto before = std::prev(atOrAfter);
        if (before->second)
            return false;
    }

    if (mode != Linear && mode != Stepped && mode != SteppedHold)
        return false;

    auto next = values.lower_bound(time);
    if (next == values.end()) {
        out = std::prev(next)->second;
        return true;
    }
    if (next->first == time) {
        out = next->second;
        return true;
    }
    auto previous = std::prev(next);
    const double t1 = previous->first;
    const double y1 = previous->second;
    if (mode == Linear) {
        const double t2 = next->first;
        const double y2 = next->second;
        out = ((1.0 / (t2 - t1)) * (time - t1) * (y2 - y1)) + y1;
    } else {
        out = y1;
    }
    return true;
}

} // namespace montala::host
