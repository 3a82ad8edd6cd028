// FreeChunkIndex.cpp - the address and size index of a block's free chunks.

#include "memory/FreeChunkIndex.h"
#include "platform/Platform.h"

#include <bit>
#include <cassert>
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

} // namespace

// ---- the bitmaps ------------------------------------------------------------------------

void FreeChunkIndex::Bitmap::Set(unsigned slot) noexcept {
    const unsigned word = slot / 64;
    m_words[word] |= Bit(slot % 64);
    m_nonEmptyWords[word / 64] |= Bit(word % 64);
}

void FreeChunkIndex::Bitmap::Clear(unsigned slot) noexcept {
    const unsigned word = slot / 64;
    m_words[word] &= ~Bit(slot % 64);
    if (m_words[word] == 0)
        m_nonEmptyWords[word / 64] &= ~Bit(word % 64);
}

bool FreeChunkIndex::Bitmap::Test(unsigned slot) const noexcept {
    return (m_words[slot / 64] & Bit(slot % 64)) != 0;
}

std::uint64_t FreeChunkIndex::Bitmap::Bucket(unsigned bucket) const noexcept {
    constexpr unsigned kPerWord = 64 / kBucketSlots;
    constexpr std::uint64_t kMask =
        kBucketSlots == 64 ? ~std::uint64_t{0} : Bit(kBucketSlots % 64) - 1;
    return (m_words[bucket / kPerWord] >> (bucket % kPerWord * kBucketSlots)) & kMask;
}

unsigned FreeChunkIndex::Bitmap::Below(unsigned slot) const noexcept {
    unsigned word = slot / 64;
    if (const std::uint64_t bits = m_words[word] & BitsBelow(slot % 64); bits != 0)
        return word * 64 + Highest(bits);
    unsigned summary = word / 64;
    std::uint64_t words = m_nonEmptyWords[summary] & BitsBelow(word % 64);
    while (words == 0) {
        if (summary == 0)
            return kSlots;
        words = m_nonEmptyWords[--summary];
    }
    word = summary * 64 + Highest(words);
    return word * 64 + Highest(m_words[word]);
}

unsigned FreeChunkIndex::Bitmap::Above(unsigned slot) const noexcept {
    unsigned word = slot / 64;
    if (const std::uint64_t bits = m_words[word] & BitsAbove(slot % 64); bits != 0)
        return word * 64 + Lowest(bits);
    unsigned summary = word / 64;
    std::uint64_t words = m_nonEmptyWords[summary] & BitsAbove(word % 64);
    while (words == 0) {
        if (++summary == kSummaryWords)
            return kSlots;
        words = m_nonEmptyWords[summary];
    }
    word = summary * 64 + Lowest(words);
    return word * 64 + Lowest(m_words[word]);
}

// ---- the index --------------------------------------------------------------------------

FreeChunkIndex::FreeChunkIndex(char* blockStart) noexcept : m_start(blockStart) {}

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

unsigned FreeChunkIndex::SlotOf(const void* address) const noexcept {
    const auto offset = static_cast<std::uintptr_t>(static_cast<const char*>(address) - m_start);
    assert(offset % kSlotBytes == 0 && offset / kSlotBytes < kSlots &&
           "FreeChunkIndex: address outside the block");
    return static_cast<unsigned>(offset / kSlotBytes);
}

MemChunk* FreeChunkIndex::ChunkAt(unsigned slot) const noexcept {
    return reinterpret_cast<MemChunk*>(m_start + static_cast<std::uintptr_t>(slot) * kSlotBytes);
}

FreeChunkIndex::Units FreeChunkIndex::UnitsOf(const MemChunk* chunk) noexcept {
    return static_cast<Units>(chunk->size / kSlotBytes);
}

void FreeChunkIndex::Raise(unsigned bucket, Units units) noexcept {
    for (unsigned node = kBuckets + bucket; node != 0 && m_largest[node] < units; node /= 2)
        m_largest[node] = units;
}

