// ToolGoldenTest.cpp - the fileio program against its expected outputs. Every file of the
// data tree's good/ and bad/ folders, and the bundled sample in both forms, goes through each
// command that reads it (info, check, dump, dump --tree, deps), as text and as --json; a
// table adds the command line's own cases (help, usage errors, options). Each run's exit
// status, standard output and standard error are compared with
// tests/tools/data/expected/<case>.txt after the work folder's path and the separators are
// written the same way on every platform (so one expected text serves Linux and Windows).
// Every --json output must be exactly one valid document with the schema version, and
// standard error never holds a progress bar or a colour: it is not a terminal here.
//
// FILEIO_UPDATE_EXPECTED=1 in the environment writes the expected files instead of
// comparing them (review the difference before committing it).

#include "ToolTestSupport.h"
#include "support/JsonParser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

using fileio::test::JsonValue;
using fileio::test::kSamples;
using fileio::test::kToolData;
using fileio::test::ParseJson;
using fileio::test::PrettyJson;
using fileio::test::RunTool;
using fileio::test::ToolRun;
using fileio::test::WorkFolder;

constexpr int kSchema = 1;
/// The sample project, as the work folder holds it.
constexpr const char* kSampleText = "Documents/Robot/robot.prj";
constexpr const char* kSampleBinary = "Documents/Robot/robot-binary.prj";

/// A work folder holding the data tree's good/ and bad/ folders and the samples.
class ToolWork : public WorkFolder {
public:
    ToolWork() {
        CopyIn(kToolData + "/good", "good");
        CopyIn(kToolData + "/bad", "bad");
        CopyIn(kSamples + "/Documents", "Documents");
    }
};

/// The bytes that are not printable text shown as \xNN, for an expected file.
std::string Visible(const std::string& text) {
    std::string out;
    for (const char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if ((byte >= 0x20 && byte < 0x7F) || c == '\n' || c == '\t') {
            out += c;
        } else {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02x", byte);
            out += escape;
        }
    }
    return out;
}

/// The JSON document with every string normalised as the work folder normalises text.
void Normalise(JsonValue& value, const WorkFolder& work) {
    if (value.type == JsonValue::Type::String)
        value.text = work.Normalised(value.text);
    for (JsonValue& item : value.items)
        Normalise(item, work);
    for (auto& member : value.members) {
        member.first = work.Normalised(member.first);
        Normalise(member.second, work);
    }
}

/// Runs the program and gives what the expected file holds; adds a failure for a broken
/// JSON document or a terminal's sequences on standard error.
std::string Transcript(const std::vector<std::string>& args, const WorkFolder& work) {
    const ToolRun run = RunTool(args);
    std::string out = run.out;
    const auto optionsEnd = std::find(args.begin(), args.end(), "--");
    const bool json = std::find(args.begin(), optionsEnd, "--json") != optionsEnd;
    if (json) {
        std::string error;
        std::optional<JsonValue> document = ParseJson(run.out, &error);
        if (!document) {
            ADD_FAILURE() << "not one JSON document (" << error << "):\n" << run.out;
        } else {
            const JsonValue* schema = document->Find("schema");
            const JsonValue* command = document->Find("command");
            EXPECT_TRUE(schema != nullptr && schema->number == kSchema) << run.out;
            EXPECT_TRUE(command != nullptr && !args.empty() &&
                        (command->text == args[0] || command->text.empty()))
                << run.out;
            Normalise(*document, work);
            out = PrettyJson(*document) + "\n";
        }
    }
    EXPECT_EQ(run.err.find_first_of("\r\x1b"), std::string::npos)
        << "a progress bar or a colour on a standard error that is no terminal:\n"
        << run.err;
    std::string command = "$ fileio";
    for (const std::string& arg : args)
        command += " " + arg;
    return command + "\nexit " + std::to_string(run.exitCode) + "\n--- stdout\n" +
           Visible(json ? out : work.Normalised(out)) + "--- stderr\n" +
           Visible(work.Normalised(run.err));
}

/// Compares a transcript with its expected file, or writes the file when asked to.
void ExpectTranscript(const std::string& name, const std::string& transcript) {
    const std::string path = kToolData + "/expected/" + name + ".txt";
    if (std::getenv("FILEIO_UPDATE_EXPECTED") != nullptr) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << transcript;
        return;
    }
    std::ifstream file(path, std::ios::binary);
    std::stringstream expected;
    expected << file.rdbuf();
    EXPECT_TRUE(file.good()) << "no expected file " << path;
    EXPECT_EQ(transcript, expected.str()) << "case " << name;
}

// ---- every data file through every reading command ----------------------------------------------

struct Variant {
    const char* name;
    std::vector<std::string> args;
};

const Variant kVariants[] = {
    {"info", {"info"}},
    {"info.json", {"info", "--json"}},
    {"check", {"check"}},
    {"check.json", {"check", "--json"}},
    {"dump", {"dump"}},
    {"dump-tree", {"dump", "--tree"}},
    {"dump.json", {"dump", "--json"}},
    {"deps", {"deps"}},
    {"deps.json", {"deps", "--json"}},
};

