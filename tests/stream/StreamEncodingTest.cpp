// The value encoding: the exact text and bytes of every type, the round trip through both forms,
// and the reading rules of the text form (long tokens, strings, times).

#include "StreamTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <tuple>

using namespace streamtest;

namespace {

/// Writes value in both forms and checks the exact text and bytes; then reads each form
/// back and checks that the value read writes the same bytes again (the binary form is the
/// value's exact image, so this is equality for every type, floats included).
template <class T>
void ExpectForms(const char* name, const T& value, const std::string& text,
                 const std::string& hex) {
    SCOPED_TRACE(name);
    BothForms written;
    written << value;
    EXPECT_EQ(Bytes(written.text), text);
    EXPECT_EQ(Hex(Bytes(written.binary)), hex);
    for (const MemoryStream* form : {&written.text, &written.binary}) {
        SCOPED_TRACE(form->IsBinary() ? "read binary" : "read text");
        MemoryStream reader;
        LoadBack(reader, *form);
        T back{};
        reader >> back;
        EXPECT_TRUE(reader.VirtualEof());
        EXPECT_FALSE(reader.IsFailed());
        BothForms again;
        again << back;
        EXPECT_EQ(Hex(Bytes(again.binary)), hex);
    }
}

} // namespace

TEST(StreamEncoding, ScalarsInBothForms) {
    ExpectForms("char", ' ', " ", "20");
    ExpectForms("signed char", static_cast<signed char>(-5), "-5", "FB");
    ExpectForms("unsigned char", static_cast<unsigned char>(200), "200", "C8");
    ExpectForms("short", static_cast<short>(-2), "-2", "FE FF");
    ExpectForms("unsigned short", static_cast<unsigned short>(65535), "65535", "FF FF");
    ExpectForms("int", INT_MIN, "-2147483648", "00 00 00 80");
    ExpectForms("unsigned int", 7u, "7", "07 00 00 00");
    // A long is four bytes in a file on every platform.
    ExpectForms("long", -2L, "-2", "FE FF FF FF");
    ExpectForms("unsigned long", 4000000000UL, "4000000000", "00 28 6B EE");
    ExpectForms("long long", LLONG_MIN, "-9223372036854775808", "00 00 00 00 00 00 00 80");
    ExpectForms("unsigned long long", ULLONG_MAX, "18446744073709551615",
                "FF FF FF FF FF FF FF FF");
    // Nine significant digits for a float, seventeen for a double.
    ExpectForms("float", 0.1f, "0.100000001", "CD CC CC 3D");
    ExpectForms("double", 0.1, "0.10000000000000001", "9A 99 99 99 99 99 B9 3F");
    ExpectForms("bool true", true, "TRUE", "01");
    ExpectForms("bool false", false, "FALSE", "00");
    ExpectForms("StreamBOOL", StreamBOOL(5), "TRUE", "01");
}

TEST(StreamEncoding, CompositesInBothForms) {
    ExpectForms("Vector", Vector{0, 1, 2.5f}, "0 1 2.5", "00 00 00 00 00 00 80 3F 00 00 20 40");
    ExpectForms("ColorBuf", ColorBuf{1, 2, 3, 255}, "1 2 3 255", "01 02 03 FF");
    ExpectForms("PatchID", PatchID{{1, 2, 3, 2147483647}}, "1 2 3 2147483647",
                "01 00 00 00 02 00 00 00 03 00 00 00 FF FF FF 7F");
    Matrix44 m44;
    m44.row[3].w = -1;
    ExpectForms("Matrix44", m44, "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 -1",
                Hex(std::string(62, '\0') + "\x80\xBF"));
    ExpectForms("Time", Time(139500LL), "1:1", "EC 20 02 00 00 00 00 00");
    ExpectForms("TimeRange", TimeRange{Time(4500LL), Time(8104500LL)}, "1 1:0:1",
                "94 11 00 00 00 00 00 00 34 AA 7B 00 00 00 00 00");
    ExpectForms("COleDateTime", COleDateTime{45000.5, COleDateTime::invalid}, "1 45000.5",
                "01 00 00 00 00 00 00 00 10 F9 E5 40");
    ExpectForms("CTime", CTime(1700000000), "1700000000", "00 F1 53 65");
    // A CTime keeps the low 32 bits in binary, read back as unsigned.
    BothForms stream;
    stream << CTime(0x100000005LL) << CTime(4000000000LL);
    EXPECT_EQ(Hex(Bytes(stream.binary)), "05 00 00 00 00 28 6B EE");
    MemoryStream reader;
    LoadBack(reader, stream.binary);
    CTime a, b;
    reader >> a >> b;
    EXPECT_EQ(a.GetTime(), 5);
    EXPECT_EQ(b.GetTime(), 4000000000LL);
    // The time sentinels MAX and MIN are stored as zero.
    BothForms sentinels;
    sentinels << Time(Time::MAX) << sp << Time(Time::MIN);
    sentinels.binary << Time(Time::TAGGED);
    EXPECT_EQ(Bytes(sentinels.text), "0 0");
    EXPECT_EQ(Hex(Bytes(sentinels.binary)), Hex(std::string(16, '\0') + std::string(8, '\xFF')));
}

