// Tests of a CustomRange as a list: ownership, copies, identity, counting and enumeration.
//
// Counts are worked out by hand: an item from frame a to b by step s counts
// trunc((b - a + 1) / s) and enumerates a, a + s, ... up to b.
#include "fileio/core/CustomRange.h"

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

TEST(CustomRangeTest, CountingAgainstEnumeration) {
    struct Row {
        const char* name;
        long long start, end; // frames
        float step;
        int counted;                   // GetTotalFrames
        std::vector<long long> frames; // GetNextTime
    };
    const Row rows[] = {
        {"single frame", 5, 5, 1, 1, {5}},
        {"span", 1, 10, 1, 10, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}},
        // With a step the count can be one short of the enumeration.
        {"0 to 10 by 2", 0, 10, 2, 5, {0, 2, 4, 6, 8, 10}},
        {"0 to 9 by 2", 0, 9, 2, 5, {0, 2, 4, 6, 8}},
        {"0 to 10 by 3", 0, 10, 3, 3, {0, 3, 6, 9}},
        {"step larger than span", 4, 6, 10, 0, {4}},
        {"step truncated", 0, 6, 2.9f, 3, {0, 2, 4, 6}},
        // Reversed: nothing enumerated, trunc(1 - 9) counted.
        {"reversed", 10, 1, 1, -8, {}},
        // Steps of 0 or less enumerate the start alone; a negative step counts by the
        // signed rule, a step of 0 as the one time it enumerates.
        {"step 0", 1, 10, 0, 1, {1}},
        {"step 0.5 truncates to 0", 1, 10, 0.5f, 1, {1}},
        {"negative step", 1, 10, -3, -3, {1}},
        {"single frame, step -1", 0, 0, -1, -1, {0}},
        {"reversed, step 0", 10, 1, 0, 0, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
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

TEST(CustomRangeTest, EnumerationRunsOverAllItemsInOrder) {
    CustomRange range;
    range.Append(Frame(20), Frame(24), 2); // 20 22 24, counts 2
    range.Append(Frame(3), Frame(3), 1);   // 3
    range.Append(Frame(9), Frame(7), 1);   // nothing, counts -1
    range.Append(Frame(0), Frame(1), 1);   // 0 1
    EXPECT_EQ(range.GetTotalFrames(kFps), 2 + 1 - 1 + 2);
    int total = 0;
    const std::vector<long long> expected = {20 * kFrame, 22 * kFrame, 24 * kFrame,
                                             3 * kFrame,  0,           kFrame};
    EXPECT_EQ(Enumerate(range, kFps, &total), expected);
    EXPECT_EQ(total, 6);

    // Asking at a position directly; past the end and negative positions fail.
    const struct {
        int index;
        bool found;
        long long ticks;
    } rows[] = {{0, true, 20 * kFrame}, {3, true, 3 * kFrame}, {5, true, kFrame},
                {6, false, 0},          {1000, false, 0},      {-1, false, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.index);
        int index = row.index;
        Time time(-7LL);
        int reported = -1;
        EXPECT_EQ(range.GetNextTime(kFps, index, time, &reported), row.found);
        if (row.found) {
            EXPECT_EQ(time.GetTicks(), row.ticks);
            EXPECT_EQ(index, row.index + 1);
            EXPECT_EQ(reported, -1);
        } else {
            EXPECT_EQ(time.GetTicks(), -7);
            EXPECT_EQ(index, row.index);
            EXPECT_EQ(reported, 6);
        }
    }
    // A null total is not written.
    int index = 6;
    Time time;
    EXPECT_FALSE(range.GetNextTime(kFps, index, time, nullptr));
}

TEST(CustomRangeTest, EmptyListCountsAndEnumeratesNothing) {
    const CustomRange range;
    EXPECT_TRUE(range.IsEmpty());
    EXPECT_EQ(range.GetTotalFrames(kFps), 0);
    int total = -1;
    EXPECT_TRUE(Enumerate(range, kFps, &total).empty());
    EXPECT_EQ(total, 0);
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

TEST(CustomRangeTest, AppendTruncatesTheStepAndSetReplaces) {
    const struct {
        float step;
        int expected;
    } rows[] = {{1.0f, 1},
                {2.9f, 2},
                {-2.9f, -2},
                {0.99f, 0},
                {3e9f, 0},
                {-3e9f, 0},
                {2147483520.0f, 2147483520}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.step);
        CustomRange range;
        range.Append(Frame(1), Frame(2), 1);
        range.Set(Frame(3), Frame(4), row.step);
        ASSERT_EQ(range.GetCount(), 1);
        EXPECT_EQ(range.GetItems()[0]->start, Frame(3));
        EXPECT_EQ(range.GetItems()[0]->end, Frame(4));
        EXPECT_EQ(range.GetItems()[0]->step, row.expected);
    }
}

TEST(CustomRangeTest, EqualityIsByItemIdentity) {
    CustomRange a;
    CustomRange b;
    EXPECT_TRUE(a == b); // two empty lists
    EXPECT_FALSE(a != b);

    a.Append(Frame(1), Frame(5), 1);
    EXPECT_TRUE(a == a);
    EXPECT_FALSE(a == b);

    // Same values, different objects.
    b.Append(Frame(1), Frame(5), 1);
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);

    const CustomRange copy(a);
    EXPECT_FALSE(copy == a);
    const CustomRange emptyCopy{CustomRange()};
    EXPECT_TRUE(emptyCopy == CustomRange());
}

TEST(CustomRangeTest, CopiesAreDeepAndLeaveTheSourceAlone) {
    CustomRange source;
    source.Append(Frame(1), Frame(10), 2);
    source.Append(Frame(15), Frame(15), 1);
    const std::vector<CustomTimeRange*> sourceItems = source.GetItems();

    auto expectSameValues = [&](const CustomRange& copy) {
        ASSERT_EQ(copy.GetCount(), 2);
        for (int i = 0; i < 2; ++i) {
            SCOPED_TRACE(i);
            EXPECT_NE(copy.GetItems()[i], sourceItems[i]);
            EXPECT_EQ(copy.GetItems()[i]->start, sourceItems[i]->start);
            EXPECT_EQ(copy.GetItems()[i]->end, sourceItems[i]->end);
            EXPECT_EQ(copy.GetItems()[i]->step, sourceItems[i]->step);
        }
        EXPECT_EQ(source.GetItems(), sourceItems);
    };

    {
        SCOPED_TRACE("copy constructor");
        const CustomRange copy(source);
        expectSameValues(copy);
    }
    {
        SCOPED_TRACE("move constructor copies");
        const CustomRange moved(std::move(source));
        expectSameValues(moved);
    }
    {
        SCOPED_TRACE("copy assignment frees the old items");
        CustomRange target;
        target.Append(Frame(99), Frame(99), 1);
        target = source;
        expectSameValues(target);
    }
    {
        SCOPED_TRACE("move assignment copies");
        CustomRange target;
        target = std::move(source);
        expectSameValues(target);
    }
    {
        SCOPED_TRACE("self-assignment keeps the items");
        CustomRange& alias = source;
        source = alias;
        EXPECT_EQ(source.GetItems(), sourceItems);
    }
    source.DeleteRangeList();
    EXPECT_TRUE(source.IsEmpty());
}

TEST(CustomRangeTest, ObjectsMadeWithNewLiveInTheExtPool) {
    auto* range = new CustomRange;
    range->Set(String("1-10 s2, 15"), kFps, FRAMES);
    auto* copy = new CustomRange(*range);
    EXPECT_EQ(copy->GetTotalFrames(kFps), 5 + 1);
    delete range;
    delete copy;
    auto* item = new CustomTimeRange(Frame(1), Frame(2), 3);
    EXPECT_EQ(item->step, 3);
    delete item;
}

} // namespace
