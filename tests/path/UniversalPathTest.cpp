// UniversalPathTest.cpp - native and universal forms, and the component arithmetic.

#include "fileio/path/UniversalPath.h"

#include "PathTestSupport.h"
#include "path/PathForms.h"

#include <gtest/gtest.h>

namespace {

using fileio::detail::PathStyle;
namespace detail = fileio::detail;

constexpr PathStyle kWindows = PathStyle::Windows;
constexpr PathStyle kPosix = PathStyle::Posix;

TEST(UniversalPath, NativeToUniversalTurnsOnlyBackslashes) {
    struct Row {
        std::string native, universal;
    };
    const Row rows[] = {
        {"C:\\Projects\\Robot\\arm.mdl", "C:/Projects/Robot/arm.mdl"},
        {"\\\\Server\\Share\\b.mdl", "//Server/Share/b.mdl"},
        {"..\\Shared\\.\\sky.TGA", "../Shared/./sky.TGA"},
        {"/home/ann/x", "/home/ann/x"},
        {"mixed/and\\back", "mixed/and/back"},
        {"caf\xe9\\\x12name", "caf\xe9/\x12name"},
        {"", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.native);
        EXPECT_EQ(detail::NativeToUniversal(row.native), row.universal);
    }
    EXPECT_EQ(NativeToUniversal(String()).Get(), nullptr);
    EXPECT_STREQ(NativeToUniversal(String("a\\b")).Get(), "a/b");
}

TEST(UniversalPath, UniversalToNativeWritesTheStylesSeparator) {
    pathtest::ScriptedNetwork network({}); // no drives: the server step changes nothing
    struct Row {
        std::string universal, windows, posix;
    };
    const Row rows[] = {
        {"C:/Projects/Robot/arm.mdl", "C:\\Projects\\Robot\\arm.mdl", "C:/Projects/Robot/arm.mdl"},
        {"//Server/Share/b.mdl", "\\\\Server\\Share\\b.mdl", "//Server/Share/b.mdl"},
        {"../Shared/sky.tga", "..\\Shared\\sky.tga", "../Shared/sky.tga"},
        {"AC\x12"
         "DC.wav",
         "AC/DC.wav", "AC/DC.wav"},
        {"dir/a\x12"
         "b",
         "dir\\a/b", "dir/a/b"},
        {"back\\slash", "back\\slash", "back/slash"},
        {"", "", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.universal);
        EXPECT_EQ(detail::UniversalToNative(row.universal, kWindows), row.windows);
        EXPECT_EQ(detail::UniversalToNative(row.universal, kPosix), row.posix);
    }
}

TEST(UniversalPath, NativePathsSurviveTheRoundTrip) {
    pathtest::ScriptedNetwork network({});
    std::string longPath = "C:";
    while (longPath.size() < 400)
        longPath += "\\f\xe9older";
    const std::string windowsPaths[] = {
        "C:\\Projects\\Robot\\arm.mdl",
        "\\\\Server\\Share\\b.mdl",
        "..\\x",
        ".",
        "",
        "relative\\caf\xe9.tga",
        longPath,
        "C:\\trailing\\",
        "MACSERVER\\Volumes\\x",
    };
    for (const std::string& path : windowsPaths) {
        SCOPED_TRACE(path);
        EXPECT_EQ(detail::UniversalToNative(detail::NativeToUniversal(path), kWindows), path);
    }
    const std::string posixPaths[] = {"/home/ann/Projects/Robot/arm.mdl", "//server/share/x",
                                      "../x", "/", "caf\xe9"};
    for (const std::string& path : posixPaths) {
        SCOPED_TRACE(path);
        EXPECT_EQ(detail::UniversalToNative(detail::NativeToUniversal(path), kPosix), path);
    }
}

TEST(UniversalPath, DepthCountsComponentsBetweenColonsAndSlashes) {
    struct Row {
        std::string path;
        int depth;
    };
    const Row rows[] = {
        {"C:/Projects/Robot/", 3},
        {"C:/Projects/Robot/arm.mdl", 4},
        {"C:/Projects//Robot//", 3},
        {"C:", 1},
        {"C:/", 1},
        {"//Server/Share/x", 3},
        {"/home/ann/Projects/Robot/", 4},
        {"../Shared/sky.tga", 3},
        {"a:b:c", 3},
        {"C:\\Projects\\Robot", 2}, // "\" is not a separator of universal paths
        {"", 0},
        {"/", 0},
        {":::", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(detail::PathDepth(row.path), row.depth);
        EXPECT_EQ(GetPathDepth(String(row.path)), row.depth);
    }
}

TEST(UniversalPath, MatchPathDepthSharesWholeComponentsOnly) {
    struct Row {
        std::string a, b;
        int shared;
    };
    const Row rows[] = {
        {"C:/Proj/", "C:/Proj/x", 2},
        {"C:/Proj/", "C:/Project/x", 1},
        {"C:/Projects/Robot/", "c:/projects/robot/a.mdl", 3},
        {"C:/Projects/Robot/", "C:/Projects/Robot", 3},
        {"C:/Projects/Robot/", "C:/Projects/Shared/sky.tga", 2},
        {"C:/Projects/Robot/", "D:/sky.tga", 0},
        {"C:/a", "Cx/a", 0},
        {"/home/ann/Projects/Robot/", "/home/ann/Projects/Shared/sky.tga", 3},
        {"/home/ann/", "/mnt/d/sky.tga", 0},
        {"/home/ann/", "/home/bob/", 1},
        {"//Server/Share/", "//server/share/x", 2},
        {"", "C:/x", -1},
        {"C:/x", "", -1},
        {"x", "y", 0},
        {"same", "same", 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.a + " | " + row.b);
        EXPECT_EQ(detail::MatchPathDepth(row.a, row.b), row.shared);
        EXPECT_EQ(MatchPathDepth(String(row.a), String(row.b)), row.shared);
    }
}

TEST(UniversalPath, ShortenPathDropsLeadingComponents) {
    struct Row {
        std::string path;
        int count;
        std::string rest;
    };
    const Row rows[] = {
        {"C:/Projects/Robot/arm.mdl", 2, "Robot/arm.mdl"},
        {"C:/Projects/Robot/arm.mdl", 1, "Projects/Robot/arm.mdl"},
        {"C:/Projects/Robot/arm.mdl", 3, "arm.mdl"},
        {"C:/Projects/Robot/arm.mdl", 4, ""},
        {"C:/Projects/Robot/arm.mdl", 9, ""},
        {"C:/Projects/Robot/arm.mdl", 0, ""},
        {"C:/Projects/Robot/arm.mdl", -3, ""},
        {"C://Projects//Robot//arm.mdl", 2, "Robot//arm.mdl"},
        {"C:/Projects/Robot/", 2, "Robot/"},
        {"/home/ann/Projects/Robot/Parts/arm.mdl", 4, "Parts/arm.mdl"},
        {"", 1, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path + " by " + std::to_string(row.count));
        EXPECT_EQ(detail::ShortenPath(row.path, row.count), row.rest);
        EXPECT_EQ(ShortenPath(String(row.path), row.count).View(), row.rest);
    }
}

TEST(UniversalPath, PublicFormsUseThePlatformsSeparator) {
    pathtest::ScriptedNetwork network({});
    const bool windows = fileio::platform::kNativePathStyle == kWindows;
    EXPECT_STREQ(UniversalToNative(String("a/b\x12"
                                          "c"))
                     .Get(),
                 windows ? "a\\b/c" : "a/b/c");
    EXPECT_EQ(UniversalToNative(String()).Get(), nullptr);
}

} // namespace
