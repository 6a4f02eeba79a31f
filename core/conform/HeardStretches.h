#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace montala::core {

// A stretch of a track's timeline and what plays in it: the source file
// (audio) or the pool clip (video), and where in the source it begins.
struct MediaStretch {
    double start = 0.0;
    double end = 0.0;
    std::string file;
    std::int64_t clipId = 0;
    double positionAtStart = 0.0;
};

// What a track plays, in time order, from its events in layer order (each
// already cut to the part that holds it): where events overlap, the one
// added last is heard.
//
//   events in layer order:  [ a .......... ]
//                                 [ b ..... ]      later, heard over a
//   heard:                  [ a  ][ b ..... ]
std::vector<MediaStretch> heardStretches(const std::vector<MediaStretch>& layers);

} // namespace montala::core
