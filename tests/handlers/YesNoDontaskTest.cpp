// YesNoDontaskTest.cpp - the don't-ask question: which answer it replays from the settings it
// reads, and the texts the platform's own provider puts in its dialog.

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
    EXPECT_EQ(shown[0].affirmative + "|" + shown[0].negative + "|" + shown[0].checkBox,
              "Yes|No|Don't ask me again");
    // OK only: the first button is hidden, the other reads "OK".
    EXPECT_EQ(shown[1].affirmative + "|" + shown[1].negative + "|" + shown[1].checkBox,
              "<null>|OK|Don't show this again");
}

} // namespace
