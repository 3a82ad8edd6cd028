// VarnPoolTest.cpp - the block pool: placement, splitting, coalescing, release of blocks and
// the exact byte figures.
//
// Expected figures come from the pool's rules: an allocation of n bytes occupies a chunk of
// n + 16 bytes rounded up to 8; a standard block holds 131,064 bytes and accounts 131,072 in
// TotalRAM; the first block of a pool also brings a descriptor array of 6,416 bytes.

#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace {

constexpr unsigned long long kBlock = 131064;          // usable bytes of a standard block
constexpr unsigned long long kBlockAccounted = 131072; // with its platform header
constexpr unsigned long long kHeaderArray = 6416;      // 8 + 8 + 100 descriptors of 64

// The chunk an allocation of n bytes occupies.
constexpr unsigned long long Chunk(unsigned long long n) {
    return (n + 16 + 7) / 8 * 8;
}
// The request that occupies a chunk of exactly `chunk` bytes.
constexpr unsigned long long RequestFor(unsigned long long chunk) {
    return chunk - 16;
}

char* Bytes(void* p) {
    return static_cast<char*>(p);
}

bool AllZero(const void* p, unsigned long long n) {
    const auto* b = static_cast<const unsigned char*>(p);
    return std::all_of(b, b + n, [](unsigned char c) { return c == 0; });
}

class VarnPoolTest : public ::testing::Test {
protected:
    void TearDown() override {
        pool.FreePool();
        EXPECT_EQ(TotalRAM(), ramBefore) << "the pool left memory behind";
    }

    // Bytes added to TotalRAM since the test began.
    unsigned long long RamGrowth() const { return TotalRAM() - ramBefore; }

    // Fills the rest of the (only) block exactly, so that its free list becomes empty.
    void* FillBlock(unsigned long long used) { return pool.VarnAlloc(RequestFor(kBlock - used)); }

    const unsigned long long ramBefore = TotalRAM();
    VarnPool pool;
};

TEST_F(VarnPoolTest, ZeroBytesGiveNullAndTakeNothing) {
    EXPECT_EQ(pool.VarnAlloc(0), nullptr);
    EXPECT_EQ(pool.GetTotal(), 0u);
    EXPECT_TRUE(pool.IsEmpty());
    EXPECT_FALSE(pool.IsNotEmpty());
    EXPECT_EQ(RamGrowth(), 0u);
    pool.VarnFree(nullptr);
    pool.FreePool(); // on a pool that never held anything
    EXPECT_EQ(RamGrowth(), 0u);
}

TEST_F(VarnPoolTest, ChunkSizesAndTotals) {
    struct Row {
        unsigned long long n;
        unsigned long long chunk;
    };
    // The chunk is n + 16 rounded up to a multiple of 8; the smallest is 24 bytes.
    const Row rows[] = {{1, 24},  {7, 24},    {8, 24},      {9, 32},     {16, 32},
                        {17, 40}, {100, 120}, {1000, 1016}, {4096, 4112}};
    std::vector<void*> live;
    unsigned long long expected = 0;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.n);
        void* p = pool.VarnAlloc(row.n);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(p) % 8, 0u);
        expected += row.chunk;
        EXPECT_EQ(pool.GetTotal(), expected);
        live.push_back(p);
    }
    // All of these fit in the first block: one descriptor array and one standard block.
    EXPECT_EQ(RamGrowth(), kHeaderArray + kBlockAccounted);
    EXPECT_TRUE(pool.IsNotEmpty());

    // Consecutive allocations in a fresh block are packed in ascending order.
    for (std::size_t i = 1; i < live.size(); ++i)
        EXPECT_EQ(Bytes(live[i]) - Bytes(live[i - 1]),
                  static_cast<std::ptrdiff_t>(rows[i - 1].chunk));

    // Free in a mixed order; the total falls by each chunk.
    const std::size_t order[] = {3, 0, 8, 5, 1, 7, 2, 6, 4};
    for (std::size_t i : order) {
        pool.VarnFree(live[i]);
        expected -= rows[i].chunk;
        EXPECT_EQ(pool.GetTotal(), expected);
    }
    // The block went back to the system with its last allocation; the descriptors stay.
    EXPECT_TRUE(pool.IsEmpty());
    EXPECT_EQ(RamGrowth(), kHeaderArray);
}

