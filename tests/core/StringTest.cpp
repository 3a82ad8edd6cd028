// The String type and its text operations.

#include "StringTestSupport.h"

#include <string>
#include <vector>

namespace {

using StringTest = StringPoolTest;

// Which constructor gives null and which a non-null empty buffer is the heart of the type's
// contract; the others copy exactly the bytes given, embedded NULs and high bytes included
// (the text ends at the first NUL), and String(n, x) is n + 1 zero bytes of room. Each row
// makes its string in place, since a copy would turn an empty buffer into null.
TEST_F(StringTest, ConstructorsGiveNullEmptyBufferOrExactBytes) {
    const struct {
        const char* name;
        String (*make)();
        const char* text;
    } rows[] = {
        {"String()", [] { return String(); }, "<null>"},
        {"String(\"\")", [] { return String(""); }, "<null>"},
        {"String(nullptr)", [] { return String(static_cast<const char*>(nullptr)); }, "<null>"},
        {"String('\\0')", [] { return String('\0'); }, ""},
        {"String(p, 0)", [] { return String("xyz", 0); }, ""},
        {"String(0, 0)", [] { return String(0, 0); }, ""},
        {"String(p, -5)", [] { return String("xyz", -5); }, ""},
        {"String(0xE9)", [] { return String(static_cast<unsigned char>(0xE9)); }, "\xE9"},
        {"String('z', 4)", [] { return String('z', 4); }, "zzzz"},
        {"String(std::string)", [] { return String(std::string("std")); }, "std"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(TextOf(row.make()), row.text) << row.name;
    const char bytes[] = {'a', '\0', 'b', '\xFF', '\x80'};
    String s(bytes, 5);
    EXPECT_EQ(std::string(s.Get(), 6), std::string(bytes, 5) + '\0');
    EXPECT_EQ(s.GetLength_Int(), 1);
    EXPECT_EQ(std::string(String(16, 12345).Get(), 17), std::string(17, '\0'));
}

// A string's buffer is its own: changing a copy never shows in the original, and a move
// copies too. Self-assignment keeps the very buffer.
TEST_F(StringTest, CopiesNeverShareBuffersAndSelfAssignmentKeepsThem) {
    String original("shared?");
    String copy(original);
    String moved(std::move(original));
    copy.Get()[0] = 'S';
    moved.Get()[0] = 'M';
    EXPECT_EQ(TextOf(original), "shared?");
    EXPECT_EQ(TextOf(copy), "Shared?");
    EXPECT_EQ(TextOf(moved), "Mhared?");
    char* before = copy.Get();
    String& same = copy;
    copy = same;
    copy = std::move(same);
    EXPECT_EQ(copy.Get(), before);
}

TEST_F(StringTest, AssignmentAndSetReplaceTextAndEmptyTextBecomesNull) {
    String s("first");
    s = reinterpret_cast<const unsigned char*>("second");
    EXPECT_EQ(TextOf(s), "second");
    s = std::string("third");
    EXPECT_EQ(TextOf(s), "third");
    s = s.Get() + 2; // a pointer into its own text: copied before the old buffer goes
    EXPECT_EQ(TextOf(s), "ird");
    s = "";
    EXPECT_EQ(s.Get(), nullptr);
    EXPECT_EQ(s[5], '\0'); // indexing a null string reads NUL
    s = "x";
    s = String('\0');
    EXPECT_EQ(s.Get(), nullptr);
    // Set(p, n) copies n bytes, NUL included; no bytes give null.
    const char bytes[] = {'a', 'b', '\0', 'c'};
    s.Set(bytes, 4);
    EXPECT_EQ(TextOf(s), "ab");
    EXPECT_EQ(s.Get()[3], 'c');
    s.Set("hello", 0);
    EXPECT_EQ(s.Get(), nullptr);
}

// Appending nothing leaves the left side as it is (null stays null, an empty buffer stays);
// concatenation leaves its operands alone.
TEST_F(StringTest, AppendsStringsAndCharacters) {
    struct {
        const char* name;
        String left, right;
        std::string appended, sum;
    } rows[] = {
        {"text + text", String("ab"), String("cd"), "abcd", "abcd"},
        {"null + text", String(), String("cd"), "cd", "cd"},
        {"text + null", String("ab"), String(), "ab", "ab"},
        {"null + empty buffer", String(), String('\0'), "<null>", "<null>"},
        {"empty buffer + null", String('\0'), String(), "", "<null>"},
    };
    for (auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(TextOf(row.left + row.right), row.sum);
        row.left += row.right;
        EXPECT_EQ(TextOf(row.left), row.appended);
    }
    String s("abc");
    s += s;
    EXPECT_EQ(TextOf(s), "abcabc");
    s += 'x';
    s += '\0';
    EXPECT_EQ(TextOf(s), "abcabcx");
    String stillNull;
    stillNull += '\0';
    EXPECT_EQ(stillNull.Get(), nullptr);
    const String ab("ab");
    EXPECT_EQ(TextOf("xy" + ab + "cd" + static_cast<const char*>(nullptr)), "xyabcd");
}

TEST_F(StringTest, RemovesNonOverlappingOccurrences) {
    const struct {
        const char *text, *pattern;
        int count;
        std::string expected;
    } rows[] = {
        {"abcab", "ab", 2, "c"},         {"aaa", "aa", 1, "a"}, // left to right, no overlap
        {"abc", "abcd", 0, "abc"},                              // pattern longer than the text
        {"ABab", "ab", 1, "AB"},                                // exact bytes: case matters here
        {"a\xE9z\xE9", "\xE9", 2, "az"}, {"abc", "", 0, "abc"}, // an empty pattern removes nothing
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.text) + " - " + row.pattern);
        String s(row.text);
        EXPECT_EQ(s.RemoveAll(String(row.pattern)), row.count);
        EXPECT_EQ(TextOf(s), row.expected);
    }
    String self("abc");
    EXPECT_EQ(self.RemoveAll(self), 1);
}

TEST_F(StringTest, ObjectsMadeWithNewLiveInTheStringPool) {
    static_assert(sizeof(String) == sizeof(char*));
    const unsigned long long before = StringPoolTotal();
    String* s = new String;
    EXPECT_GT(StringPoolTotal(), before);
    delete s;
    EXPECT_EQ(StringPoolTotal(), before);
}

const char* const kNull = nullptr;   // a null string
const char* const kEmptyBuffer = ""; // String('\0'), a non-null empty buffer

String Make(const char* text) {
    return text == nullptr ? String() : text == kEmptyBuffer ? String('\0') : String(text);
}

// Every operator on every pair of states, from the order the row gives (-1, 0, 1). Null
// orders before everything, an empty buffer is text "" (before any other text), and text
// compares with both bytes lowered, as unsigned values. Compare is stricter: two empty
// strings are never equal, lengths must match, and respecting case the bytes must.
TEST_F(StringTest, ComparisonOperatorsAndCompare) {
    const struct {
        const char *left, *right;
        int order;
    } rows[] = {
        {kNull, kNull, 0},
        {kNull, kEmptyBuffer, -1},
        {kEmptyBuffer, kNull, 1},
        {kEmptyBuffer, kEmptyBuffer, 0},
        {kEmptyBuffer, "a", -1},
        {"abc", "ABC", 0},
        {"ABD", "abc", 1},
        {"ab", "abc", -1},
        {"abc", "abc", 0},
        // '_' (0x5F) lies between the capitals and the small letters: "a" is lowered first.
        {"_", "A", -1},
        // Bytes from 0x80 on compare as unsigned values and are not folded.
        {"\x80", "z", 1},
        {"\xC9", "\xE9", -1},
    };
    for (const auto& row : rows) {
        const String a = Make(row.left);
        const String b = Make(row.right);
        SCOPED_TRACE(TextOf(a) + " vs " + TextOf(b));
        EXPECT_EQ(a == b, row.order == 0);
        EXPECT_EQ(a != b, row.order != 0);
        EXPECT_EQ(a < b, row.order < 0);
        EXPECT_EQ(a <= b, row.order <= 0);
        EXPECT_EQ(a > b, row.order > 0);
        EXPECT_EQ(a >= b, row.order >= 0);
        const bool equalTexts = row.order == 0 && row.left != kNull && row.left != kEmptyBuffer;
        EXPECT_EQ(a.Compare(b, false), equalTexts);
        EXPECT_EQ(a.Compare(b, true), equalTexts && TextOf(a) == TextOf(b));
    }
}

// Find and ReverseFind, by character (for one-character patterns) and by text: letters match
// ignoring case, bytes above ASCII exactly; a forward start below 0 counts as 0, a backward
// start below 0 or past the end means from the end, and a backward match may begin at the
// start itself. NUL and the empty pattern are never found.
TEST_F(StringTest, FindAndReverseFind) {
    const struct {
        const char *text, *pattern;
        int start, found, foundBackward;
    } rows[] = {{"Scene.PRJ", "p", 0, 6, -1},    {"Scene.PRJ", "e", 3, 4, 2},
                {"Scene.PRJ", "s", -7, 0, 0},    {"Scene.PRJ", "J", 9, -1, 8},
                {"Scene.PRJ", ".prj", 0, 5, -1}, {"a\xE9", "\xC9", 0, -1, -1},
                {"a\xE9", "\xE9", 0, 1, -1},     {"abcabc", "BC", 2, 4, 1},
                {"abcabc", "abcabc", 0, 0, 0},   {"abcabc", "abcabcd", 0, -1, -1},
                {"aaaa", "aa", 1, 1, 1},         {"C:\\a\\b\\c.prj", "\\", 1000, -1, 6},
                {"abc", "", 0, -1, -1}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.text) + " / " + row.pattern + " from " +
                     std::to_string(row.start));
        const String text(row.text);
        EXPECT_EQ(text.Find(String(row.pattern), row.start), row.found);
        EXPECT_EQ(text.ReverseFind(String(row.pattern), row.start), row.foundBackward);
        if (std::string(row.pattern).size() == 1) {
            EXPECT_EQ(text.Find(row.pattern[0], row.start), row.found);
            EXPECT_EQ(text.ReverseFind(row.pattern[0], row.start), row.foundBackward);
        }
    }
    EXPECT_EQ(String("abc").Find('\0'), -1);
    EXPECT_EQ(String("abc").ReverseFind('\0'), -1);
}

