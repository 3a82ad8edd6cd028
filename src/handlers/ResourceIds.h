// ResourceIds.h - the ids of the library's string resources (ResourceStrings.h), for the
// library's own code.
#pragma once

namespace fileio::detail::resource {

inline constexpr unsigned int kLocateFileTitle = 1;        // "Locate File: %1"
inline constexpr unsigned int kCancelAllMissingFiles = 17; // the locate dialog's check box
inline constexpr unsigned int kApplicationCaption = 128;
inline constexpr unsigned int kEnterValidFrame = 3056;
inline constexpr unsigned int kLoadingFile = 4356; // "Loading [ %1 ]"
inline constexpr unsigned int kYesButton = 6581;
inline constexpr unsigned int kNoButton = 6582;
inline constexpr unsigned int kOkButton = 6583;
inline constexpr unsigned int kDontAskAgain = 6584;
inline constexpr unsigned int kDontShowAgain = 6585;
inline constexpr unsigned int kReadOnlyFile = 61732; // "%1" is the file's name

} // namespace fileio::detail::resource
