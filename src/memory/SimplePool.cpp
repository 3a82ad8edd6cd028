// SimplePool.cpp - the bump allocator.

#include "fileio/memory/Pool.h"
#include "memory/SizeArithmetic.h"

static_assert(SimplePool::kChunkSize == 2 * 1024 * 1024, "a standard chunk is 2 MiB");
static_assert(SimplePool::kLargeLimit == 0x1FFFF8,
              "the chunk's link word comes off the standard size");

namespace {
constexpr unsigned long long kLinkWord = sizeof(void*);
}

SimplePool::~SimplePool() {
    FreePool();
}

void* SimplePool::Alloc(unsigned long long n) {
    if (n == 0)
        return nullptr;
    if (n <= m_bytesLeft) {
        char* p = m_nextFree;
        m_nextFree += n;
        m_bytesLeft -= n;
        return p;
    }
    const unsigned long long chunkSize =
        n > kLargeLimit ? fileio::detail::AddSizes(fileio::detail::RoundUpTo8(n), kLinkWord)
                        : kChunkSize;
    auto* chunk = static_cast<char*>(PlatformAlloc(chunkSize));
    *reinterpret_cast<void**>(chunk) = m_chunks;
    m_chunks = chunk;
    m_total += chunkSize;
    m_bytesLeft = chunkSize - n - kLinkWord;
    m_nextFree = chunk + kLinkWord + n;
    return chunk + kLinkWord;
}

void SimplePool::FreePool() {
    while (m_chunks != nullptr) {
        void* chunk = m_chunks;
        m_chunks = *static_cast<void**>(chunk);
        PlatformFree(chunk);
    }
    // The next free byte is left as it is: with no bytes left the next Alloc takes a chunk.
    m_bytesLeft = 0;
    m_total = 0;
}
