// InvalidFrameMessage.h - the message a failed time validation shows the user.
#pragma once

namespace fileio::detail {

/// Tells the user that the time entered is out of range: string resource 3056 ("Please
/// enter a valid frame number.") through MessageRequest with the exclamation type (7) and
/// the application's caption.
void ShowInvalidFrameNumberMessage() noexcept;

} // namespace fileio::detail
