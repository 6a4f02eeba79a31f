#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace montala::core {

// A static index of half-open ranges [start, end) that finds the ranges
// overlapping a query range, so that the work follows the overlaps and not
// the number of ranges held. Ranges are sorted by start, and each node of
// the implicit balanced tree over that order knows the latest end below it:
//
//   sorted by start   |--0--|   |----1----|      |-2-|   |---3---|
//   query                          [=====)
//   visited           subtrees whose latest end lies after the query's
//                     start, and whose start lies before the query's end
//
// Ranges that only touch do not overlap, and an empty range overlaps
// nothing. Build once with add and build; then query as often as needed.
class SourceIntervalIndex {
public:
    void add(int64_t start, int64_t end, uint32_t id);
    void build();
    // Appends the ids of the ranges overlapping [start, end), in no
    // particular order.
    void findOverlapping(int64_t start, int64_t end, std::vector<uint32_t>& ids) const;
    size_t size() const { return ranges.size(); }

private:
    struct Range {
        int64_t start;
        int64_t end;
        uint32_t id;
    };
    void collect(size_t low, size_t high, int64_t start, int64_t end, std::vector<uint32_t>& ids) const;
    int64_t fillLatestEnds(size_t low, size_t high);

    std::vector<Range> ranges;
    // For the node at the middle of [low, high): the latest end in it.
    std::vector<int64_t> latestEnd;
};

} // namespace montala::core
