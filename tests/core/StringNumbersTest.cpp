// StringNumbersTest.cpp - the text forms of numbers: integers, "%.9g" floats, "%.17g"
// doubles, the fixed-decimals forms, infinities and every NaN kind, vectors and colours, and
// round trips back through Str_atof / Str_atod.
//
// The expected texts are those of a correctly rounded printf in the "C" locale; they were
// worked out from the exact binary values (halfway cases use dyadic values whose decimal
// expansion ends in a 5 just past the last kept digit, e.g. 2^-25 = 2.98023223876953125e-8).

#include "StringTestSupport.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using StringNumberText = StringPoolTest;

/// A NaN's sign and quiet bits, its exponent bits (all ones for every NaN) and nothing of
/// its payload.
std::uint64_t NaNKind(double value) {
    return BitsOf(value) & 0xFFF8000000000000;
}
std::uint32_t NaNKind(float value) {
    return BitsOf(value) & 0xFFC00000;
}

// Integers in full without grouping; "%.9g" for floats, "%.17g" for doubles (where the form
// turns scientific, ties, the zeros of a fraction kept before an exponent, subnormals and
// the extremes); vectors and colours as their floats joined by blanks.
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
        {String(0.0001f), "9.99999975e-05"}, // exponent -5: scientific
        {String(0.001f), "0.00100000005"},   // exponent -3: fixed
        {String(1e8f), "100000000"},         // exponent 8: still fixed
        {String(1e9f), "1e+09"},             // exponent 9: scientific
        {String(1.5e10f), "1.50000005e+10"},
        {String(1e-10f), "1.00000001e-10"},
        {String(0x1p-13f), "0.000122070312"}, // 0.0001220703125: a tie, kept even
        {String(0x3p-13f), "0.000366210938"}, // 0.0003662109375: a tie, rounded up to even
        {String(-FLT_MAX), "-3.40282347e+38"},
        {String(std::numeric_limits<float>::denorm_min()), "1.40129846e-45"},
        {String(0.1), "0.10000000000000001"},
        {String(-0.0), "-0"},
        {String(1e-5), "1.0000000000000001e-05"},
        {String(1e-4), "0.0001"},
        {String(1e16), "10000000000000000"}, // exponent 16: still fixed
        {String(1e17), "1e+17"},             // exponent 17: scientific
        {String(1e23), "9.9999999999999992e+22"},
        {String(0x1p-25), "2.9802322387695312e-08"}, // ...3125 cut at a tie: kept even
        {String(0x3p-25), "8.9406967163085938e-08"}, // ...9375: a tie, rounded up to even
        {String(-DBL_MAX), "-1.7976931348623157e+308"},
        {String(0x1p-1050), "8.289046058458095e-317"}, // subnormal; its 17th digit, 0, dropped
        {String(std::numeric_limits<double>::denorm_min()), "4.9406564584124654e-324"},
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
        {String(3.5, 0), "4"},
        {String(-0.001, 2), "-0"},                // "-0.00" loses its zeros and its point
        {String(0.1f, 12), "0.100000001"},        // floats stop at 9 decimals
        {String(0.1, 20), "0.10000000000000001"}, // doubles at 17
        {String(1.0 / 3.0, -1), "0.333333"},      // a negative count means 6
        {String(1e-10f, 9), "0"},
        {String(2.0005f, 3), "2"}, // 2.0004999... rounds to 2.000
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
        {0x7FF0000000000000, 0x7F800000, "inf"},
        {0xFFF0000000000000, 0xFF800000, "-inf"},
        {0x7FF8000000000000, 0x7FC00000, "nan"},       // quiet
        {0x7FFFFFFFFFFFFFFF, 0x7FFFFFFF, "nan"},       // quiet with a payload
        {0xFFF8000000000001, 0xFFC00001, "-nan"},      // quiet, negative, with a payload
        {0xFFFC000000000000, 0xFFE00000, "-nan"},      // more than the top bit set
        {0xFFF8000000000000, 0xFFC00000, "-nan(ind)"}, // the default indeterminate NaN
        {0x7FF0000000000001, 0x7F800001, "nan(snan)"}, // signalling
        {0x7FF4000000000000, 0x7FA00000, "nan(snan)"},
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
#endif

} // namespace
