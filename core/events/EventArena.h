#pragma once

#include "core/events/EventBase.h"

#include <atomic>
#include <cstddef>
#include <memory>

namespace montala::core {

// Makes many events at once, as reading a file or generating a list does,
// in shared blocks of memory instead of a heap block each. An event made
// here is an ordinary shared event: it has its own count, dies with its last
// holder and may move to any list. Only its memory waits for the rest of its
// block, which is freed when the last of the block's events has gone.
class EventArena {
public:
    explicit EventArena(size_t eventsPerBlock = 256);
    ~EventArena();
    EventArena(const EventArena&) = delete;
    EventArena& operator=(const EventArena&) = delete;

    // A new plain event, as std::make_shared<EventBase>(arguments...)
    // makes it.
    template <typename... Arguments>
    EventPtr makeEvent(const Arguments&... arguments)
    {
        return std::allocate_shared<EventBase>(Allocator<EventBase>(blockWithRoom()), arguments...);
    }
    // Makes the next block for about this many events: a file's size, or
    // the list an algorithm goes through, tells how many will come.
    void expect(size_t events);

private:
    class Block;
    // The block to take the next event from.
    Block* blockWithRoom();

    // Aligned for whatever the events hold; the events follow the header.
    class alignas(alignof(std::max_align_t)) Block {
    public:
        // At least bytes; a block of megabytes is laid on huge pages where
        // the system has them.
        static Block* create(size_t bytes);
        // std::bad_alloc when the rest of the block is too small: the arena
        // makes sure that it is not.
        void* take(size_t bytes, size_t alignment);
        bool hasRoom(size_t bytes) const { return used + bytes <= size; }
        // One holder for each event taken, and one for the arena while it
        // takes from the block; the last to let go frees it.
        void release();

    private:
        Block(size_t size, size_t alignment) : size(size), alignment(alignment) {}
        char* storage() { return reinterpret_cast<char*>(this + 1); }

        std::atomic<size_t> holders{1};
        size_t used = 0;
        size_t size;
        size_t alignment; // of the memory, when it is not the usual
    };

    // What std::allocate_shared uses for an event and its count: a place
    // in the block.
    template <typename T>
    struct Allocator {
        using value_type = T;

        explicit Allocator(Block* block) : block(block) {}
        template <typename U>
        Allocator(const Allocator<U>& other) : block(other.block)
        {
        }

        T* allocate(size_t count) { return static_cast<T*>(block->take(sizeof(T) * count, alignof(T))); }
        void deallocate(T*, size_t) { block->release(); }

        template <typename U>
        bool operator==(const Allocator<U>& other) const
        {
            return block == other.block;
        }

        Block* block;
    };

    Block* block = nullptr;
    size_t blockBytes;
    // For the next block only, when not 0.
    size_t expectedBytes = 0;
};

} // namespace montala::core
