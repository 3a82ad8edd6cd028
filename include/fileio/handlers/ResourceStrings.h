// ResourceStrings.h - the library's string resources: the texts it shows, by id.
//
// The library's messages come from this table, never from literals in the code, so that
// every text shown to the user is listed in one place. Ids with "%1" in their text expect
// a name put in its place by the caller.
//
//   1      "Locate File: %1"
//   17     "Cancel all remaining missing files during this load."
//   128    "FileIO" (the caption callers pass for the application's messages)
//   3056   "Please enter a valid frame number."
//   4356   "Loading [ %1 ]"
//   6581   "Yes", 6582 "No", 6583 "OK" (buttons of the don't-ask question)
//   6584   "Don't ask me again", 6585 "Don't show this again" (its check box)
//   61732  "The file %1 is read-only and cannot be saved."
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

/// The text of string resource `id`; the empty (null) string for an id the library does
/// not have.
FILEIO_API String GetResourceString(unsigned int id);
