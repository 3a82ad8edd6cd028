// TokenText.h - bounded writing of token texts (internal).
//
// A token text lives in kTokenTextSize bytes: at most 79 bytes of text and a NUL. Every
// write of one goes through these two functions, so none can run past the buffer.
#pragma once

#include "fileio/stream/Vocabulary.h"

#include <charconv>
#include <cstddef>
#include <cstring>

namespace fileio::detail {

/// Copies text into out (kTokenTextSize bytes), cut at 79 bytes, and ends it with a NUL.
inline void CopyTokenText(char* out, const char* text) noexcept {
    std::size_t length = 0;
    while (length < kTokenTextSize - 1 && text[length] != '\0')
        ++length;
    std::memcpy(out, text, length);
    out[length] = '\0';
}

/// Writes prefix followed by id in decimal into out (kTokenTextSize bytes):
/// "HeaderNotFound: " and 375 give "HeaderNotFound: 375".
inline void WriteNotFoundText(char* out, const char* prefix, int id) noexcept {
    CopyTokenText(out, prefix);
    const std::size_t length = std::strlen(out);
    char* const last = out + (kTokenTextSize - 1);
    const std::to_chars_result result = std::to_chars(out + length, last, id);
    *(result.ec == std::errc() ? result.ptr : out + length) = '\0';
}

} // namespace fileio::detail
