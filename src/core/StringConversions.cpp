// StringConversions.cpp - reading numbers from text as the C runtime's strto* functions do
// in the "C" locale, and String's Str_ato* members built on them.
//
// Most floats in the suite's files are short decimals (a float's text has at most nine
// significant digits): those are read here directly and exactly, with one correctly rounded
// multiplication or division of two exact doubles. Every other text goes to
// std::from_chars, which does the correctly rounded work for any length; around it sit the
// parts of strtod that from_chars leaves out: white space, a "+" sign, the "0x" prefix,
// "inf"/"nan" spellings, and what overflow and underflow give.

#include "core/StringNumbers.h"

#include "core/StringAscii.h"
#include "fileio/core/String.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace fileio::detail {
namespace {

/// Skips leading white space and an optional sign.
std::string_view SkipSpaceAndSign(std::string_view text, bool& negative) noexcept {
    std::size_t i = 0;
    while (i < text.size() && IsSpace(text[i]))
        ++i;
    negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        negative = text[i] == '-';
        ++i;
    }
    return text.substr(i);
}

int DigitValue(char c) noexcept {
    if (IsDigit(c))
        return c - '0';
    const char lower = ToLower(c);
    return (lower >= 'a' && lower <= 'z') ? lower - 'a' + 10 : 99;
}

/// An unsigned number read from the leading digits of a text.
struct Digits {
    unsigned long long value = 0;
    bool overflow = false; // the digits exceed 2^64 - 1; value is then 2^64 - 1
    std::size_t used = 0;  // how many characters were digits
};

Digits ReadDigits(std::string_view text, int base) noexcept {
    constexpr unsigned long long kMax = std::numeric_limits<unsigned long long>::max();
    const auto unsignedBase = static_cast<unsigned long long>(base);
    // value * base + digit overflows exactly when value is above kMax / base, or equal to
    // it with a digit above kMax % base.
    const unsigned long long limit = kMax / unsignedBase;
    const unsigned long long lastDigit = kMax % unsignedBase;
    Digits digits;
    for (; digits.used < text.size(); ++digits.used) {
        const int d = DigitValue(text[digits.used]);
        if (d >= base)
            break;
        const auto digit = static_cast<unsigned long long>(d);
        if (digits.value > limit || (digits.value == limit && digit > lastDigit))
            digits.overflow = true;
        digits.value = digits.overflow ? kMax : digits.value * unsignedBase + digit;
    }
    return digits;
}

/// A decimal number of the simple kind: at most kSimpleDigits significant digits, an
/// exponent of at most kSimpleExponentDigits digits. Its value is mantissa * 10^exponent.
struct SimpleDecimal {
    unsigned long long mantissa = 0;
    long exponent = 0;
};

// Nineteen decimal digits always fit 64 bits (10^19 - 1 < 2^64).
constexpr int kSimpleDigits = 19;
constexpr int kSimpleExponentDigits = 6;

/// True when the eight bytes of a word (the first in its lowest byte) are all decimal
/// digits: no byte has high bits other than 0x30, and none goes past 0x39 when 6 is added.
constexpr bool EightDigits(std::uint64_t bytes) noexcept {
    constexpr std::uint64_t kHigh = 0xF0F0F0F0F0F0F0F0;
    constexpr std::uint64_t kSix = 0x0606060606060606;
    constexpr std::uint64_t kThrees = 0x3333333333333333;
    return ((bytes & kHigh) | (((bytes + kSix) & kHigh) >> 4)) == kThrees;
}

/// The value of eight decimal digits held in a word, the first in its lowest byte: pairs,
/// then fours, then the eight are combined with a few multiplications.
constexpr std::uint32_t EightDigitsValue(std::uint64_t bytes) noexcept {
    constexpr std::uint64_t kZeros = 0x3030303030303030;
    constexpr std::uint64_t kPairMask = 0x000000FF000000FF;
    constexpr std::uint64_t kHighPairs = 100 + (1000000ULL << 32);
    constexpr std::uint64_t kLowPairs = 1 + (10000ULL << 32);
    bytes -= kZeros;
    bytes = bytes * 10 + (bytes >> 8); // each byte pair now holds its two-digit value
    return static_cast<std::uint32_t>(
        (((bytes & kPairMask) * kHighPairs) + (((bytes >> 16) & kPairMask) * kLowPairs)) >> 32);
}
static_assert(EightDigitsValue(0x3837363534333231) == 12345678, "digits are read in order");
static_assert(std::endian::native == std::endian::little, "the first byte is the lowest");

