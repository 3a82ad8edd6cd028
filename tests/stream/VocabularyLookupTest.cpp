// Lookups between words and ids: every word both ways, synonyms, case, the not-found texts,
// the end-header bit, the 79-byte bound, run-time header words and freeing the header map.

#include "fileio/stream/Vocabulary.h"

#include "VocabularyTestSupport.h"
#include "stream/VocabularyTables.h"

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <string>
#include <thread>
#include <vector>

using fileio::detail::HeaderRows;
using fileio::detail::LabelRows;
using fileio::detail::VocabularyRow;
using vocabulary_test::GuardedBuffer;
using vocabulary_test::HeaderText;
using vocabulary_test::LabelText;
using vocabulary_test::LongWord;

namespace {

constexpr int kEnd = 0x20000000;

// Tests that change the header map put it back as the table has it.
class HeaderMapChanges : public ::testing::Test {
protected:
    void TearDown() override { FreeHeaderMap(); }
};

} // namespace

TEST(VocabularyLookup, KnownWordsBothWays) {
    struct Case {
        const char* word;
        int id;
        bool header;
    };
    const Case cases[] = {
        {"MODELFILE", 336, true},
        {"PATH", 33, true},
        {"FILTERFILE", 373, true},
        {"Filter List", 114, true},
        {"<<<<<<", 364, true},
        {"HAIR2EMITTER", 264, true},
        {"Active", 4046, false},
        {"Plugin Properties", 2693, false},
        {"NoLabel", -2, false},
        {"TemporaryGroup", 1110, false},
        {"BulletSpinningFriction", 5384, false},
        {"ACCURATTRANSPARENCY", 1936, false},
        {"PhotonIntenisity", 4936, false},
        {"SizeTolerence", 1916, false},
        {"IsFadeBehindObjectS", 1963, false},
        {"Back Distance", 1207, false},
        {"FileInfo", 4065, false},
        {"FILEINFO", 157, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.word);
        if (c.header) {
            EXPECT_EQ(GetHeaderIDFromText(c.word), c.id);
            EXPECT_EQ(HeaderText(c.id), c.word);
            EXPECT_EQ(GetLabelIDFromText(c.word), -1);
        } else {
            EXPECT_EQ(GetLabelIDFromText(c.word), c.id);
            EXPECT_EQ(LabelText(c.id), c.word);
            EXPECT_EQ(GetHeaderIDFromText(c.word), -1);
        }
    }
}

TEST(VocabularyLookup, EveryHeaderWordRoundTrips) {
    for (const VocabularyRow& row : HeaderRows()) {
        SCOPED_TRACE(row.word);
        EXPECT_EQ(GetHeaderIDFromText(row.word.data()), row.id);
        EXPECT_EQ(HeaderText(row.id), row.word);
        EXPECT_EQ(HeaderText(row.id | kEnd), row.word);
        EXPECT_EQ(GetHeaderStringFromID(row.id).View(), row.word);
    }
}

TEST(VocabularyLookup, EveryLabelWordRoundTripsThroughTheFirstWordOfItsId) {
    // The second word of each synonym pair reads back as the first.
    const std::map<std::string, std::string> firstWordOf = {
        {"ShagLength", "FurLength"},       {"ShagStiffness", "FurStiffness"},
        {"ShagDensity", "FurDensity"},     {"ShagThickness", "FurThickness"},
        {"OpaqueInReflections", "Jitter"}, {"UseStride", "HasStride"},
    };
    for (const VocabularyRow& row : LabelRows()) {
        SCOPED_TRACE(row.word);
        const auto synonym = firstWordOf.find(std::string(row.word));
        const std::string expected =
            synonym != firstWordOf.end() ? synonym->second : std::string(row.word);
        EXPECT_EQ(GetLabelIDFromText(row.word.data()), row.id);
        GuardedBuffer out;
        EXPECT_TRUE(GetLabelTextFromID(row.id, out.data()));
        EXPECT_TRUE(out.GuardIntact());
        EXPECT_EQ(out.Text(), expected);
    }
}

TEST(VocabularyLookup, SynonymsShareAnId) {
    const struct {
        const char* first;
        const char* second;
        int id;
    } pairs[] = {
        {"FurLength", "ShagLength", 1942},       {"FurStiffness", "ShagStiffness", 1943},
        {"FurDensity", "ShagDensity", 1944},     {"FurThickness", "ShagThickness", 1945},
        {"Jitter", "OpaqueInReflections", 3072}, {"HasStride", "UseStride", 4154},
    };
    for (const auto& pair : pairs) {
        SCOPED_TRACE(pair.second);
        EXPECT_EQ(GetLabelIDFromText(pair.first), pair.id);
        EXPECT_EQ(GetLabelIDFromText(pair.second), pair.id);
        EXPECT_EQ(LabelText(pair.id), pair.first);
    }
}

