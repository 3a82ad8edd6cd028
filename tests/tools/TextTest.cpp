// TextTest.cpp - the printable form of text taken from files, and the comparison of words.

#include "Text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using fileio::tool::Concat;
using fileio::tool::EqualsIgnoringCase;
using fileio::tool::Printable;
using fileio::tool::Utf8SequenceLength;

struct PrintableCase {
    std::string text;
    const char* shown;
    const char* shownKeepingLines;
};

TEST(TextTest, PrintableEscapesWhatATerminalWouldObey) {
    const PrintableCase cases[] = {
        {"MODELFILE/MESH[3]", "MODELFILE/MESH[3]", "MODELFILE/MESH[3]"},
        {"C:\\Users\\ann\\skin.png", "C:\\Users\\ann\\skin.png", "C:\\Users\\ann\\skin.png"},
        {"\x1b[31mred", "\\x1b[31mred", "\\x1b[31mred"},
        {"a\nb\tc\rd", "a\\x0ab\\x09c\\x0dd", "a\nb\tc\\x0dd"},
        {std::string("nul\0x", 5), "nul\\x00x", "nul\\x00x"},
        {"del\x7f", "del\\x7f", "del\\x7f"},
        {"Gr\xc3\xbc\xc3\x9f"
         "e",
         "Gr\xc3\xbc\xc3\x9f"
         "e",
         "Gr\xc3\xbc\xc3\x9f"
         "e"},
        {"\xc2\x9b"
         "2J",
         "\\xc2\\x9b2J", "\\xc2\\x9b2J"}, // C1 control sequence introducer
        {"bad\xff", "bad\\xff", "bad\\xff"},
        {"cut\xe2\x82", "cut\\xe2\\x82", "cut\\xe2\\x82"},
    };
    for (const PrintableCase& c : cases) {
        EXPECT_EQ(Printable(c.text), c.shown);
        EXPECT_EQ(Printable(c.text, true), c.shownKeepingLines);
    }
}

TEST(TextTest, Utf8SequencesAreMeasuredOnlyWhenWholeAndValid) {
    EXPECT_EQ(Utf8SequenceLength("\xc3\xa9x"), 2u);
    EXPECT_EQ(Utf8SequenceLength("\xe2\x82\xac"), 3u);
    EXPECT_EQ(Utf8SequenceLength("\xf0\x9f\xa4\x96"), 4u);
    EXPECT_EQ(Utf8SequenceLength("a"), 0u);
    EXPECT_EQ(Utf8SequenceLength(""), 0u);
    EXPECT_EQ(Utf8SequenceLength("\xe0\x80\x80"), 0u); // overlong
    EXPECT_EQ(Utf8SequenceLength("\xf4\x90\x80\x80"), 0u);
    EXPECT_EQ(Utf8SequenceLength("\xed\xbf\xbf"), 0u); // surrogate
    EXPECT_EQ(Utf8SequenceLength("\xc2\x80"), 0u);     // C1 control
    EXPECT_EQ(Utf8SequenceLength("\xc2\xa0"), 2u);     // the first code point after them
}

TEST(TextTest, WordsCompareWithoutRegardToAsciiCase) {
    EXPECT_TRUE(EqualsIgnoringCase("Maps", "mAPS"));
    EXPECT_TRUE(EqualsIgnoringCase("", ""));
    EXPECT_FALSE(EqualsIgnoringCase("Map", "Maps"));
    EXPECT_FALSE(EqualsIgnoringCase("\xc3\xa9", "\xc3\x89")); // only ASCII letters fold
    EXPECT_EQ(Concat({"'", "word", "' is ", "bad"}), "'word' is bad");
}

} // namespace
