// NamedPoolsTest.cpp - the named pools, their figures and the process-wide switches.

#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"
#include "memory/NamedPoolObjects.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace fileio::detail;

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

unsigned long long VarnTotal(int kind) {
    return NamedVarnPool(static_cast<VarnPoolKind>(kind)).GetTotal();
}

// Each VarnPool kind's functions reach that kind's pool and no other: one allocation of 8
// bytes of each kind grows each pool by one chunk of 8 + 16 bytes, the string pool's by a
// chunk of 32, as AllocString(n) reserves n + 1 bytes for the NUL. A free into any other pool
// would end the process, so freeing each through its own kind shows the frees' pools too.
TEST(NamedPools, EachKindHasItsOwnVarnPool) {
    const struct {
        void* (*alloc)(unsigned long long);
        void (*release)(void*);
    } rows[] = {
        {AllocAct, FreeAct},     {AllocAtt, FreeAtt},           {AllocBitmap, FreeBitmap},
        {AllocChor, FreeChor},   {AllocExt, FreeExt},           {AllocGAssist, FreeGAssist},
        {AllocLBuff, FreeLBuff}, {AllocParticle, FreeParticle}, {AllocPatch, FreePatch},
        {AllocPoly, FreePoly},   {AllocProp, FreeProp},         {AllocRadiosity, FreeRadiosity},
        {AllocSeg, FreeSeg},     {AllocShadow, FreeShadow},     {AllocTest, FreeTest},
        {AllocUndo, FreeUndo},   {AllocString, FreeString}};
    unsigned long long totals[kVarnPoolKindCount];
    for (int k = 0; k < kVarnPoolKindCount; ++k)
        totals[k] = VarnTotal(k);
    void* held[std::size(rows)];
    for (std::size_t i = 0; i < std::size(rows); ++i)
        held[i] = rows[i].alloc(8);
    for (int k = 0; k < kVarnPoolKindCount; ++k)
        EXPECT_EQ(VarnTotal(k) - totals[k], k == static_cast<int>(VarnPoolKind::String) ? 32u : 24u)
            << "pool " << k;
    EXPECT_EQ(GetPatchAmount(), totals[static_cast<int>(VarnPoolKind::Patch)] + 24);
    for (std::size_t i = 0; i < std::size(rows); ++i)
        rows[i].release(held[i]);
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
        row.alloc(1000);
        row.alloc(200000);
        EXPECT_EQ(TotalRAM() - ram, kBlockAndArray + (200016 + 8));
        row.releaseAll();
        EXPECT_EQ(TotalRAM(), ram);

        row.release(row.alloc(10)); // no block left, only the descriptor array
        row.releaseAll();
        EXPECT_EQ(TotalRAM() - ram, row.releasesAnEmptyPool ? 0u : 6416u);
        pool.FreePool();
    }
}

// Each scratch pool's release function empties that pool; FreeAllPools empties all three and
// the OGL buffer, and leaves the VarnPools, and what lives in them, alone.
TEST(NamedPools, ScratchMemoryIsReleasedAndVarnPoolsAreLeftAlone) {
    void* act = AllocAct(64);
    const unsigned long long actTotal = VarnTotal(static_cast<int>(VarnPoolKind::Act));
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
        EXPECT_EQ(TotalRAM() - ram, kSimpleChunk + 8);
        row.releaseAll();
        EXPECT_EQ(TotalRAM(), ram);
    }
    const unsigned long long ram = TotalRAM();
    AllocZ(100);
    AllocSubPatch(100);
    EXPECT_EQ(GetSubPatchPoolAmount(), kSimpleChunk);
    AllocTemp(100);
    AllocOGL(100);
    EXPECT_EQ(TotalRAM() - ram, 3 * (kSimpleChunk + 8) + (104 + 8));
    FreeAllPools();
    EXPECT_EQ(TotalRAM(), ram);
    EXPECT_EQ(VarnTotal(static_cast<int>(VarnPoolKind::Act)), actTotal);
    FreeAct(act);
}

// The RAM mark is a snapshot, not a running maximum.
TEST(NamedPools, PeakRAMIsASnapshot) {
    SetPeakRAM(false);
    const unsigned long long mark = PeakRAM();
    EXPECT_EQ(mark, TotalRAM());
    void* p = PlatformAlloc(5000);
    EXPECT_EQ(PeakRAM(), mark);
    PlatformFree(p);
    SetPeakRAM(true);
    EXPECT_EQ(PeakRAM(), 0u);
    EXPECT_TRUE(IsMemoryAvailable());
}

} // namespace
