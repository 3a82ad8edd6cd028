// Tests of Time's ticks, conversions, arithmetic and frame snapping.
//
// Expectations come from the tick rate (135000 per second) and the rounding rules, worked
// out by hand or by an independent integer / long double computation in the test.
#include "fileio/core/Time.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>

// The time arithmetic relies on floating point without excess precision (x86-64 SSE).
static_assert(FLT_EVAL_METHOD == 0,
              "float and double expressions must be evaluated in their own type");

namespace {

constexpr long long kMax = std::numeric_limits<long long>::max();
constexpr long long kMin = std::numeric_limits<long long>::min();
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

// The rates the suite uses, with their frame lengths llrint(135000 / fps).
struct Rate {
    double fps;
    long long frameLength;
};
constexpr Rate kRates[] = {
    {24, 5625}, {25, 5400},    {29.97, 4505}, // 4504.5045...
    {30, 4500}, {59.94, 2252},                // 2252.2522...
    {60, 2250}, {100, 1350},   {120, 1125},
};

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

TEST(Time, ConstructionFromSecondsGivesTicksAt135000PerSecond) {
    const struct {
        const char* name;
        Time time;
        long long ticks;
    } cases[] = {
        {"default", Time(), 0},
        {"int seconds", Time(2), 270000},
        {"negative int seconds", Time(-3), -405000},
        {"int seconds use a 64-bit product", Time(INT_MAX), 2147483647LL * 135000},
        {"long long is ticks", Time(2LL), 2},
        {"double one second", Time(1.0), 135000},
        {"double half second", Time(0.5), 67500},
        {"negative double", Time(-2.5), -337500},
        {"a third of a second", Time(1.0 / 3.0), 45000},
        // 1/16 s is exactly 8437.5 ticks, 3/16 s exactly 25312.5: ties go to even.
        {"tie to even upward", Time(0.0625), 8438},
        {"tie to even downward", Time(0.1875), 25312},
        {"negative tie", Time(-0.1875), -25312},
        {"float tie", Time(0.0625f), 8438},
        {"zero", Time(0.0), 0},
        {"negative zero", Time(-0.0), 0},
        {"NaN", Time(kNaN), 0},
        {"float NaN", Time(std::numeric_limits<float>::quiet_NaN()), 0},
        // Out of the tick range the conversion gives the processor's indefinite value.
        {"double beyond the range", Time(1e300), kMin},
        {"infinity", Time(kInf), kMin},
        // 100000.1f is 100000.1015625; times 135000 is 13500013710.9375, which single
        // precision (floats 1024 apart there) rounds to 13500013568, double to ...711.
        {"float product in single precision", Time(100000.1f), 13500013568LL},
        {"the same value in double precision", Time(static_cast<double>(100000.1f)), 13500013711LL},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.time.GetTicks(), c.ticks);
    }
}

TEST(Time, RoundingIgnoresTheHostsRoundingMode) {
    // A host may leave the processor in another rounding mode; the tick counts of exactly
    // representable values must not change (ties still go to even, halves are not
    // truncated).
    for (int mode : {FE_DOWNWARD, FE_UPWARD, FE_TOWARDZERO}) {
        SCOPED_TRACE(mode);
        const int saved = std::fegetround();
        ASSERT_EQ(std::fesetround(mode), 0);
        const long long up = Time(0.0625).GetTicks();           // 8437.5
        const long long down = Time(-0.1875).GetTicks();        // -25312.5
        const long long product = (Time(7LL) * 0.5).GetTicks(); // 3.5
        const long long quarter = (Time(9LL) / 4.0).GetTicks(); // 2.25
        std::fesetround(saved);
        EXPECT_EQ(up, 8438);
        EXPECT_EQ(down, -25312);
        EXPECT_EQ(product, 4);
        EXPECT_EQ(quarter, 2);
    }
}

TEST(Time, AssignmentFollowsTheConstructors) {
    Time t;
    t = 2;
    EXPECT_EQ(t.GetTicks(), 270000);
    t = 2LL;
    EXPECT_EQ(t.GetTicks(), 2);
    t = 0.5;
    EXPECT_EQ(t.GetTicks(), 67500);
    t = 100000.1f;
    EXPECT_EQ(t.GetTicks(), 13500013568LL);
    t = -0.0f;
    EXPECT_EQ(t.GetTicks(), 0);
    t.SetSeconds(1.5);
    EXPECT_EQ(t.GetTicks(), 202500);
    t.SetTicks(-7);
    EXPECT_EQ(t.GetTicks(), -7);
}

