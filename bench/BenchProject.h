// BenchProject.h - the generated project the stream benchmarks write and read: nested
// sections (a model holding meshes, each holding patch sections) and a realistic mix of
// fields: names, flags, vectors, quaternions, colours, integers, floats, doubles, times
// and now and then a matrix. Its size is 100 MB, 1 MB in the smoke run under CTest
// (BenchScale.h); the option --size_mb=N sets another.
#pragma once

#include "BenchScale.h"
#include "fileio/FileIO.h"
#include "support/FieldValues.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace fileio::bench {

using fileio::test::ValueKind;
/// The kind of a label's value; none for a label without one.
using Kind = std::optional<ValueKind>;

inline const int kModelFile = GetHeaderIDFromText("MODELFILE");
inline const int kMesh = GetHeaderIDFromText("MESH");
inline const int kPatches = GetHeaderIDFromText("PATCHES");
inline const int kName = GetLabelIDFromText("Name"), kActive = GetLabelIDFromText("Active"),
                 kPosition = GetLabelIDFromText("Position"), kRotate = GetLabelIDFromText("Rotate"),
                 kScale = GetLabelIDFromText("Scale"), kColor = GetLabelIDFromText("Color"),
                 kPatchesHit = GetLabelIDFromText("PatchesHit"),
                 kOpacity = GetLabelIDFromText("Opacity"), kValue = GetLabelIDFromText("Value"),
                 kTime = GetLabelIDFromText("Time"), kMatrix = GetLabelIDFromText("Matrix"),
                 kSelected = GetLabelIDFromText("Selected");

/// The kind of each label's value, by label id.
inline const std::vector<Kind> g_kinds = [] {
    std::vector<Kind> kinds(6000);
    kinds[kName] = ValueKind::Text;
    kinds[kActive] = kinds[kSelected] = ValueKind::Bool;
    kinds[kPosition] = kinds[kScale] = ValueKind::Vector;
    kinds[kRotate] = ValueKind::Quaternion;
    kinds[kColor] = ValueKind::Color;
    kinds[kPatchesHit] = ValueKind::Int;
    kinds[kOpacity] = ValueKind::Float;
    kinds[kValue] = ValueKind::Double;
    kinds[kTime] = ValueKind::Time;
    kinds[kMatrix] = ValueKind::Matrix;
    return kinds;
}();

inline Kind KindOf(int id) {
    return id >= 0 && id < static_cast<int>(g_kinds.size()) ? g_kinds[id] : Kind();
}

/// A small deterministic generator of "scene" numbers.
class Numbers {
public:
    float Next() {
        m_state = m_state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<float>(static_cast<int>(m_state >> 40) % 200000) / 64.0f;
    }

private:
    std::uint64_t m_state = 42;
};

inline void WriteMesh(VarnStream& s, int index, Numbers& n) {
    // The tokens are made once, as a writer of many sections would keep them.
    static const Label name(kName), active(kActive), position(kPosition), rotate(kRotate),
        scale(kScale), color(kColor), hit(kPatchesHit), opacity(kOpacity), value(kValue),
        time(kTime), matrix(kMatrix), selected(kSelected);
    static const Header mesh(kMesh), patches(kPatches);
    static const String meshName("Mesh");
    static const EndHeader meshEnd(kMesh), patchesEnd(kPatches);
    s << mesh << nl;
    s << name << meshName << nl;
    s << active << (index % 3 != 0) << nl;
    s << position << Vector{n.Next(), n.Next(), n.Next()} << nl;
    s << rotate << Quaternion{0, 0.707106769f, 0, 0.707106769f} << nl;
    s << scale << Vector{1, 1, n.Next()} << nl;
    s << color << RGBFloat{0.8f, n.Next() / 4096.0f, 0.1f} << nl;
    if (index % 8 == 0) {
        Matrix44 m;
        m.row[0].x = m.row[1].y = m.row[2].z = m.row[3].w = 1;
        m.row[3].x = n.Next();
        s << matrix << m << nl;
    }
    for (int patch = 0; patch < 4; ++patch) {
        s << patches << nl;
        s << hit << index * 4 + patch << nl;
        s << opacity << n.Next() / 3000.0f << nl;
        s << value << static_cast<double>(n.Next()) / 7.0 << nl;
        s << time << Time(static_cast<long long>(index) * 4501 + patch) << nl;
        s << selected << (patch == 0) << nl;
        s << patchesEnd << nl;
    }
    s << meshEnd << nl;
}

