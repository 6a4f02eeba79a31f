#pragma once

#include "host/video/ImageProviderThread.h"
#include "host/video/VideoSourceBase.h"

#include <memory>

namespace montala::host {

class VideoProvider;

// One picture of the preview: it remembers the latest request, and on each
// poll turns a finished frame into the owner's image and hands the newest
// request to its worker thread once that is free. Requests made while the
// worker is busy collapse into the last one. Message thread only.
class SingleImageProvider : public VideoSourceBase::Listener {
public:
    // All borrowed: the owner holds the source and outlives this object.
    SingleImageProvider(VideoProvider& owner, int index, Kelmar::IHostServices* context, VideoSourceBase* source);
    SingleImageProvider(const SingleImageProvider&) = delete;
    SingleImageProvider& operator=(const SingleImageProvider&) = delete;
    ~SingleImageProvider() override;

    // The picture at `seconds`, width x height; served by a later poll.
    void setFrameSize(int width, int height, double seconds, int position);
    // Asks again for the same time: what the source shows there may differ.
    void sourceChanged() override { pending = true; }
    void poll();
    // A request not yet answered by a picture.
    bool isWaiting() const { return pending || thread->isWorking(); }
    // See ImageProviderThread::stopBy.
    void stopBy(std::chrono::steady_clock::time_point deadline) { thread->stopBy(deadline); }

private:
    // Black with the message centred, as the owner's image of this index.
    void showMessage(const char16_t* text);

    VideoProvider& owner;
    int index;
    VideoSourceBase* source;
    std::unique_ptr<ImageProviderThread> thread;
    int width = 1;
    int height = 1;
    double seconds = 0.0;
    int position = 0;
    bool pending = false;
};

} // namespace montala::host
