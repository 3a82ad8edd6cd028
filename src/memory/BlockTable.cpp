// BlockTable.cpp - the blocks of a pool by address.

#include "memory/BlockTable.h"

#include <algorithm>
#include <cassert>
#include <functional>
#include <new>

namespace fileio::detail {

namespace {

// Compares addresses with std::less, which orders pointers into different blocks.
bool StartsBefore(const BlockTable::Entry& entry, const void* address) {
    return std::less<const void*>()(entry.start, address);
}

void DropIndex(FreeChunkIndex* index) noexcept {
    if (index == nullptr)
        return;
    index->~FreeChunkIndex();
    platform::ReleaseSystemMemory(index);
}

} // namespace

BlockTable::~BlockTable() { Clear(); }

const BlockTable::Entry& BlockTable::Add(MemHeader* header) {
    FreeChunkIndex* index = nullptr;
    if (header->blockSize == VarnPool::kBlockSize)
        index = ::new (platform::AllocateSystemMemory(sizeof(FreeChunkIndex))) FreeChunkIndex(header->start);
    const Entry entry{header->start, header->end, header, index};
    m_byAge.push_back(entry);
    const auto at = std::lower_bound(m_byAddress.begin(), m_byAddress.end(), header->start, StartsBefore);
    return *m_byAddress.insert(at, entry);
}

void BlockTable::Remove(const Entry& entry) noexcept {
    const MemHeader* header = entry.header;
    DropIndex(entry.index);
    m_byAddress.erase(m_byAddress.begin() + (&entry - m_byAddress.data()));
    const auto byAge = std::find_if(m_byAge.rbegin(), m_byAge.rend(),
                                    [header](const Entry& e) { return e.header == header; });
    assert(byAge != m_byAge.rend() && "BlockTable: the block is not in the table");
    m_byAge.erase(std::next(byAge).base());
}

void BlockTable::Clear() noexcept {
    for (const Entry& entry : m_byAddress)
        DropIndex(entry.index);
    m_byAddress.clear();
    m_byAge.clear();
}

const BlockTable::Entry* BlockTable::Find(const void* address) const noexcept {
    // The first block that starts above the address; the one before it may hold it.
    const auto after = std::upper_bound(
        m_byAddress.begin(), m_byAddress.end(), address,
        [](const void* a, const Entry& entry) { return std::less<const void*>()(a, entry.start); });
    if (after == m_byAddress.begin())
        return nullptr;
    const Entry& candidate = *(after - 1);
    return std::less<const void*>()(address, candidate.end) ? &candidate : nullptr;
}

const BlockTable::Entry* BlockTable::NewestWithRoom(unsigned long long size) const noexcept {
    for (auto e = m_byAge.rbegin(); e != m_byAge.rend(); ++e) {
        if (e->header->largestFree >= size)
            return &*e;
    }
    return nullptr;
}

} // namespace fileio::detail
