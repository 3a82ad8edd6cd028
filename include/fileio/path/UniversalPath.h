// UniversalPath.h - the native and universal forms of a path, and the component arithmetic
// that relative conversion uses.
//
// Native form is the platform's own: "\" separators on Windows ("C:\a\b.mdl",
// "\\Server\Share\b.mdl"), "/" on Linux. Universal form, which the suite's files store, has
// "/" separators on every platform ("C:/a/b.mdl", "//Server/Share/b.mdl"). Inside a
// universal path the byte 0x12 stands for a "/" that belongs to a file name.
//
// Components are the pieces between the separators ":" and "/", so a drive letter counts
// as a component of its own: "C:/a/b.mdl" has the components "C", "a" and "b.mdl".
//
// These functions hold no state and may be called from any thread, except that
// UniversalToNative consults the drive table (see GetServerFileName).
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

/// Every "\" replaced by "/"; nothing else changes (case, drive letters, "." and ".."
/// stay). Empty gives empty.
FILEIO_API String NativeToUniversal(const String& path);

/// The path's Macintosh-server form mapped to its network share (String::GetServerFileName),
/// then every "/" turned into the native separator and every byte 0x12 into "/". Empty
/// gives empty. UniversalToNative(NativeToUniversal(p)) is p for every native path without
/// "/" or 0x12 that is not a Macintosh server path.
FILEIO_API String UniversalToNative(const String& path);

/// The number of components; 0 for an empty path. GetPathDepth("C:/Projects/Robot/") is 3.
FILEIO_API int GetPathDepth(const String& path);

/// The number of leading components that a and b share, compared without regard to case:
/// "C:/Proj/" and "C:/Proj/x" share 2, "C:/Proj/" and "C:/Project/x" share 1 (only "C").
/// 0 when they share none, -1 when either is empty.
FILEIO_API int MatchPathDepth(const String& a, const String& b);

/// The path without its first `count` components, from the first character of the next
/// one on, its separators as they stand: ShortenPath("C:/Projects/Robot/arm.mdl", 2) is
/// "Robot/arm.mdl". Empty when count < 1 or when nothing is left.
FILEIO_API String ShortenPath(const String& path, int count);
