#include "core/conform/Cut.h"

#include "util/Result.h"

#include <limits>

namespace montala::core {

using util::Result;

Cut::Cut(EventPtr event, std::vector<CutEventPtr> pieces) : event(std::move(event)), pieces(std::move(pieces)) {}

double Cut::getEarliestStart() const
{
    const std::optional<double> earliest = findEarliestStart();
    if (!earliest)
        throw Result::OutOfRange;
    return *earliest;
}

std::optional<double> Cut::findEarliestStart() const
{
    double earliest = std::numeric_limits<double>::max();
    for (const CutEventPtr& piece : pieces) {
        if (piece && piece->getDstStart() < earliest)
            earliest = piece->getDstStart();
    }
    // Also catches a piece that starts at the largest double itself: no
    // real position is ever that far.
    if (earliest == std::numeric_limits<double>::max())
        return std::nullopt;
    return earliest;
}

} // namespace montala::core
