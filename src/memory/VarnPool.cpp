// VarnPool.cpp - the thread-safe block pool.
//
// Invariants of every block (kept by VarnAlloc and VarnFree, relied upon by both):
//   - the free list runs in descending address order and no two listed chunks touch: a
//     chunk that ends where a listed chunk begins is merged with it when it is freed;
//   - largestFree is exactly the largest size on the free list (0 when it is empty);
//   - freeBytes is blockSize less the sizes of the allocated chunks, so it also counts the
//     8- and 16-byte remainders that a split leaves unrecorded; the block is wholly free
//     exactly when freeBytes reaches blockSize;
//   - every byte of the block that is neither a chunk header nor handed out is zero.

#include "fileio/memory/Pool.h"
#include "memory/SizeArithmetic.h"
#include "platform/Platform.h"

#include <cassert>
#include <cstdint>
#include <cstring>
#include <new>

namespace {

using fileio::platform::Mutex;

static_assert(sizeof(MemChunk) == 16, "a chunk header is a size word and a link word");
static_assert(sizeof(MemHeader) == 64, "a block descriptor is eight 64-bit words");
static_assert(VarnPool::kHeaderArraySize == 6416, "a header array accounts 6,416 bytes");
static_assert(VarnPool::kBlockSize + 8 == 128 * 1024,
              "a standard block accounts exactly 128 KiB with its platform header");
static_assert(VarnPool::kBlockSize % 8 == 0, "chunk sizes are multiples of 8");

char* Bytes(MemChunk* chunk) noexcept { return reinterpret_cast<char*>(chunk); }
MemChunk* ChunkAt(char* address) noexcept { return reinterpret_cast<MemChunk*>(address); }

// The first byte after a chunk.
char* EndOf(MemChunk* chunk) noexcept { return Bytes(chunk) + chunk->size; }

// The largest size on a block's free list, 0 for an empty list.
unsigned long long LargestOnList(const MemHeader& block) noexcept {
    unsigned long long largest = 0;
    for (const MemChunk* c = block.freeList; c != nullptr; c = c->next)
        largest = c->size > largest ? c->size : largest;
    return largest;
}

} // namespace

