// StringNumbers.cpp - the text forms of numbers: the locale-free formatters and String's
// number, vector and colour constructors.
//
// std::to_chars with a precision produces exactly what printf produces in the "C" locale
// (correctly rounded from the exact binary value), and never looks at the locale; only the
// special values get the suite's own spellings here.

#include "core/StringNumbers.h"

#include "fileio/core/String.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <string_view>
#include <type_traits>

namespace fileio::detail {
namespace {

/// The spelling of an infinity or NaN, or an empty view for a finite value.
template <class Float> std::string_view SpecialText(Float value) noexcept {
    using Word = std::conditional_t<sizeof(Float) == 8, std::uint64_t, std::uint32_t>;
    constexpr int kMantissaBits = std::numeric_limits<Float>::digits - 1;
    constexpr Word kMantissaMask = (Word(1) << kMantissaBits) - 1;
    constexpr Word kExponentMask = ~kMantissaMask & (std::numeric_limits<Word>::max() >> 1);
    constexpr Word kQuietBit = Word(1) << (kMantissaBits - 1);

    const Word bits = std::bit_cast<Word>(value);
    if ((bits & kExponentMask) != kExponentMask)
        return {};
    const bool negative = (bits >> (sizeof(Word) * 8 - 1)) != 0;
    const Word mantissa = bits & kMantissaMask;
    if (mantissa == 0)
        return negative ? "-inf" : "inf";
    if ((mantissa & kQuietBit) == 0)
        return negative ? "-nan(snan)" : "nan(snan)";
    if (negative && mantissa == kQuietBit)
        return "-nan(ind)";
    return negative ? "-nan" : "nan";
}

template <class Float>
std::size_t Format(char* out, Float value, std::chars_format style, int precision) noexcept {
    std::string_view special = SpecialText(value);
    if (!special.empty()) {
        std::memcpy(out, special.data(), special.size());
        out[special.size()] = '\0';
        return special.size();
    }
    if (precision < 0)
        precision = 6;
    precision = std::min(precision, kMaxPrecision);
    const std::to_chars_result result =
        std::to_chars(out, out + kNumberTextSize - 1, value, style, precision);
    const std::size_t length =
        result.ec == std::errc() ? static_cast<std::size_t>(result.ptr - out) : 0;
    out[length] = '\0';
    return length;
}

} // namespace

std::size_t FormatGeneral(char* out, double value, int precision) noexcept {
    return Format(out, value, std::chars_format::general, precision);
}

std::size_t FormatGeneral(char* out, float value, int precision) noexcept {
    return Format(out, value, std::chars_format::general, precision);
}

std::size_t FormatFixed(char* out, double value, int decimals) noexcept {
    return Format(out, value, std::chars_format::fixed, decimals);
}

std::size_t FormatFixed(char* out, float value, int decimals) noexcept {
    return Format(out, value, std::chars_format::fixed, decimals);
}

std::size_t TrimFractionZeros(char* text, std::size_t length) noexcept {
    const std::string_view view(text, length);
    if (view.find('.') == std::string_view::npos || view.find("e+") != std::string_view::npos ||
        view.find("e-") != std::string_view::npos)
        return length;
    while (length > 0 && text[length - 1] == '0')
        --length;
    if (length > 0 && text[length - 1] == '.')
        --length;
    text[length] = '\0';
    return length;
}

} // namespace fileio::detail

namespace {

using fileio::detail::kNumberTextSize;

/// Float digits for the general forms: "%.9g" keeps every float distinct, "%.17g" every
/// double.
constexpr int kFloatDigits = 9;
constexpr int kDoubleDigits = 17;

/// A number's text on the stack, before it is copied into the pool.
struct NumberText {
    char buffer[kNumberTextSize];
    std::size_t length = 0;

    std::string_view View() const { return {buffer, length}; }
};

/// A general form: formatted, then the fraction's trailing zeros dropped unless the text
/// has an exponent (which changes nothing for "%g" output, whose zeros are already gone,
/// but puts every float text through the same final step).
template <class Float> NumberText General(Float value, int digits) {
    NumberText text;
    text.length = fileio::detail::FormatGeneral(text.buffer, value, digits);
    text.length = fileio::detail::TrimFractionZeros(text.buffer, text.length);
    return text;
}

template <class Float> NumberText Fixed(Float value, int decimals, int maxDecimals) {
    NumberText text;
    text.length = fileio::detail::FormatFixed(text.buffer, value, std::min(decimals, maxDecimals));
    text.length = fileio::detail::TrimFractionZeros(text.buffer, text.length);
    return text;
}

template <class Integer> NumberText Decimal(Integer value) {
    NumberText text;
    const std::to_chars_result result =
        std::to_chars(text.buffer, text.buffer + kNumberTextSize, value);
    text.length = static_cast<std::size_t>(result.ptr - text.buffer);
    return text;
}

/// The floats' general forms joined by single spaces. Four floats of at most 15
/// characters each ("-1.17549435e-38") fit many times over.
NumberText JoinFloats(std::initializer_list<float> values) {
    NumberText line;
    for (float value : values) {
        if (line.length > 0)
            line.buffer[line.length++] = ' ';
        const NumberText text = General(value, kFloatDigits);
        std::memcpy(line.buffer + line.length, text.buffer, text.length);
        line.length += text.length;
    }
    return line;
}

} // namespace

String::String(short value) : String(static_cast<long long>(value)) {}
String::String(unsigned short value) : String(static_cast<unsigned long long>(value)) {}
String::String(int value) : String(static_cast<long long>(value)) {}
String::String(unsigned int value) : String(static_cast<unsigned long long>(value)) {}
String::String(long value) : String(static_cast<long long>(value)) {}
String::String(unsigned long value) : String(static_cast<unsigned long long>(value)) {}
String::String(long long value) : m_str(CopyOf(Decimal(value).View())) {}
String::String(unsigned long long value) : m_str(CopyOf(Decimal(value).View())) {}

String::String(float value) : m_str(CopyOf(General(value, kFloatDigits).View())) {}
String::String(double value) : m_str(CopyOf(General(value, kDoubleDigits).View())) {}

String::String(float value, int decimals)
    : m_str(CopyOf(Fixed(value, decimals, kFloatDigits).View())) {}
String::String(double value, int decimals)
    : m_str(CopyOf(Fixed(value, decimals, kDoubleDigits).View())) {}

String::String(const Vector2& v) : m_str(CopyOf(JoinFloats({v.x, v.y}).View())) {}
String::String(const Vector& v) : m_str(CopyOf(JoinFloats({v.x, v.y, v.z}).View())) {}
String::String(const RGBFloat& c) : m_str(CopyOf(JoinFloats({c.red, c.green, c.blue}).View())) {}
String::String(const RotateEuler& r) : m_str(CopyOf(JoinFloats({r.x, r.y, r.z}).View())) {}
String::String(const Vector4& v) : m_str(CopyOf(JoinFloats({v.x, v.y, v.z, v.w}).View())) {}
String::String(const Quaternion& q) : m_str(CopyOf(JoinFloats({q.x, q.y, q.z, q.w}).View())) {}
String::String(const RGBAFloat& c)
    : m_str(CopyOf(JoinFloats({c.red, c.green, c.blue, c.alpha}).View())) {}
