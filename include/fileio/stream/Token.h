// Token.h - Header, EndHeader and Label: the word-and-id tokens of the suite's files.
//
// A section of a file opens with a Header token, closes with the matching EndHeader and
// holds Label tokens, each introducing a field's value. All three carry the same two
// members: the word as read or written (at most 79 bytes and a NUL, in kTokenTextSize
// bytes) and its id (-1 for none; an end header's id carries kEndHeaderBit). The streams
// read and write them; the words and ids come from the vocabulary (Vocabulary.h).
//
// Every constructor fills all kTokenTextSize bytes: the text and then zeros. A text given
// to a constructor is copied and cut at 79 bytes. Copying copies the whole text and the id.
//
// The constructors from an id or a text convert implicitly, as host code expects
// (`stream << Header(336)`, `SkipHeader(336)`).
#pragma once

#include "fileio/Export.h"
#include "fileio/stream/Vocabulary.h"

class FILEIO_API Header {
public:
    /// Empty text, id -1.
    Header() noexcept;
    /// The id, and its header word as text (the not-found text for an unknown id).
    Header(int id) noexcept;
    /// The id and a copy of text (empty for null), taken as it is: the id is not looked up.
    Header(int id, const char* text) noexcept;

    /// The text.
    [[nodiscard]] const char* GetText() const noexcept { return text; }

    char text[fileio::kTokenTextSize];
    int id;
};

class FILEIO_API EndHeader : public Header {
public:
    /// Empty text, id -1.
    EndHeader() noexcept = default;
    /// The id with kEndHeaderBit set, and the plain header word as text (no "/" or "END").
    EndHeader(int id) noexcept;
    /// The id with kEndHeaderBit set, and a copy of text (empty for null).
    EndHeader(int id, const char* text) noexcept;
};

class FILEIO_API Label {
public:
    /// Empty text, id -1.
    Label() noexcept;
    /// The id, and its label word as text (the not-found text for an unknown id).
    Label(int id) noexcept;
    /// A copy of text, cut at 79 bytes, and the label id of that copy (-1 for an unknown
    /// word). A null text gives an empty text and id -1.
    Label(const char* text) noexcept;

    /// The text.
    [[nodiscard]] const char* GetText() const noexcept { return text; }

    char text[fileio::kTokenTextSize];
    int id;
};
