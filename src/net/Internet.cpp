// Internet.cpp - the internet helpers over the platform's internet and process services.

#include "fileio/net/Internet.h"

#include "fileio/handlers/StatusMessage.h"
#include "fileio/path/VersionControl.h"
#include "net/UrlText.h"
#include "platform/Platform.h"

#include <string>
#include <vector>

using fileio::platform::Internet;

namespace {

/// The progress control's range: percent.
constexpr int kProgressEnd = 100;
/// The kind of progress control asked of the host.
constexpr unsigned char kProgressType = 0;

/// What a download gathers as the body arrives.
struct Body {
    std::string bytes;
    unsigned long long limit = 0;
    long long announced = -1;
    bool tooLarge = false;
    bool progressShown = false;
    int percent = -1;

    static void Length(void* context, long long total) {
        static_cast<Body*>(context)->announced = total;
    }

    static bool Data(void* context, const void* data, std::size_t size) {
        auto* body = static_cast<Body*>(context);
        const bool announcedTooMuch =
            body->announced > 0 && static_cast<unsigned long long>(body->announced) > body->limit;
        if (announcedTooMuch || size > body->limit - body->bytes.size()) {
            body->tooLarge = true;
            return false;
        }
        body->bytes.append(static_cast<const char*>(data), size);
        body->ShowProgress();
        return true;
    }

    void ShowProgress() {
        if (!progressShown || announced <= 0)
            return;
        const auto now = static_cast<int>(bytes.size() * kProgressEnd /
                                          static_cast<unsigned long long>(announced));
        if (now != percent) {
            percent = now;
            StatusMessage::SetProgress(now);
        }
    }
};

bool Launch(const std::string& url) {
    std::string why;
    return !url.empty() && Internet().openUrl(url.c_str(), why);
}

void Tell(String* why, const std::string& text) {
    if (why != nullptr)
        *why = String(text);
}

} // namespace

bool LaunchBrowser(const String& url) {
    return Launch(fileio::net::BrowserUrl(url.View()));
}

bool LaunchMail(const String& address, const String& subject, const String& body) {
    return Launch(fileio::net::MailUrl(address.View(), subject.View(), body.View()));
}

int SVNGetRevision(const String& path, int timeoutMs) {
    if (!SVNIsVersioned(path))
        return -1;
    std::string full;
    if (!fileio::platform::Files().fullPath(path.Get(), full))
        full = path.Get();
    // "--" ends the options and the trailing "@" the path, so that neither a leading "-" nor
    // an "@" inside the name is read as anything but the name.
    const std::vector<std::string> argv = {
        "svn", "info",    "--non-interactive", "--show-item", "last-changed-revision",
        "--",  full + "@"};
    fileio::platform::ProcessOutcome outcome;
    if (!fileio::platform::Processes().run(argv, timeoutMs, outcome) || outcome.timedOut ||
        outcome.exitCode != 0)
        return -1;
    return fileio::net::ParseRevision(outcome.output);
}

bool DownloadFile(const String& url, const String& path, String* why, unsigned long long sizeLimit,
                  int timeoutMs) {
    if (url.IsEmpty() || path.IsEmpty()) {
        Tell(why, url.IsEmpty() ? "no URL to download" : "no file to download to");
        return false;
    }
    const std::string text = "Downloading " + std::string(url.View());
    StatusMessage status{String(text)};
    Body body;
    body.limit = sizeLimit;
    body.progressShown =
        StatusMessage::InitializeProgressControl(text.c_str(), kProgressType, 0, kProgressEnd);
    const fileio::platform::HttpSink sink{
        .context = &body, .length = Body::Length, .data = Body::Data};
    std::string failure;
    const fileio::platform::HttpStatus result =
        Internet().httpGet(url.Get(), timeoutMs < 0 ? 0 : timeoutMs, sink, failure);
    if (body.progressShown)
        StatusMessage::UninitializeProgressControl();

    const auto received = static_cast<long long>(body.bytes.size());
    if (body.tooLarge)
        failure =
            "the download is larger than the limit of " + std::to_string(sizeLimit) + " bytes";
    else if (result == fileio::platform::HttpStatus::Done && body.announced >= 0 &&
             received != body.announced)
        failure = "the server sent " + std::to_string(received) + " of " +
                  std::to_string(body.announced) + " bytes";
    else if (result == fileio::platform::HttpStatus::TimedOut)
        failure = "timed out: " + failure;
    else if (result == fileio::platform::HttpStatus::Done)
        failure.clear();
    else if (failure.empty())
        failure = "the transfer failed";
    std::string reason;
    if (failure.empty() &&
        !fileio::platform::SaveFileAtomically(path.Get() != nullptr ? path.Get() : "",
                                              body.bytes.data(), body.bytes.size(), reason))
        failure = "cannot save " + std::string(path.View()) + ": " + reason;
    Tell(why, failure);
    return failure.empty();
}

bool IsConnectedToInternet() {
    return true;
}

bool ConnectToInternet() {
    return true;
}
