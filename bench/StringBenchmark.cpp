// StringBenchmark.cpp - String's float and double texts against snprintf with the same
// format, over the same random values, in the same run.
//
// Each String case includes everything a caller pays: formatting, the pool allocation and
// the copy, and the release. The snprintf cases only format into a stack buffer. A host
// always has other strings alive, so the String cases keep one resident string: without
// it, every release would empty the pool's only block and give it back, and the case would
// time the making and dropping of a block (the MakeDrop cases below) besides the text. Before
// timing, every value's text is checked to be identical in both; a mismatch stops the case.
// The FormatGeneral cases time the library's formatter alone, into a stack buffer like
// snprintf's, so that the text work and the pool's share of a String can be told apart.
// Values are drawn two ways: uniformly over all finite bit patterns (mostly huge or tiny
// magnitudes, long exponents) and as "ordinary" scene numbers in [-1000, 1000].
//
// The MakeDrop cases time making and dropping one String of a short text with the string
// pool empty (no other string alive: every String takes a block and gives it back) and
// with the pool warm (one resident string keeps its block), against a std::string of the
// same text, long enough to live on the heap. The ratios of the two String cases to the
// std::string case are the figures to read.
//
// The Read cases time the number readers behind Str_atof, Str_atod, Str_atoi and the text
// streams against the C runtime's strtof, strtod and strtol over the same texts: the
// String forms of the same random values, and integers of up to ten digits. Before timing,
// every text must read to the same bits in both.

#include "core/StringNumbers.h"
#include "fileio/core/String.h"
#include "memory/NamedPoolObjects.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <bit>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kValueCount = 4096;

template <class Float> std::vector<Float> RandomBitPatterns() {
    using Word = std::conditional_t<sizeof(Float) == 8, std::uint64_t, std::uint32_t>;
    std::mt19937_64 random(12345);
    std::vector<Float> values;
    while (values.size() < kValueCount) {
        const Float value = std::bit_cast<Float>(static_cast<Word>(random()));
        if (std::isfinite(value))
            values.push_back(value);
    }
    return values;
}

template <class Float> std::vector<Float> OrdinaryValues() {
    std::mt19937_64 random(54321);
    std::uniform_real_distribution<double> range(-1000.0, 1000.0);
    std::vector<Float> values;
    for (std::size_t i = 0; i < kValueCount; ++i)
        values.push_back(static_cast<Float>(range(random)));
    return values;
}

template <class Float> const char* FormatOf() {
    return sizeof(Float) == 8 ? "%.17g" : "%.9g";
}

/// True when String and snprintf write the same text for every value.
template <class Float> bool SameTexts(const std::vector<Float>& values) {
    char expected[64];
    for (Float value : values) {
        std::snprintf(expected, sizeof expected, FormatOf<Float>(), static_cast<double>(value));
        const String text(value);
        if (std::strcmp(text.Get(), expected) != 0)
            return false;
    }
    return true;
}

template <class Float> void BM_StringText(benchmark::State& state, std::vector<Float> (*make)()) {
    const std::vector<Float> values = make();
    if (!SameTexts(values)) {
        state.SkipWithError("String and snprintf texts differ");
        return;
    }
    const String resident("keeps the string pool's block alive");
    std::size_t i = 0;
    for (auto _ : state) {
        const String text(values[i++ % values.size()]);
        benchmark::DoNotOptimize(text.Get());
    }
    state.SetItemsProcessed(state.iterations());
}

template <class Float>
void BM_FormatGeneral(benchmark::State& state, std::vector<Float> (*make)()) {
    const std::vector<Float> values = make();
    char buffer[fileio::detail::kNumberTextSize];
    const int digits = sizeof(Float) == 8 ? 17 : 9;
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            fileio::detail::FormatGeneral(buffer, values[i++ % values.size()], digits));
        benchmark::DoNotOptimize(buffer);
    }
    state.SetItemsProcessed(state.iterations());
}

template <class Float> void BM_Snprintf(benchmark::State& state, std::vector<Float> (*make)()) {
    const std::vector<Float> values = make();
    char buffer[64];
    std::size_t i = 0;
    for (auto _ : state) {
        std::snprintf(buffer, sizeof buffer, FormatOf<Float>(),
                      static_cast<double>(values[i++ % values.size()]));
        benchmark::DoNotOptimize(buffer);
    }
    state.SetItemsProcessed(state.iterations());
}

/// A text longer than any std::string keeps inside itself.
constexpr const char* kShortText = "Model/Mesh.42/Patches/Opacity";