TEST(Time, SpecialValues) {
    const struct {
        const char* name;
        Time time;
        long long ticks;
    } cases[] = {
        {"MINSTEP", Time(Time::MINSTEP), 1},
        {"MAX", Time(Time::MAX), kMax},
        {"TAGGED", Time(Time::TAGGED), -1},
        {"MIN", Time(Time::MIN), kMin},
        {"value 4", Time(static_cast<Time::TimeType>(4)), 0},
        {"value -1", Time(static_cast<Time::TimeType>(-1)), 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.time.GetTicks(), c.ticks);
    }

    Time t;
    t.SetMax();
    EXPECT_TRUE(t.IsMax());
    t.SetMin();
    EXPECT_TRUE(t.IsMin());
    t.SetMinStep();
    EXPECT_EQ(t.GetTicks(), 1);
    t.SetTagged(true);
    EXPECT_TRUE(t.IsTagged());
    t.SetTagged(false);
    EXPECT_TRUE(t.IsZero());
}

TEST(Time, IsMinStepAnswersForTheTaggedValueNotForMinStep) {
    EXPECT_FALSE(Time(Time::MINSTEP).IsMinStep());
    EXPECT_TRUE(Time(Time::TAGGED).IsMinStep());
    EXPECT_TRUE(Time(-1LL).IsMinStep());
    EXPECT_FALSE(Time(1LL).IsMinStep());
    EXPECT_FALSE(Time().IsMinStep());
}

TEST(Time, FrameLengthAtEachRate) {
    for (const Rate& rate : kRates) {
        SCOPED_TRACE(rate.fps);
        Time t;
        t.StepFrame(rate.fps);
        EXPECT_EQ(t.GetTicks(), rate.frameLength);
        t.StepFrameBack(rate.fps);
        t.StepFrameBack(rate.fps);
        EXPECT_EQ(t.GetTicks(), -rate.frameLength);
    }
}

TEST(Time, FramesAndCellsGiveExactTicksAtEveryRate) {
    // Rates as exact fractions for the integer computation of the expected ticks.
    struct ExactRate {
        double fps;
        long long numerator, denominator;
    };
    const ExactRate rates[] = {{24, 24, 1},        {25, 25, 1}, {29.97, 2997, 100}, {30, 30, 1},
                               {59.94, 5994, 100}, {60, 60, 1}, {100, 100, 1},      {120, 120, 1}};
    for (const ExactRate& rate : rates) {
        for (long long n = -100000; n <= 100000; n += 37) {
            const long long expected = ExactFrameTicks(n, rate.numerator, rate.denominator);
            EXPECT_EQ(Time(static_cast<double>(n), rate.fps).GetTicks(), expected)
                << rate.fps << " fps, frame " << n;
            Time t;
            t.SetFrame(static_cast<double>(n), rate.fps);
            EXPECT_EQ(t.GetTicks(), expected) << rate.fps << " fps, frame " << n;
            t.SetCell(static_cast<double>(n + 1), rate.fps);
            EXPECT_EQ(t.GetTicks(), expected) << rate.fps << " fps, cell " << n + 1;
        }
    }
}

TEST(Time, SetCellCountsFromOne) {
    Time t(5LL);
    t.SetCell(1, 24);
    EXPECT_EQ(t.GetTicks(), 0);
    t.SetCell(25, 24);
    EXPECT_EQ(t.GetTicks(), 135000);
    t.SetCell(0, 30);
    EXPECT_EQ(t.GetTicks(), -4500);
    t.SetCell(1.5, 24); // half a frame: 2812.5 ticks, a tie, to even
    EXPECT_EQ(t.GetTicks(), 2812);
}

TEST(Time, StepFramesAddsRoundedFrameCounts) {
    const struct {
        double n, fps;
        long long ticks;
    } cases[] = {
        {3, 30, 13500},         {2.5, 24, 14062}, // 14062.5 ticks, a tie, to even
        {0.5, 30, 2250},        {-2, 25, -10800}, {10, 29.97, 45045}, // 45045.045...
        {1000, 59.94, 2252252},                                       // 2252252.25...
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.n << " frames at " << c.fps);
        Time forward(100LL);
        forward.StepFrames(c.n, c.fps);
        EXPECT_EQ(forward.GetTicks(), 100 + c.ticks);
        Time back(100LL);
        back.StepFramesBack(c.n, c.fps);
        EXPECT_EQ(back.GetTicks(), 100 - c.ticks);
    }
}

