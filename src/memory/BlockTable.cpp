// BlockTable.cpp - the blocks of a pool by address and by age.

#include "memory/BlockTable.h"

#include <algorithm>
#include <cassert>
#include <new>

namespace fileio::detail {

namespace {

std::uintptr_t AddressOf(const void* p) noexcept {
    return reinterpret_cast<std::uintptr_t>(p);
}

} // namespace

BlockTable::~BlockTable() {
    Clear();
}

BlockTable::Entry& BlockTable::Add(MemHeader* header) {
    auto* entry = ::new (platform::AllocateSystemMemory(sizeof(Entry)))
        Entry{header, 0, nullptr, m_byAge.size()};
    m_byAge.push_back(entry);
    m_largest.push_back(header->largestFree);
    const std::uintptr_t start = AddressOf(header->start);
    const auto at = static_cast<std::ptrdiff_t>(
        std::lower_bound(m_starts.begin(), m_starts.end(), start) - m_starts.begin());
    m_starts.insert(m_starts.begin() + at, start);
    m_ends.insert(m_ends.begin() + at, AddressOf(header->end));
    m_byAddress.insert(m_byAddress.begin() + at, entry);
    return *entry;
}

void BlockTable::Drop(Entry* entry) noexcept {
    FreeChunkIndex::Destroy(entry->index);
    entry->~Entry();
    platform::ReleaseSystemMemory(entry);
}

void BlockTable::Remove(Entry& entry) noexcept {
    const auto at = static_cast<std::ptrdiff_t>(
        std::lower_bound(m_starts.begin(), m_starts.end(), AddressOf(entry.header->start)) -
        m_starts.begin());
    assert(m_byAddress[static_cast<std::size_t>(at)] == &entry && m_byAge[entry.age] == &entry &&
           "BlockTable: the block is not in the table");
    m_starts.erase(m_starts.begin() + at);
    m_ends.erase(m_ends.begin() + at);
    m_byAddress.erase(m_byAddress.begin() + at);
    const auto age = static_cast<std::ptrdiff_t>(entry.age);
    m_byAge.erase(m_byAge.begin() + age);
    m_largest.erase(m_largest.begin() + age);
    for (std::size_t i = entry.age; i < m_byAge.size(); ++i)
        m_byAge[i]->age = i;
    Drop(&entry);
}

void BlockTable::Clear() noexcept {
    for (Entry* entry : m_byAge)
        Drop(entry);
    m_starts.clear();
    m_ends.clear();
    m_byAddress.clear();
    m_byAge.clear();
    m_largest.clear();
}

void BlockTable::SetLargest(Entry& entry, unsigned long long largest) noexcept {
    entry.header->largestFree = largest;
    m_largest[entry.age] = largest;
}

BlockTable::Entry* BlockTable::Find(const void* address) const noexcept {
    const std::uintptr_t at = AddressOf(address);
    std::size_t count = m_starts.size();
    if (count == 0 || at < m_starts[0])
        return nullptr;
    // The last block that starts at or below the address, found without a branch on the
    // comparisons: the blocks' order tells nothing about where a freed pointer lies.
    const std::uintptr_t* first = m_starts.data();
    while (count > 1) {
        const std::size_t half = count / 2;
        first = first[half] <= at ? first + half : first;
        count -= half;
    }
    const auto i = static_cast<std::size_t>(first - m_starts.data());
    return at < m_ends[i] ? m_byAddress[i] : nullptr;
}

BlockTable::Entry* BlockTable::NewestWithRoom(unsigned long long size) const noexcept {
    for (std::size_t i = m_largest.size(); i-- > 0;) {
        if (m_largest[i] >= size)
            return m_byAge[i];
    }
    return nullptr;
}

} // namespace fileio::detail
