// Session.cpp - the handlers the tool installs, and the state it frees.

#include "Session.h"

#include "Text.h"

namespace fileio::tool {

namespace {

// Message-box buttons (style & kButtonsMask) and the answers that stop each of them.
constexpr unsigned kButtonsMask = 0x0F;
constexpr int kAnswerOk = 1, kAnswerCancel = 2, kAnswerAbort = 3, kAnswerNo = 7;
constexpr int kStopAnswers[] = {
    kAnswerOk,     // OK
    kAnswerCancel, // OK, Cancel
    kAnswerAbort,  // Abort, Retry, Ignore
    kAnswerCancel, // Yes, No, Cancel
    kAnswerNo,     // Yes, No
    kAnswerCancel, // Retry, Cancel
};

} // namespace

void Session::Messages::MessageRequest(const String&, const String& text) {
    m_output.Error(Printable(text.View()));
}

void Session::Log::LogMessage(const String& line) {
    m_output.Note(Printable(line.View()));
}

int Session::Dialogs::ShowMessageBox(const String& text, unsigned int style) {
    m_output.Error(Printable(text.View()));
    const unsigned buttons = style & kButtonsMask;
    return buttons < std::size(kStopAnswers) ? kStopAnswers[buttons] : kAnswerOk;
}

bool Session::Dialogs::AskYesNoDontask(const String&, const String& text, bool,
                                       bool& dontAskAgain) {
    m_output.Error(Printable(text.View()));
    dontAskAgain = false;
    return false;
}

bool Session::Dialogs::LocateFile(const String&, const String&, const String&, const String&, bool&,
                                  String&) {
    return false;
}

Session::Session(Output& output)
    : m_messages(output), m_log(output), m_dialogs(output), m_messageSlot(&m_messages),
      m_logSlot(&m_log), m_fileSlot(&m_files), m_dialogSlot(&m_dialogs) {}

Session::~Session() {
    FileStream::ClearFailedList();
    FileStream::ResetCancelAll();
    FileStream::FreeFileAliases();
    FileStream::FreePathAliases();
    FreeAllSearchPaths();
    FreeBasePaths();
}

} // namespace fileio::tool
