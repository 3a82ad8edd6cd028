// VersionControl.h - whether a file lies in a working copy of the version-control system.
//
// A working copy is marked by a ".svn" folder at its top (older clients put one in every
// folder of it): a file is versioned when its own folder or any folder above it holds one.
// Safe to call from any thread.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

/// True when a ".svn" folder lies in the file's folder or in one of its ancestors. The
/// path is made absolute against the current directory first; an empty path gives false.
/// The file itself need not exist.
FILEIO_API bool SVNIsVersioned(const String& path);