/// Reads digits, a point and digits, and an exponent ("e", a sign, digits; an "e" without
/// digits is not part of the number) from the start of text, as strtod does. False when the
/// text holds no digit before its exponent or needs more digits than the simple kind has.
bool ReadSimpleDecimal(std::string_view text, SimpleDecimal& number) noexcept {
    const char* p = text.data();
    const char* const end = p + text.size();
    const auto digitsFrom = [&](unsigned long long& mantissa) {
        constexpr unsigned long long kEightDigits = 100000000;
        const char* first = p;
        for (std::uint64_t bytes; end - p >= 8; p += 8) {
            std::memcpy(&bytes, p, sizeof bytes);
            if (!EightDigits(bytes))
                break;
            mantissa = mantissa * kEightDigits + EightDigitsValue(bytes);
        }
        for (; p != end && IsDigit(*p); ++p)
            mantissa = mantissa * 10 + static_cast<unsigned>(*p - '0');
        return p - first;
    };
    // Leading zeros are not significant, before the point or, when nothing else came
    // before, after it; every digit after the point lowers the exponent. A longer run than
    // the simple kind holds is refused below, so the wrapped mantissa is never used.
    const char* const start = p;
    while (p != end && *p == '0')
        ++p;
    unsigned long long mantissa = 0;
    std::ptrdiff_t significant = digitsFrom(mantissa);
    bool anyDigit = p != start;
    long exponent = 0;
    if (p != end && *p == '.') {
        const char* const fraction = ++p;
        if (significant == 0) {
            while (p != end && *p == '0')
                ++p;
        }
        significant += digitsFrom(mantissa);
        exponent = -static_cast<long>(p - fraction);
        anyDigit = anyDigit || p != fraction;
    }
    if (!anyDigit || significant > kSimpleDigits)
        return false;
    if (end - p >= 2 && (*p == 'e' || *p == 'E')) {
        const char* at = p + 1;
        const bool negative = *at == '-';
        if (*at == '-' || *at == '+')
            ++at;
        const char* const first = at;
        long written = 0;
        for (; at != end && IsDigit(*at); ++at) {
            if (at - first == kSimpleExponentDigits)
                return false;
            written = written * 10 + (*at - '0');
        }
        exponent += negative ? -written : written;
    }
    number = {mantissa, exponent};
    return true;
}

/// The powers of ten that a double holds exactly: 10^22 is the last below 2^53 * 2^22.
constexpr double kExactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr long kLargestExactPower = 22;
/// The largest integer below which every integer is a double.
constexpr unsigned long long kExactIntegers = 1ULL << 53;

/// A float read from the start of text, exactly, when the text is a short decimal: then
/// mantissa and 10^|exponent| are exact doubles, and their one product or quotient is the
/// value correctly rounded to a double. The float is that double rounded again: the two
/// roundings give what one would, except where the double falls exactly halfway between two
/// floats (a float midpoint is itself a double, so the double nearest the true value cannot
/// lie beyond one); that case, like every longer or larger text, is left to the general
/// path (false). Every value reached here lies in the normal range of a float.
bool ReadShortFloat(std::string_view text, float& value) noexcept {
    SimpleDecimal number;
    if (!ReadSimpleDecimal(text, number))
        return false;
    if (number.mantissa == 0) {
        value = 0; // whatever the exponent
        return true;
    }
    if (number.mantissa > kExactIntegers || number.exponent > kLargestExactPower ||
        number.exponent < -kLargestExactPower)
        return false;
    const auto mantissa = static_cast<double>(number.mantissa);
    const double exact = number.exponent >= 0 ? mantissa * kExactPowers[number.exponent]
                                              : mantissa / kExactPowers[-number.exponent];
    constexpr int kDroppedBits =
        std::numeric_limits<double>::digits - std::numeric_limits<float>::digits;
    constexpr std::uint64_t kDropped = (std::uint64_t{1} << kDroppedBits) - 1;
    constexpr std::uint64_t kHalfway = std::uint64_t{1} << (kDroppedBits - 1);
    if ((std::bit_cast<std::uint64_t>(exact) & kDropped) == kHalfway)
        return false;
    value = static_cast<float>(exact);
    return true;
}