void FreeChunkIndex::Rescan(unsigned bucket) noexcept {
    Units largest = 0;
    for (std::uint64_t bits = m_begins.Bucket(bucket); bits != 0; bits &= bits - 1) {
        const Units units = UnitsOf(ChunkAt(bucket * kBucketSlots + Lowest(bits)));
        largest = units > largest ? units : largest;
    }
    unsigned node = kBuckets + bucket;
    m_largest[node] = largest;
    // Each node is the larger of its children; stop at the first that keeps its figure.
    for (node /= 2; node != 0; node /= 2) {
        const Units left = m_largest[2 * node];
        const Units right = m_largest[2 * node + 1];
        const Units both = left > right ? left : right;
        if (m_largest[node] == both)
            break;
        m_largest[node] = both;
    }
}

void FreeChunkIndex::Insert(const MemChunk* chunk) noexcept {
    const unsigned slot = SlotOf(chunk);
    assert(!m_begins.Test(slot) && "FreeChunkIndex: the chunk is recorded already");
    m_begins.Set(slot);
    m_ends.Set(slot + UnitsOf(chunk));
    Raise(slot / kBucketSlots, UnitsOf(chunk));
}

void FreeChunkIndex::Erase(const MemChunk* chunk) noexcept {
    const unsigned slot = SlotOf(chunk);
    assert(m_begins.Test(slot) && "FreeChunkIndex: the chunk is not recorded");
    m_begins.Clear(slot);
    m_ends.Clear(slot + UnitsOf(chunk));
    if (UnitsOf(chunk) == m_largest[kBuckets + slot / kBucketSlots])
        Rescan(slot / kBucketSlots);
}

void FreeChunkIndex::Reshape(const MemChunk* before, unsigned long long oldSize,
                             const MemChunk* after) noexcept {
    const unsigned oldSlot = SlotOf(before);
    const unsigned newSlot = SlotOf(after);
    const auto oldUnits = static_cast<Units>(oldSize / kSlotBytes);
    const Units newUnits = UnitsOf(after);
    assert(m_begins.Test(oldSlot) && "FreeChunkIndex: the chunk is not recorded");
    if (newSlot != oldSlot) {
        assert(!m_begins.Test(newSlot) && "FreeChunkIndex: another chunk is recorded there");
        m_begins.Clear(oldSlot);
        m_begins.Set(newSlot);
    }
    if (newSlot + newUnits != oldSlot + oldUnits) {
        m_ends.Clear(oldSlot + oldUnits);
        m_ends.Set(newSlot + newUnits);
    }
    // The new bucket's figure first: a rescan of the old bucket then rebuilds the figures
    // above it from up-to-date children.
    const unsigned oldBucket = oldSlot / kBucketSlots;
    const unsigned newBucket = newSlot / kBucketSlots;
    Raise(newBucket, newUnits);
    if ((oldBucket != newBucket || newUnits < oldUnits) &&
        oldUnits == m_largest[kBuckets + oldBucket])
        Rescan(oldBucket);
}

bool FreeChunkIndex::BeginsAt(const void* address) const noexcept {
    return m_begins.Test(SlotOf(address));
}

bool FreeChunkIndex::EndsAt(const void* address) const noexcept {
    return m_ends.Test(SlotOf(address));
}

MemChunk* FreeChunkIndex::HighestFit(unsigned long long size) const noexcept {
    const auto units = static_cast<Units>((size + kSlotBytes - 1) / kSlotBytes);
    if (size > Largest())
        return nullptr;
    // Down the tree, to the right wherever the right subtree holds a fit.
    unsigned node = 1;
    while (node < kBuckets) {
        node = 2 * node + 1;
        if (m_largest[node] < units)
            --node;
    }
    const unsigned bucket = node - kBuckets;
    for (std::uint64_t bits = m_begins.Bucket(bucket); bits != 0; bits &= ~Bit(Highest(bits))) {
        MemChunk* chunk = ChunkAt(bucket * kBucketSlots + Highest(bits));
        if (chunk->size >= size)
            return chunk;
    }
    assert(false && "FreeChunkIndex: a bucket's largest size is not in the bucket");
    return nullptr;
}

MemChunk* FreeChunkIndex::Below(const void* address) const noexcept {
    const unsigned slot = m_begins.Below(SlotOf(address));
    return slot != kSlots ? ChunkAt(slot) : nullptr;
}

MemChunk* FreeChunkIndex::Above(const void* address) const noexcept {
    const unsigned slot = m_begins.Above(SlotOf(address));
    return slot != kSlots ? ChunkAt(slot) : nullptr;
}

} // namespace fileio::detail
