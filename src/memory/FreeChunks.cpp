// FreeChunks.cpp - searches of a block's free list, by walking or through its index.

#include "memory/FreeChunks.h"

#include <cassert>
#include <functional>

namespace fileio::detail {

namespace {

bool IsAbove(const void* a, const void* b) {
    return std::greater<const void*>()(a, b);
}

} // namespace

MemChunk* FreeChunks::WalkToFit(unsigned long long size) const noexcept {
    MemChunk* chunk = Head();
    while (chunk != nullptr && chunk->size < size)
        chunk = chunk->next;
    return chunk;
}

MemChunk* FreeChunks::WalkBelow(const void* address, bool orAt) const noexcept {
    MemChunk* chunk = Head();
    while (chunk != nullptr && (IsAbove(chunk, address) || (!orAt && chunk == address)))
        chunk = chunk->next;
    return chunk;
}

MemChunk* FreeChunks::WalkAbove(const void* address) const noexcept {
    MemChunk* above = nullptr;
    for (MemChunk* chunk = Head(); chunk != nullptr && IsAbove(chunk, address); chunk = chunk->next)
        above = chunk;
    return above;
}

unsigned long long FreeChunks::WalkToLargest() const noexcept {
    unsigned long long largest = 0;
    for (const MemChunk* chunk = Head(); chunk != nullptr; chunk = chunk->next)
        largest = chunk->size > largest ? chunk->size : largest;
    return largest;
}

void FreeChunks::Inserted(const MemChunk* chunk) {
    ++m_entry.freeChunks;
    if (m_entry.index != nullptr) {
        m_entry.index->Insert(chunk);
    } else if (m_entry.freeChunks > kIndexFrom) {
        // Only standard blocks ever hold more than one free chunk.
        assert(m_entry.header->blockSize == VarnPool::kBlockSize &&
               "FreeChunks: an index for a large block");
        m_entry.index = FreeChunkIndex::Create(m_entry.header->start);
        for (const MemChunk* c = Head(); c != nullptr; c = c->next)
            m_entry.index->Insert(c);
    }
}

void FreeChunks::Erased(const MemChunk* chunk) noexcept {
    assert(m_entry.freeChunks > 0 && "FreeChunks: more chunks erased than inserted");
    --m_entry.freeChunks;
    if (m_entry.index == nullptr)
        return;
    if (m_entry.freeChunks < kIndexUntil) {
        FreeChunkIndex::Destroy(m_entry.index);
        m_entry.index = nullptr;
    } else {
        m_entry.index->Erase(chunk);
    }
}

} // namespace fileio::detail
