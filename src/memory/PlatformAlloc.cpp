// PlatformAlloc.cpp - counted system allocation and the process-wide byte counter.

#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"
#include "memory/RetainedRegions.h"
#include "memory/SizeArithmetic.h"
#include "platform/Platform.h"

#include <atomic>
#include <cstring>
#include <limits>

namespace {

// The sum of the header words of all live platform allocations. Constant-initialised, so it
// is valid before any dynamic initialiser of any library or of the host runs, and it has
// no destructor, so allocations released at process exit still find it. Updates are
// relaxed atomic additions: pools on different threads may allocate at the same time.
constinit std::atomic<unsigned long long> g_totalRam{0};

constexpr unsigned long long kHeaderWord = sizeof(unsigned long long);

// Every allocation asks the system for eight times its accounted bytes. The slack behind
// the accounted bytes is relied upon: a VarnPool block whose tail is exactly 8 bytes writes
// that tail's 16-byte chunk header 8 bytes past the block's end.
constexpr unsigned long long kSlackFactor = 8;

// The region of an allocation, its header word read and subtracted from the counter.
struct Released {
    unsigned char* region;
    unsigned long long accounted;
};

Released Release(void* p) noexcept {
    unsigned char* raw = static_cast<unsigned char*>(p) - kHeaderWord;
    unsigned long long accounted;
    std::memcpy(&accounted, raw, kHeaderWord);
    g_totalRam.fetch_sub(accounted, std::memory_order_relaxed);
    return {raw, accounted};
}

} // namespace

void* PlatformAlloc(unsigned long long n) {
    const unsigned long long accounted = fileio::detail::AddSizes(n, kHeaderWord);
    if (accounted > std::numeric_limits<unsigned long long>::max() / kSlackFactor)
        fileio::detail::OutOfMemory();
    // A kept region of this size is zero already; a fresh one is filled here.
    unsigned char* raw = fileio::detail::TakeRetainedRegion(accounted * kSlackFactor);
    if (raw == nullptr) {
        raw = static_cast<unsigned char*>(
            fileio::platform::AllocateSystemMemory(accounted * kSlackFactor));
        std::memset(raw, 0, static_cast<std::size_t>(accounted));
    }
    std::memcpy(raw, &accounted, kHeaderWord);
    g_totalRam.fetch_add(accounted, std::memory_order_relaxed);
    return raw + kHeaderWord;
}

void PlatformFree(void* p) {
    if (p == nullptr)
        return;
    fileio::platform::ReleaseSystemMemory(Release(p).region);
}

void fileio::detail::PlatformFreeZeroed(void* p) noexcept {
    if (p == nullptr)
        return;
    const Released released = Release(p);
    RetainRegion(released.region, released.accounted * kSlackFactor);
}

unsigned long long TotalRAM() {
    return g_totalRam.load(std::memory_order_relaxed);
}
