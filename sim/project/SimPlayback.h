#pragma once

#include "sim/project/SimObject.h"

#include <cstdint>
#include <optional>
#include <string>

namespace montala::sim {

// What a track plays at a moment, traced back to its source: the file (or
// pool clip) and the position in it. Of layered events the one added last is
// heard. Tests of a re-conform use it to check that each stretch of the new
// timeline carries the sound it should.
class SimPlayback {
public:
    struct Source {
        std::string file;          // audio: the source file
        std::int64_t clipId = 0;   // video: the pool clip
        double position = 0.0;     // seconds into the source
        const SimObject* event = nullptr;

        bool operator==(const Source& other) const
        {
            return file == other.file && clipId == other.clipId && position == other.position;
        }
    };

    // Null when nothing plays at `time` (host time) on the track.
    static std::optional<Source> at(const SimObject& track, double time);
};

} // namespace montala::sim
