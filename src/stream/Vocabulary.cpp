// Vocabulary.cpp - the header and label tables, their maps, and the lookups between words
// and ids.

#include "fileio/stream/Vocabulary.h"

#include "stream/TokenText.h"
#include "stream/VocabularyTables.h"
#include "stream/WordMap.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <iterator>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>

namespace fileio::detail {
namespace {

#include "stream/VocabularyWords.inc"

static_assert(std::size(kHeaderRows) == 157);
static_assert(std::size(kLabelRows) == 893);

constexpr bool AllWordsFitATokenText(std::span<const VocabularyRow> rows) {
    for (const VocabularyRow& row : rows) {
        if (row.word.empty() || row.word.size() >= kTokenTextSize)
            return false;
    }
    return true;
}
static_assert(AllWordsFitATokenText(kHeaderRows) && AllWordsFitATokenText(kLabelRows));

constexpr std::int32_t LowestId(std::span<const VocabularyRow> rows) {
    std::int32_t lowest = rows.front().id;
    for (const VocabularyRow& row : rows)
        lowest = row.id < lowest ? row.id : lowest;
    return lowest;
}

constexpr std::int32_t HighestId(std::span<const VocabularyRow> rows) {
    std::int32_t highest = rows.front().id;
    for (const VocabularyRow& row : rows)
        highest = row.id > highest ? row.id : highest;
    return highest;
}

// The label id index, worked out while compiling: for every id from the lowest to the
// highest, the number of the first row with that id, or kNoRow. Labels are looked up by id
// for every label of every binary file, so this is a direct table rather than a search.
using RowNumber = std::uint16_t;
constexpr RowNumber kNoRow = 0xFFFF;
static_assert(std::size(kLabelRows) < kNoRow);

constexpr std::int32_t kLowestLabelId = LowestId(kLabelRows);
constexpr std::int32_t kHighestLabelId = HighestId(kLabelRows);

constexpr auto kLabelIdIndex = [] {
    std::array<RowNumber, kHighestLabelId - kLowestLabelId + 1> index{};
    index.fill(kNoRow);
    // Backwards, so that of two rows with one id the first one ends up in the index.
    for (std::size_t row = std::size(kLabelRows); row-- > 0;)
        index[static_cast<std::size_t>(kLabelRows[row].id - kLowestLabelId)] =
            static_cast<RowNumber>(row);
    return index;
}();

// The header map's bucket count: its size hint 479, times 1.2.
constexpr std::uint32_t kHeaderBucketCount = 574;
constexpr std::uint32_t kLabelBucketCount = 991;

// The header map is built on first use and may be freed and built again, so it is reached
// through an atomic pointer: a lookup pays one load once the map exists. The lock orders
// building, changing and freeing. Both objects are constant-initialised, so they are ready
// before any static initialiser of this or another library runs.
std::atomic<WordMap*> g_headerMap{nullptr};
std::mutex g_headerMapLock;

// Needs g_headerMapLock.
WordMap& BuildHeaderMapLocked() {
    WordMap* map = g_headerMap.load(std::memory_order_relaxed);
    if (map == nullptr) {
        map = new WordMap(kHeaderRows, kHeaderBucketCount, kHeaderIndexSize);
        g_headerMap.store(map, std::memory_order_release);
    }
    return *map;
}

const WordMap& HeaderMap() {
    if (const WordMap* map = g_headerMap.load(std::memory_order_acquire))
        return *map;
    std::lock_guard guard(g_headerMapLock);
    return BuildHeaderMapLocked();
}

// Built on first use and never destroyed, so that it still serves static destructors that
// run after this library's own.
const WordMap& LabelMap() {
    static const WordMap* const map = new WordMap(kLabelRows, kLabelBucketCount, 0);
    return *map;
}

} // namespace

std::span<const VocabularyRow> HeaderRows() noexcept {
    return kHeaderRows;
}

std::span<const VocabularyRow> LabelRows() noexcept {
    return kLabelRows;
}

std::int32_t HeaderIdOf(std::string_view word) noexcept {
    return HeaderMap().IdOf(word);
}

std::int32_t LabelIdOf(std::string_view word) noexcept {
    return LabelMap().IdOf(word);
}

const VocabularyRow* FirstLabelRow(std::int32_t id) noexcept {
    if (id < kLowestLabelId || id > kHighestLabelId)
        return nullptr;
    const RowNumber row = kLabelIdIndex[static_cast<std::size_t>(id - kLowestLabelId)];
    return row == kNoRow ? nullptr : &kLabelRows[row];
}

} // namespace fileio::detail

using fileio::detail::CopyTokenText;
using fileio::detail::WriteNotFoundText;

int GetHeaderIDFromText(const char* text) noexcept {
    return text != nullptr ? fileio::detail::HeaderIdOf(text) : -1;
}

void GetHeaderTextFromID(int id, char* out) noexcept {
    if (out == nullptr)
        return;
    if (id != -1)
        id &= ~fileio::kEndHeaderBit;
    if (const std::optional<std::string_view> word = fileio::detail::HeaderMap().WordOf(id))
        CopyTokenText(out, *word);
    else
        WriteNotFoundText(out, "HeaderNotFound: ", id);
}

String GetHeaderStringFromID(int id) {
    char text[fileio::kTokenTextSize];
    GetHeaderTextFromID(id, text);
    return String(text);
}

int GetLabelIDFromText(const char* text) noexcept {
    return text != nullptr ? fileio::detail::LabelIdOf(text) : -1;
}

bool GetLabelTextFromID(int id, char* out) noexcept {
    const fileio::detail::VocabularyRow* row = fileio::detail::FirstLabelRow(id);
    if (out != nullptr) {
        if (row != nullptr)
            CopyTokenText(out, row->word);
        else
            WriteNotFoundText(out, "LabelNotFound: ", id);
    }
    return row != nullptr;
}

void HeaderMapSetAt(const char* text, int id) noexcept {
    if (text == nullptr)
        return;
    char word[fileio::kTokenTextSize];
    CopyTokenText(word, text);
    std::lock_guard guard(fileio::detail::g_headerMapLock);
    fileio::detail::BuildHeaderMapLocked().SetAt(word, id);
}

void FreeHeaderMap() noexcept {
    std::lock_guard guard(fileio::detail::g_headerMapLock);
    delete fileio::detail::g_headerMap.exchange(nullptr, std::memory_order_acq_rel);
}
