// StatusHandler.h - the host's status line and progress control.
//
// StatusMessage (StatusMessage.h) sends the status texts and forwards the progress calls
// to the installed StatusHandler. Every host provides SetStatusText; the progress
// operations default to doing nothing (and to "no control active").
//
// A handler must not throw (the library adds no handling, so an exception would leave
// through the library's interface). SetStatusText is called while the status lock is
// held: it may read StatusMessage::GetStatusMessage() and make status messages on its own
// thread, but it must not wait for another thread that makes or ends a status message.
//
// The library never owns the installed handler: the host uninstalls it (installs null)
// before destroying it.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

class FILEIO_API StatusHandler {
public:
    StatusHandler() = default;
    virtual ~StatusHandler();
    /// Receives the text now on the status line.
    virtual void SetStatusText(const String& text) = 0;
    /// Advances the progress control by one step. Default: does nothing.
    virtual void StepProgress();
    /// Moves the progress control to `position`. Default: does nothing.
    virtual void SetProgress(int position);
    /// Takes the progress control down. Default: does nothing.
    virtual void UninitializeProgressControl();
    /// Puts up a progress control showing `text`, of the host's kind `type`, for positions
    /// from `low` to `high`. Returns whether it is up. Default: returns true.
    virtual bool InitializeProgressControl(const char* text, unsigned char type, int low, int high);
    /// Whether a progress control is up. Default: false.
    virtual bool IsProgressControlActive() const;
    /// The kind of the progress control that is up. Default: 0.
    virtual unsigned char GetCurrentType();

protected:
    StatusHandler(const StatusHandler&) = default;
    StatusHandler& operator=(const StatusHandler&) = default;
};
