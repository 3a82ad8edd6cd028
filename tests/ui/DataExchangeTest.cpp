// Tests of the dialog exchange object and the exchange of times with edit controls.
#include "fileio/ui/DataExchange.h"

#include "fileio/handlers/ScopedHandler.h"
#include "support/RecordingMessages.h"
#include "support/ScriptedDialogProvider.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <tuple>

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
    // The text entered (null: loading), the ticks (loading: the value shown; saving: the
    // value read), fps, unit, zeroBasedCells and the text shown.
    const std::tuple<const char*, long long, int, int, int, const char*> cases[] = {
        {nullptr, 67500, 24, CELLS, 0, "13"},
        {nullptr, 67500, 24, CELLS, 2, "12"},
        {"250", 495000, 30, SMPTE, 0, "00:03:20"},
        {"12", 67500, 24, CELLS, 1, "12"},
        // 31 characters end with the "1"; the ":2" behind them is cut off.
        {"0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:1:2", 4500, 30, SMPTE, 0, "00:00:01"},
    };
    for (const auto& [entered, ticks, fps, unit, zeroBasedCells, shown] : cases) {
        SCOPED_TRACE(::testing::Message() << (entered ? entered : "loading") << " " << ticks);
        FakeDialog dialog;
        dialog.texts[kStart] = entered ? entered : "unchanged?";
        DataExchange dx(dialog, entered != nullptr);
        Time value(entered ? 5LL : ticks);
        DDX_Time(&dx, kStart, value, fps, unit, zeroBasedCells);
        EXPECT_EQ(value.GetTicks(), ticks);
        EXPECT_EQ(dialog.texts[kStart], shown);
    }
}

TEST(DataExchange, MinMaxTimeFailsOnlyWhenSavingOutOfRange) {
    // The value, whether saving, and whether that fails.
    const std::tuple<long long, bool, bool> cases[] = {
        {0, true, false},     {135000, true, false}, {-1, true, true},
        {135001, true, true}, {-1, false, false},    {135001, false, false},
    };
    for (const auto& [value, saving, fails] : cases) {
        SCOPED_TRACE(::testing::Message() << value << (saving ? " saving" : " loading"));
        RecordingMessages messages;
        ScopedMessageHandler installed(&messages);
        FakeDialog dialog;
        DataExchange dx(dialog, saving), withIntUnit(dialog, saving);
        DDV_MinMaxTime(&dx, Time(value), Time(0LL), Time(135000LL), 30, SMPTE);
        DDV_MinMaxTime(&withIntUnit, Time(value), Time(0LL), Time(135000LL), 30, 1);
        EXPECT_EQ(dx.HasFailed(), fails);
        EXPECT_EQ(withIntUnit.HasFailed(), fails);
        ASSERT_EQ(messages.messages.size(), fails ? 2u : 0u);
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
    EXPECT_EQ(dx.GetControlText(4, 10).Get(), nullptr); // an empty control stays the null text
}

} // namespace
