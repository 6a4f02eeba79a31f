#pragma once

#include "host/Positions.h"
#include "host/Track.h"
#include "host/TrackHome.h"

#include "kelmar/base/IPtr.h"
#include "kelmar/edit/IEditContext.h"
#include "kelmar/project/IProject.h"
#include "kelmar/project/ITrack.h"
#include "kelmar/services/IHostServices.h"

#include <cstdint>
#include <vector>

namespace montala::host {

// The tracks of one host project and its place on the host's clock: the walk
// of the project's tree, the cache of it that a run keeps, and the one
// conversion between Montala's absolute seconds and the host's seconds from
// the project's start.
class ProjectTracks : public TrackHome {
public:
    ProjectTracks(Kelmar::IProject* hostProject, Kelmar::IHostServices* services);
    ProjectTracks(const ProjectTracks&) = delete;
    ProjectTracks& operator=(const ProjectTracks&) = delete;

    // Every track but folders and rulers, in tree order.
    std::vector<Track> getTracks();
    std::vector<Track> getTracks(const char* kind);
    // The host's tracks, depth first; the cached list while caching is on.
    std::vector<Kelmar::ITrack*> trackList();
    void setCaching(bool on);
    bool isCaching() const { return caching; }
    // A track Montala made during a run joins the cached list.
    void addToCache(Kelmar::ITrack* track);
    bool containsTrack(const Track& track) { return containsTrack(track.getHostTrack()); }

    double getProjectEnd() const;
    HostRelative toHost(Absolute time) const { return clock().toHost(time); }
    Absolute fromHost(HostRelative time) const { return clock().fromHost(time); }

    Kelmar::IPtr<Kelmar::IProjectObject> projectObject() const;
    // The context an edit of `container`'s children is made in; the
    // project's own with null.
    Kelmar::IPtr<Kelmar::IEditContext> editContext(Kelmar::IProjectObject* container) const;

    // After a notice that may have moved or removed tracks.
    void noteChange();
    // After an edit that may have moved audio: chains read before are stale.
    void forgetChains() { chainsKept.clear(); }

    // ---- TrackHome
    Kelmar::IProject* getHostProject() const override { return hostProject.get(); }
    Kelmar::IHostServices* getServices() const override { return services; }
    double getProjectStart() const override;
    bool containsTrack(const Kelmar::ITrack* track) override;
    uint64_t changeCount() const override { return changes; }
    KeptChains* keptChains() override { return caching ? &chainsKept : nullptr; }

private:
    Kelmar::IPtr<Kelmar::IProject> hostProject;
    Kelmar::IHostServices* services = nullptr;
    std::vector<Kelmar::ITrack*> trackCache;
    KeptChains chainsKept;
    uint64_t changes = 0;
    bool caching = false;
};

} // namespace montala::host
