#include "sim/project/NodeHeap.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace montala::sim {

namespace {

constexpr std::size_t blockSize = 16 * 1024;
// Blocks are taken from the system a megabyte at a time.
constexpr std::size_t blocksPerChunk = 64;
// Node classes need no more than pointer alignment; a finer grain than the
// general heap's 16 bytes is what lets an event take 104 bytes, not 112.
constexpr std::size_t grain = alignof(void*);
constexpr std::size_t sizeClasses = NodeHeap::largest / grain + 1;

// The head of a block; its slots follow.
struct Block {
    // In its pool's list of blocks with room.
    Block* previous = nullptr;
    Block* next = nullptr;
    // Slots let go of, each holding the next.
    void* freeSlots = nullptr;
    std::uint32_t live = 0;
    // Where the slots never handed out begin.
    std::uint32_t untouched = 0;
    std::uint32_t slotSize = 0;
    std::uint8_t place = 0;
    std::uint8_t sizeClass = 0;
    bool listed = false;
};
constexpr std::uint32_t firstSlot = (sizeof(Block) + grain - 1) / grain * grain;

// One place's blocks of one size with room in them; the first is used first.
struct Pool {
    Block* withRoom = nullptr;

    void link(Block* block)
    {
        block->previous = nullptr;
        block->next = withRoom;
        if (withRoom)
            withRoom->previous = block;
        withRoom = block;
        block->listed = true;
    }

    void unlink(Block* block)
    {
        if (block->previous)
            block->previous->next = block->next;
        else
            withRoom = block->next;
        if (block->next)
            block->next->previous = block->previous;
        block->previous = block->next = nullptr;
        block->listed = false;
    }
};

class SpinLock {
public:
    void lock()
    {
        while (flag.test_and_set(std::memory_order_acquire)) {
        }
    }
    void unlock() { flag.clear(std::memory_order_release); }

private:
    std::atomic_flag flag = ATOMIC_FLAG_INIT;
};

struct Heap {
    SpinLock lock;
    Pool pools[NodeHeap::places][sizeClasses];
    // Empty blocks, linked by `next`.
    Block* stock = nullptr;
    // The rest of the latest chunk, never used yet.
    char* fresh = nullptr;
    std::size_t freshBlocks = 0;
    std::size_t inUse = 0;
    std::uint8_t lastPlace = 0;

    Block* takeBlock()
    {
        if (stock) {
            Block* block = stock;
            stock = block->next;
            return block;
        }
        if (freshBlocks == 0) {
            fresh = static_cast<char*>(std::aligned_alloc(blockSize, blockSize * blocksPerChunk));
            if (!fresh)
                return nullptr;
            freshBlocks = blocksPerChunk;
        }
        auto* block = reinterpret_cast<Block*>(fresh);
        fresh += blockSize;
        --freshBlocks;
        return block;
    }
};

Heap& heap()
{
    // Never destroyed: nodes may outlive every other static.
    static Heap* const instance = new Heap;
    return *instance;
}

thread_local std::uint8_t currentPlace = 0;

struct Locked {
    explicit Locked(Heap& h) : held(h) { held.lock.lock(); }
    ~Locked() { held.lock.unlock(); }
    Heap& held;
};

} // namespace

void* NodeHeap::allocate(std::size_t size)
{
    if (size > largest || size == 0)
        return ::operator new(size);
    const std::size_t sizeClass = (size + grain - 1) / grain;
    const auto slotSize = static_cast<std::uint32_t>(sizeClass * grain);
    Heap& h = heap();
    Locked locked(h);
    Pool& pool = h.pools[currentPlace][sizeClass];
    Block* block = pool.withRoom;
    if (!block) {
        void* room = h.takeBlock();
        if (!room)
            throw std::bad_alloc();
        block = new (room) Block;
        block->untouched = firstSlot;
        block->slotSize = slotSize;
        block->place = currentPlace;
        block->sizeClass = static_cast<std::uint8_t>(sizeClass);
        ++h.inUse;
        pool.link(block);
    }
    void* slot = nullptr;
    if (block->freeSlots) {
        slot = block->freeSlots;
        block->freeSlots = *static_cast<void**>(slot);
    } else {
        slot = reinterpret_cast<char*>(block) + block->untouched;
        block->untouched += slotSize;
    }
    ++block->live;
    if (!block->freeSlots && block->untouched + slotSize > blockSize)
        pool.unlink(block);
    return slot;
}

void NodeHeap::release(void* memory, std::size_t size) noexcept
{
    if (!memory)
        return;
    if (size > largest || size == 0) {
        ::operator delete(memory);
        return;
    }
    auto* block = reinterpret_cast<Block*>(reinterpret_cast<std::uintptr_t>(memory) & ~(blockSize - 1));
    Heap& h = heap();
    Locked locked(h);
    Pool& pool = h.pools[block->place][block->sizeClass];
    *static_cast<void**>(memory) = block->freeSlots;
    block->freeSlots = memory;
    if (--block->live == 0) {
        if (block->listed)
            pool.unlink(block);
        block->next = h.stock;
        h.stock = block;
        --h.inUse;
    } else if (!block->listed) {
        pool.link(block);
    }
}

std::uint8_t NodeHeap::newPlace()
{
    Heap& h = heap();
    Locked locked(h);
    h.lastPlace = static_cast<std::uint8_t>(h.lastPlace % (places - 1) + 1);
    return h.lastPlace;
}

std::size_t NodeHeap::blocksInUse()
{
    Heap& h = heap();
    Locked locked(h);
    return h.inUse;
}

NodeHeap::Placing::Placing(std::uint8_t place) : previous(currentPlace)
{
    currentPlace = place;
}

NodeHeap::Placing::~Placing()
{
    currentPlace = previous;
}

} // namespace montala::sim
