// FileSystemTest.cpp - existence, copy, rename, remove, folder creation and directory
// search on the real file system, and the name rules of directory search with a scripted
// listing.

#include "fileio/path/FileSystem.h"
#include "fileio/path/DirectorySearch.h"

#include "PathTestSupport.h"
#include "path/DirectorySearchDetail.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace pathtest;
namespace detail = fileio::detail;
namespace fs = std::filesystem;

/// The files found in `scratch` (given with a trailing separator), named relative to it.
std::vector<std::string> Found(const TempFolder& scratch, const char* pattern, bool below) {
    std::vector<std::string> names;
    for (const String& path : FindFilesInFolder(scratch.Join(""), pattern, below)) {
        std::string name(path.View().substr(scratch.Path().size() + 1));
        std::replace(name.begin(), name.end(), '\\', '/');
        names.push_back(name);
    }
    return names;
}

TEST(FileSystem, CopyReplacesTheTargetByteForByte) {
    TempFolder scratch;
    std::string content("binary\0\r\n\xff\x80 data", 17);
    content += std::string(200000, 'z'); // more than one buffer
    scratch.WriteFile("from.bin", content);
    scratch.WriteFile("to.bin", "old and longer than nothing");

    EXPECT_TRUE(VarnCopyFile(scratch.Join("from.bin"), scratch.Join("to.bin")));
    EXPECT_EQ(scratch.ReadFile("to.bin"), content);

    EXPECT_FALSE(VarnCopyFile(scratch.Join("missing.bin"), scratch.Join("x.bin")));
    EXPECT_FALSE(FileExists(scratch.Join("x.bin")));
    EXPECT_FALSE(VarnCopyFile(scratch.Join("from.bin"), scratch.Join("no/such/folder.bin")));
    // A file copied onto itself is refused and keeps its content.
    EXPECT_FALSE(VarnCopyFile(scratch.Join("from.bin"), scratch.Join("from.bin")));
    EXPECT_EQ(scratch.ReadFile("from.bin"), content);
}

TEST(FileSystem, RenameNeverReplacesAnExistingTarget) {
    TempFolder scratch;
    scratch.WriteFile("a.txt", "a");
    scratch.WriteFile("b.txt", "b");
    EXPECT_FALSE(RenameFile(scratch.Join("a.txt"), scratch.Join("b.txt")));
    EXPECT_EQ(scratch.ReadFile("a.txt") + scratch.ReadFile("b.txt"), "ab");

    EXPECT_TRUE(RenameFile(scratch.Join("a.txt"), scratch.Join("c.txt")));
    EXPECT_EQ(scratch.ReadFile("a.txt") + scratch.ReadFile("c.txt"), "<missing>a");

    EXPECT_FALSE(RenameFile(scratch.Join("gone.txt"), scratch.Join("d.txt")));
}

TEST(FileSystem, ExistenceAndRemovalOfFilesAndEmptyFolders) {
    TempFolder scratch;
    const std::string file = scratch.WriteFile("full/file.txt", "x");
    EXPECT_TRUE(FileExists(file));
    EXPECT_FALSE(DirExists(file));
    EXPECT_TRUE(FileExists(scratch.Join("full"))); // a folder exists too
    EXPECT_FALSE(Remove(scratch.Join("full")));
    EXPECT_TRUE(Remove(file));
    EXPECT_TRUE(Remove(scratch.Join("full")));  // empty now
    EXPECT_FALSE(Remove(scratch.Join("full"))); // gone
}

TEST(FileSystem, CreateFolderMakesEveryMissingLevel) {
    TempFolder scratch;
    EXPECT_TRUE(CreateFolder(scratch.Join("a//d///e/")));
    EXPECT_TRUE(DirExists(scratch.Join("a/d/e")));
    EXPECT_TRUE(CreateFolder(scratch.Join("a/d/e"))); // exists already
    scratch.WriteFile("file", "x");
    EXPECT_FALSE(CreateFolder(scratch.Join("file/sub")));
}

TEST(FileSystem, NamesWithBytesAbove127SurviveTheSystem) {
    TempFolder scratch;
    scratch.WriteFile("plain.txt", "content");
    // The name in the form the runtime hands to the system (Windows may re-encode it).
    const std::string path = scratch.Join("caf\xe9 \xfc.txt");
    ASSERT_TRUE(VarnCopyFile(scratch.Join("plain.txt"), path));
    EXPECT_EQ(Found(scratch, "caf*", false),
              std::vector<std::string>{path.substr(scratch.Path().size() + 1)});
    EXPECT_TRUE(Remove(path));
}

TEST(DirectorySearch, FindsMatchingFilesInOrderAndOptionallyBelow) {
    TempFolder scratch;
    for (const char* file : {"b.mdl", "a.mdl", "c.tga", "sub/z.mdl", "sub/deeper/y.mdl",
                             "sub/deeper/x.txt", "another/w.mdl", "another/.hidden.mdl"})
        scratch.WriteFile(file, "x");
    fs::create_directory(scratch.Join("emptydir.mdl")); // a folder is never listed

    EXPECT_EQ(Found(scratch, "*.mdl", false), (std::vector<std::string>{"a.mdl", "b.mdl"}));
    EXPECT_EQ(Found(scratch, "*.mdl", true),
              (std::vector<std::string>{"a.mdl", "b.mdl", "another/.hidden.mdl", "another/w.mdl",
                                        "sub/z.mdl", "sub/deeper/y.mdl"}));
    EXPECT_EQ(FindFilesInFolder(scratch.Path(), String(), true).size(), 8u); // every file
    EXPECT_TRUE(FindFilesInFolder(scratch.Join("missing"), "*", true).empty());
}

TEST(DirectorySearch, LinksToFoldersAreNotFollowed) {
    if (platform::kNativePathStyle != kPosix)
        GTEST_SKIP() << "symbolic links need privileges on Windows";
    TempFolder scratch;
    scratch.WriteFile("sub/file.txt", "x");
    fs::create_directory_symlink(scratch.Path(), scratch.Join("sub/loop"));
    fs::create_symlink(scratch.Join("sub/file.txt"), scratch.Join("sub/link.txt"));
    EXPECT_EQ(Found(scratch, "*", true),
              (std::vector<std::string>{"sub/file.txt", "sub/link.txt"}));
}

// The name rules of each style, with a scripted listing so both run on every platform.
std::vector<platform::FolderEntry> g_listing;

TEST(DirectorySearch, NamesFollowTheStylesCaseRule) {
    platform::ScopedServices<platform::FileServices> guard(platform::Files());
    g_listing = {{"Zeta.MDL", false, false},
                 {"alpha.mdl", false, false},
                 {"Beta.mdl", false, false},
                 {"beta.txt", false, false}};
    platform::Files().listFolder = [](const char*, std::vector<platform::FolderEntry>& out) {
        out = g_listing;
        return true;
    };
    EXPECT_EQ(detail::FindFilesInFolder("root", "*.mdl", false, kWindows),
              (std::vector<std::string>{"root\\alpha.mdl", "root\\Beta.mdl", "root\\Zeta.MDL"}));
    EXPECT_EQ(detail::FindFilesInFolder("root", "*.mdl", false, kPosix),
              (std::vector<std::string>{"root/Beta.mdl", "root/alpha.mdl"}));
}

} // namespace
