// YesNoDontask.h - a yes/no question that the user can tell not to ask again.
//
// The user's wish is remembered in the profile settings (RegistrySettings.h), in section
// `section`: the switch key + "Ask" ("ON" while the question is to be asked) and the
// switch key + "Answer" (the answer replayed while it is not).
//
// Must run on the thread that shows the user interface.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

class FILEIO_API YesNoDontask {
public:
    /// An answer; AnswerGiven serves only as a `remember` value. (Any int converts; every
    /// `remember` other than Yes and AnswerGiven replays No.)
    enum Answer : int { No = 0, Yes = 1, AnswerGiven = 2 };

    /// Asks `text` under `caption`, unless the user chose not to be asked again: then the
    /// stored answer is returned without asking (Yes when key + "Answer" reads true, its
    /// default). The question goes through the dialog provider's AskYesNoDontask
    /// (DialogProvider.h). The dialog offers Yes, No and a "Don't ask me again" check box; with
    /// `okOnly` it offers only OK (which answers No) and "Don't show this again". The
    /// answer is Yes when the user pressed Yes, else No. When the box was ticked,
    /// key + "Ask" becomes false and key + "Answer" the answer to replay: the one just given
    /// when `remember` is AnswerGiven, true when it is Yes, false otherwise.
    /// Nobody to ask (Linux without a terminal): No, and nothing is stored.
    static Answer Ask(const String& caption, const String& text, const String& section,
                      const String& key, Answer remember, bool okOnly);
};
