#pragma once

#include "core/conform/Cut.h"
#include "core/events/EventList.h"
#include "core/events/EventListIndex.h"
#include "core/time/Framerate.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace montala::core {

// The cuts of one run in the order they were made, with their events in a
// Change list of their own (shared, not copied).
class CutList {
public:
    CutList() = default;
    CutList(const CutList&) = delete;
    CutList& operator=(const CutList&) = delete;

    // A null cut is kept in its place (the run passes over it) and adds no
    // event.
    void append(const CutPtr& cut);
    // Unchecked.
    const CutPtr& getCut(size_t index) const { return cuts[index]; }
    size_t size() const { return cuts.size(); }
    const EventList& getEvents() const { return events; }

    // The cuts by where they begin on the new timeline, earliest first. Of
    // two cuts that begin at the very same position only the first made is
    // taken: the detectors that walk neighbours see one of them. Cuts
    // without a place (no pieces, as when every track is locked) are passed
    // over like null ones.
    std::map<double, CutPtr> getCutsByStart() const;
    // The same cuts in the same order, as a plain list that the detectors
    // walk. It is worked out when first asked for and kept until a cut is
    // appended: the detectors of a run each walk it, once the snippet
    // algorithm has put the pieces in their places, and working it out
    // reads every piece of every cut. The pointers live as long as the list.
    const std::vector<const Cut*>& getCutsInStartOrder() const;
    // An index of the cuts' events at that rate, kept like the start order
    // (until a cut is appended), for the detectors that look up by time.
    const EventListIndex& getEventIndex(const Framerate& rate) const;

private:
    std::vector<CutPtr> cuts;
    mutable std::optional<std::vector<const Cut*>> startOrder;
    mutable std::unique_ptr<EventListIndex> eventIndex;
    EventList events{EventList::ChangeKind};
};

} // namespace montala::core
