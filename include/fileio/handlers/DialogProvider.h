// DialogProvider.h - the dialogs the library shows, replaceable by the host.
//
// Every box, warning sound, don't-ask question and locate-file dialog of the library goes
// through the provider that GetDialogProvider returns. A host with its own user-interface
// toolkit derives from DialogProvider, overrides the dialogs it draws itself and installs
// the object with SetDialogProvider; the operations it does not override keep showing the
// platform's own dialogs, which are also what the library uses while no provider is
// installed:
//
//   - Windows: the system's message box and warning sounds, a dialog of the library for
//     the don't-ask question, and the system's open-file dialog with the check box
//     "Cancel all remaining missing files during this load." (string resource 17);
//   - Linux: a question on the terminal, asked only when standard input and standard
//     error are both terminals; otherwise nobody is asked and the answer is the one that
//     stops (Cancel where a box has one, else No, else Abort, else OK; No and an unticked
//     box for the don't-ask question; Cancel for the locate-file dialog). The warning
//     sound rings the terminal's bell.
//
// Box styles and answers are the Win32 message-box values on every platform:
//
//   buttons  0 OK, 1 OK Cancel, 2 Abort Retry Ignore, 3 Yes No Cancel, 4 Yes No,
//            5 Retry Cancel (style & 0x0F)
//   icons    16 stop, 32 question, 48 exclamation, 64 information (added to the buttons)
//   answers  1 OK, 2 Cancel, 3 Abort, 4 Retry, 5 Ignore, 6 Yes, 7 No; 0: not shown
//   sounds   0 default, 16 stop, 32 question, 48 exclamation, 64 information
//
// While a message handler is installed (MessageHandler.h), MessageRequest hands its texts
// to the handler and shows nothing through the provider.
//
// A provider must not throw, must not install or uninstall providers or handlers from
// inside its operations, and must not block waiting for another thread that uses the
// library. The library never owns the installed provider: the host uninstalls it (sets
// null) before destroying it. The slot is a plain pointer that belongs to the host's main
// thread, and every operation is called on that thread.
//
//     class ToolkitDialogs : public DialogProvider {
//         int ShowMessageBox(const String& text, unsigned int style) override;
//     };
//     ToolkitDialogs dialogs;
//     SetDialogProvider(&dialogs);   // the toolkit's boxes; the other dialogs stay the
//                                    // platform's
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

class FILEIO_API DialogProvider {
public:
    DialogProvider() = default;
    virtual ~DialogProvider();

    /// Shows `text` in a modal box of `style` (buttons plus icon, see above), captioned with
    /// the application's name, and returns the answer of the button pressed.
    virtual int ShowMessageBox(const String& text, unsigned int style);

    /// Plays the warning sound of kind `sound` (see above).
    virtual void WarningSound(unsigned int sound);

    /// Asks `text` under `caption` with a "don't ask again" check box that starts unticked.
    /// Returns true for Yes and false for No; with `okOnly` the only button is OK, which
    /// answers false, and the check box reads "Don't show this again". `dontAskAgain` is set
    /// to the check box's state as the user left it.
    virtual bool AskYesNoDontask(const String& caption, const String& text, bool okOnly,
                                 bool& dontAskAgain);

    /// Asks the user to locate an existing file: a dialog titled `title` offering the file
    /// types of `filter`, starting in `folder` (empty: wherever the system chooses) with
    /// `proposedName` in its name field, and with the cancel-all check box. Returns true with
    /// `chosen` set to the full path of the file picked; false when the user cancelled
    /// (`chosen` is then left as it was). `cancelAll` comes in as the check box's state and
    /// goes out as the user left it, whichever way the dialog ended.
    ///
    /// `filter` is in the suite's form: fields separated by "|", each file type a display
    /// text and its pattern followed by a field "****", the list ending with "||":
    ///     "MDL Files (*.mdl)|*.mdl|****|All Files (*.*)|*.*|****||"
    /// On Linux the user types the path (a relative one starts in `folder`), an empty line
    /// to cancel, or "!cancel-all" to tick the check box and cancel; a path that names no
    /// file is asked for again.
    virtual bool LocateFile(const String& title, const String& filter, const String& folder,
                            const String& proposedName, bool& cancelAll, String& chosen);

protected:
    DialogProvider(const DialogProvider&) = default;
    DialogProvider& operator=(const DialogProvider&) = default;
};

/// The provider the library's dialogs go through: the installed one, or the platform's
/// own while none is installed. Never null.
FILEIO_API DialogProvider* GetDialogProvider();

/// Installs `provider` (null puts the platform's own back) and returns the provider it
/// replaces, as GetDialogProvider returned it (never null), so that a host can restore it
/// or hand on to it the dialogs it does not show itself.
FILEIO_API DialogProvider* SetDialogProvider(DialogProvider* provider);
