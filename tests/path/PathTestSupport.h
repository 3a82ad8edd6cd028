// PathTestSupport.h - guards that put the process-wide path state back, and scripted
// replacements of the network, system and file services, so that the rules of either
// platform run on both.
#pragma once

#include "fileio/path/BasePath.h"
#include "path/PathForms.h"
#include "platform/Platform.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <initializer_list>
#include <set>
#include <string>
#include <vector>

namespace pathtest {

using fileio::detail::PathStyle;
using fileio::test::TempFolder;
namespace platform = fileio::platform;

constexpr PathStyle kWindows = PathStyle::Windows;
constexpr PathStyle kPosix = PathStyle::Posix;

/// Checks `convert` on a table of inputs and the results expected: "input => result".
template <class Out = std::string, class Convert>
void ExpectEach(Convert convert, std::initializer_list<std::pair<std::string, Out>> rows) {
    for (const auto& [in, out] : rows)
        EXPECT_EQ(convert(in), out) << "from " << in;
}

/// The result of a conversion that reports success, or "<none>".
template <class Convert> std::string OrNone(Convert convert) {
    std::string out;
    return convert(out) ? out : "<none>";
}

/// `convert(path, style, out)` as a conversion of the path alone, for ExpectEach.
template <class Convert> auto Reporting(Convert convert, PathStyle style) {
    return [=](const std::string& path) {
        return OrNone([&](std::string& out) { return convert(path, style, out); });
    };
}

/// Puts the base path back as it was when the guard was made.
class BasePathGuard {
public:
    BasePathGuard() : m_saved(GetBasePath().View()) {}
    ~BasePathGuard() {
        FreeBasePaths();
        if (!m_saved.empty())
            SetBasePath(String(m_saved));
    }

private:
    std::string m_saved;
};

/// Puts the process's current directory back as it was when the guard was made.
class CurrentDirectoryGuard {
public:
    CurrentDirectoryGuard() : m_saved(std::filesystem::current_path()) {}
    ~CurrentDirectoryGuard() {
        std::error_code ignored;
        std::filesystem::current_path(m_saved, ignored);
    }

private:
    std::filesystem::path m_saved;
};

/// A drive of the scripted drive table.
struct ScriptedDrive {
    std::string root;       // "C:\\" or a mount point
    int type;               // kRemoteDrive for a network drive
    std::string connection; // what connectionName answers for the drive's name ("" = fails)
};

/// A drive table, shares and names in place of the system's while the guard lives; the
/// connection cache is emptied at both ends.
class ScriptedNetwork {
public:
    explicit ScriptedNetwork(std::vector<ScriptedDrive> drives,
                             std::vector<platform::SharedFolder> shares = {})
        : m_network(platform::Network()), m_system(platform::System()) {
        Drives() = std::move(drives);
        Shares() = std::move(shares);
        Queries().clear();
        ComputerNameReadable() = true;
        platform::Network().logicalDrives = [] {
            std::vector<std::string> roots;
            for (const ScriptedDrive& drive : Drives())
                roots.push_back(drive.root);
            return roots;
        };
        platform::Network().driveType = [](const char* root) {
            for (const ScriptedDrive& drive : Drives())
                if (drive.root == root)
                    return drive.type;
            return 1;
        };
        platform::Network().connectionName = [](const char* name, std::string& out) {
            Queries().emplace_back(name);
            for (const ScriptedDrive& drive : Drives())
                if (IsDriveNamed(drive, name) && !drive.connection.empty()) {
                    out = drive.connection;
                    return true;
                }
            return false;
        };
        platform::Network().sharedFolders = [] { return Shares(); };
        platform::System().hostName = [](std::string& out) {
            out = "WORKSTATION";
            return true;
        };
        platform::System().computerName = [](std::string& out) {
            out = "COMPUTER";
            return ComputerNameReadable();
        };
        fileio::detail::ClearConnectionCache();
    }
    ~ScriptedNetwork() { fileio::detail::ClearConnectionCache(); }

    /// The drive names connectionName was asked for, in order.
    static std::vector<std::string>& Queries() {
        static std::vector<std::string> queries;
        return queries;
    }
    /// Whether computerName succeeds (the Macintosh server conversion needs it).
    static bool& ComputerNameReadable() {
        static bool readable = true;
        return readable;
    }

private:
    static std::vector<ScriptedDrive>& Drives() {
        static std::vector<ScriptedDrive> drives;
        return drives;
    }
    static std::vector<platform::SharedFolder>& Shares() {
        static std::vector<platform::SharedFolder> shares;
        return shares;
    }
    /// The drive's name as the library asks for it: "X:" for a Windows root, else the root.
    static bool IsDriveNamed(const ScriptedDrive& drive, std::string_view name) {
        if (drive.root.size() == 3 && drive.root[1] == ':')
            return name.size() == 2 && name[1] == ':' &&
                   std::toupper(static_cast<unsigned char>(drive.root[0])) == name[0];
        return drive.root == name;
    }

    platform::ScopedServices<platform::NetworkServices> m_network;
    platform::ScopedServices<platform::SystemServices> m_system;
};

/// A file system of folders only, with a current directory, in place of the system's while
/// the guard lives. Full paths follow the lexical rule with the style's separator (for
/// Windows that models GetFullPathNameW on drive-letter and UNC paths).
class ScriptedFolders {
public:
    struct State {
        PathStyle style = kWindows;
        std::set<std::string> folders;
        std::string currentDir;
        std::vector<std::string> changes; // every setCurrentDirectory call, in order
        bool failFullPath = false;
        bool failSetCurrentDirectory = false;
    };

    ScriptedFolders(PathStyle style, std::set<std::string> folders, std::string currentDir)
        : m_guard(platform::Files()) {
        Script() = State{style, std::move(folders), std::move(currentDir), {}, false, false};
        platform::Files().isFolder = IsFolder;
        platform::Files().exists = IsFolder;
        platform::Files().getCurrentDirectory = [](std::string& out) {
            out = Script().currentDir;
            return true;
        };
        platform::Files().setCurrentDirectory = [](const char* path) {
            Script().changes.emplace_back(path);
            if (Script().failSetCurrentDirectory || !IsFolder(path))
                return false;
            Script().currentDir = WithoutTrailingSeparator(path);
            return true;
        };
        platform::Files().fullPath = [](const char* path, std::string& out) {
            if (Script().failFullPath)
                return false;
            out = platform::LexicalFullPath(Script().currentDir, path);
            if (Script().style == kWindows)
                for (char& c : out)
                    c = c == '/' ? '\\' : c;
            return !out.empty();
        };
    }

    static State& Script() {
        static State state;
        return state;
    }

private:
    static std::string WithoutTrailingSeparator(std::string path) {
        while (path.size() > 1 && (path.back() == '\\' || path.back() == '/') &&
               !(path.size() == 3 && path[1] == ':'))
            path.pop_back();
        return path;
    }
    static bool IsFolder(const char* path) {
        return Script().folders.count(WithoutTrailingSeparator(path)) > 0;
    }

    platform::ScopedServices<platform::FileServices> m_guard;
};

} // namespace pathtest
