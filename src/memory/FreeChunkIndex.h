// FreeChunkIndex.h - an index of the free chunks of one standard VarnPool block, by address
// and by size.
//
// The block's free list (descending addresses, linked through the chunk headers) is the
// pool's record of its free chunks; this index mirrors it so that neither the first-fit
// search nor the search for a freed chunk's neighbours has to walk the list. The block is
// seen as slots of 8 bytes; every chunk begins and ends on a slot boundary.
//   - Two marks per slot, one where a free chunk begins and one where a free chunk ends,
//     kept side by side 64 slots at a time, with a summary of the words that hold any: they
//     answer "the nearest free chunk below (or above) this slot", "does a free chunk end (or
//     begin) here" and "how long is the free chunk that begins here" (its end is the first
//     end mark above its start, since free chunks never overlap) in a few word operations,
//     without reading the block.
//   - The largest size beginning in each bucket of 64 slots (one word of marks), in each
//     group of 16 buckets and in the whole block answers "the free chunk at the highest
//     address that holds n slots": the highest group with a fit, the highest bucket of it
//     with one (sixteen figures compared at once, four to a 64-bit word), then the chunks of
//     that one bucket, highest first.
// Sizes are in slots throughout. The index reads no chunk header.
//
// The pool keeps the index in step with the list under its lock; the index takes no lock.
#pragma once

#include "fileio/memory/Pool.h"

#include <bit>
#include <cassert>
#include <cstdint>

namespace fileio::detail {

class FreeChunkIndex {
public:
    /// A slot number: the offset from the block's start in units of 8 bytes.
    using Slot = unsigned;
    static constexpr unsigned kSlotBytes = 8;
    /// Slots covered: a standard block has 16,383, and its end is slot 16,383.
    static constexpr Slot kSlots = 16384;
    /// No slot: what a search that finds nothing returns.
    static constexpr Slot kNone = kSlots;

    /// A new index, in system memory, of an empty free list of the standard block that
    /// begins at blockStart. Exhausted memory ends the process.
    static FreeChunkIndex* Create(char* blockStart);
    /// Gives back an index made by Create; null is ignored.
    static void Destroy(FreeChunkIndex* index) noexcept;

    FreeChunkIndex(const FreeChunkIndex&) = delete;
    FreeChunkIndex& operator=(const FreeChunkIndex&) = delete;

    /// The slot of an address of the block (a multiple of 8 bytes from its start).
    [[nodiscard]] Slot SlotOf(const void* address) const noexcept {
        const auto offset =
            static_cast<std::uintptr_t>(static_cast<const char*>(address) - m_start);
        assert(offset % kSlotBytes == 0 && offset / kSlotBytes < kSlots &&
               "FreeChunkIndex: address outside the block");
        return static_cast<Slot>(offset / kSlotBytes);
    }
    /// The chunk header at a slot.
    [[nodiscard]] MemChunk* ChunkAt(Slot slot) const noexcept {
        return reinterpret_cast<MemChunk*>(m_start +
                                           static_cast<std::uintptr_t>(slot) * kSlotBytes);
    }

    // ---- searches ---------------------------------------------------------------------------

    /// True when a recorded free chunk begins at the slot.
    [[nodiscard]] bool BeginsAt(Slot slot) const noexcept {
        return (m_marks[slot / 64].begins >> (slot % 64) & 1) != 0;
    }
    /// True when a recorded free chunk ends exactly at the slot.
    [[nodiscard]] bool EndsAt(Slot slot) const noexcept {
        return (m_marks[slot / 64].ends >> (slot % 64) & 1) != 0;
    }
    /// The recorded chunk at the highest slot below `slot`, or kNone.
    [[nodiscard]] Slot Below(Slot slot) const noexcept;
    /// The recorded chunk at the lowest slot above `slot`, or kNone.
    [[nodiscard]] Slot Above(Slot slot) const noexcept;
    /// The size of the recorded chunk that begins at `slot`.
    [[nodiscard]] unsigned UnitsAt(Slot slot) const noexcept;

    /// Where a fit lies: the recorded chunk at the highest slot whose size is at least the
    /// size asked, and the recorded chunk just above it (kNone when there is none).
    struct Fit {
        Slot slot;
        Slot above;
    };
    /// The highest fit for `units` slots; slot is kNone when no chunk is large enough.
    [[nodiscard]] Fit HighestFit(unsigned units) const noexcept;

    /// The largest recorded size; 0 when none is recorded.
    [[nodiscard]] unsigned Largest() const noexcept { return m_largest; }

    // ---- changes ----------------------------------------------------------------------------

    /// Records a free chunk. REQUIRES: no recorded chunk overlaps it.
    void Insert(Slot slot, unsigned units) noexcept;
    /// Forgets the recorded chunk at `slot` of `units` slots.
    void Erase(Slot slot, unsigned units) noexcept;
    /// Notes that the recorded chunk at oldSlot, of oldUnits slots, is now at newSlot with
    /// newUnits: a chunk that grew or shrank at either end, or both.
    /// REQUIRES: no other recorded chunk overlaps it.
    void Reshape(Slot oldSlot, unsigned oldUnits, Slot newSlot, unsigned newUnits) noexcept;

private:
    explicit FreeChunkIndex(char* blockStart) noexcept : m_start(blockStart) {}
    ~FreeChunkIndex() = default;

    static constexpr unsigned kWords = kSlots / 64;
    static constexpr unsigned kSummaryWords = kWords / 64;
    // A bucket is the 64 slots of one word of marks.
    static constexpr unsigned kBuckets = kWords;
    // Buckets per group, and groups: the figures of one group fill four 64-bit words.
    static constexpr unsigned kGroupBuckets = 16;
    static constexpr unsigned kGroups = kBuckets / kGroupBuckets;
    static_assert(VarnPool::kBlockSize / kSlotBytes < kSlots,
                  "a standard block and its end must fit the marks");
    static_assert(kSlots <= 0x7FFF, "sizes in slots must stay below 2^15 (see the .cpp)");
    static_assert(kSummaryWords * 64 == kWords, "the summary covers every word");
    static_assert(kGroups == kGroupBuckets && kGroups == 16,
                  "sixteen groups of sixteen buckets: each search looks at sixteen figures");

    using Figure = std::uint16_t; // a size in slots

    // The marks of 64 slots, the lowest slot in bit 0.
    struct Marks {
        std::uint64_t begins;
        std::uint64_t ends;
    };

    // The first end mark above `slot`.
    [[nodiscard]] Slot NextEnd(Slot slot) const noexcept;
    void SetBegin(Slot slot) noexcept;
    void ClearBegin(Slot slot) noexcept;
    void SetEnd(Slot slot) noexcept;
    void ClearEnd(Slot slot) noexcept;
    // The largest size recorded in a bucket becomes at least `units`.
    void Raise(unsigned bucket, unsigned units) noexcept;
    // Recomputes the figure of a bucket whose largest chunk may have gone or shrunk.
    void Rescan(unsigned bucket) noexcept;

    Marks m_marks[kWords] = {};
    // Bit w set when word w holds a begin mark, and an end mark.
    std::uint64_t m_beginWords[kSummaryWords] = {};
    std::uint64_t m_endWords[kSummaryWords] = {};
    // The largest size beginning in each bucket, in each group of buckets, in the block.
    Figure m_bucketLargest[kBuckets] = {};
    Figure m_groupLargest[kGroups] = {};
    Figure m_largest = 0;
    char* m_start;
};

} // namespace fileio::detail
