// OutputDebugLogHandler.h - a ready log handler that writes each line to the debug trace.
//
// In a diagnostic build of the library (one without NDEBUG) each line goes to the debug
// trace followed by a line end: the debugger's output on Windows, the standard error
// stream on Linux. In a release build the lines are dropped.
//
// Usage: `static OutputDebugLogHandler trace; SetLogHandler(&trace);`
#pragma once

#include "fileio/Export.h"
#include "fileio/handlers/LogHandler.h"

class FILEIO_API OutputDebugLogHandler : public LogHandler {
public:
    OutputDebugLogHandler() = default;
    ~OutputDebugLogHandler() override;

private:
    void LogMessage(const String& line) override;
};
