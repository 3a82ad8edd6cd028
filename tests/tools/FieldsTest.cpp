// FieldsTest.cpp - the check, read and write of each kind of value: every value the library
// writes passes the check and reads back the same, in both forms, and the check refuses what
// the typed readers would read silently wrong.
// (bad/values.prj of the expected outputs shows one fault of each kind in a whole file.)

#include "Fields.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using namespace fileio::tool;

struct TextCase {
    Kind kind;
    std::string text;
    const char* problem;
    std::size_t end;
    std::size_t lineEnd;
};

TEST(FieldsTest, TheTextCheckCountsAndFormsTheWordsUpToTheLineEnd) {
    const TextCase cases[] = {
        {Kind::Color, "0.8 0.2 0.1\n<next>", "", 11, 11},
        {Kind::Color, "0.8 0.2\n0.1", "2 of 3 values", 7, 7},
        {Kind::Vector, " 1\t-2.5e-3  .5 \r\n", "", 14, 15},
        {Kind::Float, "inf", "", 3, 3},
        {Kind::Float, "-nan(ind)", "", 9, 9},
        {Kind::Float, "+1", "", 2, 2},
        {Kind::Float, "1e", "'1e' is not a number", 2, 2},
        {Kind::Float, "0x10", "'0x10' is not a number", 4, 4},
        {Kind::Double, "-.5E+2", "", 6, 6},
        {Kind::Int, "-", "'-' is not a whole number", 1, 1},
        {Kind::Bool, "FALSE", "", 5, 5},
        {Kind::Time, "-1:2:3.45", "", 9, 9},
        {Kind::Time, "1::2", "'1::2' is not a time", 4, 4},
        {Kind::Time, "1.", "'1.' is not a time", 2, 2},
        {Kind::Range, "0 1:0:0", "", 7, 7},
        {Kind::Text, "Maps/skin.png", "", 13, 13},
        {Kind::Text, "  \n", "the text form cannot carry an empty text or one with white space", 0,
         2},
    };
    for (const TextCase& c : cases) {
        ValueExtent extent;
        EXPECT_EQ(CheckValueText(c.kind, c.text, extent), c.problem) << c.text;
        EXPECT_EQ(extent.end, c.end) << c.text;
        EXPECT_EQ(extent.lineEnd, c.lineEnd) << c.text;
        const ValueExtent measured = MeasureValue(c.text);
        EXPECT_EQ(measured.end, c.end) << c.text;
        EXPECT_EQ(measured.lineEnd, c.lineEnd) << c.text;
    }
}

/// The value read from its text form, and the range check of it.
std::string RangeProblem(Kind kind, const std::string& text) {
    MemoryStream in;
    in.Open(text.data(), text.size(), FM_LOADING);
    Value value;
    ReadValue(in, kind, value);
    return CheckValueRange(value, text);
}

TEST(FieldsTest, AValueItsTypeCannotHoldIsToldAfterItIsRead) {
    EXPECT_EQ(RangeProblem(Kind::Float, "3.4e38"), "");
    EXPECT_EQ(RangeProblem(Kind::Double, "1e309"), "'1e309' is out of range");
    EXPECT_EQ(RangeProblem(Kind::Double, "1e39"), "");
    EXPECT_EQ(RangeProblem(Kind::Vector, "1 1e99 2"), "'1e99' is out of range");
}

TEST(FieldsTest, EveryValueTheLibraryWritesChecksAndReadsBackInBothForms) {
    constexpr float kInf = std::numeric_limits<float>::infinity();
    Matrix44 matrix;
    matrix.row[0].x = -1.5f;
    matrix.row[3].w = 1e-40f; // a subnormal float
    const Value values[] = {
        true,
        std::numeric_limits<int>::min(),
        0.1f,
        -kInf,
        -0.0f,
        std::numeric_limits<double>::max(),
        String("robot&arm"),
        Vector{1.5f, -2.0f, 3e-7f},
        Quaternion{0, 0.707106769f, 0, 0.707106769f},
        RGBFloat{0.8f, 0.2f, 0.1f},
        matrix,
        Time(-8104501LL),
        TimeRange{Time(0LL), Time(8104500LL)},
    };
    for (const Value& value : values) {
        for (const bool binary : {false, true}) {
            MemoryStream stream;
            stream.Open(binary ? FM_BINARY : FM_STORING);
            WriteValue(stream, value);
            const std::string bytes(reinterpret_cast<const char*>(stream.GetData()),
                                    stream.GetLength());
            if (!binary) {
                ValueExtent extent;
                EXPECT_EQ(CheckValueText(KindOf(value), bytes, extent), "") << bytes;
                EXPECT_EQ(CheckValueRange(value, bytes), "") << bytes;
            } else if (KindOf(value) != Kind::Text) {
                EXPECT_EQ(bytes.size(), BinarySize(KindOf(value)));
            }
            stream.Open(binary ? FM_LOADING | FM_BINARY : FM_LOADING);
            Value read;
            ReadValue(stream, KindOf(value), read);
            EXPECT_EQ(ValueText(read), ValueText(value)) << bytes;
        }
    }
}

TEST(FieldsTest, TheTextFormCannotCarryEmptyTextsOrWhiteSpace) {
    EXPECT_EQ(CheckTextFormCarries(String("one")), "");
    EXPECT_NE(CheckTextFormCarries(String()), "");
    EXPECT_NE(CheckTextFormCarries(String("two words")), "");
    EXPECT_EQ(CheckTextFormCarries(Value(3)), "");
}

} // namespace