TEST(Time, SecondsFramesAndCellsReadBack) {
    EXPECT_EQ(Time(1.0).GetTicks(), 135000);
    EXPECT_EQ(Time(135000LL).GetSeconds(), 1.0f);
    EXPECT_EQ(Time(135000LL).GetSecondsDouble(), 1.0);
    EXPECT_EQ(Time(67500LL).GetSecondsDouble(), 0.5);
    EXPECT_EQ(Time().GetSeconds(), 0.0f);
    EXPECT_FALSE(std::signbit(Time().GetSecondsDouble()));
    EXPECT_EQ(Time(-270000LL).GetSeconds(), -2.0f);

    EXPECT_EQ(Time(0.5).GetFrameInt(30), 15);
    EXPECT_EQ(Time(67500LL).GetFrame(24), 12.0f);
    EXPECT_EQ(Time().GetCell(30), 1.0f);
    EXPECT_EQ(Time(4500LL).GetCell(30), 2.0f);
    EXPECT_EQ(Time(-4500LL).GetCell(30), 0.0f);
    EXPECT_EQ(Time(2250LL).GetFrame(30), 0.5f);

    EXPECT_EQ(Time(kMax).GetTicksAsFloat(), 9223372036854775808.0f);
    EXPECT_EQ(Time(-3LL).GetTicksAsFloat(), -3.0f);
}

TEST(Time, GetFrameIntRoundsHalfUpAndNegativeTimesTowardZero) {
    const struct {
        long long ticks;
        double fps;
        int frame;
    } cases[] = {
        {7650, 30, 2},                          // 1.7 frames
        {-7650, 30, -1},                        // -1.7 frames: one closer to zero than rounding
        {5850, 30, 1},                          // 1.3 frames
        {-5850, 30, -0},                        // -1.3 frames: -0.8 truncates to 0
        {6750, 30, 2},                          // 1.5 frames rounds up
        {2250, 30, 1},                          // 0.5 frame
        {-2250, 30, 0},                         // -0.5 frame: exactly 0 after adding 0.5
        {4505, 29.97, 1},                       // one frame at 29.97
        {-4505, 29.97, 0},                      // -1.0001 + 0.5 truncates to 0
        {9010, 29.97, 2},  {kMax, 30, INT_MIN}, // outside the int range
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.ticks << " ticks at " << c.fps);
        EXPECT_EQ(Time(c.ticks).GetFrameInt(c.fps), c.frame);
    }
}

TEST(Time, GetFrameIntIsOneFusedMultiplyAdd) {
    // (ticks x 7.4074074074074075e-06) x fps + 0.5 rounded once. With a product of at most
    // 53 + 7 significant bits the long double sum is exact, so narrowing it to double is
    // that single rounding. Half frames on the negative side fall just either side of a
    // whole number, which a separately rounded product would get wrong.
    for (double fps : {24.0, 25.0, 30.0, 60.0, 100.0, 120.0}) {
        const long long frameLength = static_cast<long long>(135000 / fps);
        for (long long half = -4001; half <= 4001; ++half) {
            const long long ticks = half * frameLength / 2;
            const double seconds = static_cast<double>(ticks) * 7.4074074074074075e-06;
            const long double exact = static_cast<long double>(seconds) * fps + 0.5L;
            const int expected = static_cast<int>(std::trunc(static_cast<double>(exact)));
            EXPECT_EQ(Time(ticks).GetFrameInt(fps), expected) << ticks << " ticks at " << fps;
        }
    }
}

TEST(Time, AbsoluteValueKeepsMin) {
    EXPECT_EQ(Time(-5LL).GetAbsoluteValue().GetTicks(), 5);
    EXPECT_EQ(Time(5LL).GetAbsoluteValue().GetTicks(), 5);
    EXPECT_EQ(Time(Time::MIN).GetAbsoluteValue().GetTicks(), kMin);
    EXPECT_EQ(Time(Time::MAX).GetAbsoluteValue().GetTicks(), kMax);
}

