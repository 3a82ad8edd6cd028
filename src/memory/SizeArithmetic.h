// SizeArithmetic.h - overflow-checked size arithmetic of the pools.
//
// A request whose size does not fit in 64 bits after the pools add their headers and round
// it could never be met by the system: it ends the process exactly as exhausted memory does.
#pragma once

#include "platform/Platform.h"

#include <limits>

namespace fileio::detail {

/// Ends the process for a memory request that cannot be met.
[[noreturn]] inline void OutOfMemory() noexcept {
    platform::Fatal("FileIO: out of memory");
}

/// a + b, or the end of the process when the sum does not fit in 64 bits.
[[nodiscard]] inline unsigned long long AddSizes(unsigned long long a,
                                                 unsigned long long b) noexcept {
    if (a > std::numeric_limits<unsigned long long>::max() - b)
        OutOfMemory();
    return a + b;
}

/// n rounded up to a multiple of 8, or the end of the process when that does not fit.
[[nodiscard]] inline unsigned long long RoundUpTo8(unsigned long long n) noexcept {
    return AddSizes(n, 7) & ~7ULL;
}

} // namespace fileio::detail
