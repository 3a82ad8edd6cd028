// The Header, EndHeader and Label tokens: layout, constructors, the 79-byte bound, copying.

#include "fileio/stream/Token.h"

#include "VocabularyTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <type_traits>

using vocabulary_test::LongWord;

namespace {

constexpr int kEnd = 0x20000000;

// The whole text field: the expected word, then zeros to the end of the 80 bytes.
template <class Token> void ExpectText(const Token& token, const std::string& word) {
    ASSERT_LE(word.size(), 79u);
    EXPECT_EQ(std::string(token.GetText()), word);
    EXPECT_EQ(token.GetText(), token.text);
    EXPECT_TRUE(std::all_of(token.text + word.size(), token.text + fileio::kTokenTextSize,
                            [](char c) { return c == '\0'; }))
        << "bytes after the word are not all zero";
}

} // namespace

TEST(VocabularyToken, AllThreeShareOneLayout) {
    static_assert(std::is_trivially_copyable_v<Header>);
    static_assert(std::is_trivially_copyable_v<EndHeader>);
    static_assert(std::is_trivially_copyable_v<Label>);
    EXPECT_EQ(sizeof(Header), 84u);
    EXPECT_EQ(sizeof(EndHeader), 84u);
    EXPECT_EQ(sizeof(Label), 84u);
    EXPECT_EQ(offsetof(Header, text), 0u);
    EXPECT_EQ(offsetof(Header, id), 80u);
    EXPECT_EQ(offsetof(Label, text), 0u);
    EXPECT_EQ(offsetof(Label, id), 80u);
}

TEST(VocabularyToken, DefaultTokensAreEmptyWithoutId) {
    const Header header;
    const EndHeader endHeader;
    const Label label;
    ExpectText(header, "");
    ExpectText(endHeader, "");
    ExpectText(label, "");
    EXPECT_EQ(header.id, -1);
    EXPECT_EQ(endHeader.id, -1);
    EXPECT_EQ(label.id, -1);
}

TEST(VocabularyToken, HeadersFromAnId) {
    const struct {
        int id;
        int expectedId;
        const char* text;
        bool end;
    } cases[] = {
        {336, 336, "MODELFILE", false},
        {33, 33, "PATH", false},
        {364, 364, "<<<<<<", false},
        {375, 375, "HeaderNotFound: 375", false},
        {-1, -1, "HeaderNotFound: -1", false},
        {336 | kEnd, 336 | kEnd, "MODELFILE", false},
        {336, 336 | kEnd, "MODELFILE", true},
        {114, 114 | kEnd, "Filter List", true},
        {374, 374 | kEnd, "HeaderNotFound: 374", true},
        {-1, -1, "HeaderNotFound: -1", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.end ? "EndHeader " : "Header ") + std::to_string(c.id));
        if (c.end) {
            const EndHeader token(c.id);
            EXPECT_EQ(token.id, c.expectedId);
            ExpectText(token, c.text);
        } else {
            const Header token(c.id);
            EXPECT_EQ(token.id, c.expectedId);
            ExpectText(token, c.text);
        }
    }
}

TEST(VocabularyToken, HeadersFromAnIdAndATextTakeBothAsGiven) {
    const Header header(7, "CUSTOM");
    EXPECT_EQ(header.id, 7);
    ExpectText(header, "CUSTOM");

    // The text is not looked up, nor is the id.
    const Header mismatch(33, "MODELFILE");
    EXPECT_EQ(mismatch.id, 33);
    ExpectText(mismatch, "MODELFILE");

    const EndHeader endHeader(7, "CUSTOM");
    EXPECT_EQ(endHeader.id, 7 | kEnd);
    ExpectText(endHeader, "CUSTOM");

    const Header nullText(5, nullptr);
    EXPECT_EQ(nullText.id, 5);
    ExpectText(nullText, "");
    const EndHeader nullEndText(5, nullptr);
    EXPECT_EQ(nullEndText.id, 5 | kEnd);
    ExpectText(nullEndText, "");
}

TEST(VocabularyToken, LabelsFromAnIdOrAText) {
    const struct {
        int id;
        const char* text;
    } fromId[] = {
        {4046, "Active"},          {1942, "FurLength"},         {3072, "Jitter"},
        {-2, "NoLabel"},           {2693, "Plugin Properties"}, {9999, "LabelNotFound: 9999"},
        {-1, "LabelNotFound: -1"},
    };
    for (const auto& c : fromId) {
        SCOPED_TRACE(c.id);
        const Label label(c.id);
        EXPECT_EQ(label.id, c.id);
        ExpectText(label, c.text);
    }

    const struct {
        const char* text;
        int id;
    } fromText[] = {
        {"Active", 4046}, {"ShagLength", 1942}, {"UseStride", 4154}, {"Plugin Properties", 2693},
        {"NoLabel", -2},  {"active", -1},       {"MODELFILE", -1},   {"", -1},
    };
    for (const auto& c : fromText) {
        SCOPED_TRACE(c.text);
        const Label label(c.text);
        EXPECT_EQ(label.id, c.id);
        ExpectText(label, c.text);
    }

    const Label nullText(static_cast<const char*>(nullptr));
    EXPECT_EQ(nullText.id, -1);
    ExpectText(nullText, "");
}

TEST(VocabularyToken, TextsLongerThan79BytesAreCut) {
    const std::string longWord = LongWord();
    const std::string cut = longWord.substr(0, 79);

    const Header header(5, longWord.c_str());
    EXPECT_EQ(header.id, 5);
    ExpectText(header, cut);

    const EndHeader endHeader(5, longWord.c_str());
    EXPECT_EQ(endHeader.id, 5 | kEnd);
    ExpectText(endHeader, cut);

    const Label label(longWord.c_str());
    EXPECT_EQ(label.id, -1);
    ExpectText(label, cut);

    // A label word followed by more text is not that word.
    const Label padded((std::string("Active") + std::string(194, ' ')).c_str());
    EXPECT_EQ(padded.id, -1);
}

TEST(VocabularyToken, AssignmentCopiesTheWholeTextAndTheId) {
    Header source(336);
    // Bytes past the NUL are copied too.
    std::memset(source.text + 20, 'q', 10);
    Header copy(33);
    copy = source;
    EXPECT_EQ(std::memcmp(copy.text, source.text, fileio::kTokenTextSize), 0);
    EXPECT_EQ(copy.id, 336);

    Header moved;
    moved = std::move(copy);
    EXPECT_EQ(std::memcmp(moved.text, source.text, fileio::kTokenTextSize), 0);
    EXPECT_EQ(moved.id, 336);

    Label label(4046);
    Label labelCopy("Bow");
    labelCopy = label;
    EXPECT_STREQ(labelCopy.GetText(), "Active");
    EXPECT_EQ(labelCopy.id, 4046);

    EndHeader end(336);
    EndHeader endCopy;
    endCopy = end;
    EXPECT_EQ(endCopy.id, 336 | kEnd);
    EXPECT_STREQ(endCopy.GetText(), "MODELFILE");
}