TEST_F(StringTest, LeftRightMid) {
    const String s("abcdef");
    const struct {
        String value;
        const char* expected;
    } rows[] = {
        {s.Left(2), "ab"},        {s.Left(0), "<null>"},    {s.Right(2), "ef"},
        {s.Right(100), "abcdef"}, {s.Right(0), "<null>"},   {s.Mid(2, 3), "cde"},
        {s.Mid(4, 100), "ef"},    {s.Mid(-2, 2), "ab"},     {s.Mid(100, 2), "<null>"},
        {s.Mid(1, 0), "<null>"},  {s.Mid(0, -5), "abcdef"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(TextOf(row.value), row.expected);
}

TEST_F(StringTest, Tokenize) {
    const struct {
        const char *text, *delimiters;
        std::vector<std::string> tokens;
    } rows[] = {
        {"C:/a//b", ":/", {"C", "a", "b"}},
        {"//server/share/", ":/", {"server", "share"}},
        {"abc", "", {"abc"}}, // no delimiters: the whole text
        {":::", ":", {}},
        {"aXbxc", "x", {"aXb", "c"}}, // delimiters match exactly
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        std::vector<std::string> tokens;
        int position = 0;
        while (position >= 0 && tokens.size() < 100)
            tokens.push_back(TextOf(String(row.text).Tokenize(String(row.delimiters), position)));
        EXPECT_EQ(tokens.back(), "<null>"); // the call that ends the walk gives null
        tokens.pop_back();
        EXPECT_EQ(tokens, row.tokens);
    }
}

TEST_F(StringTest, Replace) {
    const struct {
        const char *text, *from, *to;
        int count;
        std::string expected;
    } rows[] = {
        {"a\\b\\c", "\\", "/", 2, "a/b/c"},
        {"Hello hello", "HELLO", "bye", 2, "bye bye"}, // ignoring case
        {"aaaa", "aa", "b", 2, "bb"},                  // left to right, no overlap
        {"abc", "abc", "", 1, "<null>"},               // no text left: null
        {"abc", "", "y", 0, "abc"},
        {"ab", "ab", "abab", 1, "abab"}, // the replacement is not searched again
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.text) + " : " + row.from + " -> " + row.to);
        String s(row.text);
        EXPECT_EQ(s.Replace(String(row.from), String(row.to)), row.count);
        EXPECT_EQ(TextOf(s), row.expected);
    }
    String self("ab");
    EXPECT_EQ(self.Replace(self, String("x")), 1);
    EXPECT_EQ(TextOf(self), "x");
    String other("abab");
    EXPECT_EQ(other.Replace(String("a"), other), 2); // the replacement is the old text
    EXPECT_EQ(TextOf(other), "ababbababb");
}

