// TextTest.cpp - the printable form of text taken from files (whole, valid UTF-8 stays; every
// other byte a terminal would obey is escaped), and the comparison of words.

#include "Text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using fileio::tool::EqualsIgnoringCase;
using fileio::tool::Printable;
using fileio::tool::Utf8SequenceLength;

TEST(TextTest, PrintableEscapesWhatATerminalWouldObey) {
    const std::pair<std::string, const char*> cases[] = {
        {"C:\\Users\\ann\\skin.png", "C:\\Users\\ann\\skin.png"},
        {"a\rb", "a\\x0db"},
        {std::string("nul\0x", 5), "nul\\x00x"},
        {"del\x7f", "del\\x7f"},
        // 2, 3 and 4 bytes; the first after C1
        {"\xc3\xa9\xe2\x82\xac\xf0\x9f\xa4\x96\xc2\xa0",
         "\xc3\xa9\xe2\x82\xac\xf0\x9f\xa4\x96\xc2\xa0"},
        {"\xc2\x9b"
         "2J",
         "\\xc2\\x9b2J"}, // C1 control sequence introducer
        {"bad\xff", "bad\\xff"},
        {"cut\xe2\x82", "cut\\xe2\\x82"},
        {"\xe0\x80\x80", "\\xe0\\x80\\x80"},          // overlong
        {"\xed\xbf\xbf", "\\xed\\xbf\\xbf"},          // surrogate
        {"\xf4\x90\x80\x80", "\\xf4\\x90\\x80\\x80"}, // past U+10FFFF
    };
    for (const auto& [text, shown] : cases) {
        EXPECT_EQ(Printable(text), shown);
        EXPECT_EQ(Printable(text, true), shown) << "only line ends and tabs may be kept";
    }
    EXPECT_EQ(Printable("a\nb\tc"), "a\\x0ab\\x09c");
    EXPECT_EQ(Printable("a\nb\tc", true), "a\nb\tc");
    EXPECT_EQ(Utf8SequenceLength(""), 0u) << "no sequence in no text";
}

TEST(TextTest, WordsCompareWithoutRegardToAsciiCase) {
    EXPECT_TRUE(EqualsIgnoringCase("AZaz", "azAZ"));
    EXPECT_FALSE(EqualsIgnoringCase("Map", "Maps"));
    EXPECT_FALSE(EqualsIgnoringCase("\xc3\xa9", "\xc3\x89")); // only ASCII letters fold
}

} // namespace
