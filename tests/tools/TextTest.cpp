// TextTest.cpp - the printable form of text taken from files (whole, valid UTF-8 stays; every
// other byte a terminal would obey is escaped), and the comparison of words.

#include "Text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

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
        {"C:\\Users\\ann\\skin.png", "C:\\Users\\ann\\skin.png", "C:\\Users\\ann\\skin.png"},
        {"\x1b[31mred", "\\x1b[31mred", "\\x1b[31mred"},
        {"a\nb\tc\rd", "a\\x0ab\\x09c\\x0dd", "a\nb\tc\\x0dd"},
        {std::string("nul\0x", 5), "nul\\x00x", "nul\\x00x"},
        {"del\x7f", "del\\x7f", "del\\x7f"},
        {"\xc3\xa9\xe2\x82\xac\xf0\x9f\xa4\x96\xc2\xa0",
         "\xc3\xa9\xe2\x82\xac\xf0\x9f\xa4\x96\xc2\xa0",
         "\xc3\xa9\xe2\x82\xac\xf0\x9f\xa4\x96\xc2\xa0"}, // 2, 3 and 4 bytes; the first after C1
        {"\xc2\x9b"
         "2J",
         "\\xc2\\x9b2J", "\\xc2\\x9b2J"}, // C1 control sequence introducer
        {"bad\xff", "bad\\xff", "bad\\xff"},
        {"cut\xe2\x82", "cut\\xe2\\x82", "cut\\xe2\\x82"},
        {"\xe0\x80\x80", "\\xe0\\x80\\x80", "\\xe0\\x80\\x80"},               // overlong
        {"\xed\xbf\xbf", "\\xed\\xbf\\xbf", "\\xed\\xbf\\xbf"},               // surrogate
        {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80", "\\xf4\\x90\\x80\\x80"}, // past U+10FFFF
    };
    for (const PrintableCase& c : cases) {
        EXPECT_EQ(Printable(c.text), c.shown);
        EXPECT_EQ(Printable(c.text, true), c.shownKeepingLines);
    }
    EXPECT_EQ(Utf8SequenceLength(""), 0u) << "no sequence in no text";
}

TEST(TextTest, WordsCompareWithoutRegardToAsciiCase) {
    EXPECT_TRUE(EqualsIgnoringCase("AZaz", "azAZ"));
    EXPECT_FALSE(EqualsIgnoringCase("Map", "Maps"));
    EXPECT_FALSE(EqualsIgnoringCase("\xc3\xa9", "\xc3\x89")); // only ASCII letters fold
}

} // namespace
