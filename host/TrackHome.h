#pragma once

#include "host/Positions.h"

#include "kelmar/project/IProject.h"
#include "kelmar/project/ITrack.h"
#include "kelmar/services/IHostServices.h"

#include <cstdint>
#include <map>
#include <memory>

namespace montala::host {

struct ChainImage;

// What a Track asks of the project that holds it: the host's project and
// services, where the project starts, whether the track is still in it, and
// the audio chains read while a run caches the tracks. A Track keeps a plain
// pointer to its home and never registers with it: copying a Track is as
// cheap as copying three pointers.
class TrackHome {
public:
    // The audio chains of the project's tracks as read while it caches them.
    using KeptChains = std::map<const Kelmar::ITrack*, std::shared_ptr<const ChainImage>>;

    virtual ~TrackHome() = default;

    virtual Kelmar::IProject* getHostProject() const = 0;
    virtual Kelmar::IHostServices* getServices() const = 0;
    virtual double getProjectStart() const = 0;
    HostClock clock() const { return {getProjectStart()}; }
    virtual bool containsTrack(const Kelmar::ITrack* track) = 0;
    // Counts the notices after which a track may have left the project (a
    // user's edit, new settings); a Track that saw another count than this
    // looks itself up again before its next use.
    virtual uint64_t changeCount() const = 0;
    // Null while the project does not cache its tracks.
    virtual KeptChains* keptChains() = 0;
};

} // namespace montala::host
