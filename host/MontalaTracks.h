#pragma once

#include "core/conform/InformationEntry.h"
#include "core/events/EventList.h"
#include "core/model/Settings.h"
#include "core/time/Framerate.h"
#include "host/Positions.h"
#include "host/ProjectTracks.h"
#include "host/Track.h"
#include "host/WorkArea.h"

#include "kelmar/edit/IProjectEdit.h"

#include <array>
#include <map>
#include <cstdint>
#include <string>
#include <vector>

namespace montala::core {
class ProgressHandlerBase;
}

namespace montala::host {

// The tracks Montala keeps in a project for itself, and the markers on them:
// the "Montala Markers" folder with one marker track per kind of marker a run
// writes, the "Memos" track the user writes in during a preview, and the
// "New Video" track. They are found again by the type written on them, and
// made when a run needs one that is not there.
class MontalaTracks {
public:
    // Markers written, by the track they went to.
    using MarkerCount = std::map<TrackType, size_t>;

    MontalaTracks(ProjectTracks& tracks, core::FramerateProvider& rate);
    MontalaTracks(const MontalaTracks&) = delete;
    MontalaTracks& operator=(const MontalaTracks&) = delete;

    // Montala's tracks, folder, marker and new video tracks. Memos are among
    // them: the user writes them, but Montala made their track.
    static bool isMontalaTrack(Track& track);
    // Montala's tracks but Memos: a run rewrites them, it does not carry them.
    static bool holdsRunOutput(Track& track);

    // The Montala track of a marker type (1 to 7); invalid until found or made.
    Track& markerTrack(TrackType type);
    bool hasMarkerTrack(TrackType type);
    Track& getFolderTrack() { return folderTrack; }
    // The tracks are looked up anew from here on.
    void forget();

    // The folder, the marker tracks `settings` asks for, and "Memos".
    void createFolderAndMarkers(Kelmar::IProjectEdit& edit, const core::Settings& settings);
    // The "New Video" track, found or made.
    Track ensureNewVideoTrack(Kelmar::IProjectEdit& edit);
    // Locks or unlocks Montala's tracks but "Memos", which the user writes
    // in during a preview.
    void setLocked(bool on);

    // ---- Markers
    // A point marker when it is 0.01 s long or shorter, else a range marker.
    void writeMarker(Kelmar::IProjectEdit& edit, Track* track, const std::string& name, const std::string& reel,
                     Absolute start, Absolute end, int64_t id);
    // Marks where a Change event's cut lies in the work area.
    void writeDestination(Kelmar::IProjectEdit& edit, const core::EventBase& event, const core::Settings& settings,
                          const WorkArea& area, MarkerCount& written);
    // The detectors' findings, each on the track of its kind, in the work area.
    void generateMarkers(Kelmar::IProjectEdit& edit, const std::vector<core::InformationEntry>& entries,
                         const WorkArea& area, core::ProgressHandlerBase* progress, MarkerCount& written);

    // ---- Memos of a preview
    // Gives every memo on the old timeline an id before a preview copies it
    // into the work area, so that each copy pairs with its memo.
    void numberMemos(const WorkArea& area);
    // After an edit of the user's: memos written in the work area get ids
    // and are mirrored onto the old timeline.
    void followMemos(Kelmar::IProjectEdit* edit, const core::EventList& previewEvents, const WorkArea& area);
    // Mirrors the memo markers between a preview's work area and the origin.
    void syncMemos(Kelmar::IProjectEdit& edit, const core::EventList& previewEvents, const WorkArea& area);

private:
    static Track* findByType(std::vector<Track>& candidates, TrackType type);
    Track& ensureMarkerTrack(Kelmar::IProjectEdit& edit, std::vector<Track>& candidates, Track& slot, TrackType type);
    Track& ensureTrack(Kelmar::IProjectEdit& edit, TrackType type, std::vector<Track>& candidates, Track& slot,
                       const char* kind);
    // A new track of `kind` named and typed as `type`.
    Track makeTrack(Kelmar::IProjectObject* object, TrackType type);

    ProjectTracks& tracks;
    core::FramerateProvider& rate;
    std::array<Track, 7> markerTracks;
    Track folderTrack;
};

} // namespace montala::host
