// HandlerSlotsTest.cpp - the handler slots, the base classes and the log.

#include "fileio/handlers/FileHandler.h"
#include "fileio/handlers/LogHandler.h"
#include "fileio/handlers/MessageHandler.h"
#include "fileio/handlers/OutputDebugLogHandler.h"
#include "fileio/handlers/ScopedHandler.h"
#include "fileio/handlers/StatusHandler.h"
#include "fileio/handlers/StatusMessage.h"
#include "platform/Platform.h"
#include "support/RecordingLog.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using fileio::test::RecordingLog;
namespace platform = fileio::platform;

class SilentStatus : public StatusHandler {
public:
    void SetStatusText(const String&) override {}
};

// A setter returns the handler it replaces; a scope puts the previous one back.
template <class Handler> void ExpectSlot(Handler* (*set)(Handler*), Handler& a, Handler& b) {
    EXPECT_EQ(set(&a), nullptr);
    {
        ScopedHandler<Handler> scoped(set, &b);
        EXPECT_EQ(set(&b), &b);
    }
    EXPECT_EQ(set(nullptr), &a);
}

TEST(HandlerSlotsTest, SettersReturnThePreviousHandlerAndScopesRestoreIt) {
    FileHandler file1, file2;
    ExpectSlot(&SetFileHandler, file1, file2);
    MessageHandler message1, message2;
    ExpectSlot(&SetMessageHandler, message1, message2);
    LogHandler log1, log2;
    ExpectSlot(&SetLogHandler, log1, log2);
    SilentStatus status1, status2;
    ExpectSlot<StatusHandler>(&StatusMessage::SetHandler, status1, status2);
}

TEST(HandlerSlotsTest, BaseClassesHaveTheirDefaults) {
    FileHandler file;
    EXPECT_TRUE(file.IsPrompt());
    EXPECT_TRUE(file.IsContinueLoading());
    SilentStatus status;
    EXPECT_TRUE(status.InitializeProgressControl("text", 1, 0, 100));
    EXPECT_FALSE(status.IsProgressControlActive());
    EXPECT_EQ(status.GetCurrentType(), 0);
}

TEST(HandlerSlotsTest, PostReachesTheInstalledLogHandlerOnly) {
    LogHandler::Post("dropped: no handler");
    EXPECT_FALSE(LogHandler::IsActive());
    RecordingLog log;
    {
        ScopedLogHandler installed(&log);
        EXPECT_TRUE(LogHandler::IsActive());
        LogHandler::Post("first");
        LogHandler::Post(String());
    }
    LogHandler::Post("dropped again");
    EXPECT_EQ(log.lines, (std::vector<std::string>{"first", ""}));
}

// Each line followed by "\n" in a diagnostic build, nothing in a release build.
TEST(HandlerSlotsTest, OutputDebugLogHandlerWritesLinesToTheDebugTrace) {
    static std::vector<std::string> traced;
    platform::ScopedServices<platform::SystemServices> saved(platform::System());
    platform::System().debugTrace = [](const char* text) { traced.emplace_back(text); };
    OutputDebugLogHandler trace;
    ScopedLogHandler installed(&trace);
    LogHandler::Post("100% done");
    LogHandler::Post(String());
#ifdef NDEBUG
    EXPECT_TRUE(traced.empty());
#else
    EXPECT_EQ(traced, (std::vector<std::string>{"100% done\n", "\n"}));
#endif
}

// The application folder and "tollan.log", computed once per process: no other test of
// this program asks for the name, so the first call is made here.
TEST(HandlerSlotsTest, LogFileNameIsFixedAtTheFirstCall) {
    platform::ScopedServices<platform::SystemServices> saved(platform::System());
    platform::System().applicationFolder = [] { return std::string("/opt/varn/bin"); };
    const String first = String::GetLogFileName();
    EXPECT_EQ(first.View(),
              "/opt/varn/bin" + std::string(1, platform::NativeSeparator()) + "tollan.log");
    platform::System().applicationFolder = [] { return std::string("C:\\Other"); };
    EXPECT_EQ(String::GetLogFileName().View(), first.View());
}
} // namespace
