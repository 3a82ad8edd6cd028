// Session.h - the library as the tool needs it for one run: every message it shows goes to
// standard error, no question is ever asked (a missing file is never looked for by a person:
// the locate dialog is answered Cancel), and the process-wide state a command fills (base
// path, aliases, search paths, the failed list) is emptied again at the end.
#pragma once

#include "Output.h"
#include "fileio/FileIO.h"

namespace fileio::tool {

class Session {
public:
    explicit Session(Output& output);
    /// Puts the handlers back as they were and frees the process-wide state.
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

private:
    /// The library's messages, as diagnostics.
    class Messages : public MessageHandler {
    public:
        explicit Messages(Output& output) : m_output(output) {}
        void MessageRequest(const String& caption, const String& text) override;

    private:
        Output& m_output;
    };
    /// The library's log lines, as notes.
    class Log : public LogHandler {
    public:
        explicit Log(Output& output) : m_output(output) {}
        void LogMessage(const String& line) override;

    private:
        Output& m_output;
    };
    /// Missing files are never asked for.
    class Files : public FileHandler {
    public:
        bool IsPrompt() override { return false; }
    };
    /// Every dialog answers at once with the answer that stops, its text told as a
    /// diagnostic.
    class Dialogs : public DialogProvider {
    public:
        explicit Dialogs(Output& output) : m_output(output) {}
        int ShowMessageBox(const String& text, unsigned int style) override;
        void WarningSound(unsigned int) override {}
        bool AskYesNoDontask(const String& caption, const String& text, bool okOnly,
                             bool& dontAskAgain) override;
        bool LocateFile(const String& title, const String& filter, const String& folder,
                        const String& proposedName, bool& cancelAll, String& chosen) override;

    private:
        Output& m_output;
    };

    Messages m_messages;
    Log m_log;
    Files m_files;
    Dialogs m_dialogs;
    ScopedMessageHandler m_messageSlot;
    ScopedLogHandler m_logSlot;
    ScopedFileHandler m_fileSlot;
    ScopedDialogProvider m_dialogSlot;
};

} // namespace fileio::tool
