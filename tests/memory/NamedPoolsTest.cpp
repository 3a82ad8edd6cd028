// NamedPoolsTest.cpp - the named pools, their figures and the process-wide switches.

#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"
#include "memory/NamedPoolObjects.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using fileio::detail::NamedSimplePool;
using fileio::detail::NamedVarnPool;
using fileio::detail::SimplePoolKind;
using fileio::detail::VarnPoolKind;

constexpr unsigned long long kSimpleChunk = 2097152;

// A string taken while the test program's statics are built, and given back while they are
// destroyed: the string pool must exist before anything asks for it and outlive every
// static destructor.
struct StaticString {
    StaticString() : text(static_cast<char*>(AllocString(5))) { std::memcpy(text, "early", 5); }
    ~StaticString() { FreeString(text); }
    char* text;
};
StaticString g_staticString;

TEST(NamedPools, UsableFromStaticInitialisers) {
    EXPECT_STREQ(g_staticString.text, "early");
}

// AllocString(n) reserves n + 1 bytes: with the 16-byte chunk header and rounding to 8, a
// string of length n occupies RoundUp8(n + 17) bytes of the string pool.
TEST(NamedPools, AllocStringReservesRoomForTheNul) {
    const VarnPool& strings = NamedVarnPool(VarnPoolKind::String);
    struct Row {
        unsigned long long length;
        unsigned long long chunk;
    };
    const Row rows[] = {{0, 24}, {1, 24}, {7, 24}, {8, 32}, {15, 32}, {16, 40}, {100, 120}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.length);
        const unsigned long long before = strings.GetTotal();
        auto* s = static_cast<unsigned char*>(AllocString(row.length));
        ASSERT_NE(s, nullptr);
        EXPECT_EQ(strings.GetTotal() - before, row.chunk);
        for (unsigned long long i = 0; i <= row.length; ++i)
            ASSERT_EQ(s[i], 0) << "byte " << i;
        std::memset(s, 'x', row.length); // the whole length plus the NUL is usable
        FreeString(s);
        EXPECT_EQ(strings.GetTotal(), before);
    }
    FreeString(nullptr);
}

// Each VarnPool kind's functions reach that kind's pool and no other.
TEST(NamedPools, EachKindHasItsOwnVarnPool) {
    using K = VarnPoolKind;
    const struct {
        VarnPoolKind kind;
        void* (*alloc)(unsigned long long);
        void (*release)(void*);
    } rows[] = {{K::Act, AllocAct, FreeAct},          {K::Att, AllocAtt, FreeAtt},
                {K::Bitmap, AllocBitmap, FreeBitmap}, {K::Chor, AllocChor, FreeChor},
                {K::Ext, AllocExt, FreeExt},          {K::GAssist, AllocGAssist, FreeGAssist},
                {K::LBuff, AllocLBuff, FreeLBuff},    {K::Particle, AllocParticle, FreeParticle},
                {K::Patch, AllocPatch, FreePatch},    {K::Poly, AllocPoly, FreePoly},
                {K::Prop, AllocProp, FreeProp},       {K::Radiosity, AllocRadiosity, FreeRadiosity},
                {K::Seg, AllocSeg, FreeSeg},          {K::Shadow, AllocShadow, FreeShadow},
                {K::Test, AllocTest, FreeTest},       {K::Undo, AllocUndo, FreeUndo}};
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.kind));
        unsigned long long totals[fileio::detail::kVarnPoolKindCount];
        for (int k = 0; k < fileio::detail::kVarnPoolKindCount; ++k)
            totals[k] = NamedVarnPool(static_cast<VarnPoolKind>(k)).GetTotal();
        EXPECT_EQ(row.alloc(0), nullptr);
        void* p = row.alloc(100);
        for (int k = 0; k < fileio::detail::kVarnPoolKindCount; ++k)
            EXPECT_EQ(NamedVarnPool(static_cast<VarnPoolKind>(k)).GetTotal(),
                      totals[k] + (static_cast<int>(row.kind) == k ? 120 : 0))
                << "pool " << k;
        if (row.kind == K::Patch) {
            EXPECT_EQ(GetPatchAmount(), totals[static_cast<int>(K::Patch)] + 120);
        }
        row.release(p);
        row.release(nullptr);
        EXPECT_EQ(NamedVarnPool(row.kind).GetTotal(), totals[static_cast<int>(row.kind)]);
    }
}

TEST(NamedPoolsDeathTest, FreeingIntoTheWrongPoolEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    void* act = AllocAct(8);
    EXPECT_DEATH(FreeAtt(act), "in no block of its pool");
    EXPECT_DEATH(FreeString(act), "in no block of its pool");
    FreeAct(act);
}

