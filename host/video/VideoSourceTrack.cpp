#include "host/video/VideoSourceTrack.h"

#include "core/events/VideoList.h"
#include "host/HostCalls.h"
#include "host/MediaPool.h"
#include "host/Project.h"
#include "host/video/PoolVideoSource.h"
#include "host/video/TrackVideoSource.h"
#include "host/video/VideoTrackHandler.h"

#include "kelmar/edit/IEditContext.h"
#include "kelmar/project/IClipSource.h"
#include "kelmar/project/IPoolClip.h"
#include "kelmar/project/IProject.h"
#include "kelmar/project/IVideoEvent.h"

namespace montala::host {

using util::Result;

VideoSourceTrack::VideoSourceTrack(PoolVideoSource& pool, VideoTrackHandler& handler) : pool(pool), handler(handler)
{
    pool.addListener(this);
    handler.addListener(this);
    current = handler.findTrack(core::VideoTrackHandlerBase::NewPicture, false);
}

VideoSourceTrack::~VideoSourceTrack()
{
    handler.removeListener(this);
    pool.removeListener(this);
}

void VideoSourceTrack::findFrame(double seconds, int64_t& stream, int64_t& position, int pictureIndex)
{
    TrackVideoSource::frameOnTrack(handler.getProject(), current, seconds, stream, position);
    if (stream == 0)
        pool.findFrame(seconds, stream, position, pictureIndex);
}

void VideoSourceTrack::tracksChanged()
{
    current = handler.findTrack(core::VideoTrackHandlerBase::NewPicture, false);
    notifyListeners();
}

Result::Type VideoSourceTrack::writeTrack(bool enabled, Kelmar::IProjectEdit& edit)
{
    if (!enabled)
        return Result::Ok;
    try {
        fillTrack(edit);
    } catch (Result::Type code) {
        return code;
    }
    return Result::Ok;
}

void VideoSourceTrack::fillTrack(Kelmar::IProjectEdit& edit)
{
    core::VideoList* list = pool.getVideoList();
    if (!list || list->getSize() == 0 || !handler.getProject() || !current.isValid())
        return;
    Project& project = *handler.getProject();
    auto trackObject = current.object();
    auto context = Kelmar::owned(project.getHostProject()->getEditContext(trackObject.get()));
    for (const TrackEvent& event : current.getEvents())
        check(edit.removeObject(context.get(), event.getObject()));
    // A track marked so is the user's to keep empty.
    if (current.hasType(256, 0xFF00))
        return;

    const double projectStart = project.getProjectStart();
    MediaPool* mediaPool = project.getMediaPool();
    for (size_t index = 0; index < list->getSize(); ++index) {
        const core::VideoList::Entry& entry = list->getEntry(index);
        if (!mediaPool)
            continue;
        const double start = entry.getStart().toSeconds() + offset;
        const double end = core::Timecode::sum(entry.getStart(), entry.getLength()).toSeconds() + offset;
        const std::string fileName = entry.getFileName();
        const int clipIndex = PoolVideoSource::clipOf(*mediaPool, fileName);
        Kelmar::IPtr<Kelmar::IPoolClip> clip =
            clipIndex < 0 ? nullptr : mediaPool->findClip(fileName, mediaPool->getClipId(clipIndex));
        if (!clip)
            continue;
        auto video = getService<Kelmar::IVideoEvent>(project.getServices());
        auto object = queryRequired<Kelmar::IProjectObject>(video.get());
        auto source = queryRequired<Kelmar::IClipSource>(clip.get());
        check(video->setClip(context.get(), source.get(), 0));
        check(object->setStart(context.get(), start - projectStart, 0));
        check(object->setEnd(context.get(), end - projectStart, 0));
        check(edit.addObject(context.get(), object.get()));
    }
}

} // namespace montala::host
