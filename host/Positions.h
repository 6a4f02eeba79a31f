#pragma once

namespace montala::host {

// Seconds of timecode as Montala counts them: where a Change event's SRC
// lies on the old timeline, its DST on the new one, or that DST carried
// behind the project's end into the work area (WorkArea::behindEnd).
struct Absolute {
    double seconds = 0.0;
};

// Seconds from the host project's start: what the host's interfaces take
// and answer (ProjectTracks::toHost and fromHost convert).
struct HostRelative {
    double seconds = 0.0;
};

// A marker this short or shorter is a point; a gap in the new arrangement
// this short or shorter is left unbridged.
constexpr double shortestLength = 0.01;

} // namespace montala::host
