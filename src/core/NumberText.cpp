// NumberText.cpp - printf "%g" and strtof, without a locale.
#include "core/NumberText.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>

namespace fileio::detail {

namespace {

// Pads [text, text + length) on the left to width and copies it to out: zeros go after
// a leading sign, blanks before it.
char* PadInto(char* out, const char* text, std::size_t length, int width, bool zeroPad) {
    std::size_t padding =
        width > 0 && static_cast<std::size_t>(width) > length ? width - length : 0;
    if (zeroPad && length > 0 && text[0] == '-') {
        *out++ = *text++;
        --length;
    }
    std::memset(out, zeroPad ? '0' : ' ', padding);
    out += padding;
    std::memcpy(out, text, length);
    return out + length;
}

// The body of "%.<precision>g" for a finite, non-negative value, without padding.
char* FormatGeneralBody(char* out, double magnitude, int precision) {
    // "d.ddde+XX": exactly `precision` significant digits, correctly rounded.
    char scientific[MaxGeneralTextLength];
    const auto result = std::to_chars(scientific, scientific + sizeof scientific, magnitude,
                                      std::chars_format::scientific, precision - 1);
    const char* exponentMark =
        static_cast<const char*>(std::memchr(scientific, 'e', result.ptr - scientific));
    char digits[17];
    int count = 0;
    for (const char* p = scientific; p < exponentMark; ++p)
        if (*p != '.')
            digits[count++] = *p;
    int exponent = 0;
    std::from_chars(exponentMark + (exponentMark[1] == '+' ? 2 : 1), result.ptr, exponent);

    // Trailing zeros are dropped in either notation (no "#" flag).
    while (count > 1 && digits[count - 1] == '0')
        --count;

    if (exponent >= -4 && exponent < precision) {
        if (exponent < 0) {
            *out++ = '0';
            *out++ = '.';
            for (int i = -1; i > exponent; --i)
                *out++ = '0';
            std::memcpy(out, digits, count);
            return out + count;
        }
        const int integerDigits = exponent + 1;
        for (int i = 0; i < integerDigits; ++i)
            *out++ = i < count ? digits[i] : '0';
        if (count > integerDigits) {
            *out++ = '.';
            std::memcpy(out, digits + integerDigits, count - integerDigits);
            out += count - integerDigits;
        }
        return out;
    }

    *out++ = digits[0];
    if (count > 1) {
        *out++ = '.';
        std::memcpy(out, digits + 1, count - 1);
        out += count - 1;
    }
    *out++ = 'e';
    *out++ = exponent < 0 ? '-' : '+';
    return FormatUnsigned(out, static_cast<unsigned long long>(exponent < 0 ? -exponent : exponent),
                          2, '0');
}

bool IsDigitOf(char c, bool hex) {
    if (c >= '0' && c <= '9')
        return true;
    return hex && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'));
}

// For a number text that std::from_chars found outside the float range: whether it is too
// large (rather than too small). Such a text lies beyond 1e38 or below 1e-45, so the rough
// position of its first significant digit plus its exponent tells the two apart.
bool IsTooLarge(const char* p, const char* end, bool hex) {
    long long integerDigits = 0; // significant digits before the point
    long long leadingZeros = 0;  // zeros after the point before the first significant digit
    bool seenSignificant = false;
    bool afterPoint = false;
    for (; p < end; ++p) {
        if (*p == '.') {
            afterPoint = true;
            continue;
        }
        if (!IsDigitOf(*p, hex))
            break;
        if (*p != '0')
            seenSignificant = true;
        if (!afterPoint && seenSignificant)
            ++integerDigits;
        else if (afterPoint && !seenSignificant)
            ++leadingZeros;
    }
    // The digit position of the first significant digit.
    const long long position = integerDigits > 0 ? integerDigits - 1 : -(leadingZeros + 1);
    long long exponent = 0;
    if (p < end && (*p == 'e' || *p == 'E' || *p == 'p' || *p == 'P')) {
        ++p;
        const bool negative = p < end && *p == '-';
        if (p < end && (*p == '-' || *p == '+'))
            ++p;
        for (; p < end && *p >= '0' && *p <= '9'; ++p)
            if (exponent < 100000000)
                exponent = exponent * 10 + (*p - '0');
        if (negative)
            exponent = -exponent;
    }
    return (hex ? position * 4 : position) + exponent >= 0;
}

bool IsCSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

} // namespace

char* FormatGeneral(char* out, double value, int precision, int width, bool zeroPad) noexcept {
    if (precision == 0)
        precision = 1;
    char body[MaxGeneralTextLength];
    char* p = body;
    if (std::signbit(value))
        *p++ = '-';
    if (!std::isfinite(value)) {
        std::memcpy(p, std::isnan(value) ? "nan" : "inf", 3);
        return PadInto(out, body, p + 3 - body, width, false);
    }
    p = FormatGeneralBody(p, std::fabs(value), precision);
    return PadInto(out, body, p - body, width, zeroPad);
}

char* FormatUnsigned(char* out, unsigned long long value, int width, char pad) noexcept {
    char digits[20];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    const std::size_t length = result.ptr - digits;
    for (std::size_t n = length; static_cast<std::size_t>(width) > n; ++n)
        *out++ = pad;
    std::memcpy(out, digits, length);
    return out + length;
}

float ParseFloatPrefix(const char* begin, const char* end) noexcept {
    const char* p = begin;
    while (p < end && IsCSpace(*p))
        ++p;
    bool negative = false;
    if (p < end && (*p == '-' || *p == '+')) {
        negative = *p == '-';
        ++p;
    }
    // A second sign is not a number (std::from_chars would take a "-").
    if (p == end || *p == '-' || *p == '+')
        return 0.0f;

    float value = 0.0f;
    const char* number = p;
    bool hex = false;
    std::from_chars_result result{p, std::errc::invalid_argument};
    if (end - p >= 3 && p[0] == '0' && (p[1] == 'x' || p[1] == 'X') &&
        (IsDigitOf(p[2], true) || (p[2] == '.' && end - p >= 4 && IsDigitOf(p[3], true)))) {
        number = p + 2;
        hex = true;
        result = std::from_chars(number, end, value, std::chars_format::hex);
    } else {
        result = std::from_chars(number, end, value, std::chars_format::general);
    }
    if (result.ec == std::errc::invalid_argument)
        return 0.0f;
    if (result.ec == std::errc::result_out_of_range)
        value = IsTooLarge(number, result.ptr, hex) ? HUGE_VALF : 0.0f;
    return negative ? -value : value;
}

} // namespace fileio::detail
