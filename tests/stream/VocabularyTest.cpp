// The vocabulary, the tokens built from it and the word map behind it.

#include "fileio/stream/Vocabulary.h"
#include "fileio/stream/Token.h"

#include "stream/VocabularyTables.h"
#include "stream/WordMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

using fileio::detail::HeaderRows;
using fileio::detail::LabelRows;
using fileio::detail::VocabularyRow;

namespace {

constexpr int kEnd = fileio::kEndHeaderBit;

// A text lookup's out buffer with room to spare: a byte written past the 80 the lookup may
// write shows as "<overflow>".
template <class Lookup> std::string Looked(Lookup lookup) {
    std::array<char, 200> bytes;
    bytes.fill('\x7F');
    lookup(bytes.data());
    if (!std::all_of(bytes.begin() + fileio::kTokenTextSize, bytes.end(),
                     [](char c) { return c == '\x7F'; }))
        return "<overflow>";
    const auto end = bytes.begin() + fileio::kTokenTextSize;
    return std::string(bytes.begin(), std::find(bytes.begin(), end, '\0'));
}

std::string HeaderText(int id) {
    return Looked([id](char* out) { GetHeaderTextFromID(id, out); });
}

std::string LabelText(int id) {
    return Looked([id](char* out) { GetLabelTextFromID(id, out); });
}

// Tests that change the header map put it back as the table has it.
class HeaderMapChanges : public ::testing::Test {
protected:
    void TearDown() override { FreeHeaderMap(); }
};

} // namespace

// An id that carries two words reads back as the first of them in table order.
TEST(Vocabulary, EveryWordRoundTrips) {
    for (const VocabularyRow& row : HeaderRows()) {
        SCOPED_TRACE(row.word);
        EXPECT_EQ(GetHeaderIDFromText(row.word.data()), row.id);
        EXPECT_EQ(HeaderText(row.id | kEnd), row.word);
        EXPECT_EQ(GetHeaderStringFromID(row.id).View(), row.word);
    }
    std::map<int, std::string> firstWord;
    for (const VocabularyRow& row : LabelRows()) {
        SCOPED_TRACE(row.word);
        firstWord.try_emplace(row.id, row.word);
        EXPECT_EQ(GetLabelIDFromText(row.word.data()), row.id);
        EXPECT_EQ(LabelText(row.id), firstWord[row.id]);
        EXPECT_TRUE(GetLabelTextFromID(row.id, nullptr));
    }
}

TEST(Vocabulary, WordsMatchExactly) {
    // A header word is no label word and the other way round.
    for (const char* word : {"modelfile", "MODELFILE ", "MODELFIL", "MODELFILEE", "", "FileInfo",
                             static_cast<const char*>(nullptr)}) {
        SCOPED_TRACE(word != nullptr ? word : "null");
        EXPECT_EQ(GetHeaderIDFromText(word), -1);
    }
    for (const char* word : {"active", "Active ", "FILEINFO", static_cast<const char*>(nullptr)}) {
        SCOPED_TRACE(word != nullptr ? word : "null");
        EXPECT_EQ(GetLabelIDFromText(word), -1);
    }
}

TEST(Vocabulary, UnknownIdsGiveTheNotFoundTexts) {
    // The end bit (bit 29) is dropped from every header id but -1; a label id keeps it.
    const std::tuple<bool, int, const char*> rows[] = {
        {true, -1, "HeaderNotFound: -1"},          {true, 32, "HeaderNotFound: 32"},
        {true, 374 | kEnd, "HeaderNotFound: 374"}, {true, -2, "HeaderNotFound: -536870914"},
        {false, -1, "LabelNotFound: -1"},          {false, 1109, "LabelNotFound: 1109"},
        {false, 1114, "LabelNotFound: 1114"}, // a gap in the table
        {false, 5385, "LabelNotFound: 5385"},      {false, 4046 | kEnd, "LabelNotFound: 536874958"},
    };
    for (const auto& [header, id, text] : rows) {
        SCOPED_TRACE(id);
        EXPECT_EQ(header ? HeaderText(id) : LabelText(id), text);
        EXPECT_TRUE(header || !GetLabelTextFromID(id, nullptr)) << "the label lookup misses";
    }
}

