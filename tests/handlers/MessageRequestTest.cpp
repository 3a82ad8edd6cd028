// MessageRequestTest.cpp - MessageRequest through the message handler and through the
// dialog provider: the sound and the box style of each type, the answer for each button,
// type 11 and above, the platform's own provider beneath, and the string resources.

#include "fileio/handlers/MessageRequest.h"
#include "fileio/handlers/DialogProvider.h"
#include "fileio/handlers/MessageHandler.h"
#include "fileio/handlers/ResourceStrings.h"
#include "fileio/handlers/ScopedHandler.h"
#include "platform/Platform.h"
#include "support/ScriptedDialogProvider.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

namespace {

namespace box = fileio::platform::box;
using fileio::test::ScriptedDialogProvider;

class RecordingMessages : public MessageHandler {
public:
    void MessageRequest(const String& caption, const String& text) override {
        received.emplace_back(std::string(caption.View()) + "|" + std::string(text.View()));
    }
    std::vector<std::string> received;
};

constexpr int kNoSound = -1;

// The sound and the box of every type: MessageBeep and message-box values (MB_OK 0,
// MB_OKCANCEL 1, MB_ABORTRETRYIGNORE 2, MB_YESNOCANCEL 3, MB_YESNO 4, MB_RETRYCANCEL 5,
// icons: stop 16, question 32, exclamation 48, information 64).
TEST(MessageRequestTest, EachTypeHasItsSoundAndBox) {
    struct Row {
        unsigned int type;
        int sound;
        unsigned int style;
    };
    const Row rows[] = {
        {0, 0, 0},         {1, 32, 1},        {2, 32, 5 + 32},    {3, 32, 4},
        {4, 32, 3},        {5, 32, 2 + 32},   {6, 32, 3},         {7, 48, 0 + 48},
        {8, kNoSound, 64}, {9, kNoSound, 16}, {10, kNoSound, 16},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        ScriptedDialogProvider dialogs;
        MessageRequest("The text", row.type, 128);
        if (row.sound == kNoSound) {
            EXPECT_EQ(dialogs.Kinds(), (std::vector<std::string>{"alert", "box"}));
        } else {
            ASSERT_EQ(dialogs.Kinds(), (std::vector<std::string>{"alert", "sound", "box"}));
            EXPECT_EQ(dialogs.calls[1].value, static_cast<unsigned int>(row.sound));
        }
        EXPECT_EQ(dialogs.Of("box")[0].value, row.style);
        EXPECT_EQ(dialogs.Of("box")[0].text, "The text");
    }
}

TEST(MessageRequestTest, ButtonsMapToTheLibrarysAnswers) {
    const std::pair<int, int> rows[] = {
        {box::kAnswerOk, 1},     {box::kAnswerRetry, 1},
        {box::kAnswerYes, 1},    {box::kAnswerCancel, -1},
        {box::kAnswerIgnore, 2}, {box::kAnswerAbort, 0},
        {box::kAnswerNo, 0},     {0, 0}, // a box that could not be shown
    };
    for (const auto& [button, answer] : rows) {
        SCOPED_TRACE(button);
        ScriptedDialogProvider dialogs;
        dialogs.boxAnswer = button;
        EXPECT_EQ(MessageRequest("Question?", 4, 128), answer);
    }
    // Cancel in a type 4 box.
    ScriptedDialogProvider dialogs;
    dialogs.boxAnswer = box::kAnswerCancel;
    EXPECT_EQ(MessageRequest("Save changes?", 4, 128), -1);
}

TEST(MessageRequestTest, TypesAboveTenShowNothingAndAnswerZero) {
    for (unsigned int type : {11u, 12u, 100u, UINT_MAX}) {
        SCOPED_TRACE(type);
        ScriptedDialogProvider dialogs;
        dialogs.boxAnswer = box::kAnswerYes;
        EXPECT_EQ(MessageRequest("text", type, 128), 0);
        EXPECT_EQ(dialogs.Kinds(), (std::vector<std::string>{"alert"}));
    }
}

TEST(MessageRequestTest, AnInstalledHandlerGetsCaptionAndTextAndTheAnswerIsOne) {
    RecordingMessages messages;
    ScopedMessageHandler installed(&messages);
    ScriptedDialogProvider dialogs;
    dialogs.boxAnswer = box::kAnswerNo;
    EXPECT_EQ(MessageRequest("Overwrite?", 3, 128), 1);
    EXPECT_EQ(MessageRequest("Stop.", 11, 128), 1); // even a type that shows nothing
    EXPECT_EQ(MessageRequest("No caption", 0, 999999), 1);
    EXPECT_EQ(MessageRequest(3056u, 7, 128), 1);
    EXPECT_EQ(messages.received,
              (std::vector<std::string>{"FileIO|Overwrite?", "FileIO|Stop.", "|No caption",
                                        "FileIO|Please enter a valid frame number."}));
    EXPECT_TRUE(dialogs.calls.empty()) << "nothing is shown or played";
}

// Without an installed provider the platform's own shows the same sound and box, and its
// button is the answer.
TEST(MessageRequestTest, ThePlatformsProviderShowsTheSameSoundAndBox) {
    ScriptedDialogProvider platform(ScriptedDialogProvider::Layer::PlatformOnly);
    platform.boxAnswer = box::kAnswerIgnore;
    EXPECT_EQ(MessageRequest("Skip the file?", 5, 128), 2);
    EXPECT_EQ(platform.Kinds(),
              (std::vector<std::string>{"alert", "platform-sound", "platform-box"}));
    EXPECT_EQ(platform.calls[1].value, 32u);
    EXPECT_EQ(platform.calls[2].value, 2u + 32u);
    EXPECT_EQ(platform.calls[2].text, "Skip the file?");
}

// A host provider that draws only the box: the sound stays the platform's.
TEST(MessageRequestTest, AProviderOverridingOnlyTheBoxKeepsThePlatformsSound) {
    class BoxOnly : public DialogProvider {
    public:
        int ShowMessageBox(const String& text, unsigned int style) override {
            shown.emplace_back(std::string(text.View()) + "|" + std::to_string(style));
            return box::kAnswerNo;
        }
        std::vector<std::string> shown;
    };
    ScriptedDialogProvider platform(ScriptedDialogProvider::Layer::PlatformOnly);
    BoxOnly host;
    ScopedDialogProvider installed(&host);
    EXPECT_EQ(MessageRequest("Overwrite?", 3, 128), 0);
    EXPECT_EQ(host.shown, (std::vector<std::string>{"Overwrite?|4"}));
    EXPECT_EQ(platform.Kinds(), (std::vector<std::string>{"alert", "platform-sound"}));
    EXPECT_EQ(platform.calls[1].value, 32u);
}

TEST(MessageRequestTest, TheIdFormShowsTheResourceText) {
    ScriptedDialogProvider dialogs;
    MessageRequest(3056u, 7, 128);
    MessageRequest(123456u, 0, 128); // an unknown id shows an empty text
    ASSERT_EQ(dialogs.Of("box").size(), 2u);
    EXPECT_EQ(dialogs.Of("box")[0].text, "Please enter a valid frame number.");
    EXPECT_EQ(dialogs.Of("box")[0].value, 48u);
    EXPECT_EQ(dialogs.Of("box")[1].text, "");
}

TEST(ResourceStringsTest, HoldsTheLibrarysTexts) {
    const std::pair<unsigned int, const char*> rows[] = {
        {1, "Locate File: %1"},
        {17, "Cancel all remaining missing files during this load."},
        {3056, "Please enter a valid frame number."},
        {4356, "Loading [ %1 ]"},
        {6583, "OK"},
        {6585, "Don't show this again"},
    };
    for (const auto& [id, text] : rows) {
        SCOPED_TRACE(id);
        EXPECT_TRUE(GetResourceString(id).Compare(String(text), true));
    }
    // The read-only message names the file in place of "%1".
    EXPECT_NE(GetResourceString(61732).View().find("%1"), std::string_view::npos);
    EXPECT_FALSE(GetResourceString(128).IsEmpty());
    for (unsigned int unknown : {0u, 2u, 129u, 6580u, 61733u, UINT_MAX}) {
        SCOPED_TRACE(unknown);
        EXPECT_EQ(GetResourceString(unknown).Get(), nullptr);
    }
}

} // namespace
