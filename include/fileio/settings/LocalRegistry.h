// LocalRegistry.h - the local registry settings: texts and numbers the library reads and
// writes itself in the current user's settings, below "SOFTWARE\Varn, Inc.\".
//
// The key of a section S is "SOFTWARE\Varn, Inc.\S" while the local registry profile
// (SettingsLocations.h) is empty, and "SOFTWARE\Varn, Inc.\P\S" while it is P. Values are
// string values; numbers are stored and read as by the profile settings (RegistrySettings.h).
// On Windows the settings are the registry under HKEY_CURRENT_USER; on Linux they are the
// user's settings file, $XDG_CONFIG_HOME/varn-settings.hive.
//
// Thread safety: none; settings belong to the host's main thread. Several processes may
// read and write the same settings at once.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

/// The text stored as `entry` of the section's key; `defaultValue` when the key cannot be
/// opened or does not hold `entry` as a string value. A read-only key is still read.
FILEIO_API String GetLocalRegistryString(const String& section, const String& entry,
                                         const String& defaultValue);
/// The stored number (decimal conversion; a text without a number reads as 0);
/// `defaultValue` when the entry is absent.
FILEIO_API int GetLocalRegistryValue(const String& section, const String& entry, int defaultValue);
FILEIO_API float GetLocalRegistryValue(const String& section, const String& entry,
                                       float defaultValue);

/// Creates the section's key when needed and stores the text. Non-zero on success, 0 when
/// the settings cannot be written.
FILEIO_API int SetLocalRegistryString(const String& section, const String& entry,
                                      const String& value);
/// Stores the number's String text.
FILEIO_API int SetLocalRegistryValue(const String& section, const String& entry, int value);
FILEIO_API int SetLocalRegistryValue(const String& section, const String& entry, float value);

/// Removes the key "SOFTWARE\Varn, Inc.\" + name, with everything below it, whatever the
/// local registry profile. An empty name removes nothing.
FILEIO_API void ResetLocalRegistry(const String& name);
/// Removes the key `name` below `key`, with everything below it.
FILEIO_API void ResetLocalRegistry(const String& key, const String& name);
