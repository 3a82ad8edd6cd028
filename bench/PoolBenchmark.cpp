// PoolBenchmark.cpp - VarnPool against the system's malloc/free on the same operations.
//
// Churn: 10,000 live allocations of 1..256 random bytes, then 1,000,000 random operations,
// each an allocation of 1..256 bytes or the release of a random live allocation (even odds),
// then the release of all that is left. LIFO: 1,000 rounds of 1,000 allocations of 1..256
// bytes released in reverse order. The operation sequences are drawn once from a fixed seed
// and replayed identically against each allocator, so both do exactly the same work.
//
// Two baselines: malloc/free as they are, and malloc/free that do the pool's own extra
// work, zeroing what they hand out and what comes back, with the size kept in a 16-byte
// header as the pool's chunks keep it. The ratio of the pool to the zeroing baseline is the
// one to read: it compares the two allocators doing the same work.
//
// Threads: four threads on one shared pool, each replaying a quarter of the churn (2,500
// live, 250,000 operations) at once, against four threads on malloc/free. Wall-clock time.

#include "BenchScale.h"
#include "fileio/memory/Pool.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace {

struct Operation {
    // Allocate `value` bytes when `allocate`, else release live allocation number `value`.
    bool allocate;
    std::uint32_t value;
};

struct Workload {
    std::vector<Operation> operations;
    std::size_t peakLive = 0;
};

// A random size of 1..256 bytes.
std::uint32_t RandomSize(std::mt19937& random) {
    return 1 + random() % 256;
}

// `initial` allocations, then `operations` random allocations and releases, then the
// release of what is left.
Workload MakeChurn(int initial, int operations) {
    std::mt19937 random(20240601);
    Workload w;
    std::size_t live = 0;
    for (int i = 0; i < fileio::bench::Scaled(initial); ++i, ++live)
        w.operations.push_back({true, RandomSize(random)});
    for (int i = 0; i < fileio::bench::Scaled(operations); ++i) {
        if (live == 0 || random() % 2 == 0) {
            w.operations.push_back({true, RandomSize(random)});
            ++live;
        } else {
            w.operations.push_back({false, static_cast<std::uint32_t>(random() % live)});
            --live;
        }
        w.peakLive = live > w.peakLive ? live : w.peakLive;
    }
    for (; live > 0; --live)
        w.operations.push_back({false, static_cast<std::uint32_t>(live - 1)});
    return w;
}

Workload MakeLifo() {
    std::mt19937 random(20240602);
    Workload w;
    for (int round = 0; round < fileio::bench::Scaled(1000); ++round) {
        for (int i = 0; i < 1000; ++i)
            w.operations.push_back({true, RandomSize(random)});
        for (int i = 999; i >= 0; --i)
            w.operations.push_back({false, static_cast<std::uint32_t>(i)});
    }
    w.peakLive = 1000;
    return w;
}

const Workload& Churn() {
    static const Workload w = MakeChurn(10000, 1000000);
    return w;
}

// The share of one of the four threads.
const Workload& QuarterChurn() {
    static const Workload w = MakeChurn(2500, 250000);
    return w;
}

const Workload& Lifo() {
    static const Workload w = MakeLifo();
    return w;
}

struct PoolAllocator {
    VarnPool pool;
    void* Allocate(std::uint32_t n) { return pool.VarnAlloc(n); }
    void Release(void* p) { pool.VarnFree(p); }
};

// The pool the four threads share.
VarnPool g_sharedPool;

struct SharedPoolAllocator {
    void* Allocate(std::uint32_t n) { return g_sharedPool.VarnAlloc(n); }
    void Release(void* p) { g_sharedPool.VarnFree(p); }
};

struct SystemAllocator {
    void* Allocate(std::uint32_t n) { return std::malloc(n); }
    void Release(void* p) { std::free(p); }
};

struct ZeroingSystemAllocator {
    static constexpr std::size_t kHeader = 16;

    void* Allocate(std::uint32_t n) {
        auto* chunk = static_cast<unsigned char*>(std::malloc(kHeader + n));
        std::memcpy(chunk, &n, sizeof n);
        std::memset(chunk + kHeader, 0, n);
        return chunk + kHeader;
    }
    void Release(void* p) {
        unsigned char* chunk = static_cast<unsigned char*>(p) - kHeader;
        std::uint32_t n;
        std::memcpy(&n, chunk, sizeof n);
        std::memset(p, 0, n);
        // Keeps the compiler from dropping the clearing as a store to memory about to go.
        benchmark::ClobberMemory();
        std::free(chunk);
    }
};

// Replays a workload; a release takes live allocation `value` and moves the last live one
// into its place.
template <class Allocator>
void Replay(const Workload& w, Allocator& allocator, std::vector<void*>& live) {
    for (const Operation& op : w.operations) {
        if (op.allocate) {
            void* p = allocator.Allocate(op.value);
            benchmark::DoNotOptimize(p);
            live.push_back(p);
        } else {
            allocator.Release(live[op.value]);
            live[op.value] = live.back();
            live.pop_back();
        }
    }
}

// Times the replay of the workload that `workload` returns with a fresh Allocator (one per
// thread in the threaded cases).
template <const Workload& (*workload)(), class Allocator>
void BM_Workload(benchmark::State& state) {
    const Workload& w = workload();
    Allocator allocator;
    std::vector<void*> live;
    live.reserve(w.peakLive);
    for (auto _ : state)
        Replay(w, allocator, live);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * w.operations.size()));
}

void BM_Churn_Pool(benchmark::State& state) {
    BM_Workload<Churn, PoolAllocator>(state);
}
void BM_Churn_Malloc(benchmark::State& state) {
    BM_Workload<Churn, SystemAllocator>(state);
}
void BM_Churn_ZeroingMalloc(benchmark::State& state) {
    BM_Workload<Churn, ZeroingSystemAllocator>(state);
}
void BM_Threads_Pool(benchmark::State& state) {
    BM_Workload<QuarterChurn, SharedPoolAllocator>(state);
}
void BM_Threads_Malloc(benchmark::State& state) {
    BM_Workload<QuarterChurn, SystemAllocator>(state);
}
void BM_Lifo_Pool(benchmark::State& state) {
    BM_Workload<Lifo, PoolAllocator>(state);
}
void BM_Lifo_Malloc(benchmark::State& state) {
    BM_Workload<Lifo, SystemAllocator>(state);
}

BENCHMARK(BM_Churn_Pool)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Churn_Malloc)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Churn_ZeroingMalloc)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Threads_Pool)->Threads(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Threads_Malloc)->Threads(4)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lifo_Pool)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lifo_Malloc)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
