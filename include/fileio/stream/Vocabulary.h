// Vocabulary.h - the header and label words of the suite's files and their ids.
//
// Every section of a suite file is named by a header word ("MODELFILE") and every field by a
// label word ("Active"). Each word has an id: the text form of a stream writes the word, the
// binary form the id. Header ids lie in 33..373 and label ids in 1110..5384 (plus "NoLabel",
// -2), so an id alone tells a header from a label. Six label ids carry two words each,
// synonyms kept for old files (1942 "FurLength" and "ShagLength", ...).
//
// Words are matched exactly: case-sensitively, byte for byte.
//
// Texts are at most 79 bytes: every function that writes a text writes into a caller's
// buffer of kTokenTextSize (80) bytes, cuts a longer text at 79 bytes and always ends it
// with a NUL.
//
// The maps behind the lookups are built on first use, so the lookups serve other
// libraries' static initialisers whatever the order of initialisation. The label map lives
// as long as the process. The header map can take more words at run time (HeaderMapSetAt)
// and is freed by FreeHeaderMap; a lookup after that builds it again from the table, so
// words added before are gone.
//
// Thread safety: lookups may run on any number of threads at once, the first use included.
// HeaderMapSetAt and FreeHeaderMap belong to the host's main thread and must not run while
// another thread looks a header up.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

namespace fileio {

/// Size in bytes of a token's text and of every buffer a text lookup writes: 79 bytes of
/// text and the terminating NUL.
inline constexpr int kTokenTextSize = 80;

/// Bit 29 of a header id marks an end header.
inline constexpr int kEndHeaderBit = 0x20000000;

/// The largest header id that the id index holds, plus one: a header id of this or more has
/// no word.
inline constexpr int kHeaderIndexSize = 375;

} // namespace fileio

/// The id of the header word text, matched exactly; -1 for an unknown word or a null text.
FILEIO_API int GetHeaderIDFromText(const char* text) noexcept;

/// Writes the header word of id into out (kTokenTextSize bytes). Bit 29 of id (the end
/// header bit) is ignored, so an end header's id gives the plain word. An id of -1, of
/// kHeaderIndexSize or more, negative, or without a word writes "HeaderNotFound: %d" filled
/// with the id (bit 29 cleared, except for -1): "HeaderNotFound: -1". A null out is ignored.
FILEIO_API void GetHeaderTextFromID(int id, char* out) noexcept;

/// The text that GetHeaderTextFromID writes, as a String.
FILEIO_API String GetHeaderStringFromID(int id);

/// The id of the label word text, matched exactly; -1 for an unknown word or a null text.
FILEIO_API int GetLabelIDFromText(const char* text) noexcept;

/// Writes the label word of id into out (kTokenTextSize bytes) and returns true. Of the
/// two words of a synonym id the first in table order is written ("FurLength" for 1942).
/// An unknown id writes "LabelNotFound: %d" filled with the id and returns false. With a
/// null out nothing is written and the result still tells whether id has a word.
FILEIO_API bool GetLabelTextFromID(int id, char* out) noexcept;

/// Adds a header word to the header map with id, or gives an existing word the new id, so
/// that the application can name sections of its own. A text longer than 79 bytes is cut
/// to 79. When id lies in 0..kHeaderIndexSize-1 it then reads back as this word; an id
/// outside that range is found from the word only. The old id of a replaced word reads
/// back as another word with that id, or as not found. A null text is ignored.
FILEIO_API void HeaderMapSetAt(const char* text, int id) noexcept;

/// Frees the header map: its buckets, entries, index and the words added at run time. The
/// next header lookup builds it again from the table. Called by the host at shutdown.
FILEIO_API void FreeHeaderMap() noexcept;
