// RetainedRegions.cpp - the kept regions: a short list, oldest first, under one lock.

#include "memory/RetainedRegions.h"

#include "memory/Immortal.h"
#include "platform/Platform.h"

#include <cstddef>

#if FILEIO_POISON_KEPT_REGIONS
#include <sanitizer/asan_interface.h>
#endif

namespace fileio::detail {

namespace {

void Poison(unsigned char* region, unsigned long long bytes) noexcept {
#if FILEIO_POISON_KEPT_REGIONS
    __asan_poison_memory_region(region, static_cast<std::size_t>(bytes));
#else
    static_cast<void>(region);
    static_cast<void>(bytes);
#endif
}

void Unpoison(unsigned char* region, unsigned long long bytes) noexcept {
#if FILEIO_POISON_KEPT_REGIONS
    __asan_unpoison_memory_region(region, static_cast<std::size_t>(bytes));
#else
    static_cast<void>(region);
    static_cast<void>(bytes);
#endif
}

struct Region {
    unsigned char* start;
    unsigned long long bytes;
};

class KeptRegions {
public:
    unsigned char* Take(unsigned long long bytes) noexcept {
        platform::MutexGuard guard(m_mutex);
        // The newest first: its pages are the likeliest to be warm.
        for (int i = m_count - 1; i >= 0; --i) {
            if (m_regions[i].bytes != bytes)
                continue;
            unsigned char* start = m_regions[i].start;
            Remove(i);
            Unpoison(start, bytes);
            return start;
        }
        return nullptr;
    }

    // Returns the regions that make room for this one (and this one itself when it is
    // larger than the cap), for the caller to give back outside the lock.
    int Keep(Region region, Region (&released)[kRetainedRegionSlots + 1]) noexcept {
        if (region.bytes > kRetainedBytesCap) {
            released[0] = region;
            return 1;
        }
        platform::MutexGuard guard(m_mutex);
        int count = 0;
        while (m_count == kRetainedRegionSlots || m_bytes + region.bytes > kRetainedBytesCap) {
            released[count++] = m_regions[0];
            Remove(0);
        }
        Poison(region.start, region.bytes);
        m_regions[m_count++] = region;
        m_bytes += region.bytes;
        return count;
    }

    int TakeAll(Region (&released)[kRetainedRegionSlots + 1]) noexcept {
        platform::MutexGuard guard(m_mutex);
        const int count = m_count;
        for (int i = 0; i < count; ++i)
            released[i] = m_regions[i];
        m_count = 0;
        m_bytes = 0;
        return count;
    }

    unsigned long long Bytes() noexcept {
        platform::MutexGuard guard(m_mutex);
        return m_bytes;
    }

    int Count() noexcept {
        platform::MutexGuard guard(m_mutex);
        return m_count;
    }

private:
    void Remove(int i) noexcept {
        m_bytes -= m_regions[i].bytes;
        for (; i + 1 < m_count; ++i)
            m_regions[i] = m_regions[i + 1];
        --m_count;
    }

    platform::Mutex m_mutex;
    Region m_regions[kRetainedRegionSlots] = {};
    int m_count = 0;
    unsigned long long m_bytes = 0;
};

KeptRegions& Kept() noexcept {
    static Immortal<KeptRegions> kept;
    return kept.Get();
}

void GiveBack(const Region* regions, int count) noexcept {
    for (int i = 0; i < count; ++i) {
        Unpoison(regions[i].start, regions[i].bytes);
        platform::ReleaseSystemMemory(regions[i].start);
    }
}

} // namespace

unsigned char* TakeRetainedRegion(unsigned long long systemBytes) noexcept {
    return Kept().Take(systemBytes);
}

void RetainRegion(unsigned char* region, unsigned long long systemBytes) noexcept {
    Region released[kRetainedRegionSlots + 1];
    GiveBack(released, Kept().Keep(Region{region, systemBytes}, released));
}

unsigned long long RetainedBytes() noexcept {
    return Kept().Bytes();
}

int RetainedRegionCount() noexcept {
    return Kept().Count();
}

void ReleaseRetainedRegions() noexcept {
    Region released[kRetainedRegionSlots + 1];
    GiveBack(released, Kept().TakeAll(released));
}

} // namespace fileio::detail
