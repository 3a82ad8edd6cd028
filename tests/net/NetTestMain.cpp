// NetTestMain.cpp - the networking test program's main. Started with the child argument
// it plays a second process for the tests instead of running them:
//
//     --fileio-net-child exit N A B ...  writes each argument and a line feed, closes its
//                                        output, then writes "err" to its errors a moment
//                                        later and exits with N
//     --fileio-net-child sleep           waits (bounded) until it is killed

#include "net/NetTestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

namespace {

constexpr int kMaxSleepSeconds = 60;
constexpr int kUsage = 2;

int RunChild(int argc, char** argv) {
    const std::string mode = argc > 2 ? argv[2] : "";
    if (mode == "exit" && argc > 3) {
        for (int i = 4; i < argc; ++i)
            std::printf("%s\n", argv[i]);
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
    return kUsage;
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], fileio::test::kChildArgument) == 0)
        return RunChild(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