// The release-all functions of the Radiosity, Shadow and LBuff pools release the pool's
// descriptor arrays too; FreePatchMemory does nothing once the Patch pool holds no block.
TEST(NamedPools, ReleaseAllFunctions) {
    constexpr unsigned long long kBlockAndArray = 131072 + 6416;
    const struct {
        void* (*alloc)(unsigned long long);
        void (*release)(void*);
        void (*releaseAll)();
        VarnPoolKind kind;
        bool releasesAnEmptyPool;
    } rows[] = {
        {AllocLBuff, FreeLBuff, FreeLBuffMemory, VarnPoolKind::LBuff, true},
        {AllocRadiosity, FreeRadiosity, FreeRadiosityMemory, VarnPoolKind::Radiosity, true},
        {AllocShadow, FreeShadow, FreeShadowMemory, VarnPoolKind::Shadow, true},
        {AllocPatch, FreePatch, FreePatchMemory, VarnPoolKind::Patch, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.kind));
        VarnPool& pool = NamedVarnPool(row.kind);
        pool.FreePool();
        const unsigned long long ram = TotalRAM();

        // A held allocation: everything goes.
        row.alloc(1000);
        row.alloc(200000);
        EXPECT_EQ(TotalRAM() - ram, kBlockAndArray + (200016 + 8));
        row.releaseAll();
        EXPECT_EQ(TotalRAM(), ram);
        EXPECT_EQ(pool.GetTotal(), 0u);
        EXPECT_TRUE(pool.IsEmpty());

        // No block left, only the descriptor array.
        row.release(row.alloc(10));
        EXPECT_EQ(TotalRAM() - ram, 6416u);
        row.releaseAll();
        EXPECT_EQ(TotalRAM() - ram, row.releasesAnEmptyPool ? 0u : 6416u);
        pool.FreePool();
    }
}

// FreeAllPools drops the three scratch pools and the OGL buffer and leaves every VarnPool,
// and what lives in it, alone.
TEST(NamedPools, FreeAllPoolsReleasesOnlyScratchMemory) {
    char* text = static_cast<char*>(AllocString(4));
    std::memcpy(text, "kept", 4);
    void* act = AllocAct(64);
    static_cast<char*>(act)[0] = 7;
    unsigned long long totals[fileio::detail::kVarnPoolKindCount];
    for (int k = 0; k < fileio::detail::kVarnPoolKindCount; ++k)
        totals[k] = NamedVarnPool(static_cast<VarnPoolKind>(k)).GetTotal();

    FreeAllPools();
    const unsigned long long ram = TotalRAM();
    EXPECT_NE(AllocZ(100), nullptr);
    EXPECT_NE(AllocSubPatch(100), nullptr);
    EXPECT_NE(AllocTemp(100), nullptr);
    EXPECT_NE(AllocOGL(100), nullptr);
    EXPECT_EQ(NamedSimplePool(SimplePoolKind::Z).GetTotal(), kSimpleChunk);
    EXPECT_EQ(NamedSimplePool(SimplePoolKind::Temp).GetTotal(), kSimpleChunk);
    EXPECT_EQ(TotalRAM() - ram, 3 * (kSimpleChunk + 8) + (104 + 8));

    FreeAllPools();
    EXPECT_EQ(TotalRAM(), ram);
    for (SimplePoolKind kind : {SimplePoolKind::SubPatch, SimplePoolKind::Temp, SimplePoolKind::Z})
        EXPECT_EQ(NamedSimplePool(kind).GetTotal(), 0u);
    for (int k = 0; k < fileio::detail::kVarnPoolKindCount; ++k)
        EXPECT_EQ(NamedVarnPool(static_cast<VarnPoolKind>(k)).GetTotal(), totals[k])
            << "pool " << k;
    EXPECT_EQ(std::memcmp(text, "kept", 5), 0);
    EXPECT_EQ(static_cast<char*>(act)[0], 7);
    FreeString(text);
    FreeAct(act);
}

TEST(NamedPools, ScratchReleaseFunctionsEachEmptyTheirPool) {
    const struct {
        void* (*alloc)(unsigned long long);
        void (*releaseAll)();
        SimplePoolKind kind;
    } rows[] = {
        {AllocSubPatch, FreeSubPatchMemory, SimplePoolKind::SubPatch},
        {AllocTemp, FreeTempMemory, SimplePoolKind::Temp},
        {AllocZ, FreeZBufferMemory, SimplePoolKind::Z},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.kind));
        FreeAllPools();
        const unsigned long long ram = TotalRAM();
        row.alloc(3);
        EXPECT_EQ(NamedSimplePool(row.kind).GetTotal(), kSimpleChunk);
        EXPECT_EQ(TotalRAM() - ram, kSimpleChunk + 8);
        if (row.kind == SimplePoolKind::SubPatch) {
            EXPECT_EQ(GetSubPatchPoolAmount(), kSimpleChunk);
        }
        row.releaseAll();
        EXPECT_EQ(TotalRAM(), ram);
        EXPECT_EQ(NamedSimplePool(row.kind).GetTotal(), 0u);
    }
}

// The RAM mark is a snapshot, not a running maximum.
TEST(NamedPools, PeakRAMIsASnapshot) {
    SetPeakRAM(true);
    EXPECT_EQ(PeakRAM(), 0u);
    SetPeakRAM(false);
    const unsigned long long mark = PeakRAM();
    EXPECT_EQ(mark, TotalRAM());
    void* p = PlatformAlloc(5000);
    EXPECT_EQ(PeakRAM(), mark);
    SetPeakRAM(false);
    EXPECT_EQ(PeakRAM(), mark + 5008);
    PlatformFree(p);
    EXPECT_EQ(PeakRAM(), mark + 5008);
    SetPeakRAM(true);
    EXPECT_EQ(PeakRAM(), 0u);
    EXPECT_TRUE(IsMemoryAvailable());
}

} // namespace
