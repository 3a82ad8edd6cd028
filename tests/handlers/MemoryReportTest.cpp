// Tests of the pool-memory report, the swapping line and the total-memory message. The
// figures follow the allocation rules: a block pool grows by n + 16 rounded up to 8 for n
// bytes; a scratch pool by 2097152 bytes a chunk, or n + 8 for a request above a chunk.
#include "fileio/memory/MemoryReport.h"

#include "fileio/handlers/ScopedHandler.h"
#include "fileio/memory/NamedPools.h"
#include "memory/NamedPoolObjects.h"
#include "support/RecordingLog.h"
#include "support/RecordingMessages.h"
#include "support/ScriptedDialogProvider.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using fileio::detail::NamedVarnPool;
using fileio::detail::VarnPoolKind;
using fileio::test::RecordingLog;
using fileio::test::RecordingMessages;
using fileio::test::ScriptedDialogProvider;

// The report after known allocations in several pools: in the text the eighteen indented
// lines have their "=" in one column; the log has one line a figure, none without a handler.
TEST(MemoryReportTest, TextAndLogHoldNineteenLinesInOrder) {
    const String keepStringBlock("the string pool keeps a block while the test runs");
    FreeTempMemory();
    FreeZBufferMemory();
    FreeSubPatchMemory();
    std::vector<unsigned long long> before; // the block pools in report order
    for (VarnPoolKind kind :
         {VarnPoolKind::Act, VarnPoolKind::Att, VarnPoolKind::Chor, VarnPoolKind::Seg,
          VarnPoolKind::Ext, VarnPoolKind::Patch, VarnPoolKind::Particle, VarnPoolKind::Bitmap,
          VarnPoolKind::Shadow, VarnPoolKind::Radiosity, VarnPoolKind::Test, VarnPoolKind::LBuff,
          VarnPoolKind::Undo, VarnPoolKind::Prop, VarnPoolKind::Poly})
        before.push_back(NamedVarnPool(kind).GetTotal());
    const std::pair<void*, void (*)(void*)> blocks[] = {
        {AllocAct(1), FreeAct},      // 17 -> 24
        {AllocAct(100), FreeAct},    // 116 -> 120
        {AllocChor(8), FreeChor},    // 24
        {AllocExt(24), FreeExt},     // 40
        {AllocProp(1000), FreeProp}, // 1016
        {AllocUndo(17), FreeUndo},   // 33 -> 40
    };
    AllocTemp(100);          // one standard chunk
    AllocTemp(200);          // in the same chunk
    AllocSubPatch(0x200000); // a chunk of its own: 0x200000 + 8

    const unsigned long long total = TotalRAM();
    String out("replaced");
    LogPoolMemory(out);
    RecordingLog log;
    {
        ScopedLogHandler installed(&log);
        LogPoolMemory();
    }
    LogPoolMemory();
    const struct {
        const char *logLabel, *paddedLabel;
        unsigned long long figure;
    } expected[] = {
        {"Total Pool Memory = ", "Total Pool Memory       = ", total},
        {"  Act Pool Memory = ", "\n     Act Pool Memory       = ", before[0] + 144},
        {"  Att Pool Memory = ", "\n     Att Pool Memory       = ", before[1]},
        {"  Chor Pool Memory = ", "\n     Chor Pool Memory      = ", before[2] + 24},
        {"  Seg Pool Memory = ", "\n     Seg Pool Memory       = ", before[3]},
        {"  Ext Pool Memory = ", "\n     Ext Pool Memory       = ", before[4] + 40},
        {"  Patch Pool Memory = ", "\n     Patch Pool Memory     = ", before[5]},
        {"  Particle Pool Memory = ", "\n     Particle Pool Memory  = ", before[6]},
        {"  Bitmap Pool Memory = ", "\n     Bitmap Pool Memory    = ", before[7]},
        {"  Z-Buffer Pool Memory = ", "\n     Z-Buffer Pool Memory  = ", 0},
        {"  Subpatch Pool Memory = ", "\n     Subpatch Pool Memory  = ", 2097160},
        {"  Shadow Pool Memory = ", "\n     Shadow Pool Memory    = ", before[8]},
        {"  Radiosity Pool Memory = ", "\n     Radiosity Pool Memory = ", before[9]},
        {"  Test Pool Memory = ", "\n     Test Pool Memory      = ", before[10]},
        {"  Light Buffer Memory = ", "\n     Light Buffer Memory   = ", before[11]},
        {"  Temp Pool Memory = ", "\n     Temp Pool Memory      = ", 2097152},
        {"  Undo Pool Memory = ", "\n     Undo Pool Memory      = ", before[12] + 40},
        {"  Propertie Pool Memory = ", "\n     Propertie Pool Memory = ", before[13] + 1016},
        {"  Poly Pool Memory = ", "\n     Poly Pool Memory      = ", before[14]},
    };
    std::string text;
    std::vector<std::string> lines;
    for (const auto& line : expected) {
        text += line.paddedLabel + std::to_string(line.figure);
        lines.push_back(line.logLabel + std::to_string(line.figure));
    }
    EXPECT_EQ(out.View(), text);
    EXPECT_EQ(log.lines, lines);
    for (const auto& [p, free] : blocks)
        free(p);
    FreeTempMemory();
    FreeSubPatchMemory();
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
