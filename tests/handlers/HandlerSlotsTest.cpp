// HandlerSlotsTest.cpp - the handler slots, the base classes' default behaviour, posting to
// the log, the scoped installers, and the debug-trace log handler.

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

class SilentStatus : public StatusHandler {
public:
    void SetStatusText(const String&) override {}
};

// Every setter stores the new handler and returns the previous one.
TEST(HandlerSlotsTest, SettersReturnThePreviousHandler) {
    FileHandler file1, file2;
    EXPECT_EQ(GetFileHandler(), nullptr);
    EXPECT_EQ(SetFileHandler(&file1), nullptr);
    EXPECT_EQ(GetFileHandler(), &file1);
    EXPECT_EQ(SetFileHandler(&file2), &file1);
    EXPECT_EQ(SetFileHandler(nullptr), &file2);
    EXPECT_EQ(GetFileHandler(), nullptr);

    MessageHandler message1, message2;
    EXPECT_EQ(GetMessageHandler(), nullptr);
    EXPECT_EQ(SetMessageHandler(&message1), nullptr);
    EXPECT_EQ(SetMessageHandler(&message2), &message1);
    EXPECT_EQ(GetMessageHandler(), &message2);
    EXPECT_EQ(SetMessageHandler(nullptr), &message2);

    LogHandler log1, log2;
    EXPECT_EQ(GetLogHandler(), nullptr);
    EXPECT_EQ(SetLogHandler(&log1), nullptr);
    EXPECT_EQ(SetLogHandler(&log2), &log1);
    EXPECT_EQ(GetLogHandler(), &log2);
    EXPECT_EQ(SetLogHandler(nullptr), &log2);

    SilentStatus status1, status2;
    EXPECT_EQ(StatusMessage::SetHandler(&status1), nullptr);
    EXPECT_EQ(StatusMessage::SetHandler(&status2), &status1);
    EXPECT_EQ(StatusMessage::SetHandler(nullptr), &status2);
}

TEST(HandlerSlotsTest, BaseClassesHaveTheirDefaults) {
    FileHandler file;
    EXPECT_TRUE(file.IsPrompt());
    EXPECT_TRUE(file.IsContinueLoading());
    file.MissingFile("a.mdl"); // does nothing

    MessageHandler message;
    message.MessageRequest("caption", "text"); // does nothing
    LogHandler log;
    log.LogMessage("line"); // does nothing

    SilentStatus status;
    status.StepProgress();
    status.SetProgress(5);
    status.UninitializeProgressControl();
    EXPECT_TRUE(status.InitializeProgressControl("text", 1, 0, 100));
    EXPECT_FALSE(status.IsProgressControlActive());
    EXPECT_EQ(status.GetCurrentType(), 0);
}

TEST(HandlerSlotsTest, PostReachesTheInstalledLogHandlerOnly) {
    EXPECT_FALSE(LogHandler::IsActive());
    LogHandler::Post("dropped: no handler");
    RecordingLog log;
    LogHandler* previous = SetLogHandler(&log);
    EXPECT_TRUE(LogHandler::IsActive());
    LogHandler::Post("first");
    LogHandler::Post(String());
    LogHandler::Post("third line");
    EXPECT_EQ(log.lines, (std::vector<std::string>{"first", "", "third line"}));
    EXPECT_EQ(SetLogHandler(nullptr), &log);
    EXPECT_FALSE(LogHandler::IsActive());
    LogHandler::Post("dropped again");
    EXPECT_EQ(log.lines.size(), 3u);
    SetLogHandler(previous);
}

TEST(HandlerSlotsTest, ScopedInstallersPutThePreviousHandlerBack) {
    RecordingLog outer, inner;
    ASSERT_EQ(GetLogHandler(), nullptr);
    {
        ScopedLogHandler first(&outer);
        EXPECT_EQ(GetLogHandler(), &outer);
        {
            ScopedLogHandler second(&inner);
            EXPECT_EQ(GetLogHandler(), &inner);
            LogHandler::Post("to inner");
        }
        EXPECT_EQ(GetLogHandler(), &outer);
        {
            ScopedLogHandler none(nullptr);
            EXPECT_FALSE(LogHandler::IsActive());
        }
        LogHandler::Post("to outer");
    }
    EXPECT_EQ(GetLogHandler(), nullptr);
    EXPECT_EQ(inner.lines, std::vector<std::string>{"to inner"});
    EXPECT_EQ(outer.lines, std::vector<std::string>{"to outer"});

    FileHandler file;
    MessageHandler message;
    SilentStatus status;
    {
        ScopedFileHandler a(&file);
        ScopedMessageHandler b(&message);
        ScopedStatusHandler c(&status);
        EXPECT_EQ(GetFileHandler(), &file);
        EXPECT_EQ(GetMessageHandler(), &message);
        EXPECT_EQ(StatusMessage::SetHandler(&status), &status);
    }
    EXPECT_EQ(GetFileHandler(), nullptr);
    EXPECT_EQ(GetMessageHandler(), nullptr);
    EXPECT_EQ(StatusMessage::SetHandler(nullptr), nullptr);
}

// The debug-trace handler writes each line followed by "\n" in a diagnostic build, and
// nothing in a release build.
TEST(HandlerSlotsTest, OutputDebugLogHandlerWritesLinesToTheDebugTrace) {
    static std::vector<std::string> traced;
    traced.clear();
    fileio::platform::ScopedServices<fileio::platform::SystemServices> saved(
        fileio::platform::System());
    fileio::platform::System().debugTrace = [](const char* text) { traced.emplace_back(text); };

    OutputDebugLogHandler trace;
    ScopedLogHandler installed(&trace);
    LogHandler::Post("Swapping Set");
    LogHandler::Post("100% done");
    LogHandler::Post(String());
#ifdef NDEBUG
    EXPECT_TRUE(traced.empty());
#else
    EXPECT_EQ(traced, (std::vector<std::string>{"Swapping Set\n", "100% done\n", "\n"}));
#endif
}

} // namespace
