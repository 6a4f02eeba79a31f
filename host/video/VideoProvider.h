#pragma once

#include "core/services/VideoProviderBase.h"
#include "host/video/PoolVideoSource.h"
#include "host/video/SingleImageProvider.h"
#include "host/video/TrackVideoSource.h"
#include "host/video/VideoSourceTrack.h"
#include "host/video/VideoTrackHandler.h"
#include "util/Result.h"

#include "kelmar/edit/IProjectEdit.h"
#include "kelmar/services/IHostServices.h"

#include <memory>
#include <vector>

namespace montala::host {

class Project;

// The video preview of the active project: picture 0 is the old cut as the
// track marked "Old Video" holds it, picture 1 the new cut as the track
// marked "New Video" holds it or, where that has no clip, as the user's new
// videos lay it out. Each picture has its own worker thread; the host's idle
// call polls them. A run writes the new videos onto the "New Video" track
// through applyVideo.
class VideoProvider : public core::VideoProviderBase {
public:
    // Borrowed: the services outlive the provider.
    explicit VideoProvider(Kelmar::IHostServices* context);
    VideoProvider(const VideoProvider&) = delete;
    VideoProvider& operator=(const VideoProvider&) = delete;
    ~VideoProvider() override;

    core::VideoTrackHandlerBase* getTrackHandler() override { return &trackHandler; }
    void setFrameSize(int index, int width, int height, double seconds, int position) override;

    // The project to show (null: none): its video tracks, media pool and
    // video list. It hands the project its track handler.
    void setProject(Project* project);
    Project* getProject() const { return project; }
    // Takes finished frames and hands waiting requests to the threads.
    void poll();
    // Some picture is still on its way: a program that draws the window
    // once gives the idle calls time until it is there.
    bool isWaiting() const;

    // Writes the new videos onto the new picture track, each shifted by
    // `offset` seconds, inside `edit`. Ok without a project or new picture
    // track; a failure of the host's is the answer.
    util::Result::Type applyVideo(bool enabled, double offset, Kelmar::IProjectEdit& edit);

private:
    VideoTrackHandler trackHandler;
    TrackVideoSource trackSource;
    PoolVideoSource poolSource;
    VideoSourceTrack sourceTrack;
    std::vector<std::unique_ptr<SingleImageProvider>> pictures;
    Project* project = nullptr;
};

} // namespace montala::host
