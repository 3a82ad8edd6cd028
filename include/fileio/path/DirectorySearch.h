// DirectorySearch.h - the files of a folder whose names match a wildcard, optionally in
// every folder below it too.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

#include <vector>

/// The files of `folder` whose names match `wildcard` ("*" any run of characters, "?" one
/// character; "*.*" and an empty wildcard match every name), as full paths made of the
/// folder and the name joined by one native separator. Names match by the system's rule:
/// case-insensitively on Windows, exactly on Linux. Each folder's files come sorted by name
/// (in that same rule); with `recursive`, the files of each subfolder follow, subfolders in
/// name order, depth first. Only files are listed; links to folders are not descended into.
/// A folder that cannot be read contributes nothing.
FILEIO_API std::vector<String> FindFilesInFolder(const String& folder, const String& wildcard,
                                                 bool recursive);
