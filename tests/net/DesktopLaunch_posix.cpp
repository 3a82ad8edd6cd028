// DesktopLaunch_posix.cpp - on Linux a URL reaches the desktop as the argument vector
// {"xdg-open", URL}: no shell, and the URL one argument whatever it holds.

#include "fileio/net/Internet.h"
#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using fileio::platform::Processes;

std::vector<std::vector<std::string>> g_started;

TEST(DesktopLaunchTest, TheBrowserAndTheMailProgramGetAnArgumentVector) {
    fileio::platform::ScopedServices<fileio::platform::ProcessServices> saved(Processes());
    Processes().startDetached = [](const std::vector<std::string>& argv, std::string&) {
        g_started.push_back(argv);
        return true;
    };
    g_started.clear();
    EXPECT_TRUE(LaunchBrowser("http://example.com/a b;rm -rf ~"));
    EXPECT_TRUE(LaunchMail("ann@example.com", "$(id)", "`date`"));
    const std::vector<std::vector<std::string>> expected = {
        {"xdg-open", "http://example.com/a%20b;rm%20-rf%20~"},
        {"xdg-open", "mailto:ann@example.com?subject=%24%28id%29&body=%60date%60"},
    };
    EXPECT_EQ(g_started, expected);
    Processes().startDetached = [](const std::vector<std::string>& argv, std::string& why) {
        why = argv[0] + ": No such file or directory";
        return false;
    };
    EXPECT_FALSE(LaunchBrowser("https://example.com"));
    EXPECT_FALSE(LaunchMail("ann@example.com", "s", "b"));
}

} // namespace
