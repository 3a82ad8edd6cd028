// HiveFileTest.cpp - the text form of the settings hive (format in HiveFile.h): escaping, round
// trips of hostile texts, removal of keys with their subkeys, and damaged lines that are skipped,
// reported and kept byte for byte.

#include "platform/HiveFile.h"
#include "platform/Platform.h"
#include "settings/TestStore.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace fileio::platform;
using namespace fileio::test;

// The written form of values and names, one row per escaping rule; each text, and the line
// after it, comes back exactly through a fresh parse of the file's text.
TEST(HiveFileTest, WritesValueLinesWithTheDocumentedEscapesAndReadsThemBack) {
    struct Row {
        std::string name;
        std::string value;
        const char* line; // null: not compared
    };
    const Row rows[] = {
        {"Plain", "ON", "Plain=ON"},
        {"Percent", "100%", "Percent=100%25"},              // "%" is always escaped
        {"Lines", "one\ntwo\r\n", "Lines=one%0Atwo%0D%0A"}, // line ends cannot break a line
        {"Blanks", "  two  ", "Blanks=%20 two %20"},        // only the end blanks
        {" lead", "trail ", "%20lead=trail%20"},
        {"Brackets", "[a=b] \"q\"", "Brackets=[a=b] \"q\""}, // no escapes needed in a value
        {"High", "caf\xC3\xA9 \x80\xFF", "High=caf%C3%A9 %80%FF"},
        {"Delete", "\x7F", "Delete=%7F"},
        {"a=b", "1", "a%3Db=1"}, // "=" in a name
        {"[x]", "2", "%5Bx%5D=2"},
        {";not comment", "#x", "%3Bnot comment=#x"}, // a comment's marks at a line's start
        {"#x", ";", "%23x=;"},
        {"", "default", "=default"}, // the key's unnamed value
        {AllBytes(), AllBytes(), nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(EscapeHiveText(row.name, ""));
        HiveDocument written("");
        ASSERT_TRUE(written.Set("K", row.name, row.value));
        written.Set("K", "after", "x");
        const std::string text = written.Text(); // the opening comment, a blank line, the key
        if (row.line != nullptr) {
            EXPECT_EQ(text.substr(text.find("\n\n") + 2),
                      std::string("[K]\n") + row.line + "\nafter=x\n");
        }
        const HiveDocument read(text);
        std::string value;
        ASSERT_TRUE(read.Find("K", row.name, value));
        EXPECT_EQ(value, row.value);
        ASSERT_TRUE(read.Find("K", "after", value));
        EXPECT_EQ(value, "x");
        EXPECT_TRUE(read.Damage().empty());
    }
}

TEST(HiveFileTest, RemovingAKeyRemovesItsSubkeysAndNothingElse) {
    HiveDocument document("");
    const char* keys[] = {"App", "App\\Sub", "App\\Sub\\Deep", "Apple", "Other\\App", "Ap"};
    for (const char* key : keys)
        document.Set(key, "v", key);
    EXPECT_TRUE(document.RemoveKey("APP"));
    std::string value;
    for (const char* gone : {"App", "App\\Sub", "App\\Sub\\Deep"}) {
        SCOPED_TRACE(gone);
        EXPECT_FALSE(document.Find(gone, "v", value));
    }
    for (const char* kept : {"Apple", "Other\\App", "Ap"}) {
        SCOPED_TRACE(kept);
        ASSERT_TRUE(document.Find(kept, "v", value));
        EXPECT_EQ(value, kept);
    }
    EXPECT_FALSE(document.RemoveKey("App"));
    EXPECT_FALSE(document.RemoveKey(""));
    // Removing a subkey leaves its parent.
    document.Set("P\\C", "v", "1");
    document.Set("P", "v", "2");
    EXPECT_TRUE(document.RemoveKey("P\\c"));
    EXPECT_TRUE(document.Find("P", "v", value));
}

// A person's edits: blanks around "=", CRLF line ends, comments, raw bytes of 0x80 and
// above, duplicates. Lines that are not changed keep every byte.
TEST(HiveFileTest, ReadsHandEditedFilesAndKeepsTheirBytes) {
    const std::string text = "# written by hand\r\n"
                             "[ Software\\Varn, Inc.\\App ]\r\n"
                             "  Name  =  value with blanks inside  \r\n"
                             "Raw=caf\xC3\xA9\r\n"
                             "Lower=%c3%a9\r\n"
                             "Dup=first\r\n"
                             "\r\n"
                             "[software\\varn, inc.\\app]\r\n"
                             "Dup=second\r\n"
                             "Later=here\r\n";
    HiveDocument document(text);
    EXPECT_TRUE(document.Damage().empty());
    const std::pair<const char*, const char*> rows[] = {
        {"Name", "value with blanks inside"},
        {"Raw", "caf\xC3\xA9"},
        {"Lower", "\xC3\xA9"},
        {"Dup", "first"},
        {"Later", "here"},
    };
    std::string value;
    for (const auto& [name, expected] : rows) {
        SCOPED_TRACE(name);
        ASSERT_TRUE(document.Find("Software\\Varn, Inc.\\App", name, value));
        EXPECT_EQ(value, expected);
    }
    document.Set("Software\\Varn, Inc.\\App", "Dup", "changed");
    std::string expected = text;
    expected.replace(expected.find("Dup=first\r"), 10, "Dup=changed");
    EXPECT_EQ(document.Text(), expected);
}

TEST(HiveFileTest, DamagedLinesAreSkippedListedAndKeptAsTheyAre) {
    const std::string text = std::string("orphan=above every key\n" // 1
                                         "[Good]\n"                 // 2
                                         "a=1\n"                    // 3
                                         "no equals sign here\n"    // 4
                                         "bad=%ZZ escape\n"         // 5
                                         "nul=%00\n"                // 6
                                         "short=%4\n") +            // 7
                             std::string("raw nul=a\0b\n", 12) +    // 8
                             "[Broken\n"                            // 9
                             "b=2\n"                                // 10: below a damaged key line
                             "[]\n"                                 // 11
                             "[Bad%5Cslash]\n"                      // 12: an escaped separator
                             "[Good]\n"                             // 13
                             "c=3\n";                               // 14
    HiveDocument document(text);

    const std::vector<std::size_t> expectedLines = {1, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    std::vector<std::size_t> lines;
    for (const HiveDocument::DamagedLine& damaged : document.Damage())
        lines.push_back(damaged.number);
    EXPECT_EQ(lines, expectedLines);
    EXPECT_EQ(document.Damage()[1].text, "no equals sign here");

    std::string value;
    EXPECT_TRUE(document.Find("Good", "a", value));
    EXPECT_TRUE(document.Find("Good", "c", value));
    for (const char* name : {"orphan", "bad", "nul", "short", "b"}) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(document.Find("Good", name, value));
        EXPECT_FALSE(document.Find("Broken", name, value));
    }
    // A change elsewhere writes every damaged line back unchanged.
    document.Set("Good", "a", "one");
    std::string expected = text;
    expected.replace(expected.find("a=1"), 3, "a=one");
    EXPECT_EQ(document.Text(), expected);
}

TEST(HiveFileTest, AnEmptyFileBecomesACommentedFile) {
    HiveDocument document("");
    EXPECT_EQ(document.Text().substr(0, 2), "; ");
    EXPECT_TRUE(document.Damage().empty());
    std::string value;
    EXPECT_FALSE(document.Find("K", "n", value));
    // The last line without a line end is still read.
    HiveDocument unterminated("[K]\nn=v");
    ASSERT_TRUE(unterminated.Find("K", "n", value));
    EXPECT_EQ(value, "v");
    EXPECT_EQ(unterminated.Text(), "[K]\nn=v\n");
}

TEST(HiveFileTest, KeyPathsAreNormalized) {
    const std::pair<const char*, const char*> rows[] = {
        {"\\A\\\\\\B\\", "A\\B"}, {"\\\\", ""}, {"Software\\Varn, Inc.\\", "Software\\Varn, Inc."}};
    for (const auto& [in, out] : rows) {
        SCOPED_TRACE(in);
        EXPECT_EQ(NormalizeKeyPath(in), out);
    }
}
} // namespace
