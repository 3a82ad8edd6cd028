// Word -> id and id -> word over the whole vocabulary: the library's lookups against a
// std::unordered_map of the same words, in the same run. The words are looked up from
// copies, as a reader holds them after taking a token from a file.
//
// Each benchmark goes once through every row of a table per iteration; items/s counts
// lookups.

#include "fileio/stream/Vocabulary.h"

#include "stream/TokenText.h"
#include "stream/VocabularyTables.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cctype>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

using fileio::detail::VocabularyRow;

namespace {

std::span<const VocabularyRow> Rows(bool headers) {
    return headers ? fileio::detail::HeaderRows() : fileio::detail::LabelRows();
}

// The words of a table as separate copies; lowerCase makes them all unknown words.
std::vector<std::string> WordCopies(bool headers, bool lowerCase) {
    std::vector<std::string> words;
    for (const VocabularyRow& row : Rows(headers)) {
        std::string word(row.word);
        if (lowerCase)
            std::transform(word.begin(), word.end(), word.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        words.push_back(std::move(word));
    }
    return words;
}

std::vector<int> Ids(bool headers) {
    std::vector<int> ids;
    for (const VocabularyRow& row : Rows(headers))
        ids.push_back(row.id);
    return ids;
}

// ---- word -> id ----------------------------------------------------------------------

void LibraryIdFromText(benchmark::State& state, bool headers, bool unknown) {
    const std::vector<std::string> words = WordCopies(headers, unknown);
    for (auto _ : state) {
        for (const std::string& word : words) {
            const int id =
                headers ? GetHeaderIDFromText(word.c_str()) : GetLabelIDFromText(word.c_str());
            benchmark::DoNotOptimize(id);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(words.size()));
}

void BaselineIdFromText(benchmark::State& state, bool headers, bool unknown) {
    std::unordered_map<std::string_view, int> map;
    for (const VocabularyRow& row : Rows(headers))
        map.emplace(row.word, row.id);
    const std::vector<std::string> words = WordCopies(headers, unknown);
    for (auto _ : state) {
        for (const std::string& word : words) {
            // A reader holds a NUL-terminated token, so the baseline measures it too.
            const auto found = map.find(std::string_view(word.c_str()));
            const int id = found != map.end() ? found->second : -1;
            benchmark::DoNotOptimize(id);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(words.size()));
}

// ---- id -> word ----------------------------------------------------------------------

void LibraryTextFromId(benchmark::State& state, bool headers) {
    const std::vector<int> ids = Ids(headers);
    char out[fileio::kTokenTextSize];
    for (auto _ : state) {
        for (int id : ids) {
            if (headers)
                GetHeaderTextFromID(id, out);
            else
                GetLabelTextFromID(id, out);
            benchmark::DoNotOptimize(out);
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(ids.size()));
}

void BaselineTextFromId(benchmark::State& state, bool headers) {
    std::unordered_map<int, std::string_view> map;
    for (const VocabularyRow& row : Rows(headers))
        map.emplace(row.id, row.word); // keeps the first word of an id, as the library does
    const std::vector<int> ids = Ids(headers);
    char out[fileio::kTokenTextSize];
    for (auto _ : state) {
        for (int id : ids) {
            const auto found = map.find(id);
            // The same bounded copy as the library's, so that only the lookups differ.
            fileio::detail::CopyTokenText(out, found != map.end() ? found->second : "?");
            benchmark::DoNotOptimize(out);
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<long long>(ids.size()));
}

} // namespace

BENCHMARK_CAPTURE(LibraryIdFromText, Headers, true, false);
BENCHMARK_CAPTURE(BaselineIdFromText, Headers, true, false);
BENCHMARK_CAPTURE(LibraryIdFromText, Labels, false, false);
BENCHMARK_CAPTURE(BaselineIdFromText, Labels, false, false);
BENCHMARK_CAPTURE(LibraryIdFromText, UnknownHeaders, true, true);
BENCHMARK_CAPTURE(BaselineIdFromText, UnknownHeaders, true, true);
BENCHMARK_CAPTURE(LibraryIdFromText, UnknownLabels, false, true);
BENCHMARK_CAPTURE(BaselineIdFromText, UnknownLabels, false, true);
BENCHMARK_CAPTURE(LibraryTextFromId, Headers, true);
BENCHMARK_CAPTURE(BaselineTextFromId, Headers, true);
BENCHMARK_CAPTURE(LibraryTextFromId, Labels, false);
BENCHMARK_CAPTURE(BaselineTextFromId, Labels, false);

BENCHMARK_MAIN();
