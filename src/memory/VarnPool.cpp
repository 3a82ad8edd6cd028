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
//
// Finding chunks: the pool's block table (BlockTable.h) finds the block of a freed pointer
// and the newest block with room, and FreeChunks (FreeChunks.h) takes the first fit from a
// block and gives a freed chunk back, merged with its free neighbours, walking the block's
// free list while it is short and through an index once it is long. The list is kept
// exactly as described either way, and every search answers what a walk of the list would.

#include "fileio/memory/Pool.h"
#include "memory/BlockTable.h"
#include "memory/FreeChunks.h"
#include "memory/RetainedRegions.h"
#include "memory/SizeArithmetic.h"
#include "platform/Platform.h"

#include <cassert>
#include <cstdint>
#include <cstring>
#include <new>

namespace {

using fileio::detail::BlockTable;
using fileio::detail::FreeChunks;
using fileio::platform::Mutex;

static_assert(sizeof(MemChunk) == 16, "a chunk header is a size word and a link word");
static_assert(sizeof(MemHeader) == 64, "a block descriptor is eight 64-bit words");
static_assert(VarnPool::kHeaderArraySize == 6416, "a header array accounts 6,416 bytes");
static_assert(VarnPool::kBlockSize + 8 == 128 * 1024,
              "a standard block accounts exactly 128 KiB with its platform header");
static_assert(VarnPool::kBlockSize % 8 == 0, "chunk sizes are multiples of 8");

MemChunk* ChunkAt(char* address) noexcept {
    return reinterpret_cast<MemChunk*>(address);
}

#ifndef NDEBUG
char* Bytes(MemChunk* chunk) noexcept {
    return reinterpret_cast<char*>(chunk);
}

// Checks in debug builds, after each change of a block's free list at `address`, that the
// list's links there agree with the searches: the link word in front of that place points
// at the free chunk there, or at the first one below, and that chunk links on to the next
// one below. Every change is checked where it happens, so the whole list stays in order.
// Also checks that largestFree is the largest free size.
void CheckFreeListAt(const MemHeader* block, const FreeChunks& free, const void* address) {
    MemChunk* const* link = &free.LinkTo(address);
    const MemChunk* below = free.Below(address);
    if (free.IsFree(static_cast<const MemChunk*>(address))) {
        assert(*link == address && static_cast<const MemChunk*>(address)->next == below &&
               "VarnPool: a free chunk is not linked where it lies");
    } else {
        assert(*link == below && "VarnPool: the free list skips or misorders a chunk");
    }
    assert(block->largestFree == free.Largest() &&
           "VarnPool: largestFree is not the largest free chunk");
}
#endif

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
    : m_total(0), m_blocks(nullptr), m_spareHeaders(nullptr), m_headerArrays(nullptr),
      m_table(nullptr) {
    static_assert(sizeof(Mutex) <= sizeof(m_lock), "the platform mutex does not fit");
    static_assert(alignof(Mutex) <= 8,
                  "the platform mutex needs more than m_lock's alignment of 8");
    ::new (static_cast<void*>(m_lock)) Mutex;
}

VarnPool::~VarnPool() {
    FreePool();
    if (m_table != nullptr) {
        m_table->~BlockTable();
        fileio::platform::ReleaseSystemMemory(m_table);
    }
    LockGuard::MutexOf(*this).~Mutex();
}

void* VarnPool::VarnAlloc(unsigned long long n) {
    if (n == 0)
        return nullptr;
    const unsigned long long size =
        fileio::detail::RoundUpTo8(fileio::detail::AddSizes(n, kChunkHeaderSize));

    MemChunk* chunk;
    {
        LockGuard lock(*this);
        // First fit: the newest block whose largest free chunk is big enough, and in it the
        // free chunk at the highest address that is.
        BlockTable::Entry* entry =
            size < kBlockSize && m_table != nullptr ? m_table->NewestWithRoom(size) : nullptr;
        // A new block's tail stays on the free list whatever its size, even the 8 bytes whose
        // chunk header then reaches into PlatformAlloc's slack behind the block.
        unsigned long long minimumRemainder = kSplitMinimum;
        if (entry == nullptr) {
            const MemHeader* added = AllocateBlock(size); // makes the table with the first block
            entry = m_table->Find(added->start);
            minimumRemainder = 1;
        }
        MemHeader* block = entry->header;
        FreeChunks free(*entry);
        const FreeChunks::Taken taken = free.Take(size, minimumRemainder);
        if (taken.freeSize == block->largestFree)
            m_table->SetLargest(*entry, free.Largest());

        chunk = taken.chunk;
        block->freeBytes -= size;
        chunk->size = size;
        chunk->next = nullptr;
#ifndef NDEBUG
        CheckFreeListAt(block, free, Bytes(chunk) + size);
#endif
        // Only the lock holder writes the total; a plain store keeps readers' snapshots whole.
        m_total.store(m_total.load(std::memory_order_relaxed) + size, std::memory_order_relaxed);
    }
    // The chunk is the caller's now, out of every other thread's reach: it is cleared outside
    // the lock, so that other threads wait only for the bookkeeping.
    std::memset(chunk + 1, 0, static_cast<std::size_t>(size - kChunkHeaderSize));
    return chunk + 1;
}

void VarnPool::VarnFree(void* p) {
    if (p == nullptr)
        return;
    MemChunk* chunk = static_cast<MemChunk*>(p) - 1;

    LockGuard lock(*this);
    // The block is looked up before the chunk header is read, so that a foreign pointer ends
    // the process without reading memory in front of it.
    BlockTable::Entry* entry = m_table != nullptr ? m_table->Find(chunk) : nullptr;
    if (entry == nullptr)
        fileio::platform::Fatal(
            "FileIO: VarnFree was given a pointer that is in no block of its pool");
    MemHeader* block = entry->header;
    const unsigned long long size = chunk->size;
    if (size == 0)
        return; // the header was cleared when a neighbour absorbed this chunk
    assert(size % 8 == 0 && Bytes(chunk) + size <= block->end &&
           "VarnFree: the chunk header is damaged");
    FreeChunks free(*entry);
    if (free.IsFree(chunk))
        fileio::platform::Fatal("FileIO: VarnFree was given a chunk that is free already");
    m_total.store(m_total.load(std::memory_order_relaxed) - size, std::memory_order_relaxed);

    block->freeBytes += size;
    if (block->freeBytes == block->blockSize) {
        // Wholly free: the merging would only tidy a block that goes away.
        ReleaseBlock(block, chunk);
        return;
    }
    MemChunk* current = free.Give(chunk, size);
    if (current->size > block->largestFree)
        m_table->SetLargest(*entry, current->size);
#ifndef NDEBUG
    CheckFreeListAt(block, free, current);
#endif
    std::memset(p, 0, static_cast<std::size_t>(size - kChunkHeaderSize));
}

// Returns a wholly free block to the system and its descriptor to the spare list. A
// standard block is first made all zero again, its last chunk and the headers of its free
// chunks cleared, so that its region may be kept for the next block (RetainedRegions.h).
void VarnPool::ReleaseBlock(MemHeader* block, MemChunk* lastChunk) {
    MemHeader* head = m_blocks.load(std::memory_order_relaxed);
    if (head == block) {
        m_blocks.store(block->next, std::memory_order_relaxed);
    } else {
        MemHeader* before = head;
        while (before->next != block)
            before = before->next;
        before->next = block->next;
    }
    m_table->Remove(*m_table->Find(block->start));
    if (block->blockSize == kBlockSize) {
        std::memset(lastChunk, 0, static_cast<std::size_t>(lastChunk->size));
        for (MemChunk* free = block->freeList; free != nullptr;) {
            MemChunk* next = free->next;
            *free = MemChunk{};
            free = next;
        }
        fileio::detail::PlatformFreeZeroed(block->storage);
    } else {
        PlatformFree(block->storage);
    }
    block->storage = nullptr;
    block->freeList = nullptr;
    PutFreeMemHeader(block);
}

void VarnPool::FreePool() {
    LockGuard lock(*this);
    for (MemHeader* b = m_blocks.load(std::memory_order_relaxed); b != nullptr; b = b->next)
        PlatformFree(b->storage);
    if (m_table != nullptr)
        m_table->Clear();
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

    if (m_table == nullptr)
        m_table = ::new (fileio::platform::AllocateSystemMemory(sizeof(BlockTable))) BlockTable;
    m_table->Add(block).freeChunks = 1; // the whole block
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
        ::new (static_cast<void*>(records + i))
            MemHeader{i + 1 < kHeadersPerArray ? records + i + 1 : nullptr,
                      nullptr,
                      0,
                      0,
                      0,
                      nullptr,
                      nullptr,
                      nullptr};
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
