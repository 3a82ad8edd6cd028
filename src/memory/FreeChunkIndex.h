// FreeChunkIndex.h - an index of the free chunks of one standard VarnPool block, by address
// and by size.
//
// The block's free list (descending addresses, linked through the chunk headers) is the
// pool's record of its free chunks; this index mirrors it so that neither the first-fit
// search nor the search for a freed chunk's neighbours has to walk the list:
//   - two bitmaps with one bit per 8-byte slot of the block mark where free chunks begin
//     and where they end; with a summary of the non-empty words they answer "the nearest
//     free chunk below (or above) this address" and "does a free chunk end (or begin)
//     here" in a few word operations, without touching the block;
//   - a complete binary max-tree over buckets of 64 slots (512 bytes) holds the largest size
//     beginning in each bucket and in each run of buckets; it answers "the free chunk at
//     the highest address that holds n bytes" by one descent and a look at the chunks of
//     one bucket, whose size words lie close together. Sizes are kept in units of 8 bytes.
// Chunk sizes are otherwise read from the chunk headers in the block.
//
// The pool keeps the index in step with the list under its lock; the index takes no lock.
#pragma once

#include "fileio/memory/Pool.h"

#include <cstdint>

namespace fileio::detail {

class FreeChunkIndex {
public:
    /// A new index, in system memory, of an empty free list of the standard block that
    /// begins at blockStart. Exhausted memory ends the process.
    static FreeChunkIndex* Create(char* blockStart);
    /// Gives back an index made by Create; null is ignored.
    static void Destroy(FreeChunkIndex* index) noexcept;

    FreeChunkIndex(const FreeChunkIndex&) = delete;
    FreeChunkIndex& operator=(const FreeChunkIndex&) = delete;

    /// Records a free chunk (its size word already written).
    /// REQUIRES: no recorded chunk begins at the same address.
    void Insert(const MemChunk* chunk) noexcept;
    /// Forgets a recorded chunk. REQUIRES: its size word is still the recorded size.
    void Erase(const MemChunk* chunk) noexcept;
    /// Notes that the recorded chunk at `before`, of oldSize bytes, is now the chunk at
    /// `after` (its size word already written): a chunk that grew or shrank at either end.
    /// The two may be the same address. REQUIRES: no other recorded chunk begins at `after`.
    void Reshape(const MemChunk* before, unsigned long long oldSize,
                 const MemChunk* after) noexcept;

    /// True when a recorded free chunk begins at `address`.
    [[nodiscard]] bool BeginsAt(const void* address) const noexcept;
    /// True when a recorded free chunk ends exactly at `address`.
    [[nodiscard]] bool EndsAt(const void* address) const noexcept;
    /// The recorded chunk at the highest address whose size is at least `size`, or null.
    [[nodiscard]] MemChunk* HighestFit(unsigned long long size) const noexcept;
    /// The recorded chunk at the highest address below `address`, or null.
    [[nodiscard]] MemChunk* Below(const void* address) const noexcept;
    /// The recorded chunk at the lowest address above `address`, or null.
    [[nodiscard]] MemChunk* Above(const void* address) const noexcept;
    /// The largest recorded size; 0 when none is recorded.
    [[nodiscard]] unsigned long long Largest() const noexcept {
        return static_cast<unsigned long long>(m_largest[1]) * kSlotBytes;
    }

private:
    explicit FreeChunkIndex(char* blockStart) noexcept;
    ~FreeChunkIndex() = default;

    static constexpr unsigned kSlotBytes = 8;
    static constexpr unsigned kSlots = 16384; // a standard block has 16,383, and its end
    static constexpr unsigned kWords = kSlots / 64;
    static constexpr unsigned kSummaryWords = kWords / 64;
    static constexpr unsigned kBucketSlots = 64;
    static constexpr unsigned kBuckets = kSlots / kBucketSlots;
    static_assert(VarnPool::kBlockSize / kSlotBytes < kSlots,
                  "a standard block and its end must fit the bitmaps");
    static_assert(VarnPool::kBlockSize / kSlotBytes <= 0xFFFF, "sizes in slots must fit 16 bits");
    static_assert(kSummaryWords * 64 == kWords, "the summary covers every word");
    static_assert(64 % kBucketSlots == 0 && (kBuckets & (kBuckets - 1)) == 0,
                  "buckets divide the bitmap's words and form a complete tree");

    using Units = std::uint16_t; // a size in slots

    class Bitmap {
    public:
        void Set(unsigned slot) noexcept;
        void Clear(unsigned slot) noexcept;
        [[nodiscard]] bool Test(unsigned slot) const noexcept;
        // The bits of a bucket, its lowest slot in bit 0.
        [[nodiscard]] std::uint64_t Bucket(unsigned bucket) const noexcept;
        // The highest set bit below `slot` and the lowest above it; kSlots when none.
        [[nodiscard]] unsigned Below(unsigned slot) const noexcept;
        [[nodiscard]] unsigned Above(unsigned slot) const noexcept;

    private:
        std::uint64_t m_words[kWords] = {};
        std::uint64_t m_nonEmptyWords[kSummaryWords] = {};
    };

    [[nodiscard]] unsigned SlotOf(const void* address) const noexcept;
    [[nodiscard]] MemChunk* ChunkAt(unsigned slot) const noexcept;
    [[nodiscard]] static Units UnitsOf(const MemChunk* chunk) noexcept;
    // The largest size recorded in a bucket becomes at least `units`.
    void Raise(unsigned bucket, Units units) noexcept;
    // Recomputes the largest size recorded in a bucket from its chunks.
    void Rescan(unsigned bucket) noexcept;

    Bitmap m_begins;
    Bitmap m_ends;
    // Node 1 is the root; the leaves kBuckets .. 2 * kBuckets - 1 are the buckets; every
    // node holds the largest size below it.
    Units m_largest[2 * kBuckets] = {};
    char* m_start;
};

} // namespace fileio::detail
