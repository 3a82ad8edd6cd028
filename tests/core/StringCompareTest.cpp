// StringCompareTest.cpp - the comparison operators over null, empty buffers and text, and
// the stricter Compare.

#include "StringTestSupport.h"

#include <string>

namespace {

using StringComparison = StringPoolTest;

const char* const kNull = nullptr;   // a null string
const char* const kEmptyBuffer = ""; // String('\0'), a non-null empty buffer

String Make(const char* text) {
    return text == nullptr ? String() : text == kEmptyBuffer ? String('\0') : String(text);
}

// Every operator on every pair of states, from the order the row gives (-1, 0, 1). Null
// orders before everything, an empty buffer is text "" (before any other text), and text
// compares with both bytes lowered, as unsigned values.
TEST_F(StringComparison, OperatorTable) {
    const struct {
        const char *left, *right;
        int order;
    } rows[] = {
        {kNull, kNull, 0},
        {kNull, kEmptyBuffer, -1},
        {kEmptyBuffer, kNull, 1},
        {kEmptyBuffer, kEmptyBuffer, 0},
        {kNull, "a", -1},
        {"a", kEmptyBuffer, 1},
        {kEmptyBuffer, "a", -1},
        {"abc", "ABC", 0},
        {"abc", "abd", -1},
        {"ABD", "abc", 1},
        {"ab", "abc", -1},
        {"abc", "AB", 1},
        // '_' (0x5F) and '[' lie between the capitals and the small letters: letters are
        // lowered before comparing, so they order before "A".
        {"_", "A", -1},
        {"[", "a", -1},
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
    }
    EXPECT_TRUE("ABC" == String("abc")); // a C text converts, "" to null
    EXPECT_TRUE(String() == "");
}

// Compare: two empty strings are never equal, lengths must match, no folding above ASCII.
TEST_F(StringComparison, CompareIsStricter) {
    const struct {
        const char *a, *b;
        bool ignoringCase, respectingCase;
    } rows[] = {{"abc", "ABC", true, false},
                {"abc", "abc", true, true},
                {"abc", "abd", false, false},
                {"abc", "ab", false, false},
                {"ab", "abc", false, false},
                {kNull, kNull, false, false},
                {kEmptyBuffer, kEmptyBuffer, false, false},
                {"a", kEmptyBuffer, false, false},
                {"\xC9", "\xE9", false, false},
                {"A_1", "a_1", true, false}};
    for (const auto& row : rows) {
        const String a = Make(row.a);
        const String b = Make(row.b);
        SCOPED_TRACE(TextOf(a) + " / " + TextOf(b));
        EXPECT_EQ(a.Compare(b, false), row.ignoringCase);
        EXPECT_EQ(a.Compare(b, true), row.respectingCase);
    }
}

} // namespace
