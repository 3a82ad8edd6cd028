// LocalRegistry.cpp - the local registry settings, below "SOFTWARE\Varn, Inc.\".

#include "fileio/settings/LocalRegistry.h"

#include "fileio/settings/SettingsLocations.h"
#include "settings/SettingsStore.h"

namespace {

/// "SOFTWARE\Varn, Inc.\" + section, or with a local registry profile P,
/// "SOFTWARE\Varn, Inc.\" + P + "\" + section.
String LocalKey(const String& section) {
    String key(fileio::detail::kLocalCompanyKey);
    key += '\\';
    const String profile = GetLocalRegistryProfile();
    if (profile.IsNotEmpty()) {
        key += profile;
        key += '\\';
    }
    key += section;
    return key;
}

} // namespace

String GetLocalRegistryString(const String& section, const String& entry,
                              const String& defaultValue) {
    String value;
    if (fileio::detail::ReadStoreString(LocalKey(section), entry, value))
        return value;
    return defaultValue;
}

int GetLocalRegistryValue(const String& section, const String& entry, int defaultValue) {
    return GetLocalRegistryString(section, entry, String(defaultValue)).Str_atoi();
}

float GetLocalRegistryValue(const String& section, const String& entry, float defaultValue) {
    return static_cast<float>(
        GetLocalRegistryString(section, entry, String(defaultValue)).Str_atod());
}

int SetLocalRegistryString(const String& section, const String& entry, const String& value) {
    return fileio::detail::WriteStoreString(LocalKey(section), entry, value) ? 1 : 0;
}

int SetLocalRegistryValue(const String& section, const String& entry, int value) {
    return SetLocalRegistryString(section, entry, String(value));
}

int SetLocalRegistryValue(const String& section, const String& entry, float value) {
    return SetLocalRegistryString(section, entry, String(value));
}

void ResetLocalRegistry(const String& name) {
    fileio::detail::DeleteStoreKey(String(fileio::detail::kLocalCompanyKey), name);
}

void ResetLocalRegistry(const String& key, const String& name) {
    fileio::detail::DeleteStoreKey(key, name);
}
