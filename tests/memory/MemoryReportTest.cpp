// Tests of the pool-memory report, the swapping line and the total-memory message.
//
// Expected figures follow the allocation rules: a block pool's figure grows by n + 16
// rounded up to 8 for each allocation of n bytes; a scratch pool's figure is the chunks it
// took: 2097152 bytes for a standard chunk, n rounded up to 8 plus an 8-byte link word for
// a request above 2097144 bytes.
#include "fileio/memory/MemoryReport.h"

#include "fileio/handlers/ScopedHandler.h"
#include "fileio/memory/NamedPools.h"
#include "memory/NamedPoolObjects.h"
#include "support/RecordingLog.h"
#include "support/RecordingMessages.h"
#include "support/ScriptedDialogProvider.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using fileio::detail::NamedVarnPool;
using fileio::detail::VarnPoolKind;
using fileio::test::RecordingLog;
using fileio::test::RecordingMessages;
using fileio::test::ScriptedDialogProvider;

// One line of the report as the log gets it and as the text shows it, with the figure
// the test expects.
struct Line {
    std::string logLabel;
    std::string paddedLabel;
    unsigned long long figure;
};

// The report after a known sequence of allocations in several pools; the allocations are
// given back when the fixture ends.
class MemoryReportTest : public ::testing::Test {
protected:
    void SetUp() override {
        FreeTempMemory();
        FreeZBufferMemory();
        FreeSubPatchMemory();
        const unsigned long long ramBefore = TotalRAM();
        for (const VarnPoolKind kind : kReported)
            baseline.push_back(NamedVarnPool(kind).GetTotal());

        blocks.push_back({AllocAct(1), FreeAct});      // 17 -> 24
        blocks.push_back({AllocAct(100), FreeAct});    // 116 -> 120
        blocks.push_back({AllocChor(8), FreeChor});    // 24
        blocks.push_back({AllocExt(24), FreeExt});     // 40: one range item
        blocks.push_back({AllocProp(1000), FreeProp}); // 1016
        blocks.push_back({AllocUndo(17), FreeUndo});   // 33 -> 40
        EXPECT_EQ(AllocPoly(0), nullptr);              // nothing
        AllocTemp(100);                                // one standard chunk
        AllocTemp(200);                                // in the same chunk
        AllocSubPatch(0x200000);                       // a chunk of its own: 0x200000 + 8

        // The scratch chunks come from the system: the total grows by at least their size.
        EXPECT_GE(TotalRAM() - ramBefore, 2097152u + 2097160u);
    }

    void TearDown() override {
        for (const auto& [p, free] : blocks)
            free(p);
        FreeTempMemory();
        FreeSubPatchMemory();
    }

    // The block pools in report order, and what the sequence added to each.
    static constexpr VarnPoolKind kReported[] = {
        VarnPoolKind::Act,    VarnPoolKind::Att,       VarnPoolKind::Chor,     VarnPoolKind::Seg,
        VarnPoolKind::Ext,    VarnPoolKind::Patch,     VarnPoolKind::Particle, VarnPoolKind::Bitmap,
        VarnPoolKind::Shadow, VarnPoolKind::Radiosity, VarnPoolKind::Test,     VarnPoolKind::LBuff,
        VarnPoolKind::Undo,   VarnPoolKind::Prop,      VarnPoolKind::Poly,
    };

    unsigned long long Block(int i, unsigned long long added) const {
        return baseline[static_cast<std::size_t>(i)] + added;
    }

    // The nineteen lines, with the total the report must show.
    std::vector<Line> Expected(unsigned long long total) const {
        return {
            {"Total Pool Memory = ", "Total Pool Memory       = ", total},
            {"  Act Pool Memory = ", "\n     Act Pool Memory       = ", Block(0, 144)},
            {"  Att Pool Memory = ", "\n     Att Pool Memory       = ", Block(1, 0)},
            {"  Chor Pool Memory = ", "\n     Chor Pool Memory      = ", Block(2, 24)},
            {"  Seg Pool Memory = ", "\n     Seg Pool Memory       = ", Block(3, 0)},
            {"  Ext Pool Memory = ", "\n     Ext Pool Memory       = ", Block(4, 40)},
            {"  Patch Pool Memory = ", "\n     Patch Pool Memory     = ", Block(5, 0)},
            {"  Particle Pool Memory = ", "\n     Particle Pool Memory  = ", Block(6, 0)},
            {"  Bitmap Pool Memory = ", "\n     Bitmap Pool Memory    = ", Block(7, 0)},
            {"  Z-Buffer Pool Memory = ", "\n     Z-Buffer Pool Memory  = ", 0},
            {"  Subpatch Pool Memory = ", "\n     Subpatch Pool Memory  = ", 2097160},
            {"  Shadow Pool Memory = ", "\n     Shadow Pool Memory    = ", Block(8, 0)},
            {"  Radiosity Pool Memory = ", "\n     Radiosity Pool Memory = ", Block(9, 0)},
            {"  Test Pool Memory = ", "\n     Test Pool Memory      = ", Block(10, 0)},
            {"  Light Buffer Memory = ", "\n     Light Buffer Memory   = ", Block(11, 0)},
            {"  Temp Pool Memory = ", "\n     Temp Pool Memory      = ", 2097152},
            {"  Undo Pool Memory = ", "\n     Undo Pool Memory      = ", Block(12, 40)},
            {"  Propertie Pool Memory = ", "\n     Propertie Pool Memory = ", Block(13, 1016)},
            {"  Poly Pool Memory = ", "\n     Poly Pool Memory      = ", Block(14, 0)},
        };
    }

