// Network.cpp - network forms of paths, Win32 implementation: logical drives, mapped
// drives' connections, and this machine's shares from the registry.

#include "platform/Platform.h"

#include <windows.h>
#include <winnetwk.h>

namespace fileio::platform {

namespace {

std::vector<std::string> LogicalDrives() {
    char buffer[254] = {};
    DWORD n = GetLogicalDriveStringsA(sizeof buffer, buffer);
    std::vector<std::string> roots;
    if (n == 0 || n >= sizeof buffer)
        return roots;
    for (const char* p = buffer; *p != '\0'; p += std::char_traits<char>::length(p) + 1)
        roots.emplace_back(p);
    return roots;
}

int DriveType(const char* root) {
    return static_cast<int>(GetDriveTypeA(root));
}

bool ConnectionName(const char* drive, std::string& out) {
    std::string buffer(260, '\0');
    DWORD size = static_cast<DWORD>(buffer.size());
    DWORD result = WNetGetConnectionA(drive, buffer.data(), &size);
    if (result == ERROR_MORE_DATA) {
        buffer.assign(size, '\0');
        result = WNetGetConnectionA(drive, buffer.data(), &size);
    }
    if (result != NO_ERROR)
        return false;
    buffer.resize(std::char_traits<char>::length(buffer.c_str()));
    out = std::move(buffer);
    return true;
}

/// The "Path=" line of a share's value (a list of "Name=value" lines).
std::string PathOfShare(const std::string& lines) {
    for (std::size_t i = 0; i < lines.size();) {
        std::size_t end = lines.find('\0', i);
        if (end == std::string::npos)
            end = lines.size();
        if (lines.compare(i, 5, "Path=") == 0)
            return lines.substr(i + 5, end - i - 5);
        i = end + 1;
    }
    return {};
}

std::vector<SharedFolder> SharedFolders() {
    std::vector<SharedFolder> shares;
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE,
                      "SYSTEM\\CurrentControlSet\\Services\\LanmanServer\\Shares", 0, KEY_READ,
                      &key) != ERROR_SUCCESS)
        return shares;
    DWORD count = 0;
    DWORD longestName = 0;
    DWORD longestValue = 0;
    if (RegQueryInfoKeyA(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count,
                         &longestName, &longestValue, nullptr, nullptr) == ERROR_SUCCESS) {
        std::string name(longestName + 1, '\0');
        std::string value(longestValue + 2, '\0');
        for (DWORD i = 0; i < count; ++i) {
            DWORD nameSize = static_cast<DWORD>(name.size());
            DWORD valueSize = static_cast<DWORD>(value.size());
            DWORD type = 0;
            if (RegEnumValueA(key, i, name.data(), &nameSize, nullptr, &type,
                              reinterpret_cast<BYTE*>(value.data()), &valueSize) != ERROR_SUCCESS)
                continue;
            if (type != REG_MULTI_SZ && type != REG_SZ)
                continue;
            std::string path = PathOfShare(value.substr(0, valueSize));
            if (!path.empty())
                shares.push_back({name.substr(0, nameSize), std::move(path)});
        }
    }
    RegCloseKey(key);
    return shares;
}

std::string MountTable() {
    return {};
}

} // namespace

NetworkServices& Network() {
    static NetworkServices table{
        .logicalDrives = LogicalDrives,
        .driveType = DriveType,
        .connectionName = ConnectionName,
        .sharedFolders = SharedFolders,
        .mountTable = MountTable,
    };
    return table;
}

} // namespace fileio::platform
