// MessageRequestTest.cpp - MessageRequest, and the lookup of the string resources.

#include "fileio/handlers/MessageRequest.h"
#include "fileio/handlers/ResourceStrings.h"
#include "fileio/handlers/ScopedHandler.h"
#include "platform/Platform.h"
#include "support/RecordingMessages.h"
#include "support/ScriptedDialogProvider.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

namespace box = fileio::platform::box;
using namespace fileio::test;

constexpr int kNoSound = -1;
constexpr int kNoBox = -1;

// The sound and the box of each type (sounds and styles as in DialogProvider.h), and the
// answer for the button pressed; types past 10 show nothing and answer 0.
TEST(MessageRequestTest, EachTypeHasItsSoundAndBoxAndEachButtonItsAnswer) {
    const struct {
        unsigned int type;
        int sound, style, button, answer;
    } rows[] = {
        {0, 0, 0, box::kAnswerOk, 1},
        {1, 32, 1, box::kAnswerCancel, -1},
        {2, 32, 5 + 32, box::kAnswerRetry, 1},
        {3, 32, 4, box::kAnswerYes, 1},
        {4, 32, 3, box::kAnswerNo, 0},
        {5, 32, 2 + 32, box::kAnswerIgnore, 2},
        {7, 48, 0 + 48, 0, 0}, // a box that could not be shown
        {8, kNoSound, 64, box::kAnswerOk, 1},
        {10, kNoSound, 16, box::kAnswerOk, 1},
        {11, kNoSound, kNoBox, box::kAnswerOk, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        ScriptedDialogProvider dialogs;
        dialogs.boxAnswer = row.button;
        EXPECT_EQ(MessageRequest("The text", row.type, 128), row.answer);
        std::vector<std::string> kinds{"alert"};
        if (row.sound != kNoSound)
            kinds.push_back("sound");
        if (row.style != kNoBox)
            kinds.push_back("box");
        ASSERT_EQ(dialogs.Kinds(), kinds);
        if (row.sound != kNoSound) {
            EXPECT_EQ(dialogs.calls[1].value, static_cast<unsigned int>(row.sound));
        }
        if (row.style != kNoBox) {
            EXPECT_EQ(dialogs.calls.back().value, static_cast<unsigned int>(row.style));
        }
    }
}

TEST(MessageRequestTest, AnInstalledHandlerGetsCaptionAndTextAndTheAnswerIsOne) {
    RecordingMessages messages;
    ScopedMessageHandler installed(&messages);
    ScriptedDialogProvider dialogs;
    dialogs.boxAnswer = box::kAnswerNo;
    EXPECT_EQ(MessageRequest("Overwrite?", 3, 128), 1);
    EXPECT_EQ(MessageRequest("Stop.", 11, 999999), 1); // even a type that shows nothing
    EXPECT_EQ(MessageRequest(3056u, 7, 128), 1);
    ASSERT_EQ(messages.messages.size(), 3u);
    EXPECT_EQ(messages.messages[0].caption + "|" + messages.messages[0].text, "FileIO|Overwrite?");
    EXPECT_EQ(messages.messages[1].caption + "|" + messages.messages[1].text, "|Stop.");
    EXPECT_EQ(messages.messages[2].text, "Please enter a valid frame number.");
    EXPECT_TRUE(dialogs.calls.empty()) << "nothing is shown or played";
}

// The texts themselves are checked where they are shown; here the lookup's edges.
TEST(ResourceStringsTest, FindsTheFirstAndLastIdsAndNothingBetween) {
    EXPECT_EQ(GetResourceString(1).View(), "Locate File: %1");
    EXPECT_EQ(GetResourceString(61732).View(), "The file %1 is read-only and cannot be saved.");
    for (unsigned int unknown : {0u, 2u, 61733u})
        EXPECT_EQ(GetResourceString(unknown).Get(), nullptr) << unknown;
}

} // namespace