TEST(StreamEncoding, TokensLongerThan255BytesAreReadWhole) {
    // Such a token goes through the library's shared scratch token, on both transports.
    for (const std::string& token : {std::string(300, '0') + "42", std::string(300, '\0')}) {
        OnBothTransports(token + " 7", [&](VarnStream& stream) {
            int value = -1, next = -1;
            stream >> value >> next;
            EXPECT_EQ(value, token[0] == '0' ? 42 : 0);
            EXPECT_EQ(next, 7);
        });
    }
}

TEST(StreamEncoding, StringForms) {
    const std::tuple<const char*, std::string, bool, std::string, std::string> rows[] = {
        {"plain", "a b", true, "a b", Raw({3, 0}) + "a b"},
        {"ampersands", "&x&&", true, "&#38;x&#38;&#38;", Raw({4, 0}) + "&x&&"},
        {"empty", "", true, "", Raw({0, 0})},
        {"no counts", "A&B", false, "A&#38;B", "A&#38;B"},
    };
    for (const auto& [name, value, counts, text, binary] : rows) {
        SCOPED_TRACE(name);
        BothForms written;
        written.text.SetWriteStringCounts(counts);
        written.binary.SetWriteStringCounts(counts);
        written << String(value.c_str());
        EXPECT_EQ(Bytes(written.text), text);
        EXPECT_EQ(Bytes(written.binary), binary);
    }
    // Character pointers and standard strings are never escaped.
    for (bool counts : {true, false}) {
        SCOPED_TRACE(counts ? "counts" : "no counts");
        BothForms written;
        written.text.SetWriteStringCounts(counts);
        written.binary.SetWriteStringCounts(counts);
        written << "A&B" << std::string("C&D");
        written.binary << static_cast<const char*>(nullptr);
        EXPECT_EQ(Bytes(written.text), "A&BC&D");
        EXPECT_EQ(Bytes(written.binary),
                  counts ? Raw({3, 0}) + "A&B" + Raw({3, 0}) + "C&D" + Raw({0, 0}) : "A&BC&D");
    }
    // The count is the length modulo 65536.
    MemoryStream wrapped;
    Store(wrapped, true);
    wrapped << String(std::string(65537, 'r'));
    ASSERT_EQ(wrapped.GetLength(), 2u + 65537u);
    EXPECT_EQ(Hex(Bytes(wrapped).substr(0, 3)), "01 00 72");
}

// [-][minutes:][seconds:]frames[.ticks] at 30 frames of 4500 ticks a second.
TEST(StreamEncoding, TimeTextBothWays) {
    // Ticks, a text and whether the writer gives that text (else it only reads as the ticks).
    const std::tuple<long long, const char*, bool> rows[] = {
        {0, "0", true},
        {-1, "-0.1", true},
        {134999, "29.4499", true},
        {135000, "1:0", true}, // the 0 is the frame field, the 1 the seconds
        {8100000, "1:0:0", true},
        {8383504, "1:2:3.4", true}, // ((1 x 60 + 2) x 30 + 3) x 4500 + 4
        {Time::MinTicks + 1, "-1138687905784:32:12.1807", true},
        {67500, "15.0", false},      // with a ".": frames and ticks
        {135045, "1:45", false},     // 30 or more without a ".": raw ticks; the 1 stays seconds
        {8383500, "9:1:2:3", false}, // only the last three fields count
        {135000, "1:x", false},
        {0, "", false}, // no token on the line: the next line's "next" is read, and is no number
    };
    for (const auto& [ticks, text, written] : rows) {
        SCOPED_TRACE(text);
        if (written) {
            MemoryStream stream;
            Store(stream, false);
            stream << Time(ticks);
            EXPECT_EQ(Bytes(stream), text);
        }
        MemoryStream stream;
        Load(stream, std::string(text) + "\nnext");
        Time value(99LL);
        stream >> value;
        EXPECT_EQ(value.GetTicks(), ticks);
    }
}