TEST_F(StringTest, Trim) {
    const struct {
        const char *text, *left, *right, *both;
    } rows[] = {
        {"  a b  ", "a b  ", "  a b", "a b"},
        {"\t\n\v\f\rx\r\n", "x\r\n", "\t\n\v\f\rx", "x"},
        {"   ", "<null>", "<null>", "<null>"},
        {"\xA0x\xA0", "\xA0x\xA0", "\xA0x\xA0", "\xA0x\xA0"}, // only C white space
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        String left(row.text), right(row.text), both(row.text);
        EXPECT_EQ(TextOf(left.TrimLeft()), row.left);
        EXPECT_EQ(TextOf(right.TrimRight()), row.right);
        EXPECT_EQ(TextOf(both.Trim()), row.both);
    }
    String chars("--=x=--");
    EXPECT_EQ(TextOf(String(chars).TrimLeft(String("-"))), "=x=--");
    EXPECT_EQ(TextOf(String(chars).TrimRight(String("-="))), "--=x");
    EXPECT_EQ(TextOf(String(chars).Trim(String("=-"))), "x");
    String empty('\0');
    EXPECT_NE(empty.Trim().Get(), nullptr) << "nothing to trim: the buffer stays";
}

TEST_F(StringTest, CaseAndQuote) {
    String s("Mixed Case 123 _\xE9\xC9");
    EXPECT_EQ(TextOf(s.MakeUpper()), "MIXED CASE 123 _\xE9\xC9");
    EXPECT_EQ(TextOf(s.MakeLower()), "mixed case 123 _\xE9\xC9");
    EXPECT_EQ(TextOf(String("C:\\a b").Quote()), "\"C:\\a b\"");
    EXPECT_EQ(TextOf(String().Quote()), "\"\"");
}

