// fileio-convert - converts a suite file between its text and binary forms.
//
//     fileio-convert INPUT OUTPUT        convert to the other form and print a summary
//     fileio-convert INPUT               print the summary only
//     fileio-convert --sample OUTPUT     write the bundled sample project (text form)
//
// The form of INPUT is told by its first byte, as the suite's files mark it ("B" binary,
// anything else text). The binary form stores no value types, so the converter knows the
// kind of value each label word carries (the table below); a file with a field it does not
// know, or with a section word outside the vocabulary, is refused with a message. Exit
// status: 0 on success, 1 on a bad file or command line, 2 when a file cannot be read or
// written.

#include "fileio/FileIO.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <string>
#include <string_view>

namespace {

enum class Kind { Bool, Int, Float, Double, Text, Vector, Quaternion, Color, Matrix, Time, Range };

/// The fields the converter knows, by label word, and the kind of each one's value.
const std::map<std::string_view, Kind>& Fields() {
    static const std::map<std::string_view, Kind> fields = {
        {"Active", Kind::Bool},       {"Selected", Kind::Bool},     {"Visible", Kind::Bool},
        {"Locked", Kind::Bool},       {"Type", Kind::Int},          {"Mode", Kind::Int},
        {"PatchesHit", Kind::Int},    {"Version", Kind::Float},     {"Angle", Kind::Float},
        {"Alpha", Kind::Float},       {"Opacity", Kind::Float},     {"Value", Kind::Double},
        {"Name", Kind::Text},         {"Notes", Kind::Text},        {"Url", Kind::Text},
        {"Organization", Kind::Text}, {"Position", Kind::Vector},   {"Scale", Kind::Vector},
        {"Translate", Kind::Vector},  {"Rotate", Kind::Quaternion}, {"Color", Kind::Color},
        {"Matrix", Kind::Matrix},     {"Time", Kind::Time},         {"Range", Kind::Range},
        {"PlayRange", Kind::Range},
    };
    return fields;
}

/// The bytes a value of `kind` takes in the binary form (a string: at least its count).
unsigned long long BinarySize(Kind kind) {
    switch (kind) {
    case Kind::Bool:
        return 1;
    case Kind::Text:
        return 2;
    case Kind::Int:
    case Kind::Float:
        return 4;
    case Kind::Double:
    case Kind::Time:
        return 8;
    case Kind::Vector:
    case Kind::Color:
        return 12;
    case Kind::Quaternion:
    case Kind::Range:
        return 16;
    case Kind::Matrix:
        return 64;
    }
    return 0;
}

/// Copies one value of `kind` from `in` to `out`.
void CopyValue(VarnStream& in, VarnStream& out, Kind kind) {
    switch (kind) {
    case Kind::Bool: {
        bool v = false;
        in >> v;
        out << v;
        break;
    }
    case Kind::Int: {
        int v = 0;
        in >> v;
        out << v;
        break;
    }
    case Kind::Float: {
        float v = 0;
        in >> v;
        out << v;
        break;
    }
    case Kind::Double: {
        double v = 0;
        in >> v;
        out << v;
        break;
    }
    case Kind::Text: {
        String v;
        in >> v;
        out << v;
        break;
    }
    case Kind::Vector: {
        Vector v;
        in >> v;
        out << v;
        break;
    }
    case Kind::Quaternion: {
        Quaternion v;
        in >> v;
        out << v;
        break;
    }
    case Kind::Color: {
        RGBFloat v;
        in >> v;
        out << v;
        break;
    }
    case Kind::Matrix: {
        Matrix44 v;
        in >> v;
        out << v;
        break;
    }
    case Kind::Time: {
        Time v;
        in >> v;
        out << v;
        break;
    }
    case Kind::Range: {
        TimeRange v;
        in >> v;
        out << v;
        break;
    }
    }
}

struct Summary {
    int sections = 0;
    int labels = 0;
    std::map<std::string, int> sectionWords;
};

/// The plain word of a header as read: an end header's text keeps its "/" or "END".
std::string PlainWord(const Header& header) {
    std::string_view text(header.text);
    if ((header.id & fileio::kEndHeaderBit) != 0 && header.id != -1) {
        if (text.substr(0, 1) == "/")
            text.remove_prefix(1);
        else if (text.substr(0, 3) == "END")
            text.remove_prefix(3);
    }
    return std::string(text);
}

/// Copies every token of `in` to `out`; false, with a message, on a token it cannot carry.
bool Convert(MemoryStream& in, VarnStream& out, Summary& summary) {
    for (;;) {
        if (in.IsFailed()) {
            std::fprintf(stderr, "the data end inside a value\n");
            return false;
        }
        if (in.IsAscii())
            in.SkipWhite();
        if (in.VirtualEof())
            return true;
        const bool header = in.IsBinary() ? in.IsHeader() : in.IsHeaderFromAnyVersion();
        if (header) {
            Header token;
            in >> token;
            const std::string word = PlainWord(token);
            if (token.id == -1) {
                std::fprintf(stderr, "unknown section word \"%s\"\n", token.text);
                return false;
            }
            if ((token.id & fileio::kEndHeaderBit) != 0) {
                out << EndHeader(token.id & ~fileio::kEndHeaderBit, word.c_str()) << nl;
            } else {
                out << Header(token.id, word.c_str()) << nl;
                ++summary.sections;
                ++summary.sectionWords[word];
            }
            continue;
        }
        Label label;
        in >> label;
        const auto field = Fields().find(label.text);
        if (label.id == -1 || field == Fields().end()) {
            std::fprintf(stderr, "unknown field \"%s\"\n", label.text);
            return false;
        }
        if (in.IsBinary() && in.GetLength() - in.GetPos() < BinarySize(field->second)) {
            std::fprintf(stderr, "the data end inside the value of \"%s\"\n", label.text);
            return false;
        }
        out << label;
        CopyValue(in, out, field->second);
        out << nl;
        ++summary.labels;
    }
}

void PrintSummary(const char* name, bool binary, const Summary& summary) {
    std::printf("%s: %s form, %d sections, %d labels\n", name, binary ? "binary" : "text",
                summary.sections, summary.labels);
    for (const auto& [word, count] : summary.sectionWords)
        std::printf("  %-12s %d\n", word.c_str(), count);
}

bool WriteFile(const char* path, const MemoryStream& stream) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(stream.GetData()),
               static_cast<std::streamsize>(stream.GetLength()));
    return static_cast<bool>(file.flush());
}