// The pool's lock, held for the guard's lifetime.
class VarnPool::LockGuard {
public:
    explicit LockGuard(VarnPool& pool) noexcept : m_mutex(MutexOf(pool)) { m_mutex.Lock(); }
    ~LockGuard() { m_mutex.Unlock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

    static Mutex& MutexOf(VarnPool& pool) noexcept {
        return *std::launder(reinterpret_cast<Mutex*>(pool.m_lock));
    }

private:
    Mutex& m_mutex;
};

VarnPool::VarnPool() noexcept
    : m_total(0), m_blocks(nullptr), m_spareHeaders(nullptr), m_headerArrays(nullptr) {
    static_assert(sizeof(Mutex) <= sizeof(m_lock), "the platform mutex does not fit");
    static_assert(alignof(Mutex) <= 8, "the platform mutex needs more than m_lock's alignment of 8");
    ::new (static_cast<void*>(m_lock)) Mutex;
}

VarnPool::~VarnPool() {
    FreePool();
    LockGuard::MutexOf(*this).~Mutex();
}

void* VarnPool::VarnAlloc(unsigned long long n) {
    if (n == 0)
        return nullptr;
    const unsigned long long size = fileio::detail::RoundUpTo8(fileio::detail::AddSizes(n, kChunkHeaderSize));

    LockGuard lock(*this);
    MemHeader* block = nullptr;
    MemChunk** link = nullptr;
    MemChunk* chunk = size < kBlockSize ? FindFit(size, &block, &link) : nullptr;
    if (chunk != nullptr) {
        TakeFromChunk(block, link, chunk, size, kSplitMinimum);
    } else {
        // A new block's tail stays on the free list whatever its size, even the 8 bytes
        // whose chunk header then reaches into PlatformAlloc's slack behind the block.
        block = AllocateBlock(size);
        chunk = block->freeList;
        TakeFromChunk(block, &block->freeList, chunk, size, 1);
    }

    block->freeBytes -= size;
    chunk->size = size;
    chunk->next = nullptr;
    std::memset(chunk + 1, 0, static_cast<std::size_t>(size - kChunkHeaderSize));
    m_total.fetch_add(size, std::memory_order_relaxed);
    return chunk + 1;
}

// First fit: the newest block whose largest free chunk is big enough, and in it the free
// chunk at the highest address that is. Returns null when no block has room; otherwise
// sets *block and *link (the list link that points at the chunk).
MemChunk* VarnPool::FindFit(unsigned long long size, MemHeader** block, MemChunk*** link) const noexcept {
    for (MemHeader* b = m_blocks.load(std::memory_order_relaxed); b != nullptr; b = b->next) {
        if (b->largestFree < size)
            continue;
        for (MemChunk** l = &b->freeList; *l != nullptr; l = &(*l)->next) {
            if ((*l)->size >= size) {
                *block = b;
                *link = l;
                return *l;
            }
        }
        assert(false && "a block's largest free chunk is not on its free list");
    }
    return nullptr;
}

// Takes the low `size` bytes of the free chunk that *link points at. The rest becomes a
// free chunk in its place if it has at least minimumRemainder bytes; otherwise it stays
// unrecorded inside the block.
void VarnPool::TakeFromChunk(MemHeader* block, MemChunk** link, MemChunk* chunk, unsigned long long size,
                             unsigned long long minimumRemainder) noexcept {
    const unsigned long long taken = chunk->size;
    const unsigned long long remainder = taken - size;
    if (remainder != 0 && remainder >= minimumRemainder) {
        MemChunk* rest = ChunkAt(Bytes(chunk) + size);
        rest->size = remainder;
        rest->next = chunk->next;
        *link = rest;
    } else {
        *link = chunk->next;
    }
    if (taken == block->largestFree)
        block->largestFree = LargestOnList(*block);
}

void VarnPool::VarnFree(void* p) {
    if (p == nullptr)
        return;
    MemChunk* chunk = static_cast<MemChunk*>(p) - 1;

    LockGuard lock(*this);
    // The block is looked up before the chunk header is read, so that a foreign pointer ends
    // the process without reading memory in front of it.
    MemHeader* before = nullptr;
    MemHeader* block = FindBlock(chunk, &before);
    if (block == nullptr)
        fileio::platform::Fatal("FileIO: VarnFree was given a pointer that is in no block of its pool");
    const unsigned long long size = chunk->size;
    if (size == 0)
        return; // the header was cleared when a neighbour absorbed this chunk
    assert(size % 8 == 0 && Bytes(chunk) + size <= block->end && "VarnFree: the chunk header is damaged");
    m_total.fetch_sub(size, std::memory_order_relaxed);

    // The free chunks on either side: lower at or below the chunk, upper above it.
    MemChunk* upper = nullptr;
    MemChunk* lower = block->freeList;
    while (lower != nullptr && lower > chunk) {
        upper = lower;
        lower = lower->next;
    }
    assert(lower != chunk && "VarnFree: the chunk is already free");

    MemChunk* current;
    if (lower != nullptr && EndOf(lower) == Bytes(chunk)) {
        lower->size += size;
        *chunk = MemChunk{};
        current = lower;
    } else {
        chunk->next = lower;
        (upper != nullptr ? upper->next : block->freeList) = chunk;
        current = chunk;
    }
    if (upper != nullptr && EndOf(current) == Bytes(upper)) {
        MemChunk** link = &block->freeList;
        while (*link != upper)
            link = &(*link)->next;
        *link = current;
        current->size += upper->size;
        *upper = MemChunk{};
    }
    if (current->size > block->largestFree)
        block->largestFree = current->size;

    block->freeBytes += size;
    if (block->freeBytes == block->blockSize)
        ReleaseBlock(block, before);
    else
        std::memset(p, 0, static_cast<std::size_t>(size - kChunkHeaderSize));
}

// The block whose bytes hold the chunk's header, and in *before the block ahead of it in
// the list (null for the first). Null when no block holds it.
MemHeader* VarnPool::FindBlock(const MemChunk* chunk, MemHeader** before) const noexcept {
    const auto address = reinterpret_cast<std::uintptr_t>(chunk);
    *before = nullptr;
    for (MemHeader* b = m_blocks.load(std::memory_order_relaxed); b != nullptr; b = b->next) {
        if (address >= reinterpret_cast<std::uintptr_t>(b->start) &&
            address < reinterpret_cast<std::uintptr_t>(b->end))
            return b;
        *before = b;
    }
    return nullptr;
}

// Returns a wholly free block to the system and its descriptor to the spare list.
void VarnPool::ReleaseBlock(MemHeader* block, MemHeader* before) {
    if (before != nullptr)
        before->next = block->next;
    else
        m_blocks.store(block->next, std::memory_order_relaxed);
    PlatformFree(block->storage);
    block->storage = nullptr;
    block->freeList = nullptr;
    PutFreeMemHeader(block);
}

void VarnPool::FreePool() {
    LockGuard lock(*this);
    for (MemHeader* b = m_blocks.load(std::memory_order_relaxed); b != nullptr; b = b->next)
        PlatformFree(b->storage);
    // The descriptors, spare ones included, live in the header arrays released here.
    while (m_headerArrays != nullptr) {
        void** array = m_headerArrays;
        m_headerArrays = static_cast<void**>(*array);
        PlatformFree(array);
    }
    m_total.store(0, std::memory_order_relaxed);
    m_blocks.store(nullptr, std::memory_order_relaxed);
    m_spareHeaders = nullptr;
}

MemHeader* VarnPool::AllocateBlock(unsigned long long size) {
    assert(size % 8 == 0 && "VarnPool::AllocateBlock: sizes are multiples of 8");
    const unsigned long long blockSize = size < kBlockSize ? kBlockSize : size;
    MemHeader* block = GetFreeMemHeader();
    block->next = m_blocks.load(std::memory_order_relaxed);
    m_blocks.store(block, std::memory_order_relaxed);

    block->storage = PlatformAlloc(blockSize);
    block->start = static_cast<char*>(block->storage);
    block->end = block->start + blockSize;
    block->freeList = ChunkAt(block->start);
    block->freeList->size = blockSize; // its link word is zero already
    block->freeBytes = blockSize;
    block->blockSize = blockSize;
    block->largestFree = blockSize;
    return block;
}

void VarnPool::MakeFreeMemHeaders() {
    assert(m_spareHeaders == nullptr && "VarnPool::MakeFreeMemHeaders: spare descriptors are left");
    // PlatformAlloc writes the array's size word; the link word comes first behind it.
    auto* array = static_cast<void**>(PlatformAlloc(kHeaderArraySize - 8));
    *array = m_headerArrays;
    m_headerArrays = array;

    auto* records = reinterpret_cast<MemHeader*>(array + 1);
    for (unsigned long long i = 0; i < kHeadersPerArray; ++i)
        ::new (static_cast<void*>(records + i)) MemHeader{i + 1 < kHeadersPerArray ? records + i + 1 : nullptr,
                                                          nullptr, 0, 0, 0, nullptr, nullptr, nullptr};
    m_spareHeaders = records;
}

MemHeader* VarnPool::GetFreeMemHeader() {
    if (m_spareHeaders == nullptr)
        MakeFreeMemHeaders();
    MemHeader* header = m_spareHeaders;
    m_spareHeaders = header->next;
    return header;
}

void VarnPool::PutFreeMemHeader(MemHeader* header) {
    header->next = m_spareHeaders;
    m_spareHeaders = header;
}
