#include "sim/project/NodeHeap.h"

#include <atomic>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <map>
#include <memory>
#include <new>

namespace montala::sim {

namespace {

constexpr std::size_t blockSize = 16 * 1024;
// Blocks are taken from the general heap a megabyte at a time, and a
// megabyte whose blocks are all empty again goes back to it, so that memory
// a project or a run let go of serves whatever comes next.
constexpr std::size_t blocksPerChunk = 64;
constexpr std::size_t chunkSize = blockSize * blocksPerChunk;
constexpr std::uint64_t allBlocks = ~std::uint64_t{0};
// Chunks kept when all their blocks are empty, against taking and giving
// back the same megabyte over and over.
constexpr std::size_t idleLimit = 2;
// Node classes need no more than pointer alignment; a finer grain than the
// general heap's 16 bytes is what lets an event take 104 bytes, not 112.
constexpr std::size_t grain = alignof(void*);
constexpr std::size_t sizeClasses = NodeHeap::largest / grain + 1;

struct Chunk {
    Chunk() = default;
    Chunk(const Chunk&) = delete;
    Chunk& operator=(const Chunk&) = delete;
    ~Chunk() { std::free(memory); }

    char* memory = nullptr;
    // In the list of chunks with empty blocks.
    Chunk* previous = nullptr;
    Chunk* next = nullptr;
    // A bit for each empty block.
    std::uint64_t empty = allBlocks;
    bool listed = false;
};

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
    std::uint8_t place = 0;
    std::uint8_t sizeClass = 0;
    bool listed = false;
};
constexpr std::uint32_t firstSlot = (sizeof(Block) + grain - 1) / grain * grain;

// A list through its items' own links, and their flag of being in it; the
// first is used first.
template <typename Item>
struct Listed {
    Item* first = nullptr;

    void link(Item* item)
    {
        item->previous = nullptr;
        item->next = first;
        if (first)
            first->previous = item;
        first = item;
        item->listed = true;
    }

    void unlink(Item* item)
    {
        if (item->previous)
            item->previous->next = item->next;
        else
            first = item->next;
        if (item->next)
            item->next->previous = item->previous;
        item->previous = item->next = nullptr;
        item->listed = false;
    }
};

// One place's blocks of one size with room in them.
using Pool = Listed<Block>;

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
    Listed<Chunk> withEmpty;
    // Every chunk by where its memory begins.
    std::map<std::uintptr_t, std::unique_ptr<Chunk>> chunks;
    std::size_t idle = 0;
    std::size_t inUse = 0;
    std::uint8_t lastPlace = 0;

    void* takeBlock()
    {
        Chunk* chunk = withEmpty.first;
        if (!chunk) {
            auto made = std::make_unique<Chunk>();
            made->memory = static_cast<char*>(std::aligned_alloc(blockSize, chunkSize));
            if (!made->memory)
                return nullptr;
            chunk = made.get();
            chunks.emplace(reinterpret_cast<std::uintptr_t>(chunk->memory), std::move(made));
            withEmpty.link(chunk);
        } else if (chunk->empty == allBlocks) {
            --idle;
        }
        const int index = std::countr_zero(chunk->empty);
        chunk->empty &= ~(std::uint64_t{1} << index);
        if (chunk->empty == 0)
            withEmpty.unlink(chunk);
        return chunk->memory + static_cast<std::size_t>(index) * blockSize;
    }

    void putBack(Block* block) noexcept
    {
        const auto address = reinterpret_cast<std::uintptr_t>(block);
        const auto holding = std::prev(chunks.upper_bound(address));
        Chunk* chunk = holding->second.get();
        if (!chunk->listed)
            withEmpty.link(chunk);
        chunk->empty |= std::uint64_t{1} << ((address - holding->first) / blockSize);
        if (chunk->empty != allBlocks)
            return;
        if (idle < idleLimit) {
            ++idle;
            return;
        }
        withEmpty.unlink(chunk);
        chunks.erase(holding);
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
    Block* block = pool.first;
    if (!block) {
        void* room = h.takeBlock();
        if (!room)
            throw std::bad_alloc();
        block = new (room) Block;
        block->untouched = firstSlot;
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
        h.putBack(block);
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
