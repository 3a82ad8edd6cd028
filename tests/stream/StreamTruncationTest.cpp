// The truncation sweep: every prefix of sample files in each form is read with the typed
// readers, skipped with SkipHeader and searched with SkipPast. Each read must end in the
// failed bit or a clean end: never a crash, an endless loop or a read outside the data (the
// sanitizer builds check the last).

#include "StreamTestSupport.h"
#include "support/FieldValues.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

using namespace streamtest;

namespace {

using fileio::test::ValueKind;

const int kModelFile = GetHeaderIDFromText("MODELFILE");
const int kMesh = GetHeaderIDFromText("MESH");

/// The labels of the sample files and the kind of value each carries.
const std::map<int, ValueKind>& Schema() {
    static const std::map<int, ValueKind> schema = [] {
        const std::pair<const char*, ValueKind> fields[] = {
            {"Name", ValueKind::Text},       {"Active", ValueKind::Bool},
            {"Position", ValueKind::Vector}, {"Time", ValueKind::Time},
            {"Matrix", ValueKind::Matrix},   {"Scale", ValueKind::Float},
            {"Value", ValueKind::Double},    {"Type", ValueKind::Int},
            {"Range", ValueKind::Range},     {"Color", ValueKind::ColorBytes},
            {"Notes", ValueKind::Date},
        };
        std::map<int, ValueKind> byId;
        for (const auto& [word, kind] : fields)
            byId[GetLabelIDFromText(word)] = kind;
        return byId;
    }();
    return schema;
}

void WriteFields(VarnStream& stream, int seed) {
    for (const auto& [id, kind] : Schema()) {
        stream << Label(id);
        fileio::test::WriteValue(stream, kind, seed++);
        stream << nl;
    }
}

/// A project: a model holding fields, a mesh holding fields and a nested mesh, then fields.
std::string SampleFile(bool binary) {
    MemoryStream stream;
    stream.Open(binary ? FM_VARN | FM_BINARY : FM_VARN);
    stream << Header(kModelFile) << nl;
    WriteFields(stream, 1);
    stream << Header(kMesh) << nl;
    WriteFields(stream, 20);
    stream << Header(kMesh) << nl;
    WriteFields(stream, 40);
    stream << EndHeader(kMesh) << nl << EndHeader(kMesh) << nl;
    WriteFields(stream, 60);
    stream << EndHeader(kModelFile) << nl;
    return Bytes(stream);
}

/// The same text file in the square-bracket generation.
std::string SquareFile() {
    std::string text = SampleFile(false);
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text.compare(i, 2, "</") == 0) {
            out += "[END";
            ++i;
        } else if (text[i] == '<') {
            out += '[';
        } else if (text[i] == '>') {
            out += ']';
        } else {
            out += text[i];
        }
    }
    return out;
}

struct Outcome {
    bool finished = false; // the loop ended within its step limit
    bool failed = false;
    bool atEnd = false;
    int labels = 0;
    unsigned long long position = 0;
    bool operator==(const Outcome&) const = default;
};

/// Reads a whole file of `length` bytes with the typed readers, driven by the schema.
Outcome ReadTyped(VarnStream& stream, std::size_t length, float version) {
    Outcome outcome;
    stream.SetVersion(version);
    // Every step consumes at least one byte, so the data's length bounds the steps.
    const unsigned long long limit = length + 2;
    for (unsigned long long step = 0; step <= limit; ++step) {
        if ((stream.GetMode() & FM_FAILED) != 0 || stream.VirtualEof()) {
            outcome.finished = true;
            break;
        }
        const bool header = stream.IsBinary() ? stream.IsHeader() : stream.IsHeaderFromAnyVersion();
        if (header) {
            Header token;
            stream >> token;
            continue;
        }
        Label label;
        stream >> label;
        const auto kind = Schema().find(label.id);
        if (kind != Schema().end()) {
            fileio::test::ReadValue(stream, kind->second);
            ++outcome.labels;
        }
    }
    outcome.failed = stream.IsFailed();
    outcome.atEnd = stream.VirtualEof();
    outcome.position = stream.GetPos();
    return outcome;
}

struct Sample {
    const char* name;
    std::string bytes;
    float version;
    /// The bytes that make the model's end header readable: an end header cut before its
    /// closing bracket still reads, since a header's text runs to the end of the data.
    std::string end;
};

std::vector<Sample> Samples() {
    return {{"angle text", SampleFile(false), 13.0f, "</MODELFILE"},
            {"square text", SquareFile(), 5.0f, "[ENDMODELFILE"},
            {"binary", SampleFile(true), 5.0f, Raw({0x50, 0x01, 0x00, 0xA0})}};
}

/// Runs `check` on every sample loaded with every prefix of it (the whole file last) at the
/// sample's version, on the memory stream and on the byte-wise transport. The two must
/// observe the same: `check` returns what it observed.
template <class Check> void ForEachPrefix(Check check) {
    for (const Sample& sample : Samples()) {
        SCOPED_TRACE(sample.name);
        for (std::size_t length = 0; length <= sample.bytes.size(); ++length) {
            SCOPED_TRACE("prefix of " + std::to_string(length) + " bytes");
            const std::string prefix = sample.bytes.substr(0, length);
            auto observe = [&](bool byteWise) {
                auto stream = Transport(byteWise);
                Load(*stream, prefix, FM_LOADING | FM_VARN);
                stream->SetVersion(sample.version);
                return check(sample, prefix, *stream);
            };
            EXPECT_EQ(observe(false), observe(true)) << "the transports differ";
        }
    }
}

} // namespace

TEST(StreamTruncation, WholeSamplesReadEveryField) {
    ForEachPrefix([](const Sample& sample, const std::string& prefix, VarnStream& stream) {
        const Outcome outcome = ReadTyped(stream, prefix.size(), sample.version);
        if (prefix.size() == sample.bytes.size()) {
            EXPECT_TRUE(outcome.finished);
            EXPECT_FALSE(outcome.failed);
            EXPECT_EQ(outcome.labels, 4 * static_cast<int>(Schema().size()));
        }
        // Every prefix ends in the failed bit or a clean end.
        EXPECT_TRUE(outcome.finished);
        EXPECT_TRUE(outcome.failed || outcome.atEnd);
        return outcome;
    });
}

TEST(StreamTruncation, SkipsOnEveryPrefixEndAndGoBackWhenNothingIsFound) {
    ForEachPrefix([](const Sample& sample, const std::string& prefix, VarnStream& stream) {
        // Stand after the first header, as a reader that decided to skip would.
        const unsigned long long start = stream.GetPos();
        if (stream.IsHeaderFromAnyVersion()) {
            Header header;
            stream >> header;
        }
        const unsigned long long after = stream.GetPos();
        const bool complete = prefix.find(sample.end) != std::string::npos;
        const bool skipped = stream.SkipHeader(Header(kModelFile));
        EXPECT_EQ(skipped, complete);
        if (skipped)
            EXPECT_TRUE(stream.VirtualEof()) << "the end header is the last token";
        else
            EXPECT_EQ(stream.GetPos(), after);
        const unsigned long long afterSkip = stream.GetPos();

        stream.Seek(static_cast<long long>(start), SM_BEGIN);
        const bool passed =
            stream.SkipPast(static_cast<unsigned>(kModelFile | fileio::kEndHeaderBit));
        EXPECT_EQ(passed, complete);
        return std::vector<unsigned long long>{skipped, afterSkip, passed, stream.GetPos()};
    });
}
