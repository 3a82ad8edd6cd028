// WordMap.cpp - the bucketed word map of the vocabulary.

#include "stream/WordMap.h"

#include <cstring>

namespace fileio::detail {

WordMap::WordMap(std::span<const VocabularyRow> rows, std::uint32_t bucketCount,
                 std::int32_t indexSize)
    : bucketCount_(bucketCount == 0 ? 1 : bucketCount),
      buckets_(std::make_unique<Entry*[]>(bucketCount_)),
      index_(static_cast<std::size_t>(indexSize > 0 ? indexSize : 0), nullptr) {
    for (const VocabularyRow& row : rows)
        Put(row.word, KeyOf(row.word), row.id, false);
}

WordMap::WordKey WordMap::KeyOf(const char* word) noexcept {
    std::uint32_t key = 0;
    const char* p = word;
    for (; *p != '\0'; ++p)
        key = key * 33u + static_cast<std::uint32_t>(static_cast<signed char>(*p));
    return {key, static_cast<std::size_t>(p - word)};
}

std::uint32_t WordMap::BucketKey(const char* word) noexcept { return KeyOf(word).key; }

WordMap::Entry* WordMap::Find(const char* word, WordKey wordKey) const noexcept {
    for (Entry* entry = buckets_[wordKey.key % bucketCount_]; entry != nullptr;
         entry = entry->next) {
        if (entry->key == wordKey.key && entry->length == wordKey.length &&
            std::memcmp(entry->word, word, wordKey.length) == 0)
            return entry;
    }
    return nullptr;
}

std::int32_t WordMap::IdOf(const char* word) const noexcept {
    const Entry* entry = Find(word, KeyOf(word));
    return entry != nullptr ? entry->id : -1;
}

bool WordMap::IsIndexed(std::int32_t id) const noexcept {
    return id >= 0 && static_cast<std::size_t>(id) < index_.size();
}

const char* WordMap::WordOf(std::int32_t id) const noexcept {
    if (!IsIndexed(id))
        return nullptr;
    const Entry* entry = index_[static_cast<std::size_t>(id)];
    return entry != nullptr ? entry->word : nullptr;
}

void WordMap::SetAt(const char* word, std::int32_t id) { Put(word, KeyOf(word), id, true); }

void WordMap::Put(const char* word, WordKey wordKey, std::int32_t id, bool copyWord) {
    Entry* entry = Find(word, wordKey);
    if (entry != nullptr) {
        const std::int32_t oldId = entry->id;
        entry->id = id;
        if (IsIndexed(oldId) && index_[static_cast<std::size_t>(oldId)] == entry)
            index_[static_cast<std::size_t>(oldId)] = AnyEntryWithId(oldId);
    } else {
        if (copyWord) {
            auto copy = std::make_unique<char[]>(wordKey.length + 1);
            std::memcpy(copy.get(), word, wordKey.length);
            word = copy.get();
            copiedWords_.push_back(std::move(copy));
        }
        entry = NewEntry();
        Entry*& bucket = buckets_[wordKey.key % bucketCount_];
        *entry = {bucket, word, wordKey.key, static_cast<std::uint32_t>(wordKey.length), id};
        bucket = entry;
    }
    if (IsIndexed(id))
        index_[static_cast<std::size_t>(id)] = entry;
}

WordMap::Entry* WordMap::NewEntry() {
    if (usedInLastBlock_ == kBlockSize) {
        blocks_.push_back(std::make_unique<Entry[]>(kBlockSize));
        usedInLastBlock_ = 0;
    }
    return &blocks_.back()[usedInLastBlock_++];
}

WordMap::Entry* WordMap::AnyEntryWithId(std::int32_t id) const noexcept {
    for (std::uint32_t bucket = 0; bucket < bucketCount_; ++bucket) {
        for (Entry* entry = buckets_[bucket]; entry != nullptr; entry = entry->next) {
            if (entry->id == id)
                return entry;
        }
    }
    return nullptr;
}

} // namespace fileio::detail