// ---- the bundled sample ---------------------------------------------------------------------

void WriteMesh(VarnStream& out, const char* name, float x, int patches) {
    out << Header(GetHeaderIDFromText("MESH")) << nl;
    out << Label("Name") << String(name) << nl;
    out << Label("Active") << true << nl;
    out << Label("Position") << Vector{x, 1.5f, -0.25f} << nl;
    out << Label("Rotate") << Quaternion{0, 0.707106769f, 0, 0.707106769f} << nl;
    out << Label("Scale") << Vector{1, 1, 1} << nl;
    out << Label("Color") << RGBFloat{0.8f, 0.2f, 0.1f} << nl;
    out << Header(GetHeaderIDFromText("PATCHES")) << nl;
    out << Label("PatchesHit") << patches << nl;
    out << Label("Opacity") << 0.75f << nl;
    out << EndHeader(GetHeaderIDFromText("PATCHES")) << nl;
    out << EndHeader(GetHeaderIDFromText("MESH")) << nl;
}

void WriteSample(VarnStream& out) {
    out << Header(GetHeaderIDFromText("MODELFILE")) << nl;
    out << Header(GetHeaderIDFromText("FILEINFO")) << nl;
    out << Label("Version") << 13.0f << nl;
    out << Label("Organization") << String("Varn&Co") << nl;
    out << Label("Url") << String("http://example.com/robot") << nl;
    out << EndHeader(GetHeaderIDFromText("FILEINFO")) << nl;
    out << Label("Notes") << String("A&B") << nl;
    WriteMesh(out, "Body", 0.0f, 128);
    WriteMesh(out, "LeftArm", -1.25f, 48);
    WriteMesh(out, "RightArm", 1.25f, 48);
    out << Header(GetHeaderIDFromText("ATTRS")) << nl;
    out << Label("Type") << 3 << nl;
    out << Label("Mode") << -1 << nl;
    out << Label("Value") << 0.1 << nl;
    out << Label("Angle") << 45.0f << nl;
    Matrix44 matrix;
    matrix.row[0].x = matrix.row[1].y = matrix.row[2].z = matrix.row[3].w = 1;
    matrix.row[3].x = 2.5f;
    out << Label("Matrix") << matrix << nl;
    out << Label("Time") << Time(139501LL) << nl;
    out << Label("PlayRange") << TimeRange{Time(0LL), Time(8104500LL)} << nl;
    out << Label("Selected") << false << nl;
    out << EndHeader(GetHeaderIDFromText("ATTRS")) << nl;
    out << EndHeader(GetHeaderIDFromText("MODELFILE")) << nl;
}

int Usage() {
    std::fprintf(stderr, "usage: fileio-convert INPUT [OUTPUT]\n"
                         "       fileio-convert --sample OUTPUT\n");
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 3)
        return Usage();
    if (std::strcmp(argv[1], "--sample") == 0) {
        if (argc != 3)
            return Usage();
        MemoryStream sample;
        sample.Open(FM_VARN);
        WriteSample(sample);
        if (!WriteFile(argv[2], sample)) {
            std::fprintf(stderr, "%s: cannot write the file\n", argv[2]);
            return 2;
        }
        return 0;
    }

    MemoryStream in;
    if (!in.Open(String(argv[1]), FM_LOADING | FM_VARN | FM_DONTASK | FM_DONTPROGRESS)) {
        std::fprintf(stderr, "%s: cannot read the file\n", argv[1]);
        return 2;
    }
    const bool toBinary = in.IsAscii();
    MemoryStream out;
    out.Open(toBinary ? FM_VARN | FM_BINARY : FM_VARN);
    Summary summary;
    if (!Convert(in, out, summary)) {
        std::fprintf(stderr, "%s: not converted\n", argv[1]);
        return 1;
    }
    PrintSummary(argv[1], in.IsBinary(), summary);
    if (argc == 3) {
        if (!WriteFile(argv[2], out)) {
            std::fprintf(stderr, "%s: cannot write the file\n", argv[2]);
            return 2;
        }
        std::printf("%s: %s form, %s bytes\n", argv[2], toBinary ? "binary" : "text",
                    std::to_string(out.GetLength()).c_str());
    }
    return 0;
}