TEST(Time, SnapToFrameRoundsHalvesAwayFromZero) {
    const struct {
        double fps;
        long long ticks, snapped;
    } cases[] = {
        {30, 0, 0},
        {30, 2250, 4500},
        {30, -2250, -4500},
        {30, 2249, 0},
        {30, -2249, 0},
        {30, 4500, 4500},
        {30, 4501, 4500},
        {30, 6749, 4500},
        {30, 6750, 9000},
        {30, -6750, -9000},
        {30, -6749, -4500},
        {30, -1, 0},
        // Odd frame lengths have no tick halfway: 2812 is below half of 5625, 2813 above.
        {24, 2812, 0},
        {24, 2813, 5625},
        {24, -2812, 0},
        {24, -2813, -5625},
        {29.97, 2252, 0},
        {29.97, 2253, 4505},
        {29.97, -2253, -4505},
        {29.97, 9010, 9010},
        {120, 562, 0},
        {120, 563, 1125},
        {25, 8100, 10800},
        {25, -8099, -5400},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.ticks << " ticks at " << c.fps);
        Time t(c.ticks);
        t.SnapToFrame(c.fps);
        EXPECT_EQ(t.GetTicks(), c.snapped);
    }
}

TEST(Time, FloorCeilAndMoveToFrame) {
    const struct {
        double fps;
        long long ticks, floor, ceil;
    } cases[] = {
        {30, 0, 0, 0},
        {30, 4500, 4500, 4500},
        {30, 4501, 4500, 9000},
        {30, 8999, 4500, 9000},
        {30, 1, 0, 4500},
        // Negative times: floor moves toward zero, ceil lands one frame above that.
        {30, -10, 0, 4500},
        {30, -4501, -4500, 0},
        {30, -9000, -9000, -9000},
        {29.97, 4506, 4505, 9010},
        {24, -5626, -5625, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.ticks << " ticks at " << c.fps);
        Time floor(c.ticks);
        floor.FloorToFrame(c.fps);
        EXPECT_EQ(floor.GetTicks(), c.floor);
        Time ceil(c.ticks);
        ceil.CeilToFrame(c.fps);
        EXPECT_EQ(ceil.GetTicks(), c.ceil);

        for (long long direction : {0LL, -1LL, kMin}) {
            Time moved(c.ticks);
            moved.MoveToFrame(c.fps, Time(direction));
            EXPECT_EQ(moved.GetTicks(), c.floor) << "direction " << direction;
        }
        for (long long direction : {1LL, 135000LL}) {
            Time moved(c.ticks);
            moved.MoveToFrame(c.fps, Time(direction));
            EXPECT_EQ(moved.GetTicks(), c.ceil) << "direction " << direction;
        }
    }
}

TEST(Time, IsOnFrame) {
    EXPECT_TRUE(Time().IsOnFrame(30));
    EXPECT_TRUE(Time(4500LL).IsOnFrame(30));
    EXPECT_TRUE(Time(-9000LL).IsOnFrame(30));
    EXPECT_FALSE(Time(4501LL).IsOnFrame(30));
    EXPECT_FALSE(Time(-1LL).IsOnFrame(30));
    EXPECT_TRUE(Time(4505LL).IsOnFrame(29.97));
    EXPECT_FALSE(Time(4504LL).IsOnFrame(29.97));
    EXPECT_TRUE(Time(1.0).IsOnFrame(24));
}

TEST(Time, FrameOperationsAtAZeroFrameLengthChangeNothing) {
    // 135000 / 270000 is exactly 0.5, which rounds to an even 0; faster rates give 0 too.
    for (double fps : {270000.0, 1e6}) {
        SCOPED_TRACE(fps);
        EXPECT_TRUE(Time(12345LL).IsOnFrame(fps));
        Time t(12345LL);
        t.SnapToFrame(fps);
        t.FloorToFrame(fps);
        t.CeilToFrame(fps);
        t.StepFrame(fps);
        EXPECT_EQ(t.GetTicks(), 12345);
    }
    Time t(kMin);
    t.FloorToFrame(-135000); // a frame length of -1 divides everything
    EXPECT_EQ(t.GetTicks(), kMin);
}

TEST(Time, IntegerArithmeticWraps) {
    const struct {
        const char* name;
        Time result;
        long long ticks;
    } cases[] = {
        {"sum", Time(5LL) + Time(7LL), 12},
        {"difference", Time(5LL) - Time(7LL), -2},
        {"MAX + 1 wraps", Time(Time::MAX) + Time(1LL), kMin},
        {"MIN - 1 wraps", Time(Time::MIN) - Time(1LL), kMax},
        {"negation", -Time(5LL), -5},
        {"negated MIN", -Time(Time::MIN), kMin},
        {"product of ticks", Time(3LL) * Time(4LL), 12},
        {"product wraps", Time(Time::MAX) * Time(2LL), -2},
        {"seconds add as ticks", Time(1) + Time(0.5), 202500},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.result.GetTicks(), c.ticks);
    }

    Time t(10LL);
    t += Time(5LL);
    EXPECT_EQ(t.GetTicks(), 15);
    t -= Time(20LL);
    EXPECT_EQ(t.GetTicks(), -5);
    t *= Time(-3LL);
    EXPECT_EQ(t.GetTicks(), 15);
    t.AddTicks(-16);
    EXPECT_EQ(t.GetTicks(), -1);
    t.Invert();
    EXPECT_EQ(t.GetTicks(), 1);
    Time max(Time::MAX);
    max.AddTicks(1);
    EXPECT_TRUE(max.IsMin());
}

