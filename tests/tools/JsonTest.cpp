// JsonTest.cpp - the tool's JSON writer: every byte a file can hold gives a valid document,
// numbers never leave JSON's grammar, and a document written to a file in pieces is whole.
// (The layout of whole documents is shown by the expected outputs of every --json command.)

#include "Json.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <string>

namespace {

using fileio::tool::AppendJsonString;
using fileio::tool::JsonWriter;

TEST(JsonWriterTest, StringsEscapeEveryByteJsonOrATerminalCannotTake) {
    const std::pair<std::string, const char*> cases[] = {
        {"quote \" and \\ backslash", R"("quote \" and \\ backslash")"},
        {"\n\r\t", R"("\n\r\t")"},
        {std::string("\x00\x01\x1f\x7f", 4), R"("\u0000\u0001\u001f\u007f")"},
        {"caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\xa4\x96",
         "\"caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\xa4\x96\""},
        {"a\xc3", R"("a\u00c3")"}, // a sequence cut by the end
        {"\xc3(", R"("\u00c3(")"}, // a lead without its follower
    };
    for (const auto& [text, json] : cases) {
        std::string written;
        AppendJsonString(written, text);
        EXPECT_EQ(written, json);
    }
}

TEST(JsonWriterTest, NumbersAreShortestAndNeverOutsideJson) {
    JsonWriter json;
    json.BeginArray();
    json.Number(0.1);
    json.Number(-0.0);
    json.Number(std::numeric_limits<double>::quiet_NaN());
    json.Number(-std::numeric_limits<float>::infinity());
    json.Number(0.8f);
    json.Number(std::numeric_limits<long long>::min());
    json.Number(std::numeric_limits<unsigned long long>::max());
    json.EndArray();
    EXPECT_EQ(json.Text(), "[0.1,-0,null,null,0.8,-9223372036854775808,18446744073709551615]");
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
    const fileio::test::TempFolder folder("fileio-json");
    std::FILE* file = std::fopen(folder.Join("document.json").c_str(), "wb");
    ASSERT_NE(file, nullptr);
    {
        JsonWriter toFile(file);
        write(toFile);
        EXPECT_TRUE(toFile.Text().empty());
    }
    std::fclose(file);
    const std::string written = folder.ReadFile("document.json");
    EXPECT_GT(written.size(), std::size_t{1} << 16);
    EXPECT_EQ(written, inMemory.Text());
}

} // namespace
