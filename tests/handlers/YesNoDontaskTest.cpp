// YesNoDontaskTest.cpp - the don't-ask question, its settings and its dialog.

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

using namespace fileio::test;

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

// An Ask switch that does not read as on ("1" is not "ON") means: replay the stored answer,
// which is Yes only when it reads as on, and when it is missing.
TEST_F(YesNoDontaskTest, ReplaysStoredSettingsAsTheyRead) {
    ScriptedDialogProvider dialogs;
    profile.values[{"Questions", "ReplaceAsk"}] = "1";
    EXPECT_EQ(Ask(YesNoDontask::No), YesNoDontask::Yes);
    profile.values[{"Questions", "ReplaceAnswer"}] = "1";
    EXPECT_EQ(Ask(YesNoDontask::Yes), YesNoDontask::No);
    EXPECT_TRUE(dialogs.calls.empty());
}

// A provider that leaves the check box alone has not been told "don't ask again".
TEST_F(YesNoDontaskTest, AnUntouchedCheckBoxIsNotTicked) {
    class AnswersYes : public DialogProvider {
    public:
        bool AskYesNoDontask(const String&, const String&, bool, bool&) override { return true; }
    };
    AnswersYes host;
    ScopedDialogProvider provider(&host);
    EXPECT_EQ(Ask(YesNoDontask::No), YesNoDontask::Yes);
    EXPECT_TRUE(profile.values.empty());
}

// The platform's own provider shows the caption and the text, and labels the buttons and the
// check box from the resources.
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
    EXPECT_EQ(shown[0].caption + "|" + shown[0].text, "Caption|Replace the file?");
    EXPECT_EQ(shown[0].affirmative + "|" + shown[0].negative + "|" + shown[0].checkBox,
              "Yes|No|Don't ask me again");
    // OK only: the first button is hidden, the other reads "OK".
    EXPECT_EQ(shown[1].affirmative + "|" + shown[1].negative + "|" + shown[1].checkBox,
              "<null>|OK|Don't show this again");
}

// What a ticked box stores as the answer to replay, for each remember value and answer.
TEST_F(YesNoDontaskTest, ATickedBoxStoresTheAnswerToReplay) {
    using A = YesNoDontask;
    const struct Row {
        A::Answer remember;
        bool pressedYes;
        const char* stored;
    } rows[] = {
        {A::AnswerGiven, true, "ON"},
        {A::AnswerGiven, false, "OFF"},
        {A::Yes, false, "ON"},
        {A::No, true, "OFF"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.remember) * 10 + (row.pressedYes ? 1 : 0));
        profile.values.clear();
        ScriptedDialogProvider dialogs;
        dialogs.answerYes = row.pressedYes;
        dialogs.tickDontAsk = true;
        EXPECT_EQ(Ask(row.remember), row.pressedYes ? A::Yes : A::No);
        EXPECT_EQ(Stored("ReplaceAsk"), "OFF");
        EXPECT_EQ(Stored("ReplaceAnswer"), row.stored);
        // A later call replays the stored answer without a dialog.
        EXPECT_EQ(Ask(A::No, true), std::string(row.stored) == "ON" ? A::Yes : A::No);
        EXPECT_EQ(dialogs.Of("dontask").size(), 1u);
    }
}
} // namespace
