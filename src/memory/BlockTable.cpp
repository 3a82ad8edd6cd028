// BlockTable.cpp - the blocks of a pool by address.

#include "memory/BlockTable.h"

#include <algorithm>
#include <cassert>
#include <functional>
#include <new>

namespace fileio::detail {

namespace {

// Compares addresses with std::less, which orders pointers into different blocks.
bool Before(const void* a, const void* b) {
    return std::less<const void*>()(a, b);
}

} // namespace

BlockTable::~BlockTable() {
    Clear();
}

BlockTable::Entry& BlockTable::Add(MemHeader* header) {
    auto* entry = ::new (platform::AllocateSystemMemory(sizeof(Entry))) Entry{header, 0, nullptr};
    m_byAge.push_back(Aged{header, entry});
    const auto at = std::lower_bound(
        m_byAddress.begin(), m_byAddress.end(), header->start,
        [](const Span& span, const void* start) { return Before(span.start, start); });
    m_byAddress.insert(at, Span{header->start, header->end, entry});
    return *entry;
}

void BlockTable::Drop(Entry* entry) noexcept {
    FreeChunkIndex::Destroy(entry->index);
    entry->~Entry();
    platform::ReleaseSystemMemory(entry);
}

void BlockTable::Remove(Entry& entry) noexcept {
    const auto byAddress =
        std::find_if(m_byAddress.begin(), m_byAddress.end(),
                     [&entry](const Span& span) { return span.entry == &entry; });
    const auto byAge = std::find_if(m_byAge.rbegin(), m_byAge.rend(),
                                    [&entry](const Aged& aged) { return aged.entry == &entry; });
    assert(byAddress != m_byAddress.end() && byAge != m_byAge.rend() &&
           "BlockTable: the block is not in the table");
    m_byAddress.erase(byAddress);
    m_byAge.erase(std::next(byAge).base());
    Drop(&entry);
}

void BlockTable::Clear() noexcept {
    for (const Aged& aged : m_byAge)
        Drop(aged.entry);
    m_byAddress.clear();
    m_byAge.clear();
}

BlockTable::Entry* BlockTable::Find(const void* address) noexcept {
    // The first block that starts above the address; the one before it may hold it.
    const auto after =
        std::upper_bound(m_byAddress.begin(), m_byAddress.end(), address,
                         [](const void* a, const Span& span) { return Before(a, span.start); });
    if (after == m_byAddress.begin())
        return nullptr;
    const Span& candidate = *(after - 1);
    return Before(address, candidate.end) ? candidate.entry : nullptr;
}

BlockTable::Entry* BlockTable::NewestWithRoom(unsigned long long size) const noexcept {
    for (auto aged = m_byAge.rbegin(); aged != m_byAge.rend(); ++aged) {
        if (aged->header->largestFree >= size)
            return aged->entry;
    }
    return nullptr;
}

} // namespace fileio::detail
