// VocabularyTables.h - the rows of the header and label vocabularies (internal).
//
// Every section of the suite's files is named by a header word and every field by a label
// word; each word has an id, which the binary form stores in its place. The rows are static
// data of the library: they exist before any code runs and never change. The word maps of
// Vocabulary.cpp are built from them.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace fileio::detail {

/// One row of a vocabulary table. The word is a literal: NUL-terminated after its view.
struct VocabularyRow {
    std::int32_t id;
    std::string_view word;
};

/// The 157 header words, in table order.
std::span<const VocabularyRow> HeaderRows() noexcept;

/// The 893 label words, in table order.
std::span<const VocabularyRow> LabelRows() noexcept;

/// The first label row, in table order, that has this id; null when no row has it. For the
/// ids that carry two words this is the alphabetically first of them. Constant time.
const VocabularyRow* FirstLabelRow(std::int32_t id) noexcept;

/// GetHeaderIDFromText and GetLabelIDFromText of a word whose length is known.
std::int32_t HeaderIdOf(std::string_view word) noexcept;
std::int32_t LabelIdOf(std::string_view word) noexcept;

} // namespace fileio::detail
