// SearchPaths.h - named lists of the folders in which the suite looks for its resources.
//
// Each list (SearchPaths) has a name, the settings entry under which the user's choice of
// folders is stored, and its folders (a chain of FullPaths). All lists live in one
// process-wide chain, newest first, from the first AddSearchPath or AddSearchPathString
// until FreeAllSearchPaths, which the host calls at shutdown. Lists are never removed one by
// one; adding a list under a name already used adds a second one, which FindSearchPath then
// finds.
//
// Folder lists are texts of folders separated by ";". Separators in them become the
// platform's own ("\" on Windows, "/" on Linux).
//
// Thread safety: none. The chain belongs to the host's main thread.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

/// One folder of a list.
struct FILEIO_API FullPaths {
    String path;
    FullPaths* next = nullptr;

    FullPaths() = default;
    explicit FullPaths(const String& folder) : path(folder) {}
    /// Copies take the path and the next pointer as they are: a shallow link, so a copy
    /// shares the rest of the list. Release a whole list with FreeFullPaths only once.
    FullPaths(const FullPaths&) = default;
    FullPaths(FullPaths&&) = default;
    FullPaths& operator=(const FullPaths&) = default;
    FullPaths& operator=(FullPaths&&) = default;
    /// Frees the node's own path only, never the nodes after it.
    ~FullPaths() = default;
};

/// One named list of folders.
struct FILEIO_API SearchPaths {
    String name;                 ///< what FindSearchPath looks for
    String key;                  ///< the settings entry of the list's folders
    SearchPaths* next = nullptr; ///< the next (older) list of the chain
    FullPaths* paths = nullptr;  ///< the first folder, or null

    SearchPaths() = default;
    /// Releases the folders (FreeFullPaths), the key and the name; not the next list.
    ~SearchPaths();
    SearchPaths(const SearchPaths&) = delete;
    SearchPaths& operator=(const SearchPaths&) = delete;
};

/// Builds a list of folders from a ";"-separated text, in the text's order. Separators
/// become the native one; a folder that holds a separator gets one at its end if it has
/// none; a folder without any separator is kept as it is; empty items are skipped.
/// "a\b;;c/d" gives "a\b\" and "c\d\" on Windows ("a/b/" and "c/d/" on Linux); "" gives null.
FILEIO_API FullPaths* CreateFullPaths(String text);

/// Frees every node of the list with its path and sets `list` to null (a null list only
/// sets it to null).
FILEIO_API void FreeFullPaths(FullPaths*& list);

/// Adds a list to the front of the chain and returns it. Its folders are the stored setting
/// `key` of the folders location section (GetFoldersLocation), read without a local
/// registry profile; when nothing is stored, the one folder `defaultFolder` below the
/// program's own folder, with a trailing separator (the program's folder itself when
/// `defaultFolder` is empty).
FILEIO_API SearchPaths* AddSearchPath(const String& name, const String& key,
                                      const String& defaultFolder);

/// Adds a list to the front of the chain and returns it. Its folders are the items of the
/// ";"-separated `folders`, each joined to `baseFolder` (String::CombineNameToPath). Nothing
/// is read from or written to the settings.
FILEIO_API SearchPaths* AddSearchPathString(const String& name, const String& key,
                                            const String& folders, const String& baseFolder);

/// Adds `folder` at the front of the list's folders, unless it does not exist or the list
/// already holds it (compared without regard to case), and stores the list, joined by ";",
/// as the setting `key` of the section "Folders v19.5 64bit" without a local registry
/// profile. Note: AddSearchPath reads from the folders location instead; the two meet only
/// when the host's folders location is that same text. A null list is ignored.
FILEIO_API void AddSearchPathNoDupe(const String& folder, SearchPaths* list);

/// The newest list whose name equals `name` (without regard to case), or null.
FILEIO_API SearchPaths* FindSearchPath(const String& name);

/// The newest list (the chain's head), or null.
FILEIO_API SearchPaths* GetSearchPaths();

/// Frees every list of the chain and empties it.
FILEIO_API void FreeAllSearchPaths();
