// FuzzSupport.h - what the fuzz targets share: the check of a property that holds for every
// input, and an input split at a NUL into two texts.
#pragma once

#include <cstdlib>
#include <string_view>
#include <utility>

namespace fuzz {

/// Stops the process, so that the fuzzer reports the input, when a property does not hold.
inline void Require(bool condition) {
    if (!condition)
        std::abort();
}

/// The text before the first NUL and the text after it (empty when there is no NUL).
inline std::pair<std::string_view, std::string_view> SplitAtNul(std::string_view input) {
    const std::size_t split = input.find('\0');
    if (split == std::string_view::npos)
        return {input, {}};
    return {input.substr(0, split), input.substr(split + 1)};
}

} // namespace fuzz
