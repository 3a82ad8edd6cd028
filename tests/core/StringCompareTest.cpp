// StringCompareTest.cpp - the comparison operators over null, empty buffers and text, and
// the stricter Compare.

#include "StringTestSupport.h"

#include <string>

namespace {

using StringComparison = StringPoolTest;

enum class Kind { Null, EmptyBuffer, Text };

String Make(Kind kind, const char* text = "") {
    switch (kind) {
    case Kind::Null:
        return String();
    case Kind::EmptyBuffer:
        return String('\0');
    case Kind::Text:
        return String(text);
    }
    return String();
}

std::string Describe(Kind kind, const char* text) {
    switch (kind) {
    case Kind::Null:
        return "null";
    case Kind::EmptyBuffer:
        return "empty buffer";
    case Kind::Text:
        return '"' + std::string(text) + '"';
    }
    return {};
}

// Every operator on every pair of states. Null orders before everything, an empty buffer
// is text "" (so it orders before any other text), and text compares with both bytes
// lowered, as unsigned values.
TEST_F(StringComparison, OperatorTable) {
    struct Row {
        Kind leftKind;
        const char* left;
        Kind rightKind;
        const char* right;
        bool eq, lt, le, gt, ge;
    };
    const Kind N = Kind::Null, E = Kind::EmptyBuffer, T = Kind::Text;
    const Row rows[] = {
        //                       ==     <      <=     >      >=
        {N, "", N, "", true, false, true, false, true},
        {N, "", E, "", false, true, true, false, false},
        {E, "", N, "", false, false, false, true, true},
        {E, "", E, "", true, false, true, false, true},
        {N, "", T, "a", false, true, true, false, false},
        {T, "a", N, "", false, false, false, true, true},
        {E, "", T, "a", false, true, true, false, false},
        {T, "a", E, "", false, false, false, true, true},
        {T, "abc", T, "ABC", true, false, true, false, true},
        {T, "abc", T, "abd", false, true, true, false, false},
        {T, "ABD", T, "abc", false, false, false, true, true},
        {T, "ab", T, "abc", false, true, true, false, false},
        {T, "abc", T, "AB", false, false, false, true, true},
        // '_' (0x5F) lies between the capitals and the small letters: letters are lowered
        // before comparing, so "_" orders before "A".
        {T, "_", T, "A", false, true, true, false, false},
        {T, "[", T, "a", false, true, true, false, false},
        // Bytes of 0x80 and above compare as unsigned values, after every ASCII letter,
        // and are not folded.
        {T, "\x80", T, "z", false, false, false, true, true},
        {T, "\xC9", T, "\xE9", false, true, true, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Describe(row.leftKind, row.left) + " vs " +
                     Describe(row.rightKind, row.right));
        const String a = Make(row.leftKind, row.left);
        const String b = Make(row.rightKind, row.right);
        EXPECT_EQ(a == b, row.eq);
        EXPECT_EQ(a != b, !row.eq);
        EXPECT_EQ(a < b, row.lt);
        EXPECT_EQ(a <= b, row.le);
        EXPECT_EQ(a > b, row.gt);
        EXPECT_EQ(a >= b, row.ge);
    }
}

TEST_F(StringComparison, DocumentedEdgeCases) {
    EXPECT_FALSE(String("") == String('\0'));
    EXPECT_TRUE(String("") < String('\0'));
    EXPECT_TRUE(String("abc") == String("ABC"));
    EXPECT_TRUE(String("abc") == "ABC"); // a C text converts
    EXPECT_TRUE("ABC" == String("abc"));
    EXPECT_TRUE(String() == ""); // "" is null too
}

TEST_F(StringComparison, CompareIsStricter) {
    struct Row {
        String a;
        String b;
        bool ignoringCase;
        bool respectingCase;
    };
    const Row rows[] = {
        {String("abc"), String("ABC"), true, false},
        {String("abc"), String("abc"), true, true},
        {String("abc"), String("abd"), false, false},
        {String("abc"), String("ab"), false, false}, // lengths differ
        {String("ab"), String("abc"), false, false},
        {String(), String(), false, false}, // two empty strings are not equal
        {String('\0'), String('\0'), false, false},
        {String(), String("a"), false, false},
        {String("a"), String('\0'), false, false},
        {String("\xC9"), String("\xE9"), false, false}, // no folding above ASCII
        {String("A_1"), String("a_1"), true, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(TextOf(row.a) + " / " + TextOf(row.b));
        EXPECT_EQ(row.a.Compare(row.b, false), row.ignoringCase);
        EXPECT_EQ(row.a.Compare(row.b, true), row.respectingCase);
    }
}

} // namespace