// Contraction reads the five named escapes and numeric ones that give a byte other than NUL,
// in one pass; expansion writes the named ones, bytes above ASCII untouched, and is undone
// by contraction.
TEST_F(StringTest, XMLEscapes) {
    const struct {
        const char* text;
        int count;
        const char* expected;
    } rows[] = {
        {"&amp;&lt;&gt;&quot;&apos;", 5, "&<>\"'"},
        {"&#65;&#x42;&#X63;&#00000065;", 4, "ABcA"}, // up to 8 digits
        {"&amp;amp;", 1, "&amp;"},                   // one pass: the result is not read again
        {"&#0;", 0, "&#0;"},                         // a NUL would cut the text: kept
        {"&#256;", 0, "&#256;"},                     // not a byte
        {"&#000000065;", 0, "&#000000065;"},         // more than 8 digits
        {"&#;&#x;&#12a;&#-1;", 0, "&#;&#x;&#12a;&#-1;"},
        {"&AMP;&unknown;&amp", 0, "&AMP;&unknown;&amp"},
        {"&&amp;&", 1, "&&&"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        String s(row.text);
        EXPECT_EQ(s.ContractXMLEscapes(), row.count);
        EXPECT_EQ(TextOf(s), row.expected);
    }
    const char* const text = "a<b> & \"c\" 'd' \xE9\x01";
    String s(text);
    EXPECT_EQ(s.ExpandXMLEscapes(), 7);
    EXPECT_EQ(TextOf(s), "a&lt;b&gt; &amp; &quot;c&quot; &apos;d&apos; \xE9\x01");
    EXPECT_EQ(s.ContractXMLEscapes(), 7);
    EXPECT_EQ(TextOf(s), text);
    String one("&"); // a single escape is written too
    EXPECT_EQ(one.ExpandXMLEscapes(), 1);
    EXPECT_EQ(TextOf(one), "&amp;");
}

TEST_F(StringTest, GetAbbreviated) {
    const struct {
        const char* text;
        int maxLength;
        const char* expected;
    } rows[] = {
        {"C:\\Projects\\Robot\\Parts\\scene.prj", 31, "C:\\Projects\\Robot\\...\\scene.prj"},
        {"C:\\Projects\\Robot\\Parts\\scene.prj", 24, "C:\\...\\scene.prj"},
        {"C:\\Projects\\Robot\\Parts\\scene.prj", 15, "...ts\\scene.prj"}, // not even C:\ fits
        {"\\\\server\\share\\deep\\folder\\file.mdl", 30, "\\\\server\\share\\...\\file.mdl"},
        {"C:/mixed\\seps/x/name", 16, "C:/.../name"}, // either separator
        {"C:\\toolongname.prj", 10, "...ame.prj"},    // one folder: nothing to drop
        {"abcdef", 3, "abc"},
        {"short", 5, "short"}, // exactly the limit: kept whole
    };
    for (const auto& row : rows)
        EXPECT_EQ(TextOf(String(row.text).GetAbbreviated(row.maxLength)), row.expected)
            << row.text << " at " << row.maxLength;
}

TEST_F(StringTest, NumberSuffix) {
    const struct {
        const char* text;
        int suffix;
        const char *stem, *next;
    } rows[] = {
        {"Bone", -1, "Bone", "Bone1"},
        {"Bone007", 7, "Bone", "Bone008"}, // the width is kept
        {"Bone99", 99, "Bone", "Bone100"},
        {"12", 12, "<null>", "13"},
        {"a1b2", 2, "a1b", "a1b3"},
        {"x1234567890", 234567890, "x1", "x1234567891"}, // at most 9 digits
        {"", -1, "<null>", "1"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const String name(row.text);
        EXPECT_EQ(name.GetNumberSuffix(), row.suffix);
        EXPECT_EQ(TextOf(name.GetWithoutNumberSuffix()), row.stem);
        EXPECT_EQ(TextOf(name.GetNextNumberedName()), row.next);
    }
}

TEST_F(StringTest, NextFreeName) {
    const std::vector<String> taken = {String("Bone"), String("Bone1"), String("bone2"),
                                       String("Bone4"), String("Arm9")};
    const struct {
        const char *name, *expected;
    } rows[] = {
        {"Bone", "Bone3"}, // "Bone1" and "bone2" (case ignored) are taken
        {"Bone3", "Bone5"}, {"Bone12", "Bone13"}, {"Arm8", "Arm10"}, {"Leg", "Leg1"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(TextOf(String(row.name).GetNextFreeName(taken)), row.expected) << row.name;
}

} // namespace
