// FieldsTest.cpp - the range check of a value after its type's reader has read it. (bad/values.prj
// of the expected outputs shows one fault of each kind in a whole file.)

#include "Fields.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace fileio::tool;

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

} // namespace
