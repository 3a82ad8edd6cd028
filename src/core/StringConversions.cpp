// StringConversions.cpp - reading numbers from text as the C runtime's strto* functions do
// in the "C" locale, and String's Str_ato* members built on them.
//
// std::from_chars does the correctly rounded work; around it sit the parts of strtod that
// from_chars leaves out: white space, a "+" sign, the "0x" prefix, "inf"/"nan" spellings,
// and what overflow and underflow give.

#include "core/StringNumbers.h"

#include "core/StringAscii.h"
#include "fileio/core/String.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
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
    Digits digits;
    for (; digits.used < text.size(); ++digits.used) {
        const int d = DigitValue(text[digits.used]);
        if (d >= base)
            break;
        const auto unsignedDigit = static_cast<unsigned long long>(d);
        if (digits.value > (kMax - unsignedDigit) / static_cast<unsigned>(base))
            digits.overflow = true;
        digits.value =
            digits.overflow ? kMax : digits.value * static_cast<unsigned>(base) + unsignedDigit;
    }
    return digits;
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
    if (StartsWithNoCase(text, "inf")) {
        value = std::numeric_limits<Float>::infinity();
        return true;
    }
    if (StartsWithNoCase(text, "nan")) {
        value = ReadNaN<Float>(text.substr(3));
        return true;
    }
    const auto startsNumber = [&](std::size_t at, int base) {
        return at < text.size() &&
               (DigitValue(text[at]) < base ||
                (text[at] == '.' && at + 1 < text.size() && DigitValue(text[at + 1]) < base));
    };
    bool hex = false;
    std::string_view number = text;
    if (text.size() >= 2 && text[0] == '0' && ToLower(text[1]) == 'x') {
        if (!startsNumber(2, 16))
            return true; // "0x" with no hexadecimal digit reads as the "0" before the x
        hex = true;
        number.remove_prefix(2);
    } else if (!startsNumber(0, 10)) {
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
