// RetainedRegionsTest.cpp - the released pool blocks kept below the figures for reuse: they
// change no figure, come back all zero, never exceed their cap, and FreeAllPools gives them
// back.
//
// The kept set is process-wide; each test starts by emptying it, since other tests of the
// same program (one process under Wine) may have left blocks in it.

#include "memory/RetainedRegions.h"
#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

namespace {

using namespace fileio::detail;

constexpr unsigned long long kBlock = 131064;          // usable bytes of a standard block
constexpr unsigned long long kBlockAccounted = 131072; // with its platform header
constexpr unsigned long long kBlockRegion = 8 * kBlockAccounted;

bool AllZero(const void* p, unsigned long long n) {
    const auto* b = static_cast<const unsigned char*>(p);
    return std::all_of(b, b + n, [](unsigned char c) { return c == 0; });
}

class RetainedRegionsTest : public ::testing::Test {
protected:
    void SetUp() override { ReleaseRetainedRegions(); }
    void TearDown() override { ReleaseRetainedRegions(); }
};

// Pools emptying and refilling in random order: the kept set stays within its cap and its
// slot count at every step. (That TotalRAM never counts what is kept, the placement model
// checks after every operation.) "Small" pools hold a few small allocations, always in one
// block; "whole" pools take a standard block for every allocation. Every allocation is
// filled, and every kept block must still come back all zero: PlatformAlloc hands a kept
// region to any caller of the same size without clearing it.
TEST_F(RetainedRegionsTest, TheKeptMemoryNeverExceedsItsCap) {
    constexpr int kPools = 6; // even numbers small, odd numbers whole
    VarnPool pools[kPools];
    std::vector<void*> live[kPools];
    std::mt19937 random(11);
    const unsigned long long ram = TotalRAM();
    int peakKept = 0;
    for (int step = 0; step < 1500; ++step) {
        const int k = static_cast<int>(random() % kPools);
        const bool whole = k % 2 == 1;
        const std::size_t most = whole ? 4 : 20;
        if (live[k].empty() || (live[k].size() < most && random() % 2 == 0)) {
            const unsigned long long n = whole ? kBlock - 16 : 1 + random() % 400;
            live[k].push_back(pools[k].VarnAlloc(n));
            std::memset(live[k].back(), 0xA5, n);
        } else {
            const std::size_t i = random() % live[k].size();
            pools[k].VarnFree(live[k][i]);
            live[k][i] = live[k].back();
            live[k].pop_back();
        }
        ASSERT_LE(RetainedBytes(), kRetainedBytesCap) << "step " << step;
        ASSERT_LE(RetainedRegionCount(), kRetainedRegionSlots) << "step " << step;
        ASSERT_EQ(RetainedBytes(), RetainedRegionCount() * kBlockRegion) << "step " << step;
        peakKept = std::max(peakKept, RetainedRegionCount());
    }
    EXPECT_EQ(peakKept, kRetainedRegionSlots) << "the sequence never filled the kept set";
    for (int p = 0; p < kPools; ++p)
        for (void* q : live[p])
            pools[p].VarnFree(q);
    std::vector<void*> kept;
    while (RetainedRegionCount() > 0) {
        kept.push_back(PlatformAlloc(kBlock));
        ASSERT_TRUE(AllZero(kept.back(), kBlock)) << "a kept block was not cleared";
    }
    for (void* p : kept)
        PlatformFreeZeroed(p);
    // FreeAllPools gives back what is kept, and leaves the figures as they were.
    const unsigned long long held = TotalRAM();
    ASSERT_GT(RetainedRegionCount(), 0);
    FreeAllPools();
    EXPECT_EQ(RetainedRegionCount(), 0);
    EXPECT_EQ(RetainedBytes(), 0u);
    EXPECT_EQ(TotalRAM(), held);
    for (VarnPool& pool : pools)
        pool.FreePool();
    EXPECT_EQ(TotalRAM(), ram);
}

// What is kept and what is not, by how a region is released and how large it is.
TEST_F(RetainedRegionsTest, OnlyClearedRegionsWithinTheCapAreKept) {
    struct Row {
        const char* what;
        unsigned long long n; // PlatformAlloc size
        bool zeroed;          // released with PlatformFreeZeroed
        int kept;
    };
    const Row rows[] = {
        {"a cleared region", 1000, true, 1},
        {"a region of exactly the cap", kRetainedBytesCap / 8 - 8, true, 1},
        {"a region past the cap", kRetainedBytesCap / 8, true, 0},
        {"an ordinary release", 1000, false, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ReleaseRetainedRegions();
        const unsigned long long ram = TotalRAM();
        void* p = PlatformAlloc(row.n);
        if (row.zeroed)
            PlatformFreeZeroed(p);
        else
            PlatformFree(p);
        EXPECT_EQ(TotalRAM(), ram);
        EXPECT_EQ(RetainedRegionCount(), row.kept);

        // Only a request of the same size takes a kept region back.
        void* other = PlatformAlloc(row.n + 8);
        EXPECT_EQ(RetainedRegionCount(), row.kept);
        void* same = PlatformAlloc(row.n);
        EXPECT_EQ(RetainedRegionCount(), 0);
        if (row.kept == 1) {
            EXPECT_EQ(same, p) << "the kept region was not taken back";
        }
        EXPECT_TRUE(AllZero(same, row.n));
        EXPECT_EQ(TotalRAM() - ram, 2 * row.n + 8 + 16);
        PlatformFree(same);
        PlatformFree(other);
    }
}

// More released regions than slots: the oldest go back to the system, the newest stay and
// are taken newest first. A region that would pass the byte cap pushes older ones out too.
TEST_F(RetainedRegionsTest, TheNewestReleasesAreKept) {
    constexpr unsigned long long kSmall = 1000;
    std::vector<void*> regions;
    for (int i = 0; i < kRetainedRegionSlots + 2; ++i)
        regions.push_back(PlatformAlloc(kSmall));
    for (void* p : regions)
        PlatformFreeZeroed(p);
    EXPECT_EQ(RetainedRegionCount(), kRetainedRegionSlots);
    for (int i = kRetainedRegionSlots + 1; i >= 2; --i) {
        void* p = PlatformAlloc(kSmall);
        EXPECT_EQ(p, regions[i]) << "release " << i;
        PlatformFree(p);
    }
    EXPECT_EQ(RetainedRegionCount(), 0);

    PlatformFreeZeroed(PlatformAlloc(kSmall));
    PlatformFreeZeroed(PlatformAlloc(kRetainedBytesCap / 8 - 8)); // the cap
    EXPECT_EQ(RetainedRegionCount(), 1);
    EXPECT_EQ(RetainedBytes(), kRetainedBytesCap);
}

// Under AddressSanitizer a kept block is poisoned: a stale pointer into a block the pool has
// released is still reported, as it was when the block went back to the system at once.
TEST_F(RetainedRegionsTest, AStalePointerIntoAKeptBlockIsReported) {
    if (!kKeptRegionsPoisoned)
        GTEST_SKIP() << "only an AddressSanitizer build poisons kept blocks";
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    VarnPool pool;
    auto* stale = static_cast<volatile char*>(pool.VarnAlloc(40));
    pool.VarnFree(const_cast<char*>(stale));
    ASSERT_EQ(RetainedRegionCount(), 1);
    EXPECT_DEATH(stale[0] = 1, "use-after-poison");
    pool.FreePool();
}

} // namespace
