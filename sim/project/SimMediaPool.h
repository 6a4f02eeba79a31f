#pragma once

#include "kelmar/project/IMediaPool.h"
#include "kelmar/base/IPtr.h"
#include "sim/project/SimBase.h"
#include "sim/project/SimPoolClip.h"

#include <memory>
#include <string>
#include <vector>

namespace montala::sim {

class SimFailures;
class SimHost;
class SimVideoService;

// A project's media pool. Adding a clip tells the pool's dependents.
class SimMediaPool : public SimBase, public Kelmar::IMediaPool {
public:
    explicit SimMediaPool(SimHost& host);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::int32 getClipCount(const Kelmar::char8* kind) override;
    Kelmar::IPoolClip* getClip(Kelmar::int32 index, const Kelmar::char8* kind) override;
    // The clip's name is the file name of the path, its kind follows the
    // extension; the length is not known to the simulator and is taken from
    // setDefaultLength.
    Kelmar::IPoolClip* addClip(Kelmar::IPath* path) override;

    // Clips are numbered from 1 to this in this host: a video event keeps
    // its clip's id in 32 bits, as one of a feature's many nodes.
    static constexpr std::int64_t largestId = 2147483647;

    // Adds a clip as it stands (id 0 takes the next free id); false when the
    // id is taken or past largestId. Does not notify: for reading a session.
    bool insert(SimPoolClip::Info info);
    SimPoolClip* findClip(std::int64_t id) const;
    const std::vector<Kelmar::IPtr<SimPoolClip>>& clips() const { return list; }
    void setDefaultLength(double seconds) { defaultLength = seconds; }
    // The folder that relative clip paths are read from (a session file's);
    // the thumbnail service learns the files anew.
    void setMediaFolder(const std::string& folder);

    static std::string kindOfFile(std::u16string_view path);

private:
    // The id after the highest; past largestId when none is left.
    std::int64_t nextId() const;
    // Tells the thumbnail service where the clip's file lies.
    void publish(const SimPoolClip& clip);

    SimHost* host;
    // The host's failure plan, held here as the pool may outlive the host.
    std::shared_ptr<SimFailures> failures;
    std::shared_ptr<SimVideoService> videos;
    std::string mediaFolder;
    std::vector<Kelmar::IPtr<SimPoolClip>> list;
    double defaultLength = 3600.0;
};

} // namespace montala::sim
