#include "sim/project/NodeHeap.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <set>
#include <vector>

namespace montala::sim {
namespace {

std::uintptr_t blockOf(const void* slot)
{
    return reinterpret_cast<std::uintptr_t>(slot) & ~std::uintptr_t{16 * 1024 - 1};
}

struct Slot {
    unsigned char* memory;
    std::size_t size;
    unsigned char mark;
};

// Two tracks' nodes made in turn, of the sizes of events and points, and
// one larger than the heap keeps: each slot keeps what was written to it,
// each track's slots lie in blocks the other's never use, and once all are
// let go of, no block stays out of the stock.
TEST(NodeHeapTest, TracksMadeInTurnKeepTheirOwnBlocksWholeAndGiveThemAllBack)
{
    const std::size_t blocksBefore = NodeHeap::blocksInUse();
    const std::uint8_t first = NodeHeap::newPlace();
    const std::uint8_t second = NodeHeap::newPlace();
    ASSERT_NE(first, second);
    ASSERT_NE(first, 0);

    std::vector<Slot> slots;
    std::set<std::uintptr_t> blocks[2];
    const std::size_t sizes[] = {104, 120, 97, NodeHeap::largest, NodeHeap::largest + 1};
    for (int i = 0; i < 3000; ++i) {
        const int track = i % 2;
        const NodeHeap::Placing placing(track == 0 ? first : second);
        const std::size_t size = sizes[(i / 2) % 5];
        auto* memory = static_cast<unsigned char*>(NodeHeap::allocate(size));
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(memory) % alignof(void*), 0u);
        const auto mark = static_cast<unsigned char>(i);
        std::memset(memory, mark, size);
        slots.push_back({memory, size, mark});
        if (size <= NodeHeap::largest)
            blocks[track].insert(blockOf(memory));
    }
    for (const std::uintptr_t block : blocks[0])
        EXPECT_EQ(blocks[1].count(block), 0u) << "a block holds both tracks' nodes";
    EXPECT_GT(NodeHeap::blocksInUse(), blocksBefore);

    // Every other slot let go of and taken again: the freed room is used
    // before any new block.
    const std::size_t blocksFull = NodeHeap::blocksInUse();
    for (std::size_t i = 0; i < slots.size(); i += 2)
        NodeHeap::release(slots[i].memory, slots[i].size);
    for (std::size_t i = 0; i < slots.size(); i += 2) {
        const NodeHeap::Placing placing(first);
        slots[i].memory = static_cast<unsigned char*>(NodeHeap::allocate(slots[i].size));
        std::memset(slots[i].memory, slots[i].mark, slots[i].size);
    }
    EXPECT_EQ(NodeHeap::blocksInUse(), blocksFull);

    for (const Slot& slot : slots) {
        for (std::size_t b = 0; b < slot.size; ++b)
            ASSERT_EQ(slot.memory[b], slot.mark) << "slots overlap";
        NodeHeap::release(slot.memory, slot.size);
    }
    EXPECT_EQ(NodeHeap::blocksInUse(), blocksBefore);
}

// Megabytes of nodes made, let go of in an order that empties blocks all
// over, and made again, twice: blocks and whole megabytes that went back
// are handed out again without two nodes sharing room.
TEST(NodeHeapTest, MemoryLetGoOfAndTakenAgainNeverHoldsTwoNodesAtOnce)
{
    const std::size_t blocksBefore = NodeHeap::blocksInUse();
    const NodeHeap::Placing placing(NodeHeap::newPlace());
    std::vector<Slot> slots(40000);
    for (int round = 0; round < 3; ++round) {
        for (std::size_t i = 0; i < slots.size(); ++i) {
            const std::size_t size = i % 3 == 0 ? 120 : 104;
            slots[i] = {static_cast<unsigned char*>(NodeHeap::allocate(size)), size,
                        static_cast<unsigned char>(i * 7 + static_cast<std::size_t>(round))};
            std::memset(slots[i].memory, slots[i].mark, size);
        }
        for (std::size_t step : {5u, 2u, 1u}) {
            for (std::size_t i = 0; i < slots.size(); i += step) {
                if (!slots[i].memory)
                    continue;
                for (std::size_t b = 0; b < slots[i].size; ++b)
                    ASSERT_EQ(slots[i].memory[b], slots[i].mark) << "slots overlap in round " << round;
                NodeHeap::release(slots[i].memory, slots[i].size);
                slots[i].memory = nullptr;
            }
        }
        EXPECT_EQ(NodeHeap::blocksInUse(), blocksBefore);
    }
}

} // namespace
} // namespace montala::sim
