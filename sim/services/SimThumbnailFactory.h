#pragma once

#include "kelmar/services/IVideoThumbnailFactory.h"
#include "sim/project/SimBase.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace montala::sim {

class SimVideoDecoder;
class SimVideoService;

// The thumbnail service of one client, called from its worker thread. A
// stream whose file the service knows (see SimVideoService) and FFmpeg can
// read gives the file's real frames; any other positive stream id opens too
// and gives made-up frames (see SimVideoFrame), so that sessions without
// media still show something. Thread-safe.
class SimThumbnailFactory : public SimBase, public Kelmar::IVideoThumbnailFactory {
public:
    explicit SimThumbnailFactory(std::shared_ptr<SimVideoService> service = nullptr);
    ~SimThumbnailFactory() override;

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::tresult openStream(Kelmar::int64 streamId, Kelmar::int64 position, Kelmar::int32 width,
                               Kelmar::int32 height) override;
    Kelmar::IVideoFrame* getFrame(Kelmar::int64 streamId, Kelmar::int64 position) override;
    Kelmar::tresult unregisterClient() override;

    bool isRegistered() const;

private:
    struct Stream {
        int width = 0;
        int height = 0;
        std::string path;
        // Null when the stream has no readable file.
        std::unique_ptr<SimVideoDecoder> decoder;
    };

    std::shared_ptr<SimVideoService> service;
    mutable std::mutex lock;
    std::map<std::int64_t, Stream> streams;
    bool registered = true;
};

} // namespace montala::sim
