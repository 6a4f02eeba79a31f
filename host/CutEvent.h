#pragma once

#include "core/conform/CutEventBase.h"
#include "host/Track.h"

#include <memory>
#include <string>

namespace montala::host {

// One Change event's piece on one host track: the numbers of the plan, and
// the track to ask what lies around a place of the old timeline. A feature's
// run holds a piece per event and track all at once, so the pieces on one
// track share one wrapper of it instead of a copy each.
class CutEvent : public core::CutEventBase {
public:
    CutEvent(std::shared_ptr<Track> track, double srcStart, double srcEnd, double dstStart, double dstEnd)
        : core::CutEventBase(srcStart, srcEnd, dstStart, dstEnd), track(std::move(track))
    {
    }
    // A piece with a wrapper of its own.
    CutEvent(const Track& track, double srcStart, double srcEnd, double dstStart, double dstEnd)
        : CutEvent(std::make_shared<Track>(track), srcStart, srcEnd, dstStart, dstEnd)
    {
    }

    // The audio under `position` (absolute) and its neighbours, and the
    // automation on both sides, as the track holds them now.
    core::AudioInfo getAudioInfo(double position) override;
    std::string getTrackName() override { return track->getName(); }
    bool isAudioTrack() override { return track->isAudioTrack(); }

    Track& getTrack() { return *track; }
    const Track& getTrack() const { return *track; }

private:
    std::shared_ptr<Track> track;
};

} // namespace montala::host
