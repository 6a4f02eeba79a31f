#pragma once

#include "kelmar/base/IPtr.h"
#include "sim/project/SimObject.h"

#include <optional>
#include <utility>
#include <vector>

namespace montala::sim {

// The range work of the simulated host on one track.
//
// Copying [s, e) of a track takes what overlaps the range, cut at its edges:
//
//        s              e                    what is copied
//   |--A--|---B---|--C--|--D--|      ->     |A'|---B---|C'|
//
// A' keeps its sound from where the range starts: its source offset grows by
// (s - A's start). A piece whose end was cut ends its chain there (C' is not
// joined to a next event even when C was). Automation is taken as it sounds
// inside the range, with a point at each edge: the value after a step on the
// start, the value before a step on the end. Pasting puts the copy on
// top of what lies at the destination, as a layer; automation points inside
// the destination range make way for the copied ones, and a point on each
// edge of the destination keeps the curve outside the range as it was.
// Nothing is pasted before the project start (host time 0): a destination
// that begins earlier is cut there, and a point at 0 holds the copy's value.
//
// Deleting [s, e) removes what lies inside and cuts what crosses an edge:
//
//        s              e
//   |--A--|---B---|--C--|--D--|      ->     |-A-|            |D-|
//
// Nothing after the range moves; automation gets a point at each edge that
// holds the old value, so the curve outside the range keeps its shape.
class SimRangeEditor {
public:
    // What a copy of one track holds; times are relative to the range start.
    struct TrackCopy {
        Kelmar::IPtr<SimObject> track;
        SimObject::List items;
        std::vector<std::pair<Kelmar::IPtr<SimObject>, SimObject::List>> automation;
        // Set when the curves' lists hold, between their new edge points,
        // the curves' own points, to be copied from a range starting here
        // when they are pasted.
        std::optional<double> pointsFrom;
    };

    // With `pointsLater`, the curves' points inside the range are copied by
    // the paste of the copy, one by one as it places them, instead of all
    // here first: a long curve's copies are then fetched once while new.
    // Such a copy is for a paste at or after the project start only.
    static TrackCopy copyTrack(SimObject& track, double start, double end, bool pointsLater = false);
    static void paste(const TrackCopy& copy, double position, double length);
    // The same with a copy made for this paste alone: its nodes are placed
    // themselves instead of being copied once more.
    static void paste(TrackCopy&& copy, double position, double length);
    static void deleteOnTrack(SimObject& track, double start, double end);

    // The part of `node` (a direct child of a track) that lies in [start, end),
    // as a new node with timeline times; null when nothing of it lies there.
    // An end at or before the node's own end cuts its chain; pass infinity to
    // keep the node's own end uncut.
    static Kelmar::IPtr<SimObject> trimmedCopy(const SimObject& node, double start, double end);

    // Trims a part (in place) to [low, high] on the timeline, inside its
    // present range. The events inside keep their place on the timeline and
    // stay the same objects; only those that change are changed, and those
    // left outside a cut edge are taken out.
    static void fitPart(SimObject& part, double low, double high);

    // The curve's value at `time`: before the first point the first value,
    // after the last the last; a stepped curve (types 0 and 3) or a segment
    // end holds the earlier point's value, the others are linear between
    // points. None when the automation track has no point.
    static std::optional<double> valueAt(const SimObject& automationTrack, double time);
    // The same over points of a curve of type `curveType`, in time order.
    static std::optional<double> valueAt(const SimObject::List& points, int curveType, double time);

    // The value as the curve leaves `time` (after a step there) and as it
    // arrives there (before a step); points within epsilon lie on `time`.
    static std::optional<double> valueLeaving(const SimObject::List& points, int curveType, double time);
    static std::optional<double> valueArriving(const SimObject::List& points, int curveType, double time);
    // Whether the curve leaves `time` held by a segment end.
    static bool holdsAt(const SimObject::List& points, double time);

    // Times closer than this are the same.
    static constexpr double epsilon = 1e-9;

private:
    // Pastes the copy's nodes themselves when `fresh`, else copies of them.
    static void paste(const TrackCopy& copy, double position, double length, bool fresh);
    // The range that the events inside a part trimmed to [low, high] are
    // cut to, with the part's present fields.
    static double innerStart(const SimObject::Fields& part, double low);
    static double innerEnd(const SimObject::Fields& part, double high);
};

} // namespace montala::sim
