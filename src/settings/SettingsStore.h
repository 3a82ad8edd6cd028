// SettingsStore.h - the settings layer's access to the current user's settings hive.
//
// Each function calls the platform's hive and then sends any damage the hive found in its
// store (a hand-edited or broken settings file) to the installed log handler, one line
// per damaged spot.
#pragma once

#include "core/CText.h"
#include "fileio/core/String.h"

namespace fileio::detail {

/// The company key of the settings, as the profile family spells it.
inline constexpr const char* kCompanyKey = "Software\\Varn, Inc.";
/// The company key of the settings, as the local registry family spells it (keys compare
/// without regard to case, so both name the same key).
inline constexpr const char* kLocalCompanyKey = "SOFTWARE\\Varn, Inc.";

/// Reads value `name` of `key`. True, with `value` set, when it is there.
bool ReadStoreString(const String& key, const String& name, String& value);
/// Creates `key` when needed and sets value `name`. True on success.
bool WriteStoreString(const String& key, const String& name, const String& value);
/// Removes value `name` of `key`. True when a value was removed.
bool DeleteStoreValue(const String& key, const String& name);
/// Removes the key `name` below `parent` with everything below it. True when removed.
bool DeleteStoreKey(const String& parent, const String& name);

} // namespace fileio::detail
