// The truncation sweep: every prefix of sample files in each form is read with the typed
// readers, skipped with SkipHeader and searched with SkipPast, on the memory stream and on the
// byte-wise transport, which must observe the same. Each read must end in the failed bit or a
// clean end: never a crash, an endless loop or a read outside the data (the sanitizer builds
// check the last).

#include "StreamProject.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace streamtest;

namespace {

const int kModelFile = GetHeaderIDFromText("MODELFILE");

std::string SquareFile() {
    std::string out = ProjectBytes(false, 1);
    for (std::size_t at = out.find("</"); at != std::string::npos; at = out.find("</", at))
        out.replace(at, 2, "<END");
    std::replace(out.begin(), out.end(), '<', '[');
    std::replace(out.begin(), out.end(), '>', ']');
    return out;
}

struct Sample {
    const char* name;
    std::string bytes;
    float version;
    /// The bytes that make the model's end header readable: an end header cut before its
    /// closing bracket still reads, since a header's text runs to the end of the data.
    std::string end;
};

/// Runs `check` on every sample loaded with every prefix of it (the whole file last) at the
/// sample's version, on both transports, which must observe the same: `check` returns what
/// it observed.
template <class Check> void ForEachPrefix(Check check) {
    const Sample samples[] = {
        {"angle text", ProjectBytes(false, 1), 13.0f, "</MODELFILE"},
        {"square text", SquareFile(), 5.0f, "[ENDMODELFILE"},
        {"binary", ProjectBytes(true, 1), 5.0f, Raw({0x50, 0x01, 0x00, 0xA0})},
    };
    for (const Sample& sample : samples) {
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
        const Outcome outcome = ReadProject(stream, prefix.size());
        if (prefix.size() == sample.bytes.size()) {
            EXPECT_FALSE(outcome.failed);
            EXPECT_EQ(outcome.labels, 4 * static_cast<int>(ProjectFields().size()));
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
