// Tests of the dialog exchange object and the exchange of times with edit controls.
#include "fileio/ui/DataExchange.h"

#include "fileio/handlers/ScopedHandler.h"
#include "support/RecordingMessages.h"
#include "support/ScriptedDialogProvider.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

// A dialog of edit controls kept in a map, recording every write.
class FakeDialog : public DataExchangeHost {
public:
    String GetControlText(int id) override {
        ++reads;
        return String(texts[id].c_str());
    }
    void SetControlText(int id, const String& text) override {
        texts[id] = text.Get() ? text.Get() : "";
        written.push_back(id);
    }

    std::map<int, std::string> texts;
    std::vector<int> written;
    int reads = 0;
};

constexpr int kStart = 1001;
constexpr int kEnd = 1002;

using fileio::test::RecordingMessages;
using fileio::test::ScriptedDialogProvider;

// String resource 3056 under the application's caption (resource 128).
constexpr const char* kInvalidFrame = "Please enter a valid frame number.";
constexpr const char* kCaption = "FileIO";

TEST(DataExchange, LoadingShowsTheTimeInItsUnit) {
    struct Case {
        long long ticks;
        int fps;
        int unit;
        int zeroBasedCells;
        const char* text;
    };
    const Case cases[] = {
        {202500, 30, SMPTE, 0, "00:01:15"},
        {67500, 24, FRAMES, 0, "12"},
        {67500, 24, CELLS, 0, "13"},
        {67500, 24, CELLS, 2, "12"}, // any non-zero value means zero-based cells
        {0, 24, 7, 0, ""},           // no such unit: the null string, shown as empty text
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.ticks << " ticks, unit " << c.unit);
        FakeDialog dialog;
        dialog.texts[kStart] = "unchanged?";
        DataExchange dx(dialog, false);
        Time value(c.ticks);
        DDX_Time(&dx, kStart, value, c.fps, c.unit, c.zeroBasedCells);
        EXPECT_EQ(value.GetTicks(), c.ticks);
        EXPECT_EQ(dialog.texts[kStart], c.text);
        EXPECT_EQ(dialog.reads, 0);
        EXPECT_FALSE(dx.HasFailed());
    }
}

TEST(DataExchange, SavingReadsTheTextAndShowsItBackNormalised) {
    struct Case {
        const char* entered;
        int fps;
        TimeUnit unit;
        int zeroBasedCells;
        long long ticks;
        const char* shown;
    };
    const Case cases[] = {
        {"250", 30, SMPTE, 0, 495000, "00:03:20"}, // 2 s 50 frames = 3 s 20 frames
        {"1:30", 30, SMPTE, 0, 270000, "00:02:00"},
        {" 12 ", 24, FRAMES, 0, 67500, "12"},
        {"13", 24, CELLS, 0, 67500, "13"},
        {"12", 24, CELLS, 1, 67500, "12"},
        {"junk", 24, FRAMES, 0, 0, "0"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.entered);
        FakeDialog dialog;
        dialog.texts[kStart] = c.entered;
        DataExchange dx(dialog, true);
        Time value(5LL);
        DDX_Time(&dx, kStart, value, c.fps, c.unit, c.zeroBasedCells);
        EXPECT_EQ(value.GetTicks(), c.ticks);
        EXPECT_EQ(dialog.texts[kStart], c.shown);
        EXPECT_FALSE(dx.HasFailed());
    }
}

TEST(DataExchange, SavingReadsAtMost31Characters) {
    // 16 fields of one digit with 15 colons make 31 characters; the 32nd and 33rd (":2")
    // are cut off, so the last field read is the "1": one frame, not 1 s and 2 frames.
    FakeDialog dialog;
    dialog.texts[kStart] = "0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:1:2";
    DataExchange dx(dialog, true);
    Time value;
    DDX_Time(&dx, kStart, value, 30, SMPTE, 0);
    EXPECT_EQ(value.GetTicks(), 4500);

    dialog.texts[kStart] = "0:0:0:0:0:0:0:0:0:0:0:0:0:1:2";
    DDX_Time(&dx, kStart, value, 30, SMPTE, 0);
    EXPECT_EQ(value.GetTicks(), 144000); // short enough: 1 s 2 frames
}

