// Pool.h - the block pool allocator: counted system allocation and the three pool classes
// that every named pool of the library is built from.
//
// PlatformAlloc / PlatformFree
//   Every byte the pools take from the system goes through PlatformAlloc. Each allocation
//   carries an 8-byte header word holding its accounted size (the caller's size plus the
//   8 header bytes); the process-wide counter read by TotalRAM() (NamedPools.h) is the sum
//   of the header words of all live allocations. Memory is zero-filled. Exhaustion is never
//   reported: the process ends.
//
//   Below the figures, the last few emptied VarnPool blocks (at most 4 MiB of system memory,
//   four standard blocks) are kept, cleared, for the next block of the same size, so that a
//   pool whose only block comes and goes does not go to the system each time. TotalRAM and
//   the pool totals never count them; FreeAllPools (NamedPools.h) gives them back.
//
// VarnPool
//   A thread-safe pool that carves variable-sized, zero-filled allocations out of blocks of
//   131,064 bytes (a request of 131,048 bytes or more gets a block of its own). Every
//   allocation sits behind a 16-byte chunk header and occupies a multiple of 8 bytes, so
//   VarnAlloc(1) takes 24 bytes. Free chunks are coalesced with their neighbours and a
//   block goes back to the system the moment its last allocation is freed.
//
//   Placement is deterministic: the blocks are searched newest first; a block whose largest
//   free chunk is too small is skipped; inside a block the free chunk at the highest address
//   that is large enough is taken, and the allocation occupies its low end. A remainder of
//   17 bytes or more stays free; a remainder of 8 or 16 bytes is left unrecorded until the
//   block is released.
//
// SimplePool
//   A bump allocator over 2 MiB chunks without any per-allocation release: FreePool() drops
//   everything at once. Sizes are not rounded, so the caller's sizes decide alignment.
//
// OGLPool
//   A holder of one zero-filled buffer.
//
// Thread safety: VarnAlloc, VarnFree and FreePool of one VarnPool may be called from any
// number of threads at once; GetTotal, IsEmpty and IsNotEmpty may be called at any time and
// return a snapshot. SimplePool and OGLPool are not synchronised: one thread at a time.
// PlatformAlloc and PlatformFree may be called from any thread.
#pragma once

#include "fileio/Export.h"

#include <atomic>

/// Returns n zero-filled bytes behind an 8-byte header word that holds n + 8, and adds
/// n + 8 to the process-wide counter (TotalRAM). Never returns null: when the system cannot
/// supply the memory the process ends. The address is aligned to 8 bytes.
/// Example: PlatformAlloc(100) raises TotalRAM() by 108.
FILEIO_API void* PlatformAlloc(unsigned long long n);

/// Releases an allocation of PlatformAlloc and subtracts its header word from the
/// process-wide counter. Null is ignored.
/// REQUIRES: p is null or came from PlatformAlloc and was not released yet.
FILEIO_API void PlatformFree(void* p);

/// The header in front of every allocation and every free chunk inside a VarnPool block.
struct MemChunk {
    /// The chunk's size in bytes, this header included; a multiple of 8.
    unsigned long long size;
    /// For a free chunk, the next free chunk of the block (at a lower address) or null; for
    /// an allocated chunk, null.
    MemChunk* next;
};

/// The descriptor of one VarnPool block. Descriptors come 100 at a time in header arrays.
struct MemHeader {
    /// The next descriptor in the pool's block list, or in its spare list.
    MemHeader* next;
    /// The block's first free chunk; free chunks are kept in descending address order.
    MemChunk* freeList;
    /// Bytes of the block not handed out, the unrecorded split remainders included.
    unsigned long long freeBytes;
    /// Usable bytes of the block.
    unsigned long long blockSize;
    /// The size of the largest chunk on the free list; 0 when the list is empty.
    unsigned long long largestFree;
    /// The PlatformAlloc allocation holding the block.
    void* storage;
    /// The first address of the block (equal to storage).
    char* start;
    /// One past the last usable byte: start + blockSize.
    char* end;
};

namespace fileio::detail {
class BlockTable;
} // namespace fileio::detail

/// A thread-safe pool of variable-sized, zero-filled allocations (see the top of this file).
/// Not copyable. A pool of static duration may be used before main() and after it.
class FILEIO_API VarnPool {
public:
    /// Bytes of a standard block: 128 KiB less the platform header word, so that a standard
    /// block accounts exactly 131,072 bytes in TotalRAM.
    static constexpr unsigned long long kBlockSize = 0x1FFF8;
    /// The chunk header in front of every allocation.
    static constexpr unsigned long long kChunkHeaderSize = sizeof(MemChunk);
    /// A free remainder smaller than this is not recorded when a free chunk is split.
    static constexpr unsigned long long kSplitMinimum = 17;
    /// Block descriptors obtained at once by MakeFreeMemHeaders.
    static constexpr unsigned long long kHeadersPerArray = 100;
    /// Bytes a header array accounts in TotalRAM: size word, link word and the descriptors.
    static constexpr unsigned long long kHeaderArraySize =
        8 + 8 + kHeadersPerArray * sizeof(MemHeader);

