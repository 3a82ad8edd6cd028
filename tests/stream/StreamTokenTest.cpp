// Headers, end headers and labels: reading, peeking and skipping sections.

#include "StreamTestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

using namespace streamtest;

namespace {

constexpr int kModelFile = 336; // "MODELFILE"
constexpr int kMesh = 335;      // "MESH"
constexpr int kActive = 4046;   // "Active"
constexpr int kName = 4007;     // "Name"
constexpr int kPluginProperties = 2693;
constexpr int kEnd = 0x20000000;

} // namespace

TEST(StreamTokens, TextHeadersOfBothGenerations) {
    struct Row {
        float version;
        std::string data, text;
        int id;
        unsigned long long position;
    };
    const std::string a79(79, 'A');
    const Row rows[] = {
        {13.0f, "<MODELFILE>\n  X", "MODELFILE", kModelFile, 14},
        {13.0f, "</MODELFILE>", "/MODELFILE", kModelFile | kEnd, 12},
        {13.0f, "</Active>", "/Active", kActive | kEnd, 9}, // a label word opens a section
        // The square form ends just after its bracket; the angle form skips white space.
        {5.0f, "[MODELFILE]\r\nX", "MODELFILE", kModelFile, 11},
        {5.0f, "[ENDMODELFILE]", "ENDMODELFILE", kModelFile | kEnd, 14},
        {5.0f, "[END]", "END", -1, 5},
        {5.0f, "[EndMODELFILE]", "EndMODELFILE", -1, 14},
        // A header text keeps 79 characters. The angle form reads at most 255 bytes, the
        // square form reads to its bracket.
        {13.0f, "<" + std::string(300, 'A') + ">X", a79, -1, 256},
        {5.0f, "[" + std::string(300, 'A') + "]X", a79, -1, 302},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.data.substr(0, 20));
        OnBothTransports(row.data, FM_LOADING, row.version, [&](VarnStream& stream) {
            Header header(kMesh);
            stream >> header;
            EXPECT_EQ(std::string(header.text), row.text);
            EXPECT_EQ(header.id, row.id);
            EXPECT_EQ(stream.GetPos(), row.position);
        });
    }
}

TEST(StreamTokens, BinaryHeaderWords) {
    const std::tuple<unsigned int, const char*, int, bool> rows[] = {
        {0x80000150, "MODELFILE", kModelFile, false},
        {0xA0000150, "MODELFILE", kModelFile | kEnd, false},
        // A label word in header position: its text, and no id.
        {0xC0000FCE, "Active", -1, true},
        {0xFFFFFFFF, "HeaderNotFound: -1", -1, false},
        // A label id with only bit 31: the header table misses, the label table names it.
        {0x80000A85, "Plugin Properties", kPluginProperties, false},
        {0x80000200, "LabelNotFound: 512", 512, false},
    };
    for (const auto& [word, text, id, label] : rows) {
        SCOPED_TRACE(text);
        MemoryStream stream;
        const std::string data = "xx" + std::string(reinterpret_cast<const char*>(&word), 4);
        Load(stream, data, FM_BINARY);
        stream.Seek(2, SM_BEGIN);
        Header header;
        stream >> header;
        EXPECT_STREQ(header.text, text);
        EXPECT_EQ(header.id, id);
        EXPECT_TRUE(stream.WasLastTokenHeader());
        EXPECT_EQ(stream.WasLastTokenLabel(), label);
        EXPECT_EQ(stream.GetHeaderPosition(), 2u);
        EXPECT_EQ(stream.GetPos(), 6u);
    }
    // The word of no id leaves the last-token-was-label flag a label before it set.
    MemoryStream stream;
    Load(stream, Raw({0xCE, 0x0F, 0x00, 0x40, 0xFF, 0xFF, 0xFF, 0xFF}), FM_BINARY);
    Label label;
    Header header;
    stream >> label >> header;
    EXPECT_TRUE(stream.WasLastTokenLabel());
}

