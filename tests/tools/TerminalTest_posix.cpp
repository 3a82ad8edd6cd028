// TerminalTest_posix.cpp - the tool at a terminal: the progress bar (drawn on standard
// error only when it is a terminal, never with --quiet or --json, only after the delay, and
// wiped again), colours (never with NO_COLOR), and a file's bytes made printable. The
// program's Main runs in a child whose standard output and error are a new pseudo terminal.

#include "Commands.h"
#include "ToolTestSupport.h"
#include "support/ChildProcess_posix.h"

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

constexpr auto kChildDeadline = std::chrono::seconds(60);
constexpr int kQuietMilliseconds = 100;

/// Runs the tool's Main with `args` in a child whose standard output and error are a new
/// terminal (and, when `errorsElsewhere`, standard error goes to /dev/null instead), with
/// NO_COLOR unset and the "NAME=VALUE" texts of `environment` set; returns what the terminal
/// showed.
std::string ShownAtTerminal(const std::vector<std::string>& args,
                            std::vector<std::string> environment, bool errorsElsewhere) {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) {
        ADD_FAILURE() << "no pseudo terminal";
        return {};
    }
    const std::string slaveName = ::ptsname(master);
    // Held open until the end, so that the terminal keeps what the child wrote last.
    const int heldSlave = ::open(slaveName.c_str(), O_RDWR | O_NOCTTY);
    const pid_t child = fileio::test::StartChild([&] {
        const int slave = ::open(slaveName.c_str(), O_RDWR);
        const int errors = errorsElsewhere ? ::open("/dev/null", O_WRONLY) : slave;
        if (slave < 0 || ::dup2(slave, STDOUT_FILENO) < 0 || ::dup2(errors, STDERR_FILENO) < 0)
            return 97;
        ::unsetenv("NO_COLOR");
        for (std::string& variable : environment)
            ::putenv(variable.data());
        const int status = fileio::tool::Main(args);
        std::fflush(nullptr);
        return status;
    });
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

/// What starts each drawing of the progress bar and wipes it when the work is done.
constexpr const char* kWipe = "\r\x1b[K";
const std::string kBarAtOnce = "FILEIO_PROGRESS_DELAY=0";
const std::string kNoBar = "FILEIO_PROGRESS_DELAY=3600000"; // longer than any run here

struct TerminalCase {
    std::vector<std::string> args;
    std::vector<std::string> environment;
    bool errorsElsewhere;
    std::string text;
    bool shown;
};

TEST(TerminalTest, BarColoursAndFileBytesShowOnlyAsATerminalShouldShowThem) {
    const TerminalCase cases[] = {
        {{"check", "good/square.prj"}, {kBarAtOnce}, false, std::string("] 100%") + kWipe, true},
        {{"check", "--quiet", "good/square.prj"}, {kBarAtOnce}, false, kWipe, false},
        {{"check", "--json", "good/square.prj"}, {kBarAtOnce}, false, kWipe, false},
        {{"deps", "-q", "good/refs.prj"}, {kBarAtOnce}, false, kWipe, false},
        {{"check", "good/square.prj"}, {kNoBar}, false, kWipe, false},
        // only standard output is a terminal
        {{"check", "good/square.prj"}, {kBarAtOnce}, true, kWipe, false},
        {{"check", "good/square.prj"}, {kNoBar}, false, "good/square.prj: \x1b[32mOK\x1b[0m", true},
        // an empty NO_COLOR is unset
        {{"check", "good/square.prj"}, {kNoBar, "NO_COLOR="}, false, "\x1b[32mOK", true},
        {{"check", "good/square.prj"}, {kNoBar, "NO_COLOR=1"}, false, "\x1b", false},
        {{"dump", "good/escapes.prj"}, {kNoBar}, false, "Title=ctrl\\x1b[31mred", true},
    };
    const WorkFolder work;
    work.CopyIn(kToolData + "/good", "good");
    for (const TerminalCase& c : cases) {
        const std::string shown = ShownAtTerminal(c.args, c.environment, c.errorsElsewhere);
        EXPECT_EQ(shown.find(c.text) != std::string::npos, c.shown)
            << c.args[0] << " " << c.args[1] << ":\n"
            << shown;
    }
}

} // namespace