TEST_F(HeaderMapChanges, SetAtAddsAndMovesWordsAndKeepsTheIndexTruthful) {
    HeaderMapSetAt("MYSECTION", 374);
    EXPECT_EQ(GetHeaderIDFromText("MYSECTION"), 374);
    EXPECT_EQ(HeaderText(374 | kEnd), "MYSECTION");
    // Outside the index the word still finds its id, but the id has no word.
    HeaderMapSetAt("FARSECTION", 375);
    EXPECT_EQ(GetHeaderIDFromText("FARSECTION"), 375);
    EXPECT_EQ(HeaderText(375), "HeaderNotFound: 375");
    // Enough words to need several blocks of entries.
    for (int i = 0; i < 30; ++i)
        HeaderMapSetAt(("EXTRA" + std::to_string(i)).c_str(), 1000 + i);
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(GetHeaderIDFromText(("EXTRA" + std::to_string(i)).c_str()), 1000 + i);

    // Moving a table word away leaves its old id without a word.
    HeaderMapSetAt("PATH", 370);
    EXPECT_EQ(HeaderText(33), "HeaderNotFound: 33");

    // Freeing drops the added words; the next lookup rebuilds the table's, and words may
    // be added again straight after a free.
    FreeHeaderMap();
    EXPECT_EQ(HeaderText(33), "PATH");
    EXPECT_EQ(GetHeaderIDFromText("MYSECTION"), -1);
    FreeHeaderMap();
    HeaderMapSetAt("MYSECTION", 374);
    EXPECT_EQ(HeaderText(374), "MYSECTION");
    EXPECT_EQ(GetHeaderIDFromText("MODELFILE"), 336);
}

TEST_F(HeaderMapChanges, FirstUseFromSeveralThreadsAtOnce) {
    FreeHeaderMap();
    constexpr int kThreads = 4;
    std::vector<int> mistakes(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &mistakes] {
            for (const VocabularyRow& row : HeaderRows()) {
                char out[fileio::kTokenTextSize];
                GetHeaderTextFromID(row.id, out);
                mistakes[t] += GetHeaderIDFromText(row.word.data()) != row.id;
                mistakes[t] += std::string(out) != row.word;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(mistakes, std::vector<int>(kThreads, 0));
}

// Copying copies the whole text and the id.
static_assert(std::is_trivially_copyable_v<Header> && std::is_trivially_copyable_v<Label>);
static_assert(sizeof(Header) == 84 && sizeof(EndHeader) == 84 && sizeof(Label) == 84);
static_assert(offsetof(Header, id) == 80 && offsetof(Label, id) == 80);

namespace {

// The whole text field: the expected word, then zeros to the end of the 80 bytes.
template <class Token> void ExpectToken(const Token& token, int id, const std::string& word) {
    EXPECT_EQ(token.id, id);
    EXPECT_EQ(std::string(token.GetText()), word);
    EXPECT_TRUE(std::all_of(token.text + std::min<std::size_t>(word.size(), 79),
                            token.text + fileio::kTokenTextSize, [](char c) { return c == 0; }))
        << "bytes after the word are not all zero";
}

} // namespace

TEST(VocabularyToken, ConstructorsLookUpOrTakeTheirTexts) {
    std::string longWord(200, ' ');
    for (std::size_t i = 0; i < longWord.size(); ++i)
        longWord[i] = static_cast<char>('A' + i % 26);
    const std::string cut = longWord.substr(0, 79);
    ExpectToken(Header(), -1, "");
    ExpectToken(Label(), -1, "");
    ExpectToken(Header(336 | kEnd), 336 | kEnd, "MODELFILE");
    ExpectToken(EndHeader(114), 114 | kEnd, "Filter List");
    // A text given is taken as it is: neither it nor the id is looked up.
    ExpectToken(Header(33, "MODELFILE"), 33, "MODELFILE");
    ExpectToken(EndHeader(7, "CUSTOM"), 7 | kEnd, "CUSTOM");
    ExpectToken(Header(5, longWord.c_str()), 5, cut);
    ExpectToken(Label(4046), 4046, "Active");
    // A label's text is looked up, after the cut.
    ExpectToken(Label("ShagLength"), 1942, "ShagLength");
    ExpectToken(Label(longWord.c_str()), -1, cut);
}

TEST(VocabularyWordMap, BucketKeyIsTimes33PlusTheSignedByteAtEveryLength) {
    // The key is computed several bytes at a time; every length up to a token text's, with
    // bytes on both sides of 0x80, must give what one byte at a time gives.
    std::string word;
    for (int length = 0; length < 80; ++length) {
        SCOPED_TRACE(length);
        std::uint32_t expected = 0;
        for (char c : word)
            expected = expected * 33u + static_cast<std::uint32_t>(static_cast<signed char>(c));
        EXPECT_EQ(fileio::detail::WordMap::BucketKey(word), expected);
        word.push_back(static_cast<char>(length * 37 + 11));
    }
}

TEST(VocabularyWordMap, TheIdIndexCoversItsRangeAndFollowsTheWordThatNamesAnId) {
    const fileio::detail::VocabularyRow rows[] = {
        {5, "A"}, {5, "B"}, {-7, "OUT"}, {0, "ZERO"}, {10, "TEN"}};
    fileio::detail::WordMap map(rows, 3, 10);
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