/// Writes a project of at least `bytes` bytes.
inline void WriteProject(VarnStream& s, unsigned long long bytes) {
    Numbers numbers;
    s << Header(kModelFile) << nl;
    for (int index = 0; s.GetPos() < bytes; ++index)
        WriteMesh(s, index, numbers);
    s << EndHeader(kModelFile) << nl;
}

/// The size chosen with --size_mb=N (0: none chosen), which TakeSizeOption reads.
inline unsigned long long& SizeOption() {
    static unsigned long long megabytes = 0;
    return megabytes;
}

/// Takes --size_mb=N out of the command line before Google Benchmark reads it.
inline void TakeSizeOption(int& argc, char** argv) {
    int kept = 0;
    for (int i = 0; i < argc; ++i) {
        const std::string_view arg(argv[i]);
        if (arg.substr(0, 10) == "--size_mb=") {
            SizeOption() = std::strtoull(argv[i] + 10, nullptr, 10);
            continue;
        }
        argv[kept++] = argv[i];
    }
    argc = kept;
}

/// The project's size: 100 MB (1 MB in a smoke run), or the size chosen.
inline unsigned long long ProjectBytes() {
    const unsigned long long megabytes =
        SizeOption() != 0 ? SizeOption() : static_cast<unsigned long long>(Scaled(100));
    return megabytes << 20;
}

inline const std::string& Project(bool binary) {
    static std::string forms[2];
    std::string& form = forms[binary ? 1 : 0];
    if (form.empty()) {
        MemoryStream stream;
        stream.Open(binary ? FM_BINARY : FM_STORING);
        stream.SetVersion(13.0f);
        WriteProject(stream, ProjectBytes());
        form.assign(reinterpret_cast<const char*>(stream.GetData()), stream.GetLength());
    }
    return form;
}

// ---- reading through the stream ---------------------------------------------------------------

/// What a reader found: a sum over every value, so that the two readers can be compared and
/// no work is optimised away.
struct Checksum {
    double sum = 0;
    std::uint64_t tokens = 0;
    bool operator==(const Checksum&) const = default;
};

/// Reads the project from the stream's position to its end. The token objects are reused
/// from field to field, as a loading loop keeps them.
inline Checksum ReadProject(VarnStream& s) {
    Checksum c;
    Header header;
    Label label;
    while (!s.VirtualEof()) {
        ++c.tokens;
        if (s.IsHeader()) {
            s >> header;
            c.sum += header.id & 0xFFFF;
            continue;
        }
        s >> label;
        if (const Kind kind = KindOf(label.id))
            c.sum += fileio::test::ReadValue(s, *kind);
    }
    return c;
}

/// Reports a case's rate over `bytes` of the project per iteration.
inline void Report(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(bytes));
    state.counters["MB"] = static_cast<double>(bytes) / (1 << 20);
}

/// Writing the project: each iteration writes it again into the block the stream already
/// holds, as the readers read a block already in memory.
inline void BM_StreamWrite(benchmark::State& state, bool binary) {
    const std::size_t bytes = Project(binary).size();
    MemoryStream stream;
    stream.Open(binary ? FM_BINARY : FM_STORING);
    stream.SetVersion(13.0f);
    for (auto _ : state) {
        stream.Assign(nullptr, 0);
        WriteProject(stream, ProjectBytes());
        benchmark::DoNotOptimize(stream.GetData());
    }
    Report(state, bytes);
}

/// The benchmark program's main: --size_mb=N taken out, then Google Benchmark's run. A host
/// always has other strings alive, so one is kept here: without it every string value read
/// would empty the string pool's only block and take it back again, and the cases would
/// time that rather than the reading.
inline int RunProjectBenchmarks(int argc, char** argv) {
    const String resident("resident");
    TakeSizeOption(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace fileio::bench
