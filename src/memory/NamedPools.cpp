// NamedPools.cpp - the named pool objects and the functions of each kind.

#include "fileio/memory/NamedPools.h"
#include "memory/Immortal.h"
#include "memory/NamedPoolObjects.h"
#include "memory/PoolReport.h"
#include "memory/RetainedRegions.h"

#include <atomic>

namespace {

using fileio::detail::Immortal;
using fileio::detail::NamedSimplePool;
using fileio::detail::NamedVarnPool;
using fileio::detail::SimplePoolKind;
using fileio::detail::VarnPoolKind;

OGLPool& OGLBuffer() noexcept {
    static Immortal<OGLPool> buffer;
    return buffer.Get();
}

// The RAM mark and the swapping switch belong to the host's main thread; they are atomics
// only so that a stray read from another thread is not undefined behaviour.
constinit std::atomic<unsigned long long> g_ramMark{0};
constinit std::atomic<bool> g_swapping{false};

} // namespace

namespace fileio::detail {

VarnPool& NamedVarnPool(VarnPoolKind kind) noexcept {
    static Immortal<VarnPool> pools[kVarnPoolKindCount];
    return pools[static_cast<int>(kind)].Get();
}

SimplePool& NamedSimplePool(SimplePoolKind kind) noexcept {
    static Immortal<SimplePool> pools[kSimplePoolKindCount];
    return pools[static_cast<int>(kind)].Get();
}

} // namespace fileio::detail

// ---- the VarnPool kinds ------------------------------------------------------------------

void* AllocString(unsigned long long n) {
    // The extra byte for the NUL; a length of 2^64 - 1 stays an impossible request.
    const unsigned long long withNul = n + 1 != 0 ? n + 1 : n;
    return NamedVarnPool(VarnPoolKind::String).VarnAlloc(withNul);
}

void FreeString(void* p) {
    NamedVarnPool(VarnPoolKind::String).VarnFree(p);
}

#define FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Kind)                                                    \
    void* Alloc##Kind(unsigned long long n) {                                                      \
        return NamedVarnPool(VarnPoolKind::Kind).VarnAlloc(n);                                     \
    }                                                                                              \
    void Free##Kind(void* p) {                                                                     \
        NamedVarnPool(VarnPoolKind::Kind).VarnFree(p);                                             \
    }

FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Act)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Att)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Bitmap)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Chor)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Ext)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(GAssist)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(LBuff)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Particle)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Patch)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Poly)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Prop)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Radiosity)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Seg)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Shadow)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Test)
FILEIO_DEFINE_VARN_POOL_FUNCTIONS(Undo)

#undef FILEIO_DEFINE_VARN_POOL_FUNCTIONS

void FreeLBuffMemory() {
    NamedVarnPool(VarnPoolKind::LBuff).FreePool();
}
void FreeRadiosityMemory() {
    NamedVarnPool(VarnPoolKind::Radiosity).FreePool();
}
void FreeShadowMemory() {
    NamedVarnPool(VarnPoolKind::Shadow).FreePool();
}

void FreePatchMemory() {
    VarnPool& patch = NamedVarnPool(VarnPoolKind::Patch);
    if (patch.IsNotEmpty())
        patch.FreePool();
}

unsigned long long GetPatchAmount() {
    return NamedVarnPool(VarnPoolKind::Patch).GetTotal();
}

// ---- the SimplePool kinds -------------------------------------------------------------------

void* AllocSubPatch(unsigned long long n) {
    return NamedSimplePool(SimplePoolKind::SubPatch).Alloc(n);
}
void* AllocTemp(unsigned long long n) {
    return NamedSimplePool(SimplePoolKind::Temp).Alloc(n);
}
void* AllocZ(unsigned long long n) {
    return NamedSimplePool(SimplePoolKind::Z).Alloc(n);
}
void FreeSubPatchMemory() {
    NamedSimplePool(SimplePoolKind::SubPatch).FreePool();
}
void FreeTempMemory() {
    NamedSimplePool(SimplePoolKind::Temp).FreePool();
}
void FreeZBufferMemory() {
    NamedSimplePool(SimplePoolKind::Z).FreePool();
}

unsigned long long GetSubPatchPoolAmount() {
    return NamedSimplePool(SimplePoolKind::SubPatch).GetTotal();
}

// ---- the OGL buffer and all scratch memory --------------------------------------------------

void* AllocOGL(unsigned long long n) {
    return OGLBuffer().Alloc(n);
}
void FreeOGL() {
    OGLBuffer().FreePool();
}

void FreeAllPools() {
    FreeZBufferMemory();
    FreeSubPatchMemory();
    FreeTempMemory();
    FreeOGL();
    // The released blocks kept for reuse below the figures go back to the system too.
    fileio::detail::ReleaseRetainedRegions();
}

// ---- process-wide figures and switches ----------------------------------------------------------

void SetPeakRAM(bool reset) {
    g_ramMark.store(reset ? 0 : TotalRAM(), std::memory_order_relaxed);
}
unsigned long long PeakRAM() {
    return g_ramMark.load(std::memory_order_relaxed);
}

bool IsMemoryAvailable() {
    return true;
}

void fileio::detail::SetSwappingSwitch(bool on) noexcept {
    g_swapping.store(on, std::memory_order_relaxed);
}
int IsSwapping() {
    return g_swapping.load(std::memory_order_relaxed) ? 1 : 0;
}
