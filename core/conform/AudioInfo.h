#pragma once

#include <map>

namespace montala::core {

// What a track holds around one position of the old timeline: the audio
// event under it and its neighbours, and the automation on both sides.
struct AudioInfo {
    // Absolute seconds. Start equal to end means there is nothing.
    struct Range {
        double start = 0.0;
        double end = 0.0;

        bool isEmpty() const { return start == end; }
        double length() const { return end - start; }
    };

    // The automation points next to the position, (t1, y1) before it and
    // (t2, y2) after it. With a point on one side only, the other side
    // repeats its value at the position itself.
    struct AutomationSpan {
        double t1 = 0.0;
        double y1 = 0.0;
        double t2 = 0.0;
        double y2 = 0.0;
    };

    Range at;
    Range before;
    Range after;
    // Keyed by the index of the automation track on the audio track.
    std::map<int, AutomationSpan> automation;
};

} // namespace montala::core
