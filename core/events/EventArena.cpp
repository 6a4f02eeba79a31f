#include "core/events/EventArena.h"

#include <new>

namespace montala::core {

namespace {

// An event with its count and allocator takes a few words more than the
// event alone.
constexpr size_t slotBytes = sizeof(EventBase) + 64;

} // namespace

EventArena::EventArena(size_t eventsPerBlock) : blockBytes(slotBytes * (eventsPerBlock > 0 ? eventsPerBlock : 1)) {}

EventArena::~EventArena()
{
    if (block)
        block->release();
}

EventPtr EventArena::makeEvent()
{
    if (!block || !block->hasRoom(slotBytes)) {
        Block* fresh = Block::create(blockBytes);
        if (block)
            block->release();
        block = fresh;
    }
    return std::allocate_shared<EventBase>(Allocator<EventBase>(block));
}

EventArena::Block* EventArena::Block::create(size_t bytes)
{
    void* memory = ::operator new(sizeof(Block) + bytes);
    return new (memory) Block(bytes);
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
        this->~Block();
        ::operator delete(static_cast<void*>(this));
    }
}

} // namespace montala::core
