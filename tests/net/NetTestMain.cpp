// NetTestMain.cpp - the networking test program's main. Started with the child argument
// it plays a second process for the tests instead of running them:
//
//     --fileio-net-child args A B ...   writes each argument and a line feed to stdout
//     --fileio-net-child exit N         writes "out", closes its output, then writes "err"
//                                       to its errors a moment later and exits with N
//     --fileio-net-child sleep          waits (bounded) until it is killed
//     --fileio-net-child echo PORT      connects to 127.0.0.1:PORT and replies to every
//                                       message with the same bytes and form until the
//                                       peer closes; exits 0 then, 3 on any other end

#include "fileio/net/VarnSocket.h"
#include "fileio/stream/MemoryStream.h"
#include "net/NetTestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace {

/// The most messages the echo child answers, and the longest it sleeps.
constexpr int kMaxEchoes = 100000;
constexpr int kMaxSleepSeconds = 60;
constexpr int kEchoFailed = 3, kUsage = 2;

int Echo(unsigned short port) {
    CVarnSocket socket;
    if (socket.Connect("127.0.0.1", port, fileio::test::kPatientMs) != SR_OK)
        return kEchoFailed;
    MemoryStream message;
    for (int i = 0; i < kMaxEchoes; ++i) {
        const SocketResult received = socket.Receive(message, fileio::test::kPatientMs);
        if (received == SR_PEER_CLOSED)
            return 0;
        if (received != SR_OK ||
            socket.Reply(socket.GetRequestNumber(), message, fileio::test::kPatientMs) != SR_OK)
            return kEchoFailed;
    }
    return kEchoFailed;
}

int RunChild(int argc, char** argv) {
    const std::string mode = argc > 2 ? argv[2] : "";
    if (mode == "args") {
        for (int i = 3; i < argc; ++i)
            std::printf("%s\n", argv[i]);
        return 0;
    }
    if (mode == "exit" && argc > 3) {
        std::fputs("out", stdout);
        std::fclose(stdout);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        std::fputs("err", stderr);
        return std::atoi(argv[3]);
    }
    if (mode == "sleep") {
        for (int second = 0; second < kMaxSleepSeconds; ++second)
            std::this_thread::sleep_for(std::chrono::seconds(1));
        return 0;
    }
    if (mode == "echo" && argc > 3)
        return Echo(static_cast<unsigned short>(std::atoi(argv[3])));
    return kUsage;
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], fileio::test::kChildArgument) == 0)
        return RunChild(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
