// NamedPools.h - the library's named pools of the suite's object kinds, and the
// process-wide memory figures.
//
// Each kind of object lives in a pool of its own, so that its memory can be measured,
// reported and thrown away at once. Seventeen kinds live in a VarnPool (Pool.h): their
// allocations are zero-filled, may be freed one at a time, and are safe to use from several
// threads. Three scratch kinds (SubPatch, Temp, Z) live in a SimplePool: they are never
// freed one at a time, only all at once. One more buffer, the OGL buffer, is held alone.
//
// Lifetime: every pool is built in static storage on its first use and is never destroyed.
// Host code and other libraries may therefore allocate from static initialisers that run
// before this library's own, and a host may still free strings from static destructors
// that run after the library's statics are gone, at process exit. The memory still held
// at exit goes back to the system with the process.
//
// Thread safety: the VarnPool kinds may be used from any thread. The SimplePool kinds, the
// OGL buffer, the RAM mark and the swapping flag belong to one thread at a time (the host's
// main thread). TotalRAM and the pool figures may be read at any time; each is a snapshot.
#pragma once

#include "fileio/Export.h"

// ---- the VarnPool kinds ------------------------------------------------------------------
// AllocX(n) returns n zero-filled bytes from pool X, aligned to 8, or null for n = 0; the
// pool's figure rises by n + 16 rounded up to a multiple of 8. FreeX(p) gives such an
// allocation back to pool X; null is ignored, and a pointer that did not come from pool X
// ends the process. Exhausted memory ends the process.

/// The string pool: n + 1 zero-filled bytes, so a caller passing a text length always has
/// room for the terminating NUL. AllocString(0) returns one zero byte (a 24-byte chunk).
FILEIO_API void* AllocString(unsigned long long n);
/// Gives a string buffer back to the string pool; null is ignored.
FILEIO_API void FreeString(void* p);

FILEIO_API void* AllocAct(unsigned long long n);
FILEIO_API void FreeAct(void* p);
FILEIO_API void* AllocAtt(unsigned long long n);
FILEIO_API void FreeAtt(void* p);
FILEIO_API void* AllocBitmap(unsigned long long n);
FILEIO_API void FreeBitmap(void* p);
FILEIO_API void* AllocChor(unsigned long long n);
FILEIO_API void FreeChor(void* p);
FILEIO_API void* AllocExt(unsigned long long n);
FILEIO_API void FreeExt(void* p);
FILEIO_API void* AllocGAssist(unsigned long long n);
FILEIO_API void FreeGAssist(void* p);
FILEIO_API void* AllocLBuff(unsigned long long n);
FILEIO_API void FreeLBuff(void* p);
FILEIO_API void* AllocParticle(unsigned long long n);
FILEIO_API void FreeParticle(void* p);
FILEIO_API void* AllocPatch(unsigned long long n);
FILEIO_API void FreePatch(void* p);
FILEIO_API void* AllocPoly(unsigned long long n);
FILEIO_API void FreePoly(void* p);
FILEIO_API void* AllocProp(unsigned long long n);
FILEIO_API void FreeProp(void* p);
FILEIO_API void* AllocRadiosity(unsigned long long n);
FILEIO_API void FreeRadiosity(void* p);
FILEIO_API void* AllocSeg(unsigned long long n);
FILEIO_API void FreeSeg(void* p);
FILEIO_API void* AllocShadow(unsigned long long n);
FILEIO_API void FreeShadow(void* p);
FILEIO_API void* AllocTest(unsigned long long n);
FILEIO_API void FreeTest(void* p);
FILEIO_API void* AllocUndo(unsigned long long n);
FILEIO_API void FreeUndo(void* p);

/// Releases everything in the LBuff pool; its allocations become invalid.
FILEIO_API void FreeLBuffMemory();
/// Releases everything in the Radiosity pool; its allocations become invalid.
FILEIO_API void FreeRadiosityMemory();
/// Releases everything in the Shadow pool; its allocations become invalid.
FILEIO_API void FreeShadowMemory();
/// Releases everything in the Patch pool, but only while the pool holds a block: the
/// descriptors of an already empty pool stay.
FILEIO_API void FreePatchMemory();

/// The Patch pool's figure: its allocations' sizes, chunk headers included.
FILEIO_API unsigned long long GetPatchAmount();

// ---- the SimplePool kinds -------------------------------------------------------------------
// AllocX(n) returns n zero-filled bytes from scratch pool X (SimplePool::Alloc), or null
// for n = 0. They are given back only all at once, by FreeXMemory() or FreeAllPools().

FILEIO_API void* AllocSubPatch(unsigned long long n);
FILEIO_API void* AllocTemp(unsigned long long n);
FILEIO_API void* AllocZ(unsigned long long n);
FILEIO_API void FreeSubPatchMemory();
FILEIO_API void FreeTempMemory();
FILEIO_API void FreeZBufferMemory();

/// The SubPatch pool's figure: the bytes of the chunks it took, link words included.
FILEIO_API unsigned long long GetSubPatchPoolAmount();

// ---- the OGL buffer ---------------------------------------------------------------------------

/// Takes a zero-filled buffer of n bytes rounded up to a multiple of 8 and holds it as the
/// OGL buffer; null (and nothing changed) when that rounds to 0. A buffer already held is
/// not released: call FreeOGL() first.
FILEIO_API void* AllocOGL(unsigned long long n);
/// Releases the OGL buffer, if one is held.
FILEIO_API void FreeOGL();

// ---- all scratch memory -----------------------------------------------------------------------

/// Drops all scratch memory: releases the Z, SubPatch and Temp pools and the OGL buffer, in
/// that order, then gives back to the system the few emptied pool blocks kept for reuse (see
/// Pool.h), which no figure counts. The VarnPool kinds are left alone: their contents,
/// strings among them, stay valid.
FILEIO_API void FreeAllPools();

// ---- process-wide figures and switches ----------------------------------------------------------

/// All memory obtained through PlatformAlloc, by every pool, block and descriptor arrays
/// included.
FILEIO_API unsigned long long TotalRAM();

/// reset true sets the RAM mark to 0; reset false sets it to the current TotalRAM(). The
/// mark is a snapshot: no allocation or release moves it.
FILEIO_API void SetPeakRAM(bool reset);
/// The RAM mark last set by SetPeakRAM (0 at start).
FILEIO_API unsigned long long PeakRAM();

/// Always true: exhaustion is never reported, the allocators end the process instead.
FILEIO_API bool IsMemoryAvailable();

/// Sets the process-wide swapping switch: on (any non-zero value) or off, and sends the
/// line "Swapping Set" to the installed log handler (the same line either way; nothing
/// without a handler). The library attaches no behaviour of its own to the switch; the
/// suite's modules consult it.
FILEIO_API void SetSwapping(int on);
/// The swapping switch: 1 or 0.
FILEIO_API int IsSwapping();
