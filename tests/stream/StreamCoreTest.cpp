// The stream core: mode bits, manipulators, white space, lines and the token readers, on the
// memory stream and on a transport that uses the base class's byte-by-byte readers.

#include "StreamTestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

using namespace streamtest;

TEST(StreamCore, TheFailedBitIsReportedOnceAndSetModeReplacesTheModeWhole) {
    MemoryStream stream;
    stream.OnFailed();
    EXPECT_TRUE(stream.IsFailed());
    EXPECT_FALSE(stream.IsFailed());
    // OnAscii leaves a binary stream binary; SetMode replaces the mode byte whole.
    stream.OnBinary();
    stream.OnAscii();
    EXPECT_TRUE(stream.IsBinary());
    stream.SetMode(FM_LOADING | FM_FAILED);
    EXPECT_EQ(stream.GetMode(), FM_LOADING | FM_FAILED);
}

TEST(StreamCore, ManipulatorsWriteTheirSeparatorByForm) {
    const std::tuple<const char*, VarnStream::Manipulator, const char*, const char*> rows[] = {
        {"nl", &nl, "\n", ""},   {"nlb", &nlb, "\n", ""}, {"sp", &sp, " ", ""},
        {"spb", &spb, " ", " "}, {"tab", &tab, "\t", ""}, {"tabb", &tabb, "\t", "\t"},
    };
    for (const auto& [name, manipulator, text, binary] : rows) {
        SCOPED_TRACE(name);
        BothForms written;
        written << manipulator;
        EXPECT_EQ(Bytes(written.text), text);
        EXPECT_EQ(Bytes(written.binary), binary);
    }
}

TEST(StreamCore, SkipWhiteAndReadPastEOLStopWithin255Bytes) {
    struct Row {
        std::string data;
        unsigned long long afterSkipWhite, afterReadPastEOL;
    };
    const Row rows[] = {
        {"  \t\r\nX", 5, 5},
        {"X", 0, 1},
        {"", 0, 0},
        {std::string("  \0 X", 5), 2, 5}, // a NUL stops the skip
        {"abc\r\n\r\n\n\rX", 0, 9},       // one run of line ends of any mix
        // 255 bytes are read at most: the skip reads the 255th again; without a line end
        // the stream stays after them; a run of line ends that reaches the limit goes back
        // to the position noted before its last byte.
        {std::string(300, ' ') + "X", 254, 255},
        {std::string(300, 'a') + "\nX", 0, 255},
        {std::string(250, 'a') + std::string(10, '\n') + "X", 0, 254},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Hex(row.data.substr(0, 12)));
        OnBothTransports(row.data, [&](VarnStream& stream) {
            stream.SkipWhite();
            EXPECT_EQ(stream.GetPos(), row.afterSkipWhite);
            stream.Seek(0, SM_BEGIN);
            stream.ReadPastEOL();
            EXPECT_EQ(stream.GetPos(), row.afterReadPastEOL);
        });
    }
}

TEST(StreamCore, ParseTokenSkipsBlanksAroundTheTokenAndTellsTheLineEnd) {
    // After a line end only CR and LF are skipped: "beta" leaves the blanks before "gamma".
    // In text a string value is one such token, without quoting.
    const std::tuple<const char*, bool, unsigned long long> expected[] = {
        {"alpha", false, 9},  {"\"beta", true, 17}, {"gamma\"", true, 28},
        {"delta", false, 35}, {"", false, 35},
    };
    OnBothTransports("  alpha  \"beta\r\n\n  gamma\"\t\n\r  delta", [&](VarnStream& stream) {
        bool asString = false;
        for (const auto& [text, passedEOL, position] : expected) {
            SCOPED_TRACE(text);
            String token("stale");
            if ((asString = !asString))
                stream.ParseString(token);
            else
                stream.ParseToken(token);
            EXPECT_EQ(token.View(), text);
            EXPECT_EQ(token.Get() == nullptr, *text == '\0');
            EXPECT_EQ(stream.DidPassEOL(), passedEOL);
            EXPECT_EQ(stream.GetPos(), position);
        }
    });
}

TEST(StreamCore, DelimitedTokenKeepsAtMost254BytesAndConsumesTheDelimiter) {
    struct Row {
        std::string data, kept;
        unsigned long long position;
    };
    const Row rows[] = {
        {"Active=TRUE", "Active", 7},
        {"=x", "", 1},
        {"no delimiter", "no delimiter", 12},
        {std::string(254, 'a') + "=", std::string(254, 'a'), 255},
        {std::string(300, 'b') + "=rest", std::string(254, 'b'), 301},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.data.substr(0, 16));
        OnBothTransports(row.data, [&](VarnStream& stream) {
            // The caller's buffer is 255 bytes; the guard bytes after it must stay.
            std::vector<char> buffer(300, '#');
            stream.ParseToken(buffer.data(), '=');
            EXPECT_EQ(std::string(buffer.data()), row.kept);
            EXPECT_EQ(std::string(buffer.begin() + 255, buffer.end()), std::string(45, '#'));
            EXPECT_EQ(stream.GetPos(), row.position);
            stream.Seek(0, SM_BEGIN);
            String asString("stale");
            stream.ParseToken(asString, '=');
            EXPECT_EQ(asString.View(), row.kept);
        });
    }
    MemoryStream stream;
    Load(stream, "first,second");
    EXPECT_EQ(stream.ReadString(',').View(), "first");
    EXPECT_EQ(stream.ReadString(',').View(), "second");
    EXPECT_EQ(stream.ReadString(',').Get(), nullptr);
}

TEST(StreamCore, LinesKeepTheirLineEndAndBinaryLinesAreTokenWords) {
    OnBothTransports("a\r\nb\rc\n\nd", [](VarnStream& stream) {
        MemoryStream line;
        for (const char* expected : {"a\r\n", "b\r", "c\n", "\n", "d"}) {
            ASSERT_TRUE(stream.ReadLine(line));
            EXPECT_EQ(Bytes(line), expected);
            EXPECT_EQ(line.GetPos(), 0u);
        }
        EXPECT_FALSE(stream.ReadLine(line));
        EXPECT_EQ(line.GetLength(), 0u);
    });
    OnBothTransports("0123456789", FM_BINARY, 13.0f, [](VarnStream& stream) {
        MemoryStream line;
        std::vector<std::string> lines;
        while (stream.ReadLine(line))
            lines.push_back(Bytes(line));
        EXPECT_EQ(lines, (std::vector<std::string>{"0123", "4567", "89"}));
    });
    // Written lines are counted in binary whatever the count switch says.
    BothForms written;
    written.binary.SetWriteStringCounts(false);
    written.text.WriteLine(String("abc"));
    written.binary.WriteLine(String("abc"));
    written.binary.WriteLine(String());
    EXPECT_EQ(Bytes(written.text), "abc\n");
    EXPECT_EQ(Hex(Bytes(written.binary)), "03 00 61 62 63 00 00");
}

TEST(StreamCore, BinaryParseStringHasAOneByteCount) {
    struct Row {
        std::string data;
        const char* value;
        bool failed;
    };
    const Row rows[] = {
        {Raw({3}) + "abcX", "abc", false},
        {Raw({0}) + "X", "", false},
        {Raw({5}) + "abc", "", true},
        {"", "", true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Hex(row.data));
        OnBothTransports(row.data, FM_BINARY, 13.0f, [&](VarnStream& stream) {
            String value("stale");
            stream.ParseString(value);
            EXPECT_EQ(value.View(), row.value);
            EXPECT_EQ(stream.IsFailed(), row.failed);
        });
    }
}
