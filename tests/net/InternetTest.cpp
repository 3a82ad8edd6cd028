// InternetTest.cpp - the internet helpers through recording services, and downloads from a
// small HTTP server on the loopback address.

#include "fileio/net/Internet.h"
#include "fileio/handlers/ScopedHandler.h"
#include "net/NetTestSupport.h"
#include "net/UrlText.h"
#include "platform/Platform.h"
#include "support/RecordingStatus.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace {

using namespace fileio::platform;
using namespace fileio::test;

std::vector<std::string> g_openedUrls;

// A text and its URL, "" when nothing may be opened.
TEST(InternetTest, BrowserUrlsAreCompletedAndEscaped) {
    const std::pair<const char*, const char*> cases[] = {
        {"https://example.com/a?b=1&c=2#top", "https://example.com/a?b=1&c=2#top"},
        {"HTTP://Example.com/", "HTTP://Example.com/"},
        {"www.example.com/a b", "http://www.example.com/a%20b"},
        {"example.com/100%25 sure", "http://example.com/100%25%20sure"}, // escapes kept
        {"http://x/<a>\"{|}\\^`", "http://x/%3Ca%3E%22%7B%7C%7D%5C%5E%60"},
        {"http://x/\t\r\n\x7F\xC3\xBC", "http://x/%09%0D%0A%7F%C3%BC"},
        {"file:///etc/passwd", ""},
        {"3ds:model", "http://3ds:model"}, // a scheme starts with a letter
        {"", ""},
    };
    for (const auto& [text, url] : cases)
        EXPECT_EQ(fileio::net::BrowserUrl(text), url) << text;
}

TEST(InternetTest, MailUrlsEncodeEveryField) {
    const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
        {"ann@example.com", "", "", "mailto:ann@example.com"},
        {"ann@example.com", "", "only a body", "mailto:ann@example.com?body=only%20a%20body"},
        {"bob@x.org",
         "\xC3\x9C"
         "ber 100%",
         "line 1\nline 2\r\nline 3\rend",
         "mailto:bob@x.org?subject=%C3%9Cber%20100%25"
         "&body=line%201%0D%0Aline%202%0D%0Aline%203%0D%0Aend"},
        {"odd?name&x=y+z@x.org", "A=b?c#d&Z", "+/", // the letters at the alphabet's ends are kept
         "mailto:odd%3Fname%26x=y+z@x.org?subject=A%3Db%3Fc%23d%26Z&body=%2B%2F"},
        {"", "no recipient", "", "mailto:?subject=no%20recipient"},
    };
    for (const auto& [address, subject, body, url] : cases)
        EXPECT_EQ(fileio::net::MailUrl(address, subject, body), url) << url;
}

// The exact vectors the desktop gets are in DesktopLaunch_posix.cpp.
TEST(InternetTest, TheHelpersHandTheirUrlToTheSystem) {
    ScopedServices<InternetServices> saved(Internet());
    Internet().openUrl = [](const char* url, std::string&) {
        g_openedUrls.emplace_back(url);
        return true;
    };
    g_openedUrls.clear();
    EXPECT_TRUE(LaunchBrowser("www.example.com"));
    EXPECT_FALSE(LaunchBrowser("file:///etc/passwd")); // refused before the system sees it
    EXPECT_FALSE(LaunchBrowser(String()));
    EXPECT_TRUE(LaunchMail("ann@example.com", "", ""));
    EXPECT_EQ(g_openedUrls,
              (std::vector<std::string>{"http://www.example.com", "mailto:ann@example.com"}));
    EXPECT_TRUE(IsConnectedToInternet());
    EXPECT_TRUE(ConnectToInternet());
}

std::vector<std::vector<std::string>> g_clientCalls;
ProcessOutcome g_clientAnswer;

