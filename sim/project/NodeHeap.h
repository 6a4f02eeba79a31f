#pragma once

#include <cstddef>
#include <cstdint>

namespace montala::sim {

// Where a project's nodes live: the nodes of one track side by side, apart
// from every other track's.
//
// A conform pastes each cut on all the tracks in turn, and then moves each
// track's new arrangement home, one track after another. From the general
// heap, a track's pasted events lay one in every thirty-two across the whole
// of a feature's memory, and moving them home fetched each from far away;
// here they lie in blocks of their own track, in the order they were made.
//
// Each place keeps blocks of 16 KiB per node size; a block that empties is
// free for any place and size, and a megabyte of blocks that all empty goes
// back to the general heap. Nodes larger than `largest` come from the
// general heap.
//
// Nodes are made and let go of on the thread that runs the project; a lock
// still keeps the blocks whole should another thread let go of the last
// reference to one.
class NodeHeap {
public:
    static constexpr std::size_t largest = 256;
    // Place 0 holds the nodes of no track in particular.
    static constexpr int places = 256;

    static void* allocate(std::size_t size);
    static void release(void* memory, std::size_t size) noexcept;

    // A place for a new track, taken in turn, so that the tracks of a
    // session have places of their own.
    static std::uint8_t newPlace();

    // While one stands, the nodes made on this thread go to `place`.
    class Placing {
    public:
        explicit Placing(std::uint8_t place);
        ~Placing();
        Placing(const Placing&) = delete;
        Placing& operator=(const Placing&) = delete;

    private:
        std::uint8_t previous;
    };

    // Blocks holding nodes: for tests.
    static std::size_t blocksInUse();
};

} // namespace montala::sim
