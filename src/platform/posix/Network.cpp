// Network.cpp - network forms of paths, POSIX implementation: the mount table stands for
// the drive table.

#include "platform/Platform.h"

#include <fstream>
#include <sstream>

namespace fileio::platform {

namespace {

/// The mounts in force: for each mount point its last entry, since a later mount on the
/// same point hides the earlier one. Table order of first appearance is kept.
std::vector<MountEntry> CurrentMounts() {
    std::vector<MountEntry> mounts;
    for (MountEntry& entry : ParseMountTable(Network().mountTable())) {
        bool replaced = false;
        for (MountEntry& known : mounts)
            if (known.mountPoint == entry.mountPoint) {
                known = entry;
                replaced = true;
            }
        if (!replaced)
            mounts.push_back(std::move(entry));
    }
    return mounts;
}

std::vector<std::string> LogicalDrives() {
    std::vector<std::string> roots;
    for (MountEntry& entry : CurrentMounts())
        roots.push_back(std::move(entry.mountPoint));
    return roots;
}

int DriveType(const char* root) {
    for (const MountEntry& entry : CurrentMounts())
        if (entry.mountPoint == root)
            return IsNetworkFileSystem(entry.type) ? kRemoteDrive : 3;
    return 1;
}

bool ConnectionName(const char* drive, std::string& out) {
    for (const MountEntry& entry : CurrentMounts())
        if (entry.mountPoint == drive && IsNetworkFileSystem(entry.type)) {
            out = ConnectionOfMountSource(entry.source);
            return !out.empty();
        }
    return false;
}

std::vector<SharedFolder> SharedFolders() {
    return {};
}

std::string MountTable() {
    std::ifstream file("/proc/self/mounts", std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
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
