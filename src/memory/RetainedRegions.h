// RetainedRegions.h - the few system regions that PlatformAlloc keeps after their release,
// so that a pool block which comes and goes does not go to the system and back each time.
//
// Every PlatformAlloc allocation lives in a region of system memory eight times its
// accounted size (PlatformAlloc.cpp). When a VarnPool block becomes wholly free the pool
// returns it at once, as its rules say; a program that makes one string at a time would
// then take a fresh region from the system and zero 128 KiB of it for every string. So a
// region released with PlatformFreeZeroed, whose accounted bytes the caller has cleared, is
// kept instead of freed, and the next PlatformAlloc of the same accounted size takes it
// back without asking the system and without filling it.
//
// Kept regions lie below every figure: PlatformFreeZeroed subtracts the accounted size from
// TotalRAM exactly as PlatformFree does, and the pool totals and the memory report never
// see them. What is kept is bounded: at most kRetainedBytesCap bytes of system memory (the
// regions' full sizes, slack included) in at most kRetainedRegionSlots regions. Keeping a
// region beyond either bound gives back the oldest kept ones first; a region larger than
// the cap is never kept. FreeAllPools gives back everything kept.
//
// Under AddressSanitizer a kept region is poisoned, so that a stale pointer into a block the
// pool has released is still reported.
//
// Thread safety: every function may be called from any thread.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define FILEIO_POISON_KEPT_REGIONS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FILEIO_POISON_KEPT_REGIONS 1
#endif
#endif
#ifndef FILEIO_POISON_KEPT_REGIONS
#define FILEIO_POISON_KEPT_REGIONS 0
#endif

namespace fileio::detail {

/// True when kept regions are poisoned (an AddressSanitizer build).
inline constexpr bool kKeptRegionsPoisoned = FILEIO_POISON_KEPT_REGIONS != 0;

/// The most system memory kept: four regions of standard VarnPool blocks (each 131,072
/// accounted bytes, asked of the system eightfold).
inline constexpr unsigned long long kRetainedBytesCap = 4ULL << 20;
/// The most regions kept, whatever their sizes.
inline constexpr int kRetainedRegionSlots = 4;

/// Releases an allocation of PlatformAlloc as PlatformFree does (TotalRAM falls by its
/// header word), but may keep its region for reuse by a PlatformAlloc of the same size.
/// Null is ignored.
/// REQUIRES: p is null or came from PlatformAlloc and was not released yet, and every one
/// of its accounted bytes behind the header word is zero again.
void PlatformFreeZeroed(void* p) noexcept;

/// A kept region of exactly `systemBytes` bytes whose accounted bytes behind the header
/// word are zero, taken out of the kept set; null when none is kept.
unsigned char* TakeRetainedRegion(unsigned long long systemBytes) noexcept;

/// Keeps a region of `systemBytes` bytes from the system allocator, giving back the oldest
/// kept regions while the bounds would be exceeded, or gives this one back at once when it
/// is larger than the cap.
/// REQUIRES: its accounted bytes behind the header word are zero.
void RetainRegion(unsigned char* region, unsigned long long systemBytes) noexcept;

/// The system memory kept now, in bytes; never more than kRetainedBytesCap.
[[nodiscard]] unsigned long long RetainedBytes() noexcept;
/// The number of regions kept now; never more than kRetainedRegionSlots.
[[nodiscard]] int RetainedRegionCount() noexcept;

/// Gives every kept region back to the system.
void ReleaseRetainedRegions() noexcept;

} // namespace fileio::detail
