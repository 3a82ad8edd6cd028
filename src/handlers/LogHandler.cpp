// LogHandler.cpp - the log handler's default, its slot, and posting to the log.

#include "fileio/handlers/LogHandler.h"

namespace {
LogHandler* g_logHandler = nullptr;
} // namespace

LogHandler::~LogHandler() = default;
void LogHandler::LogMessage(const String&) {}

void LogHandler::Post(const String& line) {
    if (g_logHandler != nullptr)
        g_logHandler->LogMessage(line);
}

bool LogHandler::IsActive() {
    return g_logHandler != nullptr;
}

LogHandler* GetLogHandler() {
    return g_logHandler;
}

LogHandler* SetLogHandler(LogHandler* handler) {
    LogHandler* previous = g_logHandler;
    g_logHandler = handler;
    return previous;
}
