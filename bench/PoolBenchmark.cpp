// PoolBenchmark.cpp - VarnPool against the system's malloc/free on the same operations.
//
// Churn: 10,000 live allocations of 1..256 random bytes, then 1,000,000 random operations,
// each an allocation of 1..256 bytes or the release of a random live allocation (even odds),
// then the release of all that is left. LIFO: 1,000 rounds of 1,000 allocations of 1..256
// bytes released in reverse order. The operation sequences are drawn once from a fixed seed
// and replayed identically against each allocator, so both do exactly the same work.

#include "BenchScale.h"
#include "fileio/memory/Pool.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
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

Workload MakeChurn() {
    std::mt19937 random(20240601);
    Workload w;
    std::size_t live = 0;
    for (int i = 0; i < fileio::bench::Scaled(10000); ++i, ++live)
        w.operations.push_back({true, RandomSize(random)});
    for (int i = 0; i < fileio::bench::Scaled(1000000); ++i) {
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
    static const Workload w = MakeChurn();
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

struct SystemAllocator {
    void* Allocate(std::uint32_t n) { return std::malloc(n); }
    void Release(void* p) { std::free(p); }
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

// Times the replay of the workload that `workload` returns with a fresh Allocator.
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
void BM_Lifo_Pool(benchmark::State& state) {
    BM_Workload<Lifo, PoolAllocator>(state);
}
void BM_Lifo_Malloc(benchmark::State& state) {
    BM_Workload<Lifo, SystemAllocator>(state);
}

BENCHMARK(BM_Churn_Pool)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Churn_Malloc)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lifo_Pool)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Lifo_Malloc)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
