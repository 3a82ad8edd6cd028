// PathTextTest.cpp - decomposition, joining, collapsing, case rules and wildcards, under
// the Windows and the POSIX rules on every platform.

#include "path/PathText.h"

#include "fileio/core/String.h"

#include <gtest/gtest.h>

namespace {

using fileio::detail::PathStyle;
namespace detail = fileio::detail;

constexpr PathStyle kWindows = PathStyle::Windows;
constexpr PathStyle kPosix = PathStyle::Posix;

std::string LongFolder() {
    std::string folder = "C:";
    while (folder.size() < 300)
        folder += "\\segment";
    return folder;
}

TEST(PathText, DecompositionReadsBothSeparators) {
    struct Row {
        std::string path, folder, name, withoutSuffix, suffix;
    };
    const std::string longFolder = LongFolder();
    const Row rows[] = {
        {"C:\\Projects\\Robot\\arm.mdl", "C:\\Projects\\Robot\\", "arm.mdl", "arm", "mdl"},
        {"C:/Projects/Robot/arm.mdl", "C:/Projects/Robot/", "arm.mdl", "arm", "mdl"},
        {"/home/ann/sky.tga", "/home/ann/", "sky.tga", "sky", "tga"},
        {"a/b\\c.d.e", "a/b\\", "c.d.e", "c.d", "e"},
        {"plain", "", "plain", "plain", ""},
        {"folder/", "folder/", "", "", ""},
        {"folder\\", "folder\\", "", "", ""},
        {"dots.in.folder/name", "dots.in.folder/", "name", "name", ""},
        {".cfg", "", ".cfg", "", "cfg"},
        {"trailing.", "", "trailing.", "trailing", ""},
        {"\\\\Server\\Share\\f.x", "\\\\Server\\Share\\", "f.x", "f", "x"},
        {"//server/share", "//server/", "share", "share", ""},
        {"C:arm.mdl", "", "C:arm.mdl", "C:arm", "mdl"},
        {"", "", "", "", ""},
        {"/", "/", "", "", ""},
        {"d\xe9j\xe0/\xfc.t\xe9", "d\xe9j\xe0/", "\xfc.t\xe9", "\xfc", "t\xe9"},
        {longFolder + "\\long.name", longFolder + "\\", "long.name", "long", "name"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(detail::PathOnly(row.path), row.folder);
        EXPECT_EQ(detail::NameOnly(row.path), row.name);
        EXPECT_EQ(detail::NameOnlyWithoutSuffix(row.path), row.withoutSuffix);
        EXPECT_EQ(detail::SuffixOnly(row.path), row.suffix);
    }
}

TEST(PathText, CombineNameToPathJoinsWithOneNativeSeparator) {
    struct Row {
        std::string folder, name, windows, posix;
    };
    const Row rows[] = {
        {"C:\\a", "b.mdl", "C:\\a\\b.mdl", "C:\\a/b.mdl"},
        {"C:\\a\\", "b.mdl", "C:\\a\\b.mdl", "C:\\a/b.mdl"},
        {"C:\\a\\\\", "\\\\b.mdl", "C:\\a\\b.mdl", "C:\\a/b.mdl"},
        {"/home/ann/", "/sky.tga", "/home/ann\\sky.tga", "/home/ann/sky.tga"},
        {"/home/ann", "sub/sky.tga", "/home/ann\\sub/sky.tga", "/home/ann/sub/sky.tga"},
        {"/", "etc", "/etc", "/etc"},
        {"\\\\", "server", "\\\\server", "\\\\server"},
        {"", "name", "name", "name"},
        {"", "", "", ""},
        {"C:\\a", "", "C:\\a\\", "C:\\a/"},
        {"C:", "x", "C:\\x", "C:/x"},
        {"base", "\\", "base\\", "base/"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.folder + " + " + row.name);
        EXPECT_EQ(detail::CombineNameToPath(row.folder, row.name, kWindows), row.windows);
        EXPECT_EQ(detail::CombineNameToPath(row.folder, row.name, kPosix), row.posix);
    }
}

TEST(PathText, DoubledSeparatorsCollapseButANetworkPrefixStays) {
    struct Row {
        std::string in, out;
        std::size_t removed;
    };
    const Row rows[] = {
        {"C:\\\\a\\\\\\b", "C:\\a\\b", 3},
        {"C://a//b//", "C:/a/b/", 3},
        {"\\\\server\\\\share", "\\\\server\\share", 1},
        {"//server//share", "//server/share", 1},
        {"\\\\\\server", "\\\\server", 1},
        {"/\\mixed", "/\\mixed", 0},
        {"a\\/b/\\c", "a\\b/c", 2},
        {"/single/", "/single/", 0},
        {"", "", 0},
        {"\\", "\\", 0},
        {"\\\\", "\\\\", 0},
        {"////", "//", 2},
        {"no separators", "no separators", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.in);
        std::string text = row.in;
        EXPECT_EQ(detail::RemoveDoubleSeparators(text), row.removed);
        EXPECT_EQ(text, row.out);
    }
}

TEST(PathText, NativeSeparatorsFollowTheStyle) {
    std::string windows = "a/b\\c//d";
    std::string posix = windows;
    detail::ToNativeSeparators(windows, kWindows);
    detail::ToNativeSeparators(posix, kPosix);
    EXPECT_EQ(windows, "a\\b\\c\\\\d");
    EXPECT_EQ(posix, "a/b/c//d");
}

TEST(PathText, NamesCompareByTheStylesCaseRule) {
    struct Row {
        std::string a, b;
        bool windows, posix;
    };
    const Row rows[] = {
        {"Arm.MDL", "arm.mdl", true, false},
        {"arm.mdl", "arm.mdl", true, true},
        {"arm.mdl", "arm.mdl ", false, false},
        {"\xc9t\xe9", "\xe9t\xe9", false, false}, // only ASCII letters fold
        {"", "", true, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.a + " | " + row.b);
        EXPECT_EQ(detail::SameName(row.a, row.b, kWindows), row.windows);
        EXPECT_EQ(detail::SameName(row.a, row.b, kPosix), row.posix);
    }
    EXPECT_TRUE(detail::NameLess("apple", "Banana", kWindows));
    EXPECT_FALSE(detail::NameLess("apple", "Banana", kPosix)); // "B" < "a" in bytes
    EXPECT_TRUE(detail::NameLess("A", "a", kWindows));         // ties broken by bytes
    EXPECT_FALSE(detail::NameLess("a", "A", kWindows));
    EXPECT_TRUE(detail::NameLess("ab", "ABC", kWindows));
}

TEST(PathText, WithinFolderNeedsAWholeComponent) {
    struct Row {
        std::string path, folder;
        bool windows, posix;
    };
    const Row rows[] = {
        {"C:\\Data\\x.mdl", "C:\\Data", true, true},
        {"C:\\Data\\x.mdl", "C:\\Data\\", true, true},
        {"C:\\Data", "C:\\Data\\", true, true},
        {"C:\\DataSet\\x.mdl", "C:\\Data", false, false},
        {"c:\\data\\x.mdl", "C:\\Data", true, false},
        {"/mnt/x/file", "/mnt/x", true, true},
        {"/mnt/xy/file", "/mnt/x", false, false},
        {"/anything", "/", true, true},
        {"relative", "/", false, false},
        {"C:\\Data", "", false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path + " in " + row.folder);
        EXPECT_EQ(detail::IsWithinFolder(row.path, row.folder, kWindows), row.windows);
        EXPECT_EQ(detail::IsWithinFolder(row.path, row.folder, kPosix), row.posix);
    }
}

TEST(PathText, WildcardsMatchWholeNames) {
    struct Row {
        std::string name, pattern;
        bool windows, posix;
    };
    const Row rows[] = {
        {"arm.mdl", "*.mdl", true, true},
        {"ARM.MDL", "*.mdl", true, false},
        {"arm.mdl.bak", "*.mdl", false, false},
        {"arm.mdl", "a?m.*", true, true},
        {"am.mdl", "a?m.*", false, false},
        {"arm", "*.*", true, true}, // every name, as on Windows
        {"arm", "*", true, true},
        {"arm", "", true, true},
        {"", "*", true, true},
        {"", "?", false, false},
        {"abcabcabd", "*abd", true, true},
        {"abcabcabd", "a*c*d", true, true},
        {"abcabcabe", "a*c*d", false, false},
        {"a*b", "a\\*b", false, false}, // no escapes: "\" is an ordinary character
        {"x\xe9.tga", "X\xe9*", true, false},
        {"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab", "*a*a*a*a*a*a*a*a*c", false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name + " ~ " + row.pattern);
        EXPECT_EQ(detail::MatchesWildcard(row.name, row.pattern, kWindows), row.windows);
        EXPECT_EQ(detail::MatchesWildcard(row.name, row.pattern, kPosix), row.posix);
    }
}

TEST(PathText, StringMembersDecomposeAndGiveNullForNothing) {
    String path("C:\\Projects\\Robot\\arm.mdl");
    EXPECT_STREQ(path.GetPathOnly().Get(), "C:\\Projects\\Robot\\");
    EXPECT_STREQ(path.GetNameOnly().Get(), "arm.mdl");
    EXPECT_STREQ(path.GetNameOnlyWithoutSuffix().Get(), "arm");
    EXPECT_STREQ(path.GetSuffixOnly().Get(), "mdl");
    // Empty results are the null string, and the argument is left as it was.
    EXPECT_EQ(String("plain").GetPathOnly().Get(), nullptr);
    EXPECT_EQ(String("plain").GetSuffixOnly().Get(), nullptr);
    EXPECT_EQ(String("folder/").GetNameOnly().Get(), nullptr);
    EXPECT_EQ(String().GetNameOnly().Get(), nullptr);
    EXPECT_STREQ(path.Get(), "C:\\Projects\\Robot\\arm.mdl");
}

TEST(PathText, FindAndRemoveDoubleSeparatorsWorksInPlace) {
    String path("\\\\server\\\\share\\\\x.mdl");
    EXPECT_EQ(path.FindAndRemoveDoubleSeparators(), 2);
    EXPECT_STREQ(path.Get(), "\\\\server\\share\\x.mdl");
    EXPECT_EQ(path.FindAndRemoveDoubleSeparators(), 0);
    String empty;
    EXPECT_EQ(empty.FindAndRemoveDoubleSeparators(), 0);
    EXPECT_EQ(empty.Get(), nullptr);
}

TEST(PathText, SmallStringMembers) {
    EXPECT_STREQ(String("a b").Quote().Get(), "\"a b\"");
    EXPECT_STREQ(String().Quote().Get(), "\"\"");
    EXPECT_STREQ(String::Point().Get(), ".");
    EXPECT_STREQ(String("C:\\Data\\").NetSharePlaceHolder().Get(), "C-\\Data\\");
    EXPECT_STREQ(String("/home:x").NetSharePlaceHolder().Get(), "/home:x");
    EXPECT_STREQ(String("C").NetSharePlaceHolder().Get(), "C");
    EXPECT_STREQ(String("C:").NetSharePlaceHolder().Get(), "C-");
    String original("D:\\x");
    String copy = original.NetSharePlaceHolder();
    EXPECT_STREQ(original.Get(), "D:\\x");
    EXPECT_STREQ(copy.Get(), "D-\\x");
    EXPECT_STREQ(String("a\\b.mdl").GetFileNamesMatchName().Get(), "\"a\\b.mdl\"");
    EXPECT_EQ(String().GetFileNamesMatchName().Get(), nullptr);
}

TEST(PathText, CombineNameToPathAndTheProgramsFolderUseTheNativeSeparator) {
    const char native = fileio::platform::kNativePathStyle == kWindows ? '\\' : '/';
    String joined = String::CombineNameToPath(String("base/"), String("name.txt"));
    EXPECT_EQ(joined.View(), std::string("base") + native + "name.txt");

    fileio::platform::ScopedServices<fileio::platform::SystemServices> guard(
        fileio::platform::System());
    fileio::platform::System().applicationFolder = [] { return std::string("/opt/suite/bin"); };
    EXPECT_STREQ(String::GetAppPath().Get(), "/opt/suite/bin");
    EXPECT_EQ(String::AddNameToExeDirectory(String("Plugins\\")).View(),
              std::string("/opt/suite/bin") + native + "Plugins\\");
    EXPECT_EQ(String::AddNameToExeDirectory(String()).View(),
              std::string("/opt/suite/bin") + native);
    fileio::platform::System().applicationFolder = [] { return std::string(); };
    EXPECT_EQ(String::GetAppPath().Get(), nullptr);
    EXPECT_STREQ(String::AddNameToExeDirectory(String("x")).Get(), "x");
}

TEST(PathText, TheProgramFolderHoldsTheTestProgram) {
    String folder = String::GetAppPath();
    ASSERT_TRUE(folder.IsNotEmpty());
    ASSERT_FALSE(detail::IsSeparator(folder.View().back()));
    // The test program's own name is among the folder's files.
    std::vector<fileio::platform::FolderEntry> entries;
    ASSERT_TRUE(fileio::platform::Files().listFolder(folder.Get(), entries));
    bool found = false;
    for (const auto& entry : entries)
        found = found || entry.name.rfind("fileio_path_tests", 0) == 0;
    EXPECT_TRUE(found);
}

} // namespace
