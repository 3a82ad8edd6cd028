// StringTest.cpp - construction, assignment, access, appending, RemoveAll, concatenation and
// the pool storage of String objects.

#include "StringTestSupport.h"

#include "fileio/memory/NamedPools.h"

#include <climits>
#include <cstring>
#include <string>
#include <vector>

namespace {

using StringConstruction = StringPoolTest;

// The two empty states: null and a non-null empty buffer. Which constructor gives which is
// the heart of the type's contract.
TEST_F(StringConstruction, NullAndEmptyBufferStates) {
    // Each row makes its string in place: a copy would turn an empty buffer into null.
    struct Row {
        const char* name;
        String (*make)();
        bool isNull;
    };
    const Row rows[] = {
        {"String()", [] { return String(); }, true},
        {"String(\"\")", [] { return String(""); }, true},
        {"String(nullptr)", [] { return String(static_cast<const char*>(nullptr)); }, true},
        {"String(std::string())", [] { return String(std::string()); }, true},
        {"String('\\0')", [] { return String('\0'); }, false},
        {"String(p, 0)", [] { return String("xyz", 0); }, false},
        {"String(0, 0)", [] { return String(0, 0); }, false},
        {"String('x', 0)", [] { return String('x', 0); }, false},
        {"String(p, -5)", [] { return String("xyz", -5); }, false},
        {"copy of an empty buffer",
         [] {
             const String empty('\0');
             return String(empty);
         },
         true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const String value = row.make();
        EXPECT_EQ(value.Get() == nullptr, row.isNull);
        EXPECT_TRUE(value.IsEmpty());
        EXPECT_FALSE(value.IsNotEmpty());
        EXPECT_EQ(value.GetLength(), 0u);
        EXPECT_EQ(value.GetLength_Int(), 0);
    }
}

TEST_F(StringConstruction, CopiesText) {
    struct Row {
        const char* name;
        String value;
        std::string expected;
    };
    const char bytes[] = "abcdef";
    std::vector<Row> rows;
    rows.push_back({"const char*", String("hello"), "hello"});
    rows.push_back({"(p, n) takes exactly n", String(bytes, 3), "abc"});
    rows.push_back({"char", String('q'), "q"});
    rows.push_back({"unsigned char", String(static_cast<unsigned char>(0xE9)), "\xE9"});
    rows.push_back({"(c, n)", String('z', 4), "zzzz"});
    rows.push_back({"std::string", String(std::string("std")), "std"});
    rows.push_back({"copy", String(String("copied")), "copied"});
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(TextOf(row.value), row.expected);
        EXPECT_EQ(row.value.GetLength(), row.expected.size());
    }
}

// A string's buffer is its own: changing the copy never shows in the original.
TEST_F(StringConstruction, CopiesNeverShareBuffers) {
    String original("shared?");
    String copy(original);
    String moved(std::move(original));
    ASSERT_NE(copy.Get(), original.Get());
    ASSERT_NE(moved.Get(), original.Get());
    copy.Get()[0] = 'S';
    moved.Get()[0] = 'M';
    EXPECT_EQ(TextOf(original), "shared?"); // the move left its source untouched
    EXPECT_EQ(TextOf(copy), "Shared?");
    EXPECT_EQ(TextOf(moved), "Mhared?");
}

// String(p, n) copies embedded NULs and bytes of 0x80 and above; the text then ends at the
// first NUL, but the bytes after it are there.
TEST_F(StringConstruction, ExactBytesWithEmbeddedNul) {
    const char bytes[] = {'a', '\0', 'b', '\xFF', '\x80'};
    String s(bytes, 5);
    ASSERT_NE(s.Get(), nullptr);
    EXPECT_EQ(std::memcmp(s.Get(), bytes, 5), 0);
    EXPECT_EQ(s.Get()[5], '\0');
    EXPECT_EQ(s.GetLength(), 1u);

    String high("\x80\xFE\xFF");
    EXPECT_EQ(high.GetLength(), 3u);
    EXPECT_EQ(static_cast<unsigned char>(high[2]), 0xFFu);
}

// String(n, x) is room to write into: n + 1 zero bytes.
TEST_F(StringConstruction, ReservedBufferIsZeroedRoom) {
    String room(16, 12345);
    ASSERT_NE(room.Get(), nullptr);
    for (int i = 0; i <= 16; ++i)
        EXPECT_EQ(room.Get()[i], '\0') << i;
    std::memcpy(room.Get(), "sixteen chars ok", 16);
    EXPECT_EQ(TextOf(room), "sixteen chars ok");
}

TEST_F(StringConstruction, LongText) {
    const std::string big(1 << 20, 'x');
    String s(big);
    EXPECT_EQ(s.GetLength(), big.size());
    String doubled(s);
    doubled += s;
    EXPECT_EQ(doubled.GetLength(), 2 * big.size());
    EXPECT_EQ(doubled.GetLength_Int(), static_cast<int>(2 * big.size()));
}

using StringAssignment = StringPoolTest;

TEST_F(StringAssignment, ReplacesText) {
    String s("first");
    s = String("second");
    EXPECT_EQ(TextOf(s), "second");
    s = "third";
    EXPECT_EQ(TextOf(s), "third");
    s = reinterpret_cast<const unsigned char*>("fourth");
    EXPECT_EQ(TextOf(s), "fourth");
    s = std::string("fifth");
    EXPECT_EQ(TextOf(s), "fifth");
    String other("sixth");
    s = std::move(other);
    EXPECT_EQ(TextOf(s), "sixth");
    EXPECT_EQ(TextOf(other), "sixth");

    s = "";
    EXPECT_EQ(s.Get(), nullptr);
    s = "x";
    s = static_cast<const char*>(nullptr);
    EXPECT_EQ(s.Get(), nullptr);
    s = "x";
    s = String('\0'); // an empty buffer copies to null
    EXPECT_EQ(s.Get(), nullptr);
    s = "x";
    s = std::string();
    EXPECT_EQ(s.Get(), nullptr);
}

TEST_F(StringAssignment, SelfAssignmentKeepsTheBuffer) {
    String s("self");
    char* before = s.Get();
    String& same = s;
    s = same;
    EXPECT_EQ(s.Get(), before);
    s = std::move(same);
    EXPECT_EQ(s.Get(), before);
    EXPECT_EQ(TextOf(s), "self");

    String empty('\0'); // self-assignment leaves even an empty buffer as it is
    String& alias = empty;
    empty = alias;
    EXPECT_NE(empty.Get(), nullptr);
}

// Assigning a pointer into the string's own text: the copy is taken before the old buffer
// goes.
TEST_F(StringAssignment, PointerIntoOwnText) {
    String s("prefix-suffix");
    s = s.Get() + 7;
    EXPECT_EQ(TextOf(s), "suffix");
}

TEST_F(StringAssignment, Set) {
    const char bytes[] = {'a', 'b', '\0', 'c'};
    struct Row {
        const char* p;
        int n;
        std::string expected;
    };
    const Row rows[] = {
        {"hello", 3, "hel"},    {"hello", 0, "<null>"}, {"hello", -1, "<null>"},
        {nullptr, 5, "<null>"}, {bytes, 4, "ab"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.n);
        String s("old text");
        s.Set(row.p, row.n);
        EXPECT_EQ(TextOf(s), row.expected);
    }
    String s;
    s.Set(bytes, 4); // all four bytes are copied, NUL included
    EXPECT_EQ(s.Get()[3], 'c');
    EXPECT_EQ(s.Get()[4], '\0');
}

using StringAccess = StringPoolTest;

TEST_F(StringAccess, IndexingAndLength) {
    const String null;
    EXPECT_EQ(null[0], '\0');
    EXPECT_EQ(null[5], '\0'); // no buffer: every index reads NUL
    EXPECT_TRUE(null.View().empty());

    const String text("abc");
    EXPECT_EQ(text[0], 'a');
    EXPECT_EQ(text[2], 'c');
    EXPECT_EQ(text[3], '\0');
    EXPECT_EQ(text.View(), "abc");
    EXPECT_EQ(text.GetLength(), 3u);
    EXPECT_EQ(text.GetLength_Int(), 3);
}

using StringAppend = StringPoolTest;

TEST_F(StringAppend, AppendsStringsAndCharacters) {
    struct Row {
        const char* name;
        String left;
        String right;
        std::string expected;
    };
    Row rows[] = {
        {"text + text", String("ab"), String("cd"), "abcd"},
        {"null + text", String(), String("cd"), "cd"},
        {"empty buffer + text", String('\0'), String("cd"), "cd"},
        {"text + null", String("ab"), String(), "ab"},
        {"null + null stays null", String(), String(), "<null>"},
        {"null + empty buffer stays null", String(), String('\0'), "<null>"},
    };
    for (Row& row : rows) {
        SCOPED_TRACE(row.name);
        row.left += row.right;
        EXPECT_EQ(TextOf(row.left), row.expected);
    }

    String empty('\0');
    empty += String();
    EXPECT_NE(empty.Get(), nullptr) << "appending nothing leaves the empty buffer alone";

    String s;
    s += 'a';
    s += 'b';
    s += '\0';
    EXPECT_EQ(TextOf(s), "ab");
    String stillNull;
    stillNull += '\0';
    EXPECT_EQ(stillNull.Get(), nullptr);
}

TEST_F(StringAppend, SelfAppendDoubles) {
    String s("abc");
    s += s;
    EXPECT_EQ(TextOf(s), "abcabc");
    s += s;
    EXPECT_EQ(TextOf(s), "abcabcabcabc");
    String null;
    null += null;
    EXPECT_EQ(null.Get(), nullptr);
}

TEST_F(StringAppend, Concatenation) {
    const String ab("ab");
    const String null;
    EXPECT_EQ(TextOf(ab + String("cd")), "abcd");
    EXPECT_EQ(TextOf(ab + "cd"), "abcd");
    EXPECT_EQ(TextOf("xy" + ab), "xyab");
    EXPECT_EQ(TextOf(null + "cd"), "cd");
    EXPECT_EQ(TextOf(ab + static_cast<const char*>(nullptr)), "ab");
    EXPECT_EQ(TextOf(null + null), "<null>");
    EXPECT_EQ(TextOf(null + ""), "<null>");
    EXPECT_EQ(TextOf(String('\0') + null), "<null>");
    EXPECT_EQ(TextOf(ab + ab + ab), "ababab");
    EXPECT_EQ(TextOf(ab), "ab") << "operands are left alone";
}

using StringRemoveAll = StringPoolTest;

TEST_F(StringRemoveAll, RemovesNonOverlappingOccurrences) {
    struct Row {
        const char* text;
        const char* pattern;
        int count;
        std::string expected;
    };
    const Row rows[] = {
        {"abcab", "ab", 2, "c"},         {"xyz", "ab", 0, "xyz"},
        {"aaaa", "aa", 2, ""}, // left to right, no overlap
        {"aaa", "aa", 1, "a"},           {"ababab", "aba", 1, "bab"},
        {"abc", "abc", 1, ""},           {"abc", "abcd", 0, "abc"}, // pattern longer than the text
        {"ABab", "ab", 1, "AB"},                                // exact bytes: case matters here
        {"a\xE9z\xE9", "\xE9", 2, "az"}, {"abc", "", 0, "abc"}, // an empty pattern removes nothing
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.text) + " - " + row.pattern);
        String s(row.text);
        EXPECT_EQ(s.RemoveAll(String(row.pattern)), row.count);
        ASSERT_NE(s.Get(), nullptr);
        EXPECT_EQ(std::string(s.Get()), row.expected);
    }
}

