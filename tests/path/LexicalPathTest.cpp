// LexicalPathTest.cpp - the POSIX full-path rule, and the system's full-path resolution.

#include "PathTestSupport.h"

#include <gtest/gtest.h>

namespace {

namespace platform = fileio::platform;
using platform::LexicalFullPath;

TEST(LexicalPath, FoldsDotsAgainstTheCurrentDirectory) {
    struct Row {
        std::string currentDir, path, full;
    };
    std::string deep;
    for (int i = 0; i < 60; ++i)
        deep += "/level";
    const Row rows[] = {
        {"/home/ann", "Parts/arm.mdl", "/home/ann/Parts/arm.mdl"},
        {"/home/ann", "./Parts/../sky.tga", "/home/ann/sky.tga"},
        {"/home/ann", "../../../../etc", "/etc"},
        {"/home/ann", "/abs//x/./y/", "/abs/x/y/"},
        {"/home/ann", "sub/", "/home/ann/sub/"},
        {"/home/ann", ".", "/home/ann"},
        {"/home/ann", "..", "/home"},
        {"/home/ann", "../..", "/"},
        {"/home/ann", "win\\style\\..\\x", "/home/ann/win/x"},
        {"/home/ann", "C:/x/../y", "C:/y"},
        {"/home/ann", "c:\\x\\..\\..\\y", "c:/y"},
        {"/home/ann", "//server/share/../x", "//server/x"},
        {"/home/ann/", "a", "/home/ann/a"},
        {"/", "a", "/a"},
        {"C:\\Projects\\Robot", "Parts/arm.mdl", "C:/Projects/Robot/Parts/arm.mdl"},
        {"/home/ann", "caf\xe9/\xfc", "/home/ann/caf\xe9/\xfc"},
        {"", "rel/../../x", "../x"},
        {"/home/ann", "", ""},
        {"/base", deep.substr(1) + "/../x", "/base" + deep.substr(0, deep.size() - 6) + "/x"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.currentDir + " + " + row.path);
        EXPECT_EQ(LexicalFullPath(row.currentDir, row.path), row.full);
    }
    for (const char* path : {"/x", "\\x", "//server", "C:/x", "c:\\x"})
        EXPECT_TRUE(platform::IsLexicallyAbsolute(path)) << path;
    for (const char* path : {"x", "C:x", "C:", "", "./x", "1:/x"})
        EXPECT_FALSE(platform::IsLexicallyAbsolute(path)) << path;
}

TEST(LexicalPath, TheSystemResolvesAgainstTheCurrentDirectory) {
    pathtest::CurrentDirectoryGuard guard;
    pathtest::TempFolder scratch;
    ASSERT_TRUE(platform::Files().setCurrentDirectory(scratch.Path().c_str()));
    std::string current;
    ASSERT_TRUE(platform::Files().getCurrentDirectory(current));
    EXPECT_TRUE(std::filesystem::equivalent(current, scratch.Path()));
    const char separator = platform::kNativePathStyle == platform::PathStyle::Windows ? '\\' : '/';
    std::string full;
    ASSERT_TRUE(platform::Files().fullPath("a/./b/../c.txt", full));
    EXPECT_EQ(full, current + separator + "a" + separator + "c.txt");
    EXPECT_FALSE(platform::Files().fullPath("", full));
}

} // namespace
