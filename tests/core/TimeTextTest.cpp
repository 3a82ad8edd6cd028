// Tests of the text forms of times: Time::ToString, String::ToTime and FormatTime.
//
// Expected texts are worked out from the rules: seconds become a float, values shown with
// decimals are rounded to two of them (nudged up by 2^-23), and the fields are laid out as
// the formats "%02d:%02d:%02.4g" (or "%03.5g" from 100 fps on) and "%g" would.
#include "fileio/core/Time.h"

#include "StringTestSupport.h"
#include "core/TimeTextFields.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>

namespace {

// SMPTE: minutes not wrapped into hours; the frame field at least two characters wide (so
// fractions below 10 frames have no leading zero), three from 100 fps on. FRAMES and CELLS:
// "%g", six significant digits. Values with decimals are rounded to hundredths, nudged up.
// Any other unit gives the null string.
TEST(TimeText, ToStringFollowsTheUnitsFormats) {
    const struct {
        long long ticks;
        double fps;
        int unit;
        const char* text;
    } cases[] = {
        {68850, 30, SMPTE, "00:00:15.3"}, // 0.51 s: 15.3 frames
        {-202500, 30, SMPTE, "-00:01:15"},
        {-1, 30, SMPTE, "-00:00:00"},     // a sliver below zero keeps its sign
        {1406, 24, SMPTE, "00:00:0.25"},  // 0.24996 frames
        {17469, 25, SMPTE, "00:00:3.24"}, // 3.2349999994 frames, nudged up
        {202500, 120, SMPTE, "00:01:060"},
        {0, 99.99, SMPTE, "00:00:00"},
        // The seconds of the largest tick count, 2^63 / 135000 = 68321274347072.4, become
        // the nearest float, 68321273708544 (floats lie 2^22 apart there): that is
        // 1138687895142 minutes and 24 seconds, with no fraction left for frames.
        {Time::MaxTicks, 30, SMPTE, "1138687895142:24:00"},
        {-67500, 24, FRAMES, "-12"},
        // 27 ticks are exactly 0.005 frames at 25 fps; the float seconds fall a hair short
        // and the 2^-23 nudge still rounds the half hundredth up.
        {27, 25, FRAMES, "0.01"},
        {694440000, 24, FRAMES, "123456"},
        {6944439375, 24, FRAMES, "1.23457e+06"},
        {0, 24, CELLS, "1"},
        {-67500, 24, CELLS, "-11"},
        {135000, 30, 3, "<null>"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message()
                     << c.ticks << " ticks at " << c.fps << " fps, unit " << c.unit);
        EXPECT_EQ(TextOf(Time(c.ticks).ToString(c.fps, static_cast<TimeUnit>(c.unit), false)),
                  c.text);
    }
}

#if defined(__GLIBC__)
// The GNU C library's printf in the C locale is the reference for "%0W.Pg".
TEST(TimeText, FrameFieldFormatMatchesPrintf) {
    std::mt19937_64 random(20240603);
    std::uniform_real_distribution<double> mantissa(-10.0, 10.0);
    std::uniform_int_distribution<int> exponent(-12, 12);
    const struct { int width, precision; } shapes[] = {{2, 4}, {3, 5}, {0, 6}, {3, 1}, {1, 3}};
    for (int i = 0; i < 20000; ++i) {
        double value = mantissa(random) * std::pow(10.0, exponent(random));
        if (i % 5 == 0)
            value = std::round(value * 100) / 100; // two decimals, as the frame fields hold
        if (i % 7 == 0)
            value = std::trunc(value);
        for (const auto& shape : shapes) {
            char expected[64];
            std::snprintf(expected, sizeof expected, "%0*.*g", shape.width, shape.precision, value);
            char actual[fileio::detail::MaxPaddedGeneralLength + 1];
            char* end =
                fileio::detail::FormatPaddedGeneral(actual, value, shape.precision, shape.width);
            *end = '\0';
            ASSERT_STREQ(actual, expected)
                << "%0" << shape.width << "." << shape.precision << "g of " << value;
        }
    }
}
#endif

// Fields are read from the right (frames, seconds, minutes; an earlier one falls off), each
// a float as strtof reads it: blanks before it skipped, junk after it ignored, an empty
// field 0, no decimal comma. In SMPTE digits typed without separators carry: frames of
// 100 or more (1000 from 100 fps on) into seconds, seconds of 100 or more into minutes.
// A leading "-" negates the whole time; cells count from 1. Values
// outside the tick range give MIN.
TEST(TimeText, ToTimeReadsFieldsFromTheRight) {
    const struct {
        const char* text;
        int fps;
        int unit;
        long long ticks;
    } cases[] = {
        {"00:00:15.3", 30, SMPTE, 68850},
        {"99:00", 30, SMPTE, 13365000},   // 99 s: not carried into minutes
        {"1:2:3:4", 30, SMPTE, 16623000}, // the earliest field falls off
        {"1::2", 30, SMPTE, 8109000},
        {"1:50", 100, SMPTE, 202500}, // 1 s + 50 / 100 s
        // 218714062.5 + 4.5e-13 exactly: rounded once it is a tie (to even); rounded twice,
        // as a runtime's fma without the fused instruction may, it goes up.
        {"27:00:05", 48, SMPTE, 218714062},
        {"1.5", 24, FRAMES, 8438},    // 8437.5 ticks: a tie, to even
        {"1:30", 30, FRAMES, 270000}, // fields work in every unit
        {"250", 30, 5, 1125000},      // other units read as frames, without carry
        {"99", 30, SMPTE, 445500},
        {"100", 30, SMPTE, 135000},
        {"120000", 30, SMPTE, 97200000},   // 1200 s carried on: 12 min
        {"1:100:00", 30, SMPTE, 16200000}, // 1 + 1 s become 2 min
        {"999", 100, SMPTE, 1348650},      // 999 frames = 9.99 s
        {"1000", 100, SMPTE, 135000},
        {"-1:15", 30, SMPTE, -202500},
        {" -1:15", 30, SMPTE, -67500}, // here the sign belongs to the seconds
        {"--5", 24, FRAMES, 28125},    // the second "-" belongs to the number
        {"-11", 24, CELLS, -56250},    // -(11 - 1) frames
        {"", 24, CELLS, -5625},        // an empty (or null) text is cell 0
        {"1,5", 24, FRAMES, 5625},
        {"-1e30", 24, FRAMES, Time::MinTicks},
        {"12", 0, FRAMES, Time::MinTicks}, // no rate: 12 / 0 frames
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message()
                     << "\"" << c.text << "\" at " << c.fps << " fps, unit " << c.unit);
        EXPECT_EQ(String(c.text).ToTime(c.fps, static_cast<TimeUnit>(c.unit), false).GetTicks(),
                  c.ticks);
    }
    EXPECT_EQ(String("12\0:5", 5).ToTime(24, SMPTE, false).GetTicks(), 67500);
}

TEST(TimeText, FormatTimeShowsHoursMinutesAndSeconds) {
    const struct {
        int seconds;
        bool showZero;
        const char* text;
    } cases[] = {
        {0, false, "- - : - - : - -"},    {0, true, " 0:00:00"},
        {3725, false, " 1:02:05"},        {359999, false, "99:59:59"},
        {360000, false, "100:00:00"}, // hours are not limited
        {INT_MAX, false, "596523:14:07"}, {INT_MIN, true, "- - : - - : - -"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.seconds << (c.showZero ? ", show zero" : ""));
        EXPECT_EQ(TextOf(FormatTime(c.seconds, c.showZero)), c.text);
    }
}

} // namespace
