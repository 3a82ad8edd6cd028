// InvalidFrameMessage.cpp - the user's notice of a failed time validation.
#include "ui/InvalidFrameMessage.h"

#include "fileio/handlers/MessageRequest.h"
#include "handlers/ResourceIds.h"

namespace fileio::detail {

namespace {
constexpr unsigned int kExclamation = 7; // OK button, exclamation icon and sound
} // namespace

void ShowInvalidFrameNumberMessage() noexcept {
    MessageRequest(resource::kEnterValidFrame, kExclamation, resource::kApplicationCaption);
}

} // namespace fileio::detail