// Three adjacent allocations freed in every order merge into one free chunk: the block is
// otherwise full, so a request for all three chunks at once fits only if they merged.
TEST_F(VarnPoolTest, ThreeNeighboursCoalesceInEveryFreeOrder) {
    constexpr unsigned long long kPart = 1000;
    std::array<int, 3> order = {0, 1, 2};
    do {
        SCOPED_TRACE(::testing::Message() << "free order " << order[0] << order[1] << order[2]);
        void* parts[3];
        for (void*& p : parts)
            p = pool.VarnAlloc(RequestFor(kPart));
        void* rest = FillBlock(3 * kPart);
        ASSERT_EQ(Bytes(parts[1]), Bytes(parts[0]) + kPart);
        ASSERT_EQ(Bytes(parts[2]), Bytes(parts[1]) + kPart);
        ASSERT_EQ(Bytes(rest), Bytes(parts[2]) + kPart);
        const unsigned long long ram = TotalRAM();

        for (int i : order)
            pool.VarnFree(parts[i]);
        EXPECT_EQ(pool.GetTotal(), kBlock - 3 * kPart);

        void* whole = pool.VarnAlloc(RequestFor(3 * kPart));
        EXPECT_EQ(whole, parts[0]);
        EXPECT_EQ(TotalRAM(), ram) << "a new block was needed: the chunks did not merge";
        EXPECT_TRUE(AllZero(whole, RequestFor(3 * kPart)));
        pool.VarnFree(whole);
        pool.VarnFree(rest);
        EXPECT_TRUE(pool.IsEmpty());
    } while (std::next_permutation(order.begin(), order.end()));
}

// A free chunk split with 8 or 16 bytes to spare leaves those bytes unrecorded: the chunks on
// either side of them never merge, yet the block is still released when it empties.
TEST_F(VarnPoolTest, UnrecordedRemaindersNeverMergeButTheBlockIsReleased) {
    for (unsigned long long gap : {8ULL, 16ULL}) {
        SCOPED_TRACE(gap);
        constexpr unsigned long long kPart = 1000;
        void* a = pool.VarnAlloc(RequestFor(kPart));
        void* b = pool.VarnAlloc(RequestFor(kPart));
        void* c = pool.VarnAlloc(RequestFor(kPart));
        void* rest = FillBlock(3 * kPart);
        const unsigned long long ram = TotalRAM();

        pool.VarnFree(b);
        void* shorter = pool.VarnAlloc(RequestFor(kPart - gap));
        ASSERT_EQ(shorter, b) << "the only free chunk must be taken";
        pool.VarnFree(shorter);
        pool.VarnFree(c);
        EXPECT_EQ(pool.GetTotal(), 2 * kPart + (kBlock - 3 * kPart) - kPart);

        // Together they would hold 2 * kPart - gap, but they are not one chunk.
        void* spanning = pool.VarnAlloc(RequestFor(2 * kPart - gap));
        EXPECT_EQ(TotalRAM(), ram + kBlockAccounted) << "the chunks around the gap merged";
        EXPECT_NE(spanning, b);
        pool.VarnFree(spanning);
        EXPECT_EQ(TotalRAM(), ram);

        // Each side is still usable on its own: the highest chunk that fits is taken first.
        void* upper = pool.VarnAlloc(RequestFor(kPart));
        EXPECT_EQ(upper, c);
        pool.VarnFree(upper);

        pool.VarnFree(a);
        pool.VarnFree(rest);
        EXPECT_EQ(pool.GetTotal(), 0u);
        EXPECT_TRUE(pool.IsEmpty()) << "the gap kept the block alive";
        EXPECT_EQ(TotalRAM(), ram - kBlockAccounted);
    }
}

// Requests of 131,048 bytes or more (131,064 with the header) get a block of their own.
TEST_F(VarnPoolTest, LargeRequestsGetABlockOfTheirOwn) {
    struct Row {
        unsigned long long n;
        unsigned long long blockAccounted;
        bool ownBlock; // true: nothing else can ever share it
    };
    const Row rows[] = {
        {131048, kBlockAccounted, true},  // exactly a standard block
        {131047, kBlockAccounted, true},  // rounds up to the same
        {131049, 131072 + 8, true},       // rounds to 131,072: a block of that size
        {1000000, 1000016 + 8, true},     // chunk 1,000,016
        {131040, kBlockAccounted, false}, // chunk 131,056: an 8-byte tail stays free
        {131032, kBlockAccounted, false}, // chunk 131,048: a 16-byte tail stays free
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.n);
        pool.FreePool();
        const unsigned long long ram = TotalRAM();
        void* big = pool.VarnAlloc(row.n);
        EXPECT_EQ(TotalRAM() - ram, kHeaderArray + row.blockAccounted);
        EXPECT_EQ(pool.GetTotal(), Chunk(row.n));
        EXPECT_TRUE(AllZero(big, row.n));

        // Even the smallest allocation does not fit behind it (the tails are 8 and 16 bytes).
        void* small = pool.VarnAlloc(1);
        EXPECT_EQ(TotalRAM() - ram, kHeaderArray + row.blockAccounted + kBlockAccounted);
        pool.VarnFree(big);
        EXPECT_EQ(TotalRAM() - ram, kHeaderArray + kBlockAccounted);
        EXPECT_TRUE(pool.IsNotEmpty());
        pool.VarnFree(small);
        EXPECT_TRUE(pool.IsEmpty());
        EXPECT_EQ(TotalRAM() - ram, kHeaderArray);
        EXPECT_EQ(pool.GetTotal(), 0u);
    }
}