TEST(VocabularyLookup, WordsMatchExactlyAndCaseSensitively) {
    const char* const headerMisses[] = {
        "modelfile",  "Modelfile", "MODELFILe",   "MODELFILE ",  " MODELFILE", "MODELFIL",
        "MODELFILEE", "",          "Filter list", "filter List", "FilterList", "<<<<<",
        "<<<<<<<",    "Active",    "\xC3\x89",    "MODEL\nFILE",
    };
    for (const char* word : headerMisses) {
        SCOPED_TRACE(word);
        EXPECT_EQ(GetHeaderIDFromText(word), -1);
    }
    const char* const labelMisses[] = {
        "active",
        "ACTIVE",
        "Active ",
        "nolabel",
        "NOLABEL",
        "Plugin properties",
        "PluginProperties",
        "furlength",
        "Accurattransparency",
        "",
        "MODELFILE",
        "FileINFO",
    };
    for (const char* word : labelMisses) {
        SCOPED_TRACE(word);
        EXPECT_EQ(GetLabelIDFromText(word), -1);
    }
    EXPECT_EQ(GetHeaderIDFromText(nullptr), -1);
    EXPECT_EQ(GetLabelIDFromText(nullptr), -1);
}

TEST(VocabularyLookup, UnknownIdsGiveTheNotFoundTexts) {
    const struct {
        int id;
        const char* text;
    } headers[] = {
        {-1, "HeaderNotFound: -1"},
        {375, "HeaderNotFound: 375"},
        {374, "HeaderNotFound: 374"},
        {0, "HeaderNotFound: 0"},
        {32, "HeaderNotFound: 32"},
        {34, "HeaderNotFound: 34"},
        {4046, "HeaderNotFound: 4046"},
        {375 | kEnd, "HeaderNotFound: 375"},
        {-2, "HeaderNotFound: -536870914"},      // bit 29 of -2 cleared: 0xDFFFFFFE
        {INT_MAX, "HeaderNotFound: 1610612735"}, // 0x7FFFFFFF without bit 29
        {INT_MIN, "HeaderNotFound: -2147483648"},
    };
    for (const auto& c : headers) {
        SCOPED_TRACE(c.id);
        EXPECT_EQ(HeaderText(c.id), c.text);
        EXPECT_EQ(GetHeaderStringFromID(c.id).View(), c.text);
    }
    const struct {
        int id;
        const char* text;
    } labels[] = {
        {-1, "LabelNotFound: -1"},
        {0, "LabelNotFound: 0"},
        {1109, "LabelNotFound: 1109"},
        {1114, "LabelNotFound: 1114"},
        {5385, "LabelNotFound: 5385"},
        {336, "LabelNotFound: 336"},
        {-3, "LabelNotFound: -3"},
        {4046 | kEnd, "LabelNotFound: 536874958"},
        {INT_MAX, "LabelNotFound: 2147483647"},
        {INT_MIN, "LabelNotFound: -2147483648"},
    };
    for (const auto& c : labels) {
        SCOPED_TRACE(c.id);
        GuardedBuffer out;
        EXPECT_FALSE(GetLabelTextFromID(c.id, out.data()));
        EXPECT_TRUE(out.GuardIntact());
        EXPECT_EQ(out.Text(), c.text);
    }
}

TEST(VocabularyLookup, NullOutBuffersAreNotWritten) {
    GetHeaderTextFromID(336, nullptr);
    GetHeaderTextFromID(9999, nullptr);
    EXPECT_TRUE(GetLabelTextFromID(4046, nullptr));
    EXPECT_FALSE(GetLabelTextFromID(9999, nullptr));
}

