// TimeBenchmark.cpp - Time's text forms against a plain snprintf / strtof version of the
// same work.
//
// ToString: 1,024 times spread over +-100,000 frames (whole and fractional frames, both
// signs) written at 30 fps (SMPTE, FRAMES, CELLS) and 120 fps (SMPTE, the wider frame
// field). The baseline computes the same fields and formats them with snprintf into a stack
// buffer, then makes the same String result, so both sides allocate exactly one string.
//
// ToTime: the texts that ToString made, read back. The baseline cuts the text at ":" with
// strtof and combines the fields with the same arithmetic.
//
// Each benchmark reports the time per conversion; compare each library row with its
// baseline row.

#include "fileio/core/Time.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace {

constexpr int kCount = 1024;

std::vector<Time> MakeTimes() {
    std::mt19937 random(20240602);
    std::uniform_int_distribution<long long> frames(-100000, 100000);
    std::vector<Time> times;
    for (int i = 0; i < kCount; ++i) {
        // Three quarters on whole frames at 30 fps, the rest anywhere.
        const long long ticks = frames(random) * 4500 + (i % 4 == 0 ? random() % 4500 : 0);
        times.emplace_back(ticks);
    }
    return times;
}

const std::vector<Time>& Times() {
    static const std::vector<Time> times = MakeTimes();
    return times;
}

std::vector<String> MakeTexts(double fps, TimeUnit unit) {
    std::vector<String> texts;
    for (const Time& t : Times())
        texts.push_back(t.ToString(fps, unit, false));
    return texts;
}

// ---- the baseline: the same computation with the C runtime ---------------------------------

double RoundToHundredths(double v) {
    if (v == std::round(v))
        return v;
    return std::round(std::fma(v, 100.0, v >= 0 ? 0x1p-23 : -0x1p-23)) * 0.01;
}

String BaselineToString(const Time& t, double fps, TimeUnit unit) {
    char text[64];
    const float s = t.GetSeconds();
    if (unit == SMPTE) {
        const float a = std::fabs(s);
        const int w = static_cast<int>(a);
        const double f = RoundToHundredths((a - static_cast<float>(w)) * fps);
        const char* format = fps >= 100 ? (s < 0 ? "-%02d:%02d:%03.5g" : "%02d:%02d:%03.5g")
                                        : (s < 0 ? "-%02d:%02d:%02.4g" : "%02d:%02d:%02.4g");
        std::snprintf(text, sizeof text, format, w / 60, w % 60, f);
    } else {
        const double v = RoundToHundredths(fps * s) + (unit == CELLS ? 1.0 : 0.0);
        std::snprintf(text, sizeof text, "%g", v);
    }
    return String(text);
}

Time BaselineToTime(const char* text, int fps, TimeUnit unit) {
    const bool negative = *text == '-';
    if (negative)
        ++text;
    float m = 0, sec = 0, x = 0;
    const float base = fps < 100 ? 100.0f : 1000.0f;
    for (const char* field = text;;) {
        m = sec;
        sec = std::trunc(x);
        x = std::strtof(field, nullptr);
        if (unit == SMPTE) {
            if (x >= base) {
                const float carry = std::trunc(x / base);
                sec += carry;
                x -= base * carry;
            }
            if (sec >= 100) {
                const float carry = std::trunc(sec / 100);
                m += carry;
                sec -= 100 * carry;
            }
        }
        const char* colon = std::strchr(field, ':');
        if (colon == nullptr)
            break;
        field = colon + 1;
    }
    if (unit == CELLS)
        x -= 1;
    const long long ticks =
        std::llrint(std::fma(sec + static_cast<double>(x) / fps, 135000.0, m * 8.1e6));
    return Time(negative ? -ticks : ticks);
}

// ---- benchmarks -----------------------------------------------------------------------------

// The string pool gives a block back to the system when its last string goes; a real
// program always has strings alive. One live string keeps the loops below from measuring
// the system allocator on every result.
String KeepPoolInUse() {
    return String("a string that stays alive while the benchmark runs");
}

template <bool Library> void ToStringBench(benchmark::State& state, double fps, TimeUnit unit) {
    const std::vector<Time>& times = Times();
    const String live = KeepPoolInUse();
    std::size_t i = 0;
    for (auto _ : state) {
        const Time& t = times[i++ % kCount];
        String text = Library ? t.ToString(fps, unit, false) : BaselineToString(t, fps, unit);
        benchmark::DoNotOptimize(text.Get());
    }
}

template <bool Library> void ToTimeBench(benchmark::State& state, int fps, TimeUnit unit) {
    const std::vector<String> texts = MakeTexts(fps, unit);
    const String live = KeepPoolInUse();
    std::size_t i = 0;
    for (auto _ : state) {
        const String& text = texts[i++ % kCount];
        Time t = Library ? text.ToTime(fps, unit, false) : BaselineToTime(text.Get(), fps, unit);
        benchmark::DoNotOptimize(t);
    }
}

void ToString_Library(benchmark::State& state, double fps, TimeUnit unit) {
    ToStringBench<true>(state, fps, unit);
}
void ToString_Baseline(benchmark::State& state, double fps, TimeUnit unit) {
    ToStringBench<false>(state, fps, unit);
}
void ToTime_Library(benchmark::State& state, int fps, TimeUnit unit) {
    ToTimeBench<true>(state, fps, unit);
}
void ToTime_Baseline(benchmark::State& state, int fps, TimeUnit unit) {
    ToTimeBench<false>(state, fps, unit);
}

BENCHMARK_CAPTURE(ToString_Library, Smpte30, 30.0, SMPTE);
BENCHMARK_CAPTURE(ToString_Baseline, Smpte30, 30.0, SMPTE);
BENCHMARK_CAPTURE(ToString_Library, Smpte120, 120.0, SMPTE);
BENCHMARK_CAPTURE(ToString_Baseline, Smpte120, 120.0, SMPTE);
BENCHMARK_CAPTURE(ToString_Library, Frames30, 30.0, FRAMES);
BENCHMARK_CAPTURE(ToString_Baseline, Frames30, 30.0, FRAMES);
BENCHMARK_CAPTURE(ToString_Library, Cells30, 30.0, CELLS);
BENCHMARK_CAPTURE(ToString_Baseline, Cells30, 30.0, CELLS);

BENCHMARK_CAPTURE(ToTime_Library, Smpte30, 30, SMPTE);
BENCHMARK_CAPTURE(ToTime_Baseline, Smpte30, 30, SMPTE);
BENCHMARK_CAPTURE(ToTime_Library, Smpte120, 120, SMPTE);
BENCHMARK_CAPTURE(ToTime_Baseline, Smpte120, 120, SMPTE);
BENCHMARK_CAPTURE(ToTime_Library, Frames30, 30, FRAMES);
BENCHMARK_CAPTURE(ToTime_Baseline, Frames30, 30, FRAMES);
BENCHMARK_CAPTURE(ToTime_Library, Cells30, 30, CELLS);
BENCHMARK_CAPTURE(ToTime_Baseline, Cells30, 30, CELLS);

} // namespace

BENCHMARK_MAIN();
