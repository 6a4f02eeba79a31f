#pragma once

#include "core/conform/MontalaInformationAlgorithm.h"

namespace montala::core {

// Finds seams where two pieces that were not neighbours now touch and an
// automated value jumps from one to the other (by more than 0.01):
//
//   new timeline   [=== X ===][=== Y ===]
//   fader             0.8   |   0.2        one warning over the seam,
//                                          naming every track that jumps
//
// Only a seam counts: with a gap of a frame or more between the two events,
// nothing is compared.
class AutomationWarningDetectAlgorithm : public MontalaInformationAlgorithm {
public:
    std::vector<InformationEntry> detect(const CutList& cuts, const InformationContext& context,
                                         ProgressHandlerBase* progress) override;
    int64_t getStepCount(int64_t eventCount, int64_t trackCount) const override { return eventCount * trackCount; }
};

} // namespace montala::core
