// SettingsLocations.h - the three process-wide location strings of the settings.
//
// Each is empty when the library is loaded. The local registry profile selects the key
// that the local registry settings use (LocalRegistry.h); the profile location and the
// folders location are kept for the host and the rest of the suite.
//
// Thread safety: none; the strings belong to the host's main thread.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

/// A copy of the profile location.
FILEIO_API String GetProfileLocation();
/// Replaces the profile location.
FILEIO_API void SetProfileLocation(const String& location);
/// Empties the profile location and gives its storage back.
FILEIO_API void FreeProfileLocation();

/// A copy of the folders location (the section that holds the stored folder lists).
FILEIO_API String GetFoldersLocation();
/// Replaces the folders location.
FILEIO_API void SetFoldersLocation(const String& location);
/// Empties the folders location and gives its storage back.
FILEIO_API void FreeFoldersLocation();

/// A copy of the local registry profile.
FILEIO_API String GetLocalRegistryProfile();
/// Replaces the local registry profile: a non-empty profile P puts the local registry
/// settings of section S under "SOFTWARE\Varn, Inc.\P\S" instead of "SOFTWARE\Varn, Inc.\S".
FILEIO_API void SetLocalRegistryProfile(const String& profile);
/// Empties the local registry profile and gives its storage back.
FILEIO_API void FreeLocalRegistryProfile();
