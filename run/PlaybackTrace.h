#pragma once

#include "core/conform/HeardStretches.h"
#include "sim/project/SimObject.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace montala::run {

// What one track plays over the whole timeline, worked out once: the
// stretches in time order, each with the source heard and where in it the
// stretch begins. It says what SimPlayback::at says at every moment (the
// event added last is heard; a part plays its events inside its own range),
// but a look-up is a binary search instead of a walk over every event, so
// that an audit can ask at every frame of a long reel.
class PlaybackTrace {
public:
    struct Heard {
        std::string file;        // audio: the source file
        std::int64_t clipId = 0; // video: the pool clip
        double position = 0.0;   // seconds into the source
    };

    explicit PlaybackTrace(const sim::SimObject& track);

    // Nothing when the track is silent (or shows nothing) at `time`, host time.
    std::optional<Heard> at(double time) const;

    // The stretches heard, in time order: [start, end).
    using Stretch = core::MediaStretch;
    const std::vector<Stretch>& stretches() const { return list; }

    // Where each sound of the track lies, layers and parts alike, in order of
    // start: an audio event, or a chain of joined events as one. Unlike the
    // stretches, a sound under another layer is here whole.
    struct Sound {
        double start = 0.0;
        double end = 0.0;
    };
    const std::vector<Sound>& sounds() const { return soundList; }

private:
    std::vector<Stretch> list;
    std::vector<Sound> soundList;
};

} // namespace montala::run
