// VarnPoolThreadsTest.cpp - one pool shared by several threads at once. Each thread keeps
// its own allocations filled with its own pattern; a pattern damaged by another thread, a
// payload that is not zero when handed out, or a figure that does not come back to zero
// shows a fault in the pool's locking. The program also runs under ThreadSanitizer.

#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

namespace {

constexpr int kThreads = 4;
constexpr int kOperations = 20000;

struct Allocation {
    unsigned char* p;
    unsigned long long n;
    unsigned char pattern;
};

// Random allocations and frees on `pool`, checking every payload. Returns the number of
// faults seen.
int Churn(unsigned seed, VarnPool& pool) {
    std::mt19937 random(seed);
    std::vector<Allocation> live;
    int faults = 0;
    // Random allocations and frees, then frees alone until nothing is left.
    for (int op = 0; op < kOperations || !live.empty(); ++op) {
        if (op < kOperations && (live.empty() || random() % 100 < 55)) {
            // Mostly small sizes, now and then one that needs a block of its own.
            const unsigned long long n =
                random() % 200 == 0 ? 131048 + random() % 5000 : 1 + random() % 600;
            auto* p = static_cast<unsigned char*>(pool.VarnAlloc(n));
            if (std::any_of(p, p + n, [](unsigned char c) { return c != 0; }))
                ++faults;
            const auto pattern = static_cast<unsigned char>(1 + (seed * 31 + op) % 255);
            std::memset(p, pattern, n);
            live.push_back({p, n, pattern});
        } else {
            const std::size_t i = random() % live.size();
            const Allocation a = live[i];
            if (std::any_of(a.p, a.p + a.n, [&](unsigned char c) { return c != a.pattern; }))
                ++faults;
            pool.VarnFree(a.p);
            live[i] = live.back();
            live.pop_back();
        }
    }
    return faults;
}

// Four threads share one pool; a fifth churns on a pool of its own at the same time, so the
// process-wide counter is also updated under two different locks at once.
TEST(VarnPoolThreads, OnePoolSharedByFourThreads) {
    const unsigned long long ramBefore = TotalRAM();
    VarnPool pool;
    VarnPool other;
    std::atomic<int> faults{0};
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    for (int t = 0; t <= kThreads; ++t) {
        VarnPool* used = t < kThreads ? &pool : &other;
        threads.emplace_back(
            [&faults, t, used] { faults += Churn(1000u + static_cast<unsigned>(t), *used); });
    }
    // The figures may be read while the pool is in use; each read is a snapshot.
    std::thread reader([&] {
        while (!done) {
            (void)pool.GetTotal();
            (void)pool.IsEmpty();
            (void)TotalRAM();
            std::this_thread::yield();
        }
    });
    for (std::thread& t : threads)
        t.join();
    done = true;
    reader.join();

    EXPECT_EQ(faults.load(), 0);
    EXPECT_EQ(pool.GetTotal(), 0u);
    EXPECT_TRUE(pool.IsEmpty());
    pool.FreePool();
    other.FreePool();
    EXPECT_EQ(TotalRAM(), ramBefore);
}

} // namespace
