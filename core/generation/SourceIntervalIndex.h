#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace montala::core {

// A static index of half-open ranges [start, end), kept apart by group (the
// match key they belong to), that finds the ranges of one group overlapping
// a query range, so that the work follows the overlaps and not the number
// of ranges held. Within a group the ranges are sorted by start, and each
// node of the implicit balanced tree over that order knows the latest end
// below it:
//
//   sorted by start   |--0--|   |----1----|      |-2-|   |---3---|
//   query                          [=====)
//   visited           subtrees whose latest end lies after the query's
//                     start, and whose start lies before the query's end
//
// Ranges that only touch do not overlap, and an empty range overlaps
// nothing. All groups share flat arrays, so that many small groups cost no
// allocation each. Build once with add and build; then query as often as
// needed.
class SourceIntervalIndex {
public:
    void add(uint32_t group, int64_t start, int64_t end, uint32_t id);
    void build();
    // Appends the ids of the group's ranges overlapping [start, end), in no
    // particular order.
    void findOverlapping(uint32_t group, int64_t start, int64_t end, std::vector<uint32_t>& ids) const;
    size_t size() const { return ranges.size(); }

private:
    struct Range {
        uint32_t group;
        uint32_t id;
        int64_t start;
        int64_t end;
    };
    void collect(size_t low, size_t high, int64_t start, int64_t end, std::vector<uint32_t>& ids) const;
    int64_t fillLatestEnds(size_t low, size_t high);

    std::vector<Range> ranges;
    // For the node at the middle of [low, high): the latest end in it.
    std::vector<int64_t> latestEnd;
    // The ranges of group g are [groupStart[g], groupStart[g + 1]).
    std::vector<uint32_t> groupStart;
};

} // namespace montala::core
