// WideText.cpp - 8-bit and UTF-16 text for the wide Win32 calls.

#include "platform/win32/WideText.h"

#include <climits>
#include <windows.h>

namespace fileio::platform::win32 {

std::wstring Widen(std::string_view text) {
    if (text.empty() || text.size() > INT_MAX)
        return {};
    int size = static_cast<int>(text.size());
    int n = MultiByteToWideChar(CP_ACP, 0, text.data(), size, nullptr, 0);
    std::wstring out(static_cast<std::size_t>(n > 0 ? n : 0), L'\0');
    if (n > 0)
        MultiByteToWideChar(CP_ACP, 0, text.data(), size, out.data(), n);
    return out;
}

std::string Narrow(std::wstring_view text) {
    if (text.empty() || text.size() > INT_MAX)
        return {};
    int size = static_cast<int>(text.size());
    int n = WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<std::size_t>(n > 0 ? n : 0), '\0');
    if (n > 0)
        WideCharToMultiByte(CP_ACP, 0, text.data(), size, out.data(), n, nullptr, nullptr);
    return out;
}

} // namespace fileio::platform::win32
