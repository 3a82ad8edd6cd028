// WordMap.cpp - the bucketed word map of the vocabulary.

#include "stream/WordMap.h"

#include <cstring>

namespace fileio::detail {

WordMap::WordMap(std::span<const VocabularyRow> rows, std::uint32_t bucketCount,
                 std::int32_t indexSize)
    : m_bucketCount(bucketCount == 0 ? 1 : bucketCount),
      m_bucketReciprocal(UINT64_MAX / m_bucketCount + 1),
      m_buckets(std::make_unique<Entry*[]>(m_bucketCount)),
      m_index(static_cast<std::size_t>(indexSize > 0 ? indexSize : 0), nullptr) {
    for (const VocabularyRow& row : rows)
        Put(row.word, row.id, false);
}

namespace {

constexpr std::uint32_t SignedByte(char c) noexcept {
    return static_cast<std::uint32_t>(static_cast<signed char>(c));
}

} // namespace

std::uint32_t WordMap::BucketKey(std::string_view word) noexcept {
    // key * 33 + byte, four bytes at a time: key * 33^4 + b0 * 33^3 + b1 * 33^2 + b2 * 33 + b3
    // is the same number modulo 2^32, and leaves one multiply-add per four bytes in the
    // chain that each step waits for.
    const char* p = word.data();
    const std::size_t size = word.size();
    std::uint32_t key = 0;
    std::size_t i = 0;
    for (; i + 4 <= size; i += 4) {
        key = key * 1185921u + SignedByte(p[i]) * 35937u + SignedByte(p[i + 1]) * 1089u +
              SignedByte(p[i + 2]) * 33u + SignedByte(p[i + 3]);
    }
    for (; i < size; ++i)
        key = key * 33u + SignedByte(p[i]);
    return key;
}

WordMap::Entry* WordMap::Find(std::string_view word, std::uint32_t key) const noexcept {
    for (Entry* entry = m_buckets[BucketOf(key)]; entry != nullptr; entry = entry->next) {
        if (entry->key == key && entry->length == word.size() &&
            std::memcmp(entry->word, word.data(), word.size()) == 0)
            return entry;
    }
    return nullptr;
}

std::int32_t WordMap::IdOf(std::string_view word) const noexcept {
    const Entry* entry = Find(word, BucketKey(word));
    return entry != nullptr ? entry->id : -1;
}

void WordMap::SetAt(const char* word, std::int32_t id) {
    Put(word, id, true);
}

void WordMap::Put(std::string_view word, std::int32_t id, bool copyWord) {
    const std::uint32_t key = BucketKey(word);
    Entry* entry = Find(word, key);
    if (entry != nullptr) {
        const std::int32_t oldId = entry->id;
        entry->id = id;
        if (IsIndexed(oldId) && m_index[static_cast<std::size_t>(oldId)] == entry)
            m_index[static_cast<std::size_t>(oldId)] = AnyEntryWithId(oldId);
    } else {
        const char* stored = word.data();
        if (copyWord) {
            auto copy = std::make_unique<char[]>(word.size() + 1);
            std::memcpy(copy.get(), word.data(), word.size());
            stored = copy.get();
            m_copiedWords.push_back(std::move(copy));
        }
        entry = NewEntry();
        Entry*& bucket = m_buckets[BucketOf(key)];
        *entry = {bucket, stored, key, static_cast<std::uint32_t>(word.size()), id};
        bucket = entry;
    }
    if (IsIndexed(id))
        m_index[static_cast<std::size_t>(id)] = entry;
}

WordMap::Entry* WordMap::NewEntry() {
    if (m_usedInLastBlock == kBlockSize) {
        m_blocks.push_back(std::make_unique<Entry[]>(kBlockSize));
        m_usedInLastBlock = 0;
    }
    return &m_blocks.back()[m_usedInLastBlock++];
}

WordMap::Entry* WordMap::AnyEntryWithId(std::int32_t id) const noexcept {
    for (std::uint32_t bucket = 0; bucket < m_bucketCount; ++bucket) {
        for (Entry* entry = m_buckets[bucket]; entry != nullptr; entry = entry->next) {
            if (entry->id == id)
                return entry;
        }
    }
    return nullptr;
}

} // namespace fileio::detail
