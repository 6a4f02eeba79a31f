#pragma once

#include "core/conform/MontalaInformationAlgorithm.h"

namespace montala::core {

// Finds audio that the new order has put on top of other audio: a piece
// that reaches past the start of the next cut's piece on the same track,
// with sound on both sides of the overlap.
//
//   new timeline   [==== X ====]
//                          [==== Y ====]
//   marker                 [ov]           "Overlap in Dia 1 "
//
// Only neighbours by start are compared: a piece that reaches over the next
// cut into the one after it is not reported.
class OverlapDetectAlgorithm : public MontalaInformationAlgorithm {
public:
    std::vector<InformationEntry> detect(const CutList& cuts, const InformationContext& context,
                                         ProgressHandlerBase* progress) override;
    int64_t getStepCount(int64_t eventCount, int64_t trackCount) const override { return eventCount; }
};

} // namespace montala::core
