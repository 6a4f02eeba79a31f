#include "host/video/VideoProvider.h"

#include "host/MediaPool.h"
#include "host/Project.h"

namespace montala::host {

using util::Result;

VideoProvider::VideoProvider(Kelmar::IHostServices* context)
    : trackSource(trackHandler, core::VideoTrackHandlerBase::OldPicture), sourceTrack(poolSource, trackHandler)
{
    pictures.push_back(std::make_unique<SingleImageProvider>(*this, 0, context, &trackSource));
    pictures.push_back(std::make_unique<SingleImageProvider>(*this, 1, context, &sourceTrack));
}

VideoProvider::~VideoProvider()
{
    // The pictures first: their threads stop before the sources go. Both
    // are told at once, so that two blocked in the host's service cost one
    // wait, not two.
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::milliseconds(ImageProviderThread::stopLimitMs);
    for (auto& picture : pictures)
        picture->stopBy(deadline);
    pictures.clear();
    setProject(nullptr);
}

void VideoProvider::setFrameSize(int index, int width, int height, double seconds, int position)
{
    if (index < 0 || index >= pictureCount)
        throw Result::InvalidArgument;
    if (width < 1 || height < 1)
        throw Result::OutOfRange;
    pictures[static_cast<size_t>(index)]->setFrameSize(width, height, seconds, position);
}

void VideoProvider::setProject(Project* newProject)
{
    project = newProject;
    trackHandler.setProject(project);
    poolSource.setSources(project ? project->getMediaPool() : nullptr,
                          project ? &project->getDataModel().getVideoList() : nullptr);
}

void VideoProvider::poll()
{
    for (auto& picture : pictures)
        picture->poll();
}

bool VideoProvider::isWaiting() const
{
    for (const auto& picture : pictures)
        if (picture->isWaiting())
            return true;
    return false;
}

Result::Type VideoProvider::applyVideo(bool enabled, double offset, Kelmar::IProjectEdit& edit)
{
    if (!project)
        return Result::Ok;
    try {
        trackHandler.update();
        sourceTrack.setOffset(offset);
        return sourceTrack.writeTrack(enabled, edit);
    } catch (Result::Type code) {
        return code;
    }
}

} // namespace montala::host
