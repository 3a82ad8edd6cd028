// BasePathTest.cpp - the base path, and relative and absolute forms against it: the
// example project under Windows and POSIX rules with scripted folders, and round trips on
// the real file system.

#include "fileio/path/BasePath.h"
#include "fileio/path/FileSystem.h"

#include "PathTestSupport.h"
#include "path/PathForms.h"

#include <gtest/gtest.h>

namespace {

using fileio::detail::PathStyle;
using pathtest::ScriptedFolders;
namespace detail = fileio::detail;
namespace fs = std::filesystem;

constexpr PathStyle kWindows = PathStyle::Windows;
constexpr PathStyle kPosix = PathStyle::Posix;

/// The example project: base C:/Projects/Robot/ with its folders, the current directory
/// somewhere else, and no network drives.
class WindowsProject : public ::testing::Test {
protected:
    WindowsProject()
        : m_folders(
              kWindows,
              {"C:\\Projects", "C:\\Projects\\Robot", "C:\\Projects\\Shared", "C:\\Elsewhere"},
              "C:\\Elsewhere") {
        SetBasePath(String("C:\\Projects\\Robot\\robot.prj"));
    }

    static std::string Relative(std::string_view path) {
        return detail::GetRelativePath(path, kWindows);
    }
    static std::string Absolute(std::string_view path) {
        return detail::GetAbsolutePath(path, true, kWindows);
    }

    pathtest::BasePathGuard m_base;
    pathtest::ScriptedNetwork m_network{{}};
    ScriptedFolders m_folders;
};

class PosixProject : public ::testing::Test {
protected:
    PosixProject() : m_folders(kPosix, {"/home/ann/Projects/Robot", "/tmp"}, "/tmp") {
        SetBasePath(String("/home/ann/Projects/Robot/robot.prj"));
    }

    static std::string Relative(std::string_view path) {
        return detail::GetRelativePath(path, kPosix);
    }
    static std::string Absolute(std::string_view path) {
        return detail::GetAbsolutePath(path, true, kPosix);
    }

