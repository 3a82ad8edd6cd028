// InvalidFrameMessage.h - the message a failed time validation shows the user.
#pragma once

namespace fileio::detail {

/// String resource 3056, shown with the exclamation icon when a time entered in a dialog
/// lies outside its range.
inline constexpr int InvalidFrameNumberMessageId = 3056;
inline constexpr const char* InvalidFrameNumberMessage = "Please enter a valid frame number.";

/// Tells the user that the time entered is out of range. Until the library's message
/// requests exist this shows nothing: it is the one place that will call MessageRequest
/// with the message above.
void ShowInvalidFrameNumberMessage() noexcept;

} // namespace fileio::detail
