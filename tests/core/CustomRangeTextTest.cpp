// Tests of a CustomRange read from free text and written back.
//
// Expected items are worked out by hand from the text rules: numbers are times in the unit.

#include "fileio/core/CustomRange.h"

#include "core/CustomRangeText.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

struct Item {
    long long start; // frames
    long long end;   // frames
    int step;
};

// Frames become ticks by the conversion that TimeTest checks against exact arithmetic.
void ExpectItems(const CustomRange& range, const std::vector<Item>& expected, int fps) {
    ASSERT_EQ(range.GetCount(), static_cast<int>(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE("item " + std::to_string(i));
        const CustomTimeRange* item = range.GetItems()[i];
        ASSERT_NE(item, nullptr);
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
        // Step texts that read as 0.
        {"1-10ss2", 24, FRAMES, {{1, 10, 0}}, "1-10 s0"},
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
    EXPECT_TRUE(range.ToString(24, FRAMES, true).IsEmpty());
}

// Every text ToString writes reads back to the same items, at the usual rates and a few
// odd ones, in every unit, single-line and multiline: times of whole frames up to 99999
// frames, and in SMPTE below 100 minutes (a minutes field of 100 or more does not read back).
TEST(CustomRangeTextTest, WrittenTextReadsBackToTheSameItems) {
    struct Setting {
        int fps;
        TimeUnit unit;
        long long maxFrame;
    };
    const Setting settings[] = {
        {24, FRAMES, 99999}, {30, FRAMES, 99999}, {7, FRAMES, 99999},
        {24, CELLS, 99998},  {48, CELLS, 99998},  {24, SMPTE, 99999},
        {30, SMPTE, 99999},  {48, SMPTE, 99999},  {7, SMPTE, 41999},
    };
    std::mt19937 random(20261122);
    for (const Setting& setting : settings) {
        SCOPED_TRACE("fps " + std::to_string(setting.fps) + " unit " +
                     std::to_string(setting.unit));
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
