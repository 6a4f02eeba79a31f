#include "core/generation/SourceIntervalIndex.h"

#include <algorithm>
#include <limits>

namespace montala::core {

void SourceIntervalIndex::add(uint32_t group, int64_t start, int64_t end, uint32_t id)
{
    // An empty or reversed range can never overlap anything.
    if (start < end)
        ranges.push_back({group, id, start, end});
}

void SourceIntervalIndex::build()
{
    std::sort(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) {
        return a.group != b.group ? a.group < b.group : a.start < b.start;
    });
    const uint32_t groups = ranges.empty() ? 0 : ranges.back().group + 1;
    groupStart.assign(groups + 1, 0);
    for (const Range& range : ranges)
        ++groupStart[range.group + 1];
    for (uint32_t g = 0; g < groups; ++g)
        groupStart[g + 1] += groupStart[g];
    latestEnd.assign(ranges.size(), std::numeric_limits<int64_t>::min());
    for (uint32_t g = 0; g < groups; ++g)
        fillLatestEnds(groupStart[g], groupStart[g + 1]);
}

int64_t SourceIntervalIndex::fillLatestEnds(size_t low, size_t high)
{
    if (low >= high)
        return std::numeric_limits<int64_t>::min();
    const size_t middle = low + (high - low) / 2;
    const int64_t latest = std::max({ranges[middle].end, fillLatestEnds(low, middle), fillLatestEnds(middle + 1, high)});
    latestEnd[middle] = latest;
    return latest;
}

void SourceIntervalIndex::findOverlapping(uint32_t group, int64_t start, int64_t end,
                                          std::vector<uint32_t>& ids) const
{
    if (start < end && group + 1 < groupStart.size())
        collect(groupStart[group], groupStart[group + 1], start, end, ids);
}

void SourceIntervalIndex::collect(size_t low, size_t high, int64_t start, int64_t end,
                                  std::vector<uint32_t>& ids) const
{
    // The depth is that of a balanced tree, so the recursion stays shallow.
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        if (latestEnd[middle] <= start)
            return; // everything below ends before the query begins
        collect(low, middle, start, end, ids);
        const Range& range = ranges[middle];
        if (range.start >= end)
            return; // this range and all to its right begin after the query
        if (range.end > start)
            ids.push_back(range.id);
        low = middle + 1;
    }
}

} // namespace montala::core
