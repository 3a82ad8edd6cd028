// TimeTextFields.h - the printf-style fields of the time texts, made without a locale.
#pragma once

#include <cstddef>

namespace fileio::detail {

/// Room that FormatPaddedGeneral needs at most for the widths and precisions the time texts
/// use (precision up to 6, width up to 3): sign, 6 digits, point, 4 leading zeros or an
/// exponent of up to 5 characters.
inline constexpr std::size_t MaxPaddedGeneralLength = 16;

/// Writes value as printf's "%0<width>.<precision>g" writes it in the "C" locale (zeros
/// after the sign up to width; an infinity or NaN padded with blanks instead) and returns
/// the end of the text, which is not terminated. With width 0 this is plain "%.<precision>g".
/// REQUIRES: 1 <= precision <= 6, 0 <= width <= 3, room for MaxPaddedGeneralLength bytes.
char* FormatPaddedGeneral(char* out, double value, int precision, int width) noexcept;

} // namespace fileio::detail
