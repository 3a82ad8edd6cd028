// The silent search for missing files through file and folder aliases.

#include "StreamTestSupport.h"

#include "fileio/stream/FileStream.h"
#include "path/MissingFiles.h"
#include "path/PathTestSupport.h"
#include "platform/Platform.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

using namespace streamtest;
using fileio::platform::PathStyle;

namespace {

std::string Native(std::string text) {
    for (char& c : text)
        if (c == '/')
            c = fileio::platform::NativeSeparator();
    return text;
}

class MissingFiles : public MissingFileSearch {
protected:
    fileio::test::TempFolder m_folder{"fileio-missing"};
};

TEST_F(MissingFiles, FileAliasesAnswerNewestFirstIgnoringCase) {
    FileStream::AddFileAlias("C:\\Work\\arm.mdl", "/home/ann/old-arm.mdl");
    FileStream::AddFileAlias("c:\\work\\ARM.mdl", "/home/ann/arm.mdl");
    FileStream::AddFileAlias("C:\\Work\\leg.v2.mdl", "/home/ann/leg.mdl");
    EXPECT_TRUE(FileStream::HasFileAliases());
    // The name, whether only its name is looked up, and what it becomes (null: no alias).
    const std::tuple<const char*, bool, const char*> rows[] = {
        {"C:\\Work\\arm.mdl", false, "/home/ann/arm.mdl"}, // the newer of two
        {"C:\\Work\\arm", false, nullptr},
        {"C:/Work/arm.mdl", false, nullptr}, // another spelling is another name
        {"ARM", true, "/home/ann/arm.mdl"},  // by the name without folder and suffix
        {"leg.v2", true, "/home/ann/leg.mdl"},
        {"leg", true, nullptr},
    };
    for (const auto& [given, nameOnly, alias] : rows) {
        SCOPED_TRACE(given);
        String name(given);
        const bool found =
            nameOnly ? FileStream::FindFileAliasNameOnly(name) : FileStream::FindFileAlias(name);
        EXPECT_EQ(found, alias != nullptr);
        EXPECT_EQ(name.View(), alias != nullptr ? alias : given);
    }
    FileStream::FreeFileAliases();
    EXPECT_FALSE(FileStream::HasFileAliases());
}

TEST_F(MissingFiles, FolderAliasesForTheFolderAndEveryFolderBelowIt) {
    // The replacements in the platform's own form, as a user's pick gives them.
    // Their last folders differ from the old ones', so no shorter pair is learnt here.
    FileStream::AddPathAlias("C:\\Old\\", Native("/srv/wrong/").c_str());
    FileStream::AddPathAlias("C:\\Work\\Robot\\", Native("/home/ann/Robot2/").c_str());
    FileStream::AddPathAlias("//server/share/", Native("/mnt/server-disk/").c_str());
    // A folder and what it becomes (null: no alias).
    const std::tuple<const char*, const char*> rows[] = {
        {"C:\\Work\\Robot\\", "/home/ann/Robot2/"}, // the folder itself, as written
        {"c:\\work\\robot\\", "/home/ann/Robot2/"},
        {"C:\\Work\\Robot\\Maps\\", "/home/ann/Robot2/Maps/"}, // below it
        {"C:/Work/Robot/Maps/Skin/", "/home/ann/Robot2/Maps/Skin/"},
        {"C:\\Work\\Robot", "/home/ann/Robot2/"}, // its components, without the end
        {"C:\\Work\\RobotArm\\", nullptr},        // whole components only
        {"C:\\Work\\", nullptr},                  // above it
        {"\\\\server\\share\\maps\\", "/mnt/server-disk/maps/"},
        {"", nullptr},
    };
    for (const auto& [given, found] : rows) {
        SCOPED_TRACE(given);
        String folder(given);
        EXPECT_EQ(FileStream::FindPathAlias(folder), found != nullptr);
        EXPECT_EQ(std::string(folder.View()), found != nullptr ? Native(found) : given);
    }
}

// The shorter pair is learnt from the separators among the last characters of the new
// folder, counted over as many positions as the two share at their ends, ending at the NUL.
TEST_F(MissingFiles, TheShorterFolderAliasRemovesTheLevelsTheCommonEndingCounts) {
    const std::tuple<const char*, const char*, PathStyle, int, const char*, const char*> rows[] = {
        {"C:\\Work\\Robot\\Maps\\", "E:\\Backup\\Robot\\Maps\\", PathStyle::Windows, 2,
         "C:\\Work\\", "E:\\Backup\\"},
        // Without the trailing separator the ending's first "\" is not looked at.
        {"C:\\Work\\Robot\\Maps", "E:\\Backup\\Robot\\Maps", PathStyle::Windows, 1,
         "C:\\Work\\Robot\\", "E:\\Backup\\Robot\\"},
        {"C:\\Work\\Maps\\", "E:\\Maps\\", PathStyle::Windows, 1, "C:\\Work\\", "E:\\"},
        // An ending that starts inside a name counts all the same.
        {"C:\\Old\\Maps\\", "E:\\NewMaps\\", PathStyle::Windows, 1, "C:\\Old\\", "E:\\"},
        {"C:\\One\\", "E:\\Two\\", PathStyle::Windows, 0, nullptr, nullptr},
        // Nothing would be left of the shorter pair: it is not learnt.
        {"C:\\Same\\", "C:\\Same\\", PathStyle::Windows, 2, "", ""},
        // "/" counts in the POSIX style only.
        {"/mnt/old/Robot/Maps/", "/home/ann/Robot/Maps/", PathStyle::Posix, 2, "/mnt/old/",
         "/home/ann/"},
        {"/mnt/old/Robot/Maps/", "/home/ann/Robot/Maps/", PathStyle::Windows, 0, nullptr, nullptr},
        {"C:\\Work\\Robot\\", "/home/ann/Robot\\", PathStyle::Posix, 1, "C:\\Work\\", "/home/ann/"},
    };
    for (const auto& [from, to, style, levels, shorterFrom, shorterTo] : rows) {
        SCOPED_TRACE(std::string(from) + " -> " + to);
        EXPECT_EQ(fileio::detail::DerivedAliasLevels(from, to, style), levels);
        if (shorterFrom != nullptr) {
            EXPECT_EQ(fileio::detail::RemoveFolderLevels(from, levels).View(), shorterFrom);
            EXPECT_EQ(fileio::detail::RemoveFolderLevels(to, levels).View(), shorterTo);
        }
    }
    // Learnt with the platform's own style: a sibling folder of the project is then found.
    FileStream::AddPathAlias("C:\\Work\\Robot\\Maps\\", "E:\\Backup\\Robot\\Maps\\");
    String sibling("C:\\Work\\Sounds\\");
    ASSERT_TRUE(FileStream::FindPathAlias(sibling));
    EXPECT_EQ(std::string(sibling.View()), "E:\\Backup" + Native("/Sounds/"));
}

TEST_F(MissingFiles, TheSilentSearchTrustsFileAliasesAndChecksFolderAliases) {
    const std::string here = m_folder.WriteFile("here/arm.mdl", "x");
    m_folder.WriteFile("moved/leg.mdl", "x");
    const String moved(m_folder.Join("moved/"));
    FileStream::AddPathAlias("C:\\Work\\Robot\\", moved);
    FileStream::AddFileAlias(here.c_str(), "/nowhere/else.mdl");
    FileStream::AddFileAlias("C:\\Work\\gone.mdl", "/nowhere/gone.mdl");
    const std::tuple<std::string, bool, std::string> rows[] = {
        {here, true, here}, // an existing file is not searched, though an alias names it
        {"C:\\Work\\gone.mdl", true, "/nowhere/gone.mdl"}, // a file alias is trusted
        {"C:\\Work\\Robot\\leg.mdl", true, m_folder.Join("moved/leg.mdl")},
        // A folder alias needs the file; the name stays changed all the same.
        {"C:\\Work\\Robot\\hand.mdl", false, m_folder.Join("moved/hand.mdl")},
        {"C:\\Elsewhere\\leg.mdl", false, "C:\\Elsewhere\\leg.mdl"},
    };
    for (const auto& [given, found, after] : rows) {
        SCOPED_TRACE(given);
        String name(given);
        EXPECT_EQ(FileStream::FindAlias(name), found);
        EXPECT_EQ(std::string(name.View()), after);
    }
}

TEST_F(MissingFiles, QuotedNamesReadFromAFileGoThroughTheAliases) {
    const pathtest::BasePathGuard keepBase;
    const pathtest::CurrentDirectoryGuard keepDirectory; // resolution moves into the project
    m_folder.MakeFolder("project");
    SetBasePath(String(m_folder.Join("project/robot.prj")));
    m_folder.WriteFile("moved/arm.mdl", "x");
    FileStream::AddPathAlias(String(m_folder.Join("project/parts/")),
                             String(m_folder.Join("moved/")));
    EXPECT_EQ(String("\"parts/arm.mdl\"").GetMatchNameAbsoluteFromFile().View(),
              "\"" + m_folder.Join("moved/arm.mdl") + "\"");
    EXPECT_EQ(String("\"parts/hand.mdl\"").GetMatchNameAbsoluteFromFile().View(),
              "\"" + m_folder.Join("moved/hand.mdl") + "\"");
    EXPECT_EQ(String("no quotes").GetMatchNameAbsoluteFromFile().View(), "no quotes");
}

} // namespace
