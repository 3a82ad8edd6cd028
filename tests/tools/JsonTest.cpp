// JsonTest.cpp - the tool's JSON writer (every byte a file can hold gives a valid document)
// and the tests' own parser (it accepts what JSON allows and nothing else).

#include "Json.h"
#include "support/JsonParser.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

namespace {

using fileio::test::JsonValue;
using fileio::test::ParseJson;
using fileio::tool::AppendJsonString;
using fileio::tool::JsonWriter;

struct StringCase {
    std::string text;
    const char* json;
};

TEST(JsonWriterTest, StringsEscapeEveryByteJsonOrATerminalCannotTake) {
    const StringCase cases[] = {
        {"plain", R"("plain")"},
        {"quote \" and \\ backslash", R"("quote \" and \\ backslash")"},
        {"\n\r\t", R"("\n\r\t")"},
        {std::string("\x00\x01\x1f\x7f", 4), R"("\u0000\u0001\u001f\u007f")"},
        {"caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\xa4\x96",
         "\"caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\xa4\x96\""},
        {"\xff", R"("\u00ff")"},                               // never UTF-8
        {"a\xc3", R"("a\u00c3")"},                             // a sequence cut by the end
        {"\xc3(", R"("\u00c3(")"},                             // a lead without its follower
        {"\xc0\xaf", R"("\u00c0\u00af")"},                     // an overlong "/"
        {"\xed\xa0\x80", R"("\u00ed\u00a0\u0080")"},           // a surrogate
        {"\xf4\x90\x80\x80", R"("\u00f4\u0090\u0080\u0080")"}, // past U+10FFFF
        {"\xc2\x85", R"("\u00c2\u0085")"},                     // C1 control NEL
        {"\x80", R"("\u0080")"},                               // a stray follower
    };
    for (const StringCase& c : cases) {
        std::string json;
        AppendJsonString(json, c.text);
        EXPECT_EQ(json, c.json);
        std::string error;
        const auto parsed = ParseJson(json, &error);
        ASSERT_TRUE(parsed) << json << ": " << error;
        EXPECT_EQ(parsed->type, JsonValue::Type::String);
    }
}

TEST(JsonWriterTest, ValidUtf8ReadsBackAsItWasWritten) {
    for (const std::string text :
         {"", "plain", "line\nbreak", "\xe2\x82\xac\xf0\x9f\xa4\x96", "\x01\x7f"}) {
        std::string json;
        AppendJsonString(json, text);
        const auto parsed = ParseJson(json);
        ASSERT_TRUE(parsed) << json;
        EXPECT_EQ(parsed->text, text);
    }
}

TEST(JsonWriterTest, PlacesCommasAndColonsInNestedValues) {
    JsonWriter json;
    json.BeginObject();
    json.Key("a");
    json.Number(1);
    json.Key("b");
    json.BeginArray();
    json.Bool(true);
    json.Null();
    json.BeginObject();
    json.EndObject();
    json.BeginArray();
    json.EndArray();
    json.String("x");
    json.EndArray();
    json.Key("c");
    json.BeginObject();
    json.Key("d");
    json.Bool(false);
    json.EndObject();
    json.EndObject();
    json.Finish();
    EXPECT_EQ(json.Text(), R"({"a":1,"b":[true,null,{},[],"x"],"c":{"d":false}})"
                           "\n");
    EXPECT_TRUE(ParseJson(json.Text()));
}

TEST(JsonWriterTest, NumbersAreShortestAndNeverOutsideJson) {
    struct NumberCase {
        double value;
        bool asFloat;
        const char* text;
    };
    const NumberCase cases[] = {
        {0.1, true, "0.1"},
        {0.1, false, "0.1"},
        {3.0, false, "3"},
        {-0.0, false, "-0"},
        {1e300 * 1e10, false, "null"},
        {-std::numeric_limits<double>::infinity(), true, "null"},
        {std::numeric_limits<double>::quiet_NaN(), false, "null"},
        {0.800000011920929, true, "0.8"},
    };
    for (const NumberCase& c : cases) {
        JsonWriter json;
        if (c.asFloat)
            json.Number(static_cast<float>(c.value));
        else
            json.Number(c.value);
        EXPECT_EQ(json.Text(), c.text) << c.value;
        EXPECT_TRUE(ParseJson(json.Text())) << json.Text();
    }
    JsonWriter extremes;
    extremes.BeginArray();
    extremes.Number(std::numeric_limits<long long>::min());
    extremes.Number(std::numeric_limits<unsigned long long>::max());
    extremes.EndArray();
    EXPECT_EQ(extremes.Text(), "[-9223372036854775808,18446744073709551615]");
}

TEST(JsonWriterTest, ADocumentWrittenToAFileInPiecesIsTheWholeDocument) {
    const auto write = [](JsonWriter& json) {
        json.BeginArray();
        for (int i = 0; i < 20000; ++i)
            json.String("item " + std::to_string(i));
        json.EndArray();
        json.Finish();
    };
    JsonWriter inMemory;
    write(inMemory);
    std::FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    {
        JsonWriter toFile(file);
        write(toFile);
        EXPECT_TRUE(toFile.Text().empty());
    }
    std::rewind(file);
    std::string written;
    char buffer[4096];
    for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, file)) > 0;)
        written.append(buffer, got);
    std::fclose(file);
    EXPECT_GT(written.size(), std::size_t{1} << 16);
    EXPECT_EQ(written, inMemory.Text());
}

TEST(JsonParserTest, AcceptsJsonAndRejectsEverythingElse) {
    const char* accepted[] = {
        "0",
        "-1.5e+3",
        "\"\\u00e9\\ud83e\\udd16\"",
        " [ 1 , {\"a\" : [ ] } ] ",
        "{}",
        "null",
        "true",
        "\"\\/\\b\\f\"",
    };
    for (const char* text : accepted)
        EXPECT_TRUE(ParseJson(text)) << text;
    const char* rejected[] = {
        "",      "[1,]",     "{\"a\":1,}",   "01",       "1.",          ".5",        "+1",
        "NaN",   "'a'",      "[1] [2]",      "\"a\nb\"", "\"\\ud800\"", "\"\\x41\"", "{a:1}",
        "[1 2]", "\"\xff\"", "\"\xc0\xaf\"", "tru",      "{\"a\"}",     "\"open",
    };
    for (const char* text : rejected)
        EXPECT_FALSE(ParseJson(text)) << text;
}

} // namespace
