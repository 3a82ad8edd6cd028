// Vocabulary.cpp - the header and label maps and the lookups between words and ids.

#include "fileio/stream/Vocabulary.h"

#include "stream/TokenText.h"
#include "stream/VocabularyTables.h"
#include "stream/WordMap.h"

#include <atomic>
#include <cstdint>
#include <mutex>

using fileio::detail::WordMap;

namespace {

// The header map's bucket count: its size hint 479, times 1.2.
constexpr std::uint32_t kHeaderBucketCount = 574;
constexpr std::uint32_t kLabelBucketCount = 991;

// The header map is built on first use and may be freed and built again, so it is reached
// through an atomic pointer: a lookup pays one load once the map exists. The lock orders
// building, changing and freeing; both objects are constant-initialised, so they are ready
// before any static initialiser of this or another library runs.
std::atomic<WordMap*> g_headerMap{nullptr};
std::mutex g_headerMapLock;

// Needs g_headerMapLock.
WordMap& BuildHeaderMapLocked() {
    WordMap* map = g_headerMap.load(std::memory_order_relaxed);
    if (map == nullptr) {
        map = new WordMap(fileio::detail::HeaderRows(), kHeaderBucketCount,
                          fileio::kHeaderIndexSize);
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
    static const WordMap* const map =
        new WordMap(fileio::detail::LabelRows(), kLabelBucketCount, 0);
    return *map;
}

} // namespace

int GetHeaderIDFromText(const char* text) noexcept {
    return text != nullptr ? HeaderMap().IdOf(text) : -1;
}

void GetHeaderTextFromID(int id, char* out) noexcept {
    if (out == nullptr)
        return;
    if (id != -1)
        id &= ~fileio::kEndHeaderBit;
    if (const char* word = HeaderMap().WordOf(id))
        fileio::detail::CopyTokenText(out, word);
    else
        fileio::detail::WriteNotFoundText(out, "HeaderNotFound: ", id);
}

String GetHeaderStringFromID(int id) {
    char text[fileio::kTokenTextSize];
    GetHeaderTextFromID(id, text);
    return String(text);
}

int GetLabelIDFromText(const char* text) noexcept {
    return text != nullptr ? LabelMap().IdOf(text) : -1;
}

bool GetLabelTextFromID(int id, char* out) noexcept {
    const fileio::detail::VocabularyRow* row = fileio::detail::FirstLabelRow(id);
    if (out != nullptr) {
        if (row != nullptr)
            fileio::detail::CopyTokenText(out, row->word);
        else
            fileio::detail::WriteNotFoundText(out, "LabelNotFound: ", id);
    }
    return row != nullptr;
}

void HeaderMapSetAt(const char* text, int id) noexcept {
    if (text == nullptr)
        return;
    char word[fileio::kTokenTextSize];
    fileio::detail::CopyTokenText(word, text);
    std::lock_guard guard(g_headerMapLock);
    BuildHeaderMapLocked().SetAt(word, id);
}

void FreeHeaderMap() noexcept {
    std::lock_guard guard(g_headerMapLock);
    delete g_headerMap.exchange(nullptr, std::memory_order_acq_rel);
}
