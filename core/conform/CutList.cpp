#include "core/conform/CutList.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace montala::core {

void CutList::append(const CutPtr& cut)
{
    cuts.push_back(cut);
    startOrder.reset();
    eventIndex.reset();
    if (cut && cut->getEvent())
        events.addEvent(cut->getEvent());
}

const EventListIndex& CutList::getEventIndex(const Framerate& rate) const
{
    if (!eventIndex || !(eventIndex->getFramerate() == rate))
        eventIndex = std::make_unique<EventListIndex>(events, rate);
    return *eventIndex;
}

std::map<double, CutPtr> CutList::getCutsByStart() const
{
    std::map<double, CutPtr> byStart;
    for (const CutPtr& cut : cuts) {
        if (!cut)
            continue;
        if (const std::optional<double> start = cut->findEarliestStart())
            byStart.emplace(*start, cut);
    }
    return byStart;
}

const std::vector<const Cut*>& CutList::getCutsInStartOrder() const
{
    if (startOrder)
        return *startOrder;
    // Start and index of creation: sorting the pairs puts the first made
    // ahead of later ones with an equal start, and unique keeps it.
    std::vector<std::pair<double, size_t>> starts;
    starts.reserve(cuts.size());
    for (size_t i = 0; i < cuts.size(); ++i) {
        if (!cuts[i])
            continue;
        if (const std::optional<double> start = cuts[i]->findEarliestStart())
            starts.emplace_back(*start, i);
    }
    std::sort(starts.begin(), starts.end());
    starts.erase(std::unique(starts.begin(), starts.end(),
                             [](const auto& a, const auto& b) { return a.first == b.first; }),
                 starts.end());

    std::vector<const Cut*>& ordered = startOrder.emplace();
    ordered.reserve(starts.size());
    for (const auto& [start, index] : starts)
        ordered.push_back(cuts[index].get());
    return ordered;
}

} // namespace montala::core
