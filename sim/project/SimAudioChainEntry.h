#pragma once

#include "kelmar/project/IAudioChainEntry.h"
#include "sim/project/SimBase.h"
#include "sim/project/SimObject.h"

#include <memory>

namespace montala::sim {

// One entry of a track's audio chain: the track's audio events, those in parts
// included, in time order as they were when the chain was asked for.
class SimAudioChainEntry : public SimBase, public Kelmar::IAudioChainEntry {
public:
    using Chain = std::shared_ptr<const SimObject::List>;

    SimAudioChainEntry(Chain chain, std::size_t index);

    // The chain of an audio track, in time order; layers at the same start
    // keep their order. Sorted once and found again, until something below
    // the track changes, for as long as an entry of it is held: a walk along
    // the chain (and an event's next in it) does not sort the track's events
    // at each step, and the chains of a feature's tracks are not all kept
    // beside the caller's own images of them.
    static Chain chainOf(SimObject& track);
    // Where `event` lies in `chain`; the chain's size when it is not there.
    static std::size_t indexOf(const SimObject::List& chain, const SimObject& event);

    Kelmar::tresult queryInterface(const Kelmar::FUID& iid, void** obj) override;
    KELMAR_FOBJECT_REFCOUNT

    Kelmar::IProjectObject* getObject() override;
    Kelmar::IAudioChainEntry* next(Kelmar::int32 flags) override;
    double getStart() override;
    double getEnd() override;

private:
    Chain chain;
    std::size_t index;
};

} // namespace montala::sim
