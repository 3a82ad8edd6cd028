// StreamBenchmark.cpp - writing and reading a generated project through MemoryStream, in
// both forms, against a minimal reader written for this benchmark alone, in the same run.
//
// The project is BenchProject.h's.
//
// The minimal reader walks a pointer over the same bytes. It does the work any reader of the
// file must do and nothing else: it finds each token, asks the vocabulary for the header or
// label (text: the id of the word; binary: the word of the id, as the stream's tokens carry
// both), and converts each value with the same conversions (the library's locale-free
// number readers in text, memcpy in binary), making a String for each string value as the
// stream does. Before timing, both readers must agree on the checksum of everything read.
//
// Counters: MB/s (bytes of the project per second). The goal: each stream reader within 2x
// of the minimal reader of its form, and writing no slower than reading. The readers read a
// block already in memory, so the write case that compares with them writes into a block
// the stream already holds; the "Growing" cases write into a new stream each time.

#include "BenchProject.h"
#include "core/StringNumbers.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace fileio::bench;

/// Reads the project the memory stream holds from its start.
Checksum ReadWithStream(MemoryStream& s) {
    s.Open(s.IsBinary() ? FM_LOADING | FM_BINARY : FM_LOADING);
    return ReadProject(s);
}

// ---- the minimal readers ------------------------------------------------------------------------

