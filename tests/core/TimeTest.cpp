// Time: expectations come from the tick rate (135000 per second) and the rounding rules,
// worked out by hand or by an independent integer computation in the test.
#include "fileio/core/Time.h"

#include "StringTestSupport.h"
#include "core/Rounding.h"
#include "core/TimeTextFields.h"

#include <gtest/gtest.h>

#include <bit>
#include <cfenv>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

// The time arithmetic relies on floating point without excess precision (x86-64 SSE).
static_assert(FLT_EVAL_METHOD == 0,
              "float and double expressions must be evaluated in their own type");

namespace {

constexpr long long kMax = std::numeric_limits<long long>::max();
constexpr long long kMin = std::numeric_limits<long long>::min();
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

// Ticks of frame n at a rate of numerator/denominator fps: n x 135000 x denominator /
// numerator, rounded to nearest with ties to even, in exact integer arithmetic.
long long ExactFrameTicks(long long n, long long numerator, long long denominator) {
    const long long product = n * 135000 * denominator;
    long long quotient = product / numerator;
    long long remainder = product % numerator;
    if (remainder < 0) {
        remainder += numerator;
        --quotient;
    }
    if (2 * remainder > numerator || (2 * remainder == numerator && (quotient & 1) != 0))
        ++quotient;
    return quotient;
}

// The header's integer rules are compile-time facts: whole seconds as a 64-bit product,
// ticks as given, the special values, wrapping arithmetic, integer division and remainder.
constexpr Time Divided(long long a, long long b) {
    Time t(a);
    t /= Time(b);
    return t;
}
static_assert(Time(2).GetTicks() == 270000 && Time(-3).GetTicks() == -405000);
static_assert(Time(INT_MAX).GetTicks() == 2147483647LL * 135000 && Time(2LL).GetTicks() == 2);
static_assert(Time(Time::MINSTEP).GetTicks() == 1 && Time(Time::MAX).GetTicks() == kMax);
static_assert(Time(Time::TAGGED).GetTicks() == -1 && Time(Time::MIN).GetTicks() == kMin);
static_assert(Time(Time::TAGGED).IsMinStep() && !Time(Time::MINSTEP).IsMinStep());
static_assert(Time(-5LL).GetAbsoluteValue() == Time(5LL));
static_assert(Time(Time::MIN).GetAbsoluteValue().IsMin());
static_assert((Time(Time::MAX) + Time(1LL)).IsMin() && (Time(Time::MIN) - Time(1LL)).IsMax());
static_assert((-Time(Time::MIN)).IsMin() && (Time(Time::MAX) * Time(2LL)).GetTicks() == -2);
static_assert(Divided(7, 3).GetTicks() == 2 && Divided(-7, 3).GetTicks() == -2);
static_assert(Divided(7, -3).GetTicks() == -2 && Divided(100, 0).GetTicks() == 100);
static_assert(Divided(kMin, -1).IsMin() && Divided(kMax, kMax).GetTicks() == 1);
static_assert((Time(-7LL) % Time(3LL)).GetTicks() == -1 &&
              (Time(7LL) % Time(-3LL)).GetTicks() == 1);
static_assert((Time(100LL) % Time(0LL)).GetTicks() == 100 && (Time(kMin) % Time(-1LL)).IsZero());
static_assert(Time(Time::TAGGED) < Time() && Time(1) != Time(1LL) && Time(1) == Time(135000LL));
static_assert(sizeof(TimeRange) == 16);
static_assert([] {
    Time t(10LL);
    t += Time(5LL);
    t -= Time(20LL);
    t *= Time(-3LL);
    t.AddTicks(-16);
    t.Invert();
    return t.GetTicks();
}() == 1);

// Seconds to ticks: llrint of the product, ties to even, 0 for 0, -0 and NaN; beyond the
// range the processor's indefinite value; a float's product in single precision. Products
// and quotients of times by numbers round the same way, and the exact ones whatever
// rounding mode a host has left the processor in.
TEST(Time, SecondsAndProductsRoundToTicks) {
    const int saved = std::fegetround();
    for (const int mode : {FE_TONEAREST, FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO}) {
        ASSERT_EQ(std::fesetround(mode), 0);
        const struct {
            Time time;
            long long ticks;
        } cases[] = {
            // 1/16 s is exactly 8437.5 ticks, 3/16 s exactly 25312.5: ties go to even.
            {Time(0.0625), 8438},      {Time(-0.1875), -25312},
            {Time(-0.0), 0},           {Time(kNaN), 0},
            {Time(1e300), kMin},       {Time(static_cast<double>(100000.1f)), 13500013711LL},
            {Time(-3LL) * 0.5, -2},    {Time(14LL) / 4.0, 4},
            {Time(100) / -2.0, 0}, // divisors below 1e-30 (and NaN) give 0
            {Time(100) / 9.9e-31, 0},  {Time(100) / kNaN, 0},
            {Time(1LL) / 1e-30, kMin}, // 1e30 ticks: beyond the range
        };
        std::fesetround(saved);
        for (const auto& c : cases)
            EXPECT_EQ(c.time.GetTicks(), c.ticks) << "mode " << mode << ", row " << &c - cases;
    }
    // 100000.1f x 135000 is 13500013710.9375: 13500013568 in single precision (floats 1024
    // apart there), ...711 in double (above).
    EXPECT_EQ(Time(100000.1f).GetTicks(), 13500013568LL);
    Time t;
    t.SetSeconds(10.0 / 135000);
    t /= -2.0; // no test: a negative divisor divides
    EXPECT_EQ(t.GetTicks(), -5);
    t *= 2.5; // -12.5, a tie, to even
    EXPECT_EQ(t.GetTicks(), -12);
    t /= 0.0;
    EXPECT_EQ(t.GetTicks(), kMin);
    EXPECT_EQ(Time(3LL) / Time(2LL), 1.5f);
    EXPECT_EQ(Time(kMax) / Time(1LL), 9223372036854775808.0f);
}

// Frames and cells give the exact ticks at every rate, and whole frames are written as their
// number even at 29.97 and 59.94 fps, where a frame is not a whole number of ticks.
TEST(Time, FramesAndCellsGiveExactTicksAtEveryRate) {
    const struct {
        double fps;
        long long numerator, denominator;
    } rates[] = {{24, 24, 1},        {25, 25, 1}, {29.97, 2997, 100}, {30, 30, 1},
                 {59.94, 5994, 100}, {60, 60, 1}, {100, 100, 1},      {120, 120, 1}};
    for (const auto& rate : rates) {
        for (long long n = -100000; n <= 100000; n += 37) {
            SCOPED_TRACE(::testing::Message() << rate.fps << " fps, frame " << n);
            const long long expected = ExactFrameTicks(n, rate.numerator, rate.denominator);
            const double frame = static_cast<double>(n);
            EXPECT_EQ(Time(frame, rate.fps).GetTicks(), expected);
            Time t;
            t.SetFrame(frame, rate.fps);
            EXPECT_EQ(t.GetTicks(), expected);
            EXPECT_EQ(t.ToString(rate.fps, FRAMES, false).View(), std::to_string(n));
            EXPECT_EQ(t.ToString(rate.fps, CELLS, true).View(), std::to_string(n));
            t.SetCell(frame + 1, rate.fps);
            EXPECT_EQ(t.GetTicks(), expected) << "as cell " << n + 1;
        }
    }
}

// Cells count from 1; steps add llrint(135000 / fps x n) ticks, a frame length at a time
// for StepFrame and StepFrameBack, wrapping.
TEST(Time, CellsAndSteps) {
    Time t(5LL);
    t.SetCell(1.5, 24); // half a frame: 2812.5 ticks, a tie, to even
    EXPECT_EQ(t.GetTicks(), 2812);
    const struct {
        double n, fps;
        long long ticks;
    } cases[] = {
        {1, 24, 5625}, {1, 29.97, 4505}, {2.5, 24, 14062}, {-2, 25, -10800}, {1000, 59.94, 2252252},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.n << " frames at " << c.fps);
        Time forward(100LL), back(100LL);
        forward.StepFrames(c.n, c.fps);
        back.StepFramesBack(c.n, c.fps);
        EXPECT_EQ(forward.GetTicks(), 100 + c.ticks);
        EXPECT_EQ(back.GetTicks(), 100 - c.ticks);
    }
    Time max(Time::MAX);
    max.StepFrame(30); // wraps
    EXPECT_EQ(max.GetTicks(), kMin + 4499);
    max.StepFrameBack(30);
    EXPECT_EQ(max.GetTicks(), kMax);
}

