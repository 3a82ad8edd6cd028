// Rounding.h - conversions from floating point to integers that give the same result on
// every platform, at every optimisation level and in every rounding mode.
//
// The processor's own conversions (and the runtime's llrint) follow the rounding mode that
// the host may have changed, and converting a value outside the target's range is undefined
// in C++. These helpers use only exact operations, so they depend on neither; for values
// outside the range they return what an x86-64 processor returns, the "integer indefinite"
// value (the smallest integer of the type).
#pragma once

#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>

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

/// a x b + c rounded once, as std::fma gives it in the default rounding mode, on every
/// platform: a runtime's fma without the processor's fused instruction may round twice
/// (MinGW's gives 218714062.50000003 for 5/48 x 135000 + 218700000, not 218714062.5). The
/// product and the sum are made exact as pairs of doubles, and their low parts are added
/// with rounding to odd, so that the last addition rounds once (Boldo and Melquiond's
/// emulation). Where the pairs could overflow or lose bits below the normal range, and for
/// infinities and NaN, the runtime's fma answers.
inline double FusedMultiplyAdd(double a, double b, double c) noexcept {
    // Beyond these the split below overflows, or the low parts fall below the normal range.
    constexpr double kLargest = 0x1p995;
    constexpr double kSmallest = 0x1p-900;
    const double product = a * b;
    const double magnitude = std::fabs(product);
    if (!(std::fabs(a) < kLargest && std::fabs(b) < kLargest && std::fabs(c) < kLargest &&
          (magnitude > kSmallest || product == 0)))
        return std::fma(a, b, c);

    // Veltkamp's split: x = high + low, each with at most 26 significant bits.
    constexpr double kSplitter = 134217729.0; // 2^27 + 1
    const auto split = [](double x, double& high, double& low) {
        const double scaled = kSplitter * x;
        high = scaled - (scaled - x);
        low = x - high;
    };
    // Knuth's sum: x + y = sum + error exactly.
    const auto exactSum = [](double x, double y, double& error) {
        const double sum = x + y;
        const double virtualY = sum - x;
        error = (x - (sum - virtualY)) + (y - virtualY);
        return sum;
    };
    double aHigh, aLow, bHigh, bLow;
    split(a, aHigh, aLow);
    split(b, bHigh, bLow);
    // Dekker's product: a x b = product + productLow exactly.
    const double productLow =
        ((aHigh * bHigh - product) + aHigh * bLow + aLow * bHigh) + aLow * bLow;
    double sumLow;
    const double sum = exactSum(c, product, sumLow);
    double error;
    double low = exactSum(sumLow, productLow, error);
    // Rounding to odd: an inexact sum with an even last bit moves to its odd neighbour
    // on the side of the exact value.
    if (error != 0 && (std::bit_cast<std::uint64_t>(low) & 1) == 0)
        low = std::nextafter(low, error > 0 ? HUGE_VAL : -HUGE_VAL);
    return sum + low;
}

} // namespace fileio::detail
