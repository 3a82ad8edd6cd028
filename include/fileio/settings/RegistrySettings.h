// RegistrySettings.h - the profile settings: numbers, switches and texts read and written
// through the host's installed application profile (ApplicationProfile.h).
//
// Every value except binary data is stored as text:
//   int, float, double  the String text of the number ("42", "0.100000001", "0.5")
//   BOOL                "ON" for true, "OFF" for false
//   string              the text itself
// Numbers are read back by decimal conversion: leading blanks and a sign are allowed, the
// conversion stops at the first character that does not fit, and a text without a number
// reads as 0, not as the default.
//
// Without an installed profile object, readers return their default and writers return 0.
//
// Every function taking a section and an entry has an overload taking an int first, then
// the section and entry as C texts: the int is ignored and the call is forwarded.
//
// Thread safety: none; profile settings belong to the host's main thread.
#pragma once

#include "fileio/Export.h"
#include "fileio/core/String.h"

// ---- numbers ----------------------------------------------------------------------------

/// The number stored as `entry` of `section`; `defaultValue` when the entry is absent.
/// Example: a missing entry reads as the default, 7; an entry holding "abc" reads as 0.
FILEIO_API int GetRegistryValue(const String& section, const String& entry, int defaultValue);
FILEIO_API float GetRegistryValue(const String& section, const String& entry, float defaultValue);
FILEIO_API double GetRegistryValue(const String& section, const String& entry, double defaultValue);
FILEIO_API int GetRegistryValue(int, const char* section, const char* entry, int defaultValue);
FILEIO_API float GetRegistryValue(int, const char* section, const char* entry, float defaultValue);
FILEIO_API double GetRegistryValue(int, const char* section, const char* entry,
                                   double defaultValue);

/// Stores the number's text. Returns the profile's answer (non-zero on success), 0 when
/// no profile object is installed.
FILEIO_API int SetRegistryValue(const String& section, const String& entry, int value);
FILEIO_API int SetRegistryValue(const String& section, const String& entry, float value);
FILEIO_API int SetRegistryValue(const String& section, const String& entry, double value);
FILEIO_API int SetRegistryValue(int, const char* section, const char* entry, int value);
FILEIO_API int SetRegistryValue(int, const char* section, const char* entry, float value);
FILEIO_API int SetRegistryValue(int, const char* section, const char* entry, double value);

// ---- switches ---------------------------------------------------------------------------

/// True (1) when the stored text is "ON" or "true" in any case; anything else, "1", "yes"
/// and the empty text included, is false (0). A missing entry reads as `defaultValue`.
FILEIO_API int GetRegistryBOOL(const String& section, const String& entry, int defaultValue);
FILEIO_API bool GetRegistryBOOL(const String& section, const String& entry, bool defaultValue);
FILEIO_API int GetRegistryBOOL(int, const char* section, const char* entry, int defaultValue);
FILEIO_API bool GetRegistryBOOL(int, const char* section, const char* entry, bool defaultValue);

/// Stores "ON" for a true (non-zero) value, else "OFF". Returns the profile's answer.
FILEIO_API int SetRegistryBOOL(const String& section, const String& entry, int value);
FILEIO_API bool SetRegistryBOOL(const String& section, const String& entry, bool value);
FILEIO_API int SetRegistryBOOL(int, const char* section, const char* entry, int value);
FILEIO_API bool SetRegistryBOOL(int, const char* section, const char* entry, bool value);

// ---- texts ------------------------------------------------------------------------------

/// The stored text; `defaultValue` when the entry is absent.
FILEIO_API String GetRegistryString(const String& section, const String& entry,
                                    const String& defaultValue);
/// As above. The text returned stays valid until the next call of this overload (never
/// null: an empty text is ""); the caller does not free it.
FILEIO_API char* GetRegistryString(int, const char* section, const char* entry,
                                   const char* defaultValue);

/// Stores the text. Returns the profile's answer, 0 without a profile object.
FILEIO_API int SetRegistryString(const String& section, const String& entry, const String& value);
FILEIO_API int SetRegistryString(int, const char* section, const char* entry, const char* value);

/// Removes the entry (by writing a null value through the profile's WriteProfileString).
/// Returns the profile's answer, 0 without a profile object.
FILEIO_API int DeleteRegistryItem(const String& section, const String& entry);
FILEIO_API int DeleteRegistryItem(int, const char* section, const char* entry);

// ---- binary data ------------------------------------------------------------------------

/// Handed unchanged to the profile's GetProfileBinary: on success *data is a buffer the
/// caller releases with delete[]. Returns 0 (with *data null and *bytes 0) without a
/// profile object.
FILEIO_API int GetProfileBinarySplit(const String& section, const String& entry,
                                     unsigned char** data, unsigned int* bytes);
FILEIO_API int GetProfileBinarySplit(int, const char* section, const char* entry,
                                     unsigned char** data, unsigned int* bytes);

/// Handed unchanged to the profile's WriteProfileBinary. Returns 0 without a profile
/// object.
FILEIO_API int WriteProfileBinarySplit(const String& section, const String& entry,
                                       unsigned char* data, unsigned int bytes);
FILEIO_API int WriteProfileBinarySplit(int, const char* section, const char* entry,
                                       unsigned char* data, unsigned int bytes);

// ---- resets -----------------------------------------------------------------------------

/// Removes the key "Software\Varn, Inc.\" + name of the current user's settings, with
/// everything below it. An empty name removes nothing; so does a missing key.
FILEIO_API void ResetRegistry(const String& name);
/// Removes the key `name` below `key` (a path below the current user's root), with
/// everything below it. Nothing happens when `key` cannot be opened or `name` is empty.
FILEIO_API void ResetRegistry(const String& key, const String& name);
