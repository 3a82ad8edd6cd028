// SimplePoolTest.cpp - impossible platform requests, the bump pool and the one-buffer pool.
// (What PlatformAlloc counts is checked to the byte by RetainedRegionsTest and the placement
// model.)

#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr unsigned long long kChunk = 2097152; // a standard SimplePool chunk

bool AllZero(const void* p, unsigned long long n) {
    const auto* b = static_cast<const unsigned char*>(p);
    return std::all_of(b, b + n, [](unsigned char c) { return c == 0; });
}

TEST(PlatformAllocDeathTest, ImpossibleRequestsEndTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(PlatformAlloc(~0ULL), "out of memory");     // n + 8 overflows
    EXPECT_DEATH(PlatformAlloc(~0ULL / 8), "out of memory"); // eight times that overflows
    SimplePool pool;
    EXPECT_DEATH(pool.Alloc(~0ULL - 3), "out of memory");
}

class SimplePoolTest : public ::testing::Test {
protected:
    void TearDown() override {
        pool.FreePool();
        EXPECT_EQ(TotalRAM(), ramBefore);
    }
    const unsigned long long ramBefore = TotalRAM();
    SimplePool pool;
};

// Each row starts a fresh pool (so FreePool releases every chunk and leaves a usable pool):
// the first request's chunk, then the rest of it filled by a request that follows unrounded,
// then one byte that needs the next standard chunk.
TEST_F(SimplePoolTest, ChunkSizes) {
    const struct {
        unsigned long long first; // the first request of a fresh pool
        unsigned long long chunk; // the chunk it takes
        unsigned long long left;  // bytes left in it
    } rows[] = {
        {3, kChunk, kChunk - 11}, {2097144, kChunk, 0}, // the largest request of a standard chunk
        {2097145, 2097160, 7}, // rounded up to 2,097,152, plus the link word
        {2097152, 2097160, 0},    {3000001, 3000016, 7},
    };
    EXPECT_EQ(pool.Alloc(0), nullptr);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.first);
        pool.FreePool();
        char* p = static_cast<char*>(pool.Alloc(row.first));
        EXPECT_EQ(pool.GetTotal(), row.chunk);
        EXPECT_EQ(TotalRAM() - ramBefore, row.chunk + 8);
        EXPECT_TRUE(AllZero(p, row.first));
        if (row.left > 0) {
            char* next = static_cast<char*>(pool.Alloc(row.left));
            EXPECT_EQ(next, p + row.first) << "the rest of the chunk is usable";
        }
        pool.Alloc(1); // the chunk is used up now
        EXPECT_EQ(pool.GetTotal(), row.chunk + kChunk);
    }
}

// One buffer rounded up to 8 (1 takes 8, 200 takes 200); a request of 0 gives nothing; a
// second buffer replaces the first without releasing it; the destructor releases the buffer
// held.
TEST(OGLPool, HoldsOneRoundedBuffer) {
    const unsigned long long before = TotalRAM();
    {
        OGLPool pool;
        void* first = pool.Alloc(1);
        EXPECT_TRUE(AllZero(first, 8));
        EXPECT_EQ(pool.Alloc(0), nullptr);
        pool.Alloc(200);
        EXPECT_EQ(TotalRAM() - before, (8 + 8) + (200 + 8));
        pool.FreePool(); // releases the second only
        EXPECT_EQ(TotalRAM() - before, 8 + 8u);
        PlatformFree(first);
        pool.Alloc(50);
    }
    EXPECT_EQ(TotalRAM(), before);
}

} // namespace
