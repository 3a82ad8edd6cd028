// PoolReport.h - the lines of the pool-memory report (internal): what each line is called
// and where its figure comes from. The layer above formats them and posts them to the log
// (MemoryReport.h).
#pragma once

#include <array>
#include <cstddef>

namespace fileio::detail {

/// One line of the report: its label in the log, its padded label in the text, and the
/// function that reads its figure (read just before the line is made, since the line's
/// text takes memory of its own).
struct PoolReportLine {
    const char* logLabel;
    const char* paddedLabel;
    unsigned long long (*figure)();
};

inline constexpr std::size_t kPoolReportLines = 19;

/// The nineteen lines, in the report's order.
const std::array<PoolReportLine, kPoolReportLines>& PoolReport();

/// Sets the process-wide swapping switch (SetSwapping, which also logs the change).
void SetSwappingSwitch(bool on) noexcept;

} // namespace fileio::detail