// A new block's tail of exactly 8 or 16 bytes stays on the free list: it merges with the
// chunk in front of it when that is freed, which empties and releases the block.
TEST_F(VarnPoolTest, TinyTailsOfANewBlock) {
    for (unsigned long long tail : {8ULL, 16ULL}) {
        SCOPED_TRACE(tail);
        void* a = pool.VarnAlloc(RequestFor(1000));
        void* b = pool.VarnAlloc(RequestFor(kBlock - 1000 - tail));
        EXPECT_EQ(Bytes(b), Bytes(a) + 1000);
        pool.VarnFree(b); // merges with the tail
        pool.VarnFree(a); // and the whole block is free
        EXPECT_TRUE(pool.IsEmpty());

        void* whole = pool.VarnAlloc(RequestFor(kBlock - tail));
        void* second = pool.VarnAlloc(1);
        EXPECT_TRUE(Bytes(second) < Bytes(whole) || Bytes(second) >= Bytes(whole) + kBlock)
            << "the tail cannot hold a chunk";
        pool.VarnFree(whole);
        pool.VarnFree(second);
        EXPECT_TRUE(pool.IsEmpty());
    }
}

// Placement: the newest block is searched first, and in a block the free chunk at the highest
// address that is large enough is taken.
TEST_F(VarnPoolTest, PlacementPrefersTheNewestBlockAndTheHighestFit) {
    constexpr unsigned long long kPart = 2000;
    void* a = pool.VarnAlloc(RequestFor(kPart));
    void* b = pool.VarnAlloc(RequestFor(kPart));
    void* c = pool.VarnAlloc(RequestFor(kPart));
    void* d = pool.VarnAlloc(RequestFor(kPart));
    void* rest = FillBlock(4 * kPart);
    pool.VarnFree(a);
    pool.VarnFree(c); // free list: c, a (both 2,000 bytes)

    // The highest chunk that fits is c; the remainder of c stays free in its place.
    void* p1 = pool.VarnAlloc(RequestFor(504));
    EXPECT_EQ(p1, c);
    void* p2 = pool.VarnAlloc(RequestFor(1496));
    EXPECT_EQ(Bytes(p2), Bytes(c) + 504);
    // c is used up: a is next.
    void* p3 = pool.VarnAlloc(RequestFor(24));
    EXPECT_EQ(p3, a);

    // A second block, newer, takes the next request although the first block has room.
    void* big = pool.VarnAlloc(RequestFor(5000)); // does not fit: a has 1,976 bytes left
    void* p4 = pool.VarnAlloc(RequestFor(24));
    EXPECT_EQ(Bytes(p4), Bytes(big) + 5000);
    // A request that only the old block's remainder of a can hold goes there.
    pool.VarnFree(big);
    pool.VarnFree(p4); // the second block is released: the old one is the only one again
    void* p5 = pool.VarnAlloc(RequestFor(1976));
    EXPECT_EQ(Bytes(p5), Bytes(a) + 24);

    for (void* p : {b, d, rest, p1, p2, p3, p5})
        pool.VarnFree(p);
    EXPECT_TRUE(pool.IsEmpty());
}

// Every allocation is zero-filled, also when it reuses memory freed before, whatever the
// split and merge history of that memory.
TEST_F(VarnPoolTest, PayloadsAreZeroAfterReuse) {
    std::vector<std::pair<void*, unsigned long long>> live;
    for (unsigned long long n = 1; n <= 400; n += 13) {
        void* p = pool.VarnAlloc(n);
        std::memset(p, 0xA5, n);
        live.emplace_back(p, n);
    }
    // Free every second allocation, then refill the holes with other sizes, then free all
    // and take the whole area again in one piece.
    for (std::size_t i = 0; i < live.size(); i += 2)
        pool.VarnFree(live[i].first);
    std::vector<std::pair<void*, unsigned long long>> refill;
    for (unsigned long long n = 5; n <= 300; n += 29) {
        void* p = pool.VarnAlloc(n);
        EXPECT_TRUE(AllZero(p, n)) << "size " << n;
        std::memset(p, 0x5A, n);
        refill.emplace_back(p, n);
    }
    for (std::size_t i = 1; i < live.size(); i += 2)
        pool.VarnFree(live[i].first);
    for (auto& [p, n] : refill)
        pool.VarnFree(p);
    void* keep = pool.VarnAlloc(1); // keeps the block alive
    void* all = pool.VarnAlloc(20000);
    EXPECT_TRUE(AllZero(all, 20000));
    pool.VarnFree(all);
    pool.VarnFree(keep);
}