TEST(StreamTokens, HeaderPeeksByVersion) {
    struct Row {
        float version;
        const char* data;
        bool isHeader, anyVersion;
    };
    const Row rows[] = {
        {5.0f, "<MESH>", false, true},  {5.0f, "[MESH]", true, true},
        {13.0f, "<MESH>", true, true},  {13.0f, "[MESH]", false, false},
        {7.0f, "<MESH>", false, false}, {13.0f, "", false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.data + (" at " + std::to_string(row.version)));
        OnBothTransports(row.data, FM_LOADING, row.version, [&](VarnStream& stream) {
            EXPECT_EQ(stream.IsHeader(), row.isHeader);
            EXPECT_EQ(stream.IsHeaderFromAnyVersion(), row.anyVersion);
            EXPECT_EQ(stream.GetPos(), 0u);
        });
    }
    // The base peeks skip white space first; the memory stream's IsHeader looks at the byte
    // at the position as it is.
    ByteWiseStream byteWise;
    MemoryStream memory;
    Load(byteWise, "  \n<MESH>");
    Load(memory, "  \n<MESH>");
    EXPECT_TRUE(byteWise.IsHeader());
    EXPECT_EQ(byteWise.GetPos(), 3u);
    EXPECT_FALSE(memory.IsHeader());
    EXPECT_TRUE(memory.IsHeaderFromAnyVersion());
    EXPECT_EQ(memory.GetPos(), 3u);
}

TEST(StreamTokens, LabelPeeks) {
    struct Row {
        std::string data;
        FileMode mode;
        bool expected;
        unsigned long long position;
    };
    const Row rows[] = {
        {"  \r\n Active=TRUE", FM_LOADING, true, 5},
        {"Active\n=TRUE", FM_LOADING, false, 0},
        {"", FM_LOADING, false, 0},
        {std::string(1000, 'x') + "=", FM_LOADING, true, 0},
        {Raw({0xCE, 0x0F, 0x00, 0x40}), FM_BINARY, true, 0},
        {Raw({0xCE, 0x0F, 0x00}), FM_BINARY, false, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Hex(row.data.substr(0, 12)));
        OnBothTransports(row.data, row.mode, 13.0f, [&](VarnStream& stream) {
            EXPECT_EQ(stream.IsLabel(), row.expected);
            EXPECT_EQ(stream.GetPos(), row.position);
        });
    }
}

TEST(StreamTokens, SkipHeaderInTextCountsNestedSectionsOfTheSameName) {
    // A model section (whose header the caller has read) with a nested model section inside
    // a mesh, then one more label after the section's end.
    const char* const nested = "<MESH>\n"
                               "<MODELFILE>\n"
                               "Active=TRUE\n"
                               "</MODELFILE>\n"
                               "  </MODELFILE>\n" // indented: not a header line
                               "</MESH>\n"
                               "</modelfile>\n" // the end word matches ignoring case
                               "Name=after\n";
    OnBothTransports(nested, [](VarnStream& stream) {
        EXPECT_TRUE(stream.SkipHeader(Header(kModelFile)));
        Label label;
        String value;
        stream >> label >> value;
        EXPECT_STREQ(label.text, "Name");
        EXPECT_EQ(value.View(), "after");
    });
}

TEST(StreamTokens, SkipPastFindsLabelsAndHeadersById) {
    const std::tuple<unsigned int, bool, const char*, unsigned long long> rows[] = {
        {kActive, true, "</MESH>\n", 23},
        {kMesh | kEnd, true, "Name=last\n", 28},
        {kMesh, true, "Active=TRUE\n", 19},
        {kModelFile, true, "Name=model\n", 4},
        {1207, false, "", 28},
    };
    BothForms written;
    written << Header(kModelFile) << nl << Label(kName) << String("model") << nl << Header(kMesh)
            << nl << Label(kActive) << true << nl << EndHeader(kMesh) << nl;
    written.text << "Name=last\n";
    for (const auto& [id, found, nextLine, binaryPosition] : rows) {
        SCOPED_TRACE(id);
        // Text: line by line, to the start of the following line.
        MemoryStream stream;
        LoadBack(stream, written.text);
        EXPECT_EQ(stream.SkipPast(id), found);
        String line;
        stream.ReadLine(line);
        EXPECT_EQ(line.View(), nextLine);
        // Binary: byte by byte, past the token word.
        LoadBack(stream, written.binary);
        EXPECT_EQ(stream.SkipPast(id), found);
        EXPECT_EQ(stream.GetPos(), binaryPosition);
    }
}
