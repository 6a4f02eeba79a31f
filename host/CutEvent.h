#pragma once

#include "core/conform/CutEventBase.h"
#include "host/Track.h"

#include <string>

namespace montala::host {

// One Change event's piece on one host track: the numbers of the plan, and
// the track to ask what lies around a place of the old timeline. A feature's
// run holds a piece per event and track all at once, so a piece refers to a
// wrapper of its track that all pieces on the track share; whoever makes the
// piece keeps that wrapper for as long as the piece lives.
class CutEvent : public core::CutEventBase {
public:
    CutEvent(Track& track, double srcStart, double srcEnd, double dstStart, double dstEnd)
        : core::CutEventBase(srcStart, srcEnd, dstStart, dstEnd), track(&track)
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
    Track* track;
};

} // namespace montala::host
