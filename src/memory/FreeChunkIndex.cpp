// FreeChunkIndex.cpp - the address and size index of a block's free chunks.

#include "memory/FreeChunkIndex.h"
#include "platform/Platform.h"

#include <algorithm>
#include <emmintrin.h>
#include <new>

namespace fileio::detail {

namespace {

constexpr std::uint64_t Bit(unsigned i) {
    return std::uint64_t{1} << i;
}
// The bits strictly below bit i.
constexpr std::uint64_t BitsBelow(unsigned i) {
    return Bit(i) - 1;
}
// The bits strictly above bit i.
constexpr std::uint64_t BitsAbove(unsigned i) {
    return i == 63 ? 0 : ~std::uint64_t{0} << (i + 1);
}
unsigned Highest(std::uint64_t bits) {
    return 63u - static_cast<unsigned>(std::countl_zero(bits));
}
unsigned Lowest(std::uint64_t bits) {
    return static_cast<unsigned>(std::countr_zero(bits));
}

// The figures of sixteen buckets or groups are compared all at once, eight to an SSE2
// register (the instructions every x86-64 processor has). Every figure is below 2^15, so
// the signed 16-bit comparisons order them correctly.
using Figure = std::uint16_t;
using Lanes = __m128i;

Lanes Load(const Figure* eight) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const Lanes*>(eight));
}

// Bit i set for each of sixteen figures that is at least `units`.
unsigned AtLeast(const Figure* figures, unsigned units) noexcept {
    const Lanes below = _mm_set1_epi16(static_cast<short>(units - 1));
    const Lanes low = _mm_cmpgt_epi16(Load(figures), below);
    const Lanes high = _mm_cmpgt_epi16(Load(figures + 8), below);
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
}

// The figures of a register with the one at `lane` (0..7) replaced.
Lanes Replaced(Lanes figures, unsigned lane, unsigned replacement) noexcept {
    const Lanes which = _mm_cmpeq_epi16(_mm_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7),
                                        _mm_set1_epi16(static_cast<short>(lane)));
    return _mm_or_si128(_mm_andnot_si128(which, figures),
                        _mm_and_si128(which, _mm_set1_epi16(static_cast<short>(replacement))));
}

// The largest of sixteen figures once the one at `replaced` is `replacement`. The figures
// are read as they are and the replacement made in a register: reading a figure just
// written, as part of a wider read, would wait for the write.
Figure LargestOfSixteen(const Figure* figures, unsigned replaced, unsigned replacement) noexcept {
    Lanes low = Load(figures);
    Lanes high = Load(figures + 8);
    if (replaced < 8)
        low = Replaced(low, replaced, replacement);
    else
        high = Replaced(high, replaced - 8, replacement);
    Lanes largest = _mm_max_epi16(low, high);
    largest = _mm_max_epi16(largest, _mm_shuffle_epi32(largest, _MM_SHUFFLE(1, 0, 3, 2)));
    largest = _mm_max_epi16(largest, _mm_shuffle_epi32(largest, _MM_SHUFFLE(2, 3, 0, 1)));
    largest = _mm_max_epi16(largest, _mm_srli_epi32(largest, 16));
    return static_cast<Figure>(_mm_cvtsi128_si32(largest) & 0xFFFF);
}

} // namespace

FreeChunkIndex* FreeChunkIndex::Create(char* blockStart) {
    return ::new (platform::AllocateSystemMemory(sizeof(FreeChunkIndex)))
        FreeChunkIndex(blockStart);
}

void FreeChunkIndex::Destroy(FreeChunkIndex* index) noexcept {
    if (index == nullptr)
        return;
    index->~FreeChunkIndex();
    platform::ReleaseSystemMemory(index);
}

// ---- the marks ------------------------------------------------------------------------------

void FreeChunkIndex::SetBegin(Slot slot) noexcept {
    const unsigned word = slot / 64;
    m_marks[word].begins |= Bit(slot % 64);
    m_beginWords[word / 64] |= Bit(word % 64);
}

