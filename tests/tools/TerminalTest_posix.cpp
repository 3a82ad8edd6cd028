// TerminalTest_posix.cpp - the tool at a terminal: the progress bar (drawn on standard
// error only when it is a terminal, never with --quiet or --json, and only after the delay),
// colours (only on a terminal, never with NO_COLOR), and a file's bytes made printable. The
// program's Main runs in a child whose standard output and error are a new pseudo terminal.

#include "Commands.h"
#include "ToolTestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using fileio::test::kToolData;
using fileio::test::WorkFolder;

/// How long a child may run, and how long the terminal must be quiet after it ended.
constexpr auto kChildDeadline = std::chrono::seconds(60);
constexpr int kQuietMilliseconds = 100;

struct Environment {
    const char* name;
    const char* value; ///< null: unset
};

/// Runs the tool's Main with `args` in a child whose standard output and error are a new
/// terminal (and, when `errorsElsewhere`, standard error goes to /dev/null instead); returns
/// what the terminal showed.
std::string ShownAtTerminal(const std::vector<std::string>& args,
                            const std::vector<Environment>& environment,
                            bool errorsElsewhere = false) {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) {
        ADD_FAILURE() << "no pseudo terminal";
        return {};
    }
    const std::string slaveName = ::ptsname(master);
    // Held open until the end, so that the terminal keeps what the child wrote last.
    const int heldSlave = ::open(slaveName.c_str(), O_RDWR | O_NOCTTY);
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const int slave = ::open(slaveName.c_str(), O_RDWR);
        const int errors = errorsElsewhere ? ::open("/dev/null", O_WRONLY) : slave;
        if (slave < 0 || ::dup2(slave, STDOUT_FILENO) < 0 || ::dup2(errors, STDERR_FILENO) < 0)
            ::_exit(97);
        for (const Environment& variable : environment) {
            if (variable.value == nullptr)
                ::unsetenv(variable.name);
            else
                ::setenv(variable.name, variable.value, 1);
        }
        const int status = fileio::tool::Main(args);
        std::fflush(nullptr);
        ::_exit(status);
    }
    ::fcntl(master, F_SETFL, ::fcntl(master, F_GETFL) | O_NONBLOCK);
    std::string shown;
    const auto drain = [&] {
        char buffer[4096];
        const ssize_t got = ::read(master, buffer, sizeof buffer);
        if (got > 0)
            shown.append(buffer, static_cast<std::size_t>(got));
        return got > 0;
    };
    int status = 0;
    const auto deadline = std::chrono::steady_clock::now() + kChildDeadline;
    while (::waitpid(child, &status, WNOHANG) != child) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            ADD_FAILURE() << "the child did not end";
            break;
        }
        if (!drain())
            ::usleep(1000);
    }
    pollfd quiet{.fd = master, .events = POLLIN, .revents = 0};
    while (::poll(&quiet, 1, kQuietMilliseconds) > 0 && drain()) {
    }
    ::close(heldSlave);
    ::close(master);
    return shown;
}

/// The bar's end: its last drawing shows the work done.
constexpr const char* kFullBar = "] 100%";
/// What wipes the bar's line when the work is done.
constexpr const char* kWipe = "\r\x1b[K";

class TerminalTest : public testing::Test {
protected:
    void SetUp() override { m_work.CopyIn(kToolData + "/good", "good"); }
    WorkFolder m_work;
};

TEST_F(TerminalTest, TheProgressBarShowsOnlyOnATerminalAfterItsDelayAndIsWipedAgain) {
    struct BarCase {
        std::vector<std::string> args;
        const char* delay;
        bool errorsElsewhere;
        bool bar;
    };
    const BarCase cases[] = {
        {{"check", "good/square.prj"}, "0", false, true},
        {{"check", "--quiet", "good/square.prj"}, "0", false, false},
        {{"check", "--json", "good/square.prj"}, "0", false, false},
        {{"deps", "-q", "good/refs.prj"}, "0", false, false},
        {{"check", "good/square.prj"}, "3600000", false, false}, // longer than any check here
        {{"check", "good/square.prj"}, "0", true, false}, // only standard output is a terminal
    };
    for (const BarCase& c : cases) {
        const std::string shown =
            ShownAtTerminal(c.args, {{"FILEIO_PROGRESS_DELAY", c.delay}}, c.errorsElsewhere);
        EXPECT_EQ(shown.find(kFullBar) != std::string::npos, c.bar) << c.args[1] << ":\n" << shown;
        EXPECT_EQ(shown.rfind(kWipe) != std::string::npos, c.bar) << c.args[1] << ":\n" << shown;
    }
}

TEST_F(TerminalTest, ColoursShowOnATerminalUnlessNoColorIsSet) {
    const auto verdict = [](const char* noColour) {
        return ShownAtTerminal({"check", "good/square.prj"},
                               {{"NO_COLOR", noColour}, {"FILEIO_PROGRESS_DELAY", "3600000"}});
    };
    EXPECT_NE(verdict(nullptr).find("good/square.prj: \x1b[32mOK\x1b[0m"), std::string::npos);
    EXPECT_NE(verdict("").find("\x1b[32mOK"), std::string::npos) << "an empty NO_COLOR is unset";
    const std::string plain = verdict("1");
    EXPECT_NE(plain.find("good/square.prj: OK"), std::string::npos) << plain;
    EXPECT_EQ(plain.find('\x1b'), std::string::npos) << plain;
}

TEST_F(TerminalTest, AFilesBytesReachATerminalOnlyPrintable) {
    const std::string shown =
        ShownAtTerminal({"dump", "good/escapes.prj"}, {{"FILEIO_PROGRESS_DELAY", "3600000"}});
    EXPECT_NE(shown.find("Title=ctrl\\x1b[31mred"), std::string::npos) << shown;
    EXPECT_NE(shown.find("Name=Bad\\xffbyte"), std::string::npos) << shown;
    EXPECT_NE(shown.find("Notes=Gr\xc3\xbc\xc3\x9f"
                         "e"),
              std::string::npos)
        << "UTF-8 stays";
    EXPECT_EQ(shown.find("\x1b[31m"), std::string::npos) << "no raw escape reaches the terminal";
}

} // namespace
