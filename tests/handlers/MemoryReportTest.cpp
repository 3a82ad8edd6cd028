// MemoryReportTest.cpp - a block pool's figure grows by n + 16 rounded up to 8 for n bytes, a
// scratch pool's by a 2097152-byte chunk.
#include "fileio/memory/MemoryReport.h"

#include "fileio/handlers/ScopedHandler.h"
#include "fileio/memory/NamedPools.h"
#include "memory/NamedPoolObjects.h"
#include "support/RecordingLog.h"
#include "support/RecordingMessages.h"
#include "support/ScriptedDialogProvider.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace fileio::detail;
using namespace fileio::test;

// The text and the log carry the same nineteen labels and figures, in the same order: in the
// text the indented lines have their "=" in one column and no line end follows the last
// figure; the log has one line a figure, and none without a handler.
TEST(MemoryReportTest, TextAndLogHoldTheSameNineteenFigures) {
    const String keepStringBlock("the string pool keeps a block while the test runs");
    FreeTempMemory();
    const unsigned long long act = NamedVarnPool(VarnPoolKind::Act).GetTotal();
    void* block = AllocAct(100); // 116 -> 120
    AllocTemp(100);
    const unsigned long long total = TotalRAM();
    String out("replaced");
    LogPoolMemory(out);
    RecordingLog log;
    {
        ScopedLogHandler installed(&log);
        LogPoolMemory();
    }
    LogPoolMemory();
    FreeAct(block);
    FreeTempMemory();

    std::vector<std::string> lines;
    std::istringstream text{std::string(out.View())};
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    EXPECT_NE(out.View().back(), '\n');
    ASSERT_EQ(lines.size(), 19u);
    ASSERT_EQ(log.lines.size(), 19u);
    EXPECT_EQ(lines[0], "Total Pool Memory       = " + std::to_string(total));
    EXPECT_EQ(log.lines[0], "Total Pool Memory = " + std::to_string(total));
    EXPECT_EQ(log.lines[1], "  Act Pool Memory = " + std::to_string(act + 120));
    EXPECT_EQ(log.lines[15], "  Temp Pool Memory = 2097152");
    for (std::size_t i = 1; i < lines.size(); ++i) {
        SCOPED_TRACE(lines[i]);
        const std::size_t equals = lines[i].find('=');
        EXPECT_EQ(equals, lines[1].find('='));
        std::string label = lines[i].substr(0, equals);
        label.erase(label.find_last_not_of(' ') + 1);
        EXPECT_EQ(log.lines[i], "  " + label.substr(5) + " = " + lines[i].substr(equals + 2));
    }
}

// Every setting logs the same line; without a handler the switch still moves.
TEST(SwappingTest, EverySettingLogsTheSameLine) {
    RecordingLog log;
    {
        ScopedLogHandler installed(&log);
        for (const auto& [on, flag] : {std::pair{5, 1}, {0, 0}, {-1, 1}}) {
            SetSwapping(on);
            EXPECT_EQ(IsSwapping(), flag) << on;
        }
    }
    SetSwapping(0);
    EXPECT_EQ(IsSwapping(), 0);
    EXPECT_EQ(log.lines, std::vector<std::string>(3, "Swapping Set"));
}

// The caption and the total, through the message handler, or else in a plain OK box (type 0).
TEST(PrintMemoryMessageTest, ShowsTheCaptionAndTheTotal) {
    const String keepStringBlock("the string pool keeps a block while the test runs");
    RecordingMessages messages;
    {
        ScopedMessageHandler installed(&messages);
        PrintMemoryMessage(String("Scene"));
    }
    ScriptedDialogProvider dialogs;
    PrintMemoryMessage(String());
    const std::string total = std::to_string(TotalRAM());
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(messages.messages[0].caption + "|" + messages.messages[0].text,
              "FileIO|Scene: Total Memory:" + total);
    const std::vector<ScriptedDialogProvider::Call> boxes = dialogs.Of("box");
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0].value, 0u);
    EXPECT_EQ(boxes[0].text, ": Total Memory:" + total);
}

} // namespace
