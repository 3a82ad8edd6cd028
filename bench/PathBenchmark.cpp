// PathBenchmark.cpp - relative conversion and lexical full paths against std::filesystem's
// lexical operations over the same paths, in the same run.
//
// The relative case runs the whole public conversion (String in, String out: universal
// form, shared depth, "../" steps) against path::lexically_relative with its
// generic_string(); the full-path case runs the POSIX full-path rule against operator/ and
// lexically_normal(). Before timing, every path's result is checked to be identical in
// both; a mismatch stops the case. Paths are POSIX paths below and beside a base folder.

#include "fileio/path/BasePath.h"
#include "platform/Platform.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr const char* kBase = "/home/ann/Projects/Robot/";

std::vector<std::string> SamplePaths() {
    const char* folders[] = {"/home/ann/Projects/Robot/", "/home/ann/Projects/Robot/Parts/",
                             "/home/ann/Projects/Shared/", "/home/ann/Textures/Sky/",
                             "/home/ann/Projects/Robot/Parts/Arms/Left/"};
    std::mt19937 random(2024);
    std::vector<std::string> paths;
    for (int i = 0; i < 1024; ++i)
        paths.push_back(std::string(folders[random() % 5]) + "file" +
                        std::to_string(random() % 1000) + ".mdl");
    return paths;
}

std::string StdRelative(const std::string& path) {
    return std::filesystem::path(path).lexically_relative(kBase).generic_string();
}

void BM_GetRelativePath(benchmark::State& state) {
    if (fileio::platform::kNativePathStyle != fileio::platform::PathStyle::Posix) {
        state.SkipWithError("POSIX paths");
        return;
    }
    SetBasePath(String(std::string(kBase) + "robot.prj"));
    std::vector<String> paths;
    for (const std::string& path : SamplePaths()) {
        if (String(path).GetRelativePath().View() != StdRelative(path)) {
            state.SkipWithError(("results differ for " + path).c_str());
            return;
        }
        paths.emplace_back(path);
    }
    for (auto _ : state)
        for (const String& path : paths)
            benchmark::DoNotOptimize(path.GetRelativePath());
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(paths.size()));
    FreeBasePaths();
}

void BM_StdLexicallyRelative(benchmark::State& state) {
    std::vector<std::filesystem::path> paths;
    for (const std::string& path : SamplePaths())
        paths.emplace_back(path);
    const std::filesystem::path base(kBase);
    for (auto _ : state)
        for (const auto& path : paths)
            benchmark::DoNotOptimize(path.lexically_relative(base).generic_string());
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(paths.size()));
}

std::vector<std::string> RelativeInputs() {
    std::vector<std::string> inputs;
    for (const std::string& path : SamplePaths())
        inputs.push_back("../Robot/./" + path.substr(std::string(kBase).size() - 6));
    return inputs;
}

void BM_LexicalFullPath(benchmark::State& state) {
    const std::string cwd = "/home/ann/Projects/Robot";
    std::vector<std::string> inputs = RelativeInputs();
    for (const std::string& input : inputs) {
        std::string expected =
            (std::filesystem::path(cwd) / input).lexically_normal().generic_string();
        if (fileio::platform::LexicalFullPath(cwd, input) != expected) {
            state.SkipWithError(("results differ for " + input).c_str());
            return;
        }
    }
    for (auto _ : state)
        for (const std::string& input : inputs)
            benchmark::DoNotOptimize(fileio::platform::LexicalFullPath(cwd, input));
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(inputs.size()));
}

void BM_StdLexicallyNormal(benchmark::State& state) {
    const std::filesystem::path cwd = "/home/ann/Projects/Robot";
    std::vector<std::filesystem::path> inputs;
    for (const std::string& input : RelativeInputs())
        inputs.emplace_back(input);
    for (auto _ : state)
        for (const auto& input : inputs)
            benchmark::DoNotOptimize((cwd / input).lexically_normal().generic_string());
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(inputs.size()));
}

BENCHMARK(BM_GetRelativePath);
BENCHMARK(BM_StdLexicallyRelative);
BENCHMARK(BM_LexicalFullPath);
BENCHMARK(BM_StdLexicallyNormal);

} // namespace

BENCHMARK_MAIN();
