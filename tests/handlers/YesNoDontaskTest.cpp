// YesNoDontaskTest.cpp - the don't-ask question: the settings it reads and writes in the
// profile, which answer it replays, what the dialog provider is asked, and the texts the
// platform's own provider puts in its dialog.

#include "fileio/handlers/YesNoDontask.h"
#include "fileio/handlers/ScopedHandler.h"
#include "fileio/settings/ApplicationProfile.h"
#include "support/MemoryProfile.h"
#include "support/ScriptedDialogProvider.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

using fileio::test::MemoryProfile;
using fileio::test::ScriptedDialogProvider;

class YesNoDontaskTest : public ::testing::Test {
protected:
    YesNoDontask::Answer Ask(YesNoDontask::Answer remember, bool okOnly = false) {
        return YesNoDontask::Ask("Caption", "Replace the file?", "Questions", "Replace", remember,
                                 okOnly);
    }
    std::optional<std::string> Stored(const char* name) const {
        return profile.Stored("Questions", name);
    }

    MemoryProfile profile;
    ScopedHandler<ApplicationProfile> installed{&SetApplicationProfile, &profile};
};

TEST_F(YesNoDontaskTest, AsksWhileTheAskSwitchIsOnAndStoresNothingUnticked) {
    ScriptedDialogProvider dialogs;
    dialogs.answerYes = true;
    EXPECT_EQ(Ask(YesNoDontask::AnswerGiven), YesNoDontask::Yes);
    dialogs.answerYes = false;
    EXPECT_EQ(Ask(YesNoDontask::AnswerGiven), YesNoDontask::No);
    EXPECT_EQ(dialogs.Of("dontask").size(), 2u);
    EXPECT_TRUE(profile.values.empty());
    // It read key + "Ask" from the section, with "ON" as the default text.
    ASSERT_FALSE(profile.calls.empty());
    EXPECT_EQ(profile.calls[0].section, "Questions");
    EXPECT_EQ(profile.calls[0].entry, "ReplaceAsk");
    EXPECT_EQ(profile.calls[0].text, "ON");
}

// What a ticked box stores as the answer to replay, for each remember value and answer.
TEST_F(YesNoDontaskTest, ATickedBoxStoresTheAnswerToReplay) {
    struct Row {
        YesNoDontask::Answer remember;
        bool pressedYes;
        YesNoDontask::Answer given;
        const char* stored;
    };
    const Row rows[] = {
        {YesNoDontask::AnswerGiven, true, YesNoDontask::Yes, "ON"},
        {YesNoDontask::AnswerGiven, false, YesNoDontask::No, "OFF"},
        {YesNoDontask::Yes, false, YesNoDontask::No, "ON"},
        {YesNoDontask::Yes, true, YesNoDontask::Yes, "ON"},
        {YesNoDontask::No, true, YesNoDontask::Yes, "OFF"},
        {YesNoDontask::No, false, YesNoDontask::No, "OFF"},
        {static_cast<YesNoDontask::Answer>(7), true, YesNoDontask::Yes, "OFF"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.remember) * 10 + (row.pressedYes ? 1 : 0));
        profile.values.clear();
        ScriptedDialogProvider dialogs;
        dialogs.answerYes = row.pressedYes;
        dialogs.tickDontAsk = true;
        EXPECT_EQ(Ask(row.remember), row.given);
        EXPECT_EQ(Stored("ReplaceAsk"), "OFF");
        EXPECT_EQ(Stored("ReplaceAnswer"), row.stored);
        // Later calls replay the stored answer without a dialog.
        const YesNoDontask::Answer replayed =
            std::string(row.stored) == "ON" ? YesNoDontask::Yes : YesNoDontask::No;
        EXPECT_EQ(Ask(YesNoDontask::AnswerGiven), replayed);
        EXPECT_EQ(Ask(YesNoDontask::No, true), replayed);
        EXPECT_EQ(dialogs.Of("dontask").size(), 1u);
    }
}

