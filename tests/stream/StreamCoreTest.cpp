// The stream core: mode bits, manipulators, white space, lines and the token readers, on the
// memory stream and on a transport that uses the base class's byte-by-byte readers.

#include "StreamTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace streamtest;

// Every reading rule is checked on both transports: the memory stream's own readers and
// the base class's byte-by-byte ones.

TEST(StreamCore, FailedBitIsReportedOnceThenCleared) {
    MemoryStream stream;
    EXPECT_FALSE(stream.IsFailed());
    stream.OnFailed();
    EXPECT_TRUE((stream.GetMode() & FM_FAILED) != 0);
    EXPECT_TRUE(stream.IsFailed());
    EXPECT_FALSE(stream.IsFailed());
    stream.OnFailed();
    stream.OffFailed();
    EXPECT_FALSE(stream.IsFailed());
}

TEST(StreamCore, OnAsciiLeavesABinaryStreamBinary) {
    MemoryStream stream;
    stream.OnBinary();
    stream.OnAscii();
    EXPECT_TRUE(stream.IsBinary());
    stream.SetMode(FM_LOADING);
    EXPECT_TRUE(stream.IsAscii());
    EXPECT_TRUE(stream.IsLoading());
}

TEST(StreamCore, EachModeBitHasItsAccessor) {
    struct Row {
        FileMode bit;
        bool (MemoryStream::*test)() const;
    };
    const Row rows[] = {
        {FM_LOADING, &MemoryStream::IsLoading},
        {FM_BINARY, &MemoryStream::IsBinary},
        {FM_BYTESWAP, &MemoryStream::IsByteSwap},
        {FM_APPEND, &MemoryStream::IsAppend},
        {FM_VARN, &MemoryStream::IsVarn},
        {FM_DONTASK, &MemoryStream::IsDontAsk},
        {FM_DONTPROGRESS, &MemoryStream::IsDontProgress},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.bit));
        MemoryStream stream;
        EXPECT_FALSE((stream.*row.test)());
        stream.SetMode(row.bit);
        EXPECT_EQ(stream.GetMode(), row.bit);
        EXPECT_TRUE((stream.*row.test)());
        stream.SetMode(static_cast<FileMode>(0xFF & ~row.bit));
        EXPECT_FALSE((stream.*row.test)());
    }
}

TEST(StreamCore, NewStreamIsTextStoringWithCountsAtVersion5) {
    MemoryStream stream;
    EXPECT_EQ(stream.GetMode(), FM_STORING);
    EXPECT_TRUE(stream.IsStoring());
    EXPECT_TRUE(stream.IsAscii());
    EXPECT_TRUE(stream.IsWriteStringCounts());
    EXPECT_EQ(stream.GetVersion(), 5.0f);
    EXPECT_TRUE(stream.GetFileName().IsEmpty());
    EXPECT_FALSE(stream.DidPassEOL());
}

