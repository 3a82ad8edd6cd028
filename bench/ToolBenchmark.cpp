// ToolBenchmark.cpp - the fileio tool's check and dump of the generated project
// (BenchProject.h), against reading the same bytes through MemoryStream with the stream
// benchmark's reader (ReadProject), in the same run and in both forms.
//
// check walks the project with the tool's own code (the same functions the program runs):
// every token, every value checked in its text and read with its typed reader. dump also
// writes the canonical text into a memory block (standard output is left out). The goal:
// check within 1.3x of ReadProject's time, as the tool adds little on top of the library.
//
// Counters: MB/s of the project's bytes. At the end each tool case's time is given as a
// ratio to ReadProject's time on the same form (from the medians when the cases are
// repeated: --benchmark_repetitions=N).

#include "BenchProject.h"
#include "ProjectReader.h"
#include "ProjectWriter.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

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

void Report(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(bytes));
}

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
        for (const char* form : {"text", "binary"}) {
            const auto base = m_rates.find(std::string("BM_StreamRead/") + form);
            if (base == m_rates.end())
                continue;
            for (const char* tool : {"BM_ToolCheck/", "BM_ToolDump/"}) {
                const auto rate = m_rates.find(tool + std::string(form));
                if (rate != m_rates.end() && rate->second > 0)
                    std::printf("%s%s: %.2fx the stream's reading time (%.0f vs %.0f MB/s)\n", tool,
                                form, base->second / rate->second, rate->second / 1e6,
                                base->second / 1e6);
            }
        }
    }

private:
    std::map<std::string, double> m_rates;
};

} // namespace

// --size_mb=N is taken out of the command line before Google Benchmark reads it.
int main(int argc, char** argv) {
    // A host always has other strings alive (see StreamBenchmark.cpp).
    const String resident("resident");
    TakeSizeOption(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
