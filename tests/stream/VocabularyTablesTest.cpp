// The two vocabulary tables as the suite's files know them: counts, id ranges, order,
// uniqueness, the synonym pairs and the odd words.

#include "stream/VocabularyTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

using fileio::detail::HeaderRows;
using fileio::detail::LabelRows;
using fileio::detail::VocabularyRow;

namespace {

struct IdRange {
    int lowest;
    int highest;
};

IdRange RangeOf(std::span<const VocabularyRow> rows, int ignoredId) {
    IdRange range{1 << 30, -(1 << 30)};
    for (const VocabularyRow& row : rows) {
        if (row.id == ignoredId)
            continue;
        range.lowest = std::min(range.lowest, row.id);
        range.highest = std::max(range.highest, row.id);
    }
    return range;
}

} // namespace

TEST(VocabularyTables, CountsAndIdRanges) {
    EXPECT_EQ(HeaderRows().size(), 157u);
    EXPECT_EQ(LabelRows().size(), 893u);

    const IdRange headers = RangeOf(HeaderRows(), -2);
    EXPECT_EQ(headers.lowest, 33);
    EXPECT_EQ(headers.highest, 373);

    // "NoLabel" is the one label outside the range, with -2.
    const IdRange labels = RangeOf(LabelRows(), -2);
    EXPECT_EQ(labels.lowest, 1110);
    EXPECT_EQ(labels.highest, 5384);
    const auto noLabel = std::find_if(LabelRows().begin(), LabelRows().end(),
                                      [](const VocabularyRow& row) { return row.id == -2; });
    ASSERT_NE(noLabel, LabelRows().end());
    EXPECT_EQ(noLabel->word, "NoLabel");
    EXPECT_EQ(std::count_if(LabelRows().begin(), LabelRows().end(),
                            [](const VocabularyRow& row) { return row.id < 1110; }),
              1);
}

TEST(VocabularyTables, WordsAndIdsAreUniqueExceptTheSixSynonyms) {
    std::set<std::string> headerWords;
    std::set<int> headerIds;
    for (const VocabularyRow& row : HeaderRows()) {
        SCOPED_TRACE(row.word);
        EXPECT_TRUE(headerWords.insert(std::string(row.word)).second);
        EXPECT_TRUE(headerIds.insert(row.id).second);
    }

    std::set<std::string> labelWords;
    std::map<int, std::vector<std::string>> wordsOfId;
    for (const VocabularyRow& row : LabelRows()) {
        SCOPED_TRACE(row.word);
        EXPECT_TRUE(labelWords.insert(std::string(row.word)).second);
        wordsOfId[row.id].emplace_back(row.word);
    }
    std::map<int, std::vector<std::string>> shared;
    for (const auto& [id, words] : wordsOfId) {
        if (words.size() > 1)
            shared.emplace(id, words);
    }
    // In table order, so the first word of each pair is the one an id reads back as.
    const std::map<int, std::vector<std::string>> synonyms = {
        {1942, {"FurLength", "ShagLength"}},       {1943, {"FurStiffness", "ShagStiffness"}},
        {1944, {"FurDensity", "ShagDensity"}},     {1945, {"FurThickness", "ShagThickness"}},
        {3072, {"Jitter", "OpaqueInReflections"}}, {4154, {"HasStride", "UseStride"}},
    };
    EXPECT_EQ(shared, synonyms);
}

TEST(VocabularyTables, HeaderAndLabelIdsDoNotOverlap) {
    std::set<int> headerIds;
    for (const VocabularyRow& row : HeaderRows())
        headerIds.insert(row.id);
    for (const VocabularyRow& row : LabelRows()) {
        SCOPED_TRACE(row.word);
        EXPECT_EQ(headerIds.count(row.id), 0u);
    }
}

