// TimeText.cpp - the text forms of Time: Time::ToString, String::ToTime and FormatTime.
//
// The texts are those of the suite's printf-style formats in the "C" locale, built here
// without printf so that no locale can change them and nothing but the result string is
// allocated.
#include "fileio/core/Time.h"

#include "core/Rounding.h"
#include "core/StringNumbers.h"
#include "core/TimeTextFields.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <string_view>

namespace {

using fileio::detail::FormatPaddedGeneral;
using fileio::detail::FusedMultiplyAdd;

// Room for the longest text: "-", minutes (up to 20 digits), ":", seconds, ":", frames.
constexpr std::size_t MaxTimeTextLength =
    1 + 20 + 1 + 2 + 1 + fileio::detail::MaxPaddedGeneralLength;

// Copies text to out, padded on the left to width with pad; a zero pad goes after a
// leading "-", where printf's "0" flag puts it.
char* WritePadded(char* out, std::string_view text, int width, char pad) {
    if (pad == '0' && !text.empty() && text.front() == '-') {
        *out++ = '-';
        text.remove_prefix(1);
        --width;
    }
    for (int n = static_cast<int>(text.size()); n < width; ++n)
        *out++ = pad;
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

// "%0<width>u" or "%<width>u" of a 64-bit value.
char* FormatUnsigned(char* out, unsigned long long value, int width, char pad) {
    char digits[20] = {};
    const std::to_chars_result result = std::to_chars(digits, digits + sizeof digits, value);
    return WritePadded(out, std::string_view(digits, static_cast<std::size_t>(result.ptr - digits)),
                       width, pad);
}

// A value shown with decimals is first rounded to two of them, upward-biased by 2^-23 so
// that a value a hair below a hundredth (as float seconds give) still lands on it. A whole
// value is left as it is.
double RoundToHundredths(double v) {
    if (v == std::round(v))
        return v;
    const double bias = v >= 0 ? 0x1p-23 : -0x1p-23;
    return std::round(FusedMultiplyAdd(v, 100.0, bias)) * 0.01;
}

// "[-]MM:SS:F": minutes not wrapped into hours, F the frames with up to two decimals,
// "%02.4g" below 100 fps and "%03.5g" from 100 fps on.
char* FormatSmpte(char* out, float seconds, double fps) {
    const float magnitude = std::fabs(seconds);
    // The magnitude stays below 7e13 s (the largest tick count), so the whole seconds fit
    // in 64 bits; the original's 32-bit field would overflow beyond 68 years.
    const long long whole = static_cast<long long>(magnitude);
    const double frames =
        RoundToHundredths((static_cast<double>(magnitude) - static_cast<double>(whole)) * fps);
    if (seconds < 0)
        *out++ = '-';
    out = FormatUnsigned(out, static_cast<unsigned long long>(whole / 60), 2, '0');
    *out++ = ':';
    out = FormatUnsigned(out, static_cast<unsigned long long>(whole % 60), 2, '0');
    *out++ = ':';
    const bool highRate = fps >= 100;
    return FormatPaddedGeneral(out, frames, highRate ? 5 : 4, highRate ? 3 : 2);
}

} // namespace

char* fileio::detail::FormatPaddedGeneral(char* out, double value, int precision,
                                          int width) noexcept {
    char text[kNumberTextSize];
    const std::size_t length = FormatGeneral(text, value, precision);
    return WritePadded(out, std::string_view(text, length), width,
                       std::isfinite(value) ? '0' : ' ');
}

String Time::ToString(double fps, TimeUnit unit, bool zeroBasedCells) const {
    char text[MaxTimeTextLength];
    char* end = text;
    const float seconds = GetSeconds();
    switch (unit) {
    case SMPTE:
        end = FormatSmpte(text, seconds, fps);
        break;
    case FRAMES:
        end = FormatPaddedGeneral(text, RoundToHundredths(fps * seconds), 6, 0);
        break;
    case CELLS:
        end = FormatPaddedGeneral(
            text, RoundToHundredths(fps * seconds) + (zeroBasedCells ? 0.0 : 1.0), 6, 0);
        break;
    default:
        return String();
    }
    return String(text, static_cast<int>(end - text));
}

Time String::ToTime(int fps, TimeUnit unit, bool zeroBasedCells) const {
    std::string_view text = View();
    const bool negative = !text.empty() && text.front() == '-';
    if (negative)
        text.remove_prefix(1);

    // Minutes, seconds and the last field's value. The fields are floats (strtof); the
    // running values are held in double, where every step below is exact.
    double minutes = 0;
    double seconds = 0;
    double last = 0;
    const double base = fps < 100 ? 100.0 : 1000.0;
    for (std::size_t start = 0;;) {
        const std::size_t colon = text.find(':', start);
        const std::size_t stop = colon == std::string_view::npos ? text.size() : colon;
        minutes = seconds;
        seconds = std::trunc(last);
        last = fileio::detail::ParseFloat(text.substr(start, stop - start));
        if (unit == SMPTE) {
            // Digits typed without separators: seconds followed by frames.
            if (last >= base) {
                const double carry = std::trunc(last / base);
                seconds += carry;
                last -= base * carry;
            }
            if (seconds >= 100) {
                const double carry = std::trunc(seconds / 100);
                minutes += carry;
                seconds -= 100 * carry;
            }
        }
        if (colon == std::string_view::npos)
            break;
        start = colon + 1;
    }
    if (unit == CELLS && !zeroBasedCells)
        last -= 1;

    // minutes x 8.1e6 is exact for any sensible count of minutes, so the sum of both
    // products is rounded once.
    const double ticks = FusedMultiplyAdd(seconds + last / fps, 135000.0, minutes * 8.1e6);
    const Time time(fileio::detail::RoundToNearestEven(ticks));
    return negative ? -time : time;
}

String FormatTime(int seconds, bool showZero) {
    if (seconds < 0 || (seconds == 0 && !showZero))
        return String("- - : - - : - -");
    const unsigned total = static_cast<unsigned>(seconds);
    const unsigned hours = total / 3600;
    char text[32];
    char* end = FormatUnsigned(text, hours, 2, ' ');
    *end++ = ':';
    end = FormatUnsigned(end, (total - hours * 3600) / 60, 2, '0');
    *end++ = ':';
    end = FormatUnsigned(end, total % 60, 2, '0');
    return String(text, static_cast<int>(end - text));
}
