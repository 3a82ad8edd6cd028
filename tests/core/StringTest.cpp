// StringTest.cpp - construction, assignment, access, appending, RemoveAll, concatenation,
// comparison and the pool storage of String objects.

#include "StringTestSupport.h"

#include <string>
#include <vector>

namespace {

using StringTest = StringPoolTest;

// The two empty states, null and a non-null empty buffer: which constructor gives which is
// the heart of the type's contract. Each row makes its string in place, since a copy would
// turn an empty buffer into null.
TEST_F(StringTest, NullAndEmptyBufferStates) {
    const struct {
        const char* name;
        String (*make)();
        bool isNull;
    } rows[] = {
        {"String()", [] { return String(); }, true},
        {"String(\"\")", [] { return String(""); }, true},
        {"String(nullptr)", [] { return String(static_cast<const char*>(nullptr)); }, true},
        {"String(std::string())", [] { return String(std::string()); }, true},
        {"String('\\0')", [] { return String('\0'); }, false},
        {"String(p, 0)", [] { return String("xyz", 0); }, false},
        {"String(0, 0)", [] { return String(0, 0); }, false},
        {"String(p, -5)", [] { return String("xyz", -5); }, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const String value = row.make();
        EXPECT_EQ(value.Get() == nullptr, row.isNull);
        EXPECT_EQ(value.GetLength_Int(), 0);
    }
}

// String(p, n) copies exactly n bytes, embedded NULs and high bytes included (the text ends
// at the first NUL); String(n, x) is n + 1 zero bytes of room.
TEST_F(StringTest, CopiesExactBytes) {
    EXPECT_EQ(TextOf(String("abcdef", 3)), "abc");
    EXPECT_EQ(TextOf(String(static_cast<unsigned char>(0xE9))), "\xE9");
    EXPECT_EQ(TextOf(String('z', 4)), "zzzz");
    EXPECT_EQ(TextOf(String(std::string("std"))), "std");
    const char bytes[] = {'a', '\0', 'b', '\xFF', '\x80'};
    String s(bytes, 5);
    EXPECT_EQ(std::string(s.Get(), 6), std::string(bytes, 5) + '\0');
    EXPECT_EQ(s.GetLength(), 1u);
    String room(16, 12345);
    for (int i = 0; i <= 16; ++i)
        EXPECT_EQ(room.Get()[i], '\0') << i;
}

// A string's buffer is its own: changing a copy never shows in the original, and a move
// copies too. Self-assignment keeps the very buffer, even an empty one.
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
    String empty('\0');
    String& alias = empty;
    empty = alias;
    EXPECT_NE(empty.Get(), nullptr);
}

TEST_F(StringTest, ReplacesTextAndEmptyTextBecomesNull) {
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
    s = "x";
    s = std::string();
    EXPECT_EQ(s.Get(), nullptr);
}

TEST_F(StringTest, SetCopiesCountedBytes) {
    const char bytes[] = {'a', 'b', '\0', 'c'};
    const struct {
        const char* p;
        int n;
        std::string expected;
    } rows[] = {
        {"hello", 3, "hel"}, {"hello", 0, "<null>"}, {nullptr, 5, "<null>"}, {bytes, 4, "ab"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.n);
        String s("old text");
        s.Set(row.p, row.n);
        EXPECT_EQ(TextOf(s), row.expected);
    }
    String s;
    s.Set(bytes, 4); // all four bytes are copied, NUL included
    EXPECT_EQ(s.Get()[3], 'c');
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
        {"empty buffer + text", String('\0'), String("cd"), "cd", "cd"},
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
    EXPECT_EQ(TextOf(ab), "ab");
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
    String null;
    EXPECT_EQ(null.RemoveAll(String("a")), 0);
    EXPECT_EQ(null.Get(), nullptr);
    String self("abc");
    EXPECT_EQ(self.RemoveAll(self), 1);
    String kept("keep me");
    char* before = kept.Get();
    EXPECT_EQ(kept.RemoveAll(String("zz")), 0);
    EXPECT_EQ(kept.Get(), before); // nothing removed: the very buffer stays
}

// String objects made with new take their own storage from the string pool as well.
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
        {"abc", "abd", -1},
        {"ABD", "abc", 1},
        {"ab", "abc", -1},
        {"abc", "abc", 0},
        // '_' (0x5F) lies between the capitals and the small letters: letters are
        // lowered before comparing, so it orders before "A".
        {"_", "A", -1},
        // Bytes of 0x80 and above compare as unsigned values, after every ASCII letter,
        // and are not folded.
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
    EXPECT_TRUE("ABC" == String("abc")); // a C text converts, "" to null
    EXPECT_TRUE(String() == "");
}

} // namespace
