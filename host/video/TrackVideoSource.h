#pragma once

#include "core/services/VideoTrackHandlerBase.h"
#include "host/Track.h"
#include "host/video/VideoSourceBase.h"

namespace montala::host {

class Project;
class VideoTrackHandler;

// A cut's picture as a video track of the project holds it: the track that
// carries the mark of `role` (old or new picture), its video event at the
// time, and the frame of the event's pool clip there.
class TrackVideoSource : public VideoSourceBase, public core::VideoTrackHandlerBase::Listener {
public:
    // Borrowed: the handler outlives the source.
    TrackVideoSource(VideoTrackHandler& handler, int role);
    TrackVideoSource(const TrackVideoSource&) = delete;
    TrackVideoSource& operator=(const TrackVideoSource&) = delete;
    ~TrackVideoSource() override;

    void findFrame(double seconds, int64_t& stream, int64_t& position, int pictureIndex) override;
    // Takes the marked track anew and tells the listeners.
    void tracksChanged() override;

    // The stream and frame that `track` of `project` shows at `seconds`
    // (absolute); both 0 where it shows nothing.
    static void frameOnTrack(Project* project, Track track, double seconds, int64_t& stream, int64_t& position);

private:
    VideoTrackHandler& handler;
    int role;
    Track current;
};

} // namespace montala::host
