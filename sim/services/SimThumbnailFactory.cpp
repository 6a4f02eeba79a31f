#include "sim/services/SimThumbnailFactory.h"

#include "sim/services/SimVideoFrame.h"

namespace montala::sim {

using namespace Kelmar;

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
    std::lock_guard guard(lock);
    streams[streamId] = Size{width, height};
    return kResultOk;
}

IVideoFrame* SimThumbnailFactory::getFrame(int64 streamId, int64 position)
{
    std::lock_guard guard(lock);
    const auto found = streams.find(streamId);
    if (found == streams.end() || position < 0)
        return nullptr;
    return new SimVideoFrame(streamId, position, found->second.width, found->second.height);
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
