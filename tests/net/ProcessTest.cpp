// ProcessTest.cpp - child processes, and the command line an argument vector becomes on Windows.

#include "net/NetTestSupport.h"
#include "platform/Platform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace {

using namespace fileio::platform;
using namespace fileio::test;

TEST(ProcessTest, WindowsCommandLinesQuoteByTheRuntimesRules) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"svn", "info"}, "svn info"},
        {{"a b"}, "\"a b\""},
        {{""}, "\"\""},
        {{"tab\there"}, "\"tab\there\""},
        {{"say \"hi\""}, "\"say \\\"hi\\\"\""},
        {{"C:\\dir\\"}, "C:\\dir\\"},             // no quotes: backslashes as they are
        {{"C:\\my dir\\"}, "\"C:\\my dir\\\\\""}, // before the closing quote: doubled
        {{"a\\\\\"b"}, "\"a\\\\\\\\\\\"b\""},     // two backslashes and a quote
        {{"x", "a&b|c>d"}, "x a&b|c>d"},          // no shell: nothing to escape
    };
    for (const auto& [argv, line] : cases)
        EXPECT_EQ(fileio::platform::WindowsCommandLine(argv), line) << line;
}

std::vector<std::string> Child(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {fileio::test::SelfPath(), fileio::test::kChildArgument});
    return arguments;
}

// Every argument reaches the child as it is; its errors still come in after its output
// closed, and the run ends with the program, not at its deadline.
TEST(ProcessTest, TellsTheExitStatusAndBothOutputsOfAChildGivenTrickyArguments) {
    const std::vector<std::string> tricky = {"two words",
                                             "",
                                             "quote\"inside",
                                             "back\\slash\\",
                                             "semi;colon & amp | pipe > out",
                                             "$HOME `date` $(id)",
                                             "*.txt"};
    std::vector<std::string> argv = Child({"exit", "7"});
    argv.insert(argv.end(), tricky.begin(), tricky.end());
    const auto start = std::chrono::steady_clock::now();
    ProcessOutcome outcome;
    ASSERT_TRUE(Processes().run(argv, kPatientMs, outcome)) << outcome.why;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(kPatientMs / 2));
    std::string expected;
    for (const std::string& argument : tricky)
        expected += argument + "\n";
    std::string output = outcome.output;
    std::erase(output, '\r'); // Windows' text mode
    EXPECT_EQ(output, expected);
    EXPECT_EQ(outcome.errors, "err");
    EXPECT_EQ(outcome.exitCode, 7);
    EXPECT_FALSE(outcome.timedOut);
}

TEST(ProcessTest, AProgramPastItsDeadlineIsEnded) {
    ProcessOutcome outcome;
    ASSERT_TRUE(Processes().run(Child({"sleep"}), 300, outcome));
    EXPECT_TRUE(outcome.timedOut);
    EXPECT_NE(outcome.exitCode, 0);
}

TEST(ProcessTest, AProgramThatIsNotInstalledIsNotStarted) {
    ProcessOutcome outcome;
    outcome.exitCode = 5;
    EXPECT_FALSE(Processes().run({"fileio-no-such-program-3f9a"}, kPatientMs, outcome));
    EXPECT_FALSE(outcome.started);
    EXPECT_EQ(outcome.exitCode, -1);
    EXPECT_NE(outcome.why.find("fileio-no-such-program-3f9a"), std::string::npos);
    EXPECT_FALSE(Processes().run({}, kPatientMs, outcome));
    std::string why;
    EXPECT_FALSE(Processes().startDetached({"fileio-no-such-program-3f9a"}, why));
    EXPECT_FALSE(why.empty());
}

} // namespace
