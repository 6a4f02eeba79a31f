#pragma once

#include "core/model/DataModel.h"
#include "core/events/EventList.h"
#include "core/time/Framerate.h"
#include "core/conform/InformationContext.h"
#include "core/conform/InformationEntry.h"
#include "core/conform/SnippetContext.h"
#include "host/MontalaTracks.h"
#include "host/ProjectListener.h"
#include "host/ProjectTracks.h"
#include "host/Track.h"
#include "host/WorkArea.h"
#include "util/Result.h"

#include "kelmar/services/IHostServices.h"
#include "kelmar/project/IMediaPool.h"
#include "kelmar/project/IProject.h"
#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/base/IPtr.h"
#include "kelmar/project/ITrack.h"

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace montala::core {
class VideoTrackHandlerBase;
}

namespace montala::host {

class MediaPool;

// Montala's mirror of one open host project: its data model, stored in the
// project file, its frame rate, its tracks, and the tracks a preview locked.
// Beside it, and owned by it, lie the work area a run builds in (WorkArea)
// and the tracks Montala keeps for itself (MontalaTracks).
//
// Times are absolute seconds unless a name says host-relative; the host's
// interfaces take host-relative times, converted by ProjectTracks::toHost.
class Project : public core::FramerateProvider {
public:
    // Where the data model lives in the host's project: a storage attribute
    // holding one block, and a checksum attribute beside it.
    static constexpr const char* dataAttribute = "Mont";
    static constexpr const char* blockName = "MontData";
    static constexpr const char* checksumAttribute = "Mnts";

    Project(Kelmar::IProject* hostProject, Kelmar::IHostServices* services);
    ~Project() override;
    Project(const Project&) = delete;
    Project& operator=(const Project&) = delete;

    // ---- Frame rate
    core::Framerate getFramerate() override;
    // After a change of the host's settings: takes the new rate, lets the
    // model re-check its timecodes, and tells the listeners.
    void updateFramerate();

    // ---- Rooms
    ProjectTracks& tracks() { return projectTracks; }
    WorkArea& workArea() { return area; }
    MontalaTracks& ownTracks() { return montalaTracks; }

    // ---- Times
    double getProjectStart() const { return projectTracks.getProjectStart(); }
    double getProjectEnd() const { return projectTracks.getProjectEnd(); }
    std::string getProjectName() const;
    // Host-relative locators.
    void getLocators(double& left, double& right) const;
    void setLocators(double left, double right, bool absolute);

    // ---- Tracks
    // Every track but folders and rulers, in tree order.
    std::vector<Track> getTracks() { return projectTracks.getTracks(); }
    std::vector<Track> getTracks(const char* kind) { return projectTracks.getTracks(kind); }
    // On for the time of a run: the track list is read once, and Montala's
    // own tracks are looked up anew after it.
    void setCaching(bool on);
    const std::vector<Track>& getLockedTracks() const { return lockedTracks; }

    void addListener(ProjectListener* listener) { listeners.insert(listener); }
    void removeListener(ProjectListener* listener) { listeners.erase(listener); }

    // ---- What a run does on the tracks
    void createVideoTrack(Kelmar::IProjectEdit& edit);
    // Releases the preview's locks and takes the work area away.
    void clearWorkArea(Kelmar::IProjectEdit& edit);
    // Locks or unlocks the tracks a preview locked and Montala's own tracks,
    // except "Memos", which the user writes in during a preview.
    void setTracksLocked(bool on);
    // The user's tracks a preview shows: locked while the new arrangement
    // is shown.
    void setPreviewLocks(std::vector<Track> tracks) { lockedTracks = std::move(tracks); }
    // A preview that ends forgets the tracks it locked.
    void clearLockedTracks() { lockedTracks.clear(); }
    // After an edit of the user's.
    void edited(Kelmar::IProjectEdit* edit);

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
    Kelmar::IProject* getHostProject() const { return projectTracks.getHostProject(); }
    Kelmar::IHostServices* getServices() const { return projectTracks.getServices(); }
    MediaPool* getMediaPool() const { return mediaPool.get(); }
    // The video preview's track handler, handed in by whoever shows the
    // preview; not owned. Null when there is none.
    void setVideoTrackHandler(core::VideoTrackHandlerBase* handler) { videoTrackHandler = handler; }
    core::VideoTrackHandlerBase* getVideoTrackHandler() const { return videoTrackHandler; }
    core::EventList& getPreviewList() { return previewList; }
    void setPreviewEvents(const core::EventList& events);
    core::InformationContext getInformationContext();
    core::SnippetContext getSnippetContext();

private:
    void tellListeners(bool edited);

    std::set<ProjectListener*> listeners;
    ProjectTracks projectTracks;
    Kelmar::IPtr<Kelmar::IMediaPool> hostPool;
    std::shared_ptr<MediaPool> mediaPool;
    core::VideoTrackHandlerBase* videoTrackHandler = nullptr;
    core::DataModel dataModel;
    core::Framerate framerate;
    WorkArea area{projectTracks, dataModel, *this};
    MontalaTracks montalaTracks{projectTracks, *this};
    core::EventList previewList{core::EventList::ChangeKind};
    std::vector<Track> lockedTracks;
    bool unreadBlockKept = false;
};

} // namespace montala::host