template <class Float> struct FloatBits {
    using Word = std::conditional_t<sizeof(Float) == 8, std::uint64_t, std::uint32_t>;
    static constexpr int kMantissaBits = std::numeric_limits<Float>::digits - 1;
    static constexpr Word kSignBit = Word(1) << (sizeof(Word) * 8 - 1);
    static constexpr Word kQuietBit = Word(1) << (kMantissaBits - 1);
    static constexpr Word kExponentMask = ~((Word(1) << kMantissaBits) - 1) & ~kSignBit;
};

/// The value with its sign bit flipped, bits otherwise untouched (a NaN keeps its payload
/// and stays signalling if it was).
template <class Float> Float Negate(Float value) noexcept {
    using Bits = FloatBits<Float>;
    return std::bit_cast<Float>(static_cast<typename Bits::Word>(
        std::bit_cast<typename Bits::Word>(value) ^ Bits::kSignBit));
}

/// The NaN that "nan" followed by rest spells: "(n-char-sequence)" may follow. A sequence
/// that is a whole number as strtoull reads it with base 0 sets the payload bits below the
/// quiet bit (as glibc does); "snan" makes a signalling NaN.
template <class Float> Float ReadNaN(std::string_view rest) noexcept {
    using Bits = FloatBits<Float>;
    using Word = typename Bits::Word;
    Word bits = Bits::kExponentMask | Bits::kQuietBit;
    if (!rest.empty() && rest[0] == '(') {
        std::size_t close = 1;
        while (close < rest.size() && (DigitValue(rest[close]) < 36 || rest[close] == '_'))
            ++close;
        if (close < rest.size() && rest[close] == ')') {
            const std::string_view chars = rest.substr(1, close - 1);
            if (chars.size() == 4 && StartsWithNoCase(chars, "snan")) {
                bits = Bits::kExponentMask | (Bits::kQuietBit >> 1);
            } else {
                int base = 10;
                std::string_view number = chars;
                if (number.size() >= 3 && number[0] == '0' && ToLower(number[1]) == 'x' &&
                    DigitValue(number[2]) < 16) {
                    base = 16;
                    number.remove_prefix(2);
                } else if (!number.empty() && number[0] == '0') {
                    base = 8;
                }
                const Digits payload = ReadDigits(number, base);
                if (payload.used == number.size())
                    bits |= static_cast<Word>(payload.value & (Bits::kQuietBit - 1));
            }
        }
    }
    return std::bit_cast<Float>(bits);
}