TEST(Time, SecondsFramesAndCellsReadBack) {
    EXPECT_EQ(Time(135000LL).GetSeconds(), 1.0f);
    EXPECT_EQ(Time(67500LL).GetSecondsDouble(), 0.5);
    EXPECT_EQ(Time(2250LL).GetFrame(30), 0.5f);
    EXPECT_EQ(Time().GetCell(30), 1.0f);
    EXPECT_EQ(Time(kMax).GetTicksAsFloat(), 9223372036854775808.0f);
    EXPECT_EQ(Time(-4505LL).GetFrameInt(29.97), 0); // -1.0001 + 0.5 truncates to 0
    // (ticks x 7.4074074074074075e-06) x fps + 0.5 is rounded once: -2.5 frames come out a
    // hair above, which a separately rounded product would make exactly -2.
    EXPECT_EQ(Time(-11250LL).GetFrameInt(30), -1);
    EXPECT_EQ(Time(kMax).GetFrameInt(30), INT_MIN); // outside the int range
}

// Snapping rounds halves away from zero, and odd frame lengths have no tick halfway (at 24
// fps 2812 is below half of 5625, 2813 above). Floor moves toward zero, so on negative times
// ceil lands one frame above it. MoveToFrame floors for a direction of 0 or less and ceils
// for a positive one.
TEST(Time, SnapFloorCeilAndMoveToFrame) {
    const struct {
        double fps;
        long long ticks, snapped, floor, ceil;
    } cases[] = {{30, 2250, 4500, 0, 4500},
                 {30, -2250, -4500, 0, 4500},
                 {30, 2249, 0, 0, 4500},
                 {30, -6749, -4500, -4500, 0},
                 {24, 2812, 0, 0, 5625},
                 {24, 2813, 5625, 0, 5625},
                 {30, -9000, -9000, -9000, -9000},
                 {29.97, 4506, 4505, 4505, 9010},
                 // 135000 / 270000 is exactly 0.5, which rounds to an even frame length of 0:
                 // every tick is on a frame. A length of -1 divides everything.
                 {270000, 12345, 12345, 12345, 12345},
                 {-135000, kMin, kMin, kMin, kMin}};
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.ticks << " ticks at " << c.fps);
        const auto moved = [&](void (*move)(Time&, double)) {
            Time t(c.ticks);
            move(t, c.fps);
            return t.GetTicks();
        };
        EXPECT_EQ(moved([](Time& t, double fps) { t.SnapToFrame(fps); }), c.snapped);
        EXPECT_EQ(moved([](Time& t, double fps) { t.FloorToFrame(fps); }), c.floor);
        EXPECT_EQ(moved([](Time& t, double fps) { t.CeilToFrame(fps); }), c.ceil);
        EXPECT_EQ(moved([](Time& t, double fps) { t.MoveToFrame(fps, Time()); }), c.floor);
        EXPECT_EQ(moved([](Time& t, double fps) { t.MoveToFrame(fps, Time(1LL)); }), c.ceil);
        EXPECT_EQ(Time(c.ticks).IsOnFrame(c.fps), c.floor == c.ticks);
    }
}

