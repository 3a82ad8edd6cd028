// LogFileNameTest.cpp - the log file's name: the application folder and "tollan.log",
// computed once per process. No other test of this program asks for the name, so the
// first call is made here, under a folder the test chooses.

#include "fileio/core/String.h"
#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(LogFileNameTest, IsTheApplicationFolderAndTollanLogForTheWholeProcess) {
    fileio::platform::ScopedServices<fileio::platform::SystemServices> saved(
        fileio::platform::System());
    fileio::platform::System().applicationFolder = [] { return std::string("/opt/varn/bin"); };
    const std::string separator(1, fileio::platform::NativeSeparator());
    const String first = String::GetLogFileName();
    EXPECT_EQ(std::string(first.View()), "/opt/varn/bin" + separator + "tollan.log");

    // The folder reads differently now; the name does not change.
    fileio::platform::System().applicationFolder = [] { return std::string("C:\\Other"); };
    EXPECT_EQ(String::GetLogFileName(), first);
    EXPECT_TRUE(String::GetLogFileName().Compare(first, true));
}

} // namespace