TEST_F(YesNoDontaskTest, ReplaysStoredSettingsAsTheyRead) {
    ScriptedDialogProvider dialogs;
    const std::pair<const char*, YesNoDontask::Answer> rows[] = {
        {"ON", YesNoDontask::Yes}, {"true", YesNoDontask::Yes}, {"OFF", YesNoDontask::No},
        {"1", YesNoDontask::No},   {"", YesNoDontask::No},
    };
    profile.values[{"Questions", "ReplaceAsk"}] = "off";
    for (const auto& [stored, answer] : rows) {
        SCOPED_TRACE(stored);
        profile.values[{"Questions", "ReplaceAnswer"}] = stored;
        EXPECT_EQ(Ask(YesNoDontask::No), answer);
    }
    // With the answer missing, its default (true) is replayed.
    profile.values.erase({"Questions", "ReplaceAnswer"});
    EXPECT_EQ(Ask(YesNoDontask::No), YesNoDontask::Yes);
    // An Ask switch that does not read as true ("1" is not "ON") also means: do not ask.
    profile.values[{"Questions", "ReplaceAsk"}] = "1";
    EXPECT_EQ(Ask(YesNoDontask::No), YesNoDontask::Yes);
    EXPECT_TRUE(dialogs.Of("dontask").empty());
}

TEST_F(YesNoDontaskTest, TheProviderGetsCaptionTextAndTheOkOnlySwitch) {
    ScriptedDialogProvider dialogs;
    Ask(YesNoDontask::AnswerGiven);
    Ask(YesNoDontask::AnswerGiven, true);
    EXPECT_EQ(dialogs.Kinds(), (std::vector<std::string>{"dontask", "dontask"}));
    const auto asked = dialogs.Of("dontask");
    for (const auto& call : asked) {
        EXPECT_EQ(call.caption, "Caption");
        EXPECT_EQ(call.text, "Replace the file?");
    }
    EXPECT_FALSE(asked[0].okOnly);
    EXPECT_TRUE(asked[1].okOnly);
}

// The platform's own provider labels the buttons and the check box from the resources.
TEST_F(YesNoDontaskTest, ThePlatformsDialogShowsItsTexts) {
    ScriptedDialogProvider platform(ScriptedDialogProvider::Layer::PlatformOnly);
    platform.answerYes = true;
    platform.tickDontAsk = true;
    EXPECT_EQ(Ask(YesNoDontask::Yes), YesNoDontask::Yes);
    profile.values.clear();
    platform.answerYes = false;
    EXPECT_EQ(Ask(YesNoDontask::AnswerGiven, true), YesNoDontask::No);
    EXPECT_EQ(Stored("ReplaceAnswer"), "OFF"); // the platform's tick was stored
    const auto shown = platform.Of("platform-dontask");
    ASSERT_EQ(shown.size(), 2u);
    EXPECT_EQ(shown[0].caption, "Caption");
    EXPECT_EQ(shown[0].text, "Replace the file?");
    EXPECT_EQ(shown[0].affirmative, "Yes");
    EXPECT_EQ(shown[0].negative, "No");
    EXPECT_EQ(shown[0].checkBox, "Don't ask me again");
    // OK only: the first button is hidden, the other reads "OK".
    EXPECT_TRUE(shown[1].okOnly);
    EXPECT_EQ(shown[1].affirmative, "<null>");
    EXPECT_EQ(shown[1].negative, "OK");
    EXPECT_EQ(shown[1].checkBox, "Don't show this again");
}

TEST(YesNoDontaskWithoutProfileTest, AsksEveryTime) {
    ScopedHandler<ApplicationProfile> none(&SetApplicationProfile, nullptr);
    ScriptedDialogProvider dialogs;
    dialogs.answerYes = true;
    dialogs.tickDontAsk = true; // cannot be stored without a profile
    EXPECT_EQ(YesNoDontask::Ask("C", "T", "S", "K", YesNoDontask::No, false), YesNoDontask::Yes);
    EXPECT_EQ(YesNoDontask::Ask("C", "T", "S", "K", YesNoDontask::No, false), YesNoDontask::Yes);
    EXPECT_EQ(dialogs.Of("dontask").size(), 2u);
}

} // namespace
