#pragma once

#include "core/model/ChangeContext.h"
#include "host/video/VideoSourceBase.h"

#include <string>

namespace montala::core {
class MediaPoolInterface;
class VideoList;
} // namespace montala::core

namespace montala::host {

// The new cut's picture as the user named it: the video list says which pool
// file lies where on the new timeline, and the frame is counted from the
// entry's start.
class PoolVideoSource : public VideoSourceBase, public core::ChangeContextListenerInterface {
public:
    PoolVideoSource() = default;
    PoolVideoSource(const PoolVideoSource&) = delete;
    PoolVideoSource& operator=(const PoolVideoSource&) = delete;
    ~PoolVideoSource() override;

    // Both borrowed, either may be null; listens to the list.
    void setSources(core::MediaPoolInterface* pool, core::VideoList* list);
    core::MediaPoolInterface* getMediaPool() const { return mediaPool; }
    core::VideoList* getVideoList() const { return videoList; }

    void findFrame(double seconds, int64_t& stream, int64_t& position, int pictureIndex) override;
    void changed(const core::ChangeContext& context) override;

    // The pool's video that a video list entry of `fileName` names: by its
    // file name or, for a clip renamed in the pool, by its name. -1: none.
    static int clipOf(core::MediaPoolInterface& pool, const std::string& fileName);

private:
    core::MediaPoolInterface* mediaPool = nullptr;
    core::VideoList* videoList = nullptr;
};

} // namespace montala::host
