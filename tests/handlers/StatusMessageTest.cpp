// StatusMessageTest.cpp - the scoped status line: the exact texts the handler receives for
// nested and kept messages, the visibility switch, the display count, and the progress
// forwards with and without a handler.

#include "fileio/handlers/StatusMessage.h"
#include "fileio/handlers/ScopedHandler.h"
#include "fileio/handlers/StatusHandler.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

/// Records every call, with its argument, as one text: "text:A", "init:T/2/0/100" ...
class RecordingStatus : public StatusHandler {
public:
    void SetStatusText(const String& text) override {
        calls.push_back("text:" + std::string(text.View()));
        // A handler may read the current text while it receives one.
        seenDuringCall.emplace_back(StatusMessage::GetStatusMessage().View());
    }
    void StepProgress() override { calls.push_back("step"); }
    void SetProgress(int position) override { calls.push_back("set:" + std::to_string(position)); }
    void UninitializeProgressControl() override { calls.push_back("uninit"); }
    bool InitializeProgressControl(const char* text, unsigned char type, int low,
                                   int high) override {
        calls.push_back("init:" + std::string(text) + "/" + std::to_string(type) + "/" +
                        std::to_string(low) + "/" + std::to_string(high));
        return initAnswer;
    }
    bool IsProgressControlActive() const override { return true; }
    unsigned char GetCurrentType() override { return 3; }

    std::vector<std::string> calls;
    std::vector<std::string> seenDuringCall;
    bool initAnswer = true;
};

std::string Current() {
    return std::string(StatusMessage::GetStatusMessage().View());
}

class StatusMessageTest : public ::testing::Test {
protected:
    RecordingStatus status;
    ScopedStatusHandler installed{&status};
};

// A then B nested: the handler sees A, B, A (when B ends) and the text before A (when A
// ends). Between the end of B and the end of A the current text is empty.
TEST_F(StatusMessageTest, NestedMessagesPutTheEarlierTextBack) {
    {
        StatusMessage before("Before");
        status.calls.clear();
        {
            StatusMessage a("A");
            EXPECT_EQ(Current(), "A");
            {
                StatusMessage b("B");
                EXPECT_EQ(Current(), "B");
            }
            EXPECT_EQ(Current(), "");
        }
        EXPECT_EQ(status.calls,
                  (std::vector<std::string>{"text:A", "text:B", "text:A", "text:Before"}));
        EXPECT_EQ(Current(), "");
    }
    EXPECT_EQ(status.calls.back(), "text:"); // the text before "Before" was empty
    EXPECT_EQ(status.seenDuringCall.back(), "");
    EXPECT_FALSE(StatusMessage::IsDisplaying());
}

// A kept message puts its own text back when it ends, not the earlier one. Since an
// ending message empties the current text, a message made after it saves the empty text.
TEST_F(StatusMessageTest, AKeptMessageShowsItsOwnTextOnceMore) {
    {
        StatusMessage before("Before");
        {
            StatusMessage a("A");
            {
                StatusMessage kept("Saved", true);
                EXPECT_EQ(Current(), "Saved");
            }
            EXPECT_EQ(Current(), "");
            { StatusMessage b("B"); }
        }
    }
    EXPECT_EQ(status.calls,
              (std::vector<std::string>{"text:Before", "text:A", "text:Saved", "text:Saved",
                                        "text:B", "text:", "text:Before", "text:"}));
    // Each text was current while the handler received it.
    EXPECT_EQ(status.seenDuringCall,
              (std::vector<std::string>{"Before", "A", "Saved", "Saved", "B", "", "Before", ""}));
}

TEST_F(StatusMessageTest, TheIdFormTakesTheResourceText) {
    {
        StatusMessage loading(4356u);
        EXPECT_EQ(Current(), "Loading [ %1 ]");
    }
    EXPECT_EQ(status.calls.front(), "text:Loading [ %1 ]");
}

// Hidden texts still follow the messages; Display shows the current text again.
TEST_F(StatusMessageTest, InvisibleMessagesStillFollowTheCurrentText) {
    StatusMessage::SetVisible(false);
    {
        StatusMessage a("A");
        StatusMessage::Display();
        {
            StatusMessage b("B");
            EXPECT_EQ(Current(), "B");
        }
    }
    EXPECT_TRUE(status.calls.empty());
    StatusMessage::SetVisible(true);
    StatusMessage a("Shown");
    StatusMessage::Display();
    EXPECT_EQ(status.calls, (std::vector<std::string>{"text:Shown", "text:Shown"}));
}

TEST_F(StatusMessageTest, CountsMessagesAndDisplayRequests) {
    EXPECT_FALSE(StatusMessage::IsDisplaying());
    StatusMessage::SetDisplaying(false); // at 0 it stays 0
    EXPECT_FALSE(StatusMessage::IsDisplaying());
    StatusMessage::SetDisplaying(true);
    EXPECT_TRUE(StatusMessage::IsDisplaying());
    {
        StatusMessage a("A");
        StatusMessage::SetDisplaying(false);
        EXPECT_TRUE(StatusMessage::IsDisplaying()); // the message still counts
    }
    EXPECT_FALSE(StatusMessage::IsDisplaying());
    StatusMessage::SetDisplaying(true);
    StatusMessage::SetDisplaying(true);
    StatusMessage::SetDisplaying(false);
    EXPECT_TRUE(StatusMessage::IsDisplaying());
    StatusMessage::SetDisplaying(false);
    EXPECT_FALSE(StatusMessage::IsDisplaying());
}

TEST_F(StatusMessageTest, ProgressCallsAreForwarded) {
    EXPECT_TRUE(StatusMessage::InitializeProgressControl("Loading [ a.mdl ]", 2, 0, 100));
    EXPECT_EQ(Current(), "Loading [ a.mdl ]"); // current, without a status text call
    StatusMessage::SetProgress(40);
    StatusMessage::StepProgress();
    EXPECT_TRUE(StatusMessage::IsProgressControlActive());
    EXPECT_EQ(StatusMessage::GetCurrentType(), 3);
    StatusMessage::UninitializeProgressControl();
    status.initAnswer = false;
    EXPECT_FALSE(StatusMessage::InitializeProgressControl("again", 0, 1, 2));
    EXPECT_EQ(status.calls, (std::vector<std::string>{"init:Loading [ a.mdl ]/2/0/100", "set:40",
                                                      "step", "uninit", "init:again/0/1/2"}));
    StatusMessage::Display();
    EXPECT_EQ(status.calls.back(), "text:again");
}

TEST(StatusMessageWithoutHandlerTest, ForwardsDoNothing) {
    ASSERT_EQ(StatusMessage::SetHandler(nullptr), nullptr);
    const std::string before = Current();
    EXPECT_FALSE(StatusMessage::InitializeProgressControl("text", 1, 0, 100));
    EXPECT_EQ(Current(), before); // untouched without a handler
    StatusMessage::SetProgress(1);
    StatusMessage::StepProgress();
    StatusMessage::UninitializeProgressControl();
    StatusMessage::Display();
    EXPECT_FALSE(StatusMessage::IsProgressControlActive());
    EXPECT_EQ(StatusMessage::GetCurrentType(), 0);
    {
        StatusMessage a("A");
        EXPECT_EQ(Current(), "A");
    }
    EXPECT_EQ(Current(), "");
}

} // namespace
