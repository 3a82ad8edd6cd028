// Mutex.cpp - the library's lock, POSIX implementation: one atomic word, taken with a single
// compare-and-swap when it is free, spun on briefly when it is held, and waited on through
// the kernel (std::atomic::wait, a futex on Linux) only after that.
//
// The word is 0 when free, 1 when held with no thread waiting and 2 when held with threads
// that may be waiting; Unlock wakes one only in the last case. The pools' critical sections
// last a fraction of a microsecond, so a thread that finds the lock held usually gets it
// while spinning, without the cost of sleeping and being woken.

#include "platform/Platform.h"

#include <atomic>
#include <immintrin.h>
#include <new>

namespace fileio::platform {

namespace {

using Word = std::atomic<unsigned>;

constexpr unsigned kFree = 0;
constexpr unsigned kHeld = 1;
constexpr unsigned kContended = 2;

// How many times a thread looks at a held lock before it sleeps.
constexpr int kSpins = 100;

Word& WordOf(unsigned char* storage) noexcept {
    return *std::launder(reinterpret_cast<Word*>(storage));
}

} // namespace

Mutex::Mutex() noexcept {
    static_assert(sizeof(Word) <= sizeof(m_storage) && alignof(Word) <= 8,
                  "the lock word does not fit");
    static_assert(Word::is_always_lock_free, "the lock word must be lock-free");
    ::new (static_cast<void*>(m_storage)) Word(kFree);
}

Mutex::~Mutex() {
    WordOf(m_storage).~Word();
}

void Mutex::Lock() noexcept {
    Word& word = WordOf(m_storage);
    unsigned seen = kFree;
    if (word.compare_exchange_strong(seen, kHeld, std::memory_order_acquire))
        return;
    for (int spin = 0; spin < kSpins; ++spin) {
        _mm_pause();
        seen = kFree;
        if (word.load(std::memory_order_relaxed) == kFree &&
            word.compare_exchange_strong(seen, kHeld, std::memory_order_acquire))
            return;
    }
    // Mark the lock contended; whoever releases it then wakes a sleeper.
    while (word.exchange(kContended, std::memory_order_acquire) != kFree)
        word.wait(kContended, std::memory_order_relaxed);
}

void Mutex::Unlock() noexcept {
    Word& word = WordOf(m_storage);
    if (word.exchange(kFree, std::memory_order_release) == kContended)
        word.notify_one();
}

} // namespace fileio::platform