TEST(InternetTest, TheRevisionComesFromTheClientsAnswer) {
    TempFolder folder("fileio-svn");
    folder.MakeFolder("work/.svn");
    const std::string file = folder.WriteFile("work/models/robot arm.mdl", "x");
    // What the client does, whether it starts, its output and exit code, and the revision.
    const std::tuple<const char*, bool, const char*, int, int> cases[] = {
        {"blanks around it", true, "  77 \r\n", 0, 77},
        {"revision 0", true, "0", 0, 0},
        {"no client installed", false, "", -1, -1},
        {"the client fails", true, "12\n", 1, -1},
        {"no answer", true, "", 0, -1},
        {"not a number", true, "svn: E155007: not a working copy\n", 0, -1},
        {"too large", true, "99999999999\n", 0, -1},
    };
    const std::vector<std::vector<std::string>> oneCall = {{"svn", "info", "--non-interactive",
                                                            "--show-item", "last-changed-revision",
                                                            "--", file + "@"}};
    ScopedServices<ProcessServices> saved(Processes());
    Processes().run = [](const std::vector<std::string>& argv, int, ProcessOutcome& outcome) {
        g_clientCalls.push_back(argv);
        outcome = g_clientAnswer;
        return outcome.started;
    };
    for (const auto& [what, started, output, exitCode, revision] : cases) {
        SCOPED_TRACE(what);
        g_clientCalls.clear();
        g_clientAnswer.started = started;
        g_clientAnswer.output = output;
        g_clientAnswer.exitCode = exitCode;
        EXPECT_EQ(SVNGetRevision(file.c_str()), revision);
        EXPECT_EQ(g_clientCalls, oneCall);
    }
    // Outside a working copy no client is asked.
    g_clientCalls.clear();
    EXPECT_EQ(SVNGetRevision(folder.WriteFile("plain.mdl", "x").c_str()), -1);
    EXPECT_EQ(SVNGetRevision(String()), -1);
    EXPECT_TRUE(g_clientCalls.empty());
}

/// Serves one connection on 127.0.0.1 with a scripted response, then closes.
class OneShotServer {
public:
    explicit OneShotServer(std::string response) : m_listener(ListenAt("127.0.0.1", m_port)) {
        m_thread = std::thread([this, response = std::move(response)] {
            RawPeer client;
            if (!client.Accept(m_listener))
                return;
            m_request = client.ReceiveUntil("\r\n\r\n");
            client.Send(response); // fails when the client stopped reading: it has enough
            client.Close();
        });
    }
    ~OneShotServer() {
        m_thread.join();
        Sockets().close(m_listener);
    }

    [[nodiscard]] std::string Url(const char* path = "/file.bin") const {
        return "http://127.0.0.1:" + std::to_string(m_port) + path;
    }
    [[nodiscard]] const std::string& Request() const { return m_request; }

private:
    unsigned short m_port = 0;
    SocketHandle m_listener;
    std::string m_request;
    std::thread m_thread;
};

std::string Response(const std::string& body, long long announced = -2,
                     const char* status = "200 OK") {
    std::string head = std::string("HTTP/1.1 ") + status + "\r\nConnection: close\r\n";
    if (announced != -1)
        head += "Content-Length: " +
                std::to_string(announced == -2 ? static_cast<long long>(body.size()) : announced) +
                "\r\n";
    return head + "\r\n" + body;
}

class DownloadTest : public ::testing::Test {
protected:
    void SetUp() override { target = folder.WriteFile("models/robot.mdl", kOld); }

    /// The file is as it was and nothing else is in its folder.
    void ExpectOldFileAlone() {
        EXPECT_EQ(folder.ReadFile("models/robot.mdl"), kOld);
        std::vector<FolderEntry> entries;
        ASSERT_TRUE(Files().listFolder(folder.Join("models").c_str(), entries));
        ASSERT_EQ(entries.size(), 1u);
        EXPECT_EQ(entries[0].name, "robot.mdl");
    }

    /// The download fails with a reason that contains `reason` and leaves the old file.
    void ExpectFailure(const std::string& url, unsigned long long limit, int timeoutMs,
                       const char* reason) {
        String why;
        EXPECT_FALSE(DownloadFile(url.c_str(), target.c_str(), &why, limit, timeoutMs));
        EXPECT_FALSE(why.IsEmpty());
        EXPECT_NE(std::string(why.View()).find(reason), std::string::npos) << why.Get();
        ExpectOldFileAlone();
    }

    static constexpr const char* kOld = "the old file, intact";
    TempFolder folder{"fileio-download"};
    std::string target;
};

