// NumberText.h - locale-independent number texts that reproduce the C runtime's forms.
//
// The suite's texts were made with printf-style formats and read with strtof in the "C"
// locale. These helpers give exactly those results without consulting any locale: the
// decimal point is always ".", and the digits are the correctly rounded ones that the
// GNU C library prints.
#pragma once

#include <cstddef>

namespace fileio::detail {

/// Room that FormatGeneral needs at most, for precisions up to 17 and widths up to 24.
inline constexpr std::size_t MaxGeneralTextLength = 40;

/// Writes value as printf's "%<width>.<precision>g" would ("%0<width>.<precision>g" with
/// zeroPad) and returns the end of the text (not terminated). Precision 0 counts as 1.
/// Infinities and NaNs are "inf", "nan", with "-" when the sign bit is set, padded with
/// blanks even with zeroPad. REQUIRES: 0 <= precision <= 17, 0 <= width <= 24, and room
/// for MaxGeneralTextLength characters at out.
char* FormatGeneral(char* out, double value, int precision, int width, bool zeroPad) noexcept;

/// Writes value in decimal, padded on the left with `pad` to at least width characters
/// ("%02u", "%2u"), and returns the end of the text (not terminated). REQUIRES: room for
/// max(width, 20) characters.
char* FormatUnsigned(char* out, unsigned long long value, int width, char pad) noexcept;

/// Reads a float from the start of [begin, end) as strtof does in the "C" locale: leading
/// white space, an optional sign, then a decimal or "0x" hexadecimal number, "inf",
/// "infinity" or "nan" (case ignored); reading stops at the first character that does not
/// fit. No number gives 0; a value too large for a float gives an infinity, one too small
/// gives 0 (both keep the sign).
float ParseFloatPrefix(const char* begin, const char* end) noexcept;

} // namespace fileio::detail
