// StreamBytes.h - the byte classes and token constants shared by the stream readers
// (internal).
#pragma once

#include <cstddef>

namespace fileio::detail {

/// Bit 31 of a binary token word: a header (or end header).
inline constexpr unsigned int kHeaderTokenBit = 0x80000000u;
/// Bit 30 of a binary token word: a label.
inline constexpr unsigned int kLabelTokenBit = 0x40000000u;
/// Bit 29 of an id: an end header.
inline constexpr unsigned int kEndTokenBit = 0x20000000u;
/// The word that means "no id".
inline constexpr unsigned int kNoIdWord = 0xFFFFFFFFu;
/// "Plugin Properties", the label word whose sections end with the plain word
/// kPluginPropertiesWord rather than an end header.
inline constexpr int kPluginPropertiesId = 2693;
inline constexpr unsigned int kPluginPropertiesWord = 2693u | kHeaderTokenBit | kLabelTokenBit;

/// The size of a caller's delimited-token buffer, and of the scan limits of SkipWhite,
/// ReadPastEOL and the header text.
inline constexpr std::size_t kTokenBufferSize = 255;

/// The first version of the angle-bracket text form.
inline constexpr float kAngleVersion = 13.0f;
/// The version of a stream whose text generation is not yet known.
inline constexpr float kUnknownVersion = 5.0f;

/// " ", "\t", "\n" or "\r": the bytes between text tokens.
constexpr bool IsTokenSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}
/// " " or "\t".
constexpr bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}
/// "\n" or "\r".
constexpr bool IsLineEnd(char c) {
    return c == '\n' || c == '\r';
}

/// The opening bracket of a header in the text generation of `version`; with anyVersion,
/// while the version is not yet known, both brackets count.
constexpr bool IsHeaderBracket(char c, float version, bool anyVersion) {
    if (anyVersion && version == kUnknownVersion)
        return c == '<' || c == '[';
    return c == (version < kAngleVersion ? '[' : '<');
}

/// The end of the line that starts at `begin`, line end included: after LF, CR LF or a
/// lone CR, or `end` when the data end first.
inline const char* FindLineEnd(const char* begin, const char* end) {
    for (const char* p = begin; p != end; ++p) {
        if (*p == '\n')
            return p + 1;
        if (*p == '\r')
            return (p + 1 != end && p[1] == '\n') ? p + 2 : p + 1;
    }
    return end;
}

} // namespace fileio::detail
