// The bucketed word map behind the vocabulary: its bucket key, chain matching, the id index.

#include "stream/WordMap.h"

#include "stream/VocabularyTables.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

using fileio::detail::HeaderRows;
using fileio::detail::LabelRows;
using fileio::detail::VocabularyRow;
using fileio::detail::WordMap;

TEST(VocabularyWordMap, BucketKeyIsTimes33PlusTheSignedByteAtEveryLength) {
    // The key is computed several bytes at a time; every length up to a token text's, with
    // bytes on both sides of 0x80, must give what one byte at a time gives.
    std::string word;
    for (int length = 0; length < 80; ++length) {
        SCOPED_TRACE(length);
        std::uint32_t expected = 0;
        for (char c : word)
            expected = expected * 33u + static_cast<std::uint32_t>(static_cast<signed char>(c));
        EXPECT_EQ(WordMap::BucketKey(word), expected);
        word.push_back(static_cast<char>(length * 37 + 11));
    }
}

TEST(VocabularyWordMap, WordsWithTheSameKeyAreToldApartByTheirText) {
    // "AB" and "B!" share the key 2211, so they share a bucket whatever the bucket count.
    ASSERT_EQ(WordMap::BucketKey("AB"), WordMap::BucketKey("B!"));
    const VocabularyRow rows[] = {{1, "AB"}, {2, "B!"}};
    const WordMap map(rows, 7, 0);
    EXPECT_EQ(map.IdOf("AB"), 1);
    EXPECT_EQ(map.IdOf("B!"), 2);
    EXPECT_EQ(map.IdOf("A"), -1);
    EXPECT_EQ(map.IdOf("AB!"), -1);
}

TEST(VocabularyWordMap, EveryTableWordIsFoundWhateverTheBucketCount) {
    // One bucket puts every word in a single chain; zero is taken as one.
    for (std::uint32_t buckets : {0u, 1u, 574u}) {
        SCOPED_TRACE(buckets);
        const WordMap headers(HeaderRows(), buckets, 375);
        for (const VocabularyRow& row : HeaderRows()) {
            EXPECT_EQ(headers.IdOf(row.word.data()), row.id) << row.word;
            EXPECT_EQ(headers.WordOf(row.id), row.word);
        }
        const WordMap labels(LabelRows(), buckets, 0);
        for (const VocabularyRow& row : LabelRows())
            EXPECT_EQ(labels.IdOf(row.word.data()), row.id) << row.word;
    }
}

TEST(VocabularyWordMap, TheIdIndexCoversItsRangeAndFollowsTheWordThatNamesAnId) {
    const VocabularyRow rows[] = {{5, "A"}, {5, "B"}, {-7, "OUT"}, {0, "ZERO"}, {10, "TEN"}};
    WordMap map(rows, 3, 10);
    // The index covers 0 to 9 only; a word outside it still finds its id.
    EXPECT_EQ(map.WordOf(0), "ZERO");
    EXPECT_EQ(map.WordOf(10), std::nullopt);
    EXPECT_EQ(map.WordOf(-7), std::nullopt);
    EXPECT_EQ(map.IdOf("TEN"), 10);
    map.SetAt("C", 5);
    EXPECT_EQ(map.WordOf(5), "C"); // the newest word of an id names it
    map.SetAt("A", 6);             // the index of 5 named C, not A: it stays
    EXPECT_EQ(map.WordOf(5), "C");
    map.SetAt("C", 7); // now it named C: it moves to B, the word left with 5
    EXPECT_EQ(map.WordOf(5), "B");
    map.SetAt("OUT", 8); // an old id outside the index
    EXPECT_EQ(map.WordOf(8), "OUT");
    // The map keeps its own copy of a word set at run time.
    std::string word = "TEMPORARY";
    map.SetAt(word.c_str(), 2);
    word.assign("OVERWRITE");
    EXPECT_EQ(map.WordOf(2), "TEMPORARY");
}
