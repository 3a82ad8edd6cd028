// DialogProviderTest.cpp - the dialog provider's slot, and the platform's own provider: what
// each of its operations hands the platform's dialogs and what it answers.

#include "fileio/handlers/DialogProvider.h"
#include "fileio/handlers/ScopedHandler.h"
#include "support/ScriptedDialogProvider.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using fileio::test::ScriptedDialogProvider;
using Located = ScriptedDialogProvider::Located;

constexpr const char* kFilter = "MDL Files (*.mdl)|*.mdl|****|All Files (*.*)|*.*|****||";
constexpr const char* kCancelAllLabel = "Cancel all remaining missing files during this load.";

TEST(DialogProviderTest, SetReturnsTheReplacedProviderAndNullPutsThePlatformsBack) {
    DialogProvider* const platform = GetDialogProvider();
    ASSERT_NE(platform, nullptr);
    DialogProvider first, second;
    EXPECT_EQ(SetDialogProvider(&first), platform);
    EXPECT_EQ(GetDialogProvider(), &first);
    EXPECT_EQ(SetDialogProvider(&second), &first);
    EXPECT_EQ(SetDialogProvider(nullptr), &second);
    EXPECT_EQ(GetDialogProvider(), platform);
    EXPECT_EQ(SetDialogProvider(nullptr), platform);
    // Handing the platform's own back is the same as null.
    SetDialogProvider(&first);
    EXPECT_EQ(SetDialogProvider(platform), &first);
    EXPECT_EQ(GetDialogProvider(), platform);
    {
        ScopedDialogProvider installed(&second);
        EXPECT_EQ(GetDialogProvider(), &second);
    }
    EXPECT_EQ(GetDialogProvider(), platform);
}

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
    struct Row {
        const char* name;
        Located answer;
        bool cancelAllIn;
        bool result;
        bool cancelAllOut;
        const char* chosen;
    };
    const Row rows[] = {
        {"picked", ScriptedDialogProvider::Choose("/b/robot.mdl"), false, true, false,
         "/b/robot.mdl"},
        {"picked, box ticked before", ScriptedDialogProvider::Choose("/b/x.mdl"), true, true, true,
         "/b/x.mdl"},
        {"cancelled", ScriptedDialogProvider::Cancel(), false, false, false, "unchanged"},
        {"cancelled, box ticked before", ScriptedDialogProvider::Cancel(), true, false, true,
         "unchanged"},
        {"ticked and cancelled", ScriptedDialogProvider::CancelAll(), false, false, true,
         "unchanged"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedDialogProvider platform(ScriptedDialogProvider::Layer::PlatformOnly);
        platform.locateAnswers = {row.answer};
        bool cancelAll = row.cancelAllIn;
        String chosen("unchanged");
        EXPECT_EQ(GetDialogProvider()->LocateFile("Locate File: robot.mdl", kFilter, "/a/Maps/",
                                                  "/a/Maps/robot.mdl", cancelAll, chosen),
                  row.result);
        EXPECT_EQ(cancelAll, row.cancelAllOut);
        EXPECT_EQ(chosen.View(), row.chosen);
        ASSERT_EQ(platform.Kinds(), (std::vector<std::string>{"platform-locate"}));
        const ScriptedDialogProvider::Call& shown = platform.calls[0];
        EXPECT_EQ(shown.text, "Locate File: robot.mdl");
        EXPECT_EQ(shown.filter, kFilter);
        EXPECT_EQ(shown.folder, "/a/Maps/");
        EXPECT_EQ(shown.proposedName, "/a/Maps/robot.mdl");
        EXPECT_EQ(shown.cancelAllLabel, kCancelAllLabel);
        EXPECT_EQ(shown.cancelAll, row.cancelAllIn);
    }
}

// A host that draws only its own boxes still gets the platform's locate-file dialog, and a
// scripted provider answers one dialog after the other.
TEST(DialogProviderTest, WhatAProviderDoesNotOverrideStaysThePlatforms) {
    class BoxesOnly : public DialogProvider {
    public:
        int ShowMessageBox(const String&, unsigned int) override { return 1; }
    };
    ScriptedDialogProvider platform(ScriptedDialogProvider::Layer::PlatformOnly);
    platform.locateAnswers = {ScriptedDialogProvider::Choose("/c/arm.mdl")};
    BoxesOnly host;
    ScopedDialogProvider installed(&host);
    bool cancelAll = false;
    String chosen;
    EXPECT_TRUE(GetDialogProvider()->LocateFile("T", "", "", "arm.mdl", cancelAll, chosen));
    EXPECT_EQ(chosen.View(), "/c/arm.mdl");
    EXPECT_EQ(GetDialogProvider()->ShowMessageBox("x", 0), 1);
    EXPECT_EQ(platform.Kinds(), (std::vector<std::string>{"platform-locate"}));

    ScriptedDialogProvider scripted;
    scripted.locateAnswers = {ScriptedDialogProvider::Choose("/d/1.mdl"),
                              ScriptedDialogProvider::CancelAll()};
    EXPECT_TRUE(
        GetDialogProvider()->LocateFile("T1", kFilter, "/d/", "/d/a.mdl", cancelAll, chosen));
    EXPECT_EQ(chosen.View(), "/d/1.mdl");
    EXPECT_FALSE(GetDialogProvider()->LocateFile("T2", kFilter, "", "b.mdl", cancelAll, chosen));
    EXPECT_TRUE(cancelAll);
    EXPECT_FALSE(GetDialogProvider()->LocateFile("T3", kFilter, "", "c.mdl", cancelAll, chosen));
    EXPECT_EQ(chosen.View(), "/d/1.mdl"); // past the script: Cancel
    const auto asked = scripted.Of("locate");
    ASSERT_EQ(asked.size(), 3u);
    EXPECT_EQ(asked[1].text, "T2");
    EXPECT_EQ(asked[1].proposedName, "b.mdl");
    EXPECT_FALSE(asked[1].cancelAll);
    EXPECT_TRUE(asked[2].cancelAll);
    EXPECT_EQ(scripted.Kinds().size(), 3u) << "nothing reached the platform";
    EXPECT_EQ(platform.Kinds().size(), 1u);
}

} // namespace
