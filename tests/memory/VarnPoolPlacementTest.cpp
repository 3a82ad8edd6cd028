// VarnPoolPlacementTest.cpp - where every allocation lands, checked against a plain model of
// the placement rules over long random sequences.
//
// The pool finds chunks through an index of its own; the model below applies the rules in
// the most direct way (ordered maps, linear searches), so any difference in placement,
// splitting, coalescing or block release between the two shows as an address mismatch.
// Block identities are matched by creation: the pool's block k is wherever the model's k-th
// new block begins.

#include "fileio/memory/NamedPools.h"
#include "fileio/memory/Pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <random>
#include <vector>

namespace {

constexpr unsigned long long kBlock = 131064;
constexpr unsigned long long kHeaderArray = 6416;

class PlacementModel {
public:
    struct Place {
        int block;
        unsigned long long offset; // of the chunk header within the block
        bool fresh;                // the chunk begins a new block
    };

    // Where VarnAlloc(n) must put its chunk. REQUIRES: n > 0.
    Place Alloc(unsigned long long n) {
        const unsigned long long size = (n + 16 + 7) / 8 * 8;
        m_total += size;
        if (size < kBlock) {
            // Newest block first; the highest free chunk that fits.
            for (auto b = m_blocks.rbegin(); b != m_blocks.rend(); ++b) {
                for (auto c = b->free.rbegin(); c != b->free.rend(); ++c) {
                    if (c->second < size)
                        continue;
                    const unsigned long long offset = c->first;
                    const unsigned long long remainder = c->second - size;
                    b->free.erase(offset);
                    if (remainder >= 17)
                        b->free[offset + size] = remainder;
                    b->allocated[offset] = size;
                    return {b->id, offset, false};
                }
            }
        }
        Block block;
        block.id = m_nextId++;
        block.size = size < kBlock ? kBlock : size;
        if (block.size > size)
            block.free[size] = block.size - size; // a new block's tail, whatever its size
        block.allocated[0] = size;
        m_blocks.push_back(block);
        m_headerArrays = std::max<unsigned long long>(m_headerArrays, (m_blocks.size() + 99) / 100);
        return {block.id, 0, true};
    }

    void Free(int id, unsigned long long offset) {
        auto b = std::find_if(m_blocks.begin(), m_blocks.end(),
                              [id](const Block& x) { return x.id == id; });
        ASSERT_NE(b, m_blocks.end());
        const unsigned long long size = b->allocated.at(offset);
        b->allocated.erase(offset);
        m_total -= size;
        if (b->allocated.empty()) {
            m_blocks.erase(b);
            return;
        }
        // Coalesce with the free chunks right after and right before it.
        unsigned long long start = offset;
        unsigned long long end = offset + size;
        if (const auto next = b->free.find(end); next != b->free.end()) {
            end += next->second;
            b->free.erase(next);
        }
        const auto after = b->free.lower_bound(offset);
        if (after != b->free.begin() &&
            std::prev(after)->first + std::prev(after)->second == start) {
            start = std::prev(after)->first;
            b->free.erase(start);
        }
        b->free[start] = end - start;
    }

    unsigned long long Total() const { return m_total; }
    // The bytes the pool must account in TotalRAM.
    unsigned long long Ram() const {
        unsigned long long ram = m_headerArrays * kHeaderArray;
        for (const Block& b : m_blocks)
            ram += b.size + 8;
        return ram;
    }
    bool Empty() const { return m_blocks.empty(); }

private:
    struct Block {
        int id = 0;
        unsigned long long size = 0;
        std::map<unsigned long long, unsigned long long> free;      // offset -> size
        std::map<unsigned long long, unsigned long long> allocated; // offset -> size
    };

