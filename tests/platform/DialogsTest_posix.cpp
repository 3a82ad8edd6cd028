// DialogsTest_posix.cpp - the Linux dialogs when nobody is at a terminal (as under CTest):
// no question is asked and the answer is the one that stops; and, through a pseudo
// terminal in a child, a real question answered by typing.

#include "platform/Platform.h"
#include "support/ChildProcess_posix.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <poll.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

namespace {

namespace box = fileio::platform::box;
using fileio::platform::Dialogs;

const fileio::platform::DontAskTexts kReplace{"Caption", "Replace?", "Yes", "No", "Don't ask"};

/// Runs `body` in a child whose standard input, and standard error unless `errorAtTerminal`
/// is false (then /dev/null), sit at a new pseudo terminal; `typed` waits on its standard input,
/// and what it writes to the terminal goes to `shown` when given. Returns the child's exit code.
template <class Body>
int RunInChild(const std::string& typed, Body body, bool errorAtTerminal = true,
               std::string* shown = nullptr) {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0)
        return -1;
    const std::string slaveName = ::ptsname(master);
    // Held open until the end, so that the terminal keeps what the child wrote just before
    // it ended (the last close of the slave side throws the unread output away).
    const int heldSlave = ::open(slaveName.c_str(), O_RDWR | O_NOCTTY);
    const pid_t child = fileio::test::StartChild([&] {
        const int slave = ::open(slaveName.c_str(), O_RDWR);
        const int errorFd = errorAtTerminal ? slave : ::open("/dev/null", O_WRONLY);
        if (slave < 0 || errorFd < 0 || ::dup2(slave, STDIN_FILENO) < 0 ||
            ::dup2(errorFd, STDERR_FILENO) < 0)
            return 97;
        return body();
    });
    if (::write(master, typed.data(), typed.size()) != static_cast<ssize_t>(typed.size()))
        return -1;
    // Drain what the child writes, so that it never blocks on a full terminal; a child that
    // still waits for input after 10 s waits for a person: it is stopped and the run fails.
    ::fcntl(master, F_SETFL, ::fcntl(master, F_GETFL) | O_NONBLOCK);
    const auto drain = [&] {
        char buffer[256];
        const ssize_t got = ::read(master, buffer, sizeof buffer);
        if (got > 0 && shown != nullptr)
            shown->append(buffer, static_cast<std::size_t>(got));
        return got > 0;
    };
    int status = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    for (;;) {
        if (::waitpid(child, &status, WNOHANG) == child)
            break;
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            break;
        }
        if (!drain())
            ::usleep(1000);
    }
    // What the child wrote last reaches this side a moment later: read until the terminal
    // has been quiet for 100 ms.
    pollfd quiet{.fd = master, .events = POLLIN, .revents = 0};
    while (::poll(&quiet, 1, 100) > 0 && drain()) {
    }
    ::close(heldSlave);
    ::close(master);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(PosixDialogsTest, WithoutATerminalTheAnswerIsTheOneThatStops) {
    if (::isatty(STDIN_FILENO) == 1 && ::isatty(STDERR_FILENO) == 1)
        GTEST_SKIP() << "somebody is at this terminal: run the test without one";
    const std::pair<unsigned int, int> rows[] = {
        {box::kOk, box::kAnswerOk},
        {box::kOkCancel, box::kAnswerCancel},
        {box::kAbortRetryIgnore | box::kIconQuestion, box::kAnswerAbort},
        {box::kYesNoCancel, box::kAnswerCancel},
        {box::kYesNo, box::kAnswerNo},
        {box::kRetryCancel | box::kIconQuestion, box::kAnswerCancel},
    };
    for (const auto& [style, answer] : rows)
        EXPECT_EQ(Dialogs().messageBox("text", style), answer) << style;
    bool ticked = true;
    EXPECT_FALSE(Dialogs().askDontAsk(kReplace, ticked));
    EXPECT_FALSE(ticked);
}

TEST(PosixDialogsTest, AtATerminalTheTypedAnswerCounts) {
    const std::tuple<const char*, unsigned int, int> rows[] = {
        {"N\n", box::kYesNo, box::kAnswerNo},
        {"x\n  r\n", box::kAbortRetryIgnore, box::kAnswerRetry}, // asked again after "x"
        {"\n", box::kOk, box::kAnswerOk},
        {"\n y\n", box::kYesNoCancel, box::kAnswerYes}, // an empty line chooses only alone
    };
    for (const auto& [typed, style, answer] : rows)
        EXPECT_EQ(
            RunInChild(typed, [style = style] { return Dialogs().messageBox("Go on?", style); }),
            answer)
            << typed;
    // The answer in the low bit, the check box in the next.
    const auto ask = [&] {
        bool ticked = false;
        const bool yes = Dialogs().askDontAsk(kReplace, ticked);
        return (yes ? 1 : 0) | (ticked ? 2 : 0);
    };
    EXPECT_EQ(RunInChild("n\ny\n", ask), 2);
    EXPECT_EQ(RunInChild("x\ny\n\n", ask), 1); // asked again after "x"
    EXPECT_EQ(RunInChild("\x04", ask), 0);     // the end of the input says no
}