TEST(Time, MultiplicationAndDivisionByNumbersRound) {
    const struct {
        const char* name;
        Time result;
        long long ticks;
    } cases[] = {
        {"1 x 0.5 ties to 0", Time(1LL) * 0.5, 0},
        {"3 x 0.5 ties to 2", Time(3LL) * 0.5, 2},
        {"5 x 0.5 ties to 2", Time(5LL) * 0.5, 2},
        {"7 x 0.5 ties to 4", Time(7LL) * 0.5, 4},
        {"-3 x 0.5 ties to -2", Time(-3LL) * 0.5, -2},
        {"by an int factor", Time(1) * 3, 405000},
        {"10 / 4", Time(10LL) / 4.0, 2},
        {"14 / 4", Time(14LL) / 4.0, 4},
        {"negative dividend", Time(-10LL) / 4.0, -2},
        {"divisor -2 gives 0", Time(100) / -2.0, 0},
        {"divisor 0 gives 0", Time(100) / 0.0, 0},
        {"divisor just below 1e-30", Time(100) / 9.9e-31, 0},
        {"NaN divisor", Time(100) / kNaN, 0},
        {"divisor 1e-30 divides", Time(1LL) / 1e-30, kMin}, // 1e30 ticks: beyond the range
        {"seconds by 2", Time(1) / 2.0, 67500},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.result.GetTicks(), c.ticks);
    }

    Time t(10LL);
    t /= -2.0; // no test: a negative divisor divides
    EXPECT_EQ(t.GetTicks(), -5);
    t *= 2.5; // -12.5, a tie, to even
    EXPECT_EQ(t.GetTicks(), -12);
    t /= 0.0;
    EXPECT_EQ(t.GetTicks(), kMin);
}

TEST(Time, DivisionAndRemainderByTimes) {
    EXPECT_EQ(Time(3LL) / Time(2LL), 1.5f);
    EXPECT_EQ(Time(-1) / Time(4), -0.25f);
    EXPECT_EQ(Time(3LL) / Time(0LL), 0.0f);
    EXPECT_EQ(Time(kMax) / Time(1LL), 9223372036854775808.0f);

    const struct {
        long long dividend, divisor, quotient, remainder;
    } cases[] = {
        {7, 3, 2, 1},       {-7, 3, -2, -1},     {7, -3, -2, 1},     {-7, -3, 2, -1}, {6, 3, 2, 0},
        {100, 0, 100, 100}, {kMin, -1, kMin, 0}, {kMax, kMax, 1, 0}, {0, 5, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.dividend << " by " << c.divisor);
        Time quotient(c.dividend);
        quotient /= Time(c.divisor);
        EXPECT_EQ(quotient.GetTicks(), c.quotient);
        EXPECT_EQ((Time(c.dividend) % Time(c.divisor)).GetTicks(), c.remainder);
    }
    EXPECT_EQ(Time(100) % Time(0LL), Time(100));
}

TEST(Time, Comparison) {
    EXPECT_LT(Time(1LL), Time(2LL));
    EXPECT_LT(Time(Time::MIN), Time(Time::MAX));
    EXPECT_LT(Time(Time::TAGGED), Time());
    EXPECT_EQ(Time(1), Time(135000LL));
    EXPECT_NE(Time(1), Time(1LL));
    EXPECT_GE(Time(0.5), Time(67500LL));
    EXPECT_GT(Time(-1LL), Time(-2LL));
}

TEST(Time, IsAPlainEightByteValue) {
    static_assert(sizeof(Time) == 8);
    static_assert(sizeof(TimeRange) == 16);
    constexpr Time t = Time(3LL) + Time(4LL);
    static_assert(t.GetTicks() == 7);
    const TimeRange range{Time(1), Time(2)};
    EXPECT_EQ(range.start.GetTicks(), 135000);
    EXPECT_EQ(range.end.GetTicks(), 270000);
}

} // namespace