TEST_F(HeaderMapChanges, SetAtAddsWordsBothWaysWithinTheIndex) {
    HeaderMapSetAt("MYSECTION", 374);
    EXPECT_EQ(GetHeaderIDFromText("MYSECTION"), 374);
    EXPECT_EQ(HeaderText(374), "MYSECTION");
    EXPECT_EQ(HeaderText(374 | kEnd), "MYSECTION");
    EXPECT_EQ(GetHeaderIDFromText("mysection"), -1);

    // Outside the index the word still finds its id, but the id has no word.
    HeaderMapSetAt("FARSECTION", 375);
    EXPECT_EQ(GetHeaderIDFromText("FARSECTION"), 375);
    EXPECT_EQ(HeaderText(375), "HeaderNotFound: 375");
    HeaderMapSetAt("NEGATIVE", -7);
    EXPECT_EQ(GetHeaderIDFromText("NEGATIVE"), -7);

    // The words of the table are untouched, and labels never see header words.
    EXPECT_EQ(GetHeaderIDFromText("MODELFILE"), 336);
    EXPECT_EQ(HeaderText(336), "MODELFILE");
    EXPECT_EQ(GetLabelIDFromText("MYSECTION"), -1);

    // Enough words to need several blocks of entries.
    for (int i = 0; i < 30; ++i)
        HeaderMapSetAt(("EXTRA" + std::to_string(i)).c_str(), 1000 + i);
    for (int i = 0; i < 30; ++i)
        EXPECT_EQ(GetHeaderIDFromText(("EXTRA" + std::to_string(i)).c_str()), 1000 + i);
    EXPECT_EQ(GetHeaderIDFromText("MYSECTION"), 374);
}

TEST_F(HeaderMapChanges, SetAtReplacesAnIdAndKeepsTheIndexTruthful) {
    // A second word for a table id takes over the id's text; the table word keeps its id.
    HeaderMapSetAt("MODELFILE2", 336);
    EXPECT_EQ(HeaderText(336), "MODELFILE2");
    EXPECT_EQ(GetHeaderIDFromText("MODELFILE"), 336);
    EXPECT_EQ(GetHeaderIDFromText("MODELFILE2"), 336);

    // Moving that word away gives the id back to the word that still has it.
    HeaderMapSetAt("MODELFILE2", 374);
    EXPECT_EQ(HeaderText(336), "MODELFILE");
    EXPECT_EQ(HeaderText(374), "MODELFILE2");

    // Moving a table word away leaves its old id without a word.
    HeaderMapSetAt("PATH", 370);
    EXPECT_EQ(GetHeaderIDFromText("PATH"), 370);
    EXPECT_EQ(HeaderText(370), "PATH");
    EXPECT_EQ(HeaderText(33), "HeaderNotFound: 33");

    // Setting a word to the id it has changes nothing.
    HeaderMapSetAt("MODELFILE", 336);
    EXPECT_EQ(HeaderText(336), "MODELFILE");
    EXPECT_EQ(GetHeaderIDFromText("MODELFILE"), 336);

    // A null text is ignored.
    HeaderMapSetAt(nullptr, 336);
    EXPECT_EQ(HeaderText(336), "MODELFILE");
}

TEST_F(HeaderMapChanges, LongTextsAreCutAt79Bytes) {
    const std::string longWord = LongWord();
    const std::string cut = longWord.substr(0, 79);

    HeaderMapSetAt(longWord.c_str(), 374);
    EXPECT_EQ(GetHeaderIDFromText(cut.c_str()), 374);
    EXPECT_EQ(GetHeaderIDFromText(longWord.c_str()), -1);
    EXPECT_EQ(GetHeaderIDFromText(cut.substr(0, 78).c_str()), -1);
    EXPECT_EQ(HeaderText(374), cut);
    EXPECT_EQ(GetHeaderStringFromID(374).View(), cut);

    // Exactly 79 bytes is kept whole.
    const std::string fits = std::string(78, 'Z') + "Y";
    HeaderMapSetAt(fits.c_str(), 373);
    EXPECT_EQ(HeaderText(373), fits);
    EXPECT_EQ(GetLabelIDFromText(longWord.c_str()), -1);
}

TEST_F(HeaderMapChanges, FreeHeaderMapDropsAddedWordsAndTheNextLookupRebuilds) {
    HeaderMapSetAt("MYSECTION", 374);
    HeaderMapSetAt("PATH", 370);
    FreeHeaderMap();

    EXPECT_EQ(GetHeaderIDFromText("MYSECTION"), -1);
    EXPECT_EQ(HeaderText(374), "HeaderNotFound: 374");
    EXPECT_EQ(GetHeaderIDFromText("PATH"), 33);
    EXPECT_EQ(HeaderText(33), "PATH");

    // Freeing twice, and a lookup by id straight after freeing, are fine too.
    FreeHeaderMap();
    FreeHeaderMap();
    EXPECT_EQ(HeaderText(336), "MODELFILE");

    // Words may be added again after a free, before any lookup.
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
            for (const VocabularyRow& row : LabelRows())
                mistakes[t] += GetLabelIDFromText(row.word.data()) != row.id;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (int t = 0; t < kThreads; ++t)
        EXPECT_EQ(mistakes[t], 0) << "thread " << t;
}