    std::vector<Block> m_blocks; // oldest first
    int m_nextId = 0;
    unsigned long long m_total = 0;
    unsigned long long m_headerArrays = 0;
};

struct Live {
    unsigned char* p;
    unsigned long long n;
    PlacementModel::Place place;
    unsigned char pattern;
};

// A phase of a random sequence: how likely an allocation is, and what sizes it asks for.
struct Phase {
    const char* name;
    int operations;
    int allocatePercent;
    unsigned long long (*size)(std::mt19937_64&);
};

unsigned long long SmallSize(std::mt19937_64& r) {
    return 1 + r() % 300;
}
unsigned long long MixedSize(std::mt19937_64& r) {
    switch (r() % 20) {
    case 0:
        return 131048 + r() % 70000; // a block of its own
    case 1:
        return 131032 + 8 * (r() % 2); // leaves a new block a tail of 16 or 8 bytes
    case 2:
    case 3:
        return 1000 + r() % 30000;
    default:
        return 1 + r() % 600;
    }
}
// Sizes whose chunks differ by 8 and 16 bytes, to leave unrecorded remainders often.
unsigned long long NearSize(std::mt19937_64& r) {
    return 40 + 8 * (r() % 6);
}

// One pool and its model driven by one random sequence.
struct Sequence {
    void Replay(const Phase& phase);

    const unsigned long long ramBase = TotalRAM();
    VarnPool pool;
    PlacementModel model;
    std::mt19937_64 random;
    std::vector<Live> live;
    std::vector<unsigned char*> blockStarts;
};

void Sequence::Replay(const Phase& phase) {
    SCOPED_TRACE(phase.name);
    for (int op = 0; op < phase.operations; ++op) {
        if (live.empty() || static_cast<int>(random() % 100) < phase.allocatePercent) {
            const unsigned long long n = phase.size(random);
            const PlacementModel::Place place = model.Alloc(n);
            auto* p = static_cast<unsigned char*>(pool.VarnAlloc(n));
            unsigned char* chunk = p - 16;
            if (place.fresh)
                blockStarts.push_back(chunk); // block numbers count up from 0

            ASSERT_EQ(chunk, blockStarts[place.block] + place.offset)
                << "operation " << op << ": VarnAlloc(" << n << ") landed elsewhere than block "
                << place.block << " offset " << place.offset;
            ASSERT_TRUE(std::all_of(p, p + n, [](unsigned char c) { return c == 0; }))
                << "operation " << op << ": the payload is not zero";
            const auto pattern = static_cast<unsigned char>(1 + op % 251);
            std::memset(p, pattern, n);
            live.push_back({p, n, place, pattern});
        } else {
            const std::size_t i = random() % live.size();
            const Live a = live[i];
            ASSERT_TRUE(
                std::all_of(a.p, a.p + a.n, [&](unsigned char c) { return c == a.pattern; }))
                << "operation " << op << ": an allocation was overwritten";
            pool.VarnFree(a.p);
            model.Free(a.place.block, a.place.offset);
            live[i] = live.back();
            live.pop_back();
        }
        ASSERT_EQ(pool.GetTotal(), model.Total()) << "operation " << op;
        ASSERT_EQ(TotalRAM() - ramBase, model.Ram()) << "operation " << op;
        ASSERT_EQ(pool.IsEmpty(), model.Empty()) << "operation " << op;
    }
}

TEST(VarnPoolPlacement, LongRandomSequencesMatchThePlacementRules) {
    const Phase phases[] = {
        {"grow with small sizes", 6000, 70, SmallSize},
        {"churn small sizes", 12000, 50, SmallSize},
        {"near sizes", 6000, 50, NearSize},
        {"mixed sizes", 8000, 55, MixedSize},
        {"shrink", 8000, 30, MixedSize},
        {"regrow", 6000, 65, SmallSize},
        {"drain", 12000, 20, NearSize},
    };
    for (std::uint64_t seed : {1ULL, 2ULL}) {
        SCOPED_TRACE(::testing::Message() << "seed " << seed);
        Sequence run;
        run.random.seed(seed);
        for (const Phase& phase : phases) {
            run.Replay(phase);
            if (HasFatalFailure())
                return;
        }
        // FreePool in the middle of use, then the same again from a clean start.
        run.pool.FreePool();
        run.model = PlacementModel();
        run.live.clear();
        run.blockStarts.clear();
        EXPECT_EQ(TotalRAM(), run.ramBase);
        run.Replay(phases[3]);
        for (const Live& a : run.live)
            run.pool.VarnFree(a.p);
        EXPECT_EQ(run.pool.GetTotal(), 0u);
        EXPECT_TRUE(run.pool.IsEmpty());
    }
}

} // namespace
