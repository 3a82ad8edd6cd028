// ReaderTest.cpp - the walk behind check, dump and the reference commands: the problems it
// reports (offset, place, message) for the faults the data tree's bad/ files do not show,
// the limits on how many it tells, and no crash or endless loop on any prefix of the bundled
// sample or on damaged copies of it.

#include "ProjectReader.h"
#include "ProjectWriter.h"
#include "ToolTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace fileio::tool;
using fileio::test::BinaryProject;

/// The problems of a walk, and where its top-level sections' end tokens are (their offset and
/// the length of their word).
class Recorder : public ProjectVisitor {
public:
    void EndSection(const SectionEvent& section, const SectionPath& path) override {
        if (path.Depth() == 1)
            topLevelEnds.emplace_back(section.end, section.word.size());
    }
    std::vector<std::string> ProblemLines() const {
        std::vector<std::string> out;
        for (const Problem& p : Problems())
            out.push_back(std::to_string(p.offset) + " " + p.place + ": " +
                          (p.severity == Severity::Note ? "note: " : "") + p.message);
        return out;
    }
    std::vector<std::pair<std::size_t, std::size_t>> topLevelEnds;
};

Recorder Walk(const std::string& bytes, WalkCounts* counts = nullptr) {
    MemoryStream stream;
    OpenProject(bytes.data(), bytes.size(), stream);
    Recorder recorder;
    const WalkCounts walked = WalkProject(stream, recorder);
    if (counts != nullptr)
        *counts = walked;
    return recorder;
}

std::string ReadAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

const std::string kSampleText = fileio::test::kSamples + "/Documents/Robot/robot.prj";
const std::string kSampleBinary = fileio::test::kSamples + "/Documents/Robot/robot-binary.prj";

const int kModel = GetHeaderIDFromText("MODELFILE");

struct ProblemCase {
    const char* name;
    std::string bytes;
    std::vector<std::string> problems;
};

TEST(ReaderTest, EachFaultIsReportedWithItsOffsetAndPlace) {
    const ProblemCase cases[] = {
        {"a field outside any section",
         "Opacity=x\n<MODELFILE>\n</MODELFILE>\n",
         {"0 Opacity: 'x' is not a number"}},
        {"an unknown section without an end",
         "<MODELFILE>\n<GADGET>\n</MODELFILE>\n",
         {"12 MODELFILE/GADGET: unknown section without an end",
          "12 MODELFILE/GADGET[0]: not closed before </MODELFILE>"}},
        {"a token cut short",
         BinaryProject(Header(kModel)) + "\x50\x01",
         {"5 MODELFILE: the data end inside a token: 2 of 4 bytes"}},
        {"a truth value that is neither 0 nor 1",
         BinaryProject(Header(kModel), Label("Active")) + "\x07" +
             BinaryProject(EndHeader(kModel)).substr(1),
         {"5 MODELFILE/Active: a truth value of 7, 0 or 1 expected"}},
        {"an unknown binary section is skipped to its end",
         BinaryProject(Header(kModel), Header(374), EndHeader(374), EndHeader(kModel)),
         {"5 MODELFILE/#374: note: unknown section: skipped"}},
    };
    for (const ProblemCase& c : cases)
        EXPECT_EQ(Walk(c.bytes).ProblemLines(), c.problems) << c.name;
}

TEST(ReaderTest, ProblemsStopBeingToldAfterTheirLimit) {
    struct LimitCase {
        const char* line;
        int limit;
        bool complete;
        int errors;
        const char* last;
    };
    const LimitCase cases[] = {
        {"Opacity=x\n", kMaxErrors, false, kMaxErrors + 1,
         "too many problems: the rest of the file is not read"},
        {"Wibble=1\n", kMaxNotes, true, 0, "more notes are left out"},
    };
    for (const LimitCase& c : cases) {
        std::string bytes = "<MODELFILE>\n";
        for (int i = 0; i < 3 * c.limit; ++i)
            bytes += c.line;
        WalkCounts counts;
        const Recorder walked = Walk(bytes + "</MODELFILE>\n", &counts);
        EXPECT_EQ(counts.complete, c.complete) << c.line;
        EXPECT_EQ(walked.Errors(), c.errors) << c.line;
        ASSERT_EQ(walked.Problems().size(), static_cast<std::size_t>(c.limit) + 1) << c.line;
        EXPECT_EQ(walked.Problems().back().message, c.last);
        EXPECT_EQ(walked.topLevelEnds.size(), 1u) << "the visitor still sees a whole tree";
    }
}

