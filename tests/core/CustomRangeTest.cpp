// Custom ranges: an item from frame a to b by step s counts trunc((b - a + 1) / s) and
// enumerates a, a + s, ... up to b; numbers in texts are times in the unit.

#include "fileio/core/CustomRange.h"

#include "memory/NamedPoolObjects.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int kFps = 24;
constexpr long long kFrame = 5625; // ticks of a frame at 24 fps

Time Frame(long long n) {
    return Time(n * kFrame);
}

std::vector<long long> Enumerate(const CustomRange& range, int fps, int* total) {
    std::vector<long long> ticks;
    int index = 0;
    Time time;
    while (range.GetNextTime(fps, index, time, total)) {
        ticks.push_back(time.GetTicks());
        if (ticks.size() > 100000)
            break; // a runaway enumeration fails below rather than hanging the test
    }
    return ticks;
}

// With a step the count can be one short of the enumeration; reversed items enumerate
// nothing and count trunc(1 - span); steps of 0 or less enumerate the start alone, a
// negative step counting by the signed rule, a step of 0 as the one time it enumerates.
TEST(CustomRangeTest, CountingAgainstEnumeration) {
    const struct {
        long long start, end; // frames
        float step;
        int counted;                   // GetTotalFrames
        std::vector<long long> frames; // GetNextTime
    } rows[] = {
        {5, 5, 1, 1, {5}},    {0, 10, 2, 5, {0, 2, 4, 6, 8, 10}},
        {4, 6, 10, 0, {4}},   {0, 6, 2.9f, 3, {0, 2, 4, 6}},
        {10, 1, 1, -8, {}},   {1, 10, 0, 1, {1}},
        {1, 10, -3, -3, {1}}, {10, 1, 0, 0, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.start << "-" << row.end << " s" << row.step);
        CustomRange range;
        range.Append(Frame(row.start), Frame(row.end), row.step);
        EXPECT_EQ(range.GetTotalFrames(kFps), row.counted);
        int total = -1;
        std::vector<long long> expected;
        for (const long long frame : row.frames)
            expected.push_back(frame * kFrame);
        EXPECT_EQ(Enumerate(range, kFps, &total), expected);
        EXPECT_EQ(total, static_cast<int>(row.frames.size()));
    }
}

TEST(CustomRangeTest, HostileItemsNeverLoopForEver) {
    // A span over the whole tick range: positions are found directly, the total clamped.
    CustomRange huge;
    huge.Append(Time(Time::MIN), Time(Time::MAX), 1);
    int index = 1000000;
    Time time;
    ASSERT_TRUE(huge.GetNextTime(kFps, index, time, nullptr));
    EXPECT_EQ(time.GetTicks(), Time::MinTicks + 1000000 * kFrame);
    index = -1;
    int total = 0;
    EXPECT_FALSE(huge.GetNextTime(kFps, index, time, &total));
    EXPECT_EQ(total, INT_MAX);
    // Counting subtracts the times as ticks do, wrapping: MAX - MIN is -1 tick, a
    // fraction of a frame below 0, and trunc(1 - 0.0002) is 0.
    EXPECT_EQ(huge.GetTotalFrames(kFps), 0);

    // The last position an int index can reach is INT_MAX - 1.
    index = INT_MAX - 1;
    EXPECT_TRUE(huge.GetNextTime(kFps, index, time, nullptr));
    EXPECT_EQ(index, INT_MAX);
    EXPECT_FALSE(huge.GetNextTime(kFps, index, time, nullptr));

    // Rates at which a frame is no tick at all, or that make no sense, cover the start.
    for (const int fps : {0, -24, 300000, INT_MAX}) {
        SCOPED_TRACE(fps);
        CustomRange range;
        range.Append(Frame(2), Frame(50), 1);
        int count = -1;
        EXPECT_EQ(Enumerate(range, fps, &count), std::vector<long long>{2 * kFrame});
        EXPECT_EQ(count, 1);
    }
    // At 135000 fps a frame is exactly one tick, the shortest step that still moves.
    CustomRange ticks;
    ticks.Append(Time(0LL), Time(2LL), 1);
    EXPECT_EQ(Enumerate(ticks, 135000, nullptr), (std::vector<long long>{0, 1, 2}));

    // The largest step at 1 fps over the positive range: the last position stays inside.
    CustomRange wide;
    wide.Append(Time(0LL), Time(Time::MAX), 2147483520.0f);
    const long long stepTicks = 135000LL * 2147483520LL;
    int count = -1;
    const std::vector<long long> times = Enumerate(wide, 1, &count);
    ASSERT_EQ(count, Time::MaxTicks / stepTicks + 1);
    EXPECT_EQ(times.back(), (Time::MaxTicks / stepTicks) * stepTicks);
}

