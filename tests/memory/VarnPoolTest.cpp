// VarnPoolTest.cpp - the block pool's edges that the placement model (VarnPoolPlacementTest)
// does not reach: zero-byte requests, frees of a merged chunk, and the faults that end the
// process. Where allocations land, how chunks split and merge, when blocks go, the
// descriptor arrays (a sequence holds 300 blocks at once) and the exact figures are the
// model test's.

#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"

#include <gtest/gtest.h>

namespace {

class VarnPoolTest : public ::testing::Test {
protected:
    void TearDown() override {
        pool.FreePool();
        EXPECT_EQ(TotalRAM(), ramBefore) << "the pool left memory behind";
    }

    const unsigned long long ramBefore = TotalRAM();
    VarnPool pool;
};

// (TearDown empties the pool, which never held anything, and checks it took nothing.)
TEST_F(VarnPoolTest, ZeroBytesGiveNullAndTakeNothing) {
    EXPECT_EQ(pool.VarnAlloc(0), nullptr);
    pool.VarnFree(nullptr);
    EXPECT_FALSE(pool.IsNotEmpty());
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

TEST_F(VarnPoolDeathTest, ForeignPointersDoubleFreesAndImpossibleRequestsEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    void* keep = pool.VarnAlloc(8);
    VarnPool other;
    void* foreign = other.VarnAlloc(8);
    EXPECT_DEATH(pool.VarnFree(foreign), "in no block of its pool");
    // A pointer to the first byte of a block has its header in front of the block.
    EXPECT_DEATH(pool.VarnFree(static_cast<char*>(keep) - 16), "in no block of its pool");
    other.VarnFree(foreign);

    // A chunk freed twice while it is still a free chunk of its own is caught.
    void* b = pool.VarnAlloc(100);
    void* c = pool.VarnAlloc(100);
    pool.VarnFree(b); // keep and c are held: b stays a chunk of its own
    EXPECT_DEATH(pool.VarnFree(b), "free already");
    pool.VarnFree(c);
    pool.VarnFree(keep);

    EXPECT_DEATH(pool.VarnAlloc(~0ULL - 15), "out of memory"); // its header's 16 bytes overflow
}

} // namespace
