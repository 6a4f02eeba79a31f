#pragma once

#include "kelmar/services/IVideoThumbnailFactory.h"
#include "sim/project/SimBase.h"

#include <cstdint>
#include <map>
#include <mutex>

namespace montala::sim {

// The thumbnail service, called from worker threads. It knows nothing of the
// pools: any positive stream id opens, and frames are made up (see
// SimVideoFrame). Thread-safe.
class SimThumbnailFactory : public SimBase, public Kelmar::IVideoThumbnailFactory {
public:
    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult openStream(Kelmar::int64 streamId, Kelmar::int64 position, Kelmar::int32 width,
                               Kelmar::int32 height) override;
    Kelmar::IVideoFrame* getFrame(Kelmar::int64 streamId, Kelmar::int64 position) override;
    Kelmar::tresult unregisterClient() override;

    bool isRegistered() const;

private:
    struct Size {
        int width = 0;
        int height = 0;
    };

    mutable std::mutex lock;
    std::map<std::int64_t, Size> streams;
    bool registered = true;
};

} // namespace montala::sim
