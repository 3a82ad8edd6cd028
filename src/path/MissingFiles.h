// MissingFiles.h - the search for missing files: remembered file and folder aliases, the
// failed list, the "cancel all" choice and the locate dialog (internal). FileStream's static
// members are the public face of these; the memory stream's and the file stream's openers
// and String::GetMatchNameAbsoluteFromFile use them directly.
//
// All of it is process-wide, unlocked, and belongs to the host's main thread.
#pragma once

#include "fileio/core/String.h"
#include "platform/Platform.h"

#include <string_view>

namespace fileio::detail {

void AddFileAlias(const String& from, const String& to);
void AddPathAlias(const String& from, const String& to);
bool FindFileAlias(String& name);
bool FindFileAliasNameOnly(String& name);
bool FindPathAlias(String& folder);
bool FindAlias(String& name);
bool FindAliasAsk(String& name);
bool IsInFailedList(const String& name);
void ClearFailedList();
void ResetCancelAll();
bool HasFileAliases();
void FreeFileAliases();
void FreePathAliases();

/// How many trailing folder levels the shorter alias derived from the pair (from, to)
/// removes: the separators ("\", and "/" too in the POSIX style) among the last characters
/// of `to`, counted over as many positions as from and to share at their ends, ending at
/// the terminating NUL.
int DerivedAliasLevels(std::string_view from, std::string_view to,
                       platform::PathStyle style = platform::kNativePathStyle);

/// `path` without its last `levels` folder levels, ending in its separator: a trailing
/// separator is dropped, then the last name. Empty when nothing is left.
String RemoveFolderLevels(const String& path, int levels);

/// The search an opener runs before it loads `name`: with `dontAsk` a missing file fails at
/// once; otherwise, while `name` names no file, FindAliasAsk is asked (and may change it),
/// and a refusal gives false. A name the search gives a second time ends it with false
/// (file aliases in a circle, a dialog that keeps offering a missing file): it never loops.
bool LocateFileToLoad(String& name, bool dontAsk);

} // namespace fileio::detail