    pathtest::BasePathGuard m_base;
    pathtest::ScriptedNetwork m_network{{}};
    ScriptedFolders m_folders;
};

struct RoundTrip {
    std::string native, universal;
};

TEST_F(WindowsProject, ReferencesConvertToRelativeFormsAndBack) {
    const RoundTrip rows[] = {
        {"C:\\Projects\\Robot\\Parts\\arm.mdl", "Parts/arm.mdl"},
        {"C:\\Projects\\Shared\\sky.tga", "../Shared/sky.tga"},
        {"D:\\sky.tga", "D:/sky.tga"},
        {"C:\\Projects\\Robot\\robot.prj", "robot.prj"},
        {"C:\\Other\\deep\\x.mdl", "../../Other/deep/x.mdl"},
        {"\\\\Server\\Share\\x.mdl", "//Server/Share/x.mdl"},
        {"C:\\Projects\\Robot\\caf\xe9\\\xfc.tga", "caf\xe9/\xfc.tga"},
    };
    for (const RoundTrip& row : rows) {
        SCOPED_TRACE(row.native);
        EXPECT_EQ(Relative(row.native), row.universal);
        EXPECT_EQ(Absolute(row.universal), row.native);
    }
}

TEST_F(PosixProject, ReferencesConvertToRelativeFormsAndBack) {
    const RoundTrip rows[] = {
        {"/home/ann/Projects/Robot/Parts/arm.mdl", "Parts/arm.mdl"},
        {"/home/ann/Projects/Shared/sky.tga", "../Shared/sky.tga"},
        {"/mnt/d/sky.tga", "/mnt/d/sky.tga"},
        {"/home/bob/x.mdl", "../../../bob/x.mdl"},
        {"D:/sky.tga", "D:/sky.tga"},
        {"//server/share/x.mdl", "//server/share/x.mdl"},
        {"/home/ann/Projects/Robot/caf\xe9/\xfc.tga", "caf\xe9/\xfc.tga"},
    };
    for (const RoundTrip& row : rows) {
        SCOPED_TRACE(row.native);
        EXPECT_EQ(Relative(row.native), row.universal);
        EXPECT_EQ(Absolute(row.universal), row.native);
    }
}

TEST_F(WindowsProject, TheBaseFolderItselfAndItsOddSpellings) {
    EXPECT_EQ(Relative("C:\\Projects\\Robot\\"), ".");
    EXPECT_EQ(Relative("c:\\projects\\ROBOT\\"), ".");
    EXPECT_EQ(Relative("C:\\Projects\\Robot"), ""); // nothing left after the shared depth
    EXPECT_EQ(Relative("c:\\projects\\robot\\a.mdl"), "a.mdl");
    EXPECT_EQ(Relative("C:/Projects/Robot/Parts/arm.mdl"), "Parts/arm.mdl");
    EXPECT_EQ(Relative(""), "");
    // "." resolves to the base folder: native with GetAbsolutePath(bool), universal with
    // the quiet form, and without changing the current directory.
    EXPECT_EQ(Absolute("."), "C:\\Projects\\Robot\\");
    EXPECT_EQ(detail::GetAbsolutePathQuiet(".", kWindows), "C:/Projects/Robot/");
    EXPECT_TRUE(ScriptedFolders::DirectoryChanges().empty());
}

TEST_F(WindowsProject, AFolderThatOnlyBeginsLikeTheBaseIsNotInIt) {
    SetBasePath(String("C:\\Proj\\doc.prj"));
    EXPECT_EQ(Relative("C:\\Project\\x.mdl"), "../Project/x.mdl");
    EXPECT_EQ(Relative("C:\\Proj\\x.mdl"), "x.mdl");
}

TEST_F(WindowsProject, ResolvingLeavesTheCurrentDirectoryAtTheBaseFolder) {
    EXPECT_EQ(Absolute("Parts/arm.mdl"), "C:\\Projects\\Robot\\Parts\\arm.mdl");
    EXPECT_EQ(ScriptedFolders::CurrentDirectory(), "C:\\Projects\\Robot");
    ASSERT_EQ(ScriptedFolders::DirectoryChanges().size(), 1u);
    EXPECT_EQ(ScriptedFolders::DirectoryChanges()[0], "C:\\Projects\\Robot\\");
    // Already there: no further change.
    EXPECT_EQ(Absolute("../Shared//sky.tga"), "C:\\Projects\\Shared\\sky.tga");
    EXPECT_EQ(ScriptedFolders::DirectoryChanges().size(), 1u);
    // An absolute path stays absolute; "." and ".." fold.
    EXPECT_EQ(Absolute("C:/Projects/./Robot/../Shared/x.tga"), "C:\\Projects\\Shared\\x.tga");
}

TEST_F(WindowsProject, AMissingBaseFolderLeavesTheCurrentDirectory) {
    SetBasePath(String("C:\\Gone\\doc.prj"));
    EXPECT_EQ(Absolute("x.mdl"), "C:\\Elsewhere\\x.mdl");
    EXPECT_TRUE(ScriptedFolders::DirectoryChanges().empty());
    EXPECT_EQ(ScriptedFolders::CurrentDirectory(), "C:\\Elsewhere");
}

TEST_F(WindowsProject, FailuresAreTracedAndLeaveThePath) {
#if defined(NDEBUG)
    GTEST_SKIP() << "the trace is silent in release builds";
#endif
    pathtest::TraceCapture trace;
    ScriptedFolders::FailFullPath(true);
    EXPECT_EQ(Absolute("Parts//arm.mdl"), "Parts\\arm.mdl");
    ASSERT_EQ(trace.Lines().size(), 1u);
    EXPECT_EQ(trace.Lines()[0].rfind("fs::absolute error: ", 0), 0u);
    EXPECT_EQ(trace.Lines()[0].back(), '\n');
    // The quiet form traces nothing and keeps the universal form.
    EXPECT_EQ(detail::GetAbsolutePathQuiet("Parts//arm.mdl", kWindows), "Parts/arm.mdl");
    EXPECT_EQ(trace.Lines().size(), 1u);

    ScriptedFolders::FailFullPath(false);
    SetBasePath(String("C:\\Projects\\Shared\\doc.prj"));
    ScriptedFolders::FailSetCurrentDirectory(true);
    // Resolved against the directory the process is still in.
    EXPECT_EQ(Absolute("x.mdl"), "C:\\Projects\\Robot\\x.mdl");
    ASSERT_EQ(trace.Lines().size(), 2u);
    EXPECT_EQ(trace.Lines()[1].rfind("RelativeToAbsolute Error: ", 0), 0u);
}

TEST_F(WindowsProject, QuotedMatchNames) {
    auto relative = [](std::string_view s) {
        return detail::GetMatchNameRelativeForFile(s, kWindows);
    };
    auto absolute = [](std::string_view s) {
        return detail::GetMatchNameAbsoluteFromFile(s, kWindows);
    };
    EXPECT_EQ(relative("\"C:\\Projects\\Robot\\Parts\\arm.mdl\""), "\"Parts/arm.mdl\"");
    EXPECT_EQ(relative("\"D:\\sky.tga\""), "\"D:/sky.tga\"");
    EXPECT_EQ(relative("\"\""), "\"\"");
    EXPECT_EQ(relative("C:\\Projects\\Robot\\x"), "C:\\Projects\\Robot\\x"); // no quote
    EXPECT_EQ(absolute("\"../Shared/sky.tga\""), "\"C:\\Projects\\Shared\\sky.tga\"");
    EXPECT_EQ(absolute("\".\""), "\"C:\\Projects\\Robot\\\"");
    EXPECT_EQ(absolute("Parts/arm.mdl"), "Parts/arm.mdl");
    EXPECT_EQ(absolute("\""), "\"\"");
}

TEST_F(WindowsProject, PathsLongerThanTheOldBuffersConvertWhole) {
    std::string tail;
    while (tail.size() < 400)
        tail += "Level\xe9\\";
    tail += "deep.mdl";
    std::string universal = detail::NativeToUniversal(tail);
    EXPECT_EQ(Relative("C:\\Projects\\Robot\\" + tail), universal);
    EXPECT_EQ(Absolute(universal), "C:\\Projects\\Robot\\" + tail);
}

TEST_F(PosixProject, TheBaseFolderItself) {
    EXPECT_EQ(Relative("/home/ann/Projects/Robot/"), ".");
    EXPECT_EQ(Relative("/home/ann/Projects/Robot"), "");
    EXPECT_EQ(Absolute("."), "/home/ann/Projects/Robot/");
    EXPECT_EQ(Absolute("Parts/../arm.mdl"), "/home/ann/Projects/Robot/arm.mdl");
    EXPECT_EQ(ScriptedFolders::CurrentDirectory(), "/home/ann/Projects/Robot");
}

TEST(BasePath, SetBasePathKeepsTheCollapsedNameAndIgnoresEmptyNames) {
    pathtest::BasePathGuard guard;
    SetBasePath(String("C:\\\\Projects\\\\Robot\\robot.prj"));
    EXPECT_STREQ(GetBasePath().Get(), "C:\\Projects\\Robot\\robot.prj");
    SetBasePath(String());
    EXPECT_STREQ(GetBasePath().Get(), "C:\\Projects\\Robot\\robot.prj");
    SetBasePath(String("\\\\Server\\Share\\\\doc.prj"));
    EXPECT_STREQ(GetBasePath().Get(), "\\\\Server\\Share\\doc.prj");
    EXPECT_STREQ(String("\\\\Server\\Share\\x.mdl").GetRelativePath().Get(), "x.mdl");
    FreeBasePaths();
    EXPECT_EQ(GetBasePath().Get(), nullptr);
}

TEST(BasePath, WithoutABaseEveryConversionPassesPathsThrough) {
    pathtest::BasePathGuard guard;
    pathtest::ScriptedNetwork network({});
    ScriptedFolders folders(kWindows, {"C:\\Elsewhere"}, "C:\\Elsewhere");
    const std::string paths[] = {"C:\\a\\b.mdl", "x/y.mdl", ".", "..\\z"};
    for (int round = 0; round < 2; ++round) {
        if (round == 0)
            FreeBasePaths();
        else
            SetBasePath(String("doc.prj")); // a name without a folder sets no base folder
        for (const std::string& path : paths) {
            SCOPED_TRACE(path);
            EXPECT_EQ(detail::GetRelativePath(path, kWindows), detail::NativeToUniversal(path));
            EXPECT_EQ(detail::GetAbsolutePath(path, true, kWindows),
                      detail::UniversalToNative(path, kWindows));
            EXPECT_EQ(detail::GetAbsolutePathQuiet(path, kWindows), path);
        }
    }
    EXPECT_TRUE(ScriptedFolders::DirectoryChanges().empty());
}

TEST(BasePath, RoundTripsOnTheRealFileSystem) {
    pathtest::BasePathGuard base;
    pathtest::CurrentDirectoryGuard currentDirectory;
    pathtest::TempFolder scratch;
    scratch.WriteFile("Project/doc.prj", "project");
    scratch.WriteFile("Project/Parts/arm.mdl", "arm");
    scratch.WriteFile("Shared/sky.tga", "sky");

    SetBasePath(String(scratch.Join("Project/doc.prj")));
    EXPECT_STREQ(String(scratch.Join("Project/Parts/arm.mdl")).GetRelativePath().Get(),
                 "Parts/arm.mdl");
    EXPECT_STREQ(String(scratch.Join("Shared/sky.tga")).GetRelativePath().Get(),
                 "../Shared/sky.tga");
    EXPECT_STREQ(String(scratch.Join("Project/")).GetRelativePath().Get(), ".");

    String arm = String("Parts/arm.mdl").GetAbsolutePath(true);
    String sky = String("../Shared/sky.tga").GetAbsolutePath(false);
    EXPECT_TRUE(FileExists(arm));
    EXPECT_TRUE(FileExists(sky));
    EXPECT_TRUE(
        fs::equivalent(fs::path(arm.Get()), fs::path(scratch.Join("Project/Parts/arm.mdl"))));
    EXPECT_TRUE(fs::equivalent(fs::path(sky.Get()), fs::path(scratch.Join("Shared/sky.tga"))));
    // The current directory stays at the base folder.
    EXPECT_TRUE(fs::equivalent(fs::current_path(), fs::path(scratch.Join("Project"))));
    // "." gives the base folder with a trailing native separator.
    String point = String::Point().GetAbsolutePath(true);
    EXPECT_EQ(point.View(), scratch.Join("Project/"));
}

} // namespace
