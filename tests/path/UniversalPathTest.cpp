// UniversalPathTest.cpp - native and universal forms, the component arithmetic, and the POSIX
// full-path rule with the system's full-path resolution.

#include "fileio/path/UniversalPath.h"

#include "PathTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace pathtest;
namespace detail = fileio::detail;

TEST(UniversalPath, NativeAndUniversalFormsBothWays) {
    ScriptedNetwork network({}); // no drives: the server step changes nothing
    // Windows paths and their universal forms, which turn back into them.
    const std::string windows[] = {
        "C:\\Projects\\arm.mdl", "\\\\Server\\Share\\b.mdl", "..\\Shared\\.\\sky.TGA",
        "caf\xe9\\trailing\\",   "MACSERVER\\Volumes\\x",    "",
    };
    for (const std::string& path : windows) {
        SCOPED_TRACE(path.substr(0, 30));
        std::string universal = path;
        std::replace(universal.begin(), universal.end(), '\\', '/');
        EXPECT_EQ(detail::NativeToUniversal(path), universal);
        EXPECT_EQ(detail::UniversalToNative(universal, kWindows), path);
        EXPECT_EQ(detail::UniversalToNative(universal, kPosix), universal);
    }
    // "/" stays; the byte 0x12 stands for a "/" inside a name; on POSIX "\" becomes "/".
    const std::string inName = "dir/a\x12z\\c";
    EXPECT_EQ(detail::NativeToUniversal("/home/ann/mixed\\x"), "/home/ann/mixed/x");
    EXPECT_EQ(detail::UniversalToNative(inName, kWindows), "dir\\a/z\\c");
    EXPECT_EQ(detail::UniversalToNative(inName, kPosix), "dir/a/z/c");
    // The public forms: null for nothing, the platform's separator.
    EXPECT_EQ(NativeToUniversal(String()).Get(), nullptr);
    EXPECT_EQ(UniversalToNative(String(inName)).View(),
              platform::kNativePathStyle == kWindows ? "dir\\a/z\\c" : "dir/a/z/c");
}

TEST(UniversalPath, DepthSharedDepthAndShorteningCountWholeComponents) {
    ExpectEach<int>(detail::PathDepth,
                    {
                        {"C:/Projects/Robot/", 3},
                        {"C:/Projects//Robot//arm.mdl", 4},
                        {"C:", 1},
                        {"//Server/Share/x", 3},
                        {"a:b:c", 3},
                        {"C:\\Projects\\Robot", 2}, // "\" is not a separator of universal paths
                        {":/:", 0},
                    });
    const std::tuple<std::string, std::string, int> shared[] = {
        {"C:/Proj/", "C:/Project/x", 1},
        {"C:/Projects/Robot/", "c:/projects/robot/a.mdl", 3},
        {"C:/Projects/Robot/", "C:/Projects/Robot", 3},
        {"C:/Projects/Robot/", "D:/sky.tga", 0},
        {"C:/a", "Cx/a", 0},
        {"a/x", "A/y", 1}, // one shared letter is a whole component
        {"C:/x", "", -1},
    };
    for (const auto& [a, b, depth] : shared)
        EXPECT_EQ(detail::MatchPathDepth(a, b), depth) << a << " | " << b;
    const std::tuple<std::string, int, std::string> shortened[] = {
        {"C:/Projects/Robot/arm.mdl", 1, "Projects/Robot/arm.mdl"},
        {"C:/Projects/Robot/arm.mdl", 4, ""},
        {"C:/Projects/Robot/arm.mdl", 0, ""},
        {"C://Projects//Robot//arm.mdl", 2, "Robot//arm.mdl"},
        {"/home/ann/Projects/Robot/", 3, "Robot/"},
    };
    for (const auto& [path, count, rest] : shortened)
        EXPECT_EQ(detail::ShortenPath(path, count), rest) << path << " by " << count;
    // The String forms answer the same.
    EXPECT_EQ(GetPathDepth(String("C:/a//b")), 3);
    EXPECT_EQ(MatchPathDepth(String("C:/a/x"), String("c:/A/y")), 2);
    EXPECT_EQ(ShortenPath(String("C:/a/b"), 1).View(), "a/b");
    EXPECT_EQ(ShortenPath(String(), 1).View(), ""); // the null string: no byte is read
}

TEST(LexicalPath, FoldsDotsAgainstTheCurrentDirectory) {
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {"/home/ann", "../../../../etc", "/etc"},
        {"/home/ann", "/abs//x/./y/", "/abs/x/y/"},
        {"/home/ann", "win\\style\\..\\x", "/home/ann/win/x"},
        {"/home/ann", "c:\\x\\..\\..\\y", "c:/y"},
        {"/home/ann", "//server/share/../x", "//server/x"},
        {"C:\\Projects\\Robot", "Parts/arm.mdl", "C:/Projects/Robot/Parts/arm.mdl"},
        {"", "rel/../../x", "../x"},
    };
    for (const auto& [currentDir, path, full] : rows)
        EXPECT_EQ(platform::LexicalFullPath(currentDir, path), full) << currentDir << " + " << path;
    for (const char* path : {"/x", "\\x", "C:/x", "c:\\x"})
        EXPECT_TRUE(platform::IsLexicallyAbsolute(path)) << path;
    for (const char* path : {"x", "C:x", "", "1:/x"})
        EXPECT_FALSE(platform::IsLexicallyAbsolute(path)) << path;
}

TEST(LexicalPath, TheSystemResolvesAgainstTheCurrentDirectory) {
    CurrentDirectoryGuard guard;
    TempFolder scratch;
    ASSERT_TRUE(platform::Files().setCurrentDirectory(scratch.Path().c_str()));
    std::string current;
    ASSERT_TRUE(platform::Files().getCurrentDirectory(current));
    EXPECT_TRUE(std::filesystem::equivalent(current, scratch.Path()));
    const char separator = platform::NativeSeparator();
    std::string full;
    ASSERT_TRUE(platform::Files().fullPath("a/./b/../c.txt", full));
    EXPECT_EQ(full, current + separator + "a" + separator + "c.txt");
    EXPECT_FALSE(platform::Files().fullPath("", full));
}

} // namespace
