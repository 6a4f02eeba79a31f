#include "host/video/TrackVideoSource.h"

#include "host/Project.h"
#include "host/video/VideoTrackHandler.h"
#include "core/time/Tolerances.h"
#include "util/Result.h"

#include "kelmar/project/IPoolClip.h"
#include "kelmar/project/IVideoEvent.h"

#include <cmath>

namespace montala::host {

TrackVideoSource::TrackVideoSource(VideoTrackHandler& handler, int role) : handler(handler), role(role)
{
    handler.addListener(this);
    current = handler.findTrack(role);
}

TrackVideoSource::~TrackVideoSource()
{
    handler.removeListener(this);
}

void TrackVideoSource::findFrame(double seconds, int64_t& stream, int64_t& position, int)
{
    frameOnTrack(handler.getProject(), current, seconds, stream, position);
}

void TrackVideoSource::tracksChanged()
{
    current = handler.findTrack(role);
    notifyListeners();
}

void TrackVideoSource::frameOnTrack(Project* project, Track track, double seconds, int64_t& stream,
                                    int64_t& position)
{
    stream = 0;
    position = 0;
    try {
        if (!project || !track.isValid())
            return;
        const double time = seconds - project->getProjectStart();
        const double rate = project->getFramerate().exactRate;
        for (const TrackEvent& event : track.getEvents()) {
            if (time < event.getStart() - core::positionTolerance || time >= event.getEnd())
                continue;
            auto video = Kelmar::queryInterface<Kelmar::IVideoEvent>(event.getObject());
            auto clip = video ? Kelmar::owned(video->getClip()) : Kelmar::IPtr<Kelmar::IPoolClip>();
            if (!clip || rate <= 0)
                return;
            const double intoClip = time - event.getStart() + event.getObject()->getOffset(nullptr);
            // Stamps a hair before a frame still count as that frame.
            const int64_t frame = static_cast<int64_t>(std::floor(intoClip * rate + 1e-6));
            if (frame < 0 || frame >= std::llround(clip->getLength() * rate))
                return;
            stream = clip->getId();
            position = frame;
            return;
        }
    } catch (util::Result::Type) {
        stream = 0;
        position = 0;
    }
}

} // namespace montala::host