TEST(ReaderTest, EveryPrefixOfTheSampleIsBadUnlessItEndsBetweenTopLevelSections) {
    for (const std::string& path : {kSampleText, kSampleBinary}) {
        const std::string bytes = ReadAll(path);
        const bool binary = bytes[0] == 'B';
        // A prefix is whole when it ends after a top-level section's end token, before the
        // next token.
        std::vector<std::pair<std::size_t, std::size_t>> ends;
        for (const auto& [end, word] : Walk(bytes).topLevelEnds) {
            const std::size_t after = end + (binary ? 4 : word + std::string("</>").size());
            std::size_t next = after;
            while (!binary && next < bytes.size() &&
                   std::isspace(static_cast<unsigned char>(bytes[next])))
                ++next;
            ends.emplace_back(after, next);
        }
        for (std::size_t length = 0; length <= bytes.size(); ++length) {
            const bool between = std::any_of(ends.begin(), ends.end(), [&](auto r) {
                return length >= r.first && length <= r.second;
            });
            EXPECT_EQ(Walk(bytes.substr(0, length)).Errors() == 0, between)
                << path << " cut to " << length << " bytes";
        }
    }
}

TEST(ReaderTest, DamagedCopiesOfTheSampleNeverCrashOrLoop) {
    std::mt19937 random(20240611);
    for (const std::string& path : {kSampleText, kSampleBinary}) {
        const std::string bytes = ReadAll(path);
        for (int round = 0; round < 500; ++round) {
            std::string damaged = bytes;
            const int changes = 1 + static_cast<int>(random() % 8);
            for (int i = 0; i < changes; ++i)
                damaged[random() % damaged.size()] = static_cast<char>(random() % 256);
            const Recorder walked = Walk(damaged);
            EXPECT_LE(walked.Errors(), kMaxErrors + 1);
            MemoryStream in;
            OpenProject(damaged.data(), damaged.size(), in);
            MemoryStream out;
            out.Open(FM_STORING);
            ProjectWriter writer(in, out);
            WalkProject(in, writer);
        }
    }
}

TEST(ReaderTest, HostileShapesAreBounded) {
    std::string deep;
    for (int i = 0; i < 20000; ++i)
        deep += "<MESH>\n";
    WalkCounts counts;
    EXPECT_EQ(Walk(deep, &counts).Errors(), kMaxErrors + 1);
    EXPECT_EQ(counts.sections, 20000u);

    const std::string longWord = "<" + std::string(1000, 'M') + ">\n</MODELFILE>\n";
    const std::string kept(79, 'M'); // as much of the word as a section's name holds
    EXPECT_EQ(Walk(longWord).ProblemLines(),
              (std::vector<std::string>{"0 " + kept + ": unknown section without an end",
                                        "1003 " + kept + ": </MODELFILE> closes no open section",
                                        "0 " + kept + ": not closed: the data end"}));

    const std::string noLineEnds = "<MODELFILE>Opacity=1</MODELFILE>";
    EXPECT_EQ(Walk(noLineEnds).ProblemLines(),
              (std::vector<std::string>{"11 MODELFILE/Opacity: '1</MODELFILE>' is not a number",
                                        "0 MODELFILE: not closed: the data end"}));

    std::string bigIds = "B";
    for (unsigned id : {0x9FFFFFFFu, 0xDFFFFFFFu, 0x5FFFFFFFu})
        bigIds.append(reinterpret_cast<const char*>(&id), sizeof id);
    EXPECT_GE(Walk(bigIds).Errors(), 1);
}

} // namespace
