// InvalidFrameMessage.cpp - the user's notice of a failed time validation.
#include "ui/InvalidFrameMessage.h"

namespace fileio::detail {

void ShowInvalidFrameNumberMessage() noexcept {
    // Shown through MessageRequest (exclamation icon, OK button) once the message
    // handlers are part of the library; nothing is shown before that.
}

} // namespace fileio::detail
