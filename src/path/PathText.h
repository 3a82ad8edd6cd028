// PathText.h - the purely textual path operations: separators, decomposition, joining,
// collapsing, case rules and wildcards. Each takes the path style where the platforms
// differ, so the Windows rules are tested on POSIX and the other way round.
//
// Both separators ("\\" and "/") are read on both styles; the native one is written.
#pragma once

#include "platform/Platform.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace fileio::detail {

using platform::PathStyle;

/// The length of the fixed path buffers of the system: the formatted network conversions
/// cut their results to kMaxPath - 1 characters.
inline constexpr std::size_t kMaxPath = 260;

inline bool IsSeparator(char c) noexcept {
    return c == '\\' || c == '/';
}

/// ASCII lower case; every other byte as it is (no locale is consulted).
inline char AsciiLower(char c) noexcept {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

/// "\\" for Windows, "/" for POSIX.
char NativeSeparator(PathStyle style) noexcept;

/// The separator that the style never writes: "/" for Windows, "\\" for POSIX.
char ForeignSeparator(PathStyle style) noexcept;

/// The folder part: the text up to and including the last separator; empty when there is
/// none. "C:\\a\\b.mdl" -> "C:\\a\\", "a/" -> "a/", "b.mdl" -> "".
std::string_view PathOnly(std::string_view path) noexcept;

/// The name after the last separator (the whole text when there is none; empty when the
/// text ends in a separator). "C:\\a\\b.mdl" -> "b.mdl".
std::string_view NameOnly(std::string_view path) noexcept;

/// The suffix of the name, without its dot: the text after the name's last "."; empty when
/// the name has no ".". "a/b.tar.gz" -> "gz", "a.b/c" -> "", ".cfg" -> "cfg".
std::string_view SuffixOnly(std::string_view path) noexcept;

/// The name without "." and its suffix. "a/b.tar.gz" -> "b.tar", "a/b" -> "b", ".cfg" -> "".
std::string_view NameOnlyWithoutSuffix(std::string_view path) noexcept;

/// `folder` and `name` joined by exactly one native separator: the folder's trailing
/// separators and the name's leading ones are dropped first. A folder made only of
/// separators (a root) is kept whole; an empty folder gives `name` as it is; an empty name
/// gives the folder with one trailing separator.
std::string CombineNameToPath(std::string_view folder, std::string_view name, PathStyle style);

/// Collapses every run of separators to its first character, except that a run at the very
/// start keeps two characters (the "\\\\" or "//" of a network name). Returns the number of
/// characters removed.
std::size_t RemoveDoubleSeparators(std::string& text);

/// Turns every separator, of either kind, into the native one of the style.
void ToNativeSeparators(std::string& text, PathStyle style);

/// ASCII case-insensitive equality (bytes >= 0x80 compare exactly).
bool EqualNoCase(std::string_view a, std::string_view b) noexcept;

/// Equality of two names by the style's rule: case-insensitive for Windows, exact for POSIX.
bool SameName(std::string_view a, std::string_view b, PathStyle style) noexcept;

/// Ordering of names by the style's rule (case-insensitive for Windows, bytes for POSIX),
/// ties broken by bytes so that the order is total.
bool NameLess(std::string_view a, std::string_view b, PathStyle style) noexcept;

/// True when `path` is `folder` or lies below it (the folder's trailing separators are
/// ignored; the next character of `path` must be a separator or the end), by the style's
/// case rule. An empty folder contains nothing.
bool IsWithinFolder(std::string_view path, std::string_view folder, PathStyle style) noexcept;

/// Wildcard match of a name: "*" matches any run of characters, "?" exactly one; case by
/// the style's rule. "*.*" matches every name, as hosts written for Windows expect. An empty
/// pattern matches every name.
bool MatchesWildcard(std::string_view name, std::string_view pattern, PathStyle style) noexcept;

/// `text` enclosed in double quotes.
std::string Quote(std::string_view text);

} // namespace fileio::detail
