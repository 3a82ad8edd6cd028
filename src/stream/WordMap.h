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
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace fileio::detail {

class WordMap {
public:
    static constexpr std::size_t kBlockSize = 10;

    /// A map of the rows, spread over bucketCount buckets (at least 1), with an id index of
    /// indexSize entries (0 for none). The rows' words must outlive the map.
    WordMap(std::span<const VocabularyRow> rows, std::uint32_t bucketCount, std::int32_t indexSize);
    WordMap(const WordMap&) = delete;
    WordMap& operator=(const WordMap&) = delete;

    /// The bucket key of a word (see above).
    static std::uint32_t BucketKey(std::string_view word) noexcept;

    /// The id of the word, or -1 when the map does not hold it.
    std::int32_t IdOf(std::string_view word) const noexcept;

    /// The word that the id index holds for id (NUL-terminated after the view); nothing
    /// when id is outside the index or its entry is empty.
    std::optional<std::string_view> WordOf(std::int32_t id) const noexcept {
        if (!IsIndexed(id))
            return std::nullopt;
        const Entry* entry = m_index[static_cast<std::size_t>(id)];
        if (entry == nullptr)
            return std::nullopt;
        return std::string_view(entry->word, entry->length);
    }

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

    Entry* Find(std::string_view word, std::uint32_t key) const noexcept;
    void Put(std::string_view word, std::int32_t id, bool copyWord);
    Entry* NewEntry();
    Entry* AnyEntryWithId(std::int32_t id) const noexcept;
    bool IsIndexed(std::int32_t id) const noexcept {
        return id >= 0 && static_cast<std::size_t>(id) < m_index.size();
    }

    /// The bucket of a key: key modulo the bucket count, by multiplications (a division per
    /// lookup is a large part of a short word's cost).
    std::uint32_t BucketOf(std::uint32_t key) const noexcept {
        const std::uint64_t low = m_bucketReciprocal * key;
        return static_cast<std::uint32_t>(
            ((low >> 32) * m_bucketCount + (((low & 0xFFFFFFFFu) * m_bucketCount) >> 32)) >> 32);
    }

    std::uint32_t m_bucketCount;
    /// 2^64 / bucket count, rounded up, for BucketOf.
    std::uint64_t m_bucketReciprocal;
    std::unique_ptr<Entry*[]> m_buckets;
    std::vector<Entry*> m_index;
    std::vector<std::unique_ptr<Entry[]>> m_blocks;
    std::size_t m_usedInLastBlock = kBlockSize;
    std::vector<std::unique_ptr<char[]>> m_copiedWords;
};

} // namespace fileio::detail
