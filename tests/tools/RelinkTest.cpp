// RelinkTest.cpp - the fileio program relinking projects on disk: a project made on Windows and
// Linux with an ambiguous name, first as a dry run, and a read-only project.

#include "ToolTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using fileio::test::RunTool;
using fileio::test::ToolRun;
using fileio::test::WorkFolder;

constexpr int kProblems = 1, kError = 2;

/// The names in a folder (to see that a failed save left nothing behind).
std::vector<std::string> Names(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// A dry run tells what the run tells and writes nothing; the run rewrites the Windows and the
// Linux folders relative to the project, quoted or not, and leaves an ambiguous name alone.
TEST(RelinkTest, ProjectsMadeOnWindowsAndOnLinuxOpenHere) {
    const WorkFolder work;
    for (const char* file : {"Robot/Maps/skin.png", "Robot/Sounds/step.wav", "Robot/arm.mdl",
                             "one/dup.png", "two/dup.png"})
        work.Files().WriteFile(file, "data");
    const std::string project = "<MODELFILE>\n"
                                "Image=C:/Users/ann/Robot/Maps/skin.png\n"
                                "BumpMap=C:\\Users\\ann\\Robot\\Maps\\skin.png\n"
                                "Sound=/home/ann/Robot/Sounds/step.wav\n"
                                "FileName=\"/home/ann/Robot/arm.mdl\"\n"
                                "EnvironmentMap=C:/old/dup.png\n"
                                "</MODELFILE>\n";
    work.Files().WriteFile("Robot/robot.prj", project);
    std::vector<std::string> args{"relink",   "Robot/robot.prj",
                                  "--map",    "c:/users/ANN/robot=" + work.Files().Join("Robot"),
                                  "--map",    "/home/ann/Robot=Robot",
                                  "--search", "one",
                                  "--search", "two",
                                  "--dry-run"};
    const ToolRun dry = RunTool(args);
    EXPECT_EQ(work.Files().ReadFile("Robot/robot.prj"), project);
    args.pop_back();
    const ToolRun relink = RunTool(args);
    EXPECT_EQ(relink.exitCode, kProblems) << relink.output << relink.errors;
    EXPECT_EQ(dry.exitCode, relink.exitCode);
    EXPECT_EQ(dry.output, relink.output);
    EXPECT_NE(relink.output.find("Total 5 | Changed 4 | Missing 0 | Ambiguous 1"),
              std::string::npos)
        << relink.output;
    const std::string shown = work.Normalised(relink.output);
    EXPECT_NE(shown.find("found <work>/one/dup.png\n"), std::string::npos) << shown;
    EXPECT_NE(shown.find("found <work>/two/dup.png\n"), std::string::npos) << shown;
    EXPECT_EQ(work.Files().ReadFile("Robot/robot.prj"),
              "<MODELFILE>\nImage=Maps/skin.png\nBumpMap=Maps/skin.png\n"
              "Sound=Sounds/step.wav\nFileName=\"arm.mdl\"\nEnvironmentMap=C:/old/dup.png\n"
              "</MODELFILE>\n");
}

TEST(RelinkTest, AReadOnlyProjectIsLeftUntouched) {
    const WorkFolder work;
    work.Files().WriteFile("Maps/skin.png", "data");
    const std::string project = "<MODELFILE>\nImage=C:/old/Maps/skin.png\n</MODELFILE>\n";
    const std::string file = work.Files().WriteFile("robot.prj", project);
    namespace fs = std::filesystem;
    fs::permissions(file, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    const std::vector<std::string> before = Names(work.Path());
    const ToolRun relink = RunTool({"relink", "robot.prj", "--map", "C:/old=" + work.Path()});
    EXPECT_EQ(relink.exitCode, kError) << relink.output << relink.errors;
    EXPECT_NE(relink.errors.find("not saved"), std::string::npos) << relink.errors;
    EXPECT_EQ(work.Files().ReadFile("robot.prj"), project);
    EXPECT_EQ(Names(work.Path()), before) << "no temporary file is left behind";
}

} // namespace
