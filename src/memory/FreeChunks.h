// FreeChunks.h - the free chunks of one VarnPool block, searched the cheap way for their
// length.
//
// The block's free list (descending addresses, linked through the chunk headers) is the
// record. While it is short, searches walk it, as the pool's rules describe them: a walk
// of a few chunks costs less than keeping an index. Once it holds more than kIndexFrom
// chunks, a FreeChunkIndex is built from it and answers every search instead; the index is
// dropped again when the list falls below kIndexUntil chunks. Either way every search
// gives the same answer: where allocations land does not depend on the mode.
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

    // ---- searches ---------------------------------------------------------------------------
    // With an index, each search is one call to it; otherwise it walks the list.

    /// The chunk at the highest address whose size is at least `size`, or null.
    [[nodiscard]] MemChunk* HighestFit(unsigned long long size) const noexcept {
        return Index() != nullptr ? Index()->HighestFit(size) : WalkToFit(size);
    }
    /// The chunk at the highest address below `address`, or null.
    [[nodiscard]] MemChunk* Below(const void* address) const noexcept {
        return Index() != nullptr ? Index()->Below(address) : WalkBelow(address);
    }
    /// The chunk at the lowest address above `address`, or null.
    [[nodiscard]] MemChunk* Above(const void* address) const noexcept {
        return Index() != nullptr ? Index()->Above(address) : WalkAbove(address);
    }
    /// True when a free chunk begins at `address`.
    [[nodiscard]] bool BeginsAt(const void* address) const noexcept {
        return Index() != nullptr ? Index()->BeginsAt(address)
                                  : WalkBelow(address, true) == address;
    }
    /// True when `lower`, the free chunk below `address` (or null), ends exactly there.
    [[nodiscard]] bool Touches(const MemChunk* lower, const void* address) const noexcept {
        if (Index() != nullptr)
            return Index()->EndsAt(address);
        return lower != nullptr && reinterpret_cast<const char*>(lower) + lower->size == address;
    }
    /// The largest size on the list; 0 when it is empty.
    [[nodiscard]] unsigned long long Largest() const noexcept {
        return Index() != nullptr ? Index()->Largest() : WalkToLargest();
    }
    /// The link that points at the chunk at `address` when it is on the list, else at the
    /// first chunk below it: the link word of the nearest free chunk above `address`, or
    /// the list's head.
    [[nodiscard]] MemChunk*& LinkTo(const void* address) const noexcept {
        MemChunk* above = Above(address);
        return above != nullptr ? above->next : m_entry.header->freeList;
    }

    // ---- the list changed -------------------------------------------------------------------

    /// A chunk was linked into the list (its header complete).
    void Inserted(const MemChunk* chunk);
    /// A chunk is about to leave the list; its size word is still its own.
    void Erased(const MemChunk* chunk) noexcept;
    /// The chunk at `before`, of oldSize bytes, became the chunk at `after` (its header
    /// complete), which took its place on the list.
    void Reshaped(const MemChunk* before, unsigned long long oldSize,
                  const MemChunk* after) noexcept {
        if (Index() != nullptr)
            Index()->Reshape(before, oldSize, after);
    }

private:
    [[nodiscard]] FreeChunkIndex* Index() const noexcept { return m_entry.index; }
    [[nodiscard]] MemChunk* Head() const noexcept { return m_entry.header->freeList; }
    // The walks of the list.
    [[nodiscard]] MemChunk* WalkToFit(unsigned long long size) const noexcept;
    // The first chunk below `address`, or at it too when `orAt`.
    [[nodiscard]] MemChunk* WalkBelow(const void* address, bool orAt = false) const noexcept;
    [[nodiscard]] MemChunk* WalkAbove(const void* address) const noexcept;
    [[nodiscard]] unsigned long long WalkToLargest() const noexcept;

    BlockTable::Entry& m_entry;
};

} // namespace fileio::detail
