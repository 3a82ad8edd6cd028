// StringAscii.h - character classes, case folding and searching as the "C" locale defines
// them, for String and the code built on it.
//
// The library's text is 8-bit bytes in no particular encoding. Case folding touches the
// ASCII letters only; every other byte (including 0x80 and above) stays as it is. Nothing
// here consults the process's locale. Internal: not installed, not exported.
#pragma once

#include <cstddef>
#include <string_view>

namespace fileio::detail {

/// White space as isspace() defines it in the "C" locale: space, \t, \n, \v, \f, \r.
constexpr bool IsSpace(char c) noexcept {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

constexpr char ToLower(char c) noexcept {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char ToUpper(char c) noexcept {
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

/// The byte as an unsigned value 0..255.
constexpr int ByteValue(char c) noexcept {
    return static_cast<unsigned char>(c);
}

/// Equal ignoring ASCII case.
constexpr bool EqualNoCase(char a, char b) noexcept {
    return ToLower(a) == ToLower(b);
}

/// Three-way comparison of two NUL-terminated texts as _stricmp makes it: both bytes are
/// lowered, then compared as unsigned values. Negative, 0 or positive.
/// REQUIRES: a and b non-null.
int CompareNoCase(const char* a, const char* b) noexcept;

/// True when text begins with prefix, ignoring ASCII case.
bool StartsWithNoCase(std::string_view text, std::string_view prefix) noexcept;

/// The first offset >= from at which pattern occurs in text, or npos. Letters match
/// ignoring case unless caseSensitive. An empty pattern is never found.
std::size_t FindText(std::string_view text, std::string_view pattern, std::size_t from,
                     bool caseSensitive) noexcept;

/// The last offset <= last at which pattern occurs in text, or npos (last may be npos:
/// search from the end). Letters match ignoring case. An empty pattern is never found.
std::size_t ReverseFindText(std::string_view text, std::string_view pattern,
                            std::size_t last) noexcept;

} // namespace fileio::detail
