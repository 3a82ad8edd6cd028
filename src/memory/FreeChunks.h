// FreeChunks.h - the free chunks of one VarnPool block: taking a chunk from them and giving
// one back, the cheap way for their number.
//
// The block's free list (descending addresses, linked through the chunk headers) is the
// record, kept exactly as the pool's rules describe it. While it is short, the operations
// walk it. Once it holds more than kIndexFrom chunks, a FreeChunkIndex is built from it and
// finds every chunk instead; the index is dropped again when the list falls below
// kIndexUntil chunks. Either way the list and the result are the same: where allocations
// land does not depend on the mode.
//
// Runs under the pool's lock; takes none itself.
#pragma once

#include "fileio/memory/Pool.h"
#include "memory/BlockTable.h"
#include "memory/FreeChunkIndex.h"

namespace fileio::detail {

class FreeChunks {
public:
    /// A list longer than this gets an index.
    static constexpr unsigned kIndexFrom = 16;
    /// An indexed list shorter than this loses its index.
    static constexpr unsigned kIndexUntil = 4;
    static_assert(kIndexUntil < kIndexFrom, "building and dropping need a gap between them");

    /// The free chunks of the block of a table entry.
    explicit FreeChunks(BlockTable::Entry& entry) noexcept : m_entry(entry) {}

    /// What Take took: the chunk, now `size` bytes and off the list, and the size the free
    /// chunk had before.
    struct Taken {
        MemChunk* chunk;
        unsigned long long freeSize;
    };

    /// Takes the low `size` bytes of the free chunk at the highest address that holds them
    /// (first fit in list order). The rest stays on the list in that chunk's place when it
    /// has at least minimumRemainder bytes, else it is left unrecorded inside the block.
    /// The taken chunk's header is not touched beyond that. REQUIRES: such a chunk exists.
    Taken Take(unsigned long long size, unsigned long long minimumRemainder);

    /// Puts an allocated chunk of `size` bytes back on the list, merged with the free chunks
    /// it touches on either side (the headers merged away are zeroed); returns the free chunk that
    /// now holds it.
    /// REQUIRES: the chunk is allocated (IsFree is false) and lies in this block.
    MemChunk* Give(MemChunk* chunk, unsigned long long size);

    /// True when a free chunk begins at `chunk`.
    [[nodiscard]] bool IsFree(const MemChunk* chunk) const noexcept;

    /// The largest size on the list; 0 when it is empty.
    [[nodiscard]] unsigned long long Largest() const noexcept;

    /// The link that points at the chunk at `address` when it is on the list, else at the
    /// first chunk below it: the link word of the nearest free chunk above `address`, or the
    /// list's head. For the debug checks of the list.
    [[nodiscard]] MemChunk*& LinkTo(const void* address) const noexcept;
    /// The free chunk at the highest address below `address`, or null.
    [[nodiscard]] MemChunk* Below(const void* address) const noexcept;

private:
    using Slot = FreeChunkIndex::Slot;

    [[nodiscard]] FreeChunkIndex* Index() const noexcept { return m_entry.index; }
    [[nodiscard]] MemChunk*& Head() const noexcept { return m_entry.header->freeList; }
    // The link word of the chunk at `slot`, or the list's head for kNone.
    [[nodiscard]] MemChunk*& LinkAfter(Slot slot) const noexcept;

    Taken TakeIndexed(unsigned long long size, unsigned long long minimumRemainder);
    Taken TakeWalking(unsigned long long size, unsigned long long minimumRemainder);
    MemChunk* GiveIndexed(MemChunk* chunk, unsigned long long size);
    MemChunk* GiveWalking(MemChunk* chunk, unsigned long long size);

    // The count of chunks on the list changed by `change`; builds or drops the index.
    void Counted(int change);

    BlockTable::Entry& m_entry;
};

} // namespace fileio::detail
