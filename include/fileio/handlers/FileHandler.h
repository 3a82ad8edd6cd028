// FileHandler.h - the host's answers about missing files, and its slot.
//
// A stream that cannot find a file it must read tells the installed file handler and asks
// it whether the user may be asked to locate the file. A host derives from FileHandler and
// overrides what it needs; the defaults ask the user and go on loading.
//
// A handler must not throw (the library adds no handling, so an exception would leave
// through the library's interface), must not install or uninstall handlers from inside its
// operations, and must not block waiting for another thread that uses the library.
//
// The library never owns the installed handler: the host uninstalls it (sets null) before
// destroying it. The slot is a plain pointer that belongs to the host's main thread.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

class FILEIO_API FileHandler {
public:
    FileHandler() = default;
    virtual ~FileHandler();
    /// Whether the user is to be asked to locate a missing file. Default: true. When false,
    /// the missing file is recorded as failed without asking.
    virtual bool IsPrompt();
    /// Whether loading goes on after missing files. Default: true.
    virtual bool IsContinueLoading();
    /// Told of every missing file before anything else happens. Default: does nothing.
    virtual void MissingFile(const String& name);

protected:
    FileHandler(const FileHandler&) = default;
    FileHandler& operator=(const FileHandler&) = default;
};

/// The installed file handler; null when none is installed.
FILEIO_API FileHandler* GetFileHandler();
/// Installs `handler` (null uninstalls) and returns the handler installed before.
FILEIO_API FileHandler* SetFileHandler(FileHandler* handler);