void FreeChunkIndex::ClearBegin(Slot slot) noexcept {
    const unsigned word = slot / 64;
    if ((m_marks[word].begins &= ~Bit(slot % 64)) == 0)
        m_beginWords[word / 64] &= ~Bit(word % 64);
}

void FreeChunkIndex::SetEnd(Slot slot) noexcept {
    const unsigned word = slot / 64;
    m_marks[word].ends |= Bit(slot % 64);
    m_endWords[word / 64] |= Bit(word % 64);
}

void FreeChunkIndex::ClearEnd(Slot slot) noexcept {
    const unsigned word = slot / 64;
    if ((m_marks[word].ends &= ~Bit(slot % 64)) == 0)
        m_endWords[word / 64] &= ~Bit(word % 64);
}

FreeChunkIndex::Slot FreeChunkIndex::Below(Slot slot) const noexcept {
    unsigned word = slot / 64;
    if (const std::uint64_t bits = m_marks[word].begins & BitsBelow(slot % 64); bits != 0)
        return word * 64 + Highest(bits);
    unsigned summary = word / 64;
    std::uint64_t words = m_beginWords[summary] & BitsBelow(word % 64);
    while (words == 0) {
        if (summary == 0)
            return kNone;
        words = m_beginWords[--summary];
    }
    word = summary * 64 + Highest(words);
    return word * 64 + Highest(m_marks[word].begins);
}

FreeChunkIndex::Slot FreeChunkIndex::Above(Slot slot) const noexcept {
    unsigned word = slot / 64;
    if (const std::uint64_t bits = m_marks[word].begins & BitsAbove(slot % 64); bits != 0)
        return word * 64 + Lowest(bits);
    unsigned summary = word / 64;
    std::uint64_t words = m_beginWords[summary] & BitsAbove(word % 64);
    while (words == 0) {
        if (++summary == kSummaryWords)
            return kNone;
        words = m_beginWords[summary];
    }
    word = summary * 64 + Lowest(words);
    return word * 64 + Lowest(m_marks[word].begins);
}

FreeChunkIndex::Slot FreeChunkIndex::NextEnd(Slot slot) const noexcept {
    unsigned word = slot / 64;
    if (const std::uint64_t bits = m_marks[word].ends & BitsAbove(slot % 64); bits != 0)
        return word * 64 + Lowest(bits);
    // Most chunks end in the next word; the summary finds the end of a long one.
    if (word + 1 < kWords && m_marks[word + 1].ends != 0)
        return (word + 1) * 64 + Lowest(m_marks[word + 1].ends);
    unsigned summary = word / 64;
    std::uint64_t words = m_endWords[summary] & BitsAbove(word % 64);
    while (words == 0) {
        assert(summary + 1 < kSummaryWords && "FreeChunkIndex: a chunk without an end");
        words = m_endWords[++summary];
    }
    word = summary * 64 + Lowest(words);
    return word * 64 + Lowest(m_marks[word].ends);
}

unsigned FreeChunkIndex::UnitsAt(Slot slot) const noexcept {
    assert(BeginsAt(slot) && "FreeChunkIndex: no chunk begins there");
    // Free chunks never overlap, so the first end mark above a chunk's start is its end.
    return NextEnd(slot) - slot;
}

// ---- the sizes --------------------------------------------------------------------------------

void FreeChunkIndex::Raise(unsigned bucket, unsigned units) noexcept {
    if (m_bucketLargest[bucket] >= units)
        return;
    const auto figure = static_cast<Figure>(units);
    m_bucketLargest[bucket] = figure;
    Figure& group = m_groupLargest[bucket / kGroupBuckets];
    group = std::max(group, figure);
    m_largest = std::max(m_largest, figure);
}

