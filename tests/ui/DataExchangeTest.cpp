// Tests of the dialog exchange object and the exchange of times with edit controls.
#include "fileio/ui/DataExchange.h"

#include "fileio/handlers/ScopedHandler.h"
#include "support/RecordingMessages.h"
#include "support/ScriptedDialogProvider.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

class FakeDialog : public DataExchangeHost {
public:
    String GetControlText(int id) override { return String(texts[id].c_str()); }
    void SetControlText(int id, const String& text) override {
        texts[id] = text.View();
        ++writes;
    }
    std::map<int, std::string> texts;
    int writes = 0;
};

constexpr int kStart = 1001;
constexpr int kEnd = 1002;
constexpr const char* kInvalidFrame = "Please enter a valid frame number."; // resource 3056

using fileio::test::RecordingMessages;
using fileio::test::ScriptedDialogProvider;

// Loading shows the variable; saving reads at most 31 characters and shows the value back
// normalised. Any non-zero zeroBasedCells means zero-based cells.
TEST(DataExchange, TimesAreShownAndReadInTheirUnit) {
    struct Case {
        const char* entered; // null: loading
        long long ticks;     // loading: the value shown; saving: the value read
        int fps, unit, zeroBasedCells;
        const char* shown;
    };
    const Case cases[] = {
        {nullptr, 67500, 24, CELLS, 0, "13"},
        {nullptr, 67500, 24, CELLS, 2, "12"},
        {"250", 495000, 30, SMPTE, 0, "00:03:20"},
        {"12", 67500, 24, CELLS, 1, "12"},
        // 31 characters end with the "1"; the ":2" behind them is cut off.
        {"0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:1:2", 4500, 30, SMPTE, 0, "00:00:01"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << (c.entered ? c.entered : "loading") << " " << c.ticks);
        FakeDialog dialog;
        dialog.texts[kStart] = c.entered ? c.entered : "unchanged?";
        DataExchange dx(dialog, c.entered != nullptr);
        Time value(c.entered ? 5LL : c.ticks);
        DDX_Time(&dx, kStart, value, c.fps, c.unit, c.zeroBasedCells);
        EXPECT_EQ(value.GetTicks(), c.ticks);
        EXPECT_EQ(dialog.texts[kStart], c.shown);
    }
}

TEST(DataExchange, MinMaxTimeFailsOnlyWhenSavingOutOfRange) {
    const struct {
        long long value;
        bool saving, fails;
    } cases[] = {
        {0, true, false},     {135000, true, false}, {-1, true, true},
        {135001, true, true}, {-1, false, false},    {135001, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.value << (c.saving ? " saving" : " loading"));
        RecordingMessages messages;
        ScopedMessageHandler installed(&messages);
        FakeDialog dialog;
        DataExchange dx(dialog, c.saving), withIntUnit(dialog, c.saving);
        DDV_MinMaxTime(&dx, Time(c.value), Time(0LL), Time(135000LL), 30, SMPTE);
        DDV_MinMaxTime(&withIntUnit, Time(c.value), Time(0LL), Time(135000LL), 30, 1);
        EXPECT_EQ(dx.HasFailed(), c.fails);
        EXPECT_EQ(withIntUnit.HasFailed(), c.fails);
        ASSERT_EQ(messages.messages.size(), c.fails ? 2u : 0u);
        for (const RecordingMessages::Message& message : messages.messages)
            EXPECT_EQ(message.caption + "|" + message.text, std::string("FileIO|") + kInvalidFrame);
    }
}

// The first failure names its control and is shown once, without a message handler as an
// OK box with the exclamation icon (48); the rest of the pass does nothing.
TEST(DataExchange, AFailureIsShownOnceAndStopsTheRestOfThePass) {
    ScriptedDialogProvider dialogs;
    FakeDialog dialog;
    dialog.texts[kStart] = "200"; // 2 s at 30 fps, beyond the 1 s allowed
    dialog.texts[kEnd] = "10";
    DataExchange dx(dialog, true);
    Time start, end(7LL);
    DDX_Time(&dx, kStart, start, 30, SMPTE, 0);
    DDV_MinMaxTime(&dx, start, Time(0LL), Time(1), 30, SMPTE);
    EXPECT_EQ(start.GetTicks(), 270000);

    const int writes = dialog.writes;
    DDX_Time(&dx, kEnd, end, 30, SMPTE, 0);
    DDV_MinMaxTime(&dx, end, Time(1), Time(2), 30, SMPTE);
    dx.SetControlText(3, String("x"));
    dx.Fail();
    EXPECT_EQ(end.GetTicks(), 7);
    EXPECT_EQ(dialog.writes, writes + 1);
    EXPECT_EQ(dx.GetFailedControl(), kStart);
    const std::vector<ScriptedDialogProvider::Call> boxes = dialogs.Of("box");
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].value, 48u);
    EXPECT_EQ(boxes[0].text, kInvalidFrame);
}

TEST(DataExchange, ControlTextIsCutAtMaxLength) {
    FakeDialog dialog;
    dialog.texts[3] = "abcdef";
    DataExchange dx(dialog, true);
    for (const auto& [maxLength, text] :
         {std::pair{0, ""}, {4, "abcd"}, {6, "abcdef"}, {-1, "abcdef"}})
        EXPECT_EQ(dx.GetControlText(3, maxLength).View(), text) << maxLength;
}

} // namespace
