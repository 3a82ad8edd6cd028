// MemoryLog.cpp - the pool-memory report and the swapping switch, told to the log and the
// user: the memory layer keeps the figures, this layer formats and posts them.

#include "fileio/handlers/LogHandler.h"
#include "fileio/handlers/MessageRequest.h"
#include "fileio/memory/MemoryReport.h"
#include "fileio/memory/NamedPools.h"
#include "handlers/ResourceIds.h"
#include "memory/PoolReport.h"

#include <array>
#include <string>

using fileio::detail::kPoolReportLines;
using fileio::detail::PoolReport;
using fileio::detail::PoolReportLine;

void LogPoolMemory() {
    if (GetLogHandler() == nullptr)
        return;
    for (const PoolReportLine& line : PoolReport()) {
        LogHandler* const handler = GetLogHandler();
        if (handler == nullptr)
            continue;
        const unsigned long long figure = line.figure(); // before the line takes memory
        handler->LogMessage(String(line.logLabel) + String(figure));
    }
}

void LogPoolMemory(String& out) {
    // Every figure is read before the text takes memory of its own.
    std::array<unsigned long long, kPoolReportLines> figures{};
    for (std::size_t i = 0; i < kPoolReportLines; ++i)
        figures[i] = PoolReport()[i].figure();
    std::string text;
    for (std::size_t i = 0; i < kPoolReportLines; ++i) {
        text += PoolReport()[i].paddedLabel;
        text += std::to_string(figures[i]);
    }
    out = text;
}

void PrintMemoryMessage(const String& caption) {
    const unsigned long long total = TotalRAM(); // before the text takes memory
    const String text = caption + ": Total Memory:" + String(total);
    MessageRequest(text, 0, fileio::detail::resource::kApplicationCaption);
}

void SetSwapping(int on) {
    fileio::detail::SetSwappingSwitch(on != 0);
    if (LogHandler* const log = GetLogHandler())
        log->LogMessage(String("Swapping Set"));
}
