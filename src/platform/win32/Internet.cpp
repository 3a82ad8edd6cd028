// Internet.cpp - the desktop's URL handler and HTTP transfers, Win32 implementation.
//
// URLs go to ShellExecuteW, which starts the handler registered for the scheme (no command
// line is built, so no shell parses the URL). HTTP goes through WinHTTP in its asynchronous
// mode with the system's proxy settings, limited to http and https; one deadline covers the
// whole transfer, each step awaited until what is left of it.

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

/// One asynchronous WinHTTP request. Each step (send, response, read) is started and then
/// awaited until the transfer's deadline, so that no server, however slow, holds the
/// transfer past it: WinHTTP's own timeouts count per call, and some versions of it do not
/// apply them to every call. The status callback runs on WinHTTP's threads; it records the
/// step's outcome and signals. A step abandoned at the deadline may still complete later,
/// into the request's own buffer: so the request owns everything a callback touches and is
/// deleted by its last callback (HANDLE_CLOSING), never by the caller.
class AsyncRequest {
public:
    /// A new request on `connection`, or null.
    static AsyncRequest* Open(HINTERNET connection, const std::wstring& path, bool secure) {
        auto* request = new AsyncRequest;
        request->m_request = WinHttpOpenRequest(
            connection, L"GET", path.empty() ? L"/" : path.c_str(), nullptr, WINHTTP_NO_REFERER,
            WINHTTP_DEFAULT_ACCEPT_TYPES, secure ? WINHTTP_FLAG_SECURE : 0);
        if (request->m_request == nullptr || request->m_stepDone == nullptr) {
            request->Release();
            return nullptr;
        }
        DWORD_PTR context = reinterpret_cast<DWORD_PTR>(request);
        WinHttpSetOption(request->m_request, WINHTTP_OPTION_CONTEXT_VALUE, &context,
                         sizeof context);
        WinHttpSetStatusCallback(
            request->m_request, OnStatus,
            WINHTTP_CALLBACK_FLAG_ALL_COMPLETIONS | WINHTTP_CALLBACK_FLAG_HANDLES, 0);
        return request;
    }

    /// Closes the request; it is deleted once WinHTTP has let go of it.
    void Release() {
        if (m_request == nullptr) {
            delete this;
            return;
        }
        WinHttpCloseHandle(m_request); // HANDLE_CLOSING follows and deletes
    }

    HINTERNET Get() const { return m_request; }

    bool Send(Clock::time_point deadline) {
        m_error = 0;
        return WinHttpSendRequest(m_request, WINHTTP_NO_ADDITIONAL_HEADERS, 0,
                                  WINHTTP_NO_REQUEST_DATA, 0, 0,
                                  reinterpret_cast<DWORD_PTR>(this)) &&
               Await(deadline);
    }

    bool ReceiveResponse(Clock::time_point deadline) {
        m_error = 0;
        return WinHttpReceiveResponse(m_request, nullptr) && Await(deadline);
    }

    /// Reads the next run of the body into Data(); `got` is 0 at its end.
    bool Read(DWORD& got, Clock::time_point deadline) {
        m_error = 0;
        m_bytes = 0;
        if (!WinHttpReadData(m_request, m_buffer.data(), kReadChunk, nullptr) || !Await(deadline))
            return false;
        got = m_bytes;
        return true;
    }

    const char* Data() const { return m_buffer.data(); }

private:
    AsyncRequest() : m_stepDone(CreateEventW(nullptr, FALSE, FALSE, nullptr)) {}
    ~AsyncRequest() {
        if (m_stepDone != nullptr)
            CloseHandle(m_stepDone);
    }
    AsyncRequest(const AsyncRequest&) = delete;
    AsyncRequest& operator=(const AsyncRequest&) = delete;

    bool Await(Clock::time_point deadline) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0 ||
            WaitForSingleObject(m_stepDone, static_cast<DWORD>(left)) != WAIT_OBJECT_0) {
            SetLastError(ERROR_WINHTTP_TIMEOUT);
            return false;
        }
        if (m_error != 0) {
            SetLastError(m_error);
            return false;
        }
        return true;
    }

    static void CALLBACK OnStatus(HINTERNET, DWORD_PTR context, DWORD status, LPVOID info,
                                  DWORD length) {
        auto* self = reinterpret_cast<AsyncRequest*>(context);
        if (self == nullptr)
            return;
        switch (status) {
        case WINHTTP_CALLBACK_STATUS_SENDREQUEST_COMPLETE:
        case WINHTTP_CALLBACK_STATUS_HEADERS_AVAILABLE:
            SetEvent(self->m_stepDone);
            break;
        case WINHTTP_CALLBACK_STATUS_READ_COMPLETE:
            self->m_bytes = length;
            SetEvent(self->m_stepDone);
            break;
        case WINHTTP_CALLBACK_STATUS_REQUEST_ERROR:
            self->m_error = static_cast<WINHTTP_ASYNC_RESULT*>(info)->dwError;
            SetEvent(self->m_stepDone);
            break;
        case WINHTTP_CALLBACK_STATUS_HANDLE_CLOSING:
            delete self; // the last callback of the handle
            break;
        default:
            break;
        }
    }

    HINTERNET m_request = nullptr;
    HANDLE m_stepDone;
    DWORD m_error = 0;
    DWORD m_bytes = 0;
    std::string m_buffer = std::string(kReadChunk, '\0');
};

/// The transfer itself, on an open request.
HttpStatus Transfer(AsyncRequest& request, Clock::time_point deadline, const HttpSink& sink,
                    std::string& why) {
    if (!request.Send(deadline) || !request.ReceiveResponse(deadline))
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

    for (;;) {
        DWORD got = 0;
        if (!request.Read(got, deadline))
            return Failure(why);
        if (got == 0)
            return HttpStatus::Done;
        if (!sink.data(sink.context, request.Data(), got))
            return HttpStatus::Stopped;
    }
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
                                       WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS,
                                       WINHTTP_FLAG_ASYNC));
    if (session.Get() == nullptr)
        return Failure(why);
    DWORD redirections = kMaxRedirections;
    WinHttpSetOption(session.Get(), WINHTTP_OPTION_MAX_HTTP_AUTOMATIC_REDIRECTS, &redirections,
                     sizeof redirections);
    InternetHandle connection(WinHttpConnect(session.Get(), host.c_str(), parts.nPort, 0));
    if (connection.Get() == nullptr)
        return Failure(why);
    AsyncRequest* request =
        AsyncRequest::Open(connection.Get(), path, parts.nScheme == INTERNET_SCHEME_HTTPS);
    if (request == nullptr)
        return Failure(why);
    const HttpStatus result = Transfer(*request, deadline, sink, why);
    request->Release();
    return result;
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
