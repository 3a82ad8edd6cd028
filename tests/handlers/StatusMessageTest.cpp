// StatusMessageTest.cpp - the scoped status line and the progress forwards.

#include "fileio/handlers/StatusMessage.h"
#include "fileio/handlers/ScopedHandler.h"
#include "support/RecordingStatus.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using fileio::test::RecordingStatus;

std::string Current() {
    return std::string(StatusMessage::GetStatusMessage().View());
}

class StatusMessageTest : public ::testing::Test {
protected:
    RecordingStatus status;
    ScopedStatusHandler installed{&status};
};

// Nested messages: each end puts the earlier text back and then empties the current text,
// so a message made after that saves the empty text; a kept message puts its own text back.
TEST_F(StatusMessageTest, EachEndingMessagePutsItsSavedTextBack) {
    {
        StatusMessage before(4356u); // the id form: "Loading [ %1 ]"
        {
            StatusMessage a("A");
            { StatusMessage b("B"); }
            { StatusMessage kept("Saved", true); }
            { StatusMessage c("C"); }
        }
    }
    EXPECT_FALSE(StatusMessage::IsDisplaying());
    EXPECT_EQ(status.calls, (std::vector<std::string>{
                                "text:Loading [ %1 ]", "text:A", "text:B", "text:A", "text:Saved",
                                "text:Saved", "text:C", "text:", "text:Loading [ %1 ]", "text:"}));
}

// Hidden texts still follow the messages; Display shows the current text again.
TEST_F(StatusMessageTest, InvisibleMessagesStillFollowTheCurrentText) {
    StatusMessage::SetVisible(false);
    {
        StatusMessage a("A");
        StatusMessage::Display();
        EXPECT_EQ(Current(), "A");
    }
    EXPECT_TRUE(status.calls.empty());
    StatusMessage::SetVisible(true);
    StatusMessage a("Shown");
    StatusMessage::Display();
    EXPECT_EQ(status.calls, (std::vector<std::string>{"text:Shown", "text:Shown"}));
}

// Messages and display requests count together; a request less at 0 stays at 0.
TEST_F(StatusMessageTest, CountsMessagesAndDisplayRequests) {
    StatusMessage::SetDisplaying(false); // at 0 it stays at 0
    EXPECT_FALSE(StatusMessage::IsDisplaying());
    StatusMessage::SetDisplaying(true);
    {
        StatusMessage a("A");
        StatusMessage::SetDisplaying(false);
        EXPECT_TRUE(StatusMessage::IsDisplaying()); // the message still counts
    }
    EXPECT_FALSE(StatusMessage::IsDisplaying());
}

TEST_F(StatusMessageTest, ProgressCallsAreForwarded) {
    status.type = 3;
    EXPECT_TRUE(StatusMessage::InitializeProgressControl("Loading [ a.mdl ]", 2, 0, 100));
    StatusMessage::SetProgress(40);
    StatusMessage::StepProgress();
    EXPECT_TRUE(StatusMessage::IsProgressControlActive());
    EXPECT_EQ(StatusMessage::GetCurrentType(), 3);
    StatusMessage::UninitializeProgressControl();
    status.initAnswer = false;
    EXPECT_FALSE(StatusMessage::InitializeProgressControl("again", 0, 1, 2));
    StatusMessage::Display(); // the progress text is the current text, set without a call
    EXPECT_EQ(status.calls,
              (std::vector<std::string>{"init:Loading [ a.mdl ]/2/0/100", "set:40", "step",
                                        "uninit", "init:again/0/1/2", "text:again"}));
    { StatusMessage reset(""); } // leaves the current text empty again
}

TEST(StatusMessageWithoutHandlerTest, ForwardsDoNothing) {
    ASSERT_EQ(StatusMessage::SetHandler(nullptr), nullptr);
    EXPECT_FALSE(StatusMessage::InitializeProgressControl("text", 1, 0, 100));
    EXPECT_EQ(Current(), ""); // untouched without a handler
    EXPECT_FALSE(StatusMessage::IsProgressControlActive());
    EXPECT_EQ(StatusMessage::GetCurrentType(), 0);
    StatusMessage a("A");
    EXPECT_EQ(Current(), "A");
}

} // namespace