// Equality is by item identity: same values in other objects are not equal. Copies (moves
// too) are deep and leave the source alone; assignment frees the old items.
TEST(CustomRangeTest, CopiesAreDeepAndEqualityIsByIdentity) {
    CustomRange source;
    EXPECT_TRUE(source == CustomRange());
    source.Append(Frame(1), Frame(10), 2);
    source.Append(Frame(15), Frame(15), 1);
    const std::vector<CustomTimeRange*> items = source.GetItems();
    const auto expectCopy = [&](const CustomRange& copy) {
        EXPECT_TRUE(copy != source);
        ASSERT_EQ(copy.GetCount(), 2);
        EXPECT_EQ(Enumerate(copy, kFps, nullptr), Enumerate(source, kFps, nullptr));
        EXPECT_EQ(source.GetItems(), items);
    };
    expectCopy(CustomRange(source));
    expectCopy(CustomRange(std::move(source)));
    CustomRange target;
    target.Append(Frame(99), Frame(99), 1);
    target = source;
    expectCopy(target);
    target = std::move(source);
    expectCopy(target);
    CustomRange& alias = source;
    source = alias;
    EXPECT_EQ(source.GetItems(), items);
}

TEST(CustomRangeTest, ObjectsMadeWithNewLiveInTheExtPool) {
    const VarnPool& ext = fileio::detail::NamedVarnPool(fileio::detail::VarnPoolKind::Ext);
    const unsigned long long before = ext.GetTotal();
    auto* range = new CustomRange;
    const unsigned long long withRange = ext.GetTotal();
    EXPECT_GT(withRange, before);
    range->Append(Frame(1), Frame(2), 1);
    EXPECT_GT(ext.GetTotal(), withRange);
    delete range;
    EXPECT_EQ(ext.GetTotal(), before);
}

struct Item {
    long long start, end; // frames
    int step;
};

