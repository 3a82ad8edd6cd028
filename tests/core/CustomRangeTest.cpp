// Tests of a CustomRange as a list: ownership, copies, identity, counting and enumeration.
//
// Counts are worked out by hand: an item from frame a to b by step s counts
// trunc((b - a + 1) / s) and enumerates a, a + s, ... up to b.

#include "fileio/core/CustomRange.h"

#include "memory/NamedPoolObjects.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace {

constexpr int kFps = 24;
constexpr long long kFrame = 5625; // ticks of a frame at 24 fps

Time Frame(long long n) {
    return Time(n * kFrame);
}

// Every time GetNextTime produces, in order, and the total it reports at the end.
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
        {5, 5, 1, 1, {5}},
        {0, 10, 2, 5, {0, 2, 4, 6, 8, 10}},
        {0, 9, 2, 5, {0, 2, 4, 6, 8}},
        {4, 6, 10, 0, {4}},
        {0, 6, 2.9f, 3, {0, 2, 4, 6}},
        {10, 1, 1, -8, {}},
        {1, 10, 0, 1, {1}},
        {1, 10, -3, -3, {1}},
        {10, 1, 0, 0, {}},
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
    // A span over the whole tick range: positions are found directly, and the total is
    // clamped to the int range.
    CustomRange huge;
    huge.Append(Time(Time::MIN), Time(Time::MAX), 1);
    int index = 1000000;
    Time time;
    ASSERT_TRUE(huge.GetNextTime(kFps, index, time, nullptr));
    EXPECT_EQ(time.GetTicks(), Time::MinTicks + 1000000 * kFrame);
    EXPECT_EQ(index, 1000001);
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

    // The largest step at 1 fps over the whole positive range: every position is found
    // and the last one stays inside the range.
    CustomRange wide;
    wide.Append(Time(0LL), Time(Time::MAX), 2147483520.0f);
    const long long stepTicks = 135000LL * 2147483520LL;
    int count = -1;
    const std::vector<long long> times = Enumerate(wide, 1, &count);
    ASSERT_EQ(count, Time::MaxTicks / stepTicks + 1);
    ASSERT_EQ(times.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(times.back(), (Time::MaxTicks / stepTicks) * stepTicks);
}

// Equality is by item identity: same values in other objects are not equal. Copies (moves
// too) are deep and leave the source alone; assignment frees the old items.
TEST(CustomRangeTest, CopiesAreDeepAndEqualityIsByIdentity) {
    CustomRange source;
    EXPECT_TRUE(source == CustomRange());
    source.Append(Frame(1), Frame(10), 2);
    source.Append(Frame(15), Frame(15), 1);
    EXPECT_TRUE(source == source);
    const std::vector<CustomTimeRange*> items = source.GetItems();
    const auto expectCopy = [&](const CustomRange& copy) {
        EXPECT_TRUE(copy != source);
        ASSERT_EQ(copy.GetCount(), 2);
        EXPECT_NE(copy.GetItems()[0], items[0]);
        EXPECT_NE(copy.GetItems()[1], items[1]);
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
    source.DeleteRangeList();
    EXPECT_TRUE(source.IsEmpty());
}

// Ranges and their items made with new take their storage from the Ext pool.
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

} // namespace