    std::vector<unsigned long long> baseline;
    std::vector<std::pair<void*, void (*)(void*)>> blocks;
    const String keepStringBlock{"the string pool keeps a block while the test runs"};
};

TEST_F(MemoryReportTest, TextHoldsNineteenAlignedLines) {
    String out("replaced");
    const unsigned long long total = TotalRAM();
    LogPoolMemory(out);

    std::string expected;
    for (const Line& line : Expected(total))
        expected += line.paddedLabel + std::to_string(line.figure);
    EXPECT_EQ(out.View(), expected);

    // The eighteen indented lines have their "=" in one column (the total's line is not
    // indented, so its "=" stands three columns further left), and no line end follows the
    // last figure.
    const std::string text(out.View());
    std::size_t lineStart = 0;
    int lines = 0;
    while (lineStart <= text.size()) {
        const std::size_t end = std::min(text.find('\n', lineStart), text.size());
        const std::string line = text.substr(lineStart, end - lineStart);
        EXPECT_EQ(line.find('='), lines == 0 ? 24u : 27u) << line;
        ++lines;
        lineStart = end + 1;
    }
    EXPECT_EQ(lines, 19);
    EXPECT_NE(text.back(), '\n');
}

TEST_F(MemoryReportTest, LogGetsNineteenLinesInOrder) {
    RecordingLog log;
    ScopedLogHandler installed(&log);
    const unsigned long long total = TotalRAM();
    LogPoolMemory();

    std::vector<std::string> expected;
    for (const Line& line : Expected(total))
        expected.push_back(line.logLabel + std::to_string(line.figure));
    EXPECT_EQ(log.lines, expected);
}

TEST_F(MemoryReportTest, WithoutALogHandlerOnlyTheTextIsMade) {
    RecordingLog log;
    { ScopedLogHandler installed(&log); }
    ASSERT_EQ(GetLogHandler(), nullptr);
    LogPoolMemory();
    EXPECT_TRUE(log.lines.empty());

    String out;
    LogPoolMemory(out);
    const std::string text(out.View());
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 18);
    EXPECT_EQ(text.rfind("Total Pool Memory       = ", 0), 0u);
}

TEST(SwappingTest, EverySettingLogsTheSameLine) {
    RecordingLog log;
    {
        ScopedLogHandler installed(&log);
        const std::pair<int, int> rows[] = {{5, 1}, {0, 0}, {-1, 1}, {1, 1}, {0, 0}};
        for (const auto& [on, flag] : rows) {
            SCOPED_TRACE(on);
            SetSwapping(on);
            EXPECT_EQ(IsSwapping(), flag);
        }
    }
    EXPECT_EQ(log.lines, std::vector<std::string>(5, "Swapping Set"));

    // Without a handler the switch still moves.
    SetSwapping(1);
    EXPECT_EQ(IsSwapping(), 1);
    SetSwapping(0);
    EXPECT_EQ(IsSwapping(), 0);
    EXPECT_EQ(log.lines.size(), 5u);
}

TEST(PrintMemoryMessageTest, ShowsTheCaptionAndTheTotal) {
    const String keepStringBlock("the string pool keeps a block while the test runs");
    {
        RecordingMessages messages;
        ScopedMessageHandler installed(&messages);
        const std::string total = std::to_string(TotalRAM());
        PrintMemoryMessage(String("Scene"));
        ASSERT_EQ(messages.messages.size(), 1u);
        EXPECT_EQ(messages.messages[0].caption, "FileIO");
        EXPECT_EQ(messages.messages[0].text, "Scene: Total Memory:" + total);
    }
    {
        // Type 0: the default sound and a plain OK box.
        ScriptedDialogProvider dialogs;
        const std::string total = std::to_string(TotalRAM());
        PrintMemoryMessage(String());
        const std::vector<ScriptedDialogProvider::Call> boxes = dialogs.Of("box");
        ASSERT_EQ(boxes.size(), 1u);
        EXPECT_EQ(boxes[0].value, 0u);
        EXPECT_EQ(boxes[0].text, ": Total Memory:" + total);
        ASSERT_EQ(dialogs.Of("sound").size(), 1u);
        EXPECT_EQ(dialogs.Of("sound")[0].value, 0u);
    }
}

} // namespace
