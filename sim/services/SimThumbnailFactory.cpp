#include "sim/services/SimThumbnailFactory.h"

#include "sim/services/SimVideoDecoder.h"
#include "sim/services/SimVideoFrame.h"
#include "sim/services/SimVideoService.h"

#include <vector>

namespace montala::sim {

using namespace Kelmar;

SimThumbnailFactory::SimThumbnailFactory(std::shared_ptr<SimVideoService> service) : service(std::move(service)) {}

SimThumbnailFactory::~SimThumbnailFactory() = default;

tresult SimThumbnailFactory::queryInterface(const FUID& iid, void** obj)
{
    if (answerInterface<IVideoThumbnailFactory>(this, iid, obj))
        return kResultOk;
    return FObject::queryInterface(iid, obj);
}

tresult SimThumbnailFactory::openStream(int64 streamId, int64 position, int32 width, int32 height)
{
    if (streamId <= 0 || position < 0 || width <= 0 || height <= 0)
        return kResultFalse;
    const std::string path = service ? service->fileOf(streamId) : std::string();
    std::lock_guard guard(lock);
    Stream& stream = streams[streamId];
    stream.width = width;
    stream.height = height;
    if (!stream.decoder || stream.path != path) {
        stream.path = path;
        stream.decoder.reset();
        auto decoder = std::make_unique<SimVideoDecoder>();
        if (!path.empty() && decoder->open(path))
            stream.decoder = std::move(decoder);
    }
    return kResultOk;
}

IVideoFrame* SimThumbnailFactory::getFrame(int64 streamId, int64 position)
{
    if (service)
        service->beforeFrame();
    std::lock_guard guard(lock);
    const auto found = streams.find(streamId);
    if (found == streams.end() || position < 0)
        return nullptr;
    Stream& stream = found->second;
    if (!stream.decoder)
        return new SimVideoFrame(streamId, position, stream.width, stream.height);
    std::vector<uint8> pixels;
    if (!stream.decoder->decode(position, stream.width, stream.height, pixels))
        return nullptr;
    return new SimVideoFrame(stream.width, stream.height, std::move(pixels));
}

tresult SimThumbnailFactory::unregisterClient()
{
    std::lock_guard guard(lock);
    streams.clear();
    registered = false;
    return kResultOk;
}

bool SimThumbnailFactory::isRegistered() const
{
    std::lock_guard guard(lock);
    return registered;
}

} // namespace montala::sim
