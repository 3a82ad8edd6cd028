// BlockTable.h - the blocks of one VarnPool by address and by age, each with the count and
// the index of its free chunks.
//
// The pool's block list keeps its blocks newest first, the order in which allocations look
// for room. The table mirrors it twice: by address, so that VarnFree finds the block of a
// pointer by a binary search over the blocks' starts instead of a walk, and by age, with
// each block's largest free size copied beside it, so that the search for room reads one
// short array, eight blocks at a time, instead of chasing the list's links to every block's
// header. Its memory is
// the table's own, taken from the system outside the pools' figures: the byte counts of the
// pools stay those of the blocks and descriptors alone.
//
// The pool keeps the table in step with its block list under its lock, and sets every
// block's largest free size through SetLargest; the table takes no lock.
#pragma once

#include "fileio/memory/Pool.h"
#include "memory/FreeChunkIndex.h"
#include "platform/Platform.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace fileio::detail {

/// A standard allocator over the system memory of the platform layer: it never throws, an
/// exhausted system ends the process.
template <class T> struct SystemAllocator {
    using value_type = T;
    SystemAllocator() noexcept = default;
    template <class U> SystemAllocator(const SystemAllocator<U>&) noexcept {}
    T* allocate(std::size_t n) {
        return static_cast<T*>(platform::AllocateSystemMemory(n * sizeof(T)));
    }
    void deallocate(T* p, std::size_t) noexcept { platform::ReleaseSystemMemory(p); }
    friend bool operator==(const SystemAllocator&, const SystemAllocator&) noexcept { return true; }
};

class BlockTable {
public:
    /// What the table knows of one block. An entry stays where it is while its block lives.
    struct Entry {
        MemHeader* header;
        // The number of chunks on the block's free list.
        unsigned freeChunks;
        // The index of the free list while it is long (see FreeChunks.h); null otherwise.
        FreeChunkIndex* index;
        // The block's place in the table's order by age, oldest first.
        std::size_t age;
    };

    BlockTable() noexcept = default;
    ~BlockTable();
    BlockTable(const BlockTable&) = delete;
    BlockTable& operator=(const BlockTable&) = delete;

    /// Enters a new block, the newest, whose header is complete.
    Entry& Add(MemHeader* header);
    /// Forgets a block and drops its index.
    void Remove(Entry& entry) noexcept;
    /// Forgets every block.
    void Clear() noexcept;

    /// Sets a block's largest free size, in its header and in the table.
    void SetLargest(Entry& entry, unsigned long long largest) noexcept;

    /// The entry of the block whose bytes hold `address`, or null.
    [[nodiscard]] Entry* Find(const void* address) const noexcept;
    /// The entry of the newest block whose largest free chunk holds `size` bytes, or null.
    [[nodiscard]] Entry* NewestWithRoom(unsigned long long size) const noexcept;

private:
    template <class T> using Array = std::vector<T, SystemAllocator<T>>;

    static void Drop(Entry* entry) noexcept;

    // By address: the blocks' starts in ascending order, and beside them their ends and
    // entries.
    Array<std::uintptr_t> m_starts;
    Array<std::uintptr_t> m_ends;
    Array<Entry*> m_byAddress;
    // By age, oldest first: the entries and the blocks' largest free sizes in units of 8
    // bytes (a standard block's fit 16 bits; a large block never has a free chunk).
    Array<Entry*> m_byAge;
    Array<std::uint16_t> m_largest;
};

} // namespace fileio::detail
