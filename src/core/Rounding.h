// Rounding.h - conversions from floating point to integers that give the same result on
// every platform, at every optimisation level and in every rounding mode.
//
// The processor's own conversions (and the runtime's llrint) follow the rounding mode that
// the host may have changed, and converting a value outside the target's range is undefined
// in C++. These helpers use only exact operations, so they depend on neither; for values
// outside the range they return what an x86-64 processor returns, the "integer indefinite"
// value (the smallest integer of the type).
#pragma once

#include <climits>

namespace fileio::detail {

/// Rounds to the nearest integer, ties to even (llrint in the default rounding mode). NaN
/// and values outside the signed 64-bit range give LLONG_MIN.
constexpr long long RoundToNearestEven(double x) noexcept {
    // 2^63: every double below it in magnitude converts to a long long.
    constexpr double limit = 9223372036854775808.0;
    if (!(x > -limit && x < limit))
        return LLONG_MIN;
    long long whole = static_cast<long long>(x); // toward zero, exact in any mode
    // Exact: below 2^52 the fraction of x is representable, above it x is whole.
    const double fraction = x - static_cast<double>(whole);
    if (fraction > 0.5 || (fraction == 0.5 && (whole & 1) != 0))
        ++whole;
    else if (fraction < -0.5 || (fraction == -0.5 && (whole & 1) != 0))
        --whole;
    return whole;
}

/// Truncates toward zero. NaN and values outside the int range give INT_MIN.
constexpr int TruncateToInt(double x) noexcept {
    if (!(x > -2147483649.0 && x < 2147483648.0))
        return INT_MIN;
    return static_cast<int>(x);
}

} // namespace fileio::detail
