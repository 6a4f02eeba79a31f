#include "host/video/PoolVideoSource.h"

#include "core/events/VideoList.h"
#include "core/services/MediaPoolInterface.h"
#include "core/time/Timecode.h"
#include "util/Result.h"

#include <cmath>

namespace montala::host {

PoolVideoSource::~PoolVideoSource()
{
    setSources(nullptr, nullptr);
}

void PoolVideoSource::setSources(core::MediaPoolInterface* pool, core::VideoList* list)
{
    if (videoList != list) {
        if (videoList)
            videoList->removeListener(this);
        if (list)
            list->addListener(this);
    }
    mediaPool = pool;
    videoList = list;
    notifyListeners();
}

void PoolVideoSource::findFrame(double seconds, int64_t& stream, int64_t& position, int)
{
    stream = 0;
    position = 0;
    if (!mediaPool || !videoList || !core::Timecode::isValidSeconds(seconds))
        return;
    core::Timecode time;
    time.fromSeconds(seconds);
    const core::VideoList::Entry entry = videoList->findEntryAt(time);
    if (entry.isEmpty())
        return;
    try {
        const int index = clipOf(*mediaPool, entry.getFileName());
        if (index < 0)
            return;
        const int64_t frame = time.toFrames() - entry.getStart().toFrames();
        const double rate = core::Timecode::currentFramerate().exactRate;
        // Beyond the end of its file an entry shows nothing.
        if (rate <= 0 || frame >= std::llround(mediaPool->getClipLength(index) * rate))
            return;
        stream = mediaPool->getClipId(index);
        position = frame;
    } catch (util::Result::Type) {
        stream = 0;
        position = 0;
    }
}

int PoolVideoSource::clipOf(core::MediaPoolInterface& pool, const std::string& fileName)
{
    for (int index = 0; index < pool.getClipCount(); ++index)
        if (pool.getClipFileName(index) == fileName || pool.getClipName(index) == fileName)
            return index;
    return -1;
}

void PoolVideoSource::changed(const core::ChangeContext&)
{
    notifyListeners();
}

} // namespace montala::host