TEST(DataExchange, MinMaxTimeFailsOnlyWhenSavingOutOfRange) {
    const Time min(0LL), max(135000LL);
    struct Case {
        long long value;
        bool saving;
        bool fails;
    };
    const Case cases[] = {
        {0, true, false},       {135000, true, false}, // the bounds are inside
        {67500, true, false},   {-1, true, true},
        {135001, true, true},   {-1, false, false}, // loading never fails
        {135001, false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.value << (c.saving ? " saving" : " loading"));
        RecordingMessages messages;
        ScopedMessageHandler installed(&messages);
        FakeDialog dialog;
        DataExchange dx(dialog, c.saving);
        DDV_MinMaxTime(&dx, Time(c.value), min, max, 30, SMPTE);
        EXPECT_EQ(dx.HasFailed(), c.fails);
        DataExchange withIntUnit(dialog, c.saving);
        DDV_MinMaxTime(&withIntUnit, Time(c.value), min, max, 30, 1);
        EXPECT_EQ(withIntUnit.HasFailed(), c.fails);
        // Each failure tells the user once; a pass that does not fail says nothing.
        ASSERT_EQ(messages.messages.size(), c.fails ? 2u : 0u);
        for (const RecordingMessages::Message& message : messages.messages) {
            EXPECT_EQ(message.caption, kCaption);
            EXPECT_EQ(message.text, kInvalidFrame);
        }
    }
}

TEST(DataExchange, AFailureNamesTheControlAndStopsTheRestOfThePass) {
    RecordingMessages messages;
    ScopedMessageHandler installed(&messages);
    FakeDialog dialog;
    dialog.texts[kStart] = "200"; // 2 s at 30 fps, beyond the 1 s allowed
    dialog.texts[kEnd] = "10";
    DataExchange dx(dialog, true);
    EXPECT_EQ(dx.GetFailedControl(), -1);

    Time start, end(7LL);
    DDX_Time(&dx, kStart, start, 30, SMPTE, 0);
    DDV_MinMaxTime(&dx, start, Time(0LL), Time(1), 30, SMPTE);
    ASSERT_TRUE(dx.HasFailed());
    EXPECT_EQ(dx.GetFailedControl(), kStart);
    EXPECT_EQ(start.GetTicks(), 270000);

    // The rest of the pass does nothing: the end time and its control stay as they were.
    const std::vector<int> writtenBefore = dialog.written;
    DDX_Time(&dx, kEnd, end, 30, SMPTE, 0);
    DDV_MinMaxTime(&dx, end, Time(1), Time(2), 30, SMPTE);
    EXPECT_EQ(end.GetTicks(), 7);
    EXPECT_EQ(dialog.texts[kEnd], "10");
    EXPECT_EQ(dialog.written, writtenBefore);
    EXPECT_EQ(dx.GetFailedControl(), kStart);
    // Only the first failure was shown.
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(messages.messages[0].text, kInvalidFrame);
}

// Without a message handler the failure is a box of the exclamation type: the exclamation
// sound (48) and an OK box with the exclamation icon (MB_OK | MB_ICONEXCLAMATION = 48).
TEST(DataExchange, AFailureWithoutAHandlerShowsAnExclamationBox) {
    ASSERT_EQ(GetMessageHandler(), nullptr);
    ScriptedDialogProvider dialogs;
    FakeDialog dialog;
    DataExchange dx(dialog, true);
    DDV_MinMaxTime(&dx, Time(-1LL), Time(0LL), Time(1), 30, SMPTE);
    ASSERT_TRUE(dx.HasFailed());

    const std::vector<ScriptedDialogProvider::Call> sounds = dialogs.Of("sound");
    ASSERT_EQ(sounds.size(), 1u);
    EXPECT_EQ(sounds[0].value, 48u);
    const std::vector<ScriptedDialogProvider::Call> boxes = dialogs.Of("box");
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].value, 48u);
    EXPECT_EQ(boxes[0].text, kInvalidFrame);
}

TEST(DataExchange, ControlTextAccess) {
    FakeDialog dialog;
    dialog.texts[3] = "abcdef";
    DataExchange dx(dialog, true);
    EXPECT_TRUE(dx.IsSaving());
    EXPECT_STREQ(dx.GetControlText(3, 4).Get(), "abcd");
    EXPECT_STREQ(dx.GetControlText(3, 6).Get(), "abcdef");
    EXPECT_STREQ(dx.GetControlText(3, -1).Get(), "abcdef");
    EXPECT_EQ(dx.GetControlText(4, 10).Get(), nullptr); // an empty control
    dx.Fail();
    EXPECT_EQ(dx.GetFailedControl(), 4);
    dx.SetControlText(3, String("x"));
    dx.Fail();
    EXPECT_EQ(dx.GetFailedControl(), 4); // the first failure is kept
    EXPECT_EQ(dialog.texts[3], "x");
}

} // namespace
