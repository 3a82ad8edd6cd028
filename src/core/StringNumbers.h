// StringNumbers.h - the library's number texts, made and read without any locale.
//
// Formatting gives exactly the text that printf makes in the "C" locale for "%.*g" and
// "%.*f" (correctly rounded from the exact binary value, ties to even), with the suite's
// spellings of the special values: "inf", "-inf", "nan", "-nan", "-nan(ind)" (the default
// indeterminate NaN: sign set, only the top mantissa bit set), "nan(snan)" and "-nan(snan)"
// (signalling NaNs; the top mantissa bit clear).
//
// Parsing reads as the C runtime's strtod / strtof / strtol / strtoul do in the "C" locale:
// leading white space, an optional sign, the longest prefix that forms a number; no number
// gives 0. See String.h ("conversions to numbers") for the full rules.
//
// String's number constructors and Str_ato* members, the time texts and the stream readers
// all go through these. Internal: not installed, not exported. Thread safe: no state.
#pragma once

#include <cstddef>
#include <string_view>

namespace fileio::detail {

/// Room for every text the formatters make: "%.40f" of the largest double is 309 digits,
/// a point, 40 decimals, a sign and a NUL.
inline constexpr std::size_t kNumberTextSize = 400;

/// The most digits the formatters produce after the point or in total; larger precisions
/// are treated as this.
inline constexpr int kMaxPrecision = 40;

/// Writes "%.*g" of value into out (kNumberTextSize bytes), NUL-terminated, and returns
/// the length. A negative precision means 6, 0 means 1.
std::size_t FormatGeneral(char* out, double value, int precision) noexcept;
std::size_t FormatGeneral(char* out, float value, int precision) noexcept;

/// Writes "%.*f" of value into out (kNumberTextSize bytes), NUL-terminated, and returns
/// the length. A negative decimals count means 6.
std::size_t FormatFixed(char* out, double value, int decimals) noexcept;
std::size_t FormatFixed(char* out, float value, int decimals) noexcept;

/// Removes trailing "0" characters and then a trailing "." from text when it contains a "."
/// and no exponent ("e+" or "e-"); returns the new length and re-terminates.
/// "1.500" -> "1.5", "2.00" -> "2", "100" -> "100", "1.0e+10" stays.
std::size_t TrimFractionZeros(char* text, std::size_t length) noexcept;

/// strtod / strtof of text as the "C" locale reads them; text need not be terminated.
double ParseDouble(std::string_view text) noexcept;
float ParseFloat(std::string_view text) noexcept;

/// strtol-style decimal reading, clamped to [min, max] on overflow.
long long ParseSigned(std::string_view text, long long min, long long max) noexcept;

/// strtoul-style decimal reading for an unsigned type whose largest value is max (2^k - 1):
/// a "-" negates modulo max + 1; a magnitude above max gives max whatever the sign.
unsigned long long ParseUnsigned(std::string_view text, unsigned long long max) noexcept;

} // namespace fileio::detail
