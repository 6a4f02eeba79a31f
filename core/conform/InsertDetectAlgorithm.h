#pragma once

#include "core/conform/MontalaInformationAlgorithm.h"

namespace montala::core {

// Finds picture of the New EDL that no Change event fills: each hole gets an
// "Insert" marker named after the New event.
//
//   New EDL      [========= N =========]
//   Change EDL   [== a ==]       [= b =]
//   markers              [Insert]
class InsertDetectAlgorithm : public MontalaInformationAlgorithm {
public:
    std::vector<InformationEntry> detect(const CutList& cuts, const InformationContext& context,
                                         ProgressHandlerBase* progress) override;
    int64_t getStepCount(int64_t eventCount, int64_t trackCount) const override { return 3; }
};

} // namespace montala::core