    /// An empty pool: no blocks, no descriptors.
    VarnPool() noexcept;
    /// Releases everything the pool holds.
    ~VarnPool();
    VarnPool(const VarnPool&) = delete;
    VarnPool& operator=(const VarnPool&) = delete;

    /// Returns n zero-filled bytes aligned to 8, or null for n = 0. The pool's total rises by
    /// n + 16 rounded up to a multiple of 8. Never fails otherwise: exhaustion ends the process.
    void* VarnAlloc(unsigned long long n);

    /// Gives back an allocation of this pool; null is ignored. The block holding it goes back
    /// to the system when this was its last allocation.
    /// REQUIRES: p is null or came from VarnAlloc of this pool and was not freed yet. A
    /// pointer that lies in no block of the pool ends the process, and so does a second
    /// free of an allocation whose chunk is still free on its own; a second free of a chunk
    /// that has since merged into the free chunk below it is ignored.
    void VarnFree(void* p);

    /// Releases every block and every descriptor; all allocations become invalid. The pool is
    /// then as newly constructed and may be used again.
    void FreePool();

    /// The sum of the chunk sizes (headers included) of all live allocations.
    [[nodiscard]] unsigned long long GetTotal() const noexcept {
        return m_total.load(std::memory_order_relaxed);
    }
    /// True when the pool holds no block.
    [[nodiscard]] bool IsEmpty() const noexcept {
        return m_blocks.load(std::memory_order_relaxed) == nullptr;
    }
    [[nodiscard]] bool IsNotEmpty() const noexcept { return !IsEmpty(); }

protected:
    // The block and descriptor management below runs only with the pool's lock held.

    /// Puts a new block in front of the block list, big enough for a chunk of `size` bytes:
    /// kBlockSize for smaller sizes, else exactly `size` (a multiple of 8). The whole block
    /// is one free chunk.
    MemHeader* AllocateBlock(unsigned long long size);
    /// Threads a new header array of kHeadersPerArray descriptors onto the spare list.
    /// REQUIRES: the spare list is empty.
    void MakeFreeMemHeaders();
    /// Pops a spare descriptor, making a header array first when none is left.
    MemHeader* GetFreeMemHeader();
    /// Pushes a descriptor onto the spare list.
    void PutFreeMemHeader(MemHeader* header);

private:
    class LockGuard;

    void ReleaseBlock(MemHeader* block, MemChunk* lastChunk);

    std::atomic<unsigned long long> m_total;
    std::atomic<MemHeader*> m_blocks;
    MemHeader* m_spareHeaders;
    // Points at the link word of the newest header array; each link word points at the link
    // word of the array made before it.
    void** m_headerArrays;
    // The pool's lock (a platform mutex, built in place; see VarnPool.cpp).
    alignas(8) unsigned char m_lock[64];
    // The blocks by address and by age, with what speeds up the search of their free lists;
    // made with the first block. It mirrors the lists above: where allocations land is
    // decided by the rules above alone.
    fileio::detail::BlockTable* m_table;
};

/// A bump allocator over chunks of 2 MiB (see the top of this file). Not synchronised.
class FILEIO_API SimplePool {
public:
    /// Bytes of a standard chunk, its link word included.
    static constexpr unsigned long long kChunkSize = 0x200000;
    /// Requests above this get a chunk of their own.
    static constexpr unsigned long long kLargeLimit = kChunkSize - 8;

    /// An empty pool.
    SimplePool() noexcept = default;
    /// Releases every chunk.
    ~SimplePool();
    SimplePool(const SimplePool&) = delete;
    SimplePool& operator=(const SimplePool&) = delete;

    /// Returns n zero-filled bytes, or null for n = 0. They follow the previous allocation
    /// directly when the current chunk still has n bytes left; otherwise a new chunk is taken
    /// and what was left of the current one is abandoned. No alignment beyond what the
    /// caller's sizes give. Exhaustion ends the process.
    void* Alloc(unsigned long long n);

    /// Releases every chunk; all allocations become invalid. The pool may be used again.
    void FreePool();

    /// The sum of the sizes of the chunks taken from PlatformAlloc.
    [[nodiscard]] unsigned long long GetTotal() const noexcept { return m_total; }

private:
    unsigned long long m_total = 0;
    unsigned long long m_bytesLeft = 0;
    // The newest chunk; the first word of every chunk points at the chunk taken before it.
    void* m_chunks = nullptr;
    char* m_nextFree = nullptr;
};

/// A holder of one zero-filled buffer. Not synchronised.
class FILEIO_API OGLPool {
public:
    OGLPool() noexcept = default;
    /// Releases the buffer held.
    ~OGLPool();
    OGLPool(const OGLPool&) = delete;
    OGLPool& operator=(const OGLPool&) = delete;

    /// Takes a zero-filled buffer of n bytes rounded up to a multiple of 8 from PlatformAlloc
    /// and holds it; returns null (holding what it held) when that rounds to 0. A buffer
    /// already held is not released: call FreePool() first, or release the old buffer with
    /// PlatformFree yourself. Exhaustion ends the process.
    void* Alloc(unsigned long long n);

    /// Releases the buffer held, if any.
    void FreePool();

private:
    void* m_buffer = nullptr;
};
