// OutputDebugLogHandler.cpp - log lines to the debug trace, in diagnostic builds only.

#include "fileio/handlers/OutputDebugLogHandler.h"

#include "platform/Platform.h"

#include <string>

OutputDebugLogHandler::~OutputDebugLogHandler() = default;

void OutputDebugLogHandler::LogMessage([[maybe_unused]] const String& line) {
#ifndef NDEBUG
    std::string text(line.View());
    text += '\n';
    fileio::platform::System().debugTrace(text.c_str());
#endif
}
