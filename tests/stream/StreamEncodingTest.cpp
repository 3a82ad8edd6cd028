// The value encoding: the exact text and bytes of every type, the round trip through both
// forms, and the reading rules of the text form (number conversions, bool tokens, strings,
// times).

#include "StreamTestSupport.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

using namespace streamtest;

namespace {

/// Writes value in both forms and checks the exact text and bytes; then reads each form
/// back and checks that the value read writes the same bytes again (the binary form is the
/// value's exact image, so this is equality for every type, floats included).
template <class T>
void ExpectForms(const char* name, const T& value, const std::string& text,
                 const std::string& hex) {
    SCOPED_TRACE(name);
    MemoryStream textStream, binaryStream;
    Store(textStream, false);
    Store(binaryStream, true);
    textStream << value;
    binaryStream << value;
    EXPECT_EQ(Bytes(textStream), text);
    EXPECT_EQ(Hex(Bytes(binaryStream)), hex);

    for (bool binary : {false, true}) {
        SCOPED_TRACE(binary ? "read binary" : "read text");
        MemoryStream reader;
        Load(reader, binary ? Bytes(binaryStream) : Bytes(textStream),
             binary ? FM_BINARY : FM_LOADING);
        T back{};
        reader >> back;
        EXPECT_TRUE(reader.VirtualEof());
        EXPECT_FALSE(reader.IsFailed());
        MemoryStream again;
        Store(again, true);
        again << back;
        EXPECT_EQ(Hex(Bytes(again)), hex);
    }
}

/// n zero bytes as hex pairs.
std::string Zeros(int n) {
    std::string hex;
    for (int i = 0; i < n; ++i)
        hex += i == 0 ? "00" : " 00";
    return hex;
}

} // namespace

TEST(StreamEncoding, ScalarsInBothForms) {
    ExpectForms("char", 'A', "A", "41");
    ExpectForms("char blank", ' ', " ", "20");
    ExpectForms("signed char", static_cast<signed char>(-5), "-5", "FB");
    ExpectForms("unsigned char", static_cast<unsigned char>(200), "200", "C8");
    ExpectForms("short", static_cast<short>(-2), "-2", "FE FF");
    ExpectForms("unsigned short", static_cast<unsigned short>(65535), "65535", "FF FF");
    ExpectForms("int", -123456, "-123456", "C0 1D FE FF");
    ExpectForms("int min", INT_MIN, "-2147483648", "00 00 00 80");
    ExpectForms("unsigned int", 7u, "7", "07 00 00 00");
    // A long is four bytes in a file on every platform.
    ExpectForms("long", -1L, "-1", "FF FF FF FF");
    ExpectForms("long max", 2147483647L, "2147483647", "FF FF FF 7F");
    ExpectForms("unsigned long", 4000000000UL, "4000000000", "00 28 6B EE");
    ExpectForms("long long", -2LL, "-2", "FE FF FF FF FF FF FF FF");
    ExpectForms("long long min", LLONG_MIN, "-9223372036854775808", "00 00 00 00 00 00 00 80");
    ExpectForms("unsigned long long", ULLONG_MAX, "18446744073709551615",
                "FF FF FF FF FF FF FF FF");
    ExpectForms("float", 0.1f, "0.100000001", "CD CC CC 3D");
    ExpectForms("float -0", -0.0f, "-0", "00 00 00 80");
    ExpectForms("float 1e10", 1e10f, "1e+10", "F9 02 15 50");
    ExpectForms("float 123456789", 123456789.0f, "123456792", "A3 79 EB 4C");
    ExpectForms("double", 0.1, "0.10000000000000001", "9A 99 99 99 99 99 B9 3F");
    ExpectForms("double 1e-5", 1e-5, "1.0000000000000001e-05", "F1 68 E3 88 B5 F8 E4 3E");
    ExpectForms("double 0.5", 0.5, "0.5", "00 00 00 00 00 00 E0 3F");
    ExpectForms("bool true", true, "TRUE", "01");
    ExpectForms("bool false", false, "FALSE", "00");
    ExpectForms("StreamBOOL", StreamBOOL(5), "TRUE", "01");
    ExpectForms("StreamBOOL 0", StreamBOOL(0), "FALSE", "00");
}

