// StringNumbersTest.cpp - numbers and their texts: the text forms of integers, "%.9g"
// floats, "%.17g" doubles, fixed decimals, infinities, every NaN kind, vectors and colours;
// Str_ato* over garbage, partial, blank-led, signed, overflowing and special texts; round
// trips; both directions against the C runtime, and in a locale whose decimal point is a
// comma.
//
// The expected texts are those of a correctly rounded printf in the "C" locale; they were
// worked out from the exact binary values (halfway cases use dyadic values whose decimal
// expansion ends in a 5 just past the last kept digit, e.g. 2^-25 = 2.98023223876953125e-8).

#include "StringTestSupport.h"

#include "fileio/core/Time.h"

#include <algorithm>
#include <bit>
#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>

namespace {

using StringNumberText = StringPoolTest;
using StringConversion = StringPoolTest;

constexpr double kInf = std::numeric_limits<double>::infinity();

/// A NaN's sign and quiet bits, its exponent bits (all ones for every NaN) and nothing of
/// its payload.
std::uint64_t NaNKind(double value) {
    return BitsOf(value) & 0xFFF8000000000000;
}
std::uint32_t NaNKind(float value) {
    return BitsOf(value) & 0xFFC00000;
}

// Integers in full without grouping; "%.9g" for floats, "%.17g" for doubles (the runtime
// comparison below checks random values; here what it seldom meets: -0, ties, the zeros of
// a fraction kept before an exponent, a subnormal); vectors and colours as their floats
// joined by blanks.
TEST_F(StringNumberText, ExactTexts) {
    const struct {
        String value;
        const char* expected;
    } rows[] = {
        {String(0), "0"},
        {String(static_cast<short>(-32768)), "-32768"},
        {String(static_cast<unsigned short>(65535)), "65535"},
        {String(INT32_MIN), "-2147483648"},
        {String(4294967295u), "4294967295"},
        {String(static_cast<long long>(INT64_MIN)), "-9223372036854775808"},
        {String(static_cast<long long>(INT64_MAX)), "9223372036854775807"},
        {String(static_cast<unsigned long long>(UINT64_MAX)), "18446744073709551615"},
        {String(1000000), "1000000"}, // no grouping
        {String(0.1f), "0.100000001"},
        {String(-0.0f), "-0"},
        {String(1.5e10f), "1.50000005e+10"},
        {String(1e-10f), "1.00000001e-10"},
        {String(0x1p-13f), "0.000122070312"}, // 0.0001220703125: a tie, kept even
        {String(0.1), "0.10000000000000001"},
        {String(-0.0), "-0"},
        {String(0x1p-25), "2.9802322387695312e-08"},   // ...3125 cut at a tie: kept even
        {String(0x1p-1050), "8.289046058458095e-317"}, // subnormal; its 17th digit, 0, dropped
        {String(Vector2{1.0f, 0.5f}), "1 0.5"},
        {String(Vector{0.0f, 1.0f, 2.5f}), "0 1 2.5"},
        {String(RGBFloat{0.1f, -0.0f, 1e10f}), "0.100000001 -0 1e+10"},
        {String(RotateEuler{90.0f, -45.0f, 180.0f}), "90 -45 180"},
        {String(Vector4{0.0f, 0.0f, 0.0f, 1.0f}), "0 0 0 1"},
        {String(Quaternion{-FLT_MAX, FLT_MAX, -FLT_MIN, 1.5e-7f}),
         "-3.40282347e+38 3.40282347e+38 -1.17549435e-38 1.50000005e-07"},
        {String(RGBAFloat{1.0f, 0.25f, 0.125f, 0.0625f}), "1 0.25 0.125 0.0625"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.expected);
        EXPECT_EQ(TextOf(row.value), row.expected);
    }
    // long has the platform's width; its most negative value is exact on either.
    const std::string longMin = sizeof(long) == 8 ? "-9223372036854775808" : "-2147483648";
    EXPECT_EQ(TextOf(String(std::numeric_limits<long>::min())), longMin);
}

TEST_F(StringNumberText, FixedDecimals) {
    const struct {
        String value;
        const char* expected;
    } rows[] = {
        {String(1.5, 2), "1.5"},
        {String(100.0, 0), "100"}, // no point: the zeros stay
        {String(1e20, 2), "100000000000000000000"},
        {String(0.125f, 2), "0.12"}, // a tie: to even
        {String(0.375, 2), "0.38"},  // a tie: to even, upwards
        {String(2.5, 0), "2"},
        {String(-0.001, 2), "-0"},                // "-0.00" loses its zeros and its point
        {String(0.1f, 12), "0.100000001"},        // floats stop at 9 decimals
        {String(0.1, 20), "0.10000000000000001"}, // doubles at 17
        {String(1.0 / 3.0, -1), "0.333333"},      // a negative count means 6
        {String(2.0005f, 3), "2"},                // 2.0004999... rounds to 2.000
        {String(-7.25, 1), "-7.2"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.expected);
        EXPECT_EQ(TextOf(row.value), row.expected);
    }
    // The largest double written out in full: its 309 digits, with no point.
    const std::string dblMax =
        "17976931348623157081452742373170435679807056752584499659891747680315726078002853876058955"
        "86327668781715404589535143824642343213268894641827684675467035375169860499105765512820762"
        "45490090389328944075868508455133942304583236903222948165808559332123348274797826204144723"
        "168738177180919299881250404026184124858368";
    EXPECT_EQ(TextOf(String(DBL_MAX, 17)), dblMax);
    EXPECT_EQ(TextOf(String(-DBL_MAX, 0)), "-" + dblMax);
}

// The special values are spelled the same way in every form, for both widths.
TEST_F(StringNumberText, InfinityAndEveryNaNKind) {
    const struct {
        std::uint64_t doubleBits;
        std::uint32_t floatBits;
        const char* expected;
    } rows[] = {
        {0x7FF0000000000000, 0x7F800000, "inf"},        {0xFFF0000000000000, 0xFF800000, "-inf"},
        {0x7FF8000000000000, 0x7FC00000, "nan"},       // quiet
        {0x7FFFFFFFFFFFFFFF, 0x7FFFFFFF, "nan"},       // quiet with a payload
        {0xFFF8000000000001, 0xFFC00001, "-nan"},      // quiet, negative, with a payload
        {0xFFFC000000000000, 0xFFE00000, "-nan"},      // more than the top bit set
        {0xFFF8000000000000, 0xFFC00000, "-nan(ind)"}, // the default indeterminate NaN
        {0x7FF0000000000001, 0x7F800001, "nan(snan)"}, // signalling
        {0xFFF7FFFFFFFFFFFF, 0xFFBFFFFF, "-nan(snan)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.expected);
        const double d = DoubleFromBits(row.doubleBits);
        const float f = FloatFromBits(row.floatBits);
        EXPECT_EQ(TextOf(String(d)), row.expected);
        EXPECT_EQ(TextOf(String(f)), row.expected);
        EXPECT_EQ(TextOf(String(d, 3)), row.expected);
        EXPECT_EQ(TextOf(String(f, 3)), row.expected);
        EXPECT_EQ(TextOf(String(Vector2{f, 1.0f})), std::string(row.expected) + " 1");
    }
}

// Every float and double reads back to the same bits through its own text. A NaN's text
// names no payload, so a NaN reads back as a NaN of the same sign that is signalling
// exactly when the original was.
TEST_F(StringNumberText, RoundTripsOfRandomBitPatterns) {
    std::mt19937_64 random(20240611);
    for (int i = 0; i < 200000; ++i) {
        const std::uint64_t bits = random();
        const double d = DoubleFromBits(bits);
        const String dText(d);
        const double dBack = dText.Str_atod();
        const float f = FloatFromBits(static_cast<std::uint32_t>(bits >> 32));
        const String fText(f);
        const float fBack = fText.Str_atof();
        if (d == d)
            ASSERT_EQ(BitsOf(dBack), bits) << TextOf(dText);
        else
            ASSERT_EQ(NaNKind(dBack), NaNKind(d)) << TextOf(dText);
        if (f == f)
            ASSERT_EQ(BitsOf(fBack), BitsOf(f)) << TextOf(fText);
        else
            ASSERT_EQ(NaNKind(fBack), NaNKind(f)) << TextOf(fText);
    }
}

// The special values and the edges of both widths read back to the same bits; a
// signalling NaN reads back signalling (its payload is not written).
TEST_F(StringNumberText, RoundTripsOfSpecialValues) {
    const struct {
        std::uint64_t doubleBits, doubleBack;
        std::uint32_t floatBits, floatBack;
    } rows[] = {
        {0x7FF0000000000000, 0x7FF0000000000000, 0x7F800000, 0x7F800000},
        {0xFFF8000000000000, 0xFFF8000000000000, 0xFFC00000, 0xFFC00000},
        {0x0000000000000001, 0x0000000000000001, 0x00000001, 0x00000001},
        {0x000FFFFFFFFFFFFF, 0x000FFFFFFFFFFFFF, 0x007FFFFF, 0x007FFFFF},
        {0x0010000000000000, 0x0010000000000000, 0x00800000, 0x00800000},
        {0x7FEFFFFFFFFFFFFF, 0x7FEFFFFFFFFFFFFF, 0x7F7FFFFF, 0x7F7FFFFF},
        {0x8000000000000000, 0x8000000000000000, 0x80000000, 0x80000000},
        {0x7FF0000000000001, 0x7FF4000000000000, 0xFF800001, 0xFFA00000},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.doubleBits);
        EXPECT_EQ(BitsOf(String(DoubleFromBits(row.doubleBits)).Str_atod()), row.doubleBack);
        EXPECT_EQ(BitsOf(String(FloatFromBits(row.floatBits)).Str_atof()), row.floatBack);
    }
}

TEST_F(StringConversion, DoublesFromText) {
    const struct {
        const char* text;
        std::uint64_t bits;
    } rows[] = {
        {" \t\n\v\f\r12", BitsOf(12.0)}, // every C white-space character is skipped
        {"12abc", BitsOf(12.0)},         // partial numbers count
        {"1e", BitsOf(1.0)},             // an exponent without digits is not read
        {"+1E5", BitsOf(1e5)},
        {".5", BitsOf(0.5)},
        {"1,5", BitsOf(1.0)}, // a comma is never a decimal point
        {"-.", BitsOf(0.0)},  // no number at all: +0
        {"+-1", BitsOf(0.0)},
        {"- 1", BitsOf(0.0)},
        {"-0", BitsOf(-0.0)},
        {"0x1.8p3", BitsOf(12.0)}, // hexadecimal
        {"0x.8", BitsOf(0.5)},
        {"0x1p", BitsOf(1.0)},
        {"0x", BitsOf(0.0)}, // the "0" before the x is the number
        {"-0x", BitsOf(-0.0)},
        {"0x1p-1074", BitsOf(std::numeric_limits<double>::denorm_min())},
        {"0x1p-1075", BitsOf(0.0)}, // a tie with 0: to even
        {"0x1.8p-1075", BitsOf(std::numeric_limits<double>::denorm_min())},
        {"0x1p1024", BitsOf(kInf)},
        {"-Infinity", BitsOf(-kInf)},
        {"INFINITE", BitsOf(kInf)}, // not "INFINITY": only "INF" is read
        {"nan", 0x7FF8000000000000},
        {"-NaN", 0xFFF8000000000000},
        {"nan(123)", 0x7FF800000000007B}, // a numeric n-char-sequence is the payload
        {"nan(0x10)", 0x7FF8000000000010},
        {"nan(010)", 0x7FF8000000000008},                    // base 0: a leading 0 is octal
        {"nan(08)", 0x7FF8000000000000},                     // not a whole number: no payload
        {"nan(abc", 0x7FF8000000000000},                     // unclosed: just "nan"
        {"nan(0xFFFFFFFFFFFFFFFFFFFF)", 0x7FFFFFFFFFFFFFFF}, // overflow: all payload bits
        {"nan(snan)", 0x7FF4000000000000},
        {"-nan(ind)", 0xFFF8000000000000},
        {"1e400", BitsOf(kInf)},   // overflow
        {"-1e-400", BitsOf(-0.0)}, // underflow to a zero of the text's sign
        {"2.4703282292062328e-324", BitsOf(std::numeric_limits<double>::denorm_min())},
        {"2.4703282292062327e-324", BitsOf(0.0)}, // just below half the smallest value
        {"2.2250738585072011e-308", 0x000FFFFFFFFFFFFF},
        {"1.7976931348623158e308", BitsOf(DBL_MAX)},
        {"1.7976931348623159e308", BitsOf(kInf)}, // past half an ulp above DBL_MAX
        {"1e99999999999999999999", BitsOf(kInf)},
        {"0e99999999999999999999", BitsOf(0.0)},
        {"9007199254740993", BitsOf(9007199254740992.0)}, // a tie: to even
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(BitsOf(String(row.text).Str_atod()), row.bits);
    }
    // Very long digit runs are read exactly.
    EXPECT_EQ(String(("1" + std::string(400, '0')).c_str()).Str_atod(), kInf);
    EXPECT_EQ(BitsOf(String(("0." + std::string(400, '0') + "1").c_str()).Str_atod()), BitsOf(0.0));
    EXPECT_EQ(String(("0." + std::string(5000, '3')).c_str()).Str_atod(), 1.0 / 3.0);
    EXPECT_EQ(String().Str_atod(), 0.0);
    EXPECT_EQ(String('\0').Str_atod(), 0.0);
}

TEST_F(StringConversion, FloatsFromText) {
    const struct {
        const char* text;
        std::uint32_t bits;
    } rows[] = {
        {"3.4028235e38", BitsOf(FLT_MAX)},
        {"3.4028235677973366e38", BitsOf(FLT_MAX)}, // just below the halfway point
        {"3.4028236e38", BitsOf(std::numeric_limits<float>::infinity())},
        {"1e-45", 0x00000001},
        {"7e-46", 0x00000000},
        {"-7e-46", 0x80000000},
        {"0x1.fffffep127", BitsOf(FLT_MAX)},
        // Just above the halfway point between 1 and the next float: read as a double
        // first, it would become the halfway value itself and then round to even (to 1).
        {"1.00000005960464477539062501", 0x3F800001},
        {"1.00000005960464477539062499", 0x3F800000},
        {"nan(0x10)", 0x7FC00010},
        {"nan(0xFFFFFF)", 0x7FFFFFFF}, // only the bits below the quiet bit
        {"-nan(snan)", 0xFFA00000},
        {"16777217", 0x4B800000}, // a tie: to even (16777216)
        // Short texts whose nearest double is exactly halfway between two floats, though
        // the texts are not: rounded to a double first and then to a float, they would
        // become the tie and round to even, the wrong way half the time.
        {"0.4739369601011276", 0x3EF2A7DD},
        {"-6.790677785873413", 0xC0D94D3B},
        {"9.999999e-23", 0x1AF1C8FF}, // the smallest power the short reading takes
        {"1e-23", 0x19416D9A},        // and one past it
        {"8388608.5", 0x4B000000},    // a true tie: to even, down
        {"8388609.5", 0x4B000002},    // and up
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(BitsOf(String(row.text).Str_atof()), row.bits);
    }
}

// Decimal only, as the C runtime's strtol family reads in the "C" locale. The 64-bit
// readers clamp (signed) or negate modulo 2^64 (unsigned); the 32-bit ones read as a runtime
// with a 32-bit long does on every platform: Str_atoi and Str_atol clamp, and Str_atoul
// clamps a magnitude above 2^32 - 1 and otherwise negates modulo 2^32.
TEST_F(StringConversion, Integers) {
    const struct {
        const char* text;
        int atoi;
        unsigned long long atoul;
        long long atoll;
        unsigned long long atoull;
    } rows[] = {
        {"2147483647", INT32_MAX, 2147483647u, 2147483647, 2147483647u},
        {"2147483648", INT32_MAX, 2147483648u, 2147483648, 2147483648u},
        {"-2147483649", INT32_MIN, 2147483647u, -2147483649, 18446744071562067967u},
        {"4294967296", INT32_MAX, 4294967295u, 4294967296, 4294967296u},
        {"-4294967295", INT32_MIN, 1u, -4294967295, 18446744069414584321u},
        {"-4294967296", INT32_MIN, 4294967295u, -4294967296, 18446744069414584320u},
        {"-1", -1, 4294967295u, -1, UINT64_MAX},
        {"9223372036854775808", INT32_MAX, 4294967295u, INT64_MAX, 9223372036854775808u},
        {"-9223372036854775809", INT32_MIN, 4294967295u, INT64_MIN, 9223372036854775807u},
        {"18446744073709551616", INT32_MAX, 4294967295u, INT64_MAX, UINT64_MAX},
        {"-18446744073709551615", INT32_MIN, 4294967295u, INT64_MIN, 1u},
        {"-18446744073709551616", INT32_MIN, 4294967295u, INT64_MIN, UINT64_MAX},
        {" -12x", -12, 4294967284u, -12, 18446744073709551604u},
        {"\t-17 18", -17, 4294967279u, -17, 18446744073709551599u},
        {"\v+42", 42, 42u, 42, 42u},
        {"000000000000000000000000000012", 12, 12u, 12, 12u},
        {"12.9", 12, 12u, 12, 12u},
        {"0x10", 0, 0u, 0, 0u},
        {"- 5", 0, 0u, 0, 0u},
        {"+-5", 0, 0u, 0, 0u},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const String s(row.text);
        EXPECT_EQ(s.Str_atoi(), row.atoi);
        EXPECT_EQ(s.Str_atol(), static_cast<long>(row.atoi));
        EXPECT_EQ(static_cast<unsigned long long>(s.Str_atoul()), row.atoul);
        EXPECT_EQ(s.Str_atoll(), row.atoll);
        EXPECT_EQ(s.Str_atoull(), row.atoull);
    }
    EXPECT_EQ(String().Str_atoi(), 0);
}

// Hostile texts: long runs, high bytes, NUL-embedded buffers. Nothing may read past the
// text, and the results follow the same rules.
TEST_F(StringConversion, HostileTexts) {
    const std::string manyDigits(100000, '9');
    const String digits(manyDigits);
    EXPECT_EQ(digits.Str_atoi(), INT32_MAX);
    EXPECT_EQ(digits.Str_atoull(), UINT64_MAX);
    EXPECT_EQ(digits.Str_atod(), kInf);
    EXPECT_EQ(String(("-" + manyDigits).c_str()).Str_atoll(), INT64_MIN);
    const std::string manySpaces(100000, ' ');
    EXPECT_EQ(String((manySpaces + "5").c_str()).Str_atoi(), 5);
    EXPECT_EQ(String(std::string("\xFF\x80") + "5").Str_atoi(), 0);
    EXPECT_EQ(String(std::string("\xA0") + "5").Str_atod(), 0.0); // no-break space: not blank
    const char withNul[] = {'4', '\0', '2'};
    EXPECT_EQ(String(withNul, 3).Str_atoi(), 4);
    EXPECT_EQ(BitsOf(String(("nan(" + std::string(100000, 'a') + ")").c_str()).Str_atod()),
              0x7FF8000000000000u);
    EXPECT_EQ(String(("1e" + std::string(100000, '9')).c_str()).Str_atod(), kInf);
    EXPECT_EQ(String(("0x1p-" + std::string(100000, '9')).c_str()).Str_atod(), 0.0);
}

/// A locale whose decimal point is a comma, or null when the system has none.
const char* FindCommaLocale() {
    static const char* const candidates[] = {
        "de_DE.UTF-8", "de_DE.utf8",          "fr_FR.UTF-8",        "fr_FR.utf8", "de_DE",
        "fr_FR",       "German_Germany.1252", "French_France.1252", "de-DE",      "fr-FR",
    };
    for (const char* name : candidates) {
        if (std::setlocale(LC_ALL, name) != nullptr) {
            const bool comma = std::strcmp(std::localeconv()->decimal_point, ",") == 0;
            std::setlocale(LC_ALL, "C");
            if (comma)
                return name;
        }
    }
    return nullptr;
}

/// Restores the "C" locale when a test ends, however it ends.
struct LocaleGuard {
    ~LocaleGuard() { std::setlocale(LC_ALL, "C"); }
};

// A host that switches the process to a comma locale still gets "0.5" and reads "0.5", in
// numbers and in the text forms of times.
TEST_F(StringConversion, NumberTextsIgnoreTheLocale) {
    const char* name = FindCommaLocale();
    if (name == nullptr)
        GTEST_SKIP() << "no locale with a comma decimal point is installed";
    LocaleGuard guard;
    ASSERT_NE(std::setlocale(LC_ALL, name), nullptr);
    char probe[32];
    std::snprintf(probe, sizeof probe, "%.1f", 0.5);
    ASSERT_STREQ(probe, "0,5") << "the locale is not in effect";

    EXPECT_EQ(TextOf(String(0.5)), "0.5");
    EXPECT_EQ(TextOf(String(0.1f)), "0.100000001");
    EXPECT_EQ(TextOf(String(1.25, 2)), "1.25");
    EXPECT_EQ(TextOf(String(1234567)), "1234567");
    EXPECT_EQ(String("0.5").Str_atod(), 0.5);
    EXPECT_EQ(String("0.5").Str_atof(), 0.5f);
    EXPECT_EQ(String("0,5").Str_atod(), 0.0);
    EXPECT_EQ(TextOf(Time(68850LL).ToString(30, SMPTE, false)), "00:00:15.3");
    EXPECT_EQ(TextOf(Time(8438LL).ToString(24, FRAMES, false)), "1.5");
    EXPECT_EQ(String("1:30.5").ToTime(30, SMPTE, false).GetTicks(), 272250);
}

#if defined(__GLIBC__)
// glibc's printf is correctly rounded and, in the "C" locale, writes exactly these forms:
// compare every finite value (the special spellings are the suite's own).
TEST_F(StringNumberText, MatchesTheCRuntimeFormatter) {
    std::mt19937_64 random(7);
    char expected[512];
    for (int i = 0; i < 100000; ++i) {
        const std::uint64_t bits = random();
        const double d = DoubleFromBits(bits);
        const float f = FloatFromBits(static_cast<std::uint32_t>(bits));
        const int decimals = static_cast<int>(random() % 21) - 1;
        if (d - d == 0) {
            std::snprintf(expected, sizeof expected, "%.17g", d);
            ASSERT_EQ(TextOf(String(d)), expected);
        }
        if (f - f == 0) {
            std::snprintf(expected, sizeof expected, "%.9g", static_cast<double>(f));
            ASSERT_EQ(TextOf(String(f)), expected);
        }
        // Fixed forms of values of ordinary size (random bit patterns are mostly huge or
        // tiny); the trailing-zero rule applied to the runtime's text by hand.
        const double ordinary = std::ldexp(static_cast<double>(random() >> 11),
                                           -53 + static_cast<int>(random() % 40) - 10);
        for (const bool asFloat : {false, true}) {
            const int kept = decimals < 0 ? 6 : std::min(decimals, asFloat ? 9 : 17);
            const double value = asFloat ? static_cast<float>(ordinary) : ordinary;
            std::string text(expected, static_cast<std::size_t>(std::snprintf(
                                           expected, sizeof expected, "%.*f", kept, value)));
            if (text.find('.') != std::string::npos) {
                text.erase(text.find_last_not_of('0') + 1);
                if (text.back() == '.')
                    text.pop_back();
            }
            const String made = asFloat ? String(static_cast<float>(ordinary), decimals)
                                        : String(ordinary, decimals);
            ASSERT_EQ(TextOf(made), text) << "decimals " << decimals;
        }
    }
}

// glibc's conversions are the reference for every rule above: compare random texts built
// from the characters that matter (digits, signs, points, exponents, hex, inf/nan letters,
// white space) and random values written in several forms.
TEST_F(StringConversion, MatchesTheCRuntimeConversions) {
    std::setlocale(LC_ALL, "C");
    std::mt19937_64 random(99);
    const std::string alphabet = "0123456789000999+-. \t.eEeExXpPabcdfinINFtyAN()_5";
    char text[96];
    for (int i = 0; i < 150000; ++i) {
        const int kind = static_cast<int>(random() % 5);
        if (kind == 0) {
            const std::size_t length = random() % 24;
            for (std::size_t k = 0; k < length; ++k)
                text[k] = alphabet[random() % alphabet.size()];
            text[length] = '\0';
        } else if (kind == 4) {
            // Short decimals, the float texts of the suite's files and their neighbours:
            // a float, or a point halfway between two floats, to 1..17 digits.
            const float value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
            const double halfway =
                (static_cast<double>(value) +
                 static_cast<double>(std::nextafter(value, std::numeric_limits<float>::max()))) /
                2;
            std::snprintf(text, sizeof text, "%.*g", 1 + static_cast<int>(random() % 17),
                          random() % 2 == 0 ? static_cast<double>(value) : halfway);
        } else {
            const double value = DoubleFromBits(random());
            const char* formats[] = {"%.17g", "%.25e", "%a", "%.3g"};
            std::snprintf(text, sizeof text, formats[random() % 4],
                          kind == 1 ? value : value * 1e-10);
        }
        SCOPED_TRACE(text);
        const String s(text);
        const double d = std::strtod(text, nullptr);
        const float f = std::strtof(text, nullptr);
        ASSERT_EQ(BitsOf(s.Str_atod()), BitsOf(d)); // NaN payloads included
        ASSERT_EQ(BitsOf(s.Str_atof()), BitsOf(f));
        ASSERT_EQ(s.Str_atoll(), std::strtoll(text, nullptr, 10));
        ASSERT_EQ(s.Str_atoull(), std::strtoull(text, nullptr, 10));
        // A 32-bit strtol clamps exactly where clamping the 64-bit result to 32 bits does.
        const long long wide = std::strtoll(text, nullptr, 10);
        ASSERT_EQ(s.Str_atoi(),
                  static_cast<int>(std::clamp<long long>(wide, INT32_MIN, INT32_MAX)));
    }
}
#endif

} // namespace