// Frames become ticks by the conversion that TimeTest checks against exact arithmetic.
void ExpectItems(const CustomRange& range, const std::vector<Item>& expected, int fps) {
    ASSERT_EQ(range.GetCount(), static_cast<int>(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE("item " + std::to_string(i));
        const CustomTimeRange* item = range.GetItems()[i];
        EXPECT_EQ(item->start, Time(static_cast<double>(expected[i].start), fps));
        EXPECT_EQ(item->end, Time(static_cast<double>(expected[i].end), fps));
        EXPECT_EQ(item->step, expected[i].step);
    }
}

TEST(CustomRangeTextTest, TextsGiveTheirItemsAndCanonicalText) {
    const struct {
        const char* text;
        int fps;
        TimeUnit unit;
        std::vector<Item> items;
        const char* canonical;
    } rows[] = {
        {"1-9, 15, 20-30 s2", 24, FRAMES, {{1, 9, 1}, {15, 15, 1}, {20, 30, 2}}, "1-9,15,20-30 s2"},
        // A bare step mark at the end adds nothing; ended by a character it is step 1.
        {"1-10s", 24, FRAMES, {}, ""},
        {"1-10s,", 24, FRAMES, {{1, 10, 1}}, "1-10"},
        {"1-", 24, FRAMES, {}, ""},
        // Reversed spans are kept as typed; a span onto itself is written as one frame.
        {"10-1", 24, FRAMES, {{10, 1, 1}}, "10-1"},
        {"3-3 s4", 24, FRAMES, {{3, 3, 4}}, "3"},
        {"2.5", 24, FRAMES, {{2, 2, 1}, {5, 5, 1}}, "2,5"},
        {"1-10ss2", 24, FRAMES, {{1, 10, 0}}, "1-10 s0"}, // a step text that reads as 0
        // Cells count from 1, a step in cells counts frames.
        {"1-9 s2; 12", 24, CELLS, {{0, 8, 2}, {11, 11, 1}}, "1-9 s2,12"},
        // SMPTE: seconds:frames, and digits typed without separators carry.
        {"1:00-2:15 s 5", 30, SMPTE, {{30, 75, 5}}, "00:01:00-00:02:15 s00:00:05"},
        {"250", 30, SMPTE, {{110, 110, 1}}, "00:03:20"},
        {"1:0:0 - 1:1:0", 25, SMPTE, {{1500, 1525, 1}}, "01:00:00-01:01:00"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        CustomRange range;
        range.Set(String(row.text), row.fps, row.unit);
        ExpectItems(range, row.items, row.fps);
        EXPECT_EQ(range.ToString(row.fps, row.unit, false).View(), row.canonical);
    }
}

// Set replaces the list; multiline text separates items by lines. The text last built comes
// back unchanged at rate 0 in SMPTE only; any other rate or unit rebuilds it, and a copy
// does not take it.
TEST(CustomRangeTextTest, SetReplacesAndKeptTextIsReusedOnlyAtRateZeroInSmpte) {
    CustomRange range;
    range.Set(String("1-5, 8"), 24, FRAMES);
    range.Set(String("1 - 10 s 2; 15 20"), 24, FRAMES);
    EXPECT_EQ(range.ToString(24, FRAMES, true).View(), "1-10 s2,\r\n15,\r\n20");
    EXPECT_EQ(range.ToString(24, FRAMES, false).View(), "1-10 s2,15,20");
    range.Set(String("3"), 24, FRAMES);
    EXPECT_EQ(range.ToString(0, SMPTE, false).View(), "1-10 s2,15,20");
    EXPECT_EQ(range.ToString(24, FRAMES, false).View(), "3");
    EXPECT_EQ(range.ToString(0, SMPTE, false).View(), "3");
    CustomRange copy(range);
    copy.Set(Time(0LL), Time(0LL), 1.0f);
    EXPECT_NE(copy.ToString(0, SMPTE, false).View(), "3");
    range.Set(String(), 24, FRAMES);
    EXPECT_TRUE(range.IsEmpty());
}

// Every text ToString writes reads back to the same items, at the usual rates and a few
// odd ones, in every unit, single-line and multiline: times of whole frames up to 99999
// frames, and in SMPTE below 100 minutes (a minutes field of 100 or more does not read back).
TEST(CustomRangeTextTest, WrittenTextReadsBackToTheSameItems) {
    const struct {
        int fps;
        TimeUnit unit;
        long long maxFrame;
    } settings[] = {
        {24, FRAMES, 99999}, {7, FRAMES, 99999}, {48, CELLS, 99998},
        {30, SMPTE, 99999},  {48, SMPTE, 99999}, {7, SMPTE, 41999},
    };
    std::mt19937 random(20261122);
    for (const auto& setting : settings) {
        SCOPED_TRACE(::testing::Message() << setting.fps << " fps, unit " << setting.unit);
        std::uniform_int_distribution<long long> frames(0, setting.maxFrame);
        std::uniform_int_distribution<int> steps(1, static_cast<int>(setting.maxFrame));
        for (int round = 0; round < 200; ++round) {
            std::vector<Item> items;
            CustomRange range;
            const int count = static_cast<int>(random() % 9);
            for (int i = 0; i < count; ++i) {
                const long long start = frames(random);
                const int kind = static_cast<int>(random() % 3);
                Item item{start, kind == 0 ? start : frames(random), kind == 2 ? steps(random) : 1};
                if (item.end == item.start)
                    item.step = 1; // a single frame is written without its step
                items.push_back(item);
                range.Append(Time(static_cast<double>(item.start), setting.fps),
                             Time(static_cast<double>(item.end), setting.fps),
                             static_cast<float>(item.step));
            }
            for (const bool multiline : {false, true}) {
                const String text = range.ToString(setting.fps, setting.unit, multiline);
                SCOPED_TRACE(text.View());
                CustomRange again;
                again.Set(text, setting.fps, setting.unit);
                ASSERT_NO_FATAL_FAILURE(ExpectItems(again, items, setting.fps));
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

} // namespace