TEST(StreamEncoding, CompositesInBothForms) {
    ExpectForms("Vector2", Vector2{1, 0.5f}, "1 0.5", "00 00 80 3F 00 00 00 3F");
    ExpectForms("Vector", Vector{0, 1, 2.5f}, "0 1 2.5", "00 00 00 00 00 00 80 3F 00 00 20 40");
    ExpectForms("Rotate", Rotate{90, 0, -45}, "90 0 -45", "00 00 B4 42 00 00 00 00 00 00 34 C2");
    ExpectForms("Vector4", Vector4{0, 0, 0, 1}, "0 0 0 1",
                "00 00 00 00 00 00 00 00 00 00 00 00 00 00 80 3F");
    ExpectForms("Quaternion", Quaternion{0.5f, 0.5f, 0.5f, 0.5f}, "0.5 0.5 0.5 0.5",
                "00 00 00 3F 00 00 00 3F 00 00 00 3F 00 00 00 3F");
    ExpectForms("RGBFloat", RGBFloat{1, 0.25f, 0}, "1 0.25 0",
                "00 00 80 3F 00 00 80 3E 00 00 00 00");
    ExpectForms("ColorBuf", ColorBuf{1, 2, 3, 255}, "1 2 3 255", "01 02 03 FF");
    ExpectForms("PatchID", PatchID{{1, 2, 3, 2147483647}}, "1 2 3 2147483647",
                "01 00 00 00 02 00 00 00 03 00 00 00 FF FF FF 7F");
    Matrix33 m33;
    m33.row[0].x = m33.row[1].y = m33.row[2].z = 1;
    ExpectForms("Matrix33", m33, "1 0 0 0 1 0 0 0 1",
                "00 00 80 3F 00 00 00 00 00 00 00 00 00 00 00 00 00 00 80 3F 00 00 00 00 "
                "00 00 00 00 00 00 00 00 00 00 80 3F");
    Matrix34 m34;
    m34.row[0].w = 1.5f;
    ExpectForms("Matrix34", m34, "0 0 0 1.5 0 0 0 0 0 0 0 0",
                "00 00 00 00 00 00 00 00 00 00 00 00 00 00 C0 3F " + Zeros(32));
    Matrix44 m44;
    m44.row[3].w = -1;
    ExpectForms("Matrix44", m44, "0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 -1", Zeros(62) + " 80 BF");
    ExpectForms("Time", Time(139500LL), "1:1", "EC 20 02 00 00 00 00 00");
    ExpectForms("TimeRange", TimeRange{Time(4500LL), Time(8104500LL)}, "1 1:0:1",
                "94 11 00 00 00 00 00 00 34 AA 7B 00 00 00 00 00");
    ExpectForms("COleDateTime", COleDateTime{45000.5, COleDateTime::valid}, "0 45000.5",
                "00 00 00 00 00 00 00 00 10 F9 E5 40");
    ExpectForms("COleDateTime invalid", COleDateTime{0.0, COleDateTime::invalid}, "1 0",
                "01 00 00 00 00 00 00 00 00 00 00 00");
    ExpectForms("CTime", CTime(1700000000), "1700000000", "00 F1 53 65");
}

TEST(StreamEncoding, CTimeKeepsTheLow32BitsInBinary) {
    MemoryStream stream;
    Store(stream, true);
    stream << CTime(0x100000005LL) << CTime(4000000000LL);
    EXPECT_EQ(Hex(Bytes(stream)), "05 00 00 00 00 28 6B EE");
    MemoryStream reader;
    Load(reader, Bytes(stream), FM_BINARY);
    CTime a, b;
    reader >> a >> b;
    EXPECT_EQ(a.GetTime(), 5);
    EXPECT_EQ(b.GetTime(), 4000000000LL);
}

TEST(StreamEncoding, TextNumbersReadAsTheRuntimeConversionsDo) {
    struct Row {
        const char* token;
        long long asInt;                   // int, long, short etc. through a 32-bit strtol
        unsigned long long asUnsignedLong; // a 32-bit strtoul
        long long asLongLong;
        short asShort;
        unsigned int asUnsignedInt;
    };
    const Row rows[] = {
        {"12", 12, 12, 12, 12, 12},
        {"-1", -1, 4294967295ULL, -1, -1, 4294967295U},
        {"12abc", 12, 12, 12, 12, 12},
        {"abc", 0, 0, 0, 0, 0},
        {"+7", 7, 7, 7, 7, 7},
        {"0x10", 0, 0, 0, 0, 0},
        // A 32-bit strtol clamps, so an unsigned int above 2147483647 reads as 2147483647.
        {"4000000000", 2147483647, 4000000000ULL, 4000000000LL, -1, 2147483647U},
        {"-2147483649", INT_MIN, 2147483647ULL, -2147483649LL, 0, 2147483648U},
        {"5000000000", 2147483647, 4294967295ULL, 5000000000LL, -1, 2147483647U},
        {"70000", 70000, 70000, 70000, 4464, 70000},
        {"9223372036854775808", 2147483647, 4294967295ULL, LLONG_MAX, -1, 2147483647U},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.token);
        const std::string data = std::string(row.token) + " " + row.token + " " + row.token + " " +
                                 row.token + " " + row.token + " " + row.token;
        MemoryStream stream;
        Load(stream, data);
        int asInt = 1;
        long asLong = 1;
        unsigned long asUnsignedLong = 1;
        long long asLongLong = 1;
        short asShort = 1;
        unsigned int asUnsignedInt = 1;
        stream >> asInt >> asLong >> asUnsignedLong >> asLongLong >> asShort >> asUnsignedInt;
        EXPECT_EQ(asInt, row.asInt);
        EXPECT_EQ(asLong, row.asInt);
        EXPECT_EQ(asUnsignedLong, row.asUnsignedLong);
        EXPECT_EQ(asLongLong, row.asLongLong);
        EXPECT_EQ(asShort, row.asShort);
        EXPECT_EQ(asUnsignedInt, row.asUnsignedInt);
    }
}