TEST_F(VarnPoolTest, FreePoolReleasesEverythingAndThePoolIsReusable) {
    for (int round = 0; round < 2; ++round) {
        SCOPED_TRACE(round);
        std::vector<void*> live;
        for (int i = 0; i < 300; ++i)
            live.push_back(pool.VarnAlloc(1000)); // 1,016 bytes each: three blocks
        void* big = pool.VarnAlloc(500000);
        EXPECT_EQ(pool.GetTotal(), 300 * 1016 + Chunk(500000));
        // 128 chunks of 1,016 fit in a block of 131,064, so 300 need three blocks.
        EXPECT_EQ(RamGrowth(), kHeaderArray + 3 * kBlockAccounted + Chunk(500000) + 8);
        pool.VarnFree(live[7]);
        EXPECT_NE(big, nullptr);

        pool.FreePool();
        EXPECT_EQ(pool.GetTotal(), 0u);
        EXPECT_TRUE(pool.IsEmpty());
        EXPECT_EQ(RamGrowth(), 0u) << "the descriptor arrays go too";
    }
}

// Descriptors come 100 at a time: the 101st block at once needs a second array, and
// descriptors of released blocks are reused.
TEST_F(VarnPoolTest, DescriptorArraysHoldAHundredBlocks) {
    std::vector<void*> blocks;
    for (int i = 0; i < 100; ++i)
        blocks.push_back(pool.VarnAlloc(131048));
    EXPECT_EQ(RamGrowth(), kHeaderArray + 100 * kBlockAccounted);
    pool.VarnFree(blocks.back());
    blocks.back() = pool.VarnAlloc(131048); // reuses the released block's descriptor
    EXPECT_EQ(RamGrowth(), kHeaderArray + 100 * kBlockAccounted);
    blocks.push_back(pool.VarnAlloc(131048));
    EXPECT_EQ(RamGrowth(), 2 * kHeaderArray + 101 * kBlockAccounted);
    for (void* p : blocks)
        pool.VarnFree(p);
    EXPECT_EQ(RamGrowth(), 2 * kHeaderArray);
    EXPECT_EQ(pool.GetTotal(), 0u);
}

// A chunk header cleared by a merge makes a second free of that pointer harmless.
TEST_F(VarnPoolTest, FreeingAMergedChunkAgainIsIgnored) {
    void* a = pool.VarnAlloc(100);
    void* b = pool.VarnAlloc(100);
    void* keep = pool.VarnAlloc(100);
    pool.VarnFree(a);
    pool.VarnFree(b); // merges into a: b's header is cleared
    const unsigned long long total = pool.GetTotal();
    pool.VarnFree(b);
    EXPECT_EQ(pool.GetTotal(), total);
    pool.VarnFree(keep);
    EXPECT_TRUE(pool.IsEmpty());
}

using VarnPoolDeathTest = VarnPoolTest;

TEST_F(VarnPoolDeathTest, FreeingAForeignPointerEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    alignas(16) static char outside[64];
    void* keep = pool.VarnAlloc(8);
    EXPECT_DEATH(pool.VarnFree(outside + 32), "in no block of its pool");
    VarnPool other;
    void* foreign = other.VarnAlloc(8);
    EXPECT_DEATH(pool.VarnFree(foreign), "in no block of its pool");
    // A pointer to the first byte of a block has its header in front of the block.
    EXPECT_DEATH(pool.VarnFree(static_cast<char*>(keep) - 16), "in no block of its pool");
    other.VarnFree(foreign);
    pool.VarnFree(keep);
}

// A chunk freed twice while it is still a free chunk of its own is caught.
TEST_F(VarnPoolDeathTest, FreeingAFreeChunkAgainEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    void* a = pool.VarnAlloc(100);
    void* b = pool.VarnAlloc(100);
    void* c = pool.VarnAlloc(100);
    pool.VarnFree(b); // a and c are held: b stays a chunk of its own
    EXPECT_DEATH(pool.VarnFree(b), "free already");
    pool.VarnFree(a);
    pool.VarnFree(c);
}

TEST_F(VarnPoolDeathTest, ImpossibleRequestsEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(pool.VarnAlloc(~0ULL), "out of memory");
    EXPECT_DEATH(pool.VarnAlloc(~0ULL - 15), "out of memory");
}

} // namespace
