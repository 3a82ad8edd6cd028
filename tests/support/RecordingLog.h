// RecordingLog.h - a log handler for tests that keeps every line it is given.
#pragma once

#include "fileio/handlers/LogHandler.h"

#include <string>
#include <vector>

namespace fileio::test {

class RecordingLog : public LogHandler {
public:
    void LogMessage(const String& line) override { lines.emplace_back(line.View()); }
    std::vector<std::string> lines;
};

} // namespace fileio::test
