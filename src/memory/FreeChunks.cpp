// FreeChunks.cpp - taking and giving back chunks of a block, by walking its free list or
// through its index.

#include "memory/FreeChunks.h"

#include <cassert>
#include <functional>

namespace fileio::detail {

namespace {

bool IsAbove(const void* a, const void* b) {
    return std::greater<const void*>()(a, b);
}

char* Bytes(MemChunk* chunk) noexcept {
    return reinterpret_cast<char*>(chunk);
}

MemChunk* ChunkAt(char* address) noexcept {
    return reinterpret_cast<MemChunk*>(address);
}

// Sizes in the index's slots.
unsigned UnitsOf(unsigned long long size) noexcept {
    return static_cast<unsigned>(size / FreeChunkIndex::kSlotBytes);
}

} // namespace

// ---- taking ------------------------------------------------------------------------------------

FreeChunks::Taken FreeChunks::Take(unsigned long long size, unsigned long long minimumRemainder) {
    return Index() != nullptr ? TakeIndexed(size, minimumRemainder)
                              : TakeWalking(size, minimumRemainder);
}

FreeChunks::Taken FreeChunks::TakeWalking(unsigned long long size,
                                          unsigned long long minimumRemainder) {
    MemChunk** link = &Head();
    while ((*link)->size < size) {
        link = &(*link)->next;
        assert(*link != nullptr && "FreeChunks: no free chunk holds the size");
    }
    MemChunk* chunk = *link;
    const unsigned long long taken = chunk->size;
    const unsigned long long remainder = taken - size;
    if (remainder != 0 && remainder >= minimumRemainder) {
        MemChunk* rest = ChunkAt(Bytes(chunk) + size);
        rest->size = remainder;
        rest->next = chunk->next;
        *link = rest;
    } else {
        *link = chunk->next;
        Counted(-1);
    }
    return {chunk, taken};
}

FreeChunks::Taken FreeChunks::TakeIndexed(unsigned long long size,
                                          unsigned long long minimumRemainder) {
    FreeChunkIndex& index = *Index();
    const unsigned units = UnitsOf(size);
    const FreeChunkIndex::Fit fit = index.HighestFit(units);
    assert(fit.slot != FreeChunkIndex::kNone && "FreeChunks: no free chunk holds the size");
    MemChunk* chunk = index.ChunkAt(fit.slot);
    MemChunk*& link = LinkAfter(fit.above);
    const unsigned long long taken = chunk->size;
    const unsigned long long remainder = taken - size;
    if (remainder != 0 && remainder >= minimumRemainder) {
        MemChunk* rest = ChunkAt(Bytes(chunk) + size);
        rest->size = remainder;
        rest->next = chunk->next;
        link = rest;
        index.Reshape(fit.slot, UnitsOf(taken), fit.slot + units, UnitsOf(remainder));
    } else {
        link = chunk->next;
        index.Erase(fit.slot, UnitsOf(taken));
        Counted(-1);
    }
    return {chunk, taken};
}

// ---- giving back -------------------------------------------------------------------------------

MemChunk* FreeChunks::Give(MemChunk* chunk, unsigned long long size) {
    return Index() != nullptr ? GiveIndexed(chunk, size) : GiveWalking(chunk, size);
}

MemChunk* FreeChunks::GiveWalking(MemChunk* chunk, unsigned long long size) {
    // The free chunks on either side: upper is the last one above the chunk, lower the
    // first one below it; upperLink points at upper and link at lower.
    MemChunk** upperLink = nullptr;
    MemChunk** link = &Head();
    while (*link != nullptr && IsAbove(*link, chunk)) {
        upperLink = link;
        link = &(*link)->next;
    }
    MemChunk* const upper = upperLink != nullptr ? *upperLink : nullptr;
    MemChunk* const lower = *link;
    int change = 0;
    MemChunk* current;
    if (lower != nullptr && Bytes(lower) + lower->size == Bytes(chunk)) {
        lower->size += size;
        *chunk = MemChunk{};
        current = lower;
    } else {
        chunk->next = lower;
        *link = chunk;
        current = chunk;
        ++change;
    }
    if (upper != nullptr && Bytes(current) + current->size == Bytes(upper)) {
        *upperLink = current;
        current->size += upper->size;
        *upper = MemChunk{};
        --change;
    }
    Counted(change);
    return current;
}

MemChunk* FreeChunks::GiveIndexed(MemChunk* chunk, unsigned long long size) {
    FreeChunkIndex& index = *Index();
    const Slot slot = index.SlotOf(chunk);
    const unsigned units = UnitsOf(size);
    const Slot upperSlot = slot + units;
    const bool mergesLower = index.EndsAt(slot);
    if (!index.BeginsAt(upperSlot)) {
        const Slot lowerSlot = index.Below(slot);
        if (mergesLower) {
            MemChunk* lower = index.ChunkAt(lowerSlot);
            const unsigned lowerUnits = UnitsOf(lower->size);
            lower->size += size;
            index.Reshape(lowerSlot, lowerUnits, lowerSlot, lowerUnits + units);
            *chunk = MemChunk{};
            return lower;
        }
        chunk->next = lowerSlot != FreeChunkIndex::kNone ? index.ChunkAt(lowerSlot) : nullptr;
        LinkAfter(index.Above(slot)) = chunk;
        index.Insert(slot, units);
        Counted(1);
        return chunk;
    }
    // The upper neighbour touches: its place on the list goes to the merged chunk.
    MemChunk* upper = index.ChunkAt(upperSlot);
    const unsigned long long upperSize = upper->size;
    MemChunk*& upperLink = LinkAfter(index.Above(upperSlot));
    MemChunk* current;
    if (mergesLower) {
        const Slot lowerSlot = index.Below(slot);
        MemChunk* lower = index.ChunkAt(lowerSlot);
        const unsigned lowerUnits = UnitsOf(lower->size);
        upperLink = lower;
        index.Erase(upperSlot, UnitsOf(upperSize));
        lower->size += size + upperSize;
        index.Reshape(lowerSlot, lowerUnits, lowerSlot, UnitsOf(lower->size));
        *chunk = MemChunk{};
        current = lower;
    } else {
        chunk->size = size + upperSize;
        chunk->next = upper->next;
        upperLink = chunk;
        index.Reshape(upperSlot, UnitsOf(upperSize), slot, UnitsOf(chunk->size));
        current = chunk;
    }
    *upper = MemChunk{};
    if (mergesLower)
        Counted(-1);
    return current;
}

// ---- queries -----------------------------------------------------------------------------------

bool FreeChunks::IsFree(const MemChunk* chunk) const noexcept {
    if (Index() != nullptr)
        return Index()->BeginsAt(Index()->SlotOf(chunk));
    const MemChunk* free = Head();
    while (free != nullptr && IsAbove(free, chunk))
        free = free->next;
    return free == chunk;
}

unsigned long long FreeChunks::Largest() const noexcept {
    if (Index() != nullptr)
        return static_cast<unsigned long long>(Index()->Largest()) * FreeChunkIndex::kSlotBytes;
    unsigned long long largest = 0;
    for (const MemChunk* chunk = Head(); chunk != nullptr; chunk = chunk->next)
        largest = chunk->size > largest ? chunk->size : largest;
    return largest;
}

MemChunk*& FreeChunks::LinkAfter(Slot slot) const noexcept {
    return slot != FreeChunkIndex::kNone ? Index()->ChunkAt(slot)->next : Head();
}

MemChunk*& FreeChunks::LinkTo(const void* address) const noexcept {
    if (Index() != nullptr)
        return LinkAfter(Index()->Above(Index()->SlotOf(address)));
    MemChunk** link = &Head();
    while (*link != nullptr && IsAbove(*link, address))
        link = &(*link)->next;
    return *link;
}

MemChunk* FreeChunks::Below(const void* address) const noexcept {
    if (Index() != nullptr) {
        const Slot below = Index()->Below(Index()->SlotOf(address));
        return below != FreeChunkIndex::kNone ? Index()->ChunkAt(below) : nullptr;
    }
    MemChunk* chunk = Head();
    while (chunk != nullptr && !IsAbove(address, chunk))
        chunk = chunk->next;
    return chunk;
}

// ---- the index ---------------------------------------------------------------------------------

void FreeChunks::Counted(int change) {
    m_entry.freeChunks = static_cast<unsigned>(static_cast<int>(m_entry.freeChunks) + change);
    if (m_entry.index != nullptr) {
        if (m_entry.freeChunks < kIndexUntil) {
            FreeChunkIndex::Destroy(m_entry.index);
            m_entry.index = nullptr;
        }
    } else if (m_entry.freeChunks > kIndexFrom) {
        // Only standard blocks ever hold more than one free chunk.
        assert(m_entry.header->blockSize == VarnPool::kBlockSize &&
               "FreeChunks: an index for a large block");
        m_entry.index = FreeChunkIndex::Create(m_entry.header->start);
        for (const MemChunk* chunk = Head(); chunk != nullptr; chunk = chunk->next)
            m_entry.index->Insert(m_entry.index->SlotOf(chunk), UnitsOf(chunk->size));
    }
}

} // namespace fileio::detail
