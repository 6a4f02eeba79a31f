#pragma once

#include "core/conform/MontalaInformationAlgorithm.h"

#include <cstdint>

namespace montala::core {

// Marks the short bits of audio that sit at the ends of the applied pieces:
// what the snippet algorithm left or could not move. A bit is short when it
// is at most snippetMarkerFrames long (within a 384 kHz sample).
//
//   old timeline   [==A==]          [=====B=====]
//   piece             |src ............... src|
//   markers        head: [A's end - srcStart]  tail: [srcEnd - B's start]
//
// A snippet that is the whole piece is reported once, not as head and tail.
class RemainsDetectAlgorithm : public MontalaInformationAlgorithm {
public:
    std::vector<InformationEntry> detect(const CutList& cuts, const InformationContext& context,
                                         ProgressHandlerBase* progress) override;
    int64_t getStepCount(int64_t eventCount, int64_t trackCount) const override { return eventCount * trackCount; }

private:
    uint32_t maxFrames = 0;
    // Kept from the context for the markers' sake; the positions here are
    // already on the new timeline and need no offset.
    double offset = 0.0;
};

} // namespace montala::core
