#pragma once

#include "core/conform/CutEventBase.h"
#include "core/events/EventBase.h"

#include <memory>
#include <optional>
#include <vector>

namespace montala::core {

using CutEventPtr = std::shared_ptr<CutEventBase>;

// The plan for one Change event: one piece per track that takes part. All
// cuts of a run list their pieces in the same track order, so that the
// pieces at one index of two cuts lie on the same track.
class Cut {
public:
    Cut(EventPtr event, std::vector<CutEventPtr> pieces);

    const EventPtr& getEvent() const { return event; }
    const std::vector<CutEventPtr>& getPieces() const { return pieces; }
    // The smallest dstStart of the pieces. Result::OutOfRange without pieces:
    // such a cut has no place on the new timeline.
    double getEarliestStart() const;
    // The same, or nothing for a cut without a place (every track locked,
    // say): for those who pass such cuts over instead of failing.
    std::optional<double> findEarliestStart() const;

private:
    EventPtr event;
    std::vector<CutEventPtr> pieces;
};

using CutPtr = std::shared_ptr<Cut>;

} // namespace montala::core