TEST(StreamEncoding, TokensLongerThan255BytesAreReadWhole) {
    // Such a token goes through the library's shared scratch token, on both transports.
    struct Row {
        const char* name;
        std::string token;
        int expected;
    };
    const Row rows[] = {
        {"digits", std::string(300, '0') + "42", 42},
        {"huge", std::string(300, '9'), INT_MAX},
        {"NUL bytes", std::string(300, '\0'), 0},
    };
    for (const Row& row : rows) {
        for (bool byteWise : {false, true}) {
            SCOPED_TRACE(std::string(row.name) + " " + TransportName(byteWise));
            auto stream = Transport(byteWise);
            Load(*stream, row.token + " 7");
            int value = -1, next = -1;
            *stream >> value >> next;
            EXPECT_EQ(value, row.expected);
            EXPECT_EQ(next, 7);
        }
    }
}

TEST(StreamEncoding, TextFloatsReadAsStrtofAndStrtod) {
    struct Row {
        const char* token;
        float asFloat;
        double asDouble;
    };
    const float inf = std::numeric_limits<float>::infinity();
    const Row rows[] = {
        {"1.5", 1.5f, 1.5},
        {"-2.25e2", -225.0f, -225.0},
        {"0x1p3", 8.0f, 8.0},
        {"1e40", inf, 1e40},
        {"-inf", -inf, -static_cast<double>(inf)},
        {"3.5kg", 3.5f, 3.5},
        {"kg", 0.0f, 0.0},
        {".5", 0.5f, 0.5},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.token);
        MemoryStream stream;
        Load(stream, std::string(row.token) + "\n" + row.token);
        float f = 1;
        double d = 1;
        stream >> f >> d;
        EXPECT_EQ(f, row.asFloat);
        EXPECT_EQ(d, row.asDouble);
    }
}

TEST(StreamEncoding, FloatTextRoundTripsEveryBit) {
    const float floats[] = {0.1f,
                            1.0f,
                            -0.0f,
                            1e10f,
                            1.5e-7f,
                            FLT_MAX,
                            -FLT_MAX,
                            FLT_MIN,
                            1e-45f,
                            123456789.0f,
                            3.14159274f,
                            -1e-38f,
                            std::numeric_limits<float>::infinity()};
    const double doubles[] = {0.1,
                              1e-5,
                              DBL_MAX,
                              DBL_MIN,
                              5e-324,
                              -0.0,
                              1.0 / 3.0,
                              2.718281828459045,
                              -std::numeric_limits<double>::infinity()};
    MemoryStream stream;
    Store(stream, false);
    for (float f : floats)
        stream << f << sp;
    for (double d : doubles)
        stream << d << nl;
    stream << std::numeric_limits<float>::quiet_NaN() << sp
           << std::numeric_limits<double>::quiet_NaN();
    MemoryStream reader;
    Load(reader, Bytes(stream));
    for (float f : floats) {
        float back = 0;
        reader >> back;
        EXPECT_EQ(std::memcmp(&back, &f, sizeof f), 0) << f;
    }
    for (double d : doubles) {
        double back = 0;
        reader >> back;
        EXPECT_EQ(std::memcmp(&back, &d, sizeof d), 0) << d;
    }
    float nanFloat = 0;
    double nanDouble = 0;
    reader >> nanFloat >> nanDouble;
    EXPECT_TRUE(std::isnan(nanFloat));
    EXPECT_TRUE(std::isnan(nanDouble));
}

