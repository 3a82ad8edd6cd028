// PathTextTest.cpp - decomposition, joining, collapsing, case rules and wildcards, under
// the Windows and the POSIX rules on every platform.

#include "path/PathText.h"

#include "PathTestSupport.h"
#include "fileio/core/String.h"

#include <gtest/gtest.h>

namespace {

using namespace pathtest;
namespace detail = fileio::detail;

TEST(PathText, DecompositionReadsBothSeparators) {
    // A path, its folder, its name, the name without its suffix, and the suffix.
    const std::tuple<std::string, std::string, std::string, std::string, std::string> rows[] = {
        {"a/b\\c.d.e", "a/b\\", "c.d.e", "c.d", "e"},
        {"plain", "", "plain", "plain", ""},
        {"folder/", "folder/", "", "", ""},
        {"dots.in.folder/name", "dots.in.folder/", "name", "name", ""},
        {".cfg", "", ".cfg", "", "cfg"},
        {"trailing.", "", "trailing.", "trailing", ""},
    };
    for (const auto& [path, folder, name, withoutSuffix, suffix] : rows) {
        SCOPED_TRACE(path);
        EXPECT_EQ(detail::PathOnly(path), folder);
        EXPECT_EQ(detail::NameOnly(path), name);
        EXPECT_EQ(detail::NameOnlyWithoutSuffix(path), withoutSuffix);
        EXPECT_EQ(detail::SuffixOnly(path), suffix);
    }
}

TEST(PathText, CombineNameToPathJoinsWithOneNativeSeparator) {
    const std::tuple<std::string, std::string, std::string, std::string> rows[] = {
        {"C:\\a\\\\", "\\\\b.mdl", "C:\\a\\b.mdl", "C:\\a/b.mdl"},
        {"\\\\", "server", "\\\\server", "\\\\server"},
        {"", "name", "name", "name"},
        {"C:", "", "C:\\", "C:/"},
        {"base", "\\", "base\\", "base/"},
    };
    for (const auto& [folder, name, windows, posix] : rows) {
        EXPECT_EQ(detail::CombineNameToPath(folder, name, kWindows), windows) << folder << name;
        EXPECT_EQ(detail::CombineNameToPath(folder, name, kPosix), posix) << folder << name;
    }
}

TEST(PathText, SeparatorsCollapseButANetworkPrefixStaysAndTurnNative) {
    ExpectEach(
        [](std::string text) {
            const std::size_t removed = detail::RemoveDoubleSeparators(text);
            return text + " less " + std::to_string(removed);
        },
        {
            {"\\\\server\\\\share", "\\\\server\\share less 1"},
            {"/\\mixed", "/\\mixed less 0"},
            {"a\\/b/\\c", "a\\b/c less 2"},
            {"\\", "\\ less 0"},
            {"////", "// less 2"},
        });
    std::string windows = "a/b\\c//d";
    std::string posix = windows;
    detail::ToNativeSeparators(windows, kWindows);
    detail::ToNativeSeparators(posix, kPosix);
    EXPECT_EQ(windows, "a\\b\\c\\\\d");
    EXPECT_EQ(posix, "a/b/c//d");
}

// Name equality, containment in a folder and wildcard matching, each under the case rule of
// its style: the styles under which a row holds, "W" for Windows, "P" for POSIX.
TEST(PathText, NamesFoldersAndWildcardsFollowTheStylesCaseRule) {
    using Rule = bool (*)(std::string_view, std::string_view, PathStyle);
    const Rule same = detail::SameName, within = detail::IsWithinFolder,
               matches = detail::MatchesWildcard;
    const std::tuple<Rule, std::string, std::string, std::string> rows[] = {
        {same, "Arm.MDL", "arm.mdl", "W"},
        {same, "arm.mdl", "arm.mdl ", ""},
        {same, "\xc9t\xe9", "\xe9t\xe9", ""}, // only ASCII letters fold
        // A folder holds a path only up to a whole component.
        {within, "C:\\Data", "C:\\Data\\", "WP"},
        {within, "C:\\DataSet\\x.mdl", "C:\\Data", ""},
        {within, "a/b", "a", "WP"}, // a one-letter folder
        {within, "c:\\data\\x.mdl", "C:\\Data", "W"},
        {within, "/anything", "/", "WP"},
        {within, "relative", "/", ""},
        {within, "C:\\Data", "", ""},
        // Wildcards match whole names.
        {matches, "ARM.MDL", "*.mdl", "W"},
        {matches, "arm.mdl", "a?m.*", "WP"},
        {matches, "arm", "*.*", "WP"}, // every name, as on Windows
        {matches, "arm", "", "WP"},
        {matches, "", "*", "WP"},
        {matches, "", "?", ""},
        {matches, "abcabcabd", "a*c*d", "WP"},
        {matches, "a*b", "a\\*b", ""}, // no escapes: "\" is an ordinary character
        {matches, "x\xe9.tga", "X\xe9*", "W"},
        {matches, "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab", "*a*a*a*a*a*a*a*a*c", ""},
    };
    for (const auto& [rule, a, b, styles] : rows) {
        const bool windows = rule(a, b, kWindows), posix = rule(a, b, kPosix);
        EXPECT_EQ(std::string(windows ? "W" : "") + (posix ? "P" : ""), styles) << a << " | " << b;
    }
    EXPECT_TRUE(detail::NameLess("apple", "Banana", kWindows));
    EXPECT_FALSE(detail::NameLess("apple", "Banana", kPosix)); // "B" < "a" in bytes
    EXPECT_TRUE(detail::NameLess("A", "a", kWindows));         // ties broken by bytes
    EXPECT_TRUE(detail::NameLess("ab", "ABC", kWindows));
}

TEST(PathText, StringMembersGiveNullForNothing) {
    String path("C:\\Projects\\Robot\\arm.mdl");
    EXPECT_STREQ(path.GetPathOnly().Get(), "C:\\Projects\\Robot\\");
    EXPECT_STREQ(path.GetNameOnly().Get(), "arm.mdl");
    EXPECT_STREQ(path.GetNameOnlyWithoutSuffix().Get(), "arm");
    EXPECT_STREQ(path.GetSuffixOnly().Get(), "mdl");
    // Empty results are the null string.
    EXPECT_EQ(String("plain").GetPathOnly().Get(), nullptr);
    EXPECT_EQ(String("folder/").GetNameOnly().Get(), nullptr);
    EXPECT_STREQ(String("/home:x").NetSharePlaceHolder().Get(), "/home:x");
    String original("D:\\x"); // a copy changes
    EXPECT_STREQ(original.NetSharePlaceHolder().Get(), "D-\\x");
    EXPECT_STREQ(original.Get(), "D:\\x");
    EXPECT_STREQ(String("a\\b.mdl").GetFileNamesMatchName().Get(), "\"a\\b.mdl\"");
    EXPECT_EQ(String().GetFileNamesMatchName().Get(), nullptr);
}

TEST(PathText, CombineNameToPathAndTheProgramsFolderUseTheNativeSeparator) {
    platform::ScopedServices<platform::SystemServices> guard(platform::System());
    platform::System().applicationFolder = [] { return std::string("/opt/suite/bin"); };
    EXPECT_STREQ(String::GetAppPath().Get(), "/opt/suite/bin");
    EXPECT_EQ(String::AddNameToExeDirectory(String("Plugins\\")).View(),
              std::string("/opt/suite/bin") + platform::NativeSeparator() + "Plugins\\");
}

} // namespace