void BM_MakeDrop_String(benchmark::State& state, bool warm) {
    const VarnPool& pool = fileio::detail::NamedVarnPool(fileio::detail::VarnPoolKind::String);
    if (pool.IsNotEmpty()) {
        state.SkipWithError("another string is alive before the case starts");
        return;
    }
    const String resident(warm ? "keeps the string pool's block alive" : nullptr);
    for (auto _ : state) {
        const String text(kShortText);
        benchmark::DoNotOptimize(text.Get());
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_MakeDrop_StdString(benchmark::State& state) {
    for (auto _ : state) {
        const std::string text(kShortText);
        benchmark::DoNotOptimize(text.data());
    }
    state.SetItemsProcessed(state.iterations());
}

/// The texts of the values as String writes them.
template <class Float> std::vector<std::string> TextsOf(std::vector<Float> (*make)()) {
    std::vector<std::string> texts;
    for (Float value : make())
        texts.emplace_back(String(value).Get());
    return texts;
}

std::vector<std::string> IntegerTexts() {
    std::mt19937_64 random(777);
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < kValueCount; ++i) {
        const auto value = static_cast<long long>(random() % 4000000000ULL) - 2000000000LL;
        texts.push_back(std::to_string(value >> (random() % 32)));
    }
    return texts;
}

/// The library's reader of a number type and the C runtime's.
float LibraryFloat(std::string_view t) {
    return fileio::detail::ParseFloat(t);
}
float RuntimeFloat(const char* t) {
    return std::strtof(t, nullptr);
}
double LibraryDouble(std::string_view t) {
    return fileio::detail::ParseDouble(t);
}
double RuntimeDouble(const char* t) {
    return std::strtod(t, nullptr);
}
long long LibraryInt(std::string_view t) {
    return fileio::detail::ParseSigned(t, INT32_MIN, INT32_MAX);
}
long long RuntimeInt(const char* t) {
    return std::strtol(t, nullptr, 10);
}

template <class Value>
bool SameReadings(const std::vector<std::string>& texts, Value (*library)(std::string_view),
                  Value (*runtime)(const char*)) {
    std::setlocale(LC_ALL, "C");
    return std::all_of(texts.begin(), texts.end(), [&](const std::string& t) {
        const Value a = library(t);
        const Value b = runtime(t.c_str());
        return std::memcmp(&a, &b, sizeof a) == 0;
    });
}

template <class Value>
void BM_Read(benchmark::State& state, std::vector<std::string> (*make)(),
             Value (*library)(std::string_view), Value (*runtime)(const char*), bool useLibrary) {
    const std::vector<std::string> texts = make();
    if (!SameReadings(texts, library, runtime)) {
        state.SkipWithError("the library and the runtime read a text differently");
        return;
    }
    std::size_t i = 0;
    for (auto _ : state) {
        const std::string& text = texts[i++ % texts.size()];
        benchmark::DoNotOptimize(useLibrary ? library(text) : runtime(text.c_str()));
    }
    state.SetItemsProcessed(state.iterations());
}

std::vector<std::string> FloatTexts() {
    return TextsOf(OrdinaryValues<float>);
}
std::vector<std::string> FloatBitTexts() {
    return TextsOf(RandomBitPatterns<float>);
}
std::vector<std::string> DoubleTexts() {
    return TextsOf(OrdinaryValues<double>);
}

BENCHMARK_CAPTURE(BM_Read, float_library, FloatTexts, LibraryFloat, RuntimeFloat, true);
BENCHMARK_CAPTURE(BM_Read, float_strtof, FloatTexts, LibraryFloat, RuntimeFloat, false);
BENCHMARK_CAPTURE(BM_Read, float_bits_library, FloatBitTexts, LibraryFloat, RuntimeFloat, true);
BENCHMARK_CAPTURE(BM_Read, float_bits_strtof, FloatBitTexts, LibraryFloat, RuntimeFloat, false);
BENCHMARK_CAPTURE(BM_Read, double_library, DoubleTexts, LibraryDouble, RuntimeDouble, true);
BENCHMARK_CAPTURE(BM_Read, double_strtod, DoubleTexts, LibraryDouble, RuntimeDouble, false);
BENCHMARK_CAPTURE(BM_Read, int_library, IntegerTexts, LibraryInt, RuntimeInt, true);
BENCHMARK_CAPTURE(BM_Read, int_strtol, IntegerTexts, LibraryInt, RuntimeInt, false);

BENCHMARK_CAPTURE(BM_MakeDrop_String, pool_empty, false);
BENCHMARK_CAPTURE(BM_MakeDrop_String, pool_warm, true);
BENCHMARK(BM_MakeDrop_StdString);
BENCHMARK_CAPTURE(BM_StringText, float_bits, RandomBitPatterns<float>);
BENCHMARK_CAPTURE(BM_FormatGeneral, float_bits, RandomBitPatterns<float>);
BENCHMARK_CAPTURE(BM_Snprintf, float_bits, RandomBitPatterns<float>);
BENCHMARK_CAPTURE(BM_StringText, float_ordinary, OrdinaryValues<float>);
BENCHMARK_CAPTURE(BM_FormatGeneral, float_ordinary, OrdinaryValues<float>);
BENCHMARK_CAPTURE(BM_Snprintf, float_ordinary, OrdinaryValues<float>);
BENCHMARK_CAPTURE(BM_StringText, double_bits, RandomBitPatterns<double>);
BENCHMARK_CAPTURE(BM_FormatGeneral, double_bits, RandomBitPatterns<double>);
BENCHMARK_CAPTURE(BM_Snprintf, double_bits, RandomBitPatterns<double>);
BENCHMARK_CAPTURE(BM_StringText, double_ordinary, OrdinaryValues<double>);
BENCHMARK_CAPTURE(BM_FormatGeneral, double_ordinary, OrdinaryValues<double>);
BENCHMARK_CAPTURE(BM_Snprintf, double_ordinary, OrdinaryValues<double>);

} // namespace

BENCHMARK_MAIN();
