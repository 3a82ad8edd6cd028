// StatusMessage.h - the scoped status line and the progress control.
//
// Making a StatusMessage puts its text on the status line; destroying it puts the earlier
// text back. The status sink is the installed StatusHandler (StatusHandler.h).
//
//     {
//         StatusMessage loading("Loading");      // the handler gets "Loading"
//         {
//             StatusMessage reading("Reading");  // "Reading"
//         }                                      // "Loading" again
//     }                                          // the text before "Loading"
//
// When a message ends it tells the handler the text to put back and then empties the
// current text (without telling the handler): until another message starts,
// GetStatusMessage() is empty. A message made with `keep` puts its own text back when it
// ends, rather than the earlier one.
//
// Threads: making and ending messages and GetStatusMessage() are serialised by one lock,
// which is held while the handler receives a text. Display, InitializeProgressControl,
// SetDisplaying and the progress forwards take no lock: they belong to the thread that
// shows the status line.
//
// Process-wide state: the handler (null at load), the count of live messages and
// SetDisplaying requests (0), the current text (empty) and the display switch (true).
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"
#include "fileio/handlers/StatusHandler.h"

class FILEIO_API StatusMessage {
public:
    /// Puts `text` on the status line (see above for `keep`).
    explicit StatusMessage(const String& text, bool keep = false);
    /// Puts the text of string resource `textId` on the status line.
    explicit StatusMessage(unsigned int textId, bool keep = false);
    /// Puts the saved text back on the status line, then empties the current text.
    ~StatusMessage();
    StatusMessage(const StatusMessage&) = delete;
    StatusMessage& operator=(const StatusMessage&) = delete;

    /// Installs `handler` (null uninstalls) and returns the handler installed before.
    static StatusHandler* SetHandler(StatusHandler* handler);
    /// Passes the current text to the handler again.
    static void Display();
    /// A copy of the current text, taken under the lock.
    static String GetStatusMessage();
    /// Whether texts are passed to the handler at all. The current text follows the
    /// messages either way.
    static void SetVisible(bool visible);
    /// true counts one more display request; false counts one less, never below 0.
    static void SetDisplaying(bool displaying);
    /// Whether any message or display request is live.
    static bool IsDisplaying();

    /// Makes `text` the current text (without telling the handler's SetStatusText) and
    /// forwards to the handler's InitializeProgressControl. False with no handler.
    static bool InitializeProgressControl(const char* text, unsigned char type, int low, int high);
    /// Forwarded to the handler; nothing with no handler.
    static void SetProgress(int position);
    static void StepProgress();
    static void UninitializeProgressControl();
    /// Forwarded to the handler; false or 0 with no handler.
    static bool IsProgressControlActive();
    static unsigned char GetCurrentType();

private:
    void Start(const String& text, bool keep);

    String m_savedText;
};
