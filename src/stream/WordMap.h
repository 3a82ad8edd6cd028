// WordMap.h - a bucketed map from word to id, with an optional index from id to word
// (internal). The header and label maps of the vocabulary are two of these.
//
// The bucket key of a word: h = h * 33 + byte over the word's bytes, starting at 0, each
// byte taken as signed, in unsigned 32-bit arithmetic. The word's bucket is the key modulo
// the bucket count. Collisions are chained, newest first; a chain entry matches a word when
// its stored key and its word, compared case-sensitively, both match.
//
// The id index is a direct table from the ids 0 to indexSize - 1 to the entry holding a
// word with that id. It always names a word that the map holds with that id, or nothing.
//
// Entries are allocated kBlockSize at a time. Words of the rows the map is built from are
// not copied (the rows are static data); words added later are.
//
// Thread safety: lookups may run on several threads at once; SetAt may run with nothing
// else, not even a lookup.
#pragma once

#include "stream/VocabularyTables.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace fileio::detail {

class WordMap {
public:
    static constexpr std::size_t kBlockSize = 10;

    /// A map of the rows, spread over bucketCount buckets (at least 1), with an id index of
    /// indexSize entries (0 for none). The rows' words must outlive the map.
    WordMap(std::span<const VocabularyRow> rows, std::uint32_t bucketCount,
            std::int32_t indexSize);
    WordMap(const WordMap&) = delete;
    WordMap& operator=(const WordMap&) = delete;

    /// The bucket key of a NUL-terminated word (see above).
    static std::uint32_t BucketKey(const char* word) noexcept;

    /// The id of the word (NUL-terminated, not null), or -1 when the map does not hold it.
    std::int32_t IdOf(const char* word) const noexcept;

    /// The word that the id index holds for id; null when id is outside the index or its
    /// entry is empty.
    const char* WordOf(std::int32_t id) const noexcept;

    /// Adds the word (NUL-terminated, not null; copied) with id, or gives the word the new
    /// id when the map holds it already. Then the index entry of id names this word. The
    /// index entry of the word's old id, if it named this word, moves to another word that
    /// has the old id, or is emptied when there is none.
    void SetAt(const char* word, std::int32_t id);

private:
    struct Entry {
        Entry* next;
        const char* word;
        std::uint32_t key;
        std::uint32_t length;
        std::int32_t id;
    };

    // The bucket key and length of a NUL-terminated word, found in one pass.
    struct WordKey {
        std::uint32_t key;
        std::size_t length;
    };
    static WordKey KeyOf(const char* word) noexcept;

    Entry* Find(const char* word, WordKey wordKey) const noexcept;
    void Put(const char* word, WordKey wordKey, std::int32_t id, bool copyWord);
    Entry* NewEntry();
    Entry* AnyEntryWithId(std::int32_t id) const noexcept;
    bool IsIndexed(std::int32_t id) const noexcept;

    std::uint32_t bucketCount_;
    std::unique_ptr<Entry*[]> buckets_;
    std::vector<Entry*> index_;
    std::vector<std::unique_ptr<Entry[]>> blocks_;
    std::size_t usedInLastBlock_ = kBlockSize;
    std::vector<std::unique_ptr<char[]>> copiedWords_;
};

} // namespace fileio::detail
