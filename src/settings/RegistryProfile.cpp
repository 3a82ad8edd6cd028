// RegistryProfile.cpp - the ready application profile backed by the settings store.

#include "fileio/settings/RegistryProfile.h"

#include "settings/SettingsStore.h"

#include <string>

using fileio::detail::TextOf;

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

int HexDigitValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

} // namespace

RegistryProfile::RegistryProfile(const String& applicationName)
    : m_applicationName(applicationName) {}

RegistryProfile::~RegistryProfile() = default;

String RegistryProfile::GetApplicationKey() const {
    String key(fileio::detail::kCompanyKey);
    key += '\\';
    key += m_applicationName;
    return key;
}

String RegistryProfile::GetSectionKey(const char* section) const {
    String key = GetApplicationKey();
    key += '\\';
    key += String(section);
    return key;
}

String RegistryProfile::GetProfileString(const char* section, const char* entry,
                                         const char* defaultValue) {
    String value;
    if (fileio::detail::ReadStoreString(GetSectionKey(section), String(entry), value))
        return value;
    return String(defaultValue);
}

int RegistryProfile::WriteProfileString(const char* section, const char* entry, const char* value) {
    if (entry == nullptr)
        return fileio::detail::DeleteStoreKey(GetApplicationKey(), String(section)) ? 1 : 0;
    if (value == nullptr)
        return fileio::detail::DeleteStoreValue(GetSectionKey(section), String(entry)) ? 1 : 0;
    return fileio::detail::WriteStoreString(GetSectionKey(section), String(entry), String(value))
               ? 1
               : 0;
}

int RegistryProfile::GetProfileBinary(const char* section, const char* entry, unsigned char** data,
                                      unsigned int* bytes) {
    *data = nullptr;
    *bytes = 0;
    String text;
    if (!fileio::detail::ReadStoreString(GetSectionKey(section), String(entry), text))
        return 0;
    const std::string_view digits = text.View();
    if (digits.size() % 2 != 0)
        return 0;
    const std::size_t size = digits.size() / 2;
    auto* buffer = new unsigned char[size == 0 ? 1 : size];
    for (std::size_t i = 0; i < size; ++i) {
        const int high = HexDigitValue(digits[2 * i]);
        const int low = HexDigitValue(digits[2 * i + 1]);
        if (high < 0 || low < 0) {
            delete[] buffer;
            return 0;
        }
        buffer[i] = static_cast<unsigned char>(high * 16 + low);
    }
    *data = buffer;
    *bytes = static_cast<unsigned int>(size);
    return 1;
}

int RegistryProfile::WriteProfileBinary(const char* section, const char* entry,
                                        const unsigned char* data, unsigned int bytes) {
    std::string digits;
    digits.reserve(std::size_t{bytes} * 2);
    for (unsigned int i = 0; i < bytes; ++i) {
        digits += kHexDigits[data[i] >> 4];
        digits += kHexDigits[data[i] & 0x0F];
    }
    return fileio::detail::WriteStoreString(GetSectionKey(section), String(entry), String(digits))
               ? 1
               : 0;
}

ApplicationProfile* InstallRegistryProfile(const String& applicationName) {
    // The library's own object is never destroyed, so that it outlives any host code that
    // may still reach it through the slot while the process ends.
    static RegistryProfile* const profile = new RegistryProfile(applicationName);
    *profile = RegistryProfile(applicationName);
    return SetApplicationProfile(profile);
}