TEST(VocabularyTables, WordsFitATokenTextAndOnlyKnownOnesHoldOtherThanLettersAndDigits) {
    std::set<std::string> unusual;
    for (const auto rows : {HeaderRows(), LabelRows()}) {
        for (const VocabularyRow& row : rows) {
            const std::string word(row.word);
            SCOPED_TRACE(word);
            EXPECT_GE(word.size(), 1u);
            EXPECT_LE(word.size(), 79u);
            if (!std::all_of(word.begin(), word.end(), [](char c) {
                    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                           (c >= '0' && c <= '9');
                }))
                unusual.insert(word);
        }
    }
    // Single spaces inside, none at either end, and one word of angle brackets.
    const std::set<std::string> expected = {"Filter List",   "<<<<<<",         "Apply Gamma",
                                            "Back Distance", "Front Distance", "Plugin Properties"};
    EXPECT_EQ(unusual, expected);
}

TEST(VocabularyTables, RowsStandInTableOrder) {
    // Rows at the ends, around the words kept out of alphabetical place, and the odd
    // spellings, each with its position.
    struct Row {
        std::size_t position;
        const char* word;
        int id;
    };
    const Row headers[] = {
        {0, "ACTIONDOPESHEETFILE", 292},
        {1, "ACTIONFILE", 293},
        {6, "ATTCONSTRAINTSHORTCUT", 372},
        {7, "ATTCONSTRAINT", 371},
        {29, "CPS", 307},
        {30, "CPINST", 308},
        {66, "HAIR2EMITTER", 264},
        {102, "OLDACTIONFILE", 340},
        {103, "Filter List", 114},
        {104, "PARTICLEEMITTER", 341},
        {131, "SKINNEDCPS", 357},
        {132, "NODELIST", 358},
        {133, "NODENODE", 359},
        {141, "SPRINGSYSTEMPLACEHOLDER", 279},
        {142, "<<<<<<", 364},
        {143, "TARGETCHAINTOCONSTRAINT", 281},
        {146, "TRANSFDRIVER", 222},
        {156, "WINDOWPLACEMENTS", 113},
    };
    for (const Row& row : headers) {
        SCOPED_TRACE(row.word);
        ASSERT_LT(row.position, HeaderRows().size());
        EXPECT_EQ(HeaderRows()[row.position].word, row.word);
        EXPECT_EQ(HeaderRows()[row.position].id, row.id);
    }
    const Row labels[] = {
        {0, "ACCURATTRANSPARENCY", 1936},
        {1, "ActionObjectTarget", 1633},
        {40, "Apply Gamma", 1264},
        {50, "Back Distance", 1207},
        {51, "BackgroundColor", 4800},
        {387, "GPUBlur", 5102},
        {396, "SSAO", 5110},
        {408, "SSAORadius", 5113},
        {409, "HasAttributes", 1111},
        {557, "LegacyBumpMap", 1520},
        {544, "NoLabel", -2},
        {613, "Plugin Properties", 2693},
        {710, "IsRenderShaders", 2550},
        {359, "FurLength", 1942},
        {725, "ShagLength", 1942},
        {414, "HasStride", 4154},
        {865, "UseStride", 4154},
        {457, "Jitter", 3072},
        {561, "OpaqueInReflections", 3072},
        {892, "ZRes", 4144},
    };
    for (const Row& row : labels) {
        SCOPED_TRACE(row.word);
        ASSERT_LT(row.position, LabelRows().size());
        EXPECT_EQ(LabelRows()[row.position].word, row.word);
        EXPECT_EQ(LabelRows()[row.position].id, row.id);
    }
}

TEST(VocabularyTables, FirstLabelRowTakesTheFirstRowOfAnId) {
    struct Case {
        int id;
        const char* word; // null: no row
    };
    const Case cases[] = {
        {1942, "FurLength"},
        {1945, "FurThickness"},
        {3072, "Jitter"},
        {4154, "HasStride"},
        {4046, "Active"},
        {-2, "NoLabel"},
        {1110, "TemporaryGroup"},
        {5384, "BulletSpinningFriction"},
        {-1, nullptr},
        {0, nullptr},
        {1109, nullptr},
        {5385, nullptr},
        {336, nullptr},
        {-3, nullptr},
        {1114, nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.id);
        const VocabularyRow* row = fileio::detail::FirstLabelRow(c.id);
        if (c.word == nullptr) {
            EXPECT_EQ(row, nullptr);
        } else {
            ASSERT_NE(row, nullptr);
            EXPECT_EQ(row->word, c.word);
            EXPECT_EQ(row->id, c.id);
        }
    }
}
