// DialogProviderTest.cpp - the dialog provider's slot, and the platform's own provider.

#include "fileio/handlers/DialogProvider.h"
#include "fileio/handlers/ScopedHandler.h"
#include "support/ScriptedDialogProvider.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using fileio::test::ScriptedDialogProvider;
using Located = ScriptedDialogProvider::Located;

TEST(DialogProviderTest, ThePlatformsBoxAndSoundTakeTheArgumentsAsTheyAre) {
    ScriptedDialogProvider platform(ScriptedDialogProvider::Layer::PlatformOnly);
    platform.boxAnswer = 7;
    EXPECT_EQ(GetDialogProvider()->ShowMessageBox("Line 1\nLine 2", 3 + 48), 7);
    EXPECT_EQ(GetDialogProvider()->ShowMessageBox(String(), 0), 7); // the null string: ""
    GetDialogProvider()->WarningSound(64);
    ASSERT_EQ(platform.Kinds(),
              (std::vector<std::string>{"platform-box", "platform-box", "platform-sound"}));
    EXPECT_EQ(platform.calls[0].text, "Line 1\nLine 2");
    EXPECT_EQ(platform.calls[0].value, 51u);
    EXPECT_EQ(platform.calls[1].text, "");
    EXPECT_EQ(platform.calls[2].value, 64u);
}

// The locate-file dialog: the texts the platform's own provider passes on (the check box
// labelled by string resource 17), and what each answer makes of `chosen` and `cancelAll`.
TEST(DialogProviderTest, ThePlatformsLocateDialogAnswersAsTheUserLeftIt) {
    const struct {
        Located answer;
        bool cancelAllIn, result, cancelAllOut;
        const char* chosen;
    } rows[] = {
        {ScriptedDialogProvider::Choose("/b/x.mdl"), true, true, true, "/b/x.mdl"},
        {ScriptedDialogProvider::Cancel(), false, false, false, "unchanged"},
        {ScriptedDialogProvider::CancelAll(), false, false, true, "unchanged"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.chosen);
        ScriptedDialogProvider platform(ScriptedDialogProvider::Layer::PlatformOnly);
        platform.locateAnswers = {row.answer};
        bool cancelAll = row.cancelAllIn;
        String chosen("unchanged");
        EXPECT_EQ(GetDialogProvider()->LocateFile("Locate File: robot.mdl", "MDL|*.mdl||", "/a/",
                                                  "/a/robot.mdl", cancelAll, chosen),
                  row.result);
        EXPECT_EQ(cancelAll, row.cancelAllOut);
        EXPECT_EQ(chosen.View(), row.chosen);
        ASSERT_EQ(platform.Kinds(), (std::vector<std::string>{"platform-locate"}));
        const ScriptedDialogProvider::Call& shown = platform.calls[0];
        EXPECT_EQ(shown.text + "|" + shown.filter + "|" + shown.folder + "|" + shown.proposedName,
                  "Locate File: robot.mdl|MDL|*.mdl|||/a/|/a/robot.mdl");
        EXPECT_EQ(shown.cancelAllLabel, "Cancel all remaining missing files during this load.");
        EXPECT_EQ(shown.cancelAll, row.cancelAllIn);
    }
}

TEST(DialogProviderTest, SetReturnsTheReplacedProviderAndNullPutsThePlatformsBack) {
    DialogProvider* const platform = GetDialogProvider();
    ASSERT_NE(platform, nullptr);
    DialogProvider first, second;
    EXPECT_EQ(SetDialogProvider(&first), platform);
    EXPECT_EQ(SetDialogProvider(&second), &first);
    EXPECT_EQ(SetDialogProvider(nullptr), &second);
    EXPECT_EQ(SetDialogProvider(nullptr), platform);
}
} // namespace
