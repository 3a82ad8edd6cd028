// SettingsHive.cpp - the settings hive on Windows: the registry under HKEY_CURRENT_USER.
//
// Keys are opened with full access (KEY_ALL_ACCESS, 0xF003F) and, for reading, with
// read access (KEY_READ, 0x20019) when full access is refused, so that a read-only key
// stays readable. Texts go through the "A" functions: bytes in the system code page.

#ifndef _WIN32_WINNT
#define _WIN32_WINNT 0x0600 // RegDeleteTree
#endif

#include "platform/Platform.h"

#include <string>
#include <vector>
#include <windows.h>

namespace fileio::platform {

namespace {

/// An open registry key, closed on scope exit.
class Key {
public:
    Key() = default;
    ~Key() {
        if (m_handle != nullptr)
            RegCloseKey(m_handle);
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    bool Open(const char* path, REGSAM access) {
        return RegOpenKeyExA(HKEY_CURRENT_USER, path, 0, access, &m_handle) == ERROR_SUCCESS;
    }
    bool Create(const char* path) {
        return RegCreateKeyExA(HKEY_CURRENT_USER, path, 0, nullptr, REG_OPTION_NON_VOLATILE,
                               KEY_ALL_ACCESS, nullptr, &m_handle, nullptr) == ERROR_SUCCESS;
    }
    HKEY Handle() const { return m_handle; }

private:
    HKEY m_handle = nullptr;
};

bool ReadString(const char* keyPath, const char* name, std::string& value) {
    const std::string path = NormalizeKeyPath(keyPath);
    Key key;
    if (path.empty() ||
        (!key.Open(path.c_str(), KEY_ALL_ACCESS) && !key.Open(path.c_str(), KEY_READ)))
        return false;
    DWORD longest = 0;
    if (RegQueryInfoKeyA(key.Handle(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, &longest, nullptr, nullptr) != ERROR_SUCCESS)
        return false;
    std::vector<char> buffer(longest + 1);
    for (;;) {
        DWORD type = 0;
        DWORD size = static_cast<DWORD>(buffer.size());
        const LONG result = RegQueryValueExA(key.Handle(), name, nullptr, &type,
                                             reinterpret_cast<BYTE*>(buffer.data()), &size);
        if (result == ERROR_MORE_DATA) { // the value grew since the key was measured
            buffer.resize(size + 1);
            continue;
        }
        if (result != ERROR_SUCCESS || type != REG_SZ)
            return false;
        value.assign(buffer.data(), size);
        const std::size_t end = value.find('\0');
        if (end != std::string::npos)
            value.resize(end);
        return true;
    }
}

bool WriteString(const char* keyPath, const char* name, const char* value) {
    const std::string path = NormalizeKeyPath(keyPath);
    Key key;
    if (path.empty() || !key.Create(path.c_str()))
        return false;
    const std::string text(value);
    return RegSetValueExA(key.Handle(), name, 0, REG_SZ,
                          reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>(text.size() + 1)) == ERROR_SUCCESS;
}

bool DeleteValue(const char* keyPath, const char* name) {
    const std::string path = NormalizeKeyPath(keyPath);
    Key key;
    return !path.empty() && key.Open(path.c_str(), KEY_SET_VALUE) &&
           RegDeleteValueA(key.Handle(), name) == ERROR_SUCCESS;
}

bool DeleteKey(const char* parent, const char* name) {
    const std::string subkey = NormalizeKeyPath(name);
    Key key;
    return !subkey.empty() && key.Open(NormalizeKeyPath(parent).c_str(), KEY_ALL_ACCESS) &&
           RegDeleteTreeA(key.Handle(), subkey.c_str()) == ERROR_SUCCESS;
}

std::string TakeDamageReport() {
    return {};
}

} // namespace

SettingsHiveServices& Hive() {
    static SettingsHiveServices table{
        .readString = ReadString,
        .writeString = WriteString,
        .deleteValue = DeleteValue,
        .deleteKey = DeleteKey,
        .takeDamageReport = TakeDamageReport,
    };
    return table;
}

} // namespace fileio::platform