// What a locate-file question did, one bit each, as a child's exit code.
constexpr int kPicked = 1, kTicked = 2, kChoseOther = 4, kInputLeft = 8;

/// Asks the locate-file question and reports what it did (kChoseOther: a file other than
/// `expected`, or any on Cancel); the rest of the input line is read only when `left` is
/// given (a terminal would wait for more).
int Locate(const char* folder, bool cancelAll, const std::string& expected,
           const std::string& left = {}) {
    const fileio::platform::LocateFileTexts texts{
        .title = "Locate File: robot.mdl",
        .filter = "MDL Files (*.mdl)|*.mdl|****|All Files (*.*)|*.*|****||",
        .folder = folder,
        .proposedName = "robot.mdl",
        .cancelAllLabel = "Cancel all remaining missing files during this load.",
    };
    std::string chosen = "unchanged";
    const bool picked = Dialogs().locateFile(texts, cancelAll, chosen);
    std::string rest;
    for (int c = left.empty() ? EOF : std::getchar(); c != EOF && c != '\n'; c = std::getchar())
        rest += static_cast<char>(c);
    return (picked ? kPicked : 0) | (cancelAll ? kTicked : 0) |
           (chosen != (picked ? expected : "unchanged") ? kChoseOther : 0) |
           (!left.empty() && rest == left ? kInputLeft : 0);
}

// Unless standard input and standard error are both terminals nobody is asked (the tests
// at a terminal show the other side): the answer is Cancel, the box stays as it was, and
// the input is not read.
TEST(PosixDialogsTest, WithoutATerminalTheLocateQuestionCancelsUnread) {
    EXPECT_EQ(RunInChild(
                  "/etc/hosts\n", [] { return Locate("", true, "", "/etc/hosts"); },
                  /*errorAtTerminal=*/false),
              kTicked | kInputLeft);
}

TEST(PosixDialogsTest, AtATerminalTheLocateQuestionTakesATypedPath) {
    fileio::test::TempFolder folder("fileio-locate");
    const std::string robot = folder.WriteFile("Maps/robot.mdl", "robot");
    const std::string arm = folder.WriteFile("Maps/Parts/arm.mdl", "arm");
    const std::string maps = folder.Join("Maps");
    // What is typed, the dialog's folder, the box as it comes in, the file chosen ("" for
    // none), and what the question did.
    const std::tuple<std::string, const char*, bool, std::string, int> rows[] = {
        // A relative path starts in the dialog's folder; "." and ".." are folded.
        {"Parts/../Parts/arm.mdl\n", maps.c_str(), false, arm, kPicked},
        // A ticked box stays ticked when a file is picked.
        {robot + "\n", "", true, robot, kPicked | kTicked},
        {"!cancel-all\n", maps.c_str(), false, "", kTicked},
        // A path that names no file, or a folder, is asked for again.
        {"missing.mdl\n" + maps + "\nrobot.mdl\n", maps.c_str(), false, robot, kPicked},
        // The end of the input (Ctrl-D) cancels.
        {"\x04", maps.c_str(), false, "", 0},
    };
    for (const auto& [typed, start, ticked, expected, result] : rows) {
        const auto locate = [start = start, ticked = ticked, &expected = expected] {
            return Locate(start, ticked, expected);
        };
        EXPECT_EQ(RunInChild(typed, locate), result) << typed;
    }
}

// The question names the title, the file looked for, the file types and the check box with
// its state and the word that ticks it; a path that names no file is told.
TEST(PosixDialogsTest, TheLocateQuestionSaysWhatIsAsked) {
    std::string shown;
    EXPECT_EQ(RunInChild(
                  "/no/such.mdl\n\n", [] { return Locate("/no/", true, ""); }, true, &shown),
              kTicked);
    std::erase(shown, '\r'); // the terminal ends its lines with "\r\n"
    for (const char* line : {
             "\nLocate File: robot.mdl\n",
             "\n  looking for robot.mdl\n",
             "\n  file types: MDL Files (*.mdl), All Files (*.*)\n",
             "\n  [x] Cancel all remaining missing files during this load. (type !cancel-all to "
             "tick it and cancel)\n",
             "\nPath of the file (relative to /no/), or an empty line to cancel: ",
             "There is no file /no/such.mdl.\n",
         }) {
        SCOPED_TRACE(line);
        EXPECT_NE(shown.find(line), std::string::npos) << shown;
    }
}

} // namespace