/// For a number text that std::from_chars found out of range: true when its magnitude is
/// above 1 (an overflow), false when below (an underflow). Out-of-range values lie far
/// from 1 on either side, so the position of the first significant digit and the exponent
/// decide it.
bool IsHuge(std::string_view number, bool hex) noexcept {
    const long long digitWeight = hex ? 4 : 1;
    const char exponentLetter = hex ? 'p' : 'e';
    long long scale = 0; // the power of the base just above the leading digit
    bool significant = false;
    bool fraction = false;
    std::size_t i = 0;
    for (; i < number.size() && ToLower(number[i]) != exponentLetter; ++i) {
        if (number[i] == '.') {
            fraction = true;
        } else if (significant || number[i] != '0') {
            significant = true;
            if (!fraction)
                scale += digitWeight;
        } else if (fraction) {
            scale -= digitWeight;
        }
    }
    if (i + 1 < number.size()) {
        std::string_view exponentText = number.substr(i + 1);
        const bool negativeExponent = exponentText[0] == '-';
        if (exponentText[0] == '-' || exponentText[0] == '+')
            exponentText.remove_prefix(1);
        const Digits exponent = ReadDigits(exponentText, 10);
        const long long magnitude =
            static_cast<long long>(std::min<unsigned long long>(exponent.value, 1'000'000'000));
        scale += negativeExponent ? -magnitude : magnitude;
    }
    return scale > 0;
}

/// The unsigned value at the start of text (after the sign), or false when there is no
/// number there.
template <class Float> bool ReadMagnitude(std::string_view text, Float& value) noexcept {
    value = 0;
    if (text.empty())
        return false;
    if (!IsDigit(text[0]) && text[0] != '.') {
        if (StartsWithNoCase(text, "inf")) {
            value = std::numeric_limits<Float>::infinity();
            return true;
        }
        if (StartsWithNoCase(text, "nan")) {
            value = ReadNaN<Float>(text.substr(3));
            return true;
        }
        return false;
    }
    const auto startsNumber = [&](std::size_t at, int base) {
        return at < text.size() &&
               (DigitValue(text[at]) < base ||
                (text[at] == '.' && at + 1 < text.size() && DigitValue(text[at + 1]) < base));
    };
    const bool hex = text.size() >= 2 && text[0] == '0' && ToLower(text[1]) == 'x';
    std::string_view number = text;
    if (hex) {
        if (!startsNumber(2, 16))
            return true; // "0x" with no hexadecimal digit reads as the "0" before the x
        number.remove_prefix(2);
    } else {
        // A double's text in the suite's files has seventeen digits, more than an exact
        // double can hold: from_chars reads those faster than a first attempt here would.
        if constexpr (std::is_same_v<Float, float>) {
            if (ReadShortFloat(text, value))
                return true;
        }
        if (!startsNumber(0, 10))
            return false;
    }
    const std::from_chars_result result =
        std::from_chars(number.data(), number.data() + number.size(), value,
                        hex ? std::chars_format::hex : std::chars_format::general);
    if (result.ec == std::errc::result_out_of_range) {
        const std::string_view used(number.data(),
                                    static_cast<std::size_t>(result.ptr - number.data()));
        value = IsHuge(used, hex) ? std::numeric_limits<Float>::infinity() : Float(0);
    }
    return true;
}

template <class Float> Float ParseReal(std::string_view text) noexcept {
    bool negative = false;
    const std::string_view rest = SkipSpaceAndSign(text, negative);
    Float value = 0;
    if (!ReadMagnitude(rest, value))
        return 0;
    return negative ? Negate(value) : value;
}

} // namespace

double ParseDouble(std::string_view text) noexcept {
    return ParseReal<double>(text);
}

float ParseFloat(std::string_view text) noexcept {
    return ParseReal<float>(text);
}

long long ParseSigned(std::string_view text, long long min, long long max) noexcept {
    bool negative = false;
    const Digits digits = ReadDigits(SkipSpaceAndSign(text, negative), 10);
    if (negative) {
        const unsigned long long limit = 0ULL - static_cast<unsigned long long>(min);
        if (digits.overflow || digits.value >= limit)
            return min;
        return -static_cast<long long>(digits.value);
    }
    if (digits.overflow || digits.value > static_cast<unsigned long long>(max))
        return max;
    return static_cast<long long>(digits.value);
}

unsigned long long ParseUnsigned(std::string_view text, unsigned long long max) noexcept {
    bool negative = false;
    const Digits digits = ReadDigits(SkipSpaceAndSign(text, negative), 10);
    if (digits.overflow || digits.value > max)
        return max;
    return negative ? (0ULL - digits.value) & max : digits.value;
}

} // namespace fileio::detail

// The widths follow the Windows data model on every platform: long is read as 32 bits.

int String::Str_atoi() const noexcept {
    return static_cast<int>(fileio::detail::ParseSigned(View(), INT32_MIN, INT32_MAX));
}

long String::Str_atol() const noexcept {
    return static_cast<long>(fileio::detail::ParseSigned(View(), INT32_MIN, INT32_MAX));
}

long long String::Str_atoll() const noexcept {
    return fileio::detail::ParseSigned(View(), INT64_MIN, INT64_MAX);
}

unsigned long String::Str_atoul() const noexcept {
    return static_cast<unsigned long>(fileio::detail::ParseUnsigned(View(), UINT32_MAX));
}

unsigned long long String::Str_atoull() const noexcept {
    return fileio::detail::ParseUnsigned(View(), UINT64_MAX);
}

float String::Str_atof() const noexcept {
    return fileio::detail::ParseFloat(View());
}

double String::Str_atod() const noexcept {
    return fileio::detail::ParseDouble(View());
}
