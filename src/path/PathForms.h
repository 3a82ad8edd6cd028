// PathForms.h - the forms of a path: native and universal, relative and absolute, and the
// network forms. These are the algorithms behind the public path functions and the String
// path members, with the path style as a parameter (the public functions pass the
// platform's own style), so that each platform's rules can be tested on the other.
#pragma once

#include "path/PathText.h"

#include <string>
#include <string_view>

namespace fileio::detail {

// ---- universal form ------------------------------------------------------------------

/// Every "\\" replaced by "/".
std::string NativeToUniversal(std::string_view path);

/// GetServerFileName, then "/" to the native separator and the byte 0x12 to "/" (on POSIX
/// "\\" becomes "/" as well).
std::string UniversalToNative(std::string_view path, PathStyle style);

/// The number of components between the separators ":" and "/", after doubled separators
/// were collapsed; 0 for an empty path.
int PathDepth(std::string_view path);

/// The number of leading components that `a` and `b` share, compared case-insensitively;
/// -1 when either is empty.
int MatchPathDepth(std::string_view a, std::string_view b);

/// `path` from its component `count` + 1 on, with its separators as they stand; empty when
/// `count` < 1 or the path has no more than `count` components.
std::string ShortenPath(std::string_view path, int count);

// ---- network forms -------------------------------------------------------------------

/// A path on a volume of a Macintosh file server ("MACSERVER/" ... "Volumes/VOL/rest") as
/// the path of the network share that holds the volume ("\\\\server\\VOL/rest"), cut to
/// kMaxPath - 1 characters; any other path, or one whose share is not connected, unchanged.
std::string GetServerFileName(std::string_view path, PathStyle style);

/// The network form of a local path: through this machine's shares, else through the
/// drive it is mapped on. A drive-letter path, a path that begins with two separators and
/// a path that cannot be converted come back unchanged.
std::string GetUNCFileName(std::string_view path, PathStyle style);

/// Looks for a mapped drive (a network mount on POSIX) whose share name is `share`,
/// examining the drives from the last to the first; `root` receives its connection name.
bool FindDriveForShare(std::string_view share, PathStyle style, std::string& root);

/// A path on a mapped drive ("X:\\..." on Windows, below a network mount point on POSIX)
/// with its drive replaced by the drive's connection name, cut to kMaxPath - 1 characters.
/// Connection names are remembered in a process-wide cache.
bool MappedDriveToUNC(std::string_view path, PathStyle style, std::string& out);

/// A path within a folder that this machine shares, as "\\\\host\\share\\rest" (with the
/// style's separator). When several shares contain the path, the deepest one wins.
bool LocalPathToShare(std::string_view path, PathStyle style, std::string& out);

/// Forgets the connection names that MappedDriveToUNC remembered.
void ClearConnectionCache();

// ---- relative and absolute forms against the base path -----------------------------

/// A universal path relative to the base path where they share a leading component; "."
/// for the base folder itself; otherwise the universal network form of the path.
std::string AbsoluteToRelative(std::string_view universal, PathStyle style);

/// Which base folder RelativeToAbsolute resolves against.
enum class BaseChoice { Base, MatchBase };

/// Resolves a universal path against the chosen base folder by making it the process's
/// current directory (and leaving it so) and asking for the full path. Failures are written
/// to the debug trace unless `quiet`; the path comes back unchanged when it cannot be
/// resolved.
std::string RelativeToAbsolute(std::string_view universal, BaseChoice base, bool quiet,
                               PathStyle style);

/// The String path members, one for one.
std::string GetRelativePath(std::string_view path, PathStyle style);
std::string GetAbsolutePath(std::string_view path, bool useMatchBase, PathStyle style);
std::string GetAbsolutePathQuiet(std::string_view path, PathStyle style);
std::string GetNonRelativePath(std::string_view path, PathStyle style);
std::string GetMatchNameRelativeForFile(std::string_view quoted, PathStyle style);
std::string GetMatchNameAbsoluteFromFile(std::string_view quoted, PathStyle style);

} // namespace fileio::detail
