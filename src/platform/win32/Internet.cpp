// Internet.cpp - the desktop's URL handler and HTTP transfers, Win32 implementation.
//
// URLs go to ShellExecuteW, which starts the handler registered for the scheme (no command
// line is built, so no shell parses the URL). HTTP goes through WinHTTP with the system's
// proxy settings, limited to http and https; one deadline covers the whole transfer, and
// each blocking call is bounded by what is left of it.

#include "platform/Platform.h"
#include "platform/win32/WideText.h"

#include <chrono>
#include <string>

// windows.h must come before the others.
#include <windows.h>

#include <shellapi.h>
#include <winhttp.h>

namespace fileio::platform {

namespace {

using Clock = std::chrono::steady_clock;

/// ShellExecuteW's results above this value mean success.
constexpr INT_PTR kShellExecuteSuccess = 32;
/// Bytes read from the response at a time.
constexpr DWORD kReadChunk = 65536;
/// The most redirections a transfer follows.
constexpr DWORD kMaxRedirections = 10;
/// The status codes of success.
constexpr DWORD kFirstSuccess = 200, kFirstFailure = 300;

bool OpenUrl(const char* url, std::string& why) {
    const INT_PTR rc = reinterpret_cast<INT_PTR>(ShellExecuteW(
        nullptr, L"open", win32::Widen(url).c_str(), nullptr, nullptr, SW_SHOWNORMAL));
    if (rc > kShellExecuteSuccess)
        return true;
    why = "no program opens \"" + std::string(url) + "\" (error " + std::to_string(rc) + ")";
    return false;
}

/// A WinHTTP handle closed when it goes.
class InternetHandle {
public:
    explicit InternetHandle(HINTERNET h) : m_handle(h) {}
    ~InternetHandle() {
        if (m_handle != nullptr)
            WinHttpCloseHandle(m_handle);
    }
    InternetHandle(const InternetHandle&) = delete;
    InternetHandle& operator=(const InternetHandle&) = delete;
    HINTERNET Get() const { return m_handle; }

private:
    HINTERNET m_handle;
};

std::string WinHttpError() {
    const DWORD code = GetLastError();
    if (code == ERROR_WINHTTP_TIMEOUT)
        return "the operation timed out";
    char* text = nullptr;
    const DWORD n = FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_HMODULE |
                                       FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                   GetModuleHandleA("winhttp.dll"), code, 0,
                                   reinterpret_cast<char*>(&text), 0, nullptr);
    std::string out =
        n > 0 && text != nullptr ? std::string(text, n) : "WinHTTP error " + std::to_string(code);
    if (text != nullptr)
        LocalFree(text);
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r' || out.back() == ' '))
        out.pop_back();
    return out;
}

HttpStatus Failure(std::string& why) {
    const bool timedOut = GetLastError() == ERROR_WINHTTP_TIMEOUT;
    why = WinHttpError();
    return timedOut ? HttpStatus::TimedOut : HttpStatus::Failed;
}

/// Bounds every blocking WinHTTP call by what is left of the deadline.
bool Bound(HINTERNET request, Clock::time_point deadline) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) {
        SetLastError(ERROR_WINHTTP_TIMEOUT);
        return false;
    }
    const int ms = static_cast<int>(left);
    return WinHttpSetTimeouts(request, ms, ms, ms, ms) != FALSE;
}

HttpStatus HttpGet(const char* url, int timeoutMs, const HttpSink& sink, std::string& why) {
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    std::wstring wideUrl = win32::Widen(url);
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof parts;
    parts.dwHostNameLength = static_cast<DWORD>(-1);
    parts.dwUrlPathLength = static_cast<DWORD>(-1);
    parts.dwExtraInfoLength = static_cast<DWORD>(-1);
    if (!WinHttpCrackUrl(wideUrl.c_str(), 0, 0, &parts) ||
        (parts.nScheme != INTERNET_SCHEME_HTTP && parts.nScheme != INTERNET_SCHEME_HTTPS)) {
        why = "not an http or https URL: " + std::string(url);
        return HttpStatus::Failed;
    }
    const std::wstring host(parts.lpszHostName, parts.dwHostNameLength);
    std::wstring path(parts.lpszUrlPath, parts.dwUrlPathLength);
    path.append(parts.lpszExtraInfo, parts.dwExtraInfoLength);

    InternetHandle session(WinHttpOpen(L"FileIO", WINHTTP_ACCESS_TYPE_DEFAULT_PROXY,
                                       WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0));
    if (session.Get() == nullptr)
        return Failure(why);
    DWORD redirections = kMaxRedirections;
    WinHttpSetOption(session.Get(), WINHTTP_OPTION_MAX_HTTP_AUTOMATIC_REDIRECTS, &redirections,
                     sizeof redirections);
    InternetHandle connection(WinHttpConnect(session.Get(), host.c_str(), parts.nPort, 0));
    if (connection.Get() == nullptr)
        return Failure(why);
    InternetHandle request(
        WinHttpOpenRequest(connection.Get(), L"GET", path.empty() ? L"/" : path.c_str(), nullptr,
                           WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
                           parts.nScheme == INTERNET_SCHEME_HTTPS ? WINHTTP_FLAG_SECURE : 0));
    if (request.Get() == nullptr || !Bound(request.Get(), deadline) ||
        !WinHttpSendRequest(request.Get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0,
                            WINHTTP_NO_REQUEST_DATA, 0, 0, 0) ||
        !WinHttpReceiveResponse(request.Get(), nullptr))
        return Failure(why);

    DWORD status = 0;
    DWORD size = sizeof status;
    if (!WinHttpQueryHeaders(request.Get(), WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                             WINHTTP_HEADER_NAME_BY_INDEX, &status, &size, WINHTTP_NO_HEADER_INDEX))
        return Failure(why);
    if (status < kFirstSuccess || status >= kFirstFailure) {
        why = "HTTP " + std::to_string(status);
        return HttpStatus::Failed;
    }
    wchar_t lengthText[32] = {};
    size = sizeof lengthText;
    long long total = -1;
    if (WinHttpQueryHeaders(request.Get(), WINHTTP_QUERY_CONTENT_LENGTH,
                            WINHTTP_HEADER_NAME_BY_INDEX, lengthText, &size,
                            WINHTTP_NO_HEADER_INDEX))
        total = _wcstoi64(lengthText, nullptr, 10);
    sink.length(sink.context, total);

    std::string buffer(kReadChunk, '\0');
    for (;;) {
        DWORD got = 0;
        if (!Bound(request.Get(), deadline) ||
            !WinHttpReadData(request.Get(), buffer.data(), kReadChunk, &got))
            return Failure(why);
        if (got == 0)
            return HttpStatus::Done;
        if (!sink.data(sink.context, buffer.data(), got))
            return HttpStatus::Stopped;
    }
}

} // namespace

InternetServices& Internet() {
    static InternetServices table{
        .openUrl = OpenUrl,
        .httpGet = HttpGet,
    };
    return table;
}

} // namespace fileio::platform
