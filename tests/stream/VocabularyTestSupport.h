// VocabularyTestSupport.h - helpers shared by the vocabulary tests.
#pragma once

#include "fileio/stream/Vocabulary.h"

#include <algorithm>
#include <array>
#include <string>

namespace vocabulary_test {

// A text lookup's out buffer with room to spare: every byte past the 80 the lookup may
// write holds a guard value, so that a write past the bound shows.
struct GuardedBuffer {
    static constexpr char kGuard = '\x7F';
    std::array<char, 200> bytes;

    GuardedBuffer() { bytes.fill(kGuard); }
    char* data() { return bytes.data(); }
    // True when no byte past the token text size was touched.
    bool GuardIntact() const {
        return std::all_of(bytes.begin() + fileio::kTokenTextSize, bytes.end(),
                           [](char c) { return c == kGuard; });
    }
    // The text written, read up to its NUL within the bound.
    std::string Text() const {
        const auto end = bytes.begin() + fileio::kTokenTextSize;
        return std::string(bytes.begin(), std::find(bytes.begin(), end, '\0'));
    }
};

inline std::string HeaderText(int id) {
    GuardedBuffer out;
    GetHeaderTextFromID(id, out.data());
    return out.GuardIntact() ? out.Text() : std::string("<overflow>");
}

inline std::string LabelText(int id) {
    GuardedBuffer out;
    GetLabelTextFromID(id, out.data());
    return out.GuardIntact() ? out.Text() : std::string("<overflow>");
}

// 200 bytes: "A" then "B" and so on, cycling through the alphabet.
inline std::string LongWord() {
    std::string word(200, ' ');
    for (std::size_t i = 0; i < word.size(); ++i)
        word[i] = static_cast<char>('A' + i % 26);
    return word;
}

} // namespace vocabulary_test
