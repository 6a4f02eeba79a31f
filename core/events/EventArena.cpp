#include "core/events/EventArena.h"

#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace montala::core {

namespace {

// An event with its count and allocator takes a few words more than the
// event alone.
constexpr size_t slotBytes = sizeof(EventBase) + 64;

constexpr size_t hugePageBytes = size_t{2} << 20;

} // namespace

EventArena::EventArena(size_t eventsPerBlock) : blockBytes(slotBytes * (eventsPerBlock > 0 ? eventsPerBlock : 1)) {}

EventArena::~EventArena()
{
    if (block)
        block->release();
}

EventArena::Block* EventArena::blockWithRoom()
{
    if (!block || !block->hasRoom(slotBytes)) {
        Block* fresh = Block::create(expectedBytes != 0 ? expectedBytes : blockBytes);
        expectedBytes = 0;
        if (block)
            block->release();
        block = fresh;
    }
    return block;
}

void EventArena::expect(size_t events)
{
    expectedBytes = events > 0 ? slotBytes * events : 0;
}

EventArena::Block* EventArena::Block::create(size_t bytes)
{
    if (sizeof(Block) + bytes < hugePageBytes) {
        void* memory = ::operator new(sizeof(Block) + bytes);
        return new (memory) Block(bytes, 0);
    }
    // The events of a long EDL take megabytes, and each 4 KB page of them
    // costs a fault when first written, most of the time of reading them.
    // On huge pages one fault makes 2 MB.
    const size_t total = (sizeof(Block) + bytes + hugePageBytes - 1) / hugePageBytes * hugePageBytes;
    void* memory = ::operator new(total, std::align_val_t(hugePageBytes));
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    ::madvise(memory, total, MADV_HUGEPAGE);
#endif
    return new (memory) Block(total - sizeof(Block), hugePageBytes);
}

void* EventArena::Block::take(size_t bytes, size_t alignment)
{
    const size_t start = (used + alignment - 1) / alignment * alignment;
    if (start + bytes > size)
        throw std::bad_alloc();
    used = start + bytes;
    holders.fetch_add(1, std::memory_order_relaxed);
    return storage() + start;
}

void EventArena::Block::release()
{
    if (holders.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        const size_t aligned = alignment;
        void* memory = this;
        this->~Block();
        if (aligned != 0)
            ::operator delete(memory, std::align_val_t(aligned));
        else
            ::operator delete(memory);
    }
}

} // namespace montala::core
