// CText.h - a String's text for an interface that takes a C text.
#pragma once

#include "fileio/core/String.h"

namespace fileio::detail {

/// The text of `s`, "" for the null string: never null.
inline const char* TextOf(const String& s) noexcept {
    return s.Get() != nullptr ? s.Get() : "";
}

} // namespace fileio::detail