constexpr bool IsWhite(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

class TextReader {
public:
    explicit TextReader(const std::string& bytes)
        : m_p(bytes.data()), m_end(bytes.data() + bytes.size()) {}

    Checksum Read() {
        Checksum c;
        for (SkipWhite(); m_p != m_end; SkipWhite()) {
            ++c.tokens;
            if (*m_p == '<') {
                const char* word = ++m_p;
                while (m_p != m_end && *m_p != '>')
                    ++m_p;
                const bool end = *word == '/';
                int id = LookUp(word + end, m_p, &GetHeaderIDFromText);
                if (end)
                    id |= fileio::kEndHeaderBit;
                c.sum += id & 0xFFFF;
                ++m_p;
                continue;
            }
            const char* word = m_p;
            while (m_p != m_end && *m_p != '=')
                ++m_p;
            const int id = LookUp(word, m_p, &GetLabelIDFromText);
            ++m_p;
            ReadValue(KindOf(id), c);
        }
        return c;
    }

private:
    void SkipWhite() {
        while (m_p != m_end && IsWhite(*m_p))
            ++m_p;
    }

    static int LookUp(const char* begin, const char* end, int (*lookUp)(const char*) noexcept) {
        char word[80];
        const std::size_t n = std::min<std::size_t>(static_cast<std::size_t>(end - begin), 79);
        std::memcpy(word, begin, n);
        word[n] = '\0';
        return lookUp(word);
    }

    std::string_view Token() {
        while (m_p != m_end && (*m_p == ' ' || *m_p == '\t'))
            ++m_p;
        const char* begin = m_p;
        while (m_p != m_end && !IsWhite(*m_p))
            ++m_p;
        return std::string_view(begin, static_cast<std::size_t>(m_p - begin));
    }

    float F() { return fileio::detail::ParseFloat(Token()); }

    void ReadValue(Kind kind, Checksum& c) {
        if (!kind)
            return;
        switch (*kind) {
        case ValueKind::Bool: {
            const std::string_view t = Token();
            c.sum += t == "TRUE" || t == "true" || t == "1" || t == "on" || t == "On";
            break;
        }
        case ValueKind::Int:
            c.sum +=
                static_cast<double>(fileio::detail::ParseSigned(Token(), INT32_MIN, INT32_MAX));
            break;
        case ValueKind::Float:
            c.sum += F();
            break;
        case ValueKind::Double:
            c.sum += fileio::detail::ParseDouble(Token());
            break;
        case ValueKind::Text: {
            const std::string_view t = Token();
            const String text(t.data(), static_cast<int>(t.size()));
            c.sum += static_cast<double>(text.GetLength());
            break;
        }
        case ValueKind::Vector: {
            const float x = F(), y = F(), z = F();
            c.sum += x + y + z;
            break;
        }
        case ValueKind::Color: {
            const float r = F(), g = F(), b = F();
            c.sum += r + g + b;
            break;
        }
        case ValueKind::Quaternion: {
            const float x = F(), y = F(), z = F(), w = F();
            c.sum += x + y + z + w;
            break;
        }
        case ValueKind::Matrix:
            for (int row = 0; row < 4; ++row) {
                const float x = F(), y = F(), z = F(), w = F();
                c.sum += x + y + z + w;
            }
            break;
        case ValueKind::Time:
            c.sum += static_cast<double>(TimeTicks(Token()));
            break;
        default:
            break;
        }
    }

    /// The fields of [-]m:s:f.t filled from the right; without a ".", a last field of 30
    /// or more is ticks.
    static long long TimeTicks(std::string_view t) {
        const bool negative = !t.empty() && t.front() == '-';
        if (negative)
            t.remove_prefix(1);
        long long fields[4] = {0, 0, 0, 0};
        bool dot = false;
        for (std::size_t begin = 0;;) {
            const std::size_t end = t.find_first_of(":.", begin);
            fields[0] = fields[1];
            fields[1] = fields[2];
            fields[2] = fields[3];
            fields[3] =
                fileio::detail::ParseSigned(t.substr(begin, end - begin), INT64_MIN, INT64_MAX);
            if (end == std::string_view::npos)
                break;
            dot = dot || t[end] == '.';
            begin = end + 1;
        }
        long long ticks = 0, frames, seconds, minutes;
        if (dot) {
            ticks = fields[3];
            frames = fields[2], seconds = fields[1], minutes = fields[0];
        } else {
            frames = fields[3], seconds = fields[2], minutes = fields[1];
            if (frames >= 30)
                ticks = frames, frames = 0;
        }
        const long long total = ((minutes * 60 + seconds) * 30 + frames) * 4500 + ticks;
        return negative ? -total : total;
    }

    const char* m_p;
    const char* m_end;
};

class BinaryReader {
public:
    explicit BinaryReader(const std::string& bytes)
        : m_p(bytes.data()), m_end(bytes.data() + bytes.size()) {}

    Checksum Read() {
        Checksum c;
        char text[80];
        while (m_end - m_p >= 4) {
            ++c.tokens;
            const auto word = Take<std::uint32_t>();
            if ((word & 0x80000000u) != 0) {
                const int id = static_cast<int>(word & 0x7FFFFFFFu);
                GetHeaderTextFromID(id, text);
                c.sum += id & 0xFFFF;
                continue;
            }
            const int id = static_cast<int>(word & ~0x40000000u);
            GetLabelTextFromID(id, text);
            ReadValue(KindOf(id), c);
        }
        return c;
    }

private:
    template <class T> T Take() {
        T value;
        std::memcpy(&value, m_p, sizeof value);
        m_p += sizeof value;
        return value;
    }

    template <int N> double Floats() {
        float v[N];
        std::memcpy(v, m_p, sizeof v);
        m_p += sizeof v;
        double sum = 0;
        for (int i = 0; i < N; i += 4) {
            float part = 0;
            for (int j = i; j < i + 4 && j < N; ++j)
                part += v[j];
            sum += part;
        }
        return sum;
    }

    void ReadValue(Kind kind, Checksum& c) {
        if (!kind)
            return;
        switch (*kind) {
        case ValueKind::Bool:
            c.sum += Take<unsigned char>() != 0;
            break;
        case ValueKind::Int:
            c.sum += Take<std::int32_t>();
            break;
        case ValueKind::Float:
            c.sum += Take<float>();
            break;
        case ValueKind::Double:
            c.sum += Take<double>();
            break;
        case ValueKind::Text: {
            const auto count = Take<std::uint16_t>();
            const String text(m_p, count);
            m_p += count;
            c.sum += static_cast<double>(text.GetLength());
            break;
        }
        case ValueKind::Vector:
        case ValueKind::Color:
            c.sum += Floats<3>();
            break;
        case ValueKind::Quaternion:
            c.sum += Floats<4>();
            break;
        case ValueKind::Matrix:
            for (int row = 0; row < 4; ++row)
                c.sum += Floats<4>();
            break;
        case ValueKind::Time:
            c.sum += static_cast<double>(Take<long long>());
            break;
        default:
            break;
        }
    }

    const char* m_p;
    const char* m_end;
};

Checksum ReadMinimal(const std::string& bytes, bool binary) {
    return binary ? BinaryReader(bytes).Read() : TextReader(bytes).Read();
}

// ---- the cases
// ------------------------------------------------------------------------------------

// The same into a new stream each time: the block grows from nothing, and the system's
// fresh pages are part of the time.
void BM_StreamWriteGrowing(benchmark::State& state, bool binary) {
    const std::size_t bytes = Project(binary).size();
    for (auto _ : state) {
        MemoryStream stream;
        stream.Open(binary ? FM_BINARY : FM_STORING);
        WriteProject(stream, ProjectBytes());
        benchmark::DoNotOptimize(stream.GetData());
    }
    Report(state, bytes);
}

// The project is copied into the stream once; each iteration reads it from the start.
void BM_StreamRead(benchmark::State& state, bool binary) {
    const std::string& project = Project(binary);
    MemoryStream stream;
    stream.Open(project.data(), project.size(), binary ? FM_LOADING | FM_BINARY : FM_LOADING);
    stream.SetVersion(13.0f);
    if (!(ReadWithStream(stream) == ReadMinimal(project, binary))) {
        state.SkipWithError("the stream and the minimal reader disagree");
        return;
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(ReadWithStream(stream));
    Report(state, project.size());
}

void BM_MinimalRead(benchmark::State& state, bool binary) {
    const std::string& project = Project(binary);
    for (auto _ : state)
        benchmark::DoNotOptimize(ReadMinimal(project, binary));
    Report(state, project.size());
}

BENCHMARK_CAPTURE(BM_StreamWrite, text, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StreamWriteGrowing, text, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StreamRead, text, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_MinimalRead, text, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StreamWrite, binary, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StreamWriteGrowing, binary, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_StreamRead, binary, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_MinimalRead, binary, true)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    return fileio::bench::RunProjectBenchmarks(argc, argv);
}
