// BlockTable.cpp - the blocks of a pool by address and by age.

#include "memory/BlockTable.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <emmintrin.h>
#include <new>

namespace fileio::detail {

namespace {

std::uintptr_t AddressOf(const void* p) noexcept {
    return reinterpret_cast<std::uintptr_t>(p);
}

// A largest free size in the table's units, in a signed 16-bit lane. Every size the search
// asks about is below a standard block; a larger free size (a large block's, for the moment
// between its making and its one allocation) stands for room for any of them.
constexpr unsigned long long kUnitBytes = 8;
constexpr unsigned long long kMostUnits = 0x7FFF;
static_assert(VarnPool::kBlockSize / kUnitBytes < kMostUnits,
              "a standard block's sizes in units fit a signed 16-bit lane");

std::uint16_t UnitsOf(unsigned long long bytes) noexcept {
    assert(bytes % kUnitBytes == 0 && "BlockTable: a free size is a multiple of 8");
    return static_cast<std::uint16_t>(std::min(bytes / kUnitBytes, kMostUnits));
}

} // namespace

BlockTable::~BlockTable() {
    Clear();
}

BlockTable::Entry& BlockTable::Add(MemHeader* header) {
    auto* entry = ::new (platform::AllocateSystemMemory(sizeof(Entry)))
        Entry{header, 0, nullptr, m_byAge.size()};
    m_byAge.push_back(entry);
    m_largest.push_back(UnitsOf(header->largestFree));
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
    m_largest[entry.age] = UnitsOf(largest);
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
    if (size > VarnPool::kBlockSize)
        return nullptr;
    // Sizes are multiples of the unit: a block has room when its figure is above units - 1.
    const auto units = static_cast<short>(size / kUnitBytes);
    const std::uint16_t* largest = m_largest.data();
    std::size_t end = m_largest.size();
    // Eight blocks at a time, newest first: one comparison and one look at the mask.
    const __m128i below = _mm_set1_epi16(static_cast<short>(units - 1));
    for (; end >= 8; end -= 8) {
        const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(largest + end - 8));
        // Two mask bits per 16-bit lane; the highest set bit is in the newest fitting lane.
        const auto fits = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpgt_epi16(eight, below)));
        if (fits != 0)
            return m_byAge[end - 8 + static_cast<std::size_t>(std::bit_width(fits) - 1) / 2];
    }
    for (; end > 0; --end) {
        if (largest[end - 1] >= units)
            return m_byAge[end - 1];
    }
    return nullptr;
}

} // namespace fileio::detail
