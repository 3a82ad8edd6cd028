// FileSystem.h - existence tests, copying, renaming, removing and creating folders.
//
// Paths are native 8-bit text; both separators are accepted. Names follow the system's
// rules: case-insensitive on Windows, the file system's on Linux. Every function reports
// failure through its result and never throws. Safe to call from any thread.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

/// True when the path names an existing file or folder; false for an empty path.
FILEIO_API bool FileExists(const String& path);

/// True when the path names an existing folder.
FILEIO_API bool DirExists(const String& path);

/// Removes a file, or a folder that is empty. True on success.
FILEIO_API bool Remove(const String& path);

/// Copies the file `from` over `to`, creating or replacing `to`. True on success; false
/// when `from` cannot be read, `to` cannot be written, or both name the same file.
FILEIO_API bool VarnCopyFile(const String& from, const String& to);

/// Renames or moves a file or folder within one volume. An existing `to` is never
/// replaced: the call fails instead. True on success.
FILEIO_API bool RenameFile(const String& from, const String& to);

/// Creates the folder and every missing folder above it. True when the folder exists
/// afterwards (including when it existed before).
FILEIO_API bool CreateFolder(const String& path);