/// The data files, as paths relative to the work folder.
std::vector<std::string> DataFiles() {
    std::vector<std::string> files{kSampleText, kSampleBinary};
    for (const char* folder : {"good", "bad"}) {
        for (const auto& entry : std::filesystem::directory_iterator(kToolData + "/" + folder)) {
            if (entry.is_regular_file())
                files.push_back(std::string(folder) + "/" + entry.path().filename().string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

class DataFileTest : public testing::TestWithParam<std::string> {};

TEST_P(DataFileTest, EveryCommandGivesItsExpectedOutput) {
    const ToolWork work;
    for (const Variant& variant : kVariants) {
        std::vector<std::string> args = variant.args;
        args.push_back(GetParam());
        ExpectTranscript(GetParam() + "/" + variant.name, Transcript(args, work));
    }
}

INSTANTIATE_TEST_SUITE_P(Files, DataFileTest, testing::ValuesIn(DataFiles()),
                         [](const testing::TestParamInfo<std::string>& param) {
                             std::string name = param.param;
                             for (char& c : name) {
                                 if (!std::isalnum(static_cast<unsigned char>(c)))
                                     c = '_';
                             }
                             return name;
                         });

// ---- the command line's own cases
// ----------------------------------------------------------------

struct CommandCase {
    const char* name;
    std::vector<std::string> args;
};

const CommandCase kCommandCases[] = {
    // help and usage
    {"no-arguments", {}},
    {"help", {"--help"}},
    {"help-deps", {"help", "deps"}},
    {"relink-help", {"relink", "-h"}},
    {"unknown-command", {"frobnicate"}},
    {"unknown-command-json", {"frobnicate", "--json"}},
    {"unknown-option", {"check", "--frob", "good/square.prj"}},
    {"option-of-another-command", {"check", "--tree", "good/square.prj"}},
    {"option-without-value", {"deps", "good/refs.prj", "--map"}},
    {"flag-with-value", {"check", "--json=yes", "good/square.prj"}},
    {"dump-two-files", {"dump", "good/square.prj", "good/crlf.prj"}},
    {"convert-one-file", {"convert", "good/square.prj"}},
    {"convert-both-forms", {"convert", "--binary", "--text", "good/square.prj", "out.prj"}},
    {"relink-json-usage", {"relink", "--json"}},
    {"file-after-double-dash", {"check", "--", "--json"}},
    // files that cannot be read, among others
    {"missing-file", {"check", "nope.prj"}},
    {"missing-file-json", {"check", "--json", "nope.prj"}},
    {"folder-as-file", {"info", "good"}},
    {"worst-status-wins", {"check", "good/square.prj", "bad/color-short.prj", "nope.prj"}},
    {"problems-without-errors", {"check", "good/square.prj", "bad/color-short.prj"}},
    // quiet: no notes on standard error
    {"dump-quiet", {"dump", "--quiet", "good/unknown.prj"}},
    {"dump-notes", {"dump", "good/unknown.prj"}},
    // the search options of deps
    {"deps-map", {"deps", "--map", "C:/Users/ann/Robot=good/refs", "good/refs.prj"}},
    {"deps-map-backslashes", {"deps", "--map", "C:\\Users\\ann\\Robot=good/refs", "good/refs.prj"}},
    {"deps-map-case", {"deps", "--map=c:/users/ANN/robot=good/refs", "good/refs.prj"}},
    {"deps-search", {"deps", "--search", "good", "--json", "good/refs.prj"}},
    {"deps-map-malformed", {"deps", "--map", "good/refs", "good/refs.prj"}},
    {"deps-map-to-nowhere", {"deps", "--map", "C:/x=nowhere", "good/refs.prj"}},
    {"deps-search-nowhere", {"deps", "--search", "nowhere", "good/refs.prj"}},
    // convert
    {"convert-to-binary", {"convert", "good/square.prj", "square.bin"}},
    {"convert-to-text-json", {"convert", "--json", "good/crlf-binary.prj", "crlf.prj"}},
    {"convert-drops-unknown", {"convert", "good/unknown.prj", "unknown.bin"}},
    {"convert-keeps-unknown-in-text", {"convert", "--text", "good/unknown.prj", "unknown.prj"}},
    {"convert-refuses-cut-file", {"convert", "bad/truncated.prj", "out.prj"}},
    {"convert-binary-unknown-field", {"convert", "bad/unknown-field.prj", "out.prj"}},
    // relink, without writing
    {"relink-dry-run",
     {"relink", "good/refs.prj", "--map", "C:/Users/ann/Robot=good/refs", "--dry-run"}},
    {"relink-dry-run-json", {"relink", "good/refs.prj", "--search", "good", "--dry-run", "--json"}},
    {"relink-nothing-found", {"relink", "good/refs.prj", "--dry-run"}},
    {"relink-binary-refused", {"relink", "bad/unknown-field.prj", "--dry-run"}},
};

class CommandLineTest : public testing::TestWithParam<CommandCase> {};

TEST_P(CommandLineTest, GivesItsExpectedOutput) {
    const ToolWork work;
    ExpectTranscript(std::string("cli/") + GetParam().name, Transcript(GetParam().args, work));
}

INSTANTIATE_TEST_SUITE_P(Cases, CommandLineTest, testing::ValuesIn(kCommandCases),
                         [](const testing::TestParamInfo<CommandCase>& param) {
                             std::string name = param.param.name;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

} // namespace