TEST_F(DownloadTest, ACompleteDownloadReplacesTheFileAndShowsItsProgress) {
    const std::string body = Pattern(300000);
    OneShotServer server(Response(body));
    RecordingStatus status;
    ScopedStatusHandler installed(&status);
    String why;
    ASSERT_TRUE(DownloadFile(server.Url().c_str(), target.c_str(), &why)) << why.Get();
    EXPECT_TRUE(why.IsEmpty());
    EXPECT_TRUE(folder.ReadFile("models/robot.mdl") == body);
    EXPECT_EQ(server.Request().rfind("GET /file.bin HTTP/1.", 0), 0u) << server.Request();
    const std::vector<int> positions = status.Positions();
    ASSERT_FALSE(positions.empty());
    EXPECT_EQ(positions.back(), 100);
    EXPECT_TRUE(std::is_sorted(positions.begin(), positions.end()));
    ASSERT_FALSE(status.Of("text").empty());
    EXPECT_EQ(status.Of("text").front(), "Downloading " + server.Url());
    // A download to a new name creates it; an empty body gives an empty file.
    OneShotServer again(Response(""));
    ASSERT_TRUE(DownloadFile(again.Url().c_str(), folder.Join("new.bin").c_str()));
    EXPECT_EQ(folder.ReadFile("new.bin"), "");
}

TEST_F(DownloadTest, EveryFailureLeavesTheOldFileIntact) {
    // What the server does, its response, the limit, and a part of the reason given.
    const std::tuple<const char*, std::string, unsigned long long, const char*> cases[] = {
        {"truncated", Response(Pattern(500), 1000), 1 << 20, ""},
        {"too large, announced", Response(Pattern(5000)), 1000, "limit of 1000"},
        {"too large, unannounced", Response(Pattern(300000), -1), 100000, "limit of 100000"},
        {"one byte above the limit", Response(Pattern(1001), -1), 1000, "limit of 1000"},
        {"not found", Response("not found", -2, "404 Not Found"), 1 << 20, "404"},
        {"not http", "SSH-2.0-OpenSSH_9.2\r\n", 1 << 20, ""},
    };
    for (const auto& [what, response, limit, reason] : cases) {
        SCOPED_TRACE(what);
        OneShotServer server(response);
        ExpectFailure(server.Url(), limit, kPatientMs, reason);
    }
    // The limit itself is allowed.
    OneShotServer exact(Response(Pattern(1000), -1));
    EXPECT_TRUE(DownloadFile(exact.Url().c_str(), target.c_str(), nullptr, 1000, kPatientMs));
}

// A closed port, a listener that never answers (the system accepts for it), and URLs that
// are no downloads.
TEST_F(DownloadTest, AServerThatIsGoneOrSilentFailsCleanly) {
    unsigned short port = 0;
    const auto silent = ListenAt("127.0.0.1", port);
    const std::string silentUrl = "http://127.0.0.1:" + std::to_string(port) + "/x";
    // A URL, the time it is given, and a part of the reason the failure gives.
    const std::tuple<std::string, int, const char*> cases[] = {
        {"http://" + std::string(kUnusedLoopback) + ":" + std::to_string(ClosedPort()) + "/x",
         kPatientMs, ""},
        {silentUrl, 0, "timed out"},
        {silentUrl, 200, "timed out"},
        {"", kPatientMs, ""},
        {"ftp://127.0.0.1/x", kPatientMs, ""},
    };
    for (const auto& [url, timeoutMs, reason] : cases) {
        SCOPED_TRACE(url + " " + std::to_string(timeoutMs));
        ExpectFailure(url, 1000, timeoutMs, reason);
    }
    Sockets().close(silent);
}

TEST_F(DownloadTest, AFailedSaveLeavesTheOldFileAndNoTemporary) {
    for (const bool failWrite : {true, false}) {
        SCOPED_TRACE(failWrite ? "the write fails" : "the rename fails");
        OneShotServer server(Response("new content"));
        ScopedServices<FileServices> saved(Files());
        if (failWrite)
            Files().writeFile = [](FileHandle, const void*, std::size_t) { return false; };
        else
            Files().replaceFile = [](const char*, const char*) { return false; };
        String why;
        EXPECT_FALSE(DownloadFile(server.Url().c_str(), target.c_str(), &why));
        EXPECT_NE(why.Find("cannot save"), -1) << why.Get();
        ExpectOldFileAlone();
    }
}

} // namespace
