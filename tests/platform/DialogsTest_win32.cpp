// DialogsTest_win32.cpp - the Windows dialogs, answered by a timer of the test's own thread
// while the modal loop runs: the don't-ask dialog built in memory (its texts, the hidden
// button of an OK-only question, the check box) and the system's message box. They need a
// display: under Wine without one (no X server) they are skipped.

#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <string>
#include <windows.h>

namespace {

using fileio::platform::Dialogs;
using fileio::platform::DontAskTexts;

constexpr int kMessageControl = 2289;
constexpr int kCheckBoxControl = 10320;

/// What the timer saw in the dialog, and what it does to answer it.
struct Script {
    int button = IDYES;
    bool tick = false;
    std::string title, message, checkBox, negative;
    bool affirmativeVisible = false;
    int messageTop = 0, messageHeight = 0, dialogHeight = 0, checkBoxTop = 0;
    bool found = false;
    int ticks = 0;
};

Script* g_script = nullptr;

std::string TextOf(HWND window) {
    char text[512] = {};
    GetWindowTextA(window, text, sizeof text);
    return text;
}

BOOL CALLBACK FindDialog(HWND window, LPARAM result) {
    char className[64] = {};
    GetClassNameA(window, className, sizeof className);
    if (std::string(className) == "#32770") {
        *reinterpret_cast<HWND*>(result) = window;
        return FALSE;
    }
    return TRUE;
}

void CALLBACK Answer(HWND, UINT, UINT_PTR timer, DWORD) {
    Script& script = *g_script;
    HWND dialog = nullptr;
    EnumThreadWindows(GetCurrentThreadId(), FindDialog, reinterpret_cast<LPARAM>(&dialog));
    if (dialog == nullptr) {
        if (++script.ticks > 100) // give up after about five seconds
            KillTimer(nullptr, timer);
        return;
    }
    KillTimer(nullptr, timer);
    script.found = true;
    script.title = TextOf(dialog);
    RECT r;
    GetWindowRect(dialog, &r);
    script.dialogHeight = r.bottom - r.top;
    if (HWND message = GetDlgItem(dialog, kMessageControl)) {
        script.message = TextOf(message);
        GetWindowRect(message, &r);
        script.messageTop = r.top;
        script.messageHeight = r.bottom - r.top;
    }
    if (HWND check = GetDlgItem(dialog, kCheckBoxControl)) {
        script.checkBox = TextOf(check);
        GetWindowRect(check, &r);
        script.checkBoxTop = r.top;
    }
    if (HWND no = GetDlgItem(dialog, IDNO))
        script.negative = TextOf(no);
    if (HWND yes = GetDlgItem(dialog, IDYES))
        script.affirmativeVisible = (GetWindowLongA(yes, GWL_STYLE) & WS_VISIBLE) != 0;
    if (script.tick)
        CheckDlgButton(dialog, kCheckBoxControl, BST_CHECKED);
    PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(script.button, BN_CLICKED), 0);
}

/// Whether this process can make windows at all (Wine without a display cannot).
bool CanMakeWindows() {
    HWND probe = CreateWindowExA(0, "STATIC", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr,
                                 GetModuleHandleA(nullptr), nullptr);
    if (probe == nullptr)
        return false;
    DestroyWindow(probe);
    return true;
}

/// Runs `show` with a timer that answers the first dialog of this thread.
template <class Show> auto WithAnswer(Script& script, Show show) {
    g_script = &script;
    SetTimer(nullptr, 0, 50, Answer);
    return show();
}

TEST(Win32DialogsTest, TheDontAskDialogShowsItsTextsAndReportsItsCheckBox) {
    if (!CanMakeWindows())
        GTEST_SKIP() << "no display to make windows on";
    const DontAskTexts texts{"Replace", "Replace the file?", "Yes", "No", "Don't ask me again"};
    Script yes;
    yes.tick = true;
    bool ticked = false;
    EXPECT_TRUE(WithAnswer(yes, [&] { return Dialogs().askDontAsk(texts, ticked); }));
    ASSERT_TRUE(yes.found) << "no dialog appeared";
    EXPECT_TRUE(ticked);
    EXPECT_EQ(yes.title, "Replace");
    EXPECT_EQ(yes.message, "Replace the file?");
    EXPECT_EQ(yes.checkBox, "Don't ask me again");
    EXPECT_EQ(yes.negative, "No");
    EXPECT_TRUE(yes.affirmativeVisible);

    Script no;
    no.button = IDNO;
    EXPECT_FALSE(WithAnswer(no, [&] { return Dialogs().askDontAsk(texts, ticked); }));
    EXPECT_FALSE(ticked);

    // OK only: the affirmative button is hidden and the other answers No. A message of
    // many lines makes the dialog grow, and the check box moves down with it.
    std::string lines;
    for (int i = 0; i < 12; ++i)
        lines += "A line of the message\n";
    const DontAskTexts okOnly{"Note", lines.c_str(), nullptr, "OK", "Don't show this again"};
    Script ok;
    ok.button = IDNO;
    ok.tick = true;
    EXPECT_FALSE(WithAnswer(ok, [&] { return Dialogs().askDontAsk(okOnly, ticked); }));
    EXPECT_TRUE(ticked);
    EXPECT_FALSE(ok.affirmativeVisible);
    EXPECT_EQ(ok.negative, "OK");
    EXPECT_EQ(ok.checkBox, "Don't show this again");
    EXPECT_GT(ok.messageHeight, yes.messageHeight);
    EXPECT_EQ(ok.dialogHeight - yes.dialogHeight, ok.messageHeight - yes.messageHeight);
    EXPECT_EQ((ok.checkBoxTop - ok.messageTop) - (yes.checkBoxTop - yes.messageTop),
              ok.messageHeight - yes.messageHeight);
}

TEST(Win32DialogsTest, TheMessageBoxAnswersWithThePressedButton) {
    if (!CanMakeWindows())
        GTEST_SKIP() << "no display to make windows on";
    Script cancel;
    cancel.button = IDCANCEL;
    EXPECT_EQ(
        WithAnswer(cancel, [] { return Dialogs().messageBox("Save changes?", MB_YESNOCANCEL); }),
        IDCANCEL);
    ASSERT_TRUE(cancel.found);
    EXPECT_EQ(cancel.title, "fileio_platform_tests"); // the application's name
    Script retry;
    retry.button = IDRETRY;
    EXPECT_EQ(WithAnswer(retry, [] { return Dialogs().messageBox("Try again?", MB_RETRYCANCEL); }),
              IDRETRY);
}

} // namespace
