// StreamBytes.h - the byte classes, token words and text generations shared by the stream
// readers (internal).
#pragma once

#include "fileio/stream/Vocabulary.h"

#include <cstddef>

namespace fileio::detail {

/// Bit 31 of a binary token word: a header (or end header).
inline constexpr unsigned int kHeaderTokenBit = 0x80000000u;
/// Bit 30 of a binary token word: a label.
inline constexpr unsigned int kLabelTokenBit = 0x40000000u;
/// The end-header bit of an id (kEndHeaderBit), as a bit of a token word.
inline constexpr unsigned int kEndHeaderWordBit = static_cast<unsigned int>(fileio::kEndHeaderBit);
/// The word that means "no id".
inline constexpr unsigned int kNoIdWord = 0xFFFFFFFFu;
/// "Plugin Properties", the label word whose sections end with the plain word
/// kPluginPropertiesWord rather than an end header.
inline constexpr int kPluginPropertiesId = 2693;
inline constexpr unsigned int kPluginPropertiesWord = 2693u | kHeaderTokenBit | kLabelTokenBit;

/// The size of a caller's delimited-token buffer, and the most bytes that SkipWhite,
/// ReadPastEOL and the angle header reader read in one call.
inline constexpr std::size_t kTokenBufferSize = 255;

/// The first version of the angle-bracket text form.
inline constexpr float kAngleVersion = 13.0f;
/// The version of a stream whose text generation is not yet known.
inline constexpr float kUnknownVersion = 5.0f;

/// The two generations of the text form, and "not yet known", which reads as the square
/// generation except where either bracket is accepted.
enum class TextGeneration : unsigned char { Unknown, Square, Angle };

/// The generation a stream's version stands for.
constexpr TextGeneration GenerationOf(float version) {
    if (version == kUnknownVersion)
        return TextGeneration::Unknown;
    return version < kAngleVersion ? TextGeneration::Square : TextGeneration::Angle;
}

/// " ", "\t", "\n" or "\r": the bytes between text tokens.
constexpr bool IsTokenSpace(int c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}
/// " " or "\t".
constexpr bool IsBlank(int c) {
    return c == ' ' || c == '\t';
}
/// "\n" or "\r".
constexpr bool IsLineEnd(int c) {
    return c == '\n' || c == '\r';
}

/// The opening bracket of a header in `generation`; with anyVersion, while the generation
/// is not yet known, both brackets count.
constexpr bool IsHeaderBracket(int c, TextGeneration generation, bool anyVersion) {
    if (anyVersion && generation == TextGeneration::Unknown)
        return c == '<' || c == '[';
    return c == (generation == TextGeneration::Angle ? '<' : '[');
}

} // namespace fileio::detail
