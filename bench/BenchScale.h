// BenchScale.h - the size of a benchmark's workload.
//
// CTest runs every benchmark once as a smoke test with FILEIO_BENCH_SMOKE set in the
// environment; workloads then shrink a hundredfold, so the run proves the benchmark still
// works without measuring anything. Real figures come from a run without it.
#pragma once

#include <cstdlib>

namespace fileio::bench {

/// `full` normally; a hundredth of it (at least 1) in a smoke run.
inline int Scaled(int full) {
    static const bool smoke = std::getenv("FILEIO_BENCH_SMOKE") != nullptr;
    return smoke ? (full / 100 > 0 ? full / 100 : 1) : full;
}

} // namespace fileio::bench
