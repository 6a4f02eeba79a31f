#pragma once

#include "core/conform/CutEventBase.h"
#include "host/Track.h"

#include <string>

namespace montala::host {

// One Change event's piece on one host track: the numbers of the plan, and
// the track to ask what lies around a place of the old timeline.
class CutEvent : public core::CutEventBase {
public:
    CutEvent(const Track& track, double srcStart, double srcEnd, double dstStart, double dstEnd)
        : core::CutEventBase(srcStart, srcEnd, dstStart, dstEnd), track(track)
    {
    }

    // The audio under `position` (absolute) and its neighbours, and the
    // automation on both sides, as the track holds them now.
    core::AudioInfo getAudioInfo(double position) override;
    std::string getTrackName() override { return track.getName(); }
    bool isAudioTrack() override { return track.isAudioTrack(); }

    Track& getTrack() { return track; }
    const Track& getTrack() const { return track; }

private:
    Track track;
};

} // namespace montala::host
