// BasePath.h - the process-wide base path: the folder of the project file (or other file
// of the suite) being loaded or saved, against which file references are made relative when
// written and absolute when read (String::GetRelativePath, String::GetAbsolutePath).
//
// The host calls SetBasePath with the file's name before it loads or saves the file, and
// FreeBasePaths when it unloads the library. There is one base path per process and no
// stack: a nested load that sets its own base path changes the outer one's too. Until the
// first SetBasePath, and after FreeBasePaths, every conversion passes paths through
// unchanged.
//
// Thread safety: none. The base path belongs to the host's main thread; a load on another
// thread must not overlap with one that sets the base path.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

/// Makes the folder of `fileName` the base path. The name is kept with doubled
/// separators collapsed (GetBasePath returns it); its folder part, in universal form with a
/// trailing "/" ("C:/Projects/Robot/"), becomes the base folder of the conversions. An empty
/// name changes nothing: the previous base path stays in force.
FILEIO_API void SetBasePath(const String& fileName);

/// The file name last given to SetBasePath (doubled separators collapsed), or empty.
FILEIO_API String GetBasePath();

/// Forgets the base path: afterwards conversions pass paths through unchanged.
FILEIO_API void FreeBasePaths();
