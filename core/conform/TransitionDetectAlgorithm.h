#pragma once

#include "core/conform/MontalaInformationAlgorithm.h"

namespace montala::core {

// Marks the dissolves and wipes of the New EDL that need new sound work.
// A transition is left out when it stands exactly where it stood in the Old
// EDL, or when it lies inside one moved stretch, since then its sound came
// along with it:
//
//   Change EDL   [====== a ======][=== b ===]
//   New EDL         <D>                         inside a: nothing
//                                <D>            on the seam: "D 12 A001"
class TransitionDetectAlgorithm : public MontalaInformationAlgorithm {
public:
    std::vector<InformationEntry> detect(const CutList& cuts, const InformationContext& context,
                                         ProgressHandlerBase* progress) override;
    int64_t getStepCount(int64_t eventCount, int64_t trackCount) const override { return 3; }
};

} // namespace montala::core
