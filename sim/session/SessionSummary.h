#pragma once

#include <string>
#include <vector>

namespace montala::sim {

class SimProject;

// What a session holds, counted as a user would look at it: tracks by kind,
// events, markers, automation, the rate and the project's range.
struct SessionSummary {
    struct TrackLine {
        int depth = 0; // 1 inside a folder, 2 inside a folder in a folder, ...
        std::string name;
        std::string kind;
        int events = 0;       // audio and video events, those in parts included
        int parts = 0;
        int markers = 0;
        int automationPoints = 0;
        bool locked = false;
    };

    std::string name;
    std::string rate;
    std::string start;
    std::string end;
    std::string length;
    std::vector<TrackLine> tracks;
    int audioTracks = 0, videoTracks = 0, markerTracks = 0, folders = 0, rulers = 0;
    int audioEvents = 0, videoEvents = 0, parts = 0, markers = 0;
    int automationTracks = 0, automationPoints = 0;
    int clips = 0;

    static SessionSummary of(SimProject& project);
    // Several lines of text, each ending in a line break.
    std::string describe() const;
};

} // namespace montala::sim