TEST_F(StringRemoveAll, NullOperands) {
    String null;
    EXPECT_EQ(null.RemoveAll(String("a")), 0);
    EXPECT_EQ(null.Get(), nullptr);
    String s("abc");
    EXPECT_EQ(s.RemoveAll(String()), 0);
    EXPECT_EQ(TextOf(s), "abc");
    String self("abc");
    EXPECT_EQ(self.RemoveAll(self), 1);
    EXPECT_TRUE(self.IsEmpty());
}

// The untouched string keeps its very buffer when nothing is removed.
TEST_F(StringRemoveAll, NothingFoundKeepsBuffer) {
    String s("keep me");
    char* before = s.Get();
    EXPECT_EQ(s.RemoveAll(String("zz")), 0);
    EXPECT_EQ(s.Get(), before);
}

using StringObjects = StringPoolTest;

// String objects made with new take their own storage from the string pool as well.
TEST_F(StringObjects, NewAndDeleteUseTheStringPool) {
    const unsigned long long before = StringPoolTotal();
    String* s = new String;
    EXPECT_GT(StringPoolTotal(), before);
    EXPECT_EQ(s->Get(), nullptr);
    *s = "pooled";
    EXPECT_EQ(TextOf(*s), "pooled");
    delete s;
    EXPECT_EQ(StringPoolTotal(), before);

    alignas(String) unsigned char storage[sizeof(String)];
    String* placed = new (storage) String("placed");
    EXPECT_EQ(TextOf(*placed), "placed");
    placed->~String();
}

TEST_F(StringObjects, IsOnePointer) {
    static_assert(sizeof(String) == sizeof(char*));
    std::vector<String> many(1000, String("x"));
    many.resize(10);
    EXPECT_EQ(TextOf(many[9]), "x");
}

} // namespace