void FreeChunkIndex::Rescan(unsigned bucket) noexcept {
    // Only the highest chunk of a bucket may end beyond it: each of the others ends before
    // the next one begins.
    std::uint64_t begins = m_marks[bucket].begins;
    unsigned largest = 0;
    if (begins != 0) {
        const unsigned top = Highest(begins);
        largest = NextEnd(bucket * 64 + top) - (bucket * 64 + top);
        const std::uint64_t ends = m_marks[bucket].ends;
        for (begins &= ~Bit(top); begins != 0; begins &= ~Bit(Highest(begins))) {
            const unsigned begin = Highest(begins);
            largest = std::max(largest, Lowest(ends & BitsAbove(begin)) - begin);
        }
    }
    const unsigned old = m_bucketLargest[bucket];
    assert(largest <= old && "FreeChunkIndex: a rescan raised a bucket's figure");
    // The group's figure, and the block's, change only when this bucket held them.
    const unsigned group = bucket / kGroupBuckets;
    if (largest < old && old == m_groupLargest[group]) {
        const Figure groupLargest = LargestOfSixteen(m_bucketLargest + group * kGroupBuckets,
                                                     bucket % kGroupBuckets, largest);
        if (groupLargest < m_groupLargest[group] && m_groupLargest[group] == m_largest)
            m_largest = LargestOfSixteen(m_groupLargest, group, groupLargest);
        m_groupLargest[group] = groupLargest;
    }
    m_bucketLargest[bucket] = static_cast<Figure>(largest);
}

FreeChunkIndex::Fit FreeChunkIndex::HighestFit(unsigned units) const noexcept {
    if (units > m_largest)
        return {kNone, kNone};
    // The highest group with a fit, then the highest bucket of it with one.
    const unsigned group = Highest(AtLeast(m_groupLargest, units));
    const unsigned bucket =
        group * kGroupBuckets + Highest(AtLeast(m_bucketLargest + group * kGroupBuckets, units));
    // Its chunks, highest first; each one passed over is the chunk above the next.
    const Marks& marks = m_marks[bucket];
    std::uint64_t begins = marks.begins;
    unsigned bit = Highest(begins);
    Slot above = kNone;
    for (unsigned end = NextEnd(bucket * 64 + bit) - bucket * 64; end - bit < units;
         end = Lowest(marks.ends & BitsAbove(bit))) {
        above = bucket * 64 + bit;
        begins &= ~Bit(bit);
        assert(begins != 0 && "FreeChunkIndex: a bucket's largest size is not in the bucket");
        bit = Highest(begins);
    }
    const Slot slot = bucket * 64 + bit;
    return {slot, above != kNone ? above : Above(slot)};
}

// ---- changes ------------------------------------------------------------------------------------

void FreeChunkIndex::Insert(Slot slot, unsigned units) noexcept {
    assert(!BeginsAt(slot) && "FreeChunkIndex: the chunk is recorded already");
    SetBegin(slot);
    SetEnd(slot + units);
    Raise(slot / 64, units);
}

void FreeChunkIndex::Erase(Slot slot, unsigned units) noexcept {
    assert(BeginsAt(slot) && UnitsAt(slot) == units && "FreeChunkIndex: no such chunk");
    ClearBegin(slot);
    ClearEnd(slot + units);
    if (units == m_bucketLargest[slot / 64])
        Rescan(slot / 64);
}

void FreeChunkIndex::Reshape(Slot oldSlot, unsigned oldUnits, Slot newSlot,
                             unsigned newUnits) noexcept {
    assert(BeginsAt(oldSlot) && UnitsAt(oldSlot) == oldUnits && "FreeChunkIndex: no such chunk");
    if (newSlot != oldSlot) {
        assert(!BeginsAt(newSlot) && "FreeChunkIndex: another chunk is recorded there");
        ClearBegin(oldSlot);
        SetBegin(newSlot);
    }
    if (newSlot + newUnits != oldSlot + oldUnits) {
        ClearEnd(oldSlot + oldUnits);
        SetEnd(newSlot + newUnits);
    }
    // The new bucket's figure first: a rescan of the old bucket then reads it up to date.
    const unsigned oldBucket = oldSlot / 64;
    const unsigned newBucket = newSlot / 64;
    Raise(newBucket, newUnits);
    if ((oldBucket != newBucket || newUnits < oldUnits) && oldUnits == m_bucketLargest[oldBucket])
        Rescan(oldBucket);
}

} // namespace fileio::detail
