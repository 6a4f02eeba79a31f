#include "host/AutomationCurve.h"

#include "core/time/Tolerances.h"

#include <iterator>

namespace montala::host {

AutomationCurve::Points::iterator AutomationCurve::firstOn(double time)
{
    return points.lower_bound(time - core::positionTolerance);
}

AutomationCurve::Points::iterator AutomationCurve::pastOn(double time)
{
    return points.upper_bound(time + core::positionTolerance);
}

double AutomationCurve::between(Points::const_iterator p, Points::const_iterator q, double time) const
{
    if (mode != Linear || p->second.segmentEnd)
        return p->second.value;
    return p->second.value + (q->second.value - p->second.value) * (time - p->first) / (q->first - p->first);
}

bool AutomationCurve::valueAt(double time, double& out) const
{
    if (points.empty() || !known())
        return false;
    const auto past = points.upper_bound(time + core::positionTolerance);
    if (past == points.begin()) {
        out = points.begin()->second.value;
        return true;
    }
    const auto p = std::prev(past);
    out = past == points.end() || p->first >= time - core::positionTolerance ? p->second.value : between(p, past, time);
    return true;
}

bool AutomationCurve::valueArriving(double time, double& out) const
{
    if (points.empty() || !known())
        return false;
    const auto first = points.lower_bound(time - core::positionTolerance);
    if (first == points.begin() || first == points.end()) {
        out = first == points.begin() ? first->second.value : std::prev(first)->second.value;
        return true;
    }
    // Straight on to a point that lies on the time: its value is where the
    // line arrives.
    const auto p = std::prev(first);
    out = between(p, first, first->first <= time + core::positionTolerance ? first->first : time);
    return true;
}

bool AutomationCurve::holdsAt(double time) const
{
    const auto past = points.upper_bound(time + core::positionTolerance);
    return past != points.begin() && std::prev(past)->second.segmentEnd;
}

} // namespace montala::host