TEST(StreamEncoding, BoolTokens) {
    struct Row {
        const char* token;
        bool expected;
    };
    const Row rows[] = {
        {"TRUE", true}, {"true", true},   {"On", true},  {"1", true},
        {"oN", true},   {"yes", false},   {"2", false},  {"FALSE", false},
        {"0", false},   {"truee", false}, {"01", false}, {"off", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.token);
        MemoryStream stream;
        Load(stream, std::string(row.token) + " " + row.token);
        bool value = !row.expected;
        StreamBOOL flag(row.expected ? 0 : 7);
        stream >> value >> flag;
        EXPECT_EQ(value, row.expected);
        EXPECT_EQ(flag.value, row.expected ? 1 : 0);
    }
    // Binary: any byte but 0 is true.
    MemoryStream binary;
    Load(binary, Raw({0x00, 0x01, 0x7F}), FM_BINARY);
    bool a = true, b = false, c = false;
    binary >> a >> b >> c;
    EXPECT_FALSE(a);
    EXPECT_TRUE(b);
    EXPECT_TRUE(c);
}

// ---- strings ---------------------------------------------------------------------------------

TEST(StreamEncoding, StringForms) {
    struct Row {
        const char* name;
        std::string value;
        bool counts;
        std::string text;
        std::string binary;
    };
    const Row rows[] = {
        {"plain", "Bone", true, "Bone", Raw({4, 0}) + "Bone"},
        {"ampersand", "A&B", true, "A&#38;B", Raw({3, 0}) + "A&B"},
        {"ampersands", "&x&&", true, "&#38;x&#38;&#38;", Raw({4, 0}) + "&x&&"},
        {"blanks", "a b", true, "a b", Raw({3, 0}) + "a b"},
        {"empty", "", true, "", Raw({0, 0})},
        {"no counts", "A&B", false, "A&#38;B", "A&#38;B"},
        {"no counts empty", "", false, "", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        MemoryStream text, binary;
        Store(text, false);
        Store(binary, true);
        text.SetWriteStringCounts(row.counts);
        binary.SetWriteStringCounts(row.counts);
        text << String(row.value.c_str());
        binary << String(row.value.c_str());
        EXPECT_EQ(Bytes(text), row.text);
        EXPECT_EQ(Bytes(binary), row.binary);
    }
}

TEST(StreamEncoding, CharacterPointerFormsAreNeverEscaped) {
    for (bool counts : {true, false}) {
        SCOPED_TRACE(counts ? "counts" : "no counts");
        MemoryStream text, binary;
        Store(text, false);
        Store(binary, true);
        text.SetWriteStringCounts(counts);
        binary.SetWriteStringCounts(counts);
        text << "A&B" << std::string("C&D");
        binary << "A&B" << std::string("C&D") << static_cast<const char*>(nullptr);
        EXPECT_EQ(Bytes(text), "A&BC&D");
        EXPECT_EQ(Bytes(binary),
                  counts ? Raw({3, 0}) + "A&B" + Raw({3, 0}) + "C&D" + Raw({0, 0}) : "A&BC&D");
    }
}

TEST(StreamEncoding, StringsRoundTripInBinary) {
    const std::string values[] = {
        "Bone", "A&B", "a b", "", "x&#38;y", "\t\n\r", std::string(65535, 'z')};
    MemoryStream stream;
    Store(stream, true);
    for (const std::string& value : values)
        stream << String(value);
    MemoryStream reader;
    Load(reader, Bytes(stream), FM_BINARY);
    for (const std::string& value : values) {
        SCOPED_TRACE(value.substr(0, 10));
        String back("stale");
        reader >> back;
        EXPECT_EQ(back.View(), value);
        EXPECT_EQ(back.Get() == nullptr, value.empty());
    }
    EXPECT_TRUE(reader.VirtualEof());
    EXPECT_FALSE(reader.IsFailed());
}

TEST(StreamEncoding, StringsInTextAreOneTokenEach) {
    // The text form has no quoting: "&" comes back, a blank splits the value in two, and an
    // empty value is no token at all, so the next token is read in its place.
    MemoryStream stream;
    Store(stream, false);
    stream << String("A&B") << nl << String("x&#38;y") << nl << String("a b") << nl << String("")
           << nl << String("next");
    EXPECT_EQ(Bytes(stream), "A&#38;B\nx&#38;#38;y\na b\n\nnext");
    MemoryStream reader;
    Load(reader, Bytes(stream));
    const char* expected[] = {"A&B", "x&#38;y", "a", "b", "next"};
    for (const char* e : expected) {
        String back;
        reader >> back;
        EXPECT_EQ(back.View(), e);
    }
    EXPECT_TRUE(reader.VirtualEof());
}

TEST(StreamEncoding, StringCountWrapsAt65536) {
    MemoryStream stream;
    Store(stream, true);
    stream << String(std::string(65536, 'q')) << String(std::string(65537, 'r'));
    const std::string bytes = Bytes(stream);
    ASSERT_EQ(bytes.size(), 2u + 65536u + 2u + 65537u);
    EXPECT_EQ(Hex(bytes.substr(0, 3)), "00 00 71");
    EXPECT_EQ(Hex(bytes.substr(65538, 3)), "01 00 72");
}

TEST(StreamEncoding, BinaryStringCountBeyondTheDataFails) {
    struct Row {
        const char* name;
        std::string data;
    };
    const Row rows[] = {
        {"count larger than the rest", Raw({0xFF, 0xFF}) + "abc"},
        {"one count byte", Raw({0x05})},
        {"no count", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        MemoryStream stream;
        Load(stream, row.data, FM_BINARY);
        String value("stale");
        stream >> value;
        EXPECT_TRUE(value.IsEmpty());
        EXPECT_TRUE(stream.IsFailed());
        EXPECT_TRUE(stream.VirtualEof());
    }
}

// ---- times -------------------------------------------------------------------------------------

TEST(StreamEncoding, TimeText) {
    struct Row {
        long long ticks;
        const char* text;
    };
    const Row rows[] = {
        {0, "0"},
        {4500, "1"},
        {139500, "1:1"},
        {8104500, "1:0:1"},
        {4501, "1.1"},
        {-4500, "-1"},
        {135000, "1:0"},
        {8100000, "1:0:0"},
        {1, "0.1"},
        {-1, "-0.1"},
        {4499, "0.4499"},
        {134999, "29.4499"},
        {810013507, "100:0:3.7"},
        {Time::MinTicks, "0"},
        {Time::MaxTicks, "0"},
        {Time::MinTicks + 1, "-1138687905784:32:12.1807"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        MemoryStream stream;
        Store(stream, false);
        stream << Time(row.ticks);
        EXPECT_EQ(Bytes(stream), row.text);
    }
}

TEST(StreamEncoding, TimeSentinelsAreStoredAsZeroInBinary) {
    MemoryStream stream;
    Store(stream, true);
    stream << Time(Time::MAX) << Time(Time::MIN) << Time(Time::TAGGED);
    EXPECT_EQ(Hex(Bytes(stream)),
              "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 FF FF FF FF FF FF FF FF");
}

TEST(StreamEncoding, TimeTextReading) {
    struct Row {
        const char* token;
        long long ticks;
    };
    const Row rows[] = {
        {"45", 45},      // 30 or more without a ".": raw ticks
        {"15", 67500},   // below 30: frames
        {"15.0", 67500}, // with a ".": frames and ticks
        {"29", 130500},
        {"30", 30},
        {"1:0", 135000}, // the 0 is the frame field, the 1 the seconds
        {"1.1", 4501},
        {"-1", -4500},
        {"1:0:1", 8104500},
        {"1:45", 135045},     // 45 is raw ticks; the 1 stays seconds
        {"1:2:3.4", 8383504}, // ((1 x 60 + 2) x 30 + 3) x 4500 + 4
        {"9:1:2:3", 8383500}, // only the last three fields count
        {"45.3", 202503},
        {"-1:0:1", -8104500},
        {"", 0}, // no token on the line: the next line's "next" is read, and is no number
        {"abc", 0},
        {"1:x", 135000},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.token);
        MemoryStream stream;
        Load(stream, std::string(row.token) + "\nnext");
        Time value(99LL);
        stream >> value;
        EXPECT_EQ(value.GetTicks(), row.ticks);
    }
}

TEST(StreamEncoding, TimesRoundTripInBothForms) {
    const long long ticks[] = {0,
                               1,
                               4499,
                               4500,
                               4501,
                               134999,
                               135000,
                               8099999,
                               8100000,
                               -1,
                               -4501,
                               1000000000007LL,
                               Time::MaxTicks - 1,
                               Time::MinTicks + 1,
                               -8104501};
    for (bool binary : {false, true}) {
        SCOPED_TRACE(binary ? "binary" : "text");
        MemoryStream stream;
        Store(stream, binary);
        for (long long t : ticks)
            stream << Time(t) << sp;
        MemoryStream reader;
        Load(reader, Bytes(stream), binary ? FM_BINARY : FM_LOADING);
        for (long long t : ticks) {
            Time back;
            reader >> back;
            EXPECT_EQ(back.GetTicks(), t);
        }
    }
}
