#pragma once

#include <map>

namespace montala::host {

// The values of one automation track as Montala reads them, with the host's
// rules: before the first point the curve has the first point's value, after
// the last the last one's; a point that ends a segment holds its value until
// the next point. Mode 0 joins the other points by straight lines; modes 1
// and 2 hold each value until the next point. Two points at one time are a
// step: the first is the value the curve arrives with, the last the value it
// leaves with.
//
//   value   1 |      /|
//             |     / |
//           0 |____/  |______     a ramp, then a step back on the same time
//                     t
struct AutomationCurve {
    enum Mode { Linear = 0, Stepped = 1, SteppedHold = 2 };

    struct Point {
        double value;
        bool segmentEnd;
    };
    using Points = std::multimap<double, Point>;

    int mode = Linear;
    // By absolute time; points at one time in the host's order.
    Points points;

    // The value as the curve leaves `time`, after a step there, and as it
    // arrives there, before it. Points closer to `time` than one sample lie
    // on it. False for an empty curve or a mode it does not know.
    bool valueAt(double time, double& out) const;
    bool valueArriving(double time, double& out) const;
    // Whether the curve leaves `time` held by a segment end.
    bool holdsAt(double time) const;

    // The points that lie on `time` are [firstOn, pastOn).
    Points::iterator firstOn(double time);
    Points::iterator pastOn(double time);

    bool empty() const { return points.empty(); }
    // After the points already at that time.
    void add(double time, double value, bool segmentEnd) { points.emplace(time, Point{value, segmentEnd}); }

private:
    bool known() const { return mode == Linear || mode == Stepped || mode == SteppedHold; }
    double between(Points::const_iterator p, Points::const_iterator q, double time) const;
};

} // namespace montala::host
