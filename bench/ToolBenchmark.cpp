// ToolBenchmark.cpp - the fileio tool's check and dump of the generated project
// (BenchProject.h), against reading the same bytes through MemoryStream with the stream
// benchmark's reader (ReadProject), in the same run and in both forms.
//
// check walks the project with the tool's own code (the same functions the program runs):
// every token, every value checked in its text and read with its typed reader. dump also
// writes the canonical text into a memory block (standard output is left out), so it is
// also compared with the library's own reading of the form plus writing of the text form
// (BM_StreamWrite/text writes the same project into a block it holds), for the text form
// whose project it writes. The goal: check
// within 1.3x of ReadProject's time, as the tool adds little on top of the library.
//
// --write_project=PATH writes the generated project to PATH in the text form and to
// PATH.bin in the binary form instead, for timing the program itself:
//     ToolBenchmark --size_mb=50 --write_project=build/large.prj
//     time fileio check build/large.prj build/large.prj.bin
//
// Counters: MB/s of the project's bytes. At the end each tool case's time is given as a
// ratio to ReadProject's time on the same form, and dump's also to reading plus writing (from
// the medians when the cases are repeated: --benchmark_repetitions=N).

#include "BenchProject.h"
#include "ProjectReader.h"
#include "ProjectWriter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <string_view>

namespace {

using namespace fileio::bench;
using fileio::tool::OpenProject;
using fileio::tool::ProjectVisitor;
using fileio::tool::ProjectWriter;
using fileio::tool::WalkProject;

/// The project as a file of the suite holds it: a binary one starts with its marker.
const std::string& ProjectFile(bool binary) {
    static std::string files[2];
    std::string& file = files[binary ? 1 : 0];
    if (file.empty())
        file = (binary ? "B" : "") + Project(binary);
    return file;
}

/// The project opened for the tool's walk, and where its data begin.
struct OpenedProject {
    MemoryStream stream;
    unsigned long long start = 0;

    explicit OpenedProject(bool binary) {
        const std::string& file = ProjectFile(binary);
        OpenProject(file.data(), file.size(), stream);
        start = stream.GetPos();
    }
    MemoryStream& Rewound() {
        stream.Seek(static_cast<long long>(start), SM_BEGIN);
        return stream;
    }
};

/// The baseline: the stream benchmark's reader over the same bytes.
void BM_StreamRead(benchmark::State& state, bool binary) {
    const std::string& project = Project(binary);
    MemoryStream stream;
    stream.Open(project.data(), project.size(), binary ? FM_LOADING | FM_BINARY : FM_LOADING);
    stream.SetVersion(13.0f);
    for (auto _ : state) {
        stream.Seek(0, SM_BEGIN);
        benchmark::DoNotOptimize(ReadProject(stream));
    }
    Report(state, project.size());
}

void BM_ToolCheck(benchmark::State& state, bool binary) {
    OpenedProject project(binary);
    {
        ProjectVisitor check;
        WalkProject(project.Rewound(), check);
        if (check.Errors() > 0) {
            state.SkipWithError("the generated project does not check OK");
            return;
        }
    }
    for (auto _ : state) {
        ProjectVisitor check;
        benchmark::DoNotOptimize(WalkProject(project.Rewound(), check));
    }
    Report(state, ProjectFile(binary).size());
}

void BM_ToolDump(benchmark::State& state, bool binary) {
    OpenedProject project(binary);
    MemoryStream text;
    text.Open(FM_STORING);
    for (auto _ : state) {
        text.Assign(nullptr, 0);
        ProjectWriter writer(project.stream, text);
        WalkProject(project.Rewound(), writer);
        benchmark::DoNotOptimize(text.GetData());
    }
    Report(state, ProjectFile(binary).size());
}

BENCHMARK_CAPTURE(BM_StreamRead, text, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StreamWrite, text, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ToolCheck, text, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ToolDump, text, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StreamRead, binary, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ToolCheck, binary, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ToolDump, binary, true)->Unit(benchmark::kMillisecond);

/// The console report, and at its end each tool case's time per byte as a ratio to the
/// stream's reading on the same form.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            // With repetitions, the median stands for the case.
            const bool counts = run.run_type == Run::RT_Iteration || run.aggregate_name == "median";
            const auto rate = run.counters.find("bytes_per_second");
            if (counts && !run.error_occurred && rate != run.counters.end())
                m_rates[run.run_name.str()] = rate->second.value;
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        const double write = Rate("BM_StreamWrite/text");
        for (const std::string form : {"text", "binary"}) {
            const double read = Rate("BM_StreamRead/" + form);
            const double check = Rate("BM_ToolCheck/" + form);
            const double dump = Rate("BM_ToolDump/" + form);
            if (read > 0 && check > 0)
                std::printf("check/%s: %.2fx the stream's reading time (%.0f vs %.0f MB/s)\n",
                            form.c_str(), read / check, check / 1e6, read / 1e6);
            if (read > 0 && dump > 0)
                std::printf("dump/%s: %.2fx the stream's reading time (%.0f vs %.0f MB/s)\n",
                            form.c_str(), read / dump, dump / 1e6, read / 1e6);
            // Reading the text and writing it again: the times per byte of the one project add
            // up (the binary project's text is another size, so it has no such baseline).
            if (form == "text" && read > 0 && write > 0 && dump > 0)
                std::printf("dump/%s: %.2fx the stream's reading plus text writing time\n",
                            form.c_str(), (1 / dump) / (1 / read + 1 / write));
        }
    }

private:
    /// Bytes per second of a case; 0 when it did not run.
    [[nodiscard]] double Rate(const std::string& name) const {
        const auto rate = m_rates.find(name);
        return rate == m_rates.end() ? 0 : rate->second;
    }

    std::map<std::string, double> m_rates;
};

/// The value of --write_project=PATH, taken out of the command line; empty when not given.
std::string TakeWriteOption(int& argc, char** argv) {
    constexpr std::string_view kOption = "--write_project=";
    std::string path;
    int kept = 0;
    for (int i = 0; i < argc; ++i) {
        const std::string_view arg(argv[i]);
        if (arg.substr(0, kOption.size()) == kOption)
            path = arg.substr(kOption.size());
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    return path;
}

/// Writes both forms of the generated project; false when a file cannot be written.
bool WriteProjectFiles(const std::string& path) {
    for (const bool binary : {false, true}) {
        const std::string& bytes = ProjectFile(binary);
        std::FILE* file = std::fopen((binary ? path + ".bin" : path).c_str(), "wb");
        const bool written =
            file != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
        if (file == nullptr || std::fclose(file) != 0 || !written)
            return false;
    }
    return true;
}

} // namespace

// --size_mb=N and --write_project=PATH are taken out of the command line before Google
// Benchmark reads it.
int main(int argc, char** argv) {
    // A host always has other strings alive (see StreamBenchmark.cpp).
    const String resident("resident");
    TakeSizeOption(argc, argv);
    if (const std::string path = TakeWriteOption(argc, argv); !path.empty())
        return WriteProjectFiles(path) ? 0 : 1;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
