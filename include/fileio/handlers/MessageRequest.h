// MessageRequest.h - the library's one message box.
//
// With a message handler installed (MessageHandler.h), the text and the caption (the
// string resource captionId) go to the handler and the answer is 1: nothing is shown and
// nothing is asked. Otherwise a modal box is shown with the application's caption, after
// the type's warning sound, both through the dialog provider (DialogProvider.h):
//
//   type  sound        buttons and icon
//   0     default      OK
//   1     question     OK, Cancel
//   2     question     Retry, Cancel; question icon
//   3     question     Yes, No
//   4     question     Yes, No, Cancel
//   5     question     Abort, Retry, Ignore; question icon
//   6     question     Yes, No, Cancel
//   7     exclamation  OK; exclamation icon
//   8     none         OK; information icon
//   9     none         OK; stop icon
//   10    none         OK; stop icon
//   11+   no box is shown and the answer is 0
//
// The answer: 1 for OK, Retry or Yes; 0 for Abort or No; -1 for Cancel; 2 for Ignore.
// The platform's own box on Linux is a question on the terminal, asked only when standard
// input and standard error are both terminals; otherwise the answer is the one that stops
// (Cancel where the box has one, else No, else Abort, else OK).
//
// Must run on the thread that shows the user interface.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

/// Shows `text` in a box of `type` and returns the user's answer (see above).
/// Example: MessageRequest("Overwrite the file?", 3, 128) answers 1 for Yes, 0 for No.
FILEIO_API int MessageRequest(const String& text, unsigned int type, unsigned int captionId);
/// As above, with the text of string resource `textId` (GetResourceString).
FILEIO_API int MessageRequest(unsigned int textId, unsigned int type, unsigned int captionId);
