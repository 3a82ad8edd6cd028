// Text.h - small text helpers shared by the tool's sources.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace fileio::tool {

/// Equal when the ASCII letters are compared without regard to case (the rule of the suite's
/// words and of String's comparison); other bytes compare as they are.
[[nodiscard]] bool EqualsIgnoringCase(std::string_view a, std::string_view b);

/// The pieces joined into one text.
[[nodiscard]] std::string Concat(std::initializer_list<std::string_view> pieces);

/// The text with every byte that a terminal could take as a command escaped as "\xNN": the
/// control bytes (below 0x20, and 0x7F), the C1 control characters and every byte that is
/// not part of a valid UTF-8 sequence. Valid UTF-8 and backslashes stay as they are, so a
/// Windows path reads as it is written. For text from a file (a field's word, a path)
/// printed to a terminal. With `keepLines`, line feeds and tabs stay as they are too (for
/// whole texts shown as lines).
[[nodiscard]] std::string Printable(std::string_view text, bool keepLines = false);

/// The length of the valid UTF-8 sequence of two or more bytes at the start of `text`, or 0
/// when it does not start with one (an ASCII byte, a stray continuation byte, an overlong
/// form, a surrogate, a code point past U+10FFFF, a cut sequence, a C1 control character).
[[nodiscard]] std::size_t Utf8SequenceLength(std::string_view text);

} // namespace fileio::tool
