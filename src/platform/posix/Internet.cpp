// Internet.cpp - the desktop's URL handler and HTTP transfers, POSIX implementation.
//
// URLs go to xdg-open, started with an argument vector (never through a shell) and not
// waited for. HTTP goes through libcurl, limited to the http and https protocols (a
// redirection to file: or another scheme is refused), without signals, so that its timeouts
// are safe in a threaded host.

#include "platform/Platform.h"

#include <curl/curl.h>

namespace fileio::platform {

namespace {

/// The most redirections a transfer follows.
constexpr long kMaxRedirections = 10;
/// The protocols a transfer and its redirections may use.
constexpr const char* kHttpProtocols = "http,https";

bool OpenUrl(const char* url, std::string& why) {
    return Processes().startDetached({"xdg-open", url}, why);
}

/// The state of one transfer, seen by libcurl's callbacks.
struct Transfer {
    CURL* curl;
    const HttpSink* sink;
    bool lengthTold = false;
    bool stopped = false;

    void TellLength() {
        if (lengthTold)
            return;
        lengthTold = true;
        curl_off_t total = -1;
        if (curl_easy_getinfo(curl, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &total) != CURLE_OK)
            total = -1;
        sink->length(sink->context, total < 0 ? -1 : static_cast<long long>(total));
    }
};

std::size_t ReceiveBody(char* data, std::size_t size, std::size_t count, void* context) {
    auto* transfer = static_cast<Transfer*>(context);
    const std::size_t bytes = size * count;
    transfer->TellLength();
    if (!transfer->sink->data(transfer->sink->context, data, bytes)) {
        transfer->stopped = true;
        return 0; // libcurl ends the transfer with a write error
    }
    return bytes;
}

HttpStatus HttpGet(const char* url, int timeoutMs, const HttpSink& sink, std::string& why) {
    static const bool initialised = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    CURL* curl = initialised ? curl_easy_init() : nullptr;
    if (curl == nullptr) {
        why = "the HTTP library cannot be started";
        return HttpStatus::Failed;
    }
    Transfer transfer{curl, &sink};
    char detail[CURL_ERROR_SIZE] = {};
    curl_easy_setopt(curl, CURLOPT_URL, url);
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, kHttpProtocols);
    curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, kHttpProtocols);
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, kMaxRedirections);
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_FAILONERROR, 1L);
    // libcurl reads 0 as "no limit": the shortest limit it knows is 1 ms.
    curl_easy_setopt(curl, CURLOPT_TIMEOUT_MS, static_cast<long>(timeoutMs > 0 ? timeoutMs : 1));
    curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, detail);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, ReceiveBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &transfer);
    const CURLcode rc = curl_easy_perform(curl);
    if (rc == CURLE_OK)
        transfer.TellLength(); // an empty body calls no write callback
    curl_easy_cleanup(curl);
    if (rc == CURLE_OK)
        return HttpStatus::Done;
    if (transfer.stopped)
        return HttpStatus::Stopped;
    why = detail[0] != '\0' ? detail : curl_easy_strerror(rc);
    return rc == CURLE_OPERATION_TIMEDOUT ? HttpStatus::TimedOut : HttpStatus::Failed;
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
