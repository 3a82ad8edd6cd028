// Commands.h - the subcommands of the fileio tool, and what they share.
//
// Every command reads the files named on its command line and prints its data on standard
// output: text for a person, or with --json exactly one JSON document whose "schema" member
// gives the version of its shape (kJsonSchema). Diagnostics go to standard error. The exit
// status is the worst of what the command met: kExitOk, kExitProblems (a bad file, a missing
// reference, data that could not be carried over) or kExitError (a usage error, a file that
// cannot be read or written).
#pragma once

#include "Json.h"
#include "Output.h"
#include "ProjectReader.h"

#include <string>
#include <vector>

namespace fileio::tool {

inline constexpr int kExitOk = 0;
inline constexpr int kExitProblems = 1;
inline constexpr int kExitError = 2;
/// The version of the shape of every --json document.
inline constexpr int kJsonSchema = 1;

/// The form convert writes.
enum class TargetForm : unsigned char { Other, Binary, Text };

struct CommandLine {
    std::string command;
    std::vector<std::string> files;
    std::vector<std::string> maps;
    std::vector<std::string> searches;
    TargetForm form = TargetForm::Other;
    bool json = false;
    bool quiet = false;
    bool help = false;
    bool tree = false;
    bool dryRun = false;
};

/// A file named on the command line: as it was written there (for messages), and as an
/// absolute path, taken before anything changes the current folder.
struct InputFile {
    std::string shown;
    std::string path;
};

[[nodiscard]] std::vector<InputFile> InputFiles(const CommandLine& line);

/// The first members of every --json document: {"schema":1,"command":"...".
void BeginDocument(JsonWriter& json, const char* command);
/// "problems": [{"offset":..,"place":..,"message":..,"severity":"error"|"note"}, ...].
void WriteProblems(JsonWriter& json, const std::vector<Problem>& problems);
/// "robot.prj: 0x1a2c: LIBRARY/MESH[3]/Color: 2 of 3 values"; a note's message begins
/// "note: ". Text from the file is made printable.
[[nodiscard]] std::string ProblemLine(const std::string& shown, const Problem& problem);
/// Tells the problems on standard error (the notes unless --quiet).
void TellProblems(Output& output, const std::string& shown, const std::vector<Problem>& problems);
/// Loads a file for a command. When it cannot be read: tells why on standard error, sets
/// `why`, returns false.
bool LoadInput(const InputFile& file, MemoryStream& stream, Output& output, std::string& why);
/// Walks a loaded file with a progress bar that is gone again when the walk returns.
WalkCounts Walk(MemoryStream& in, ProjectVisitor& visitor, const Output& output,
                const InputFile& file);
/// Writes `bytes` to `path` through the library's crash-safe save. False when the save
/// failed (the library has told why; the old file is untouched).
bool SaveFile(const std::string& path, std::string_view bytes);

int RunInfo(const CommandLine& line, Output& output);
int RunDump(const CommandLine& line, Output& output);
int RunCheck(const CommandLine& line, Output& output);
int RunConvert(const CommandLine& line, Output& output);
int RunDeps(const CommandLine& line, Output& output);
int RunRelink(const CommandLine& line, Output& output);

/// The program: `args` are the arguments after its name. Returns the exit status.
int Main(const std::vector<std::string>& args);

} // namespace fileio::tool
