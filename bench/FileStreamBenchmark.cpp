// FileStreamBenchmark.cpp - saving and loading the generated project (BenchProject.h)
// through FileStream, against the memory stream over the same bytes and plain stdio, in
// the same run and in both forms.
//
// Loading: FileStream parsing the file as it reads it, against reading the file into memory
// with fread and parsing it there with MemoryStream (goal: within 1.2x), and fread alone.
// Saving: FileStream's atomic save of the project's bytes (a temporary file beside the
// target, flushed to the disk and renamed over it), against fwrite of the same bytes
// followed by one flush to the disk (goal: no more than that), and fwrite alone; then the
// project written value by value through FileStream against the same into a MemoryStream
// written out with fwrite and one flush.
//
// Counters: MB/s of the project's bytes.

#include "BenchProject.h"
#include "platform/Platform.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <random>
#include <string>

namespace {

using namespace fileio::bench;
namespace platform = fileio::platform;

/// A folder of the run's own under the system's temporary folder, removed at the end.
class ScratchFolder {
public:
    ScratchFolder() {
        std::random_device random;
        for (int attempt = 0; attempt < 100 && m_path.empty(); ++attempt) {
            const std::filesystem::path candidate =
                std::filesystem::temp_directory_path() /
                ("fileio-bench-" + std::to_string(random()) + std::to_string(random()));
            std::error_code error;
            if (std::filesystem::create_directory(candidate, error))
                m_path = candidate;
        }
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    [[nodiscard]] std::string File(const char* name) const { return (m_path / name).string(); }

private:
    std::filesystem::path m_path;
};

const ScratchFolder& Scratch() {
    static const ScratchFolder folder;
    return folder;
}

/// The project's file in the given form, written once.
const std::string& ProjectFile(bool binary) {
    static std::string paths[2];
    std::string& path = paths[binary ? 1 : 0];
    if (path.empty()) {
        path = Scratch().File(binary ? "project.bin" : "project.txt");
        std::FILE* file = std::fopen(path.c_str(), "wb");
        const std::string& bytes = Project(binary);
        std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
    return path;
}

FileMode LoadingMode(bool binary) {
    return FM_LOADING | FM_DONTPROGRESS | (binary ? FM_BINARY : FM_STORING);
}

/// Reads the whole file with fread.
std::string ReadWhole(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    std::string bytes(std::filesystem::file_size(path), '\0');
    const std::size_t got = std::fread(bytes.data(), 1, bytes.size(), file);
    std::fclose(file);
    bytes.resize(got);
    return bytes;
}

/// Writes the bytes with fwrite; with `durable`, flushes them to the disk before closing.
void WriteWhole(const std::string& path, const void* data, std::size_t size, bool durable) {
    if (!durable) {
        std::FILE* file = std::fopen(path.c_str(), "wb");
        std::fwrite(data, 1, size, file);
        std::fclose(file);
        return;
    }
    // The same through the platform's file calls, which can flush to the disk.
    std::string temporary;
    const platform::FileHandle file = platform::Files().createBeside(path.c_str(), temporary);
    platform::Files().writeFile(file, data, size);
    platform::Files().flushFile(file);
    platform::Files().closeFile(file);
    platform::Files().removeFile(temporary.c_str());
}

void Report(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(bytes));
}

// ---- loading ------------------------------------------------------------------------------------

void BM_LoadFileStream(benchmark::State& state, bool binary) {
    const std::string& path = ProjectFile(binary);
    for (auto _ : state) {
        FileStream in;
        in.Open(String(path), LoadingMode(binary));
        in.SetVersion(13.0f);
        benchmark::DoNotOptimize(ReadProject(in));
    }
    Report(state, Project(binary).size());
}

void BM_LoadFreadThenParse(benchmark::State& state, bool binary) {
    const std::string& path = ProjectFile(binary);
    for (auto _ : state) {
        const std::string bytes = ReadWhole(path);
        MemoryStream in;
        in.Open(bytes.data(), bytes.size(), LoadingMode(binary));
        in.SetVersion(13.0f);
        benchmark::DoNotOptimize(ReadProject(in));
    }
    Report(state, Project(binary).size());
}

void BM_Fread(benchmark::State& state, bool binary) {
    const std::string& path = ProjectFile(binary);
    for (auto _ : state)
        benchmark::DoNotOptimize(ReadWhole(path));
    Report(state, Project(binary).size());
}

// ---- saving -------------------------------------------------------------------------------------

void BM_SaveBytesFileStream(benchmark::State& state, bool binary) {
    const std::string& bytes = Project(binary);
    const String path(Scratch().File("saved"));
    for (auto _ : state) {
        FileStream out;
        out.Open(path, binary ? FM_BINARY : FM_STORING);
        out.Write(bytes.data(), bytes.size());
        out.Close();
    }
    Report(state, bytes.size());
}

void BM_SaveBytesFwriteFlushed(benchmark::State& state, bool binary) {
    const std::string& bytes = Project(binary);
    const std::string path = Scratch().File("written");
    for (auto _ : state)
        WriteWhole(path, bytes.data(), bytes.size(), true);
    Report(state, bytes.size());
}

void BM_SaveBytesFwrite(benchmark::State& state, bool binary) {
    const std::string& bytes = Project(binary);
    const std::string path = Scratch().File("written");
    for (auto _ : state)
        WriteWhole(path, bytes.data(), bytes.size(), false);
    Report(state, bytes.size());
}

void BM_SaveProjectFileStream(benchmark::State& state, bool binary) {
    const String path(Scratch().File("saved"));
    for (auto _ : state) {
        FileStream out;
        out.Open(path, binary ? FM_BINARY : FM_STORING);
        out.SetVersion(13.0f);
        WriteProject(out, ProjectBytes());
        out.Close();
    }
    Report(state, Project(binary).size());
}

void BM_SaveProjectMemoryThenFwrite(benchmark::State& state, bool binary) {
    const std::string path = Scratch().File("written");
    for (auto _ : state) {
        MemoryStream out;
        out.Open(binary ? FM_BINARY : FM_STORING);
        out.SetVersion(13.0f);
        WriteProject(out, ProjectBytes());
        WriteWhole(path, out.GetData(), out.GetLength(), true);
    }
    Report(state, Project(binary).size());
}

BENCHMARK_CAPTURE(BM_LoadFileStream, text, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_LoadFileStream, binary, true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_LoadFreadThenParse, text, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_LoadFreadThenParse, binary, true)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_Fread, text, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_Fread, binary, true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_SaveBytesFileStream, text, false)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_SaveBytesFileStream, binary, true)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_SaveBytesFwriteFlushed, text, false)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_SaveBytesFwriteFlushed, binary, true)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_SaveBytesFwrite, text, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_SaveBytesFwrite, binary, true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_SaveProjectFileStream, text, false)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_SaveProjectFileStream, binary, true)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_SaveProjectMemoryThenFwrite, text, false)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(BM_SaveProjectMemoryThenFwrite, binary, true)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace

int main(int argc, char** argv) {
    return fileio::bench::RunProjectBenchmarks(argc, argv);
}
