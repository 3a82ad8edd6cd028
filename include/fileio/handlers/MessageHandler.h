// MessageHandler.h - the host's message display, and its slot.
//
// While a message handler is installed, MessageRequest (MessageRequest.h) shows nothing
// itself: it hands the caption and the text to the handler and answers 1.
//
// A handler must not throw (the library adds no handling, so an exception would leave
// through the library's interface), must not call MessageRequest or install handlers from
// inside MessageRequest, and must not block waiting for another thread that uses the
// library.
//
// The library never owns the installed handler: the host uninstalls it (sets null) before
// destroying it. The slot is a plain pointer that belongs to the host's main thread.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

class FILEIO_API MessageHandler {
public:
    MessageHandler() = default;
    virtual ~MessageHandler();
    /// Shows `text` under `caption`. Default: does nothing.
    virtual void MessageRequest(const String& caption, const String& text);

protected:
    MessageHandler(const MessageHandler&) = default;
    MessageHandler& operator=(const MessageHandler&) = default;
};

/// The installed message handler; null when none is installed.
FILEIO_API MessageHandler* GetMessageHandler();
/// Installs `handler` (null uninstalls) and returns the handler installed before.
FILEIO_API MessageHandler* SetMessageHandler(MessageHandler* handler);
