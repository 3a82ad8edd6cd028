// Numbers and their texts, both directions checked against the C runtime.

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
#include <type_traits>

namespace {

template <typename T> auto BitsOf(T value) {
    return std::bit_cast<std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>>(value);
}

using StringNumbers = StringPoolTest;

// Integers in full without grouping, at the edges of every width; the float forms the
// runtime comparison below cannot check (it runs on glibc only): vectors and colours as
// their floats joined by blanks.
TEST_F(StringNumbers, ExactTexts) {
    const struct {
        String value;
        const char* expected;
    } rows[] = {
        {String(static_cast<short>(-32768)), "-32768"},
        {String(static_cast<unsigned short>(65535)), "65535"},
        {String(INT32_MIN), "-2147483648"},
        {String(4294967295u), "4294967295"},
        {String(static_cast<long long>(INT64_MIN)), "-9223372036854775808"},
        {String(static_cast<unsigned long long>(UINT64_MAX)), "18446744073709551615"},
        {String(std::numeric_limits<long>::min()),
         sizeof(long) == 8 ? "-9223372036854775808" : "-2147483648"},
        {String(Vector2{1.0f, 0.5f}), "1 0.5"},
        {String(Vector{0.0f, 1.0f, 2.5f}), "0 1 2.5"},
        {String(RGBFloat{0.1f, -0.0f, 1e10f}), "0.100000001 -0 1e+10"},
        {String(RotateEuler{90.0f, -45.0f, 180.0f}), "90 -45 180"},
        {String(Vector4{0.0f, 0.0f, 0.0f, 1.0f}), "0 0 0 1"},
        {String(Quaternion{-FLT_MAX, FLT_MAX, -FLT_MIN, 1.5e-7f}),
         "-3.40282347e+38 3.40282347e+38 -1.17549435e-38 1.50000005e-07"},
        {String(RGBAFloat{1.0f, 0.25f, 0.125f, 0.0625f}), "1 0.25 0.125 0.0625"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(TextOf(row.value), row.expected);
}

TEST_F(StringNumbers, InfinityAndEveryNaNKind) {
    const struct {
        std::uint64_t doubleBits;
        std::uint32_t floatBits;
        const char* expected;
    } rows[] = {
        {0x7FF0000000000000, 0x7F800000, "inf"},        {0xFFF0000000000000, 0xFF800000, "-inf"},
        {0x7FF8000000000000, 0x7FC00000, "nan"},       // quiet
        {0xFFF8000000000001, 0xFFC00001, "-nan"},      // quiet, negative, with a payload
        {0xFFF8000000000000, 0xFFC00000, "-nan(ind)"}, // the default indeterminate NaN
        {0x7FF0000000000001, 0x7F800001, "nan(snan)"}, // signalling
        {0xFFF7FFFFFFFFFFFF, 0xFFBFFFFF, "-nan(snan)"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(TextOf(String(std::bit_cast<double>(row.doubleBits))), row.expected);
        EXPECT_EQ(TextOf(String(std::bit_cast<float>(row.floatBits))), row.expected);
    }
}

// What the C runtime's readers do not spell out the same way: "snan" names a signalling
// NaN (so the text of a signalling NaN reads back signalling, its payload lost); the 32-bit
// unsigned reader behaves as under a 32-bit long on every platform (a magnitude above 2^32 - 1
// clamps, a smaller one is negated modulo 2^32).
TEST_F(StringNumbers, TheSuitesOwnReadings) {
    EXPECT_EQ(BitsOf(String("nan(snan)").Str_atod()), 0x7FF4000000000000u);
    EXPECT_EQ(BitsOf(String("-nan(snan)").Str_atof()), 0xFFA00000u);
    const struct {
        const char* text;
        unsigned long long atoul;
    } rows[] = {{"4294967295", 4294967295u}, {"4294967296", 4294967295u},  {"-1", 4294967295u},
                {"-4294967295", 1u},         {"-4294967296", 4294967295u}, {" -12x", 4294967284u}};
    for (const auto& row : rows)
        EXPECT_EQ(static_cast<unsigned long long>(String(row.text).Str_atoul()), row.atoul)
            << row.text;
}

struct LocaleGuard {
    ~LocaleGuard() { std::setlocale(LC_ALL, "C"); }
};

bool SwitchToCommaLocale() {
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "fr_FR", "de-DE", "fr-FR"}) {
        if (std::setlocale(LC_ALL, name) != nullptr &&
            std::strcmp(std::localeconv()->decimal_point, ",") == 0)
            return true;
    }
    return false;
}

// A host that switches the process to a comma locale still gets "0.5" and reads "0.5", in
// numbers and in the text form of times (which reads its fields as Str_atof does).
TEST_F(StringNumbers, NumberTextsIgnoreTheLocale) {
    LocaleGuard guard;
    if (!SwitchToCommaLocale())
        GTEST_SKIP() << "no locale with a comma decimal point is installed";
    EXPECT_EQ(TextOf(String(0.5)), "0.5");
    EXPECT_EQ(TextOf(String(1.25, 2)), "1.25");
    EXPECT_EQ(String("0.5").Str_atod(), 0.5);
    EXPECT_EQ(String("0.5").Str_atof(), 0.5f);
    EXPECT_EQ(TextOf(Time(68850LL).ToString(30, SMPTE, false)), "00:00:15.3");
}

#if defined(__GLIBC__)
// glibc's printf is correctly rounded: compare every finite value, first those a random
// draw seldom meets (signed zeros, ties, a subnormal whose 17th digit is 0, DBL_MAX in full).
TEST_F(StringNumbers, MatchesTheCRuntimeFormatter) {
    const double seeds[] = {-0.0,  0x1p-25, 0x1p-1050, 0x1p-13, 0.125,   0.375,    2.5,
                            -7.25, -0.001,  2.0005,    1e20,    DBL_MAX, -DBL_MAX, 1.0 / 3};
    std::mt19937_64 random(7);
    char expected[512];
    for (std::size_t i = 0; i < 100000; ++i) {
        const std::uint64_t bits = random();
        const bool seeded = i < std::size(seeds);
        const double d = seeded ? seeds[i] : std::bit_cast<double>(bits);
        const float f =
            seeded ? static_cast<float>(d) : std::bit_cast<float>(static_cast<std::uint32_t>(bits));
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
        // tiny), of either sign; the trailing-zero rule applied to the runtime's text by hand.
        const double ordinary = seeded ? d
                                       : (random() % 2 == 0 ? 1 : -1) *
                                             std::ldexp(static_cast<double>(random() >> 11),
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

// glibc's conversions are the reference for every reader: first texts at the edges of each
// rule, then random texts of the characters that matter and random values in several forms.
TEST_F(StringNumbers, MatchesTheCRuntimeConversions) {
    std::setlocale(LC_ALL, "C");
    const std::string seeds[] = {
        " \t\n\v\f\r12", "12abc", "1e", "+1E5", ".5", "1,5", "-.", "+-1", "- 1", "-0", "0x1.8p3",
        "0x.8", "0x1p", "0x", "-0x", "0x1p-1074", "0x1p-1075", "0x1.8p-1075", "0x1p1024",
        "-Infinity", "INFINITE", "nan", "-NaN", "nan(123)", "nan(0x10)", "nan(010)", "nan(08)",
        "nan(abc", "nan(0xFFFFFFFFFFFFFFFFFFFF)", "-nan(ind)", "nan(0xFFFFFF)", "1e400", "-1e-400",
        "-7e-46", "1e-45", "2.4703282292062328e-324", "2.4703282292062327e-324",
        "2.2250738585072011e-308", "1.7976931348623158e308", "1.7976931348623159e308",
        "1e99999999999999999999", "0e99999999999999999999", "9007199254740993",
        "3.4028235677973366e38", "3.4028236e38", "0x1.fffffep127",
        // Just either side of the halfway point between 1 and the next float, and short
        // texts whose nearest double is the tie between two floats though they are not.
        "1.00000005960464477539062501", "1.00000005960464477539062499", "0.4739369601011276",
        "-6.790677785873413", "9.999999e-23", "1e-23", "8388608.5", "8388609.5", "16777217",
        "2147483647", "2147483648", "-2147483649", "4294967296", "-4294967296",
        "9223372036854775808", "-9223372036854775809", "18446744073709551616",
        "-18446744073709551615", "-18446744073709551616", "\t-17 18", "000000000000000012", "12.9",
        "\377\2005", "\2405", // bytes above 127 before a digit
        std::string(100000, '9'), "-" + std::string(400, '9'), std::string(100000, ' ') + "5",
        "0." + std::string(400, '0') + "1", "0." + std::string(5000, '3'),
        "nan(" + std::string(100000, 'a') + ")", "1e" + std::string(100000, '9'),
        "0x1p-" + std::string(100000, '9')};
    std::mt19937_64 random(99);
    const std::string alphabet = "0123456789000999+-. \t.eEeExXpPabcdfinINFtyAN()_5";
    char buffer[96];
    for (std::size_t i = 0; i < 150000; ++i) {
        const int kind = static_cast<int>(random() % 5);
        if (kind == 0) {
            const std::size_t length = random() % 24;
            for (std::size_t k = 0; k < length; ++k)
                buffer[k] = alphabet[random() % alphabet.size()];
            buffer[length] = '\0';
        } else if (kind == 4) {
            // Short decimals, the float texts of the suite's files and their neighbours:
            // a float, or a point halfway between two floats, to 1..17 digits.
            const float value = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
            const double halfway =
                (static_cast<double>(value) + std::nextafter(value, FLT_MAX)) / 2;
            std::snprintf(buffer, sizeof buffer, "%.*g", 1 + static_cast<int>(random() % 17),
                          random() % 2 == 0 ? static_cast<double>(value) : halfway);
        } else {
            const double value = std::bit_cast<double>(random());
            const char* formats[] = {"%.17g", "%.25e", "%a", "%.3g"};
            std::snprintf(buffer, sizeof buffer, formats[random() % 4],
                          kind == 1 ? value : value * 1e-10);
        }
        const char* text = i < std::size(seeds) ? seeds[i].c_str() : buffer;
        SCOPED_TRACE(std::string(text).substr(0, 60));
        const String s(text);
        ASSERT_EQ(BitsOf(s.Str_atod()), BitsOf(std::strtod(text, nullptr))); // NaN payloads too
        ASSERT_EQ(BitsOf(s.Str_atof()), BitsOf(std::strtof(text, nullptr)));
        ASSERT_EQ(s.Str_atoll(), std::strtoll(text, nullptr, 10));
        ASSERT_EQ(s.Str_atoull(), std::strtoull(text, nullptr, 10));
        // A 32-bit strtol clamps exactly where clamping the 64-bit result to 32 bits does.
        const long long wide = std::strtoll(text, nullptr, 10);
        ASSERT_EQ(s.Str_atoi(),
                  static_cast<int>(std::clamp<long long>(wide, INT32_MIN, INT32_MAX)));
        ASSERT_EQ(s.Str_atol(), static_cast<long>(s.Str_atoi()));
    }
}
#endif

} // namespace
