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

// The host's clock beside Montala's: where the project starts, and the one
// conversion each way. Taken once for a loop: the start is a host call.
struct HostClock {
    double projectStart = 0.0;

    HostRelative toHost(Absolute time) const { return {time.seconds - projectStart}; }
    Absolute fromHost(HostRelative time) const { return {time.seconds + projectStart}; }
};

// A marker this short or shorter is a point; a gap in the new arrangement
// this short or shorter is left unbridged.
constexpr double shortestLength = 0.01;

} // namespace montala::host
