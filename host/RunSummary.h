#pragma once

#include "host/Track.h"
#include "util/Result.h"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace montala::host {

// What one apply or preview did, for the programs that report it. The counts
// are of what the run carried out; a cancelled run is taken back by the
// host's undo afterwards (`undone`), so they then say how far it came.
struct RunSummary {
    enum class Kind { None, Apply, Preview };

    // Why a track of the project took no part in the run.
    enum class LeftOut { Locked, NotSelected };

    struct LeftOutTrack {
        std::string name;
        LeftOut reason;
    };

    Kind kind = Kind::None;
    util::Result::Type result = util::Result::Ok;
    // The group was closed under its "(incomplete)" title: what was done
    // stays, and the host's undo offers it under that name.
    bool incomplete = false;
    // A cancelled run that the host's undo took back.
    bool undone = false;
    // Change events whose cut was carried into the work area.
    size_t eventsApplied = 0;
    // The project's own tracks, by name in tree order; Montala's folder,
    // marker and new video tracks are in neither list.
    std::vector<std::string> tracksTakingPart;
    std::vector<LeftOutTrack> tracksLeftOut;
    // Markers written, by the track they went to (Destination to Overlap).
    std::map<TrackType, size_t> markersWritten;

    size_t markerCount() const
    {
        size_t count = 0;
        for (const auto& [type, written] : markersWritten)
            count += written;
        return count;
    }
};

} // namespace montala::host