// The time arithmetic's multiply-add rounds once on every platform: the rows need the low
// bits that a second rounding loses.
TEST(Time, MultiplyAddRoundsOnce) {
    using fileio::detail::FusedMultiplyAdd;
    const double tiny = std::ldexp(1.0, -52);
    const struct {
        double a, b, c, result;
    } rows[] = {
        {1.0 + tiny, 1.0 - tiny, -1.0, -std::ldexp(1.0, -104)}, // not 0
        {3.0, 0.0, -0.0, 0.0},
        {kInf, 2.0, 1.0, kInf},
        {1e300, 1e10, 1.0, kInf}, // the runtime's range
    };
    for (const auto& row : rows)
        EXPECT_EQ(FusedMultiplyAdd(row.a, row.b, row.c), row.result) << &row - rows;
#if defined(__GLIBC__)
    // glibc's fma is correctly rounded: random operands of many magnitudes, and sums that
    // cancel the product, give the same bits.
    std::mt19937_64 random(20261125);
    std::uniform_real_distribution<double> mantissa(-1.0, 1.0);
    std::uniform_int_distribution<int> exponent(-80, 80);
    for (int i = 0; i < 200000; ++i) {
        const double a = std::ldexp(mantissa(random), exponent(random));
        const double b = std::ldexp(mantissa(random), exponent(random));
        const double c = i % 2 == 0 ? -(a * b) : std::ldexp(mantissa(random), exponent(random));
        ASSERT_EQ(std::bit_cast<std::uint64_t>(FusedMultiplyAdd(a, b, c)),
                  std::bit_cast<std::uint64_t>(std::fma(a, b, c)))
            << std::hexfloat << a << " x " << b << " + " << c;
    }
#endif
}

