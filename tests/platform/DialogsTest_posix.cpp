// DialogsTest_posix.cpp - the Linux dialogs when nobody is at a terminal (as under CTest):
// no question is asked and the answer is the one that stops; and, through a pseudo
// terminal, a real question answered by typing.

#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace box = fileio::platform::box;
using fileio::platform::Dialogs;

/// Runs `body` in a child whose standard input and standard error are the slave side of a
/// new pseudo terminal; `typed` is typed into it first. Returns the child's exit code.
template <class Body> int RunAtTerminal(const std::string& typed, Body body) {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0)
        return -1;
    const std::string slaveName = ::ptsname(master);
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const int slave = ::open(slaveName.c_str(), O_RDWR);
        if (slave < 0 || ::dup2(slave, STDIN_FILENO) < 0 || ::dup2(slave, STDERR_FILENO) < 0)
            ::_exit(97);
        ::_exit(body());
    }
    if (::write(master, typed.data(), typed.size()) != static_cast<ssize_t>(typed.size()))
        return -1;
    // Drain what the child writes, so that it never blocks on a full terminal.
    char buffer[256];
    int status = 0;
    for (;;) {
        if (::waitpid(child, &status, WNOHANG) == child)
            break;
        const int flags = ::fcntl(master, F_GETFL);
        ::fcntl(master, F_SETFL, flags | O_NONBLOCK);
        if (::read(master, buffer, sizeof buffer) <= 0)
            ::usleep(1000);
    }
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
        {box::kOk | box::kIconStop, box::kAnswerOk},
    };
    for (const auto& [style, answer] : rows) {
        SCOPED_TRACE(style);
        EXPECT_EQ(Dialogs().messageBox("text", style), answer);
    }
    const fileio::platform::DontAskTexts texts{"Caption", "Text", "Yes", "No", "Don't ask"};
    bool ticked = true;
    EXPECT_FALSE(Dialogs().askDontAsk(texts, ticked));
    EXPECT_FALSE(ticked);
}

TEST(PosixDialogsTest, AtATerminalTheTypedAnswerCounts) {
    struct Row {
        const char* typed;
        unsigned int style;
        int answer;
    };
    const Row rows[] = {
        {"y\n", box::kYesNoCancel, box::kAnswerYes},
        {"N\n", box::kYesNo, box::kAnswerNo},
        {"x\n  r\n", box::kAbortRetryIgnore, box::kAnswerRetry}, // asked again after "x"
        {"i\n", box::kAbortRetryIgnore, box::kAnswerIgnore},
        {"\n", box::kOk, box::kAnswerOk},
        {"o\n", box::kOkCancel, box::kAnswerOk},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.typed);
        EXPECT_EQ(
            RunAtTerminal(row.typed, [&] { return Dialogs().messageBox("Go on?", row.style); }),
            row.answer);
    }
    const fileio::platform::DontAskTexts texts{"Caption", "Replace?", "Yes", "No", "Don't ask"};
    // The answer in the low bit, the check box in the next.
    const auto ask = [&] {
        bool ticked = false;
        const bool yes = Dialogs().askDontAsk(texts, ticked);
        return (yes ? 1 : 0) | (ticked ? 2 : 0);
    };
    EXPECT_EQ(RunAtTerminal("y\ny\n", ask), 3);
    EXPECT_EQ(RunAtTerminal("n\n\n", ask), 0);
    EXPECT_EQ(RunAtTerminal("n\ny\n", ask), 2);
}

} // namespace
