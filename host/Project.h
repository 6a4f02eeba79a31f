#pragma once

#include "core/model/DataModel.h"
#include "core/events/EventList.h"
#include "core/time/Framerate.h"
#include "core/conform/Cut.h"
#include "core/conform/CutList.h"
#include "core/conform/InformationContext.h"
#include "core/conform/InformationEntry.h"
#include "core/conform/SnippetContext.h"
#include "host/Track.h"
#include "util/Result.h"

#include "kelmar/services/IHostServices.h"
#include "kelmar/project/IMediaPool.h"
#include "kelmar/base/IObjectList.h"
#include "kelmar/project/IProject.h"
#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/base/IPtr.h"
#include "kelmar/project/ITrack.h"

#include <array>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace montala::core {
class ProgressHandlerBase;
class VideoTrackHandlerBase;
}

namespace montala::host {

class MediaPool;

// Montala's mirror of one open host project: its data model, stored in the
// project file, its frame rate, the Montala marker tracks and their folder,
// and the tracks a preview locked. It also carries out on the host's tracks
// what a run asks: the new arrangement is built in a work area behind all
// material, one whole day of timecode past it (the conform offset), and then
// moved home:
//
//   0            project end      offset                offset + length
//   |--old arrangement--|    ...    |--new arrangement--|
//                                          | moveBack
//   |--new arrangement--|  <---------------'
//
// Times are absolute seconds unless a name says host-relative; the host's
// interfaces take host-relative times, and every call converts where it is
// made.
class Project : public core::FramerateProvider {
public:
    // Where the data model lives in the host's project: a storage attribute
    // holding one block, and a checksum attribute beside it.
    static constexpr const char* dataAttribute = "Mont";
    static constexpr const char* blockName = "MontData";
    static constexpr const char* checksumAttribute = "Mnts";
    // The data model's key of the conform offset (a double).
    static constexpr int32_t conformOffsetKey = 10004;
    // Two positions closer than one sample at 384 kHz are the same.
    static constexpr double positionTolerance = 2.6041666666666666e-06;
    // A marker this short or shorter is a point; a gap this short or shorter
    // is left unbridged.
    static constexpr double shortestLength = 0.01;

    Project(Kelmar::IProject* hostProject, Kelmar::IHostServices* services);
    ~Project() override;
    Project(const Project&) = delete;
    Project& operator=(const Project&) = delete;

    // ---- Frame rate
    core::Framerate getFramerate() override;
    // After a change of the host's settings: takes the new rate, lets the
    // model re-check its timecodes, and tells the listeners.
    void updateFramerate();
    // Seconds in one day of timecode at the rate last checked; shared by all
    // projects, as it follows the active one.
    static double dayLength();

    // ---- Times
    double getConformOffset() const;
    bool hasConformOffset() const;
    void clearConformOffset();
    // The first whole day of timecode past all material.
    void computeConformOffset();
    // While a preview is active: makes the project reach one whole day past
    // what the work area holds.
    void extendProjectEnd(bool selectedOnly);
    // When a preview ends: the project ends where it did before.
    void restoreProjectEnd();
    // The range of the old timeline a run rebuilds; NotInitialized without an
    // offset.
    void getEditRange(double& start, double& end);
    double getProjectStart() const;
    double getProjectEnd() const;
    std::string getProjectName() const;
    // Host-relative locators.
    void getLocators(double& left, double& right) const;
    void setLocators(double left, double right, bool absolute);

    // ---- Tracks
    // Every track but folders and rulers, in tree order.
    std::vector<Track> getTracks();
    std::vector<Track> getTracks(const char* kind);
    // The host's tracks, depth first; the cached list while caching is on.
    std::vector<Kelmar::ITrack*> trackList();
    void setCaching(bool on);
    bool isCaching() const { return caching; }
    bool containsTrack(const Track& track);
    // The Montala track of a marker type (1 to 7); invalid until found or made.
    Track& markerTrack(TrackType type);
    bool hasMarkerTrack(TrackType type);
    Track& getFolderTrack() { return folderTrack; }
    const std::vector<Track>& getLockedTracks() const { return lockedTracks; }

    void addListener(ProjectListener* listener) { listeners.insert(listener); }
    void removeListener(ProjectListener* listener) { listeners.erase(listener); }

