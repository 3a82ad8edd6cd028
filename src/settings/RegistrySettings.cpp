// RegistrySettings.cpp - the profile settings, through the installed application profile.

#include "fileio/settings/RegistrySettings.h"

#include "fileio/settings/ApplicationProfile.h"
#include "settings/SettingsStore.h"

#include <string>

using fileio::detail::TextOf;

namespace {

constexpr const char* kOn = "ON";
constexpr const char* kOff = "OFF";

/// The profile's text of the entry, or `defaultText` without a profile object.
String ReadText(const String& section, const String& entry, const String& defaultText) {
    ApplicationProfile* profile = GetApplicationProfile();
    if (profile == nullptr)
        return defaultText;
    return profile->GetProfileString(TextOf(section), TextOf(entry), TextOf(defaultText));
}

/// Hands the text to the profile's WriteProfileString (a null text removes the entry).
int WriteText(const String& section, const String& entry, const char* text) {
    ApplicationProfile* profile = GetApplicationProfile();
    if (profile == nullptr)
        return 0;
    return profile->WriteProfileString(TextOf(section), TextOf(entry), text);
}

bool IsOnText(const String& text) {
    return text == String(kOn) || text == String("true");
}

} // namespace

// ---- numbers ----------------------------------------------------------------------------

int GetRegistryValue(const String& section, const String& entry, int defaultValue) {
    return ReadText(section, entry, String(defaultValue)).Str_atoi();
}

float GetRegistryValue(const String& section, const String& entry, float defaultValue) {
    return static_cast<float>(ReadText(section, entry, String(defaultValue)).Str_atod());
}

double GetRegistryValue(const String& section, const String& entry, double defaultValue) {
    return ReadText(section, entry, String(defaultValue)).Str_atod();
}

int GetRegistryValue(int, const char* section, const char* entry, int defaultValue) {
    return GetRegistryValue(String(section), String(entry), defaultValue);
}

float GetRegistryValue(int, const char* section, const char* entry, float defaultValue) {
    return GetRegistryValue(String(section), String(entry), defaultValue);
}

double GetRegistryValue(int, const char* section, const char* entry, double defaultValue) {
    return GetRegistryValue(String(section), String(entry), defaultValue);
}

int SetRegistryValue(const String& section, const String& entry, int value) {
    return WriteText(section, entry, TextOf(String(value)));
}

int SetRegistryValue(const String& section, const String& entry, float value) {
    return WriteText(section, entry, TextOf(String(value)));
}

int SetRegistryValue(const String& section, const String& entry, double value) {
    return WriteText(section, entry, TextOf(String(value)));
}

int SetRegistryValue(int, const char* section, const char* entry, int value) {
    return SetRegistryValue(String(section), String(entry), value);
}

int SetRegistryValue(int, const char* section, const char* entry, float value) {
    return SetRegistryValue(String(section), String(entry), value);
}

int SetRegistryValue(int, const char* section, const char* entry, double value) {
    return SetRegistryValue(String(section), String(entry), value);
}

// ---- switches ---------------------------------------------------------------------------

int GetRegistryBOOL(const String& section, const String& entry, int defaultValue) {
    return IsOnText(ReadText(section, entry, String(defaultValue != 0 ? kOn : kOff))) ? 1 : 0;
}

bool GetRegistryBOOL(const String& section, const String& entry, bool defaultValue) {
    return GetRegistryBOOL(section, entry, defaultValue ? 1 : 0) != 0;
}

int GetRegistryBOOL(int, const char* section, const char* entry, int defaultValue) {
    return GetRegistryBOOL(String(section), String(entry), defaultValue);
}

bool GetRegistryBOOL(int, const char* section, const char* entry, bool defaultValue) {
    return GetRegistryBOOL(String(section), String(entry), defaultValue);
}

int SetRegistryBOOL(const String& section, const String& entry, int value) {
    return WriteText(section, entry, value != 0 ? kOn : kOff);
}

bool SetRegistryBOOL(const String& section, const String& entry, bool value) {
    return SetRegistryBOOL(section, entry, value ? 1 : 0) != 0;
}

int SetRegistryBOOL(int, const char* section, const char* entry, int value) {
    return SetRegistryBOOL(String(section), String(entry), value);
}

bool SetRegistryBOOL(int, const char* section, const char* entry, bool value) {
    return SetRegistryBOOL(String(section), String(entry), value);
}

// ---- texts ------------------------------------------------------------------------------

String GetRegistryString(const String& section, const String& entry, const String& defaultValue) {
    return ReadText(section, entry, defaultValue);
}

char* GetRegistryString(int, const char* section, const char* entry, const char* defaultValue) {
    // Kept in a standard string rather than a String: it may be filled until the process
    // ends, after the string pool is gone.
    static std::string lastResult;
    lastResult = TextOf(GetRegistryString(String(section), String(entry), String(defaultValue)));
    return lastResult.data();
}

int SetRegistryString(const String& section, const String& entry, const String& value) {
    return WriteText(section, entry, TextOf(value));
}

int SetRegistryString(int, const char* section, const char* entry, const char* value) {
    return SetRegistryString(String(section), String(entry), String(value));
}

int DeleteRegistryItem(const String& section, const String& entry) {
    return WriteText(section, entry, nullptr);
}

int DeleteRegistryItem(int, const char* section, const char* entry) {
    return DeleteRegistryItem(String(section), String(entry));
}

// ---- binary data ------------------------------------------------------------------------

int GetProfileBinarySplit(const String& section, const String& entry, unsigned char** data,
                          unsigned int* bytes) {
    ApplicationProfile* profile = GetApplicationProfile();
    if (profile == nullptr) {
        *data = nullptr;
        *bytes = 0;
        return 0;
    }
    return profile->GetProfileBinary(TextOf(section), TextOf(entry), data, bytes);
}

int GetProfileBinarySplit(int, const char* section, const char* entry, unsigned char** data,
                          unsigned int* bytes) {
    return GetProfileBinarySplit(String(section), String(entry), data, bytes);
}

int WriteProfileBinarySplit(const String& section, const String& entry, unsigned char* data,
                            unsigned int bytes) {
    ApplicationProfile* profile = GetApplicationProfile();
    if (profile == nullptr)
        return 0;
    return profile->WriteProfileBinary(TextOf(section), TextOf(entry), data, bytes);
}

int WriteProfileBinarySplit(int, const char* section, const char* entry, unsigned char* data,
                            unsigned int bytes) {
    return WriteProfileBinarySplit(String(section), String(entry), data, bytes);
}

// ---- resets -----------------------------------------------------------------------------

void ResetRegistry(const String& name) {
    fileio::detail::DeleteStoreKey(String(fileio::detail::kCompanyKey), name);
}

void ResetRegistry(const String& key, const String& name) {
    fileio::detail::DeleteStoreKey(key, name);
}
