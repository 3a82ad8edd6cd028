// WideText.h - conversions between the library's 8-bit text (the system code page) and the
// UTF-16 text of the wide Win32 calls. Internal to the Win32 platform layer.
#pragma once

#include <string>
#include <string_view>

namespace fileio::platform::win32 {

/// 8-bit text in the system code page to UTF-16.
std::wstring Widen(std::string_view text);

/// UTF-16 to 8-bit text in the system code page (characters it lacks become "?").
std::string Narrow(std::wstring_view text);

} // namespace fileio::platform::win32