// Seconds become a float. SMPTE is "%02d:%02d:%02.4g" ("%03.5g" from 100 fps on), minutes
// not wrapped into hours; FRAMES and CELLS are "%g". Values with decimals are rounded to
// hundredths, nudged up by 2^-23. Any other unit gives the null string.
TEST(TimeText, ToStringFollowsTheUnitsFormats) {
    const struct {
        long long ticks;
        double fps;
        int unit;
        const char* text;
    } cases[] = {
        {68850, 30, SMPTE, "00:00:15.3"}, // 0.51 s: 15.3 frames
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
        {-67500, 24, CELLS, "-11"},
        {135000, 30, 3, "<null>"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TextOf(Time(c.ticks).ToString(c.fps, static_cast<TimeUnit>(c.unit), false)),
                  c.text)
            << c.ticks << " ticks at " << c.fps << " fps";
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
            ASSERT_EQ(std::string(actual, end), expected) << shape.width << "." << shape.precision;
        }
    }
}
#endif

// Fields are read from the right (frames, seconds, minutes; an earlier one falls off), each
// a float as strtof reads it: blanks before it skipped, junk after it ignored, an empty
// field 0, no decimal comma. In SMPTE digits typed without separators carry: frames of
// 100 or more (1000 from 100 fps on) into seconds, seconds of 100 or more into minutes.
// A leading "-" negates the whole time; cells count from 1. Values outside the tick range
// give MIN.
TEST(TimeText, ToTimeReadsFieldsFromTheRight) {
    const struct {
        const char* text;
        int fps;
        int unit;
        long long ticks;
    } cases[] = {
        {"99:00", 30, SMPTE, 13365000},   // 99 s: not carried into minutes
        {"1:2:3:4", 30, SMPTE, 16623000}, // the earliest field falls off
        {"1::2", 30, SMPTE, 8109000},
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
    for (const auto& c : cases)
        EXPECT_EQ(String(c.text).ToTime(c.fps, static_cast<TimeUnit>(c.unit), false).GetTicks(),
                  c.ticks)
            << "\"" << c.text << "\" at " << c.fps << " fps";
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
    for (const auto& c : cases)
        EXPECT_EQ(TextOf(FormatTime(c.seconds, c.showZero)), c.text) << c.seconds;
}

} // namespace
