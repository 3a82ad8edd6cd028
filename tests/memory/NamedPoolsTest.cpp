// NamedPoolsTest.cpp - the named pools, their figures and the process-wide switches.

#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"
#include "memory/NamedPoolObjects.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using fileio::detail::NamedVarnPool;
using fileio::detail::VarnPoolKind;

// AllocString(n) reserves n + 1 bytes: with the 16-byte chunk header and rounding to 8, a
// string of length n occupies RoundUp8(n + 17) bytes of the string pool.
TEST(NamedPools, AllocStringReservesRoomForTheNul) {
    const VarnPool& strings = NamedVarnPool(VarnPoolKind::String);
    struct Row {
        unsigned long long length;
        unsigned long long chunk;
    };
    const Row rows[] = {{0, 24}, {1, 24}, {7, 24}, {8, 32}, {15, 32}, {16, 40}, {100, 120}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.length);
        const unsigned long long before = strings.GetTotal();
        auto* s = static_cast<unsigned char*>(AllocString(row.length));
        ASSERT_NE(s, nullptr);
        EXPECT_EQ(strings.GetTotal() - before, row.chunk);
        for (unsigned long long i = 0; i <= row.length; ++i)
            ASSERT_EQ(s[i], 0) << "byte " << i;
        std::memset(s, 'x', row.length); // the whole length plus the NUL is usable
        FreeString(s);
        EXPECT_EQ(strings.GetTotal(), before);
    }
    FreeString(nullptr);
}

} // namespace
