// RelinkTest.cpp - the fileio program relinking projects on disk: the README's story on the
// bundled sample, a project made on Windows and one made on Linux moved onto this machine,
// an ambiguous name, a read-only project, --dry-run; the saved project re-read with deps
// finds every reference, and both forms stay the same project.

#include "ToolTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using fileio::test::kSamples;
using fileio::test::RunTool;
using fileio::test::ToolRun;
using fileio::test::WorkFolder;

constexpr int kOk = 0, kProblems = 1, kError = 2;

/// Whether deps finds all of a file's `count` references at their stored places.
bool AllExist(const std::string& file, int count) {
    const std::string all = std::to_string(count) + " references: " + std::to_string(count) +
                            " exist, 0 found by the search, 0 missing, 0 ambiguous";
    return RunTool({"deps", file}).out.find(all) != std::string::npos;
}

/// The names in a folder (to see that a failed save left nothing behind).
std::vector<std::string> Names(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

class RelinkTest : public testing::Test {
protected:
    WorkFolder m_work;
};

TEST_F(RelinkTest, TheReadmeStoryOnTheBundledSample) {
    m_work.CopyIn(kSamples + "/Documents", "Documents");
    const std::string text = "Documents/Robot/robot.prj";
    const std::string binary = "Documents/Robot/robot-binary.prj";
    const std::string map = "C:\\Users\\ann\\Documents\\Robot=Documents/Robot";
    EXPECT_EQ(RunTool({"deps", text}).exitCode, kProblems);

    const ToolRun relink = RunTool({"relink", text, "--map", map});
    EXPECT_EQ(relink.exitCode, kOk) << relink.err;
    EXPECT_NE(relink.out.find("Total 22 | Changed 9 | Missing 0 | Ambiguous 0"), std::string::npos)
        << relink.out;
    EXPECT_TRUE(AllExist(text, 22));

    EXPECT_EQ(RunTool({"relink", binary, "--map", map}).exitCode, kOk);
    EXPECT_TRUE(AllExist(binary, 22));
    const ToolRun check = RunTool({"check", text, binary});
    EXPECT_EQ(check.exitCode, kOk) << check.out;

    // Both forms were relinked alike: each is the other converted.
    ASSERT_EQ(RunTool({"convert", text, "robot.bin"}).exitCode, kOk);
    EXPECT_EQ(m_work.Files().ReadFile("robot.bin"), m_work.Files().ReadFile(binary));
    ASSERT_EQ(RunTool({"convert", "robot.bin", "robot-again.prj"}).exitCode, kOk);
    EXPECT_EQ(m_work.Files().ReadFile("robot-again.prj"), m_work.Files().ReadFile(text));
}

TEST_F(RelinkTest, ProjectsMadeOnWindowsAndOnLinuxOpenHere) {
    for (const char* file : {"Robot/Maps/skin.png", "Robot/Sounds/step.wav", "Robot/arm.mdl"})
        m_work.Files().WriteFile(file, "data");
    m_work.Files().WriteFile("Robot/robot.prj", "<MODELFILE>\n"
                                                "Image=C:/Users/ann/Robot/Maps/skin.png\n"
                                                "BumpMap=C:\\Users\\ann\\Robot\\Maps\\skin.png\n"
                                                "Sound=/home/ann/Robot/Sounds/step.wav\n"
                                                "FileName=\"/home/ann/Robot/arm.mdl\"\n"
                                                "</MODELFILE>\n");
    const std::string here = m_work.Files().Join("Robot");
    const ToolRun relink =
        RunTool({"relink", "Robot/robot.prj", "--map", "c:/users/ANN/robot=" + here, "--map",
                 "/home/ann/Robot=Robot"});
    EXPECT_EQ(relink.exitCode, kOk) << relink.out << relink.err;
    EXPECT_NE(relink.out.find("Total 4 | Changed 4 | Missing 0 | Ambiguous 0"), std::string::npos)
        << relink.out;
    EXPECT_EQ(m_work.Files().ReadFile("Robot/robot.prj"),
              "<MODELFILE>\nImage=Maps/skin.png\nBumpMap=Maps/skin.png\n"
              "Sound=Sounds/step.wav\nFileName=\"arm.mdl\"\n</MODELFILE>\n");
    EXPECT_TRUE(AllExist("Robot/robot.prj", 4));
}

TEST_F(RelinkTest, AnAmbiguousNameIsReportedAndLeftAsItIs) {
    m_work.Files().WriteFile("one/dup.png", "1");
    m_work.Files().WriteFile("two/dup.png", "2");
    m_work.Files().WriteFile("two/single.png", "3");
    const std::string project = "<MODELFILE>\nImage=C:/old/dup.png\nBumpMap=C:/old/single.png\n"
                                "</MODELFILE>\n";
    m_work.Files().WriteFile("robot.prj", project);
    const ToolRun relink = RunTool({"relink", "robot.prj", "--search", "one", "--search", "two"});
    EXPECT_EQ(relink.exitCode, kProblems);
    EXPECT_NE(relink.out.find("Total 2 | Changed 1 | Missing 0 | Ambiguous 1"), std::string::npos)
        << relink.out;
    const std::string shown = m_work.Normalised(relink.out);
    EXPECT_NE(shown.find("found <work>/one/dup.png\n"), std::string::npos) << shown;
    EXPECT_NE(shown.find("found <work>/two/dup.png\n"), std::string::npos) << shown;
    EXPECT_EQ(m_work.Files().ReadFile("robot.prj"),
              "<MODELFILE>\nImage=C:/old/dup.png\nBumpMap=two/single.png\n</MODELFILE>\n");
}

TEST_F(RelinkTest, AReadOnlyProjectIsLeftUntouched) {
    m_work.Files().WriteFile("Maps/skin.png", "data");
    const std::string project = "<MODELFILE>\nImage=C:/old/Maps/skin.png\n</MODELFILE>\n";
    const std::string file = m_work.Files().WriteFile("robot.prj", project);
    namespace fs = std::filesystem;
    fs::permissions(file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    const std::vector<std::string> before = Names(m_work.Path());
    const ToolRun relink = RunTool({"relink", "robot.prj", "--map", "C:/old=" + m_work.Path()});
    EXPECT_EQ(relink.exitCode, kError) << relink.out << relink.err;
    EXPECT_NE(relink.err.find("not saved"), std::string::npos) << relink.err;
    EXPECT_EQ(m_work.Files().ReadFile("robot.prj"), project);
    EXPECT_EQ(Names(m_work.Path()), before) << "no temporary file is left behind";
}

TEST_F(RelinkTest, ADryRunTellsWhatWouldChangeAndWritesNothing) {
    m_work.Files().WriteFile("Maps/skin.png", "data");
    const std::string project = "<MODELFILE>\nImage=C:/old/Maps/skin.png\nSound=gone.wav\n"
                                "</MODELFILE>\n";
    m_work.Files().WriteFile("robot.prj", project);
    const ToolRun dry =
        RunTool({"relink", "robot.prj", "--map", "C:/old=" + m_work.Path(), "--dry-run", "--json"});
    EXPECT_EQ(dry.exitCode, kProblems) << "gone.wav stays missing";
    EXPECT_NE(dry.out.find(R"("rewritten":"Maps/skin.png")"), std::string::npos) << dry.out;
    EXPECT_NE(dry.out.find(R"("changed":1,"missing":1,)"), std::string::npos) << dry.out;
    EXPECT_NE(dry.out.find(R"("saved":false})"), std::string::npos) << dry.out;
    EXPECT_EQ(m_work.Files().ReadFile("robot.prj"), project);

    const ToolRun real =
        RunTool({"relink", "robot.prj", "--map", "C:/old=" + m_work.Path(), "--json"});
    EXPECT_EQ(real.exitCode, dry.exitCode);
    EXPECT_NE(real.out.find(R"("saved":true})"), std::string::npos) << real.out;
    EXPECT_EQ(m_work.Files().ReadFile("robot.prj"),
              "<MODELFILE>\nImage=Maps/skin.png\nSound=gone.wav\n</MODELFILE>\n");
}

} // namespace
