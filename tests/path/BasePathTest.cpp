// BasePathTest.cpp - the base path, and relative and absolute forms against it: an example
// project under Windows and POSIX rules with scripted folders, and round trips on the real
// file system.

#include "fileio/path/BasePath.h"

#include "PathTestSupport.h"

#include <gtest/gtest.h>

namespace {

using namespace pathtest;
namespace detail = fileio::detail;
namespace fs = std::filesystem;

/// The example project of a style: base folder C:\Projects\Robot\ or
/// /home/ann/Projects/Robot/ with its folders, the current directory elsewhere, and no
/// network drives.
struct Project {
    explicit Project(PathStyle style)
        : m_folders(style,
                    style == kWindows
                        ? std::set<std::string>{"C:\\Projects", "C:\\Projects\\Robot",
                                                "C:\\Projects\\Shared", "C:\\Elsewhere"}
                        : std::set<std::string>{"/home/ann/Projects/Robot", "/tmp"},
                    style == kWindows ? "C:\\Elsewhere" : "/tmp") {
        SetBasePath(String(style == kWindows ? "C:\\Projects\\Robot\\robot.prj"
                                             : "/home/ann/Projects/Robot/robot.prj"));
    }

    BasePathGuard m_base;
    ScriptedNetwork m_network{{}};
    ScriptedFolders m_folders;
};

TEST(BasePath, ReferencesConvertToRelativeFormsAndBack) {
    // The style, a native path, its universal form, and whether that resolves to the native
    // path again.
    const std::tuple<PathStyle, std::string, std::string, bool> rows[] = {
        {kWindows, "C:\\Projects\\Robot\\Parts\\arm.mdl", "Parts/arm.mdl", true},
        {kWindows, "C:\\Projects\\Shared\\sky.tga", "../Shared/sky.tga", true},
        {kWindows, "D:\\sky.tga", "D:/sky.tga", true},
        {kWindows, "\\\\Server\\Share\\x.mdl", "//Server/Share/x.mdl", true},
        {kWindows, "c:\\projects\\ROBOT\\", ".", false}, // the base folder, in any case
        {kWindows, "C:\\Projects\\Robot", "", false},    // nothing left after the shared depth
        {kPosix, "/home/bob/x.mdl", "../../../bob/x.mdl", true},
        {kPosix, "/home/ann/Projects/Robot/", ".", true},
    };
    for (const auto& [style, native, universal, back] : rows) {
        const Project project(style);
        EXPECT_EQ(detail::GetRelativePath(native, style), universal) << native;
        if (back) {
            EXPECT_EQ(detail::GetAbsolutePath(universal, true, style), native);
        }
    }
}

std::vector<std::string> g_trace;

TEST(BasePath, FailuresAreTracedAndLeaveThePath) {
#if defined(NDEBUG)
    GTEST_SKIP() << "the trace is silent in release builds";
#endif
    const Project project(kWindows);
    platform::ScopedServices<platform::SystemServices> guard(platform::System());
    g_trace.clear();
    platform::System().debugTrace = [](const char* line) { g_trace.emplace_back(line); };
    ScriptedFolders::Script().failFullPath = true;
    EXPECT_EQ(detail::GetAbsolutePath("Parts//arm.mdl", true, kWindows), "Parts\\arm.mdl");
    ASSERT_EQ(g_trace.size(), 1u);
    EXPECT_EQ(g_trace[0].rfind("fs::absolute error: ", 0), 0u);
    EXPECT_EQ(g_trace[0].back(), '\n');
    // The quiet form traces nothing and keeps the universal form.
    EXPECT_EQ(detail::GetAbsolutePathQuiet("Parts//arm.mdl", kWindows), "Parts/arm.mdl");

    ScriptedFolders::Script().failFullPath = false;
    ScriptedFolders::Script().failSetCurrentDirectory = true;
    SetBasePath(String("C:\\Projects\\Shared\\doc.prj"));
    // Resolved against the directory the process is still in.
    EXPECT_EQ(detail::GetAbsolutePath("x.mdl", true, kWindows), "C:\\Projects\\Robot\\x.mdl");
    ASSERT_EQ(g_trace.size(), 2u); // none from the quiet form
    EXPECT_EQ(g_trace[1].rfind("RelativeToAbsolute Error: ", 0), 0u);
}

TEST(BasePath, QuotedMatchNames) {
    const Project project(kWindows);
    using Convert = std::string (*)(std::string_view, PathStyle);
    const Convert relative = detail::GetMatchNameRelativeForFile,
                  absolute = detail::GetMatchNameAbsoluteFromFile;
    const std::tuple<Convert, const char*, const char*> rows[] = {
        {relative, "\"C:\\Projects\\Robot\\Parts\\arm.mdl\"", "\"Parts/arm.mdl\""},
        {relative, "\"\"", "\"\""},
        {relative, "C:\\Projects\\Robot\\x", "C:\\Projects\\Robot\\x"}, // no quote
        {absolute, "\"../Shared/sky.tga\"", "\"C:\\Projects\\Shared\\sky.tga\""},
        {absolute, "\".\"", "\"C:\\Projects\\Robot\\\""},
        {absolute, "Parts/arm.mdl", "Parts/arm.mdl"},
        {absolute, "\"", "\"\""},
    };
    for (const auto& [convert, in, out] : rows)
        EXPECT_EQ(convert(in, kWindows), out) << in;
}

TEST(BasePath, SetBasePathKeepsTheCollapsedNameAndWithoutABasePathsPassThrough) {
    BasePathGuard guard;
    SetBasePath(String("C:\\\\Projects\\\\Robot\\robot.prj"));
    EXPECT_STREQ(GetBasePath().Get(), "C:\\Projects\\Robot\\robot.prj");
    SetBasePath(String("\\\\Server\\Share\\\\doc.prj"));
    EXPECT_STREQ(GetBasePath().Get(), "\\\\Server\\Share\\doc.prj");
    EXPECT_STREQ(String("\\\\Server\\Share\\x.mdl").GetRelativePath().Get(), "x.mdl");

    ScriptedNetwork network({});
    ScriptedFolders folders(kWindows, {"C:\\Elsewhere"}, "C:\\Elsewhere");
    FreeBasePaths();
    EXPECT_EQ(GetBasePath().Get(), nullptr);
    for (int round = 0; round < 2; ++round) {
        if (round == 1)
            SetBasePath(String("doc.prj")); // a name without a folder sets no base folder
        EXPECT_EQ(detail::GetRelativePath("..\\z", kWindows), "../z") << round;
        EXPECT_EQ(detail::GetAbsolutePath("..\\z", true, kWindows), "..\\z") << round;
    }
    EXPECT_TRUE(ScriptedFolders::Script().changes.empty());
}

TEST(BasePath, RoundTripsOnTheRealFileSystem) {
    BasePathGuard base;
    CurrentDirectoryGuard currentDirectory;
    TempFolder scratch;
    scratch.WriteFile("Project/doc.prj", "project");
    scratch.WriteFile("Shared/sky.tga", "sky");

    SetBasePath(String(scratch.Join("Project/doc.prj")));
    EXPECT_STREQ(String(scratch.Join("Shared/sky.tga")).GetRelativePath().Get(),
                 "../Shared/sky.tga");

    String sky = String("../Shared/sky.tga").GetAbsolutePath(false);
    EXPECT_TRUE(fs::equivalent(fs::path(sky.Get()), fs::path(scratch.Join("Shared/sky.tga"))));
    // The current directory stays at the base folder.
    EXPECT_TRUE(fs::equivalent(fs::current_path(), fs::path(scratch.Join("Project"))));
    // "." gives the base folder with a trailing native separator.
    EXPECT_EQ(String::Point().GetAbsolutePath(true).View(), scratch.Join("Project/"));
}

} // namespace
