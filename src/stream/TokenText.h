// TokenText.h - bounded writing of token texts (internal).
//
// A token text lives in kTokenTextSize bytes: at most 79 bytes of text and a NUL. Every
// write of one goes through these two functions, so none can run past the buffer.
#pragma once

#include "fileio/stream/Vocabulary.h"

#include <charconv>
#include <cstddef>
#include <cstring>
#include <string_view>

namespace fileio::detail {

/// Copies n bytes from in to out (distinct buffers), for n below kTokenTextSize.
///
/// Words are read back from ids for every token of a binary file. A plain memcpy of a length
/// known to be short is compiled into a string-move instruction that is slow to start for a
/// few bytes; overlapping moves of fixed size are not.
inline void CopyShortText(char* out, const char* in, std::size_t n) noexcept {
    if (n >= 16) {
        for (std::size_t i = 0; i + 16 < n; i += 16)
            std::memcpy(out + i, in + i, 16);
        std::memcpy(out + n - 16, in + n - 16, 16);
    } else if (n >= 8) {
        std::memcpy(out, in, 8);
        std::memcpy(out + n - 8, in + n - 8, 8);
    } else if (n >= 4) {
        std::memcpy(out, in, 4);
        std::memcpy(out + n - 4, in + n - 4, 4);
    } else {
        for (std::size_t i = 0; i < n; ++i)
            out[i] = in[i];
    }
}

/// Copies text into out (kTokenTextSize bytes), cut at 79 bytes, and ends it with a NUL.
inline void CopyTokenText(char* out, std::string_view text) noexcept {
    const std::size_t length = text.size() < kTokenTextSize - 1 ? text.size() : kTokenTextSize - 1;
    CopyShortText(out, text.data(), length);
    out[length] = '\0';
}

/// The same for a NUL-terminated text of any length, which is read no further than needed.
inline void CopyTokenText(char* out, const char* text) noexcept {
    std::size_t length = 0;
    while (length < kTokenTextSize - 1 && text[length] != '\0')
        ++length;
    CopyTokenText(out, std::string_view(text, length));
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