TEST(StreamCore, ManipulatorsWriteTheirSeparatorByForm) {
    struct Row {
        const char* name;
        VarnStream::Manipulator manipulator;
        const char* text;
        const char* binary;
    };
    const Row rows[] = {
        {"nl", &nl, "\n", ""},   {"nlb", &nlb, "\n", ""}, {"sp", &sp, " ", ""},
        {"spb", &spb, " ", " "}, {"tab", &tab, "\t", ""}, {"tabb", &tabb, "\t", "\t"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        MemoryStream text, binary;
        Store(text, false);
        Store(binary, true);
        text << row.manipulator;
        binary << row.manipulator;
        EXPECT_EQ(Bytes(text), row.text);
        EXPECT_EQ(Bytes(binary), row.binary);
    }
}

TEST(StreamCore, SkipWhiteStopsAtTheFirstOtherByteANulTheEndOr255Bytes) {
    struct Row {
        std::string data;
        unsigned long long expected;
    };
    const Row rows[] = {
        {"  \t\r\nX", 5},
        {"X", 0},
        {"", 0},
        {"   ", 3},
        {std::string("  \0 X", 5), 2},
        // 255 bytes are read at most; the 255th is read again.
        {std::string(300, ' ') + "X", 254},
        {std::string(254, '\n') + "X", 254},
        {std::string(253, '\t') + "X", 253},
    };
    for (const Row& row : rows) {
        for (bool byteWise : {false, true}) {
            auto stream = Transport(byteWise);
            SCOPED_TRACE(TransportName(byteWise) + (" " + Hex(row.data.substr(0, 8))));
            Load(*stream, row.data);
            stream->SkipWhite();
            EXPECT_EQ(stream->GetPos(), row.expected);
        }
    }
}

TEST(StreamCore, ReadPastEOLTakesOneRunOfLineEndsWithin255Bytes) {
    struct Row {
        std::string data;
        unsigned long long expected;
    };
    const Row rows[] = {
        {"abc\nX", 4},
        {"abc\rX", 4},
        {"abc\r\nX", 5},
        {"abc\r\n\r\n\n\rX", 9},
        {"\n\n\nX", 3},
        {"abc", 3},
        {"abc\n", 4},
        {"", 0},
        // No line end within 255 bytes: the stream stays after them.
        {std::string(300, 'a') + "\nX", 255},
        // The limit counts both phases together; a run of line ends that reaches it goes
        // back to the position noted before its last byte.
        {std::string(250, 'a') + std::string(10, '\n') + "X", 254},
        {std::string(300, '\n'), 254},
    };
    for (const Row& row : rows) {
        for (bool byteWise : {false, true}) {
            SCOPED_TRACE(TransportName(byteWise) + (" " + Hex(row.data.substr(0, 12))));
            auto stream = Transport(byteWise);
            Load(*stream, row.data);
            stream->ReadPastEOL();
            EXPECT_EQ(stream->GetPos(), row.expected);
        }
    }
}

TEST(StreamCore, ParseTokenSkipsBlanksAroundTheTokenAndTellsTheLineEnd) {
    struct Expected {
        const char* token;
        bool passedEOL;
        unsigned long long position;
    };
    const std::string data = "  alpha  beta\r\n\n  gamma\t\n\r  delta";
    const Expected expected[] = {
        {"alpha", false, 9},  {"beta", true, 16}, {"gamma", true, 26},
        {"delta", false, 33}, {"", false, 33},
    };
    for (bool byteWise : {false, true}) {
        auto stream = Transport(byteWise);
        SCOPED_TRACE(TransportName(byteWise));
        Load(*stream, data);
        for (const Expected& e : expected) {
            SCOPED_TRACE(e.token);
            String token("stale");
            stream->ParseToken(token);
            EXPECT_EQ(token.View(), e.token);
            EXPECT_EQ(token.Get() == nullptr, *e.token == '\0');
            EXPECT_EQ(stream->DidPassEOL(), e.passedEOL);
            EXPECT_EQ(stream->GetPos(), e.position);
        }
    }
}

TEST(StreamCore, ParseTokenAfterALineEndStopsAtBlanksOfTheNextLine) {
    // After the line end only CR and LF are skipped, not the blanks that follow them.
    for (bool byteWise : {false, true}) {
        auto stream = Transport(byteWise);
        SCOPED_TRACE(TransportName(byteWise));
        Load(*stream, "one\n  two");
        String token;
        stream->ParseToken(token);
        EXPECT_EQ(stream->GetPos(), 4u);
        EXPECT_TRUE(stream->DidPassEOL());
    }
}

TEST(StreamCore, DelimitedTokenKeepsAtMost254BytesAndConsumesTheDelimiter) {
    struct Row {
        std::string data;
        std::string kept;
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
        for (bool byteWise : {false, true}) {
            auto stream = Transport(byteWise);
            SCOPED_TRACE(TransportName(byteWise) + (" " + row.data.substr(0, 16)));
            Load(*stream, row.data);
            // The caller's buffer is 255 bytes; the guard bytes after it must stay.
            std::vector<char> buffer(300, '#');
            stream->ParseToken(buffer.data(), '=');
            EXPECT_EQ(std::string(buffer.data()), row.kept);
            EXPECT_EQ(std::string(buffer.begin() + 255, buffer.end()), std::string(45, '#'));
            EXPECT_EQ(stream->GetPos(), row.position);

            Load(*stream, row.data);
            String asString("stale");
            stream->ParseToken(asString, '=');
            EXPECT_EQ(asString.View(), row.kept);
        }
    }
}

TEST(StreamCore, ReadStringStopsAtTheDelimiterOrTheEnd) {
    MemoryStream stream;
    Load(stream, "first,second");
    EXPECT_EQ(stream.ReadString(',').View(), "first");
    EXPECT_EQ(stream.GetPos(), 6u);
    EXPECT_EQ(stream.ReadString(',').View(), "second");
    EXPECT_TRUE(stream.VirtualEof());
    EXPECT_EQ(stream.ReadString(',').Get(), nullptr);
}

TEST(StreamCore, ReadLineKeepsEachLineWithItsLineEnd) {
    const std::string data = "a\r\nb\rc\n\nd";
    const std::vector<std::string> expected = {"a\r\n", "b\r", "c\n", "\n", "d"};
    for (bool byteWise : {false, true}) {
        auto stream = Transport(byteWise);
        SCOPED_TRACE(TransportName(byteWise));
        Load(*stream, data);
        MemoryStream line;
        for (const std::string& e : expected) {
            ASSERT_TRUE(stream->ReadLine(line));
            EXPECT_EQ(Bytes(line), e);
            EXPECT_EQ(line.GetPos(), 0u);
        }
        EXPECT_FALSE(stream->ReadLine(line));
        EXPECT_EQ(line.GetLength(), 0u);

        Load(*stream, data);
        String text;
        ASSERT_TRUE(stream->ReadLine(text));
        EXPECT_EQ(text.View(), "a\r\n");
    }
}

TEST(StreamCore, BinaryLinesAreTokenWords) {
    for (bool byteWise : {false, true}) {
        auto stream = Transport(byteWise);
        SCOPED_TRACE(TransportName(byteWise));
        Load(*stream, "0123456789", FM_BINARY);
        MemoryStream line;
        std::vector<std::string> lines;
        while (stream->ReadLine(line))
            lines.push_back(Bytes(line));
        EXPECT_EQ(lines, (std::vector<std::string>{"0123", "4567", "89"}));
    }
}

TEST(StreamCore, WriteLineCountsInBinaryWhateverTheCountSwitchSays) {
    MemoryStream text, binary;
    Store(text, false);
    Store(binary, true);
    binary.SetWriteStringCounts(false);
    text.WriteLine(String("abc"));
    binary.WriteLine(String("abc"));
    binary.WriteLine(String());
    EXPECT_EQ(Bytes(text), "abc\n");
    EXPECT_EQ(Hex(Bytes(binary)), "03 00 61 62 63 00 00");
}

TEST(StreamCore, StringTokenInTextIsOneTokenWithoutQuoting) {
    for (bool byteWise : {false, true}) {
        auto stream = Transport(byteWise);
        SCOPED_TRACE(TransportName(byteWise));
        Load(*stream, "  \"two words\"\nnext");
        String value;
        stream->ParseString(value);
        EXPECT_EQ(value.View(), "\"two");
        stream->ParseString(value);
        EXPECT_EQ(value.View(), "words\"");
        EXPECT_TRUE(stream->DidPassEOL());
    }
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
        for (bool byteWise : {false, true}) {
            auto stream = Transport(byteWise);
            SCOPED_TRACE(TransportName(byteWise) + (" " + Hex(row.data)));
            Load(*stream, row.data, FM_BINARY);
            String value("stale");
            stream->ParseString(value);
            EXPECT_EQ(value.View(), row.value);
            EXPECT_EQ(stream->IsFailed(), row.failed);
        }
    }
}
