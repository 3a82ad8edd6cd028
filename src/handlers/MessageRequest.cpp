// MessageRequest.cpp - the library's one message box.

#include "fileio/handlers/MessageRequest.h"

#include "fileio/handlers/DialogProvider.h"
#include "fileio/handlers/MessageHandler.h"
#include "fileio/handlers/ResourceStrings.h"
#include "platform/Platform.h"

#include <iterator>

namespace {

namespace box = fileio::platform::box;

constexpr int kNoSound = -1;
constexpr unsigned int kDefaultSound = 0;

/// The warning sound and the box style of a message type.
struct BoxKind {
    int sound; // a warning-sound kind, or kNoSound
    unsigned int style;
};

// Indexed by type; types past the end show nothing.
constexpr BoxKind kBoxKinds[] = {
    {kDefaultSound, box::kOk},
    {box::kIconQuestion, box::kOkCancel},
    {box::kIconQuestion, box::kRetryCancel | box::kIconQuestion},
    {box::kIconQuestion, box::kYesNo},
    {box::kIconQuestion, box::kYesNoCancel},
    {box::kIconQuestion, box::kAbortRetryIgnore | box::kIconQuestion},
    {box::kIconQuestion, box::kYesNoCancel},
    {box::kIconExclamation, box::kOk | box::kIconExclamation},
    {kNoSound, box::kOk | box::kIconInformation},
    {kNoSound, box::kOk | box::kIconStop},
    {kNoSound, box::kOk | box::kIconStop},
};

/// The library's answer for the button pressed.
int AnswerOf(int button) {
    switch (button) {
    case box::kAnswerOk:
    case box::kAnswerRetry:
    case box::kAnswerYes:
        return 1;
    case box::kAnswerCancel:
        return -1;
    case box::kAnswerIgnore:
        return 2;
    default: // Abort, No, and a box that could not be shown
        return 0;
    }
}

} // namespace

int MessageRequest(const String& text, unsigned int type, unsigned int captionId) {
    if (MessageHandler* handler = GetMessageHandler()) {
        handler->MessageRequest(GetResourceString(captionId), text);
        return 1;
    }
    fileio::platform::Dialogs().alertMainWindow();
    if (type >= std::size(kBoxKinds))
        return 0;
    const BoxKind& kind = kBoxKinds[type];
    DialogProvider* dialogs = GetDialogProvider();
    if (kind.sound != kNoSound)
        dialogs->WarningSound(static_cast<unsigned int>(kind.sound));
    return AnswerOf(dialogs->ShowMessageBox(text, kind.style));
}

int MessageRequest(unsigned int textId, unsigned int type, unsigned int captionId) {
    return MessageRequest(GetResourceString(textId), type, captionId);
}
