#pragma once

namespace montala::core {

class CutList;
struct SnippetContext;

// An algorithm that adjusts the planned cuts before anything is cut. Made on
// the stack for each run; it keeps nothing between runs.
class MontalaAlgorithm {
public:
    virtual void process(CutList& cuts, SnippetContext& context) = 0;

protected:
    MontalaAlgorithm() = default;
    // Never deleted through the base.
    ~MontalaAlgorithm() = default;
};

} // namespace montala::core
