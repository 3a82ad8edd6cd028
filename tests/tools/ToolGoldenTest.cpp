// ToolGoldenTest.cpp - the fileio program against its expected outputs: every file of the data
// tree's good/ and bad/ folders and the bundled sample through each reading command, as text
// and as --json, and a table of the command line's own cases. Exit status, standard output and
// standard error are compared with data/expected/<case>.txt, with the work folder and the
// separators written alike on every platform; a --json output must be one whole document, and
// standard error (no terminal here) never holds a progress bar or a colour.
// FILEIO_UPDATE_EXPECTED=1 writes the expected files instead (review the difference).

#include "ToolTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

using fileio::test::kSamples;
using fileio::test::kToolData;
using fileio::test::RunTool;
using fileio::test::ToolRun;
using fileio::test::WorkFolder;

constexpr const char* kSampleText = "Documents/Robot/robot.prj";

/// A work folder holding the data tree's good/ and bad/ folders and the samples.
class ToolWork : public WorkFolder {
public:
    ToolWork() {
        CopyIn(kToolData + "/good", "good");
        CopyIn(kToolData + "/bad", "bad");
        CopyIn(kSamples + "/Documents", "Documents");
    }
};

/// The bytes that are not printable text shown as \x{NN} (apart from the program's own
/// escapes, \xNN), for an expected file.
std::string Visible(const std::string& text) {
    constexpr const char* kHex = "0123456789abcdef";
    std::string out;
    for (const char c : text) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if ((byte >= 0x20 && byte < 0x7F) || c == '\n' || c == '\t')
            out += c;
        else
            out += std::string("\\x{") + kHex[byte >> 4] + kHex[byte & 15] + "}";
    }
    return out;
}

/// A --json output one value to a line, indented by two spaces, with an escaped backslash
/// written "/" as the separators of the text outputs are; adds a failure unless the output
/// is one whole document and its line end.
std::string Indented(std::string_view json) {
    std::string out;
    int depth = 0, documents = 0;
    bool quoted = false;
    const auto newLine = [&] {
        out += '\n';
        out.append(static_cast<std::size_t>(2 * std::max(depth, 0)), ' ');
    };
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (quoted && c == '\\' && i + 1 < json.size()) {
            const char escaped = json[++i];
            out += escaped == '\\' ? std::string("/") : std::string{c, escaped};
        } else if (quoted || c == '"') {
            out += c;
            quoted = !quoted || c != '"';
        } else if (c == '}' || c == ']') {
            documents += --depth == 0;
            while (!out.empty() && (out.back() == ' ' || out.back() == '\n'))
                out.pop_back();
            if (out.empty() || (out.back() != '{' && out.back() != '['))
                newLine();
            out += c;
        } else {
            out += c;
            depth += c == '{' || c == '[';
            if (c == '{' || c == '[' || c == ',')
                newLine();
            else if (c == ':')
                out += ' ';
        }
    }
    EXPECT_TRUE(documents == 1 && depth == 0 && !quoted && json.ends_with("\n"))
        << "not one JSON document:\n"
        << json;
    return out;
}

/// Runs the program and compares its transcript with the expected file (or writes the file
/// when asked to); adds a failure for a broken JSON document or a terminal's sequences on
/// standard error.
void ExpectTranscript(const std::string& name, const std::vector<std::string>& args,
                      const WorkFolder& work) {
    const ToolRun run = RunTool(args);
    const auto optionsEnd = std::find(args.begin(), args.end(), "--");
    const bool json = std::find(args.begin(), optionsEnd, "--json") != optionsEnd;
    EXPECT_EQ(run.errors.find_first_of("\r\x1b"), std::string::npos)
        << "a progress bar or a colour on a standard error that is no terminal:\n"
        << run.errors;
    std::string transcript = "$ fileio";
    for (const std::string& arg : args)
        transcript += " " + arg;
    transcript +=
        "\nexit " + std::to_string(run.exitCode) + "\n--- stdout\n" +
        Visible(json ? work.WithoutWork(Indented(run.output)) : work.Normalised(run.output)) +
        "--- stderr\n" + Visible(work.Normalised(run.errors));

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

struct Case {
    const char* name;
    std::vector<std::string> args;
};

std::string TestName(std::string name) {
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

const Case kVariants[] = {
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
    std::vector<std::string> files{kSampleText};
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
    for (const Case& variant : kVariants) {
        std::vector<std::string> args = variant.args;
        args.push_back(GetParam());
        ExpectTranscript(GetParam() + "/" + variant.name, args, work);
    }
}

INSTANTIATE_TEST_SUITE_P(Files, DataFileTest, testing::ValuesIn(DataFiles()),
                         [](const auto& param) { return TestName(param.param); });

// ---- the command line's own cases -------------------------------------------------------------

const Case kCases[] = {
    // help and usage
    {"no-arguments", {}},
    {"help", {"--help"}},
    {"help-deps", {"help", "deps"}},
    {"relink-help", {"relink", "-h"}},
    {"unknown-command", {"frobnicate"}},
    {"option-of-another-command", {"check", "--tree", "good/square.prj"}},
    {"option-without-value", {"deps", "good/refs.prj", "--map"}},
    {"flag-with-value", {"check", "--json=yes", "good/square.prj"}},
    {"convert-one-file", {"convert", "good/square.prj"}},
    {"convert-both-forms", {"convert", "--binary", "--text", "good/square.prj", "out.prj"}},
    {"relink-json-usage", {"relink", "--json"}},
    {"file-after-double-dash", {"check", "--", "--json"}},
    // files that cannot be read, among others
    {"missing-file-json", {"check", "--json", "nope.prj"}},
    {"folder-as-file", {"info", "good"}},
    {"worst-status-wins", {"check", "good/square.prj", "bad/color-short.prj", "nope.prj"}},
    {"problems-without-errors", {"check", "good/square.prj", "bad/color-short.prj"}},
    // quiet: no notes on standard error (good/unknown.prj/dump shows them)
    {"dump-quiet", {"dump", "--quiet", "good/unknown.prj"}},
    // the search options of deps
    {"deps-map-case", {"deps", "--map=c:/users/ANN/robot=good/refs", "good/refs.prj"}},
    {"deps-search", {"deps", "--search", "good", "--json", "good/refs.prj"}},
    {"deps-map-malformed", {"deps", "--map", "good/refs", "good/refs.prj"}},
    {"deps-map-to-nowhere", {"deps", "--map", "C:/x=nowhere", "good/refs.prj"}},
    {"deps-search-nowhere", {"deps", "--search", "nowhere", "good/refs.prj"}},
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

class CommandLineTest : public testing::TestWithParam<Case> {};

TEST_P(CommandLineTest, GivesItsExpectedOutput) {
    const ToolWork work;
    ExpectTranscript(std::string("cli/") + GetParam().name, GetParam().args, work);
}

INSTANTIATE_TEST_SUITE_P(Cases, CommandLineTest, testing::ValuesIn(kCases),
                         [](const auto& param) { return TestName(param.param.name); });

} // namespace
