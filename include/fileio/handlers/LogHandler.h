// LogHandler.h - the host's log, its slot, and the library's way of logging.
//
// The library never writes a log itself: it posts lines with LogHandler::Post, which hands
// them to the installed handler. With no handler installed, logging is dropped silently.
// The host's handler usually writes the log file named by String::GetLogFileName().
//
// A handler must not throw (the library adds no handling, so an exception would leave
// through the library's interface), must not post to the log or install handlers from
// inside LogMessage, and must not block waiting for another thread that uses the library.
//
// The library never owns the installed handler: the host uninstalls it (sets null) before
// destroying it. The slot is a plain pointer that belongs to the host's main thread.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

class FILEIO_API LogHandler {
public:
    LogHandler() = default;
    virtual ~LogHandler();
    /// Takes one log line (without a line end). Default: does nothing.
    virtual void LogMessage(const String& line);

    /// Hands `line` to the installed handler's LogMessage; nothing when none is installed.
    static void Post(const String& line);
    /// Whether a log handler is installed.
    static bool IsActive();

protected:
    LogHandler(const LogHandler&) = default;
    LogHandler& operator=(const LogHandler&) = default;
};

/// The installed log handler; null when none is installed.
FILEIO_API LogHandler* GetLogHandler();
/// Installs `handler` (null uninstalls) and returns the handler installed before.
FILEIO_API LogHandler* SetLogHandler(LogHandler* handler);
