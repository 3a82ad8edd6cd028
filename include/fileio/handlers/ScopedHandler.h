// ScopedHandler.h - installs a handler for the life of a scope and then puts the handler
// that was installed before back.
//
//     RecordingLog log;
//     {
//         ScopedLogHandler installed(&log);
//         ...                    // lines posted here reach `log`
//     }                          // the previous log handler is back
//
// Scopes must end in the reverse order of their start (as they do on one thread).
#pragma once

#include "fileio/handlers/DialogProvider.h"
#include "fileio/handlers/FileHandler.h"
#include "fileio/handlers/LogHandler.h"
#include "fileio/handlers/MessageHandler.h"
#include "fileio/handlers/StatusMessage.h"

/// Installs `handler` through `install` (a setter that returns the previous handler) and
/// reinstalls the previous one on destruction.
template <class Handler> class ScopedHandler {
public:
    using Installer = Handler* (*)(Handler*);

    ScopedHandler(Installer install, Handler* handler)
        : m_install(install), m_previous(install(handler)) {}
    ~ScopedHandler() { m_install(m_previous); }
    ScopedHandler(const ScopedHandler&) = delete;
    ScopedHandler& operator=(const ScopedHandler&) = delete;

private:
    Installer m_install;
    Handler* m_previous;
};

class ScopedFileHandler : public ScopedHandler<FileHandler> {
public:
    explicit ScopedFileHandler(FileHandler* handler) : ScopedHandler(&SetFileHandler, handler) {}
};

class ScopedMessageHandler : public ScopedHandler<MessageHandler> {
public:
    explicit ScopedMessageHandler(MessageHandler* handler)
        : ScopedHandler(&SetMessageHandler, handler) {}
};

class ScopedLogHandler : public ScopedHandler<LogHandler> {
public:
    explicit ScopedLogHandler(LogHandler* handler) : ScopedHandler(&SetLogHandler, handler) {}
};

class ScopedStatusHandler : public ScopedHandler<StatusHandler> {
public:
    explicit ScopedStatusHandler(StatusHandler* handler)
        : ScopedHandler(&StatusMessage::SetHandler, handler) {}
};

class ScopedDialogProvider : public ScopedHandler<DialogProvider> {
public:
    explicit ScopedDialogProvider(DialogProvider* provider)
        : ScopedHandler(&SetDialogProvider, provider) {}
};