    // ---- What a run does on the tracks
    void createFolderAndMarkerTracks(Kelmar::IProjectEdit& edit);
    void createVideoTrack(Kelmar::IProjectEdit& edit);
    // A cut with one piece per track that takes part.
    core::CutPtr createCut(const core::EventPtr& event);
    // Copies the cut's pieces into the work area and marks the destination.
    void applyCut(Kelmar::IProjectEdit& edit, core::Cut& cut);
    // With a list, the range of those tracks; without, of all tracks.
    void copyRange(Kelmar::IProjectEdit& edit, double start, double end, double destination,
                   Kelmar::IObjectList* tracks);
    // A point marker when it is 0.01 s long or shorter, else a range marker.
    void writeMarker(Kelmar::IProjectEdit& edit, Track* track, const std::string& name, const std::string& reel,
                     double start, double end, int64_t id);
    void generateMarkers(Kelmar::IProjectEdit& edit, const std::vector<core::InformationEntry>& entries);
    // Moves the arrangement home and closes the work area.
    void complete(Kelmar::IProjectEdit& edit);
    void moveBack(Kelmar::IProjectEdit& edit, double from, double to, double length, std::vector<Track>& tracks);
    // The host's closing work over [start, end]; times passed as they are.
    void finishRange(Kelmar::IProjectEdit& edit, double start, double end, bool selectedOnly);
    void clearWorkArea(Kelmar::IProjectEdit& edit);
    // Removes the automation points at or past the conform offset.
    void removeWorkAreaPoints(Kelmar::IProjectEdit& edit);
    // Locks or unlocks the tracks a preview locked and Montala's own tracks,
    // except "Memos", which the user writes in during a preview.
    void setTracksLocked(bool on);
    void collectLockedTracks();
    // A preview that ends forgets the tracks it locked.
    void clearLockedTracks() { lockedTracks.clear(); }
    // The folder, marker and new video tracks Montala made for itself.
    bool isMontalaTrack(Track& track);
    // Montala's tracks but Memos: a run rewrites them, it does not carry them.
    bool holdsRunOutput(Track& track);
    // Gives every memo on the old timeline an id before a preview copies it
    // into the work area, so that each copy pairs with its memo.
    void numberMemos();
    // Holds automation through the stretches of the new timeline that no old
    // material fills.
    void fillVirginTerritories(Kelmar::IProjectEdit& edit, core::CutList& cuts);
    // After an edit of the user's.
    void edited(Kelmar::IProjectEdit* edit);
    // Mirrors the memo markers between a preview's work area and the origin.
    void syncMemos(Kelmar::IProjectEdit& edit);

    // ---- Stored block
    // Reads the model from the host's project. NoInterface, HostCallFailed,
    // ChecksumMismatch, UnknownVersion, NewerVersion or a read failure are
    // thrown; the model is then empty and the project unchanged. A block
    // with bytes past the model's end is damaged too (BadStoredData).
    void load();
    // Writes the model. A block that load() could not read (damaged, or of
    // a newer version) stays in the project as it was while the model is
    // empty, so that saving an untouched project loses nothing; once the
    // user has put lists into the model, they are what is saved.
    void save();
    bool keepsUnreadBlock() const { return unreadBlockKept; }
    // The user's message for a failed load or save, translated.
    static std::u16string loadFailureMessage(util::Result::Type code);
    static std::u16string saveFailureMessage();

    // ---- Parts
    core::DataModel& getDataModel() { return dataModel; }
    Kelmar::IProject* getHostProject() const { return hostProject.get(); }
    Kelmar::IHostServices* getServices() const { return services; }
    MediaPool* getMediaPool() const { return mediaPool.get(); }
    void setProgress(core::ProgressHandlerBase* handler) { progress = handler; }
    // The video preview's track handler, handed in by whoever shows the
    // preview; not owned. Null when there is none.
    void setVideoTrackHandler(core::VideoTrackHandlerBase* handler) { videoTrackHandler = handler; }
    core::VideoTrackHandlerBase* getVideoTrackHandler() const { return videoTrackHandler; }
    core::ProgressHandlerBase* getProgress() const { return progress; }
    core::EventList& getPreviewList() { return previewList; }
    void setPreviewEvents(const core::EventList& events);
    core::InformationContext getInformationContext();
    core::SnippetContext getSnippetContext();

    // The audio chains Track has read while the project caches its tracks.
    Track::KeptChains& keptChains() const { return chainsKept; }

private:
    Kelmar::IPtr<Kelmar::IProjectObject> projectObject() const;
    Kelmar::IPtr<Kelmar::IEditContext> editContext(Kelmar::IProjectObject* container) const;
    // A track takes part in a run unless the run is for selected tracks and
    // it is not selected; a locked track never does.
    bool takesPart(const Track& track) const;
    Track& ensureMarkerTrack(Kelmar::IProjectEdit& edit, std::vector<Track>& candidates, Track& slot, int type);
    Track& ensureTrack(Kelmar::IProjectEdit& edit, int type, std::vector<Track>& candidates, Track& slot,
                       const char* kind);
    Track* findByType(std::vector<Track>& candidates, int type);
    void advance(int64_t count);
    // The largest event end of the tracks in [0, end] host-relative, absolute.
    double latestEnd(const std::vector<Track>& tracks, double end);
    // A double of the model that is there and not the lowest double.
    bool hasStoredDouble(int32_t key) const;

    std::set<ProjectListener*> listeners;
    // Forgotten by every edit that may move audio, and when caching starts or ends.
    mutable Track::KeptChains chainsKept;
    Kelmar::IPtr<Kelmar::IProject> hostProject;
    Kelmar::IPtr<Kelmar::IMediaPool> hostPool;
    std::shared_ptr<MediaPool> mediaPool;
    core::VideoTrackHandlerBase* videoTrackHandler = nullptr;
    std::array<Track, 7> markerTracks;
    Track folderTrack;
    std::vector<Kelmar::ITrack*> trackCache;
    core::DataModel dataModel;
    Kelmar::IHostServices* services = nullptr;
    core::Framerate framerate;
    core::EventList previewList{core::EventList::ChangeKind};
    std::vector<Track> lockedTracks;
    bool unreadBlockKept = false;
    core::ProgressHandlerBase* progress = nullptr;
    bool caching = false;
};

} // namespace montala::host
