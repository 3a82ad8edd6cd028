// PathTestSupport.h - guards that put the process-wide path state back, and scripted
// replacements of the network, system and file services, so that the rules of either
// platform run on both.
#pragma once

#include "fileio/path/BasePath.h"
#include "path/PathForms.h"
#include "platform/Platform.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
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

/// `convert(path, style, out)` as a conversion of the path alone, for ExpectEach: what it
/// gives, or "<none>" when it reports failure.
template <class Convert> auto Reporting(Convert convert, PathStyle style) {
    return [=](const std::string& path) {
        std::string out;
        return convert(path, style, out) ? out : "<none>";
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

struct ScriptedDrive {
    std::string root;       // "C:\\" or a mount point
    int type;               // kRemoteDrive for a network drive
    std::string connection; // what connectionName answers for the drive's name ("" = fails)
};

/// A drive table, shares and names in place of the system's while the guard lives; the
/// connection cache is emptied at both ends.
class ScriptedNetwork {
public:
    struct State {
        std::vector<ScriptedDrive> drives;
        std::vector<platform::SharedFolder> shares;
        std::vector<std::string> queries; // the drive names connectionName was asked for
    };

    explicit ScriptedNetwork(std::vector<ScriptedDrive> drives,
                             std::vector<platform::SharedFolder> shares = {})
        : m_network(platform::Network()), m_system(platform::System()) {
        Script() = State{std::move(drives), std::move(shares), {}};
        platform::Network().logicalDrives = [] {
            std::vector<std::string> roots;
            for (const ScriptedDrive& drive : Script().drives)
                roots.push_back(drive.root);
            return roots;
        };
        platform::Network().driveType = [](const char* root) {
            const ScriptedDrive* drive = Find(root);
            return drive != nullptr ? drive->type : 1;
        };
        platform::Network().connectionName = [](const char* name, std::string& out) {
            Script().queries.emplace_back(name);
            const ScriptedDrive* drive = Find(name);
            if (drive == nullptr || drive->connection.empty())
                return false;
            out = drive->connection;
            return true;
        };
        platform::Network().sharedFolders = [] { return Script().shares; };
        platform::System().hostName = [](std::string& out) {
            out = "WORKSTATION";
            return true;
        };
        fileio::detail::ClearConnectionCache();
    }
    ~ScriptedNetwork() { fileio::detail::ClearConnectionCache(); }

    static State& Script() {
        static State state;
        return state;
    }

private:
    /// The drive of a root, or of the name the library asks for: "X:" for the root "X:\\".
    static const ScriptedDrive* Find(std::string_view name) {
        for (const ScriptedDrive& drive : Script().drives)
            if (drive.root == name || drive.root == std::string(name) + '\\')
                return &drive;
        return nullptr;
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
                std::replace(out.begin(), out.end(), '/', '\\');
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
