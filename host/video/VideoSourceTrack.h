#pragma once

#include "core/services/VideoTrackHandlerBase.h"
#include "host/Track.h"
#include "host/video/VideoSourceBase.h"
#include "util/Result.h"

#include "kelmar/edit/IProjectEdit.h"

namespace montala::host {

class PoolVideoSource;
class VideoTrackHandler;

// The new cut's picture track. It shows what the track holds where the
// track has a clip and the user's new videos elsewhere, and a run writes the
// video list onto the track, shifted by `offset`:
//
//   video list   |new_a.mov 01:00:00:00+30s|new_b.mov 01:00:30:00+20s|
//   track        |--- new_a.mov ----------|--- new_b.mov ------|      at start + offset
class VideoSourceTrack : public VideoSourceBase,
                         public VideoSourceBase::Listener,
                         public core::VideoTrackHandlerBase::Listener {
public:
    // Both borrowed: they outlive this object.
    VideoSourceTrack(PoolVideoSource& pool, VideoTrackHandler& handler);
    VideoSourceTrack(const VideoSourceTrack&) = delete;
    VideoSourceTrack& operator=(const VideoSourceTrack&) = delete;
    ~VideoSourceTrack() override;

    void findFrame(double seconds, int64_t& stream, int64_t& position, int pictureIndex) override;
    void sourceChanged() override { notifyListeners(); }
    void tracksChanged() override;

    // Seconds added to every entry's place on the track.
    void setOffset(double seconds) { offset = seconds; }
    double getOffset() const { return offset; }
    bool hasTrack() { return current.isValid(); }

    // Replaces the track's events by the video list inside `edit`. Nothing
    // happens when `enabled` is false, the list is empty or there is no
    // track; a track whose type has 1 in its second byte (0x108, found by
    // its low byte) is emptied and kept so. The
    // answer is a failure of the host's, or Ok.
    util::Result::Type writeTrack(bool enabled, Kelmar::IProjectEdit& edit);

private:
    void fillTrack(Kelmar::IProjectEdit& edit);

    PoolVideoSource& pool;
    VideoTrackHandler& handler;
    Track current;
    double offset = 0.0;
};

} // namespace montala::host
