#include "core/services/VideoProviderBase.h"

#include "util/Result.h"

#include <algorithm>

namespace montala::core {

using util::Result;

VideoProviderBase::VideoProviderBase() = default;

void VideoProviderBase::checkIndex(int index)
{
    if (index < 0 || index >= pictureCount)
        throw Result::InvalidArgument;
}

const VideoImage& VideoProviderBase::getImage(int index) const
{
    checkIndex(index);
    return images[index];
}

void VideoProviderBase::setImage(VideoImage image, int index)
{
    checkIndex(index);
    images[index] = std::move(image);
    // A listener may leave while it is told.
    const std::vector<Listener*> toTell = listeners;
    for (Listener* listener : toTell)
        if (std::find(listeners.begin(), listeners.end(), listener) != listeners.end())
            listener->imageChanged(index);
}

void VideoProviderBase::addListener(Listener* listener)
{
    if (listener && std::find(listeners.begin(), listeners.end(), listener) == listeners.end())
        listeners.push_back(listener);
}

void VideoProviderBase::removeListener(Listener* listener)
{
    listeners.erase(std::remove(listeners.begin(), listeners.end(), listener), listeners.end());
}

void VideoProviderBase::setSize(int newWidth, int newHeight)
{
    if (newWidth < 1 || newHeight < 1)
        throw Result::OutOfRange;
    if (newWidth == width && newHeight == height)
        return;
    width = newWidth;
    height = newHeight;
    for (int index = 0; index < pictureCount; ++index)
        if (frames[index].isInitialized())
            requestFrame(index, frames[index]);
}

void VideoProviderBase::requestFrame(int index, const Timecode& timecode)
{
    checkIndex(index);
    frames[index] = timecode;
    setFrameSize(index, width, height, timecode.toSeconds(), index);
}

} // namespace montala::core
